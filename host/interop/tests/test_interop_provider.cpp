// The interop namespaces through the object manager, loaded as the server
// loads them (schema/load-order.txt, the sibling stand-ins and the
// statistics module over the simulated array), with the interop provider
// installed: what a discovering client sees, and the registration MOF
// checked against the classes it names.

#include <cimom/InteropProvider.h>
#include <cimom/ObjectManager.h>
#include <cimom/ProfileCatalog.h>

#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

PEGASUS_USING_PEGASUS;

namespace
{

const CIMNamespaceName REG("root/PG_InterOp");
const char* const BSP_ID = "SNIA+Block Server Performance+1.1.0";
const char* const ARRAY_ID = "SNIA+Array+1.1.0";

std::string text(const String& s)
{
    return std::string((const char*)s.getCString());
}

OperationContext as(const char* user)
{
    OperationContext context;
    context.insert(IdentityContainer(String(user)));
    return context;
}

cimom::ObjectManager& om()
{
    static std::unique_ptr<cimom::ObjectManager> manager = []
    {
        auto m = std::make_unique<cimom::ObjectManager>();
        m->loadManifest(std::string(ORV_SOURCE_ROOT) + "/schema/load-order.txt", ORV_SOURCE_ROOT);
        m->setHostName("testhost");
        cimom::InteropSettings settings;
        settings.hostName = "testhost";
        settings.httpPort = 5988;
        settings.httpsPort = 5989;
        cimom::InteropProvider::install(*m, settings);
        m->makeLocal();
        return m;
    }();
    return *manager;
}

CIMObjectPath profilePath(const char* id)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), String(id), CIMKeyBinding::STRING));
    return CIMObjectPath(String(), CIMNamespaceName(), CIMName("CIM_RegisteredProfile"), keys);
}

std::string value(const CIMInstance& instance, const char* name)
{
    Uint32 pos = instance.findProperty(CIMName(name));
    return pos == PEG_NOT_FOUND ? "<absent>"
                                : text(instance.getProperty(pos).getValue().toString());
}

TEST(InteropProviderTest, EveryInteropNamespaceAnswersTheSame)
{
    struct Case
    {
        const char* className;
        size_t count;
    };
    // One object manager and its system, the two endpoints, two profiles.
    const std::vector<Case> cases = {
        {"CIM_ObjectManager", 1},
        {"CIM_ComputerSystem", 1},
        {"CIM_CIMXMLCommunicationMechanism", 2},
        {"CIM_RegisteredProfile", 2},
        {"CIM_HostedService", 1},
        {"CIM_CommMechanismForManager", 2},
        {"CIM_ReferencedProfile", 1},
    };
    const size_t namespaces = om().repository().enumerateNamespaces().size();
    for (const char* ns : {"interop", "root/interop", "root/PG_InterOp"})
    {
        for (const Case& c : cases)
        {
            SCOPED_TRACE(std::string(ns) + " " + c.className);
            Array<CIMInstance> found =
                om().enumerateInstances(as("demo"), CIMNamespaceName(ns), CIMName(c.className),
                                        true, false, false, false, CIMPropertyList());
            EXPECT_EQ(c.count, found.size());
            for (Uint32 i = 0; i < found.size(); i++)
            {
                EXPECT_EQ(text(CIMNamespaceName(ns).getString()),
                          text(found[i].getPath().getNameSpace().getString()));
            }
        }
        SCOPED_TRACE(ns);
        EXPECT_EQ(namespaces, om().enumerateInstanceNames(as("demo"), CIMNamespaceName(ns),
                                                          CIMName("CIM_Namespace"))
                                  .size());
        EXPECT_EQ(namespaces, om().enumerateInstanceNames(as("demo"), CIMNamespaceName(ns),
                                                          CIMName("CIM_NamespaceInManager"))
                                  .size());
    }
}

TEST(InteropProviderTest, RegisteredProfilesAsOpenPegasusBuildsThem)
{
    struct Case
    {
        const char* id;
        const char* name;
    };
    for (const Case& c : {Case{BSP_ID, "Block Server Performance"}, Case{ARRAY_ID, "Array"}})
    {
        SCOPED_TRACE(c.id);
        CIMInstance profile =
            om().getInstance(as("demo"), CIMNamespaceName("interop"), profilePath(c.id), false,
                             false, false, CIMPropertyList());
        EXPECT_EQ(c.name, value(profile, "RegisteredName"));
        EXPECT_EQ("1.1.0", value(profile, "RegisteredVersion"));
        EXPECT_EQ("11", value(profile, "RegisteredOrganization"));
        EXPECT_EQ("2 ", value(profile, "AdvertiseTypes")); // {2}: not advertised
    }
}

TEST(InteropProviderTest, DiscoveryWalk)
{
    struct Case
    {
        const char* description;
        const char* from;
        const char* assocClass;
        const char* role;
        std::vector<std::string> expected; // "namespace:class" of each associated object
    };
    const std::vector<Case> cases = {
        {"the statistics profile to the block statistics service",
         BSP_ID,
         "CIM_ElementConformsToProfile",
         "",
         {"root/orv:ORV_BlockStatisticsService"}},
        {"the array profile to the storage system",
         ARRAY_ID,
         "CIM_ElementConformsToProfile",
         "",
         {"root/orv:ORV_StorageSystem"}},
        {"the statistics profile up to the array profile",
         BSP_ID,
         "CIM_ReferencedProfile",
         "Dependent",
         {"interop:CIM_RegisteredProfile"}},
        {"the array profile down to the statistics profile",
         ARRAY_ID,
         "CIM_ReferencedProfile",
         "Antecedent",
         {"interop:CIM_RegisteredProfile"}},
        {"a role the profile does not play", ARRAY_ID, "CIM_ReferencedProfile", "Dependent", {}},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.description);
        Array<CIMObject> found = om().associators(
            as("demo"), CIMNamespaceName("interop"), profilePath(c.from), CIMName(c.assocClass),
            CIMName(), String(c.role), String(), false, false, CIMPropertyList());
        std::vector<std::string> got;
        for (Uint32 i = 0; i < found.size(); i++)
        {
            got.push_back(text(found[i].getPath().getNameSpace().getString()) + ":" +
                          text(found[i].getClassName().getString()));
        }
        EXPECT_EQ(c.expected, got);
    }

    // ... and from the service, the bulk method answers.
    Array<CIMObjectPath> service = om().associatorNames(
        as("demo"), CIMNamespaceName("interop"), profilePath(BSP_ID),
        CIMName("CIM_ElementConformsToProfile"), CIMName(), String(), String());
    ASSERT_EQ(1u, service.size());
    Array<CIMParamValue> in, out;
    Array<Uint16> types;
    types.append(2);
    in.append(CIMParamValue("ElementTypes", CIMValue(types)));
    CIMValue rc = om().invokeMethod(as("demo"), service[0].getNameSpace(), service[0],
                                    CIMName("GetStatisticsCollection"), in, out);
    EXPECT_EQ("0", text(rc.toString()));
}

TEST(InteropProviderTest, SameAccessRulesAsEveryRequest)
{
    // The statistics module refuses a user the array does not know; the
    // interop namespace passes the refusal on rather than hiding it.
    try
    {
        om().associatorNames(as("no_such_user"), CIMNamespaceName("interop"), profilePath(BSP_ID),
                             CIMName("CIM_ElementConformsToProfile"), CIMName(), String(),
                             String());
        FAIL() << "expected a refusal";
    }
    catch (const CIMException& e)
    {
        EXPECT_EQ(CIM_ERR_ACCESS_DENIED, e.getCode()) << text(e.getMessage());
    }
}

TEST(InteropProviderTest, ReadOnly)
{
    CIMInstance profile =
        om().getInstance(as("demo"), CIMNamespaceName("interop"), profilePath(BSP_ID), false, false,
                         false, CIMPropertyList());
    struct Case
    {
        const char* operation;
        std::function<void()> run;
    };
    const std::vector<Case> cases = {
        {"modify",
         [&]
         {
             om().modifyInstance(as("demo"), CIMNamespaceName("interop"), profile, false,
                                 CIMPropertyList());
         }},
        {"create", [&] { om().createInstance(as("demo"), CIMNamespaceName("interop"), profile); }},
        {"delete", [&]
         { om().deleteInstance(as("demo"), CIMNamespaceName("interop"), profilePath(BSP_ID)); }},
        {"get a profile that is not registered",
         [&]
         {
             om().getInstance(as("demo"), CIMNamespaceName("interop"),
                              profilePath("SNIA+Array+9.9.9"), false, false, false,
                              CIMPropertyList());
         }},
    };
    const CIMStatusCode expected[] = {CIM_ERR_NOT_SUPPORTED, CIM_ERR_NOT_SUPPORTED,
                                      CIM_ERR_NOT_SUPPORTED, CIM_ERR_NOT_FOUND};
    for (size_t i = 0; i < cases.size(); i++)
    {
        SCOPED_TRACE(cases[i].operation);
        try
        {
            cases[i].run();
            ADD_FAILURE() << "no error";
        }
        catch (const CIMException& e)
        {
            EXPECT_EQ(expected[i], e.getCode());
        }
    }
}

// The registration MOF that ships: every profile it declares is read
// without a problem, each conforming class exists where its provider
// serves it and is the kind of element the profile is about, and every
// referenced profile is one that is declared.
TEST(RegistrationMofTest, ProfilesNameClassesThatExist)
{
    const cimrepo::ClassRepository& repo = om().repository();
    auto definition = [&](const char* name)
    { return repo.getClass(REG, CIMName(name), false, true, false, CIMPropertyList()); };
    cimom::ProfileCatalog catalog = cimom::ProfileCatalog::build(
        om().registrationInstances(), definition("PG_ProviderProfileCapabilities"),
        definition("PG_ProviderReferencedProfiles"), definition("CIM_RegisteredProfile"));
    for (const std::string& problem : catalog.problems())
    {
        ADD_FAILURE() << problem;
    }

    struct Case
    {
        const char* id;
        const char* conformingBase;
    };
    const std::vector<Case> cases = {{BSP_ID, "CIM_BlockStatisticsService"},
                                     {ARRAY_ID, "CIM_ComputerSystem"}};
    ASSERT_EQ(cases.size(), catalog.profiles().size());
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.id);
        const cimom::ProfileRecord* profile = catalog.find(c.id);
        ASSERT_TRUE(profile);
        ASSERT_FALSE(profile->conformingClasses.empty());
        for (const cimom::ConformingClass& cc : profile->conformingClasses)
        {
            ASSERT_TRUE(repo.classExists(cc.nameSpace, cc.className));
            EXPECT_TRUE(repo.isSubClassOf(cc.nameSpace, cc.className, CIMName(c.conformingBase)));
        }
    }
    ASSERT_EQ(1u, catalog.references().size());
    EXPECT_EQ(ARRAY_ID, text(catalog.references()[0].antecedentID));
    EXPECT_EQ(BSP_ID, text(catalog.references()[0].dependentID));
}

} // namespace
