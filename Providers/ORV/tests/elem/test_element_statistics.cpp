// The five element-to-statistics associations, through the object manager
// as a client reaches them (the elements served by the sibling stand-ins)
// and called directly as the server calls them.

#include <cstdlib>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Sdk/CollectingResponseHandlers.h>

#include "ModuleFixture.h"
#include "orvsim.h"

using namespace orvtest;
using namespace Pegasus;

namespace
{

const CIMNamespaceName NS("root/orv");

// Two nodes; one port of each protocol family that the element paths tell
// apart; two disks; two volumes.
const char* const MODEL = R"({
  "nodes": {"count": 2},
  "ports": {"items": [
    {"node": 0, "slot": 1, "port": 1, "type": "target", "protocol": "fc", "deviceID": "P-FC"},
    {"node": 0, "slot": 3, "port": 1, "type": "target", "protocol": "fcoe", "deviceID": "P-FCOE"},
    {"node": 1, "slot": 2, "port": 1, "type": "target", "protocol": "iscsi", "deviceID": "P-ISCSI"},
    {"node": 1, "slot": 3, "port": 2, "type": "init", "protocol": "ip", "deviceID": "P-IP"}]},
  "disks": {"items": [{"deviceID": "5000C50000A00001"}, {"deviceID": "5000C50000A00002"}]},
  "volumes": {"items": [
    {"name": "va", "wwn": "60002AC0000000000000000000A0000A"},
    {"name": "vb", "wwn": "60002AC0000000000000000000A0000B"}]},
  "vluns": {"count": 0}
})";

const char* const VOLUME_A = "60002AC0000000000000000000A0000A";

struct Association
{
    const char* className;
    const char* provider;
};

const Association ARRAY = {"ORV_ArrayElementStatisticalData",
                           "ORV_ArrayElementStatisticalDataProvider"};
const Association NODE = {"ORV_NodeElementStatisticalData",
                          "ORV_NodeElementStatisticalDataProvider"};
const Association DISK = {"ORV_DiskElementStatisticalData",
                          "ORV_DiskElementStatisticalDataProvider"};
const Association PORT = {"ORV_PortElementStatisticalData",
                          "ORV_PortElementStatisticalDataProvider"};
const Association VOLUME = {"ORV_VolumeElementStatisticalData",
                            "ORV_VolumeElementStatisticalDataProvider"};

std::string keyValue(const CIMObjectPath& path, const char* name)
{
    Array<CIMKeyBinding> keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        if (keys[i].getName().equal(name))
        {
            return str(keys[i].getValue());
        }
    }
    return "<none>";
}

// "class DeviceID-or-Name @SystemName" for an element, "class InstanceID" for
// statistics: what identifies the instance, without the host.
std::string describe(const CIMObjectPath& path)
{
    const std::string cls = str(path.getClassName().getString());
    if (path.getClassName().getString().find("StatisticalData") != PEG_NOT_FOUND)
    {
        return cls + " " + keyValue(path, "InstanceID");
    }
    if (cls == "ORV_StorageSystem" || cls == "ORV_NodeSystem")
    {
        return cls + " " + keyValue(path, "Name");
    }
    return cls + " " + keyValue(path, "DeviceID") + " @" + keyValue(path, "SystemName");
}

CIMObjectPath keyRef(const CIMObjectPath& assoc, const char* role)
{
    return CIMObjectPath(String(keyValue(assoc, role).c_str()));
}

CIMObjectPath pathWith(const CIMName& className,
                       const std::vector<std::pair<const char*, std::string>>& keys)
{
    Array<CIMKeyBinding> bindings;
    for (const auto& k : keys)
    {
        bindings.append(CIMKeyBinding(k.first, String(k.second.c_str()), CIMKeyBinding::STRING));
    }
    return CIMObjectPath(String(), NS, className, bindings);
}

CIMObjectPath volumePath(const std::string& deviceID)
{
    return pathWith("ORV_StorageVolume", {{"CreationClassName", "ORV_StorageVolume"},
                                          {"DeviceID", deviceID},
                                          {"SystemCreationClassName", "ORV_StorageSystem"},
                                          {"SystemName", simSystemName()}});
}

class ElementStatisticsTest : public ModuleFixture
{
protected:
    void SetUp() override
    {
        ModuleFixture::SetUp();
        loadModelJson(MODEL);
    }

    void TearDown() override
    {
        for (CIMProvider* p : _providers)
        {
            p->terminate();
        }
        ModuleFixture::TearDown();
    }

    CIMAssociationProvider* provider(const Association& a)
    {
        CIMProvider* p = createProvider(a.provider);
        EXPECT_NE(nullptr, p) << a.provider;
        if (!p)
        {
            return nullptr;
        }
        CIMOMHandle handle = om().handle();
        p->initialize(handle);
        _providers.push_back(p);
        return dynamic_cast<CIMAssociationProvider*>(p);
    }

    Array<CIMObjectPath> associatorNames(const CIMObjectPath& object, const Association& a)
    {
        return om().associatorNames(contextFor(READER_USER), NS, object, a.className, CIMName(),
                                    String(), String());
    }

    Array<CIMObjectPath> referenceNames(const CIMObjectPath& object, const Association& a)
    {
        return om().referenceNames(contextFor(READER_USER), NS, object, a.className, String());
    }

    // Every pair of an association as "element | statistics".
    std::set<std::string> pairs(const Association& a)
    {
        std::set<std::string> result;
        Array<CIMObjectPath> names = enumerateInstanceNames(READER_USER, a.className);
        for (Uint32 i = 0; i < names.size(); i++)
        {
            result.insert(describe(keyRef(names[i], "ManagedElement")) + " | " +
                          describe(keyRef(names[i], "Stats")));
        }
        EXPECT_EQ(names.size(), result.size()) << a.className << ": a pair is listed twice";
        return result;
    }

    std::vector<CIMProvider*> _providers;
};

TEST_F(ElementStatisticsTest, EveryElementIsPairedWithItsStatistics)
{
    const std::string sys = simSystemName();
    const struct
    {
        Association association;
        std::set<std::string> pairs;
    } cases[] = {
        {ARRAY,
         {"ORV_StorageSystem " + sys + " | ORV_ArrayStatisticalData QZ_KYRO:" + sys + "-Stats"}},
        {NODE,
         {"ORV_NodeSystem 0 | ORV_NodeStatisticalData QZ_KYRO:0-Stats",
          "ORV_NodeSystem 1 | ORV_NodeStatisticalData QZ_KYRO:1-Stats"}},
        {DISK,
         {"ORV_DiskStorageExtent 5000C50000A00001 @" + sys +
              " | ORV_DiskStatisticalData QZ_KYRO:5000C50000A00001-Stats",
          "ORV_DiskStorageExtent 5000C50000A00002 @" + sys +
              " | ORV_DiskStatisticalData QZ_KYRO:5000C50000A00002-Stats"}},
        // FCoE is presented as Fibre Channel; iSCSI and IP as Ethernet.
        {PORT,
         {"ORV_FCPort P-FC @0 | ORV_PortStatisticalData QZ_KYRO:P-FC-Stats",
          "ORV_FCPort P-FCOE @0 | ORV_PortStatisticalData QZ_KYRO:P-FCOE-Stats",
          "ORV_EthernetPort P-ISCSI @1 | ORV_PortStatisticalData QZ_KYRO:P-ISCSI-Stats",
          "ORV_EthernetPort P-IP @1 | ORV_PortStatisticalData QZ_KYRO:P-IP-Stats"}},
        {VOLUME,
         {"ORV_StorageVolume 60002AC0000000000000000000A0000A @" + sys +
              " | ORV_VolumeStatisticalData QZ_KYRO:60002AC0000000000000000000A0000A-Stats",
          "ORV_StorageVolume 60002AC0000000000000000000A0000B @" + sys +
              " | ORV_VolumeStatisticalData QZ_KYRO:60002AC0000000000000000000A0000B-Stats"}},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(c.pairs, pairs(c.association)) << c.association.className;

        // Instances carry the same paths, every path with this system's host,
        // and each one is found again by getInstance.
        Array<CIMObjectPath> names = enumerateInstanceNames(READER_USER, c.association.className);
        Array<CIMInstance> instances = enumerateInstances(READER_USER, c.association.className);
        ASSERT_EQ(names.size(), instances.size()) << c.association.className;
        for (Uint32 i = 0; i < names.size(); i++)
        {
            EXPECT_TRUE(names[i].identical(instances[i].getPath())) << str(names[i].toString());
            EXPECT_EQ(simHostName(), str(names[i].getHost()));
            EXPECT_EQ(simHostName(), str(keyRef(names[i], "ManagedElement").getHost()));
            EXPECT_EQ(simHostName(), str(keyRef(names[i], "Stats").getHost()));
            CIMInstance again = getInstance(READER_USER, names[i]);
            EXPECT_TRUE(again.getPath().identical(names[i])) << str(names[i].toString());
        }
    }
}

TEST_F(ElementStatisticsTest, EachEndLeadsToTheOtherAndToTheirPair)
{
    for (const Association& a : {ARRAY, NODE, DISK, PORT, VOLUME})
    {
        Array<CIMObjectPath> names = enumerateInstanceNames(READER_USER, a.className);
        ASSERT_LT(0u, names.size()) << a.className;
        for (Uint32 i = 0; i < names.size(); i++)
        {
            const CIMObjectPath element = keyRef(names[i], "ManagedElement");
            const CIMObjectPath stats = keyRef(names[i], "Stats");
            const std::string where = a.className + std::string(": ") + describe(element);

            // Element to statistics: the instance is built here, not fetched.
            Array<CIMObject> fromElement =
                om().associators(contextFor(READER_USER), NS, element, a.className, CIMName(),
                                 String(), String(), false, false, CIMPropertyList());
            ASSERT_EQ(1u, fromElement.size()) << where;
            EXPECT_EQ(describe(stats), describe(fromElement[0].getPath())) << where;

            // Statistics to element: fetched from the sibling module.
            Array<CIMObject> fromStats =
                om().associators(contextFor(READER_USER), NS, stats, a.className, CIMName(),
                                 String(), String(), false, false, CIMPropertyList());
            ASSERT_EQ(1u, fromStats.size()) << where;
            EXPECT_EQ(describe(element), describe(fromStats[0].getPath())) << where;

            // Whichever end is named, the pair puts the element first.
            for (const CIMObjectPath& end : {element, stats})
            {
                Array<CIMObjectPath> refs = referenceNames(end, a);
                ASSERT_EQ(1u, refs.size()) << where;
                EXPECT_TRUE(refs[0].identical(names[i])) << where << " from " << describe(end);
            }
        }
    }
}

TEST_F(ElementStatisticsTest, StatisticsBuiltHereAreThoseOfTheStatisticsProviders)
{
    const std::string sys = simSystemName();
    const struct
    {
        Association association;
        CIMObjectPath element;
        const char* statsClass;
        const char* statsInstanceID;
        const char* call;
        const char* expectedCall; // the one query, as the statistics provider makes it
    } cases[] = {
        {DISK,
         pathWith("ORV_DiskStorageExtent", {{"DeviceID", "5000C50000A00002"}, {"SystemName", sys}}),
         "ORV_DiskStatisticalData", "QZ_KYRO:5000C50000A00002-Stats", "api_getDiskStats",
         "api_getDiskStats(0xFFFFFFFE,0xFFFFFFFFFFFFFFF6,0xFFFFFFFF,0xFFFFFFFF,0xFFFFFFFF)"},
        {PORT, pathWith("ORV_EthernetPort", {{"DeviceID", "P-ISCSI"}, {"SystemName", "1"}}),
         "ORV_PortStatisticalData", "QZ_KYRO:P-ISCSI-Stats", "api_getPortStats",
         "api_getPortStats(0,0xFFFFFFFF,0xFFFFFFFF,0xFFFFFFFF)"},
        // One volume is asked for by its WWN, in one call without a chunk.
        {VOLUME, volumePath(VOLUME_A), "ORV_VolumeStatisticalData",
         "QZ_KYRO:60002AC0000000000000000000A0000A-Stats",
         "api_getVolumeStats_chunk",
         "api_getVolumeStats_chunk(0x60002AC000000000,0x0000000000A0000A,0,0)"},
    };
    // Counters move with the clock; both sides must read the same sample.
    orvsim_set_time(1700000000);
    for (const auto& c : cases)
    {
        const char* where = c.association.className;
        const CIMInstance expected =
            getInstance(READER_USER, instancePath(c.statsClass, c.statsInstanceID));
        orvsim_reset_call_counts();
        Array<CIMObject> built =
            om().associators(contextFor(READER_USER), NS, c.element, c.association.className,
                             CIMName(), String(), String(), false, false, CIMPropertyList());
        ASSERT_EQ(1u, built.size()) << where;
        EXPECT_EQ(1ul, orvsim_call_count(c.call)) << where;
        char* last = orvsim_last_call(c.call);
        EXPECT_EQ(c.expectedCall, std::string(last ? last : "")) << where;
        free(last);

        EXPECT_TRUE(built[0].getPath().identical(expected.getPath())) << where;
        ASSERT_EQ(expected.getPropertyCount(), built[0].getPropertyCount()) << where;
        for (Uint32 i = 0; i < expected.getPropertyCount(); i++)
        {
            const CIMConstProperty want = expected.getProperty(i);
            const Uint32 at = built[0].findProperty(want.getName());
            ASSERT_NE(PEG_NOT_FOUND, at) << where << " " << str(want.getName().getString());
            EXPECT_EQ(str(want.getValue().toString()),
                      str(built[0].getProperty(at).getValue().toString()))
                << where << " " << str(want.getName().getString());
        }

        // The caller's property list reaches the statistics built here.
        Array<CIMObject> filtered = om().associators(
            contextFor(READER_USER), NS, c.element, c.association.className, CIMName(), String(),
            String(), false, false, CIMPropertyList(Array<CIMName>(1, CIMName("ReadIOs"))));
        ASSERT_EQ(1u, filtered.size()) << where;
        EXPECT_EQ(1u, filtered[0].getPropertyCount()) << where;
        EXPECT_NE(PEG_NOT_FOUND, filtered[0].findProperty("ReadIOs")) << where;
    }
    orvsim_set_time(0);
}

TEST_F(ElementStatisticsTest, EveryQueryIsMadeAloneUnderTheSemaphore)
{
    for (const Association& a : {ARRAY, NODE, DISK, PORT, VOLUME})
    {
        orvsim_reset_sem_counters();
        Array<CIMObjectPath> names = enumerateInstanceNames(READER_USER, a.className);
        enumerateInstances(READER_USER, a.className);
        for (Uint32 i = 0; i < names.size(); i++)
        {
            associatorNames(keyRef(names[i], "ManagedElement"), a);
            associatorNames(keyRef(names[i], "Stats"), a);
            referenceNames(keyRef(names[i], "ManagedElement"), a);
        }
        EXPECT_EQ(0ul, orvsim_unbracketed_calls()) << a.className;
        EXPECT_EQ(1, orvsim_sem_max_depth()) << a.className;
        EXPECT_EQ(0, orvsim_sem_depth()) << a.className;
        EXPECT_EQ(orvsim_sem_waits(), orvsim_sem_posts()) << a.className;
        EXPECT_EQ(0ul, orvsim_sem_bad_posts()) << a.className;
    }
}

TEST_F(ElementStatisticsTest, VolumeStatisticsFindTheirVolumeByWWN)
{
    // A WWN written in lower case still names the volume, which is fetched
    // with the caller's property list.
    CIMObjectPath stats =
        instancePath("ORV_VolumeStatisticalData", "QZ_KYRO:60002ac0000000000000000000a0000a-Stats");
    CIMPropertyList onlyName(Array<CIMName>(1, CIMName("ElementName")));
    Array<CIMObject> volumes =
        om().associators(contextFor(READER_USER), NS, stats, VOLUME.className, CIMName(), String(),
                         String(), false, false, onlyName);
    ASSERT_EQ(1u, volumes.size());
    EXPECT_EQ(VOLUME_A, keyValue(volumes[0].getPath(), "DeviceID"));
    EXPECT_EQ(1u, volumes[0].getPropertyCount());
    EXPECT_NE(PEG_NOT_FOUND, volumes[0].findProperty("ElementName"));

    // A volume the array does not have is the sibling's answer to give.
    CimOutcome unknown = runCatching(
        [&]()
        {
            associatorNames(instancePath("ORV_VolumeStatisticalData",
                                         "QZ_KYRO:60002AC000000000000000000000FFFF-Stats"),
                            VOLUME);
        });
    EXPECT_EQ(CIM_ERR_NOT_FOUND, unknown.code) << unknown.message;
}

TEST_F(ElementStatisticsTest, VolumeDeviceIDsThatNameNoVolumeFindNothing)
{
    for (const char* deviceID : {"60002AC000000000000000000000FFFF", "not-a-wwn",
                                 // The all-volumes selector must not widen the query.
                                 "FFFFFFFFFFFFFFF60000000000000000"})
    {
        EXPECT_EQ(0u, associatorNames(volumePath(deviceID), VOLUME).size()) << deviceID;
    }
    // The WWN is compared as a number: lower case finds the volume.
    EXPECT_EQ(1u, associatorNames(volumePath("60002ac0000000000000000000a0000a"), VOLUME).size());
}

TEST_F(ElementStatisticsTest, VolumePairsAreListedAcrossAllChunks)
{
    loadModelJson(R"({"volumes": {"count": 450}, "vluns": {"count": 0}})");
    orvsim_reset_call_counts();
    orvsim_reset_sem_counters();
    Array<CIMObjectPath> names = enumerateInstanceNames(READER_USER, VOLUME.className);
    ASSERT_EQ(450u, names.size());
    std::set<std::string> volumes;
    for (Uint32 i = 0; i < names.size(); i++)
    {
        volumes.insert(keyValue(keyRef(names[i], "ManagedElement"), "DeviceID"));
    }
    EXPECT_EQ(450u, volumes.size());
    // 200 + 200 + 50, each call alone under the semaphore.
    EXPECT_EQ(3ul, orvsim_call_count("api_getVVs_chunk"));
    EXPECT_EQ(0ul, orvsim_unbracketed_calls());
    EXPECT_EQ(1, orvsim_sem_max_depth());
}

TEST_F(ElementStatisticsTest, MissingKeysAreInvalidParameters)
{
    const std::string sys = simSystemName();
    const struct
    {
        Association association;
        CIMObjectPath object;
        const char* message;
    } cases[] = {
        {VOLUME,
         pathWith("ORV_StorageVolume",
                  {{"CreationClassName", "ORV_StorageVolume"}, {"SystemName", sys}}),
         "ORV_VolumeElementStatisticalDataProvider DeviceID key not found."},
        {VOLUME, pathWith("ORV_VolumeStatisticalData", {{"ID", VOLUME_A}}),
         "ORV_VolumeElementStatisticalDataProvider InstanceID key not found."},
        {DISK, pathWith("ORV_DiskStorageExtent", {{"DeviceID", ""}, {"SystemName", sys}}),
         "ORV_DiskElementStatisticalDataProvider DeviceID key not found."},
        {PORT, pathWith("ORV_EthernetPort", {{"SystemName", "1"}}),
         "ORV_PortElementStatisticalDataProvider DeviceID key not found."},
        {PORT, pathWith("ORV_PortStatisticalData", {{"InstanceID", ""}}),
         "ORV_PortElementStatisticalDataProvider InstanceID key not found."},
        {NODE, pathWith("ORV_NodeSystem", {{"CreationClassName", "ORV_NodeSystem"}}),
         "ORV_NodeElementStatisticalDataProvider Name key not found"},
        {NODE, pathWith("ORV_NodeStatisticalData", {{"Name", "0"}}),
         "ORV_NodeElementStatisticalDataProvider InstanceID key not found."},
    };
    for (const auto& c : cases)
    {
        CimOutcome outcome = runCatching([&]() { associatorNames(c.object, c.association); });
        EXPECT_EQ(CIM_ERR_INVALID_PARAMETER, outcome.code) << str(c.object.toString());
        EXPECT_EQ(c.message, outcome.message) << str(c.object.toString());
    }
}

TEST_F(ElementStatisticsTest, ArrayEndsAreKnownByTheirPaths)
{
    const std::string sys = simSystemName();
    const CIMObjectPath system =
        pathWith("ORV_StorageSystem", {{"CreationClassName", "ORV_StorageSystem"}, {"Name", sys}});
    // The host of the given path does not matter.
    CIMObjectPath elsewhere = system;
    elsewhere.setHost("elsewhere");
    Array<CIMObjectPath> stats = associatorNames(elsewhere, ARRAY);
    ASSERT_EQ(1u, stats.size());
    EXPECT_EQ("QZ_KYRO:" + sys + "-Stats", keyValue(stats[0], "InstanceID"));

    // Any other path of either class is no end of the pair, also for
    // associators; the error names the provider.
    const CIMObjectPath strangers[] = {
        pathWith("ORV_StorageSystem",
                 {{"CreationClassName", "ORV_StorageSystem"}, {"Name", "other"}}),
        instancePath("ORV_ArrayStatisticalData", "QZ_KYRO:other-Stats")};
    for (const CIMObjectPath& stranger : strangers)
    {
        CimOutcome outcome = runCatching(
            [&]()
            {
                om().associators(contextFor(READER_USER), NS, stranger, ARRAY.className, CIMName(),
                                 String(), String(), false, false, CIMPropertyList());
            });
        EXPECT_EQ(CIM_ERR_NOT_FOUND, outcome.code) << str(stranger.toString());
        EXPECT_EQ("ORV_ArrayElementStatisticalDataProvider CIM Object not found.", outcome.message);
    }
}

TEST_F(ElementStatisticsTest, GetInstanceChecksKeyCountThenMatches)
{
    Array<CIMObjectPath> names = enumerateInstanceNames(READER_USER, DISK.className);
    ASSERT_EQ(2u, names.size());

    CIMObjectPath threeKeys = names[0];
    Array<CIMKeyBinding> keys = threeKeys.getKeyBindings();
    keys.append(CIMKeyBinding("Extra", "x", CIMKeyBinding::STRING));
    threeKeys.setKeyBindings(keys);
    CimOutcome outcome = runCatching([&]() { getInstance(READER_USER, threeKeys); });
    EXPECT_EQ(CIM_ERR_INVALID_PARAMETER, outcome.code);
    EXPECT_EQ("ORV_DiskElementStatisticalDataProvider Expect two keys.", outcome.message);

    // The first disk with the second disk's statistics is no pair.
    CIMObjectPath crossed = names[0];
    Array<CIMKeyBinding> crossedKeys;
    crossedKeys.append(CIMKeyBinding("ManagedElement", keyRef(names[0], "ManagedElement")));
    crossedKeys.append(CIMKeyBinding("Stats", keyRef(names[1], "Stats")));
    crossed.setKeyBindings(crossedKeys);
    outcome = runCatching([&]() { getInstance(READER_USER, crossed); });
    EXPECT_EQ(CIM_ERR_NOT_FOUND, outcome.code);
    EXPECT_EQ("ORV_DiskElementStatisticalDataProvider CIM Object not found.", outcome.message);
}

TEST_F(ElementStatisticsTest, ManagementFailuresEndTheRequestWithTheCountSoFar)
{
    const CIMObjectPath fcPort =
        pathWith("ORV_FCPort", {{"DeviceID", "P-FC"}, {"SystemName", "0"}});
    const struct
    {
        const char* what;
        const char* fault; // call=status[@after]
        std::function<void()> request;
        const char* assembled;
    } cases[] = {
        {"disk list", "api_getDiskStats=5",
         [&]() { enumerateInstanceNames(READER_USER, DISK.className); }, "0"},
        {"node list", "api_getNodes=5", [&]() { enumerateInstances(READER_USER, NODE.className); },
         "0"},
        {"port list from a port", "api_getPortStats=5", [&]() { associatorNames(fcPort, PORT); },
         "0"},
        {"semaphore before a volume's statistics", "cim_sem_wait=35",
         [&]() { associatorNames(volumePath(VOLUME_A), VOLUME); }, "0"},
        // The second chunk fails after the first 200 pairs were built.
        {"second volume chunk", "api_getVVs_chunk=5@1",
         [&]()
         {
             loadModelJson(R"({"volumes": {"count": 250}, "vluns": {"count": 0}})");
             enumerateInstanceNames(READER_USER, VOLUME.className);
         },
         "200"},
    };
    for (const auto& c : cases)
    {
        loadModelJson(MODEL);
        ASSERT_EQ(0, orvsim_set_faults_spec(c.fault)) << c.fault;
        std::string log;
        CimOutcome outcome;
        log = captureLog([&]() { outcome = runCatching([&]() { c.request(); }); });
        orvsim_clear_faults();
        EXPECT_EQ(CIM_ERR_FAILED, outcome.code) << c.what << ": " << outcome.message;
        EXPECT_NE(std::string::npos,
                  log.find(std::string("exception thrown while building instances, # of "
                                       "instances assembled so far = ") +
                           c.assembled + "\n"))
            << c.what << "\n"
            << log;
        EXPECT_EQ(0, orvsim_sem_depth()) << c.what;
    }
}

TEST_F(ElementStatisticsTest, ManagementFailuresUseTheStatisticsProvidersWords)
{
    const CIMObjectPath fcPort =
        pathWith("ORV_FCPort", {{"DeviceID", "P-FC"}, {"SystemName", "0"}});
    // The volume members log the volume statistics' own line; disks, ports
    // and nodes have none, so only the frame's count line is written.
    const char* const VOLUME_LINE =
        "ORV_VolumeStatisticalDataProvider::_buildVVInstances  getVVs_chunk() failed, status = ";
    const struct
    {
        const char* what;
        const char* fault;
        std::function<void()> request;
        const char* line; // status appended, then " \n"; null: no such line
    } cases[] = {
        {"volume list", "api_getVVs_chunk=5",
         [&]() { enumerateInstanceNames(READER_USER, VOLUME.className); }, "5"},
        {"a volume's statistics", "api_getVolumeStats_chunk=7",
         [&]() { associatorNames(volumePath(VOLUME_A), VOLUME); }, "7"},
        {"semaphore before a volume's statistics", "cim_sem_wait=35",
         [&]() { associatorNames(volumePath(VOLUME_A), VOLUME); }, "35"},
        {"disk list", "api_getDiskStats=5",
         [&]() { enumerateInstanceNames(READER_USER, DISK.className); }, nullptr},
        {"port list", "api_getPortStats=5", [&]() { associatorNames(fcPort, PORT); }, nullptr},
        {"node list", "api_getNodes=5", [&]() { enumerateInstances(READER_USER, NODE.className); },
         nullptr},
    };
    for (const auto& c : cases)
    {
        loadModelJson(MODEL);
        ASSERT_EQ(0, orvsim_set_faults_spec(c.fault)) << c.fault;
        CimOutcome outcome;
        const std::string log =
            captureLog([&]() { outcome = runCatching([&]() { c.request(); }); });
        orvsim_clear_faults();
        EXPECT_EQ(CIM_ERR_FAILED, outcome.code) << c.what;
        EXPECT_EQ("Internal error.", outcome.message) << c.what;
        if (c.line)
        {
            EXPECT_NE(std::string::npos, log.find(std::string(VOLUME_LINE) + c.line + " \n"))
                << c.what << "\n"
                << log;
        }
        else
        {
            EXPECT_EQ(std::string::npos, log.find("failed, status")) << c.what << "\n" << log;
        }
    }
}

TEST_F(ElementStatisticsTest, ResultClassFiltersOfEachMember)
{
    const std::string sys = simSystemName();
    const CIMObjectPath system =
        pathWith("ORV_StorageSystem", {{"CreationClassName", "ORV_StorageSystem"}, {"Name", sys}});
    const CIMObjectPath arrayStats =
        instancePath("ORV_ArrayStatisticalData", String(("QZ_KYRO:" + sys + "-Stats").c_str()));
    const CIMObjectPath node = pathWith("ORV_NodeSystem", {{"Name", "1"}});
    const CIMObjectPath disk =
        pathWith("ORV_DiskStorageExtent", {{"DeviceID", "5000C50000A00001"}, {"SystemName", sys}});
    const CIMObjectPath fcPort =
        pathWith("ORV_FCPort", {{"DeviceID", "P-FCOE"}, {"SystemName", "0"}});
    const struct
    {
        Association association;
        CIMObjectPath object;
        const char* resultClass;
        int expected; // -1: refused without any handler call
    } cases[] = {
        {ARRAY, system, "CIM_ComputerSystem", -1},
        {ARRAY, system, "CIM_BlockStorageStatisticalData", 1},
        {ARRAY, arrayStats, "CIM_ManagedElement", 1},
        {ARRAY, arrayStats, "CIM_BlockStorageStatisticalData", -1},
        {NODE, node, "CIM_System", -1},
        {NODE, node, "ORV_NodeStatisticalData", 1},
        {DISK, disk, "CIM_StorageExtent", -1},
        {DISK, disk, "CIM_ManagedElement", -1},
        {DISK, disk, "ORV_DiskStatisticalData", 1},
        {PORT, fcPort, "CIM_EthernetPort", -1},
        {PORT, fcPort, "CIM_BlockStorageStatisticalData", 1},
        {VOLUME, volumePath(VOLUME_A), "CIM_StorageVolume", -1},
        {VOLUME, volumePath(VOLUME_A), "ORV_VolumeStatisticalData", 1},
    };
    for (const auto& c : cases)
    {
        CIMAssociationProvider* p = provider(c.association);
        ASSERT_NE(nullptr, p);
        Sdk::CollectingObjectPathResponseHandler handler;
        p->associatorNames(contextFor(READER_USER), c.object, CIMName(), c.resultClass, String(),
                           String(), handler);
        const std::string where = describe(c.object) + " -> " + c.resultClass;
        if (c.expected < 0)
        {
            EXPECT_EQ("", handler.callSequence()) << where;
        }
        else
        {
            EXPECT_EQ((Uint32)c.expected, handler.getObjects().size()) << where;
        }
    }

    // References accept the generic association class and this one only.
    CIMAssociationProvider* p = provider(DISK);
    ASSERT_NE(nullptr, p);
    for (const char* assocClass :
         {"CIM_ElementStatisticalData", DISK.className, "ORV_PortElementStatisticalData"})
    {
        Sdk::CollectingObjectPathResponseHandler handler;
        p->referenceNames(contextFor(READER_USER), disk, assocClass, String(), handler);
        const bool own = std::string(assocClass) != "ORV_PortElementStatisticalData";
        EXPECT_EQ(own ? 1u : 0u, handler.getObjects().size()) << assocClass;
    }
}

} // namespace
