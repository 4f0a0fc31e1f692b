// The module entry and the two collection providers, through the object
// manager and called directly as the server calls them.

#include <cstring>
#include <string>
#include <typeinfo>
#include <unistd.h>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Sdk/CollectingResponseHandlers.h>

#include "ModuleFixture.h"
#include "ORV_Common.h"
#include "ORV_StatisticsCollectionProvider.h"
#include "orvsim.h"

#include <cimrepo/ClassRepository.h>

using namespace orvtest;

namespace
{

const CIMName STATS_COLL("ORV_StatisticsCollection");
const CIMName MANIF_COLL("ORV_BlockStatisticsManifestCollection");

String statsCollID()
{
    return String("QZ_KYRO:") + simSystemName().c_str() + "-StatisticsCollection";
}

String manifCollID()
{
    return String("QZ_KYRO:") + simSystemName().c_str() + "-BlockStatisticsManifestCollection";
}

TEST(ModuleEntry, CreatesProvidersByNameWithoutRegardToCase)
{
    const char* built[] = {"ORV_StatisticsCollectionProvider", "orv_statisticscollectionprovider",
                           "ORV_STATISTICSCOLLECTIONPROVIDER",
                           "ORV_BlockStatisticsManifestCollectionProvider"};
    for (const char* name : built)
    {
        CIMProvider* p = createProvider(name);
        ASSERT_NE(nullptr, p) << name;
        EXPECT_NE(nullptr, dynamic_cast<CIMInstanceProvider*>(p)) << name;
        // Never initialized: a plain delete is how the server drops it.
        delete p;
    }
    const char* refused[] = {"ORV_StatisticsCollection", "", "ORV_StatisticsCollectionProviderX",
                             "Unknown"};
    for (const char* name : refused)
    {
        EXPECT_EQ(nullptr, createProvider(name)) << name;
    }
}

TEST(ModuleEntry, ConstructorWithPathIsRefused)
{
    CimOutcome o = runCatching([]() {
        ORV_StatisticsCollectionProvider p(instancePath(STATS_COLL, "x"));
    });
    EXPECT_EQ(CIM_ERR_NOT_SUPPORTED, o.code);
    EXPECT_EQ("ORV_StatisticsCollectionProvider does not support constructor with object path.",
              o.message);
}

class CollectionsTest : public ModuleFixture
{
};

TEST_F(CollectionsTest, StatisticsCollectionEndToEnd)
{
    Array<CIMObjectPath> names = enumerateInstanceNames(READER_USER, STATS_COLL);
    ASSERT_EQ(1u, names.size());
    EXPECT_EQ(simHostName(), str(names[0].getHost()));
    EXPECT_EQ("root/orv", str(names[0].getNameSpace().getString()));
    Array<CIMKeyBinding> keys = names[0].getKeyBindings();
    ASSERT_EQ(1u, keys.size());
    EXPECT_EQ("InstanceID", str(keys[0].getName().getString()));
    EXPECT_EQ(CIMKeyBinding::STRING, keys[0].getType());
    EXPECT_EQ(str(statsCollID()), str(keys[0].getValue()));

    Array<CIMInstance> all = enumerateInstances(READER_USER, STATS_COLL);
    ASSERT_EQ(1u, all.size());
    EXPECT_EQ("Statistics Collection", str(ORV_Common::getStringProperty(all[0], "ElementName")));
    CIMDateTime sampled;
    EXPECT_EQ(0u, ORV_Common::getProperty(all[0], "TimeLastSampled", sampled));

    // A client path without host, key written in another case.
    Array<CIMKeyBinding> k;
    k.append(CIMKeyBinding(CIMName("instanceid"), statsCollID(), CIMKeyBinding::STRING));
    CIMInstance one = getInstance(READER_USER, CIMObjectPath(String(), CIMNamespaceName("root/orv"),
                                                             CIMName("orv_statisticscollection"), k));
    EXPECT_EQ(str(statsCollID()), str(ORV_Common::getStringProperty(one, "InstanceID")));
}

TEST_F(CollectionsTest, TimeLastSampledIsFreshOnEveryRequest)
{
    CIMDateTime first;
    CIMDateTime second;
    CIMInstance a = getInstance(READER_USER, instancePath(STATS_COLL, statsCollID()));
    sleep(1);
    CIMInstance b = getInstance(READER_USER, instancePath(STATS_COLL, statsCollID()));
    ASSERT_EQ(0u, ORV_Common::getProperty(a, "TimeLastSampled", first));
    ASSERT_EQ(0u, ORV_Common::getProperty(b, "TimeLastSampled", second));
    EXPECT_NE(str(first.toString()), str(second.toString()));
}

TEST_F(CollectionsTest, ManifestCollectionEndToEnd)
{
    Array<CIMInstance> all = enumerateInstances(READER_USER, MANIF_COLL);
    ASSERT_EQ(1u, all.size());
    bool isDefault = false;
    EXPECT_EQ(0u, ORV_Common::getProperty(all[0], "IsDefault", isDefault));
    EXPECT_TRUE(isDefault);
    EXPECT_EQ("Block Statistics Manifest Collection",
              str(ORV_Common::getStringProperty(all[0], "ElementName")));
    CIMDateTime unused;
    EXPECT_NE(0u, ORV_Common::getProperty(all[0], "TimeLastSampled", unused));

    CIMInstance one = getInstance(READER_USER, instancePath(MANIF_COLL, manifCollID()));
    EXPECT_TRUE(ORV_Common::matchObjectPath(one.getPath(), all[0].getPath()));
    Array<CIMObjectPath> names = enumerateInstanceNames(READER_USER, MANIF_COLL);
    ASSERT_EQ(1u, names.size());
    EXPECT_TRUE(ORV_Common::matchObjectPath(names[0], all[0].getPath()));
}

TEST_F(CollectionsTest, PropertyListFiltersThroughTheClass)
{
    CIMPropertyList onlyName;
    Array<CIMName> props;
    props.append(CIMName("ElementName"));
    onlyName.set(props);
    Array<CIMInstance> all = enumerateInstances(READER_USER, STATS_COLL, onlyName);
    ASSERT_EQ(1u, all.size());
    EXPECT_EQ(PEG_NOT_FOUND, all[0].findProperty(CIMName("TimeLastSampled")));
    EXPECT_EQ("Statistics Collection", str(ORV_Common::getStringProperty(all[0], "ElementName")));
}

// The checks run in order: user, class, key, match.
TEST_F(CollectionsTest, RequestErrors)
{
    Array<CIMKeyBinding> otherKey;
    otherKey.append(CIMKeyBinding(CIMName("Name"), statsCollID(), CIMKeyBinding::STRING));
    struct Case
    {
        const char* what;
        const char* user;
        CIMObjectPath path;
        CIMStatusCode code;
        std::string text;
    } cases[] = {
        {"refused user", REFUSED_USER, instancePath(STATS_COLL, statsCollID()),
         CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user"},
        {"refused user, wrong class", REFUSED_USER, instancePath(MANIF_COLL, statsCollID()),
         CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user"},
        {"no InstanceID key", READER_USER,
         CIMObjectPath(String(), CIMNamespaceName("root/orv"), STATS_COLL, otherKey),
         CIM_ERR_INVALID_PARAMETER, "ORV_StatisticsCollectionProvider InstanceID key not found."},
        {"another system", READER_USER,
         instancePath(STATS_COLL, "QZ_KYRO:OTHER-StatisticsCollection"), CIM_ERR_NOT_FOUND,
         "ORV_StatisticsCollectionProvider CIM Object not found."
         "QZ_KYRO:OTHER-StatisticsCollection"},
        {"the other collection's ID", READER_USER, instancePath(MANIF_COLL, statsCollID()),
         CIM_ERR_NOT_FOUND,
         "ORV_BlockStatisticsManifestCollectionProvider CIM Object not found." +
             str(statsCollID())},
    };
    for (Case& c : cases)
    {
        CimOutcome o = runCatching([&]() { getInstance(c.user, c.path); });
        ASSERT_TRUE(o.thrown) << c.what;
        EXPECT_EQ(c.code, o.code) << c.what;
        EXPECT_NE(std::string::npos, o.message.find(c.text)) << c.what << ": " << o.message;
    }

    CimOutcome o = runCatching([&]() { enumerateInstances(REFUSED_USER, STATS_COLL); });
    EXPECT_EQ(CIM_ERR_ACCESS_DENIED, o.code);
    o = runCatching([&]() { enumerateInstanceNames(REFUSED_USER, MANIF_COLL); });
    EXPECT_EQ(CIM_ERR_ACCESS_DENIED, o.code);
}

// Direct calls, as the server makes them, to see handler order and exact
// texts without the object manager in between.
class DirectProviderTest : public ModuleFixture
{
protected:
    void SetUp() override
    {
        ModuleFixture::SetUp();
        _handle = om().handle();
    }

    CIMInstanceProvider* make(const char* name)
    {
        CIMProvider* p = createProvider(name);
        EXPECT_NE(nullptr, p);
        p->initialize(_handle);
        return dynamic_cast<CIMInstanceProvider*>(p);
    }

    CIMOMHandle _handle;
};

TEST_F(DirectProviderTest, DeliveryOrderAndTrace)
{
    CIMInstanceProvider* p = make("ORV_StatisticsCollectionProvider");
    ASSERT_NE(nullptr, p);
    Sdk::CollectingInstanceResponseHandler instances;
    std::string log = captureLog([&]() {
        p->enumerateInstances(contextFor(READER_USER), classPath(STATS_COLL), false, false,
                              CIMPropertyList(), instances);
    });
    EXPECT_EQ("processing,deliver[1],complete", instances.callSequence());
    size_t in = log.find("--> ORV_StatisticsCollectionProvider::enumerateInstances\n");
    size_t build = log.find("--> ORV_StatisticsCollectionProvider::_build_instances\n");
    size_t out = log.find("<-- ORV_StatisticsCollectionProvider::enumerateInstances\n");
    EXPECT_LT(in, build);
    EXPECT_LT(build, out);
    EXPECT_NE(std::string::npos, out);

    Sdk::CollectingInstanceResponseHandler one;
    p->getInstance(contextFor(READER_USER), instancePath(STATS_COLL, statsCollID()), false, false,
                   CIMPropertyList(), one);
    EXPECT_EQ("processing,deliver,complete", one.callSequence());

    Sdk::CollectingObjectPathResponseHandler names;
    log = captureLog([&]() {
        p->enumerateInstanceNames(contextFor(READER_USER), classPath(STATS_COLL), names);
    });
    EXPECT_EQ("processing,deliver[1],complete", names.callSequence());
    EXPECT_NE(std::string::npos, log.find("--> ORV_StatisticsCollectionProvider::_build_ref\n"));
    EXPECT_EQ(std::string::npos, log.find("_build_instances"));
    p->terminate();
}

TEST_F(DirectProviderTest, RefusalsDeliverNothing)
{
    CIMInstanceProvider* p = make("ORV_BlockStatisticsManifestCollectionProvider");
    ASSERT_NE(nullptr, p);
    const std::string name = "ORV_BlockStatisticsManifestCollectionProvider";
    Sdk::CollectingInstanceResponseHandler h;
    Sdk::CollectingResponseHandler plain;
    Sdk::CollectingObjectPathResponseHandler paths;
    CIMObjectPath path = instancePath(MANIF_COLL, manifCollID());
    CIMInstance inst(MANIF_COLL);

    struct Case
    {
        const char* what;
        std::function<void()> call;
        CIMStatusCode code;
        std::string text;
    } cases[] = {
        {"modify",
         [&]() { p->modifyInstance(contextFor(READER_USER), path, inst, false, CIMPropertyList(),
                                   plain); },
         CIM_ERR_NOT_SUPPORTED, name + " does not support modifyInstance."},
        {"create", [&]() { p->createInstance(contextFor(READER_USER), path, inst, paths); },
         CIM_ERR_NOT_SUPPORTED, name + " does not support createInstance."},
        {"delete", [&]() { p->deleteInstance(contextFor(READER_USER), path, plain); },
         CIM_ERR_NOT_SUPPORTED, name + " does not support deleteInstance."},
        {"wrong class",
         [&]() { p->enumerateInstances(contextFor(READER_USER), classPath(CIMName("FOO")), false,
                                       false, CIMPropertyList(), h); },
         CIM_ERR_NOT_SUPPORTED, name + " Invalid class nameFOO"},
        {"refused user before class",
         [&]() { p->enumerateInstanceNames(contextFor(REFUSED_USER), classPath(CIMName("FOO")),
                                           paths); },
         CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user"},
    };
    for (Case& c : cases)
    {
        CimOutcome o = runCatching(c.call);
        EXPECT_TRUE(o.isCimException) << c.what;
        EXPECT_EQ(c.code, o.code) << c.what;
        EXPECT_EQ(c.text, o.message) << c.what;
    }
    EXPECT_EQ(0u, h.calls().size());
    EXPECT_EQ(0u, paths.calls().size());
    EXPECT_EQ(0u, plain.calls().size());
    p->terminate();
}

TEST_F(DirectProviderTest, ContextWithoutIdentityIsNotServed)
{
    // The management API takes an empty name for the server itself, so a
    // missing identity must never turn into one.
    CIMInstanceProvider* p = make("ORV_StatisticsCollectionProvider");
    ASSERT_NE(nullptr, p);
    Sdk::CollectingObjectPathResponseHandler paths;
    EXPECT_THROW(p->enumerateInstanceNames(OperationContext(),
                                           classPath(CIMName("ORV_StatisticsCollection")), paths),
                 Exception);
    EXPECT_EQ(0u, paths.calls().size());
    p->terminate();
}

TEST_F(DirectProviderTest, InitializeGoesOnWhenTheApiCannotBeOpened)
{
    // Only the provider's own open fails; the sibling module's calls go on.
    ASSERT_EQ(0, orvsim_set_fault_times("api_orvOpenForCimserver", 5, 0, 1, 0));
    CIMProvider* p = createProvider("ORV_StatisticsCollectionProvider");
    std::string log = captureLog([&]() { p->initialize(_handle); });
    EXPECT_NE(std::string::npos,
              log.find("ORV_StatisticsCollectionProvider::initialize(): "
                       "api_orvOpenForCimserver failed\n"));
    size_t failed = log.find("api_orvOpenForCimserver failed");
    size_t entry = log.find("-->ORV_StatisticsCollectionProvider::initialize()\n");
    EXPECT_LT(failed, entry);
    EXPECT_NE(std::string::npos, entry);
    orvsim_clear_faults();

    Sdk::CollectingObjectPathResponseHandler names;
    dynamic_cast<CIMInstanceProvider*>(p)->enumerateInstanceNames(contextFor(READER_USER),
                                                                 classPath(STATS_COLL), names);
    ASSERT_EQ(1u, names.getObjects().size());
    EXPECT_EQ(str(statsCollID()),
              str(ORV_Common::getStringProperty(names.getObjects()[0], "InstanceID")));
    EXPECT_EQ(simHostName(), str(names.getObjects()[0].getHost()));
    p->terminate();
}

TEST_F(DirectProviderTest, InitializeFailsWithoutALocalConnection)
{
    // No local connection and a handle that cannot answer: the host name
    // fails, so initialize fails, as the server would report.
    Sdk::setLocalDispatcher(nullptr);
    CIMProvider* p = createProvider("ORV_StatisticsCollectionProvider");
    CIMOMHandle unbound;
    EXPECT_ANY_THROW(p->initialize(unbound));
    delete p;
    om().makeLocal();
}

// Each name of the registry yields an object of that very provider class, of
// the right kind, and the server can drive it through its CIMProvider part
// whatever the order of its other bases. Names not built yet answer null.
TEST_F(DirectProviderTest, RegistryCreatesTheNamedProviderOfTheRightKind)
{
    enum Kind
    {
        INSTANCE,
        ASSOCIATION,
        METHOD
    };
    const struct
    {
        const char* name;
        Kind kind;
    } registry[] = {
        {"ORV_StatisticsCollectionProvider", INSTANCE},
        {"ORV_BlockStatisticsManifestCollectionProvider", INSTANCE},
        {"ORV_AssociatedBlockStatisticsManifestCollectionProvider", ASSOCIATION},
        {"ORV_BlockStatisticsManifestProvider", INSTANCE},
        {"ORV_MemberOfBlockStatisticsManifestCollectionProvider", ASSOCIATION},
        {"ORV_MemberOfStatisticsCollectionProvider", ASSOCIATION},
        {"ORV_ArrayStatisticalDataProvider", INSTANCE},
        {"ORV_ArrayElementStatisticalDataProvider", ASSOCIATION},
        {"ORV_NodeStatisticalDataProvider", INSTANCE},
        {"ORV_NodeElementStatisticalDataProvider", ASSOCIATION},
        {"ORV_DiskStatisticalDataProvider", INSTANCE},
        {"ORV_DiskElementStatisticalDataProvider", ASSOCIATION},
        {"ORV_PortStatisticalDataProvider", INSTANCE},
        {"ORV_PortElementStatisticalDataProvider", ASSOCIATION},
        {"ORV_VolumeStatisticalDataProvider", INSTANCE},
        {"ORV_VolumeElementStatisticalDataProvider", ASSOCIATION},
        {"ORV_BlockStatisticsServiceProvider", METHOD},
        {"ORV_BlockStatisticsCapabilitiesProvider", INSTANCE},
        {"ORV_StatisticsElementCapabilitiesProvider", ASSOCIATION},
        {"ORV_LUNStatisticalDataProvider", INSTANCE},
    };
    int built = 0;
    for (const auto& entry : registry)
    {
        CIMProvider* p = createProvider(entry.name);
        if (!p)
        {
            continue;
        }
        built++;
        // The mangled dynamic type carries the class name with its length
        // (association providers live in namespace Pegasus).
        const std::string expected = std::to_string(strlen(entry.name)) + entry.name;
        const std::string actual = typeid(*p).name();
        EXPECT_TRUE(actual == expected || actual == "N7Pegasus" + expected + "E") << actual;
        EXPECT_NE(nullptr, dynamic_cast<CIMInstanceProvider*>(p)) << entry.name;
        EXPECT_EQ(entry.kind == ASSOCIATION, dynamic_cast<CIMAssociationProvider*>(p) != nullptr)
            << entry.name;
        EXPECT_EQ(entry.kind == METHOD, dynamic_cast<CIMMethodProvider*>(p) != nullptr)
            << entry.name;
        p->initialize(_handle);
        p->terminate();
    }
    EXPECT_GE(built, 11);
}

} // namespace

namespace
{

// Every class that the registration names is defined, with its key, and the
// module itself loaded without complaint.
TEST_F(CollectionsTest, RegisteredClassesAreDefined)
{
    const char* classes[] = {
        "ORV_StatisticsCollection", "ORV_BlockStatisticsManifestCollection",
        "ORV_AssociatedBlockStatisticsManifestCollection", "ORV_BlockStatisticsManifest",
        "ORV_MemberOfBlockStatisticsManifestCollection", "ORV_MemberOfStatisticsCollection",
        "ORV_ArrayStatisticalData", "ORV_ArrayElementStatisticalData", "ORV_NodeStatisticalData",
        "ORV_NodeElementStatisticalData", "ORV_DiskStatisticalData",
        "ORV_DiskElementStatisticalData", "ORV_PortStatisticalData",
        "ORV_PortElementStatisticalData", "ORV_VolumeStatisticalData",
        "ORV_VolumeElementStatisticalData", "ORV_BlockStatisticsService",
        "ORV_BlockStatisticsCapabilities", "ORV_StatisticsElementCapabilities",
        "ORV_LUNStatisticalData"};
    const CIMNamespaceName ns("root/orv");
    for (const char* name : classes)
    {
        EXPECT_TRUE(om().repository().classExists(ns, CIMName(name))) << name;
    }
    for (const std::string& line : om().loadErrors())
    {
        EXPECT_EQ(std::string::npos, line.find("ORV_StatsProvider")) << line;
    }
    CIMClass service = om().getClass(contextFor(READER_USER), ns,
                                     CIMName("ORV_BlockStatisticsService"), false, true, false,
                                     CIMPropertyList());
    EXPECT_NE(PEG_NOT_FOUND, service.findMethod(CIMName("GetStatisticsCollection")));
    CIMClass volume = om().getClass(contextFor(READER_USER), ns,
                                    CIMName("ORV_VolumeStatisticalData"), false, true, false,
                                    CIMPropertyList());
    const char* props[] = {"InstanceID", "StatisticTime", "ElementType", "ReadHitIOs",
                           "ReadServiceTimeCounter", "QueueLength", "PercentBusy"};
    for (const char* p : props)
    {
        EXPECT_NE(PEG_NOT_FOUND, volume.findProperty(CIMName(p))) << p;
    }
}

} // namespace

namespace
{

// A manifest reports a counter as included only when its provider says so:
// a switch that the provider leaves alone must not read as true from the
// class, or clients would expect fields that the records never carry.
TEST_F(CollectionsTest, ManifestSwitchesStartUnset)
{
    const CIMNamespaceName ns("root/orv");
    CIMClass manifest = om().getClass(contextFor(READER_USER), ns,
                                      CIMName("ORV_BlockStatisticsManifest"), false, true, false,
                                      CIMPropertyList());
    CIMInstance skeleton = ORV_Common::buildInstanceSkeleton(manifest);
    int switches = 0;
    for (Uint32 i = 0; i < skeleton.getPropertyCount(); i++)
    {
        CIMConstProperty p = skeleton.getProperty(i);
        const std::string name = str(p.getName().getString());
        if (name.compare(0, 7, "Include") != 0)
        {
            continue;
        }
        switches++;
        EXPECT_EQ(Pegasus::CIMTYPE_BOOLEAN, p.getType()) << name;
        EXPECT_TRUE(p.getValue().isNull()) << name;
    }
    // IncludeStatisticTime and the eleven counter switches at least.
    EXPECT_GE(switches, 12);
}

} // namespace
