// The static path builders that the statistics module calls: every path they
// build from a record of the management API names an instance that the
// element providers serve.

#include "SiblingsFixture.h"

#include <ORV_DiskStorageExtentProvider.h>
#include <ORV_EthernetPortProvider.h>
#include <ORV_FCPortProvider.h>
#include <ORV_NodeSystemProvider.h>
#include <ORV_StorageVolumeProvider.h>

#include <orvapi.h>
#include <orvsim.h>

#include <cstdlib>
#include <cstring>

PEGASUS_USING_PEGASUS;
using namespace orvsib_test;

namespace
{

const CIMNamespaceName ORV("root/orv");
const String HOST("orv-test-7.example.net");
const String SYSTEM("ORV-TEST-7");

// Fetches path through the object manager and checks that the instance
// found is the one the path names.
void expectResolves(const CIMObjectPath& path)
{
    CIMInstance instance;
    std::string message;
    const CIMStatusCode status = statusOf(
        [&] {
            instance = objectManager().getInstance(contextFor(""), ORV, path, false, false,
                                                   false, CIMPropertyList());
        },
        &message);
    ASSERT_EQ(CIM_ERR_SUCCESS, status) << path.toString() << ": " << message;
    CIMObjectPath found = instance.getPath();
    found.setHost(String());
    found.setNameSpace(CIMNamespaceName());
    CIMObjectPath wanted = path;
    wanted.setHost(String());
    wanted.setNameSpace(CIMNamespaceName());
    EXPECT_TRUE(found.identical(wanted)) << found.toString() << " vs " << wanted.toString();
}

class PathBuilders : public ::testing::Test
{
protected:
    void SetUp() override
    {
        objectManager();
        loadModel(SMALL_MODEL);
    }
    void TearDown() override
    {
        orvsim_reset();
    }
};

} // namespace

TEST_F(PathBuilders, EveryRecordsPathResolves)
{
    int resolved = 0;

    api_NodeList_t nodes = {};
    ASSERT_EQ(0, api_getNodes(&nodes));
    for (uint32_t i = 0; i < nodes.count; i++, resolved++)
    {
        expectResolves(ORV_NodeSystemProvider::buildObjectPath(HOST, nodes.nodes[i].nodeName));
    }
    std::free(nodes.nodes);

    api_DisksStats_t disks = {};
    ASSERT_EQ(0, api_getDiskStats(API_DISK_ALL, API_WWN_ALL_VOLUMES, API_SEL_ANY, API_SEL_ANY,
                                  API_SEL_ANY, &disks));
    for (uint32_t i = 0; i < disks.count; i++, resolved++)
    {
        expectResolves(ORV_DiskStorageExtentProvider::buildObjectPath(
            HOST, disks.stats[i].diskDeviceID, SYSTEM));
    }
    std::free(disks.stats);

    // The statistics module picks the builder by protocol, each with its own
    // argument order.
    api_PortsStats_t ports = {};
    ASSERT_EQ(0, api_getPortStats(API_PORT_TYPE_ALL, API_SEL_ANY, API_SEL_ANY, API_SEL_ANY, &ports));
    for (uint32_t i = 0; i < ports.count; i++, resolved++)
    {
        const api_PortStats_t& port = ports.stats[i];
        if (port.portProtocol == PORT_PROTOCOL_FC || port.portProtocol == PORT_PROTOCOL_FCOE)
        {
            expectResolves(ORV_FCPortProvider::buildObjectPath(
                CIMName("ORV_FCPort"), HOST, port.nodeDeviceID, port.portDeviceID));
        }
        else
        {
            expectResolves(ORV_EthernetPortProvider::buildObjectPath(HOST, port.portDeviceID,
                                                                     port.nodeDeviceID));
        }
    }
    std::free(ports.stats);

    // Volumes from the volume list and, converted back from the two words,
    // from the volume statistics.
    uint32_t cursor = 0;
    api_VVsInfo_t vvs = {};
    ASSERT_EQ(0, api_getVVs_chunk(&vvs, &cursor, 0));
    for (uint32_t i = 0; i < vvs.count; i++, resolved++)
    {
        expectResolves(ORV_StorageVolumeProvider::createObjectPath(vvs.vvs[i].vvWWN, SYSTEM, HOST));
    }
    std::free(vvs.vvs);
    api_VolumesStats_t volumes = {};
    ASSERT_EQ(0, api_getVolumeStats_chunk(&volumes, API_WWN_ALL_VOLUMES, 0, nullptr, 0));
    for (uint32_t i = 0; i < volumes.count; i++, resolved++)
    {
        uint64_t high = 0;
        uint64_t low = 0;
        ASSERT_EQ(0, api_wwnStringToInt(nullptr, volumes.stats[i].volDeviceID, &low, &high));
        char text[API_WWN_TEXT_LEN] = {0};
        ASSERT_EQ(0, api_wwnIntToString(low, high, text));
        expectResolves(ORV_StorageVolumeProvider::createObjectPath(text, SYSTEM, HOST));
    }
    std::free(volumes.stats);

    // 2 nodes, 3 disks, 4 ports, 3 volumes twice
    EXPECT_EQ(2 + 3 + 4 + 3 + 3, resolved);
}

TEST_F(PathBuilders, KeysFollowTheElementsOwnSystem)
{
    struct Case
    {
        const char* description;
        CIMObjectPath path;
        const char* className;
        std::vector<std::pair<const char*, const char*>> keys;
    };
    const std::vector<Case> cases = {
        {"node", ORV_NodeSystemProvider::buildObjectPath(HOST, "1"), "ORV_NodeSystem",
         {{"CreationClassName", "ORV_NodeSystem"}, {"Name", "1"}}},
        {"disk", ORV_DiskStorageExtentProvider::buildObjectPath(HOST, "D1", SYSTEM),
         "ORV_DiskStorageExtent",
         {{"CreationClassName", "ORV_DiskStorageExtent"}, {"DeviceID", "D1"},
          {"SystemCreationClassName", "ORV_StorageSystem"}, {"SystemName", "ORV-TEST-7"}}},
        {"FC port: node, then port",
         ORV_FCPortProvider::buildObjectPath(CIMName("ORV_FCPort"), HOST, "1", "P9"), "ORV_FCPort",
         {{"CreationClassName", "ORV_FCPort"}, {"DeviceID", "P9"},
          {"SystemCreationClassName", "ORV_NodeSystem"}, {"SystemName", "1"}}},
        {"Ethernet port: port, then node",
         ORV_EthernetPortProvider::buildObjectPath(HOST, "P9", "1"), "ORV_EthernetPort",
         {{"CreationClassName", "ORV_EthernetPort"}, {"DeviceID", "P9"},
          {"SystemCreationClassName", "ORV_NodeSystem"}, {"SystemName", "1"}}},
        {"volume WWN in any case and length becomes 32 upper-case digits",
         ORV_StorageVolumeProvider::createObjectPath("60002ac0000000000000000000a001", SYSTEM,
                                                     HOST),
         "ORV_StorageVolume",
         {{"CreationClassName", "ORV_StorageVolume"},
          {"DeviceID", "0060002AC0000000000000000000A001"},
          {"SystemCreationClassName", "ORV_StorageSystem"}, {"SystemName", "ORV-TEST-7"}}},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.description);
        EXPECT_EQ(HOST, c.path.getHost());
        EXPECT_TRUE(c.path.getNameSpace().equal(ORV));
        EXPECT_TRUE(c.path.getClassName().equal(CIMName(c.className)));
        ASSERT_EQ(c.keys.size(), c.path.getKeyBindings().size());
        for (const auto& key : c.keys)
        {
            bool found = false;
            for (Uint32 i = 0; i < c.path.getKeyBindings().size(); i++)
            {
                const CIMKeyBinding& binding = c.path.getKeyBindings()[i];
                if (binding.getName().equal(CIMName(key.first)))
                {
                    found = true;
                    EXPECT_EQ(String(key.second), binding.getValue()) << key.first;
                }
            }
            EXPECT_TRUE(found) << key.first;
        }
    }
}

TEST_F(PathBuilders, AVolumeWWNInLowerCaseResolvesToTheSameVolume)
{
    expectResolves(ORV_StorageVolumeProvider::createObjectPath(
        "60002ac000000000000000000000a003", SYSTEM, HOST));

    // A client that writes the key itself in lower case reaches it too.
    CIMObjectPath typed = ORV_StorageVolumeProvider::createObjectPath(
        "60002AC000000000000000000000A003", SYSTEM, HOST);
    Array<CIMKeyBinding> keys = typed.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        if (keys[i].getName().equal(CIMName("DeviceID")))
        {
            keys[i].setValue("60002ac000000000000000000000a003");
        }
    }
    typed.setKeyBindings(keys);
    const CIMInstance instance = objectManager().getInstance(contextFor(""), ORV, typed, false,
                                                             false, false, CIMPropertyList());
    EXPECT_TRUE(instance.getProperty(instance.findProperty(CIMName("ElementName"))).getValue() ==
                CIMValue(String("vol-c")));
}

TEST_F(PathBuilders, PathsOfElementsTheArrayLacksAreNotFound)
{
    const std::vector<CIMObjectPath> paths = {
        ORV_NodeSystemProvider::buildObjectPath(HOST, "7"),
        ORV_DiskStorageExtentProvider::buildObjectPath(HOST, "5000C500A1B2C3D0", "OTHER-SYSTEM"),
        // an FC port asked for as an Ethernet port
        ORV_EthernetPortProvider::buildObjectPath(HOST, "20010002AC000A01", "0"),
        ORV_StorageVolumeProvider::createObjectPath("60002AC0000000000000000000000BAD", SYSTEM,
                                                    HOST),
        ORV_StorageVolumeProvider::createObjectPath("not-a-wwn", SYSTEM, HOST),
    };
    for (const CIMObjectPath& path : paths)
    {
        EXPECT_EQ(CIM_ERR_NOT_FOUND, statusOf([&] {
                      objectManager().getInstance(contextFor(""), ORV, path, false, false, false,
                                                  CIMPropertyList());
                  }))
            << path.toString();
    }
}
