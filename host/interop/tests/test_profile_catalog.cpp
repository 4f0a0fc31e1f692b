// The profile catalog read from registration instances: table-driven cases
// of well-formed and malformed PG_ProviderProfileCapabilities and
// PG_ProviderReferencedProfiles, checked against class definitions compiled
// from the same MOF as the host's.

#include <cimom/ObjectManager.h>
#include <cimom/ProfileCatalog.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

PEGASUS_USING_PEGASUS;

namespace
{

const CIMNamespaceName REG("root/PG_InterOp");

struct Classes
{
    CIMClass profileCaps, referenced, registered;
};

const Classes& classes()
{
    static Classes c = []
    {
        cimom::ObjectManager om;
        om.loadMofFile(std::string(ORV_SOURCE_ROOT) + "/schema/CIM_Interop.mof", REG);
        const cimrepo::ClassRepository& repo = om.repository();
        auto get = [&](const char* name)
        { return repo.getClass(REG, CIMName(name), false, true, false, CIMPropertyList()); };
        return Classes{get("PG_ProviderProfileCapabilities"), get("PG_ProviderReferencedProfiles"),
                       get("CIM_RegisteredProfile")};
    }();
    return c;
}

CIMInstance provider(const char* module, const char* name)
{
    CIMInstance i(CIMName("PG_Provider"));
    i.addProperty(CIMProperty(CIMName("ProviderModuleName"), String(module)));
    i.addProperty(CIMProperty(CIMName("Name"), String(name)));
    return i;
}

Array<String> strings(std::initializer_list<const char*> values)
{
    Array<String> a;
    for (const char* v : values)
    {
        a.append(String(v));
    }
    return a;
}

Array<Uint16> numbers(std::initializer_list<Uint16> values)
{
    Array<Uint16> a;
    for (Uint16 v : values)
    {
        a.append(v);
    }
    return a;
}

CIMInstance capabilities(const char* cls, std::initializer_list<const char*> namespaces)
{
    CIMInstance i(CIMName("PG_ProviderCapabilities"));
    i.addProperty(CIMProperty(CIMName("ProviderModuleName"), String("M")));
    i.addProperty(CIMProperty(CIMName("ProviderName"), String("P")));
    i.addProperty(CIMProperty(CIMName("ClassName"), String(cls)));
    i.addProperty(CIMProperty(CIMName("Namespaces"), strings(namespaces)));
    return i;
}

// A profile capability of provider M/P; fields left empty are left out.
CIMInstance profile(const char* name, const char* org, const char* version,
                    std::initializer_list<const char*> elements, const char* providerName = "P",
                    Uint16 number = 0)
{
    CIMInstance i(CIMName("PG_ProviderProfileCapabilities"));
    i.addProperty(CIMProperty(CIMName("ProviderModuleName"), String("M")));
    i.addProperty(CIMProperty(CIMName("ProviderName"), String(providerName)));
    i.addProperty(CIMProperty(CIMName("CapabilityID"), String(name)));
    i.addProperty(CIMProperty(CIMName("RegisteredProfile"), number));
    if (*name)
    {
        i.addProperty(CIMProperty(CIMName("OtherRegisteredProfile"), String(name)));
    }
    if (*org)
    {
        i.addProperty(CIMProperty(CIMName("OtherProfileOrganization"), String(org)));
    }
    if (*version)
    {
        i.addProperty(CIMProperty(CIMName("ProfileVersion"), String(version)));
    }
    i.addProperty(CIMProperty(CIMName("ConformingElements"), strings(elements)));
    return i;
}

CIMInstance reference(Array<Uint16> registered, Array<String> names, Array<String> versions,
                      Array<Uint16> dependent, Array<String> dependentNames,
                      Array<String> dependentVersions)
{
    CIMInstance i(CIMName("PG_ProviderReferencedProfiles"));
    i.addProperty(CIMProperty(CIMName("ProviderModuleName"), String("M")));
    i.addProperty(CIMProperty(CIMName("ProviderName"), String("P")));
    i.addProperty(CIMProperty(CIMName("CapabilityID"), String("R")));
    i.addProperty(CIMProperty(CIMName("RegisteredProfiles"), registered));
    i.addProperty(CIMProperty(CIMName("OtherRegisteredProfiles"), names));
    Array<String> orgs;
    for (Uint32 k = 0; k < names.size(); k++)
    {
        orgs.append("SNIA");
    }
    i.addProperty(CIMProperty(CIMName("OtherRegisteredProfileOrganizations"), orgs));
    i.addProperty(CIMProperty(CIMName("RegisteredProfileVersions"), versions));
    i.addProperty(CIMProperty(CIMName("DependentProfiles"), dependent));
    i.addProperty(CIMProperty(CIMName("OtherDependentProfiles"), dependentNames));
    Array<String> dorgs;
    for (Uint32 k = 0; k < dependentNames.size(); k++)
    {
        dorgs.append("SNIA");
    }
    i.addProperty(CIMProperty(CIMName("OtherDependentProfileOrganizations"), dorgs));
    i.addProperty(CIMProperty(CIMName("DependentProfileVersions"), dependentVersions));
    return i;
}

cimom::ProfileCatalog build(std::vector<CIMInstance> extra)
{
    std::vector<CIMInstance> registration = {provider("M", "P"),
                                             capabilities("X_Service", {"root/x", "root/y"}),
                                             capabilities("X_System", {"root/x"})};
    registration.insert(registration.end(), extra.begin(), extra.end());
    return cimom::ProfileCatalog::build(registration, classes().profileCaps, classes().referenced,
                                        classes().registered);
}

std::string text(const String& s)
{
    return std::string((const char*)s.getCString());
}

struct ProfileCase
{
    const char* description;
    std::vector<CIMInstance> registration;
    // Expected: InstanceID, organization number, conforming "ns:class" list
    // of the first profile; or, when profiles is 0, a problem mentioning
    // `problem`.
    size_t profiles;
    const char* instanceID;
    Uint16 organization;
    std::vector<std::string> conforming;
    const char* problem;
};

TEST(ProfileCatalogTest, ProfilesFromProfileCapabilities)
{
    const std::vector<ProfileCase> cases = {
        {"an SNIA profile by its Other name: organization 11, elements where the provider "
         "serves the class",
         {profile("Block Server Performance", "SNIA", "1.1.0", {"X_Service"})},
         1,
         "SNIA+Block Server Performance+1.1.0",
         11,
         {"root/x:X_Service", "root/y:X_Service"},
         ""},
        {"an organization the class does not know is Other (1)",
         {profile("Thing", "Acme", "0.1.0", {})},
         1,
         "Acme+Thing+0.1.0",
         1,
         {},
         ""},
        {"two capabilities of one profile are one profile with both elements",
         {profile("Array", "SNIA", "1.1.0", {"X_System"}),
          profile("Array", "SNIA", "1.1.0", {"X_Service"})},
         1,
         "SNIA+Array+1.1.0",
         11,
         {"root/x:X_System", "root/x:X_Service", "root/y:X_Service"},
         ""},
        {"a provider that is not registered advertises nothing",
         {profile("Array", "SNIA", "1.1.0", {}, "Q")},
         0,
         "",
         0,
         {},
         "is not registered"},
        {"no version", {profile("Array", "SNIA", "", {})}, 0, "", 0, {}, "no ProfileVersion"},
        {"Other without a name",
         {profile("", "SNIA", "1.1.0", {})},
         0,
         "",
         0,
         {},
         "not enough entries"},
        {"a number the class does not map",
         {profile("Array", "SNIA", "1.1.0", {}, "P", 7)},
         0,
         "",
         0,
         {},
         "names no known profile"},
        {"an element the provider does not serve",
         {profile("Array", "SNIA", "1.1.0", {"X_Other"})},
         0,
         "",
         0,
         {},
         "conforming element X_Other"},
    };
    for (const ProfileCase& c : cases)
    {
        SCOPED_TRACE(c.description);
        cimom::ProfileCatalog catalog = build(c.registration);
        ASSERT_EQ(c.profiles, catalog.profiles().size());
        if (c.profiles == 0)
        {
            ASSERT_EQ(1u, catalog.problems().size());
            EXPECT_NE(std::string::npos, catalog.problems()[0].find(c.problem))
                << catalog.problems()[0];
            continue;
        }
        EXPECT_TRUE(catalog.problems().empty());
        const cimom::ProfileRecord& p = catalog.profiles()[0];
        EXPECT_EQ(c.instanceID, text(p.instanceID));
        EXPECT_EQ(c.organization, p.organization);
        std::vector<std::string> conforming;
        for (const cimom::ConformingClass& cc : p.conformingClasses)
        {
            conforming.push_back(text(cc.nameSpace.getString()) + ":" +
                                 text(cc.className.getString()));
        }
        EXPECT_EQ(c.conforming, conforming);
    }
}

TEST(ProfileCatalogTest, ReferencedProfilesPairEntriesInOrder)
{
    struct Case
    {
        const char* description;
        CIMInstance instance;
        std::vector<std::string> pairs; // "antecedent > dependent"
        const char* problem;
    };
    const std::vector<Case> cases = {
        {"one pair",
         reference(numbers({0}), strings({"Array"}), strings({"1.1.0"}), numbers({0}),
                   strings({"Block Server Performance"}), strings({"1.1.0"})),
         {"SNIA+Array+1.1.0 > SNIA+Block Server Performance+1.1.0"},
         ""},
        {"Other entries are consumed in order, versions per entry",
         reference(numbers({0, 0}), strings({"Array", "Array"}), strings({"1.1.0", "1.5.0"}),
                   numbers({0, 0}), strings({"A", "B"}), strings({"1.0.0", "2.0.0"})),
         {"SNIA+Array+1.1.0 > SNIA+A+1.0.0", "SNIA+Array+1.5.0 > SNIA+B+2.0.0"},
         ""},
        {"a missing version",
         reference(numbers({0}), strings({"Array"}), strings({}), numbers({0}), strings({"A"}),
                   strings({"1.0.0"})),
         {},
         "one entry each"},
        {"fewer Other names than Other entries",
         reference(numbers({0, 0}), strings({"Array"}), strings({"1", "2"}), numbers({0, 0}),
                   strings({"A", "B"}), strings({"1", "2"})),
         {"SNIA+Array+1 > SNIA+A+1"},
         "not enough entries"},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.description);
        cimom::ProfileCatalog catalog = build({c.instance});
        std::vector<std::string> pairs;
        for (const cimom::ProfileReference& r : catalog.references())
        {
            pairs.push_back(text(r.antecedentID) + " > " + text(r.dependentID));
        }
        EXPECT_EQ(c.pairs, pairs);
        if (*c.problem)
        {
            ASSERT_EQ(1u, catalog.problems().size());
            EXPECT_NE(std::string::npos, catalog.problems()[0].find(c.problem));
        }
        else
        {
            EXPECT_TRUE(catalog.problems().empty());
        }
    }
}

} // namespace
