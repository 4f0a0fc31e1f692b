// The capabilities instance and its association with the statistics
// service, through the object manager with the simulated array.

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Sdk/CollectingResponseHandlers.h>

#include "ModuleFixture.h"
#include "ORV_BlockStatisticsCapabilitiesProvider.h"
#include "ORV_Common.h"
#include "ORV_StatisticsElementCapabilitiesProvider.h"
#include "orvsim.h"

using namespace orvtest;

namespace
{

const CIMNamespaceName NS("root/orv");
const CIMName CAPABILITIES("ORV_BlockStatisticsCapabilities");
const CIMName SERVICE("ORV_BlockStatisticsService");
const CIMName ELEMENT_CAPABILITIES("ORV_StatisticsElementCapabilities");

String capabilitiesID()
{
    return String(simSystemName().c_str()) + "-BlockStatisticsCapabilities";
}

CIMObjectPath servicePath()
{
    const String system = simSystemName().c_str();
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("SystemCreationClassName"), "ORV_StorageSystem",
                              CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("SystemName"), system, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("CreationClassName"), "ORV_BlockStatisticsService",
                              CIMKeyBinding::STRING));
    keys.append(
        CIMKeyBinding(CIMName("Name"), system + "-BlockStatisticsService", CIMKeyBinding::STRING));
    return CIMObjectPath(String(), NS, SERVICE, keys);
}

std::vector<Uint16> values(const Array<Uint16>& a)
{
    return std::vector<Uint16>(a.getData(), a.getData() + a.size());
}

class CapabilitiesTest : public ModuleFixture
{
protected:
    Array<CIMObject> associators(const CIMObjectPath& object, const CIMName& resultClass,
                                 const String& role = String())
    {
        return om().associators(contextFor(READER_USER), NS, object, ELEMENT_CAPABILITIES,
                                resultClass, role, String(), false, false, CIMPropertyList());
    }
    Array<CIMObjectPath> referenceNames(const CIMObjectPath& object, const String& role)
    {
        return om().referenceNames(contextFor(READER_USER), NS, object, ELEMENT_CAPABILITIES, role);
    }
};

TEST_F(CapabilitiesTest, OneInstanceDescribingTheService)
{
    Array<CIMInstance> all = enumerateInstances(READER_USER, CAPABILITIES);
    ASSERT_EQ(1u, all.size());
    CIMInstance& c = all[0];
    EXPECT_EQ(str(capabilitiesID()), str(ORV_Common::getStringProperty(c, "InstanceID")));
    EXPECT_EQ("Block Statistics Capabilities",
              str(ORV_Common::getStringProperty(c, "ElementName")));

    Array<Uint16> types;
    ASSERT_EQ(0u, ORV_Common::getProperty(c, "ElementTypesSupported", types));
    EXPECT_EQ((std::vector<Uint16>{2, 4, 6, 7, 8, 10, 11}), values(types));
    Array<Uint16> synchronous;
    ASSERT_EQ(0u, ORV_Common::getProperty(c, "SynchronousMethodsSupported", synchronous));
    EXPECT_EQ((std::vector<Uint16>{4}), values(synchronous));
    Array<Uint16> asynchronous;
    EXPECT_EQ(4u, ORV_Common::getProperty(c, "AsynchronousMethodsSupported", asynchronous));
    unsigned long long tick = 0;
    ASSERT_EQ(0u, ORV_Common::getProperty(c, "ClockTickInterval", tick));
    EXPECT_EQ(1u, tick);
    EXPECT_EQ(CIMTYPE_UINT64, ORV_Common::getPropertyValue(c, "ClockTickInterval").getType());

    EXPECT_EQ(simHostName(), str(c.getPath().getHost()));
    Array<CIMObjectPath> names = enumerateInstanceNames(READER_USER, CAPABILITIES);
    ASSERT_EQ(1u, names.size());
    EXPECT_TRUE(ORV_Common::matchObjectPath(names[0], c.getPath()));

    CIMInstance one = getInstance(READER_USER, instancePath(CAPABILITIES, capabilitiesID()));
    EXPECT_TRUE(ORV_Common::matchObjectPath(one.getPath(), c.getPath()));
}

TEST_F(CapabilitiesTest, GetInstanceErrors)
{
    // The identifier has no "QZ_KYRO:" prefix, so one carrying it is unknown.
    const String prefixed = "QZ_KYRO:" + capabilitiesID();
    Array<CIMKeyBinding> otherKey;
    otherKey.append(CIMKeyBinding(CIMName("Name"), capabilitiesID(), CIMKeyBinding::STRING));
    const std::string name = "ORV_BlockStatisticsCapabilitiesProvider";
    struct Case
    {
        const char* what;
        const char* user;
        CIMObjectPath path;
        CIMStatusCode code;
        std::string text;
    } cases[] = {
        {"prefixed identifier", READER_USER, instancePath(CAPABILITIES, prefixed),
         CIM_ERR_NOT_FOUND, name + " CIM Object not found." + str(prefixed)},
        {"no InstanceID", READER_USER, CIMObjectPath(String(), NS, CAPABILITIES, otherKey),
         CIM_ERR_INVALID_PARAMETER, name + " InstanceID key not found."},
        {"refused user", REFUSED_USER, instancePath(CAPABILITIES, capabilitiesID()),
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

TEST_F(CapabilitiesTest, AssociationTiesTheServiceToItsCapabilities)
{
    Array<CIMObjectPath> names = enumerateInstanceNames(READER_USER, ELEMENT_CAPABILITIES);
    ASSERT_EQ(1u, names.size());
    CIMObjectPath service;
    CIMObjectPath capabilities;
    Array<CIMKeyBinding> keys = names[0].getKeyBindings();
    ASSERT_EQ(2u, keys.size());
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        ASSERT_EQ(CIMKeyBinding::REFERENCE, keys[i].getType());
        const CIMObjectPath ref(keys[i].getValue());
        EXPECT_EQ(simHostName(), str(ref.getHost()));
        if (keys[i].getName().equal(CIMName("ManagedElement")))
        {
            service = ref;
        }
        else if (keys[i].getName().equal(CIMName("Capabilities")))
        {
            capabilities = ref;
        }
    }
    EXPECT_TRUE(ORV_Common::matchObjectPath(servicePath(), service));
    EXPECT_TRUE(
        ORV_Common::matchObjectPath(instancePath(CAPABILITIES, capabilitiesID()), capabilities));

    // Both ends are served instances, and the association itself can be read
    // back by its name.
    getInstance(READER_USER, service);
    getInstance(READER_USER, capabilities);
    CIMInstance assoc = getInstance(READER_USER, names[0]);
    EXPECT_TRUE(ORV_Common::matchObjectPath(names[0], assoc.getPath()));
}

TEST_F(CapabilitiesTest, NavigationAndFilters)
{
    const CIMObjectPath capabilities = instancePath(CAPABILITIES, capabilitiesID());
    struct Case
    {
        const char* what;
        CIMObjectPath from;
        CIMName resultClass;
        String role;
        const char* expectedClass; // "" for no result
    } cases[] = {
        {"service, any class", servicePath(), CIMName(), String(),
         "ORV_BlockStatisticsCapabilities"},
        {"service, generic capabilities class", servicePath(),
         CIMName("CIM_BlockStatisticsCapabilities"), String(), "ORV_BlockStatisticsCapabilities"},
        {"service asked for services", servicePath(), CIMName("CIM_BlockStatisticsService"),
         String(), ""},
        {"service in the wrong role", servicePath(), CIMName(), "Capabilities", ""},
        {"capabilities, any class", capabilities, CIMName(), String(),
         "ORV_BlockStatisticsService"},
        {"capabilities, role written in lower case", capabilities, CIMName(), "capabilities",
         "ORV_BlockStatisticsService"},
        {"capabilities asked for capabilities", capabilities, CAPABILITIES, String(), ""},
    };
    for (Case& c : cases)
    {
        Array<CIMObject> found = associators(c.from, c.resultClass, c.role);
        if (!*c.expectedClass)
        {
            EXPECT_EQ(0u, found.size()) << c.what;
            continue;
        }
        ASSERT_EQ(1u, found.size()) << c.what;
        EXPECT_EQ(c.expectedClass, str(found[0].getClassName().getString())) << c.what;
    }

    EXPECT_EQ(0u, referenceNames(capabilities, "ManagedElement").size());
    Array<CIMObjectPath> refs = referenceNames(capabilities, "Capabilities");
    ASSERT_EQ(1u, refs.size());
    Array<CIMObjectPath> names = enumerateInstanceNames(READER_USER, ELEMENT_CAPABILITIES);
    EXPECT_TRUE(ORV_Common::matchObjectPath(names[0], refs[0]));

    Array<CIMObject> fromService = om().references(contextFor(READER_USER), NS, servicePath(),
                                                   CIMName("CIM_ElementCapabilities"), String(),
                                                   false, false, CIMPropertyList());
    ASSERT_EQ(1u, fromService.size());
    EXPECT_TRUE(ORV_Common::matchObjectPath(names[0], fromService[0].getPath()));
}

} // namespace

namespace
{

class CapabilitiesDirectTest : public ModuleFixture
{
};

// Both providers are driven as the server drives them; every text a client or
// an operator reads carries the provider's own name, which a copied provider
// easily gets wrong.
TEST_F(CapabilitiesDirectTest, LifecycleAndRefusalsNameTheirProvider)
{
    CIMOMHandle handle = om().handle();
    const struct
    {
        const char* provider;
        CIMName served;
        const char* openFailed;
        std::vector<const char*> initLines; // in this order
        bool openLast;                      // the server's own open follows the identity lookups
    } cases[] = {
        {"ORV_BlockStatisticsCapabilitiesProvider",
         CAPABILITIES,
         "ORV_BlockStatisticsCapabilitiesProvider::initialize(): api_orvOpenForCimserver failed\n",
         {"-->ORV_BlockStatisticsCapabilitiesProvider::initialize()\n"},
         false},
        {"ORV_StatisticsElementCapabilitiesProvider",
         ELEMENT_CAPABILITIES,
         "ORV_StatisticsElementCapabilitiesProvider::initialize(): api_orvOpenForCimserver "
         "failed\n",
         {"--> ORV_StatisticsElementCapabilitiesProvider::initialize(cimom)\n)",
          "<-- ORV_StatisticsElementCapabilitiesProvider::initialize(cimom)\n)"},
         true},
    };
    for (const auto& c : cases)
    {
        const std::string name = c.provider;
        // The identity lookups open the API for the sibling module too, so
        // only the provider's own open is made to fail.
        orvsim_reset_call_counts();
        CIMProvider* base = createProvider(c.provider);
        ASSERT_NE(nullptr, base) << name;
        base->initialize(handle);
        const unsigned long opens = orvsim_call_count("api_orvOpenForCimserver");
        ASSERT_LT(0u, opens);
        ASSERT_EQ(0, orvsim_set_fault_times("api_orvOpenForCimserver", 5,
                                            c.openLast ? (int)opens - 1 : 0, 1, 0));
        const std::string log = captureLog([&]() { base->initialize(handle); });
        orvsim_clear_faults();
        EXPECT_NE(std::string::npos, log.find(c.openFailed)) << log;
        size_t at = 0;
        for (const char* line : c.initLines)
        {
            at = log.find(line, at);
            EXPECT_NE(std::string::npos, at) << name << ": " << line;
        }

        CIMInstanceProvider* p = dynamic_cast<CIMInstanceProvider*>(base);
        const OperationContext context = contextFor(READER_USER);
        const CIMObjectPath path = classPath(c.served);
        Sdk::CollectingResponseHandler plain;
        Sdk::CollectingObjectPathResponseHandler paths;
        const std::pair<std::function<void()>, std::string> refused[] = {
            {[&]() {
                 p->modifyInstance(context, path, CIMInstance(c.served), false, CIMPropertyList(),
                                   plain);
             },
             name + " does not support modifyInstance."},
            {[&]() { p->createInstance(context, path, CIMInstance(c.served), paths); },
             name + " does not support createInstance."},
            {[&]() { p->deleteInstance(context, path, plain); },
             name + " does not support deleteInstance."},
        };
        for (const auto& r : refused)
        {
            CimOutcome o = runCatching(r.first);
            EXPECT_EQ(CIM_ERR_NOT_SUPPORTED, o.code) << r.second;
            EXPECT_EQ(r.second, o.message);
        }
        base->terminate();
    }

    CimOutcome o =
        runCatching([]() { ORV_BlockStatisticsCapabilitiesProvider p{CIMObjectPath()}; });
    EXPECT_EQ("ORV_BlockStatisticsCapabilitiesProvider does not support constructor with object "
              "path.",
              o.message);
    o = runCatching([]() { ORV_StatisticsElementCapabilitiesProvider p{CIMObjectPath()}; });
    EXPECT_EQ("ORV_StatisticsElementCapabilitiesProvider does not support constructor with "
              "object path.",
              o.message);
}

TEST_F(CapabilitiesDirectTest, AssociationLookupFailures)
{
    CIMOMHandle handle = om().handle();
    CIMProvider* base = createProvider("ORV_StatisticsElementCapabilitiesProvider");
    ASSERT_NE(nullptr, base);
    base->initialize(handle);
    CIMInstanceProvider* p = dynamic_cast<CIMInstanceProvider*>(base);

    const CIMObjectPath capabilities = instancePath(CAPABILITIES, capabilitiesID());
    Array<CIMKeyBinding> three;
    three.append(CIMKeyBinding(CIMName("ManagedElement"), servicePath()));
    three.append(CIMKeyBinding(CIMName("Capabilities"), capabilities));
    three.append(CIMKeyBinding(CIMName("InstanceID"), capabilitiesID(), CIMKeyBinding::STRING));
    // Two keys, but the service of another system.
    Array<CIMKeyBinding> stranger;
    CIMObjectPath otherService = servicePath();
    Array<CIMKeyBinding> serviceKeys = otherService.getKeyBindings();
    serviceKeys[1] = CIMKeyBinding(CIMName("SystemName"), "OTHER", CIMKeyBinding::STRING);
    otherService.setKeyBindings(serviceKeys);
    stranger.append(CIMKeyBinding(CIMName("ManagedElement"), otherService));
    stranger.append(CIMKeyBinding(CIMName("Capabilities"), capabilities));

    const std::string name = "ORV_StatisticsElementCapabilitiesProvider";
    const struct
    {
        Array<CIMKeyBinding> keys;
        CIMStatusCode code;
        std::string text;
        std::string logged;
    } cases[] = {
        {three, CIM_ERR_INVALID_PARAMETER, name + " Expect two keys.",
         name + "::getInstance(): Invalid number of keys (3)\n"},
        {stranger, CIM_ERR_NOT_FOUND, name + " CIM Object not found.", ""},
    };
    for (const auto& c : cases)
    {
        Sdk::CollectingInstanceResponseHandler h;
        CimOutcome o;
        const std::string log = captureLog(
            [&]()
            {
                o = runCatching(
                    [&]()
                    {
                        p->getInstance(contextFor(READER_USER),
                                       CIMObjectPath(String(), NS, ELEMENT_CAPABILITIES, c.keys),
                                       false, false, CIMPropertyList(), h);
                    });
            });
        EXPECT_EQ(c.code, o.code) << c.text;
        EXPECT_EQ(c.text, o.message);
        EXPECT_NE(std::string::npos, log.find(c.logged)) << log;
        EXPECT_EQ("", h.callSequence());
    }
    base->terminate();
}

// The qualifier and class-origin flags and the property list reach the
// class definition each instance is built from, and associators pass them on
// to the other end's provider.
TEST_F(CapabilitiesDirectTest, RequestFlagsShapeTheBuiltInstances)
{
    CIMOMHandle handle = om().handle();
    auto checkShape = [](const CIMInstance& inst, const char* kept, const char* dropped,
                         Boolean qualifiers, Boolean origins, const std::string& what)
    {
        EXPECT_EQ(PEG_NOT_FOUND, inst.findProperty(CIMName(dropped))) << what;
        const Uint32 at = inst.findProperty(CIMName(kept));
        ASSERT_NE(PEG_NOT_FOUND, at) << what;
        CIMConstProperty key = inst.getProperty(at);
        EXPECT_EQ(qualifiers, key.getQualifierCount() > 0) << what;
        EXPECT_EQ(origins, !key.getClassOrigin().isNull()) << what;
    };
    const struct
    {
        const char* provider;
        CIMName served;
        const char* keyProperty;
        const char* otherProperty;
    } cases[] = {
        {"ORV_BlockStatisticsManifestProvider", CIMName("ORV_BlockStatisticsManifest"),
         "InstanceID", "CSVSequence"},
        {"ORV_BlockStatisticsCapabilitiesProvider", CAPABILITIES, "InstanceID",
         "ElementTypesSupported"},
        {"ORV_StatisticsElementCapabilitiesProvider", ELEMENT_CAPABILITIES, "Capabilities",
         "ManagedElement"},
    };
    for (int flags = 0; flags < 4; flags++)
    {
        const Boolean qualifiers = (flags & 1) != 0;
        const Boolean origins = (flags & 2) != 0;
        for (const auto& c : cases)
        {
            const std::string what = std::string(c.provider) + " " + std::to_string(flags);
            CIMProvider* base = createProvider(c.provider);
            ASSERT_NE(nullptr, base) << what;
            base->initialize(handle);
            Array<CIMName> only;
            only.append(CIMName(c.keyProperty));
            Sdk::CollectingInstanceResponseHandler h;
            dynamic_cast<CIMInstanceProvider*>(base)->enumerateInstances(
                contextFor(READER_USER), classPath(c.served), qualifiers, origins,
                CIMPropertyList(only), h);
            ASSERT_LT(0u, h.getObjects().size()) << what;
            checkShape(h.getObjects()[0], c.keyProperty, c.otherProperty, qualifiers, origins,
                       what);
            base->terminate();
        }

        CIMProvider* base = createProvider("ORV_StatisticsElementCapabilitiesProvider");
        base->initialize(handle);
        Array<CIMName> only;
        only.append(CIMName("InstanceID"));
        Sdk::CollectingObjectResponseHandler h;
        dynamic_cast<CIMAssociationProvider*>(base)->associators(
            contextFor(READER_USER), servicePath(), ELEMENT_CAPABILITIES, CIMName(), String(),
            String(), qualifiers, origins, CIMPropertyList(only), h);
        ASSERT_EQ(1u, h.getObjects().size()) << flags;
        checkShape(CIMInstance(h.getObjects()[0]), "InstanceID", "ElementTypesSupported",
                   qualifiers, origins, "associators " + std::to_string(flags));
        base->terminate();
    }
}

} // namespace
