// Manifests and the element-type tables, through the object manager with the
// simulated array and called directly as the server calls them.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Sdk/CollectingResponseHandlers.h>

#include "ModuleFixture.h"
#include "ORV_BlockStatisticsManifestProvider.h"
#include "ORV_Common.h"
#include "orvsim.h"

using namespace orvtest;

namespace
{

const CIMName MANIFEST("ORV_BlockStatisticsManifest");
const CIMNamespaceName NS("root/orv");

typedef ORV_BlockStatisticsManifestProvider M;

std::vector<std::string> strings(const Array<String>& a)
{
    std::vector<std::string> out;
    for (Uint32 i = 0; i < a.size(); i++)
    {
        out.push_back(str(a[i]));
    }
    return out;
}

String manifestID(const char* name)
{
    return String("QZ_KYRO:") + simSystemName().c_str() + "-" + name;
}

// The record layouts a client parses: the hit counters only for volumes.
const std::vector<std::string> VOLUME_SEQUENCE = {
    "InstanceID",    "ElementType", "StatisticTime",      "TotalIOs",          "KBytesTransferred",
    "IOTimeCounter", "ReadIOs",     "ReadHitIOs",         "ReadIOTimeCounter", "KBytesRead",
    "WriteIOs",      "WriteHitIOs", "WriteIOTimeCounter", "KBytesWritten"};
const std::vector<std::string> OTHER_SEQUENCE = {
    "InstanceID",         "ElementType",  "StatisticTime",     "TotalIOs",   "KBytesTransferred",
    "IOTimeCounter",      "ReadIOs",      "ReadIOTimeCounter", "KBytesRead", "WriteIOs",
    "WriteIOTimeCounter", "KBytesWritten"};

TEST(ElementTypes, MappingOfEverySmisValue)
{
    const struct
    {
        Uint16 type;
        const char* statsClass; // "" for unsupported
        const char* name;
        const char* fullName;
    } table[] = {
        {0, "", "Unknown-BlockStatisticsManifest", "Unknown Manifest"},
        {1, "", "Unknown-BlockStatisticsManifest", "Unknown Manifest"},
        {2, "ORV_ArrayStatisticalData", "ComputerSystem-BlockStatisticsManifest",
         "Computer System Manifest"},
        {3, "", "FrontEndComputerSystem-BlockStatisticsManifest",
         "Front-end Computer System Manifest"},
        {4, "ORV_NodeStatisticalData", "PeerComputerSystem-BlockStatisticsManifest",
         "Peer Computer System Manifest"},
        {5, "", "BackEndComputerSystem-BlockStatisticsManifest",
         "Back-end Computer System Manifest"},
        {6, "ORV_PortStatisticalData", "FrontEndPort-BlockStatisticsManifest",
         "Front-end Port Manifest"},
        {7, "ORV_PortStatisticalData", "BackEndPort-BlockStatisticsManifest",
         "Back-end Port Manifest"},
        {8, "ORV_VolumeStatisticalData", "Volume-BlockStatisticsManifest", "Volume Manifest"},
        {9, "", "Extent-BlockStatisticsManifest", "Extent Manifest"},
        {10, "ORV_DiskStatisticalData", "DiskDrive-BlockStatisticsManifest", "Disk Drive Manifest"},
        {11, "ORV_LUNStatisticalData", "ArbitraryLUs-BlockStatisticsManifest",
         "Arbitrary LUs Manifest"},
        {12, "", "RemoteReplicaGroup-BlockStatisticsManifest", "Remote Replica Group Manifest"},
        {13, "", "Unknown-BlockStatisticsManifest", "Unknown Manifest"},
        {1000, "", "Unknown-BlockStatisticsManifest", "Unknown Manifest"},
        {65535, "", "Unknown-BlockStatisticsManifest", "Unknown Manifest"},
    };
    for (const auto& row : table)
    {
        const CIMName cls = M::getClassName(row.type);
        if (*row.statsClass)
        {
            EXPECT_EQ(row.statsClass, str(cls.getString())) << row.type;
        }
        else
        {
            EXPECT_TRUE(cls.isNull()) << row.type;
        }
        EXPECT_EQ(row.name, str(M::getElementTypeName(row.type))) << row.type;
        EXPECT_EQ(row.fullName, str(M::getElementTypeFullName(row.type))) << row.type;
    }

    // The supported list is exactly the types that map to a class, in
    // ascending order (not the enumeration order of the manifests).
    Array<Uint16> types = M::getElementTypes();
    std::vector<Uint16> got(types.getData(), types.getData() + types.size());
    EXPECT_EQ((std::vector<Uint16>{2, 4, 6, 7, 8, 10, 11}), got);
}

class ManifestTest : public ModuleFixture
{
};

TEST_F(ManifestTest, EnumerationYieldsOneManifestPerSupportedType)
{
    Array<CIMInstance> all = enumerateInstances(READER_USER, MANIFEST);
    ASSERT_EQ(7u, all.size());
    const Uint16 order[] = {2, 4, 10, 6, 7, 8, 11};
    for (Uint32 i = 0; i < all.size(); i++)
    {
        CIMInstance& m = all[i];
        Uint16 type = 0;
        ASSERT_EQ(0u, ORV_Common::getProperty(m, "ElementType", type));
        EXPECT_EQ(order[i], type);
        const std::string what = str(M::getElementTypeName(type));
        EXPECT_EQ(str(manifestID(what.c_str())),
                  str(ORV_Common::getStringProperty(m, "InstanceID")));
        EXPECT_EQ(str(M::getElementTypeFullName(type)),
                  str(ORV_Common::getStringProperty(m, "ElementName")))
            << what;
        bool statisticTime = false;
        EXPECT_EQ(0u, ORV_Common::getProperty(m, "IncludeStatisticTime", statisticTime));
        EXPECT_TRUE(statisticTime);

        Array<String> seq;
        ASSERT_EQ(0u, ORV_Common::getProperty(m, "CSVSequence", seq)) << what;
        EXPECT_EQ(type == 8 ? VOLUME_SEQUENCE : OTHER_SEQUENCE, strings(seq)) << what;

        // Each listed counter has its switch on; the two hit switches of a
        // non-volume manifest and the switches of counters never listed stay
        // null, so no client reads them as included.
        for (Uint32 j = 3; j < seq.size(); j++)
        {
            bool on = false;
            EXPECT_EQ(0u, ORV_Common::getProperty(m, "Include" + seq[j], on)) << what;
            EXPECT_TRUE(on) << what << " " << str(seq[j]);
        }
        const char* unset[] = {"IncludeIdleTimeCounter", "IncludeMaintOp",
                               "IncludeStartStatisticTime", "IncludeReadHitIOTimeCounter"};
        for (const char* name : unset)
        {
            bool on = false;
            EXPECT_EQ(4u, ORV_Common::getProperty(m, name, on)) << what << " " << name;
        }
        if (type != 8)
        {
            bool on = false;
            EXPECT_EQ(4u, ORV_Common::getProperty(m, "IncludeReadHitIOs", on)) << what;
            EXPECT_EQ(4u, ORV_Common::getProperty(m, "IncludeWriteHitIOs", on)) << what;
        }

        EXPECT_EQ(simHostName(), str(m.getPath().getHost()));
        EXPECT_EQ(1u, m.getPath().getKeyBindings().size());
    }

    // The names come in the same order and name the same manifests.
    Array<CIMObjectPath> names = enumerateInstanceNames(READER_USER, MANIFEST);
    ASSERT_EQ(all.size(), names.size());
    for (Uint32 i = 0; i < names.size(); i++)
    {
        EXPECT_TRUE(ORV_Common::matchObjectPath(names[i], all[i].getPath())) << i;
    }
}

// GetStatisticsCollection reads each record's properties from the class that
// getClassName names, so every listed property must exist there.
TEST_F(ManifestTest, RecordPropertiesExistInTheMappedStatisticsClass)
{
    Array<CIMInstance> all = enumerateInstances(READER_USER, MANIFEST);
    for (Uint32 i = 0; i < all.size(); i++)
    {
        Uint16 type = 0;
        Array<String> seq;
        ORV_Common::getProperty(all[i], "ElementType", type);
        ORV_Common::getProperty(all[i], "CSVSequence", seq);
        const CIMName statsClass = M::getClassName(type);
        ASSERT_FALSE(statsClass.isNull()) << type;
        CIMClass cls = om().getClass(contextFor(READER_USER), NS, statsClass, false, false, false,
                                     CIMPropertyList());
        for (Uint32 j = 0; j < seq.size(); j++)
        {
            EXPECT_NE(PEG_NOT_FOUND, cls.findProperty(CIMName(seq[j])))
                << str(statsClass.getString()) << "." << str(seq[j]);
        }
    }
}

TEST_F(ManifestTest, GetInstanceFindsEachManifestAndOnlyThose)
{
    Array<CIMObjectPath> names = enumerateInstanceNames(READER_USER, MANIFEST);
    for (Uint32 i = 0; i < names.size(); i++)
    {
        // As a client sends it: no host.
        CIMObjectPath request(String(), NS, MANIFEST, names[i].getKeyBindings());
        CIMInstance m = getInstance(READER_USER, request);
        EXPECT_TRUE(ORV_Common::matchObjectPath(names[i], m.getPath()));
    }

    Array<CIMKeyBinding> otherKey;
    otherKey.append(CIMKeyBinding(CIMName("Name"), manifestID("Volume-BlockStatisticsManifest"),
                                  CIMKeyBinding::STRING));
    const String extent = manifestID("Extent-BlockStatisticsManifest");
    const String otherSystem = "QZ_KYRO:OTHER-Volume-BlockStatisticsManifest";
    const std::string name = "ORV_BlockStatisticsManifestProvider";
    struct Case
    {
        const char* what;
        const char* user;
        CIMObjectPath path;
        CIMStatusCode code;
        std::string text;
    } cases[] = {
        {"unsupported type", READER_USER, instancePath(MANIFEST, extent), CIM_ERR_NOT_FOUND,
         name + " CIM Object not found." + str(extent)},
        {"another system", READER_USER, instancePath(MANIFEST, otherSystem), CIM_ERR_NOT_FOUND,
         name + " CIM Object not found." + str(otherSystem)},
        {"no InstanceID", READER_USER, CIMObjectPath(String(), NS, MANIFEST, otherKey),
         CIM_ERR_INVALID_PARAMETER, name + " InstanceID key not found."},
        {"refused user", REFUSED_USER,
         instancePath(MANIFEST, manifestID("Volume-BlockStatisticsManifest")),
         CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user"},
    };
    for (Case& c : cases)
    {
        CimOutcome o = runCatching([&]() { getInstance(c.user, c.path); });
        ASSERT_TRUE(o.thrown) << c.what;
        EXPECT_EQ(c.code, o.code) << c.what;
        EXPECT_NE(std::string::npos, o.message.find(c.text)) << c.what << ": " << o.message;
    }
}

TEST_F(ManifestTest, PropertyListFiltersThroughTheClass)
{
    CIMPropertyList list;
    Array<CIMName> props;
    props.append(CIMName("CSVSequence"));
    list.set(props);
    Array<CIMInstance> all = enumerateInstances(READER_USER, MANIFEST, list);
    ASSERT_EQ(7u, all.size());
    for (Uint32 i = 0; i < all.size(); i++)
    {
        EXPECT_EQ(PEG_NOT_FOUND, all[i].findProperty(CIMName("IncludeTotalIOs")));
        EXPECT_EQ(PEG_NOT_FOUND, all[i].findProperty(CIMName("ElementName")));
        Array<String> seq;
        EXPECT_EQ(0u, ORV_Common::getProperty(all[i], "CSVSequence", seq));
    }
}

class ManifestDirectTest : public ModuleFixture
{
};

TEST_F(ManifestDirectTest, InitializeTracesAndRefusals)
{
    CIMOMHandle handle = om().handle();
    ASSERT_EQ(0, orvsim_set_fault_times("api_orvOpenForCimserver", 5, 0, 1, 0));
    CIMProvider* base = createProvider("ORV_BlockStatisticsManifestProvider");
    ASSERT_NE(nullptr, base);
    std::string log = captureLog([&]() { base->initialize(handle); });
    orvsim_clear_faults();
    // The open-failure line spells the provider with a lower-case "b".
    size_t failed = log.find("ORV_blockStatisticsManifestProvider::initialize(): "
                             "api_orvOpenForCimserver failed\n");
    size_t entry = log.find("-->ORV_BlockStatisticsManifestProvider::initialize()\n");
    EXPECT_NE(std::string::npos, failed);
    EXPECT_NE(std::string::npos, entry);
    EXPECT_LT(failed, entry);

    CIMInstanceProvider* p = dynamic_cast<CIMInstanceProvider*>(base);
    Sdk::CollectingInstanceResponseHandler h;
    log = captureLog(
        [&]()
        {
            p->enumerateInstances(contextFor(READER_USER), classPath(MANIFEST), false, false,
                                  CIMPropertyList(), h);
        });
    EXPECT_EQ("processing,deliver[7],complete", h.callSequence());
    EXPECT_NE(std::string::npos,
              log.find("--> ORV_BlockStatisticsManifestProvider::_build_instances\n"));

    // Names are built without the class definition.
    Sdk::CollectingObjectPathResponseHandler names;
    log = captureLog(
        [&]() { p->enumerateInstanceNames(contextFor(READER_USER), classPath(MANIFEST), names); });
    EXPECT_EQ("processing,deliver[7],complete", names.callSequence());
    EXPECT_EQ(std::string::npos, log.find("_build_instances"));

    Sdk::CollectingResponseHandler plain;
    CimOutcome o = runCatching(
        [&]()
        {
            p->modifyInstance(contextFor(READER_USER), names.getObjects()[0], CIMInstance(MANIFEST),
                              false, CIMPropertyList(), plain);
        });
    EXPECT_EQ(CIM_ERR_NOT_SUPPORTED, o.code);
    EXPECT_EQ("ORV_BlockStatisticsManifestProvider does not support modifyInstance.", o.message);
    o = runCatching(
        [&]()
        {
            p->enumerateInstances(contextFor(READER_USER), classPath(CIMName("ORV_Manifest")),
                                  false, false, CIMPropertyList(), h);
        });
    EXPECT_EQ("ORV_BlockStatisticsManifestProvider Invalid class nameORV_Manifest", o.message);
    base->terminate();
}

} // namespace
