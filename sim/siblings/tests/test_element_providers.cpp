// The element providers through the object manager: enumerations agree with
// the array's model, values come from its records, and failures of the
// management API or of the request become clear CIM errors.

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
    return objectManager().enumerateInstances(contextFor(""), ORV, CIMName(className), true,
                                              false, false, false, CIMPropertyList());
}

String keyOf(const CIMObjectPath& path, const char* name)
{
    for (Uint32 i = 0; i < path.getKeyBindings().size(); i++)
    {
        if (path.getKeyBindings()[i].getName().equal(CIMName(name)))
        {
            return path.getKeyBindings()[i].getValue();
        }
    }
    return String("<none>");
}

CIMValue valueOf(const CIMInstance& instance, const char* name)
{
    const Uint32 pos = instance.findProperty(CIMName(name));
    return pos == PEG_NOT_FOUND ? CIMValue() : instance.getProperty(pos).getValue();
}

// The instance of className whose key keyName holds keyValue.
CIMInstance findInstance(const char* className, const char* keyName, const char* keyValue)
{
    for (const CIMInstance& instance : toVector(instancesOf(className)))
    {
        if (keyOf(instance.getPath(), keyName) == String(keyValue))
        {
            return instance;
        }
    }
    ADD_FAILURE() << "no " << className << " with " << keyName << "=" << keyValue;
    return CIMInstance();
}

class ElementProviders : public ::testing::Test
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

TEST_F(ElementProviders, EnumerationsListEveryElementOfTheModelOnce)
{
    struct Case
    {
        const char* className;
        const char* key;
        std::set<std::string> expected; // written from SMALL_MODEL
    };
    const std::vector<Case> cases = {
        {"ORV_StorageSystem", "Name", {"ORV-TEST-7"}},
        {"ORV_NodeSystem", "Name", {"0", "1"}},
        {"ORV_DiskStorageExtent", "DeviceID",
         {"5000C500A1B2C3D0", "5000C500A1B2C3D1", "5000C500A1B2C3D2"}},
        // FC and FCoE ports are Fibre Channel ports; iSCSI and SAS the rest.
        {"ORV_FCPort", "DeviceID", {"20010002AC000A01", "20020002AC000A02"}},
        {"ORV_EthernetPort", "DeviceID", {"00:02:ac:00:0a:03", "50002AC000000A04"}},
        {"ORV_StorageVolume", "DeviceID",
         {"60002AC000000000000000000000A001", "60002AC000000000000000000000A002",
          "60002AC000000000000000000000A003"}},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.className);
        std::multiset<std::string> fromNames;
        for (const CIMObjectPath& path : toVector(namesOf(c.className)))
        {
            fromNames.insert((const char*)keyOf(path, c.key).getCString());
        }
        std::multiset<std::string> fromInstances;
        for (const CIMInstance& instance : toVector(instancesOf(c.className)))
        {
            fromInstances.insert((const char*)keyOf(instance.getPath(), c.key).getCString());
        }
        const std::multiset<std::string> expected(c.expected.begin(), c.expected.end());
        EXPECT_EQ(expected, fromNames);
        EXPECT_EQ(expected, fromInstances);
    }
}

TEST_F(ElementProviders, InstancesCarryTheModelsValues)
{
    struct Case
    {
        const char* className;
        const char* keyName;
        const char* keyValue;
        const char* property;
        CIMValue expected;
    };
    const std::vector<Case> cases = {
        {"ORV_StorageSystem", "Name", "ORV-TEST-7", "ElementName",
         CIMValue(String("ORV-TEST-7"))},
        {"ORV_StorageSystem", "Name", "ORV-TEST-7", "SystemID", CIMValue(Uint32(424242))},
        {"ORV_NodeSystem", "Name", "1", "NodeNumber", CIMValue(Uint16(1))},
        {"ORV_DiskStorageExtent", "DeviceID", "5000C500A1B2C3D1", "ElementName",
         CIMValue(String("0:1:0"))},
        // 1000 MiB of 512-byte blocks
        {"ORV_DiskStorageExtent", "DeviceID", "5000C500A1B2C3D1", "NumberOfBlocks",
         CIMValue(Uint64(2048000))},
        {"ORV_DiskStorageExtent", "DeviceID", "5000C500A1B2C3D1", "BlockSize",
         CIMValue(Uint64(512))},
        {"ORV_FCPort", "DeviceID", "20010002AC000A01", "SystemName", CIMValue(String("0"))},
        {"ORV_FCPort", "DeviceID", "20010002AC000A01", "Speed", CIMValue(Uint64(16000000000ULL))},
        {"ORV_FCPort", "DeviceID", "20010002AC000A01", "UsageRestriction", CIMValue(Uint16(2))},
        {"ORV_DiskStorageExtent", "DeviceID", "5000C500A1B2C3D2", "OperationalStatus",
         CIMValue(Array<Uint16>(1, 6))},
        {"ORV_EthernetPort", "DeviceID", "50002AC000000A04", "UsageRestriction",
         CIMValue(Uint16(3))},
        {"ORV_StorageVolume", "DeviceID", "60002AC000000000000000000000A002", "ElementName",
         CIMValue(String("vol-b"))},
        // 10 GiB of 512-byte blocks
        {"ORV_StorageVolume", "DeviceID", "60002AC000000000000000000000A002", "NumberOfBlocks",
         CIMValue(Uint64(20971520))},
        {"ORV_StorageVolume", "DeviceID", "60002AC000000000000000000000A002", "SystemName",
         CIMValue(String("ORV-TEST-7"))},
    };
    for (const Case& c : cases)
    {
        const CIMInstance instance = findInstance(c.className, c.keyName, c.keyValue);
        if (instance.isUninitialized())
        {
            continue;
        }
        const CIMValue got = valueOf(instance, c.property);
        EXPECT_TRUE(got == c.expected)
            << c.className << "." << c.property << " = " << got.toString();
    }
}

TEST_F(ElementProviders, PortAddressesComeFromTheModelsPortData)
{
    for (const char* deviceID : {"20010002AC000A01", "00:02:ac:00:0a:03"})
    {
        orvsim_port_info_t info = {};
        ASSERT_EQ(0, orvsim_get_port_info(deviceID, &info));
        const String address(info.wwn[0] ? info.wwn : info.mac);
        ASSERT_NE(0u, address.size());
        const char* className = info.wwn[0] ? "ORV_FCPort" : "ORV_EthernetPort";
        const CIMInstance port = findInstance(className, "DeviceID", deviceID);
        EXPECT_TRUE(valueOf(port, "PermanentAddress") == CIMValue(address)) << deviceID;
    }
}

TEST_F(ElementProviders, SuperclassEnumerationsReachTheElementProviders)
{
    // Through the class hierarchy of the schema: every port is a logical
    // port, every volume and disk a storage extent.
    EXPECT_EQ(4u, objectManager()
                      .enumerateInstanceNames(contextFor(""), ORV, CIMName("CIM_LogicalPort"))
                      .size());
    EXPECT_EQ(6u, objectManager()
                      .enumerateInstanceNames(contextFor(""), ORV, CIMName("CIM_StorageExtent"))
                      .size());
    EXPECT_EQ(3u, objectManager()
                      .enumerateInstanceNames(contextFor(""), ORV, CIMName("CIM_ComputerSystem"))
                      .size());
}

TEST_F(ElementProviders, VolumeEnumerationCrossesChunks)
{
    loadModel(R"({"volumes": {"count": 451}})");
    ASSERT_EQ(451u, orvsim_volume_count());
    const Array<CIMObjectPath> names = namesOf("ORV_StorageVolume");
    std::set<std::string> distinct;
    for (const CIMObjectPath& path : toVector(names))
    {
        distinct.insert((const char*)keyOf(path, "DeviceID").getCString());
    }
    EXPECT_EQ(451u, names.size());
    EXPECT_EQ(451u, distinct.size());
    EXPECT_GE(orvsim_call_count("api_getVVs_chunk"), 3ul);
}

TEST_F(ElementProviders, ManagementApiFailuresBecomeClearErrors)
{
    struct Case
    {
        const char* call;
        const char* className;
    };
    const std::vector<Case> cases = {
        {"api_getNodes", "ORV_NodeSystem"},
        {"api_getDiskStats", "ORV_DiskStorageExtent"},
        {"api_getPortStats", "ORV_FCPort"},
        {"api_getVVs_chunk", "ORV_StorageVolume"},
        {"cim_sem_wait", "ORV_EthernetPort"},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.call);
        loadModel(SMALL_MODEL);
        // The failing call also hands out an array: it must still be freed.
        ASSERT_EQ(0, orvsim_set_fault(c.call, API_ERR_IO, 0, 1));
        std::string message;
        EXPECT_EQ(CIM_ERR_FAILED, statusOf([&] { namesOf(c.className); }, &message));
        EXPECT_NE(std::string::npos, message.find("status = 5")) << message;
        EXPECT_EQ(CIM_ERR_FAILED, statusOf([&] { instancesOf(c.className); }));
        EXPECT_EQ(0, orvsim_sem_depth());
    }
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

TEST_F(ElementProviders, BadRequestsGetCIMErrors)
{
    const CIMObjectPath disk = namesOf("ORV_DiskStorageExtent")[0];
    CIMObjectPath noDeviceID = disk;
    Array<CIMKeyBinding> keys = disk.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        if (keys[i].getName().equal(CIMName("DeviceID")))
        {
            keys.remove(i);
            break;
        }
    }
    noDeviceID.setKeyBindings(keys);
    CIMObjectPath removedDisk = disk;
    keys = disk.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        if (keys[i].getName().equal(CIMName("DeviceID")))
        {
            keys[i].setValue("5000C500FFFFFFFF");
        }
    }
    removedDisk.setKeyBindings(keys);

    struct Case
    {
        const char* description;
        std::function<void()> call;
        CIMStatusCode expected;
    };
    const std::vector<Case> cases = {
        {"unknown user", [&] { namesOf("ORV_StorageVolume", "mallory"); },
         CIM_ERR_ACCESS_DENIED},
        {"missing key", [&] {
             objectManager().getInstance(contextFor(""), ORV, noDeviceID, false, false, false,
                                         CIMPropertyList());
         }, CIM_ERR_INVALID_PARAMETER},
        {"disk the array does not have", [&] {
             objectManager().getInstance(contextFor(""), ORV, removedDisk, false, false, false,
                                         CIMPropertyList());
         }, CIM_ERR_NOT_FOUND},
    };
    for (const Case& c : cases)
    {
        std::string message;
        EXPECT_EQ(c.expected, statusOf(c.call, &message)) << c.description << ": " << message;
    }
}
