// The element providers through the object manager: enumerations agree with
// the model, values come from its records, failures become CIM errors.

#include "SiblingsFixture.h"

#include <orvapi.h>
#include <orvsim.h>

#include <set>

PEGASUS_USING_PEGASUS;
using namespace orvsib_test;

namespace
{

const CIMNamespaceName ORV("root/orv");

Array<CIMObjectPath> namesOf(const char* className, const char* user = "")
{
    return objectManager().enumerateInstanceNames(contextFor(user), ORV, CIMName(className));
}

Array<CIMInstance> instancesOf(const char* className)
{
    return objectManager().enumerateInstances(contextFor(""), ORV, CIMName(className), true, false,
                                              false, false, CIMPropertyList());
}

CIMValue valueOf(const CIMInstance& instance, const char* name)
{
    const Uint32 pos = instance.findProperty(CIMName(name));
    return pos == PEG_NOT_FOUND ? CIMValue() : instance.getProperty(pos).getValue();
}

std::multiset<std::string> keysOf(const std::vector<CIMObjectPath>& paths, const char* key)
{
    std::multiset<std::string> values;
    for (const CIMObjectPath& path : paths)
    {
        values.insert((const char*)keyOf(path, key).getCString());
    }
    return values;
}

using ElementProviders = SmallModelTest;

} // namespace

TEST_F(ElementProviders, EnumerationsListEveryElementOfTheModelOnce)
{
    struct Case
    {
        const char* className;
        const char* key;
        std::multiset<std::string> expected; // from SMALL_MODEL
    };
    const std::vector<Case> cases = {
        {"ORV_StorageSystem", "Name", {"ORV-TEST-7"}},
        {"ORV_NodeSystem", "Name", {"0", "1"}},
        {"ORV_DiskStorageExtent",
         "DeviceID",
         {"5000C500A1B2C3D0", "5000C500A1B2C3D1", "5000C500A1B2C3D2"}},
        // FC and FCoE are Fibre Channel ports; iSCSI and SAS the rest.
        {"ORV_FCPort", "DeviceID", {"20010002AC000A01", "20020002AC000A02"}},
        {"ORV_EthernetPort", "DeviceID", {"00:02:ac:00:0a:03", "50002AC000000A04"}},
        {"ORV_StorageVolume",
         "DeviceID",
         {"60002AC000000000000000000000A001", "60002AC000000000000000000000A002",
          "60002AC000000000000000000000A003"}},
        // Superclasses reach the providers of their subclasses.
        {"CIM_ComputerSystem",
         "CreationClassName",
         {"ORV_StorageSystem", "ORV_NodeSystem", "ORV_NodeSystem"}},
        {"CIM_LogicalPort",
         "CreationClassName",
         {"ORV_FCPort", "ORV_FCPort", "ORV_EthernetPort", "ORV_EthernetPort"}},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(c.expected, keysOf(toVector(namesOf(c.className)), c.key)) << c.className;
        std::vector<CIMObjectPath> paths;
        for (const CIMInstance& instance : toVector(instancesOf(c.className)))
        {
            paths.push_back(instance.getPath());
        }
        EXPECT_EQ(c.expected, keysOf(paths, c.key)) << c.className;
    }
}

TEST_F(ElementProviders, InstancesCarryTheModelsValues)
{
    orvsim_port_info_t iscsi = {};
    ASSERT_EQ(0, orvsim_get_port_info("00:02:ac:00:0a:03", &iscsi));
    struct Case
    {
        const char* className;
        const char* deviceID; // or Name
        const char* property;
        CIMValue expected;
    };
    const std::vector<Case> cases = {
        {"ORV_StorageSystem", "ORV-TEST-7", "SystemID", CIMValue(Uint32(424242))},
        {"ORV_NodeSystem", "1", "NodeNumber", CIMValue(Uint16(1))},
        {"ORV_DiskStorageExtent", "5000C500A1B2C3D1", "ElementName", CIMValue(String("0:1:0"))},
        // 1000 MiB of 512-byte blocks
        {"ORV_DiskStorageExtent", "5000C500A1B2C3D1", "NumberOfBlocks", CIMValue(Uint64(2048000))},
        {"ORV_DiskStorageExtent", "5000C500A1B2C3D2", "OperationalStatus",
         CIMValue(Array<Uint16>(1, 6))},
        {"ORV_FCPort", "20010002AC000A01", "SystemName", CIMValue(String("0"))},
        {"ORV_FCPort", "20010002AC000A01", "Speed", CIMValue(Uint64(16000000000ULL))},
        {"ORV_FCPort", "20010002AC000A01", "UsageRestriction", CIMValue(Uint16(2))},
        {"ORV_EthernetPort", "00:02:ac:00:0a:03", "PermanentAddress", CIMValue(String(iscsi.mac))},
        {"ORV_EthernetPort", "50002AC000000A04", "UsageRestriction", CIMValue(Uint16(3))},
        {"ORV_StorageVolume", "60002AC000000000000000000000A002", "ElementName",
         CIMValue(String("vol-b"))},
        // 10 GiB of 512-byte blocks
        {"ORV_StorageVolume", "60002AC000000000000000000000A002", "NumberOfBlocks",
         CIMValue(Uint64(20971520))},
    };
    for (const Case& c : cases)
    {
        const char* key = String::equal(c.className, "ORV_StorageSystem") ||
                                  String::equal(c.className, "ORV_NodeSystem")
                              ? "Name"
                              : "DeviceID";
        bool found = false;
        for (const CIMInstance& instance : toVector(instancesOf(c.className)))
        {
            if (keyOf(instance.getPath(), key) == String(c.deviceID))
            {
                found = true;
                const CIMValue got = valueOf(instance, c.property);
                EXPECT_TRUE(got == c.expected)
                    << c.className << "." << c.property << " = " << got.toString();
            }
        }
        EXPECT_TRUE(found) << c.className << " " << c.deviceID;
    }
}

TEST_F(ElementProviders, VolumeEnumerationCrossesChunks)
{
    loadModel(R"({"volumes": {"count": 451}})");
    const std::vector<CIMObjectPath> names = toVector(namesOf("ORV_StorageVolume"));
    const std::multiset<std::string> ids = keysOf(names, "DeviceID");
    EXPECT_EQ(451u, names.size());
    EXPECT_EQ(451u, std::set<std::string>(ids.begin(), ids.end()).size());
    EXPECT_EQ(3ul, orvsim_call_count("api_getVVs_chunk"));
}

TEST_F(ElementProviders, EveryListQueryHoldsTheSemaphoreAlone)
{
    orvsim_reset_sem_counters();
    for (const char* className : {"ORV_StorageSystem", "ORV_NodeSystem", "ORV_DiskStorageExtent",
                                  "ORV_FCPort", "ORV_EthernetPort", "ORV_StorageVolume"})
    {
        instancesOf(className);
        namesOf(className);
    }
    EXPECT_EQ(0ul, orvsim_unbracketed_calls());
    EXPECT_EQ(1, orvsim_sem_max_depth());
    EXPECT_EQ(orvsim_sem_waits(), orvsim_sem_posts());
}

TEST_F(ElementProviders, FailuresBecomeCIMErrors)
{
    struct Case
    {
        const char* fault; // call that fails with status 5, leaving an array to free
        std::function<void()> request;
        CIMStatusCode expected;
        const char* text;
    };
    const CIMObjectPath disk = namesOf("ORV_DiskStorageExtent")[0];
    const std::vector<Case> cases = {
        {"api_getNodes", [] { namesOf("ORV_NodeSystem"); }, CIM_ERR_FAILED, "status = 5"},
        {"api_getDiskStats", [] { instancesOf("ORV_DiskStorageExtent"); }, CIM_ERR_FAILED,
         "api_getDiskStats failed"},
        {"api_getPortStats", [] { namesOf("ORV_FCPort"); }, CIM_ERR_FAILED, "status = 5"},
        {"api_getVVs_chunk", [] { instancesOf("ORV_StorageVolume"); }, CIM_ERR_FAILED,
         "ORV_StorageVolumeProvider"},
        {"cim_sem_wait", [] { namesOf("ORV_EthernetPort"); }, CIM_ERR_FAILED, "status = 5"},
        {nullptr, [] { namesOf("ORV_StorageVolume", "mallory"); }, CIM_ERR_ACCESS_DENIED, ""},
        {nullptr,
         [&]
         {
             objectManager().getInstance(contextFor(""), ORV, withKey(disk, "DeviceID", nullptr),
                                         false, false, false, CIMPropertyList());
         },
         CIM_ERR_INVALID_PARAMETER, "DeviceID"},
    };
    for (const Case& c : cases)
    {
        loadModel(SMALL_MODEL);
        if (c.fault)
        {
            ASSERT_EQ(0, orvsim_set_fault(c.fault, API_ERR_IO, 0, 1));
        }
        std::string message;
        EXPECT_EQ(c.expected, statusOf(c.request, &message))
            << (c.fault ? c.fault : "request") << ": " << message;
        EXPECT_NE(std::string::npos, message.find(c.text)) << message;
        EXPECT_EQ(0, orvsim_sem_depth());
    }
}
