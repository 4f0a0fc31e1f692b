// The static path builders that the statistics module calls: every path they
// build from a management API record names an instance the providers serve.

#include "SiblingsFixture.h"

#include <ORV_DiskStorageExtentProvider.h>
#include <ORV_EthernetPortProvider.h>
#include <ORV_FCPortProvider.h>
#include <ORV_NodeSystemProvider.h>
#include <ORV_StorageVolumeProvider.h>

#include <orvapi.h>

#include <cstdlib>

PEGASUS_USING_PEGASUS;
using namespace orvsib_test;

namespace
{

const CIMNamespaceName ORV("root/orv");
const String HOST("orv-test-7.example.net");
const String SYSTEM("ORV-TEST-7");

CIMInstance fetch(const CIMObjectPath& path)
{
    return objectManager().getInstance(contextFor(""), ORV, path, false, false, false,
                                       CIMPropertyList());
}

// The instance found must be the one the path names.
void expectResolves(const CIMObjectPath& path)
{
    CIMInstance instance;
    std::string message;
    ASSERT_EQ(CIM_ERR_SUCCESS, statusOf([&] { instance = fetch(path); }, &message))
        << path.toString() << ": " << message;
    CIMObjectPath found = instance.getPath();
    CIMObjectPath wanted = path;
    for (CIMObjectPath* p : {&found, &wanted})
    {
        p->setHost(String());
        p->setNameSpace(CIMNamespaceName());
    }
    EXPECT_TRUE(found.identical(wanted)) << found.toString() << " vs " << wanted.toString();
}

using PathBuilders = SmallModelTest;

} // namespace

TEST_F(PathBuilders, EveryRecordsPathResolves)
{
    // Built the way the statistics module builds them, from the same calls.
    std::vector<CIMObjectPath> paths;
    api_NodeList_t nodes = {};
    ASSERT_EQ(0, api_getNodes(&nodes));
    for (uint32_t i = 0; i < nodes.count; i++)
    {
        paths.push_back(ORV_NodeSystemProvider::buildObjectPath(HOST, nodes.nodes[i].nodeName));
    }
    std::free(nodes.nodes);

    api_DisksStats_t disks = {};
    ASSERT_EQ(0, api_getDiskStats(API_DISK_ALL, API_WWN_ALL_VOLUMES, API_SEL_ANY, API_SEL_ANY,
                                  API_SEL_ANY, &disks));
    for (uint32_t i = 0; i < disks.count; i++)
    {
        paths.push_back(ORV_DiskStorageExtentProvider::buildObjectPath(
            HOST, disks.stats[i].diskDeviceID, SYSTEM));
    }
    std::free(disks.stats);

    // The builder follows the protocol, each with its own argument order.
    api_PortsStats_t ports = {};
    ASSERT_EQ(0,
              api_getPortStats(API_PORT_TYPE_ALL, API_SEL_ANY, API_SEL_ANY, API_SEL_ANY, &ports));
    for (uint32_t i = 0; i < ports.count; i++)
    {
        const api_PortStats_t& p = ports.stats[i];
        paths.push_back(
            p.portProtocol == PORT_PROTOCOL_FC || p.portProtocol == PORT_PROTOCOL_FCOE
                ? ORV_FCPortProvider::buildObjectPath(CIMName("ORV_FCPort"), HOST, p.nodeDeviceID,
                                                      p.portDeviceID)
                : ORV_EthernetPortProvider::buildObjectPath(HOST, p.portDeviceID, p.nodeDeviceID));
    }
    std::free(ports.stats);

    // Volumes from the volume list, and from the statistics' WWN words.
    uint32_t cursor = 0;
    api_VVsInfo_t vvs = {};
    ASSERT_EQ(0, api_getVVs_chunk(&vvs, &cursor, 0));
    for (uint32_t i = 0; i < vvs.count; i++)
    {
        paths.push_back(
            ORV_StorageVolumeProvider::createObjectPath(vvs.vvs[i].vvWWN, SYSTEM, HOST));
    }
    std::free(vvs.vvs);
    api_VolumesStats_t volumes = {};
    ASSERT_EQ(0, api_getVolumeStats_chunk(&volumes, API_WWN_ALL_VOLUMES, 0, nullptr, 0));
    for (uint32_t i = 0; i < volumes.count; i++)
    {
        uint64_t high = 0, low = 0;
        char text[API_WWN_TEXT_LEN] = {0};
        ASSERT_EQ(0, api_wwnStringToInt(nullptr, volumes.stats[i].volDeviceID, &low, &high));
        ASSERT_EQ(0, api_wwnIntToString(low, high, text));
        paths.push_back(ORV_StorageVolumeProvider::createObjectPath(text, SYSTEM, HOST));
    }
    std::free(volumes.stats);

    ASSERT_EQ(2u + 3 + 4 + 3 + 3, paths.size());
    for (const CIMObjectPath& path : paths)
    {
        EXPECT_EQ(HOST, path.getHost());
        expectResolves(path);
    }
}

TEST_F(PathBuilders, VolumeWWNsInAnyCaseOrLengthNameTheSameVolume)
{
    const CIMObjectPath shortLower =
        ORV_StorageVolumeProvider::createObjectPath("60002ac0000000000000000000a001", SYSTEM, HOST);
    EXPECT_EQ(String("0060002AC0000000000000000000A001"), keyOf(shortLower, "DeviceID"));

    expectResolves(ORV_StorageVolumeProvider::createObjectPath("60002ac000000000000000000000a003",
                                                               SYSTEM, HOST));
    // A client that writes the key itself in lower case reaches it too.
    const CIMInstance volume = fetch(withKey(ORV_StorageVolumeProvider::createObjectPath(
                                                 "60002AC000000000000000000000A003", SYSTEM, HOST),
                                             "DeviceID", "60002ac000000000000000000000a003"));
    EXPECT_TRUE(volume.getProperty(volume.findProperty("ElementName")).getValue() ==
                CIMValue(String("vol-c")));
}

TEST_F(PathBuilders, PathsOfElementsTheArrayLacksAreNotFound)
{
    const std::vector<CIMObjectPath> paths = {
        ORV_NodeSystemProvider::buildObjectPath(HOST, "7"),
        ORV_DiskStorageExtentProvider::buildObjectPath(HOST, "5000C500A1B2C3D0", "OTHER-SYSTEM"),
        ORV_DiskStorageExtentProvider::buildObjectPath(HOST, "5000C500FFFFFFFF", SYSTEM),
        // an FC port asked for as an Ethernet port
        ORV_EthernetPortProvider::buildObjectPath(HOST, "20010002AC000A01", "0"),
        ORV_FCPortProvider::buildObjectPath(CIMName("ORV_FCPort"), HOST, "1", "20010002AC000A01"),
        ORV_StorageVolumeProvider::createObjectPath("60002AC0000000000000000000000BAD", SYSTEM,
                                                    HOST),
        ORV_StorageVolumeProvider::createObjectPath("not-a-wwn", SYSTEM, HOST),
    };
    for (const CIMObjectPath& path : paths)
    {
        EXPECT_EQ(CIM_ERR_NOT_FOUND, statusOf([&] { fetch(path); })) << path.toString();
    }
}
