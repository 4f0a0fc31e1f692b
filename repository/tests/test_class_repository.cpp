// Inheritance, GetClass filtering and class enumeration of the repository.

#include <cimrepo/ClassRepository.h>
#include <cimrepo/MofCompiler.h>

#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

#include <set>

using namespace Pegasus;
using namespace cimrepo;

namespace
{

const CIMNamespaceName ns("root/test");

std::string str(const String& s)
{
    return std::string(static_cast<const char*>(s.getCString()));
}

// Base -> Middle -> Leaf, Middle -> Other; a second root Lone.
const char* const hierarchy = R"(
[Abstract, Description ("base"), Version ("1.0"), Tag ("t") : Restricted]
class Base {
    [Key, Description ("id")] string Id;
    [Override ("Nothing"), Description ("kept")] string Name = "base";
    uint32 Count;
    uint32 Reset([IN, Description ("which")] string Which);
};
[Description ("middle")]
class Middle : Base {
    [Description ("new name")] string Name;
    string Extra;
};
class Leaf : Middle {
    [Override ("Count"), Units ("Bytes")] uint32 Count = 5;
    uint32 Reset([IN] string Which);
    string Own;
};
class Other : Middle {};
class Lone {};
)";

struct Repo
{
    ClassRepository repo;

    Repo()
    {
        MofCompiler compiler(repo);
        compiler.compileString(hierarchy, "h.mof", ns);
    }

    CIMClass get(const char* name, bool localOnly, bool quals, bool origin,
                 const CIMPropertyList& list = CIMPropertyList())
    {
        return repo.getClass(ns, CIMName(name), localOnly, quals, origin, list);
    }
};

std::set<std::string> propertyNames(const CIMClass& c)
{
    std::set<std::string> out;
    for (Uint32 i = 0; i < c.getPropertyCount(); ++i)
    {
        out.insert(str(c.getProperty(i).getName().getString()));
    }
    return out;
}

std::set<std::string> names(const Array<CIMName>& a)
{
    std::set<std::string> out;
    for (Uint32 i = 0; i < a.size(); ++i)
    {
        out.insert(str(a[i].getString()));
    }
    return out;
}

CIMProperty prop(CIMClass c, const char* name)
{
    Uint32 i = c.findProperty(CIMName(name));
    EXPECT_NE(PEG_NOT_FOUND, i) << name;
    return c.getProperty(i);
}

bool hasQualifier(CIMProperty p, const char* name)
{
    return p.findQualifier(CIMName(name)) != PEG_NOT_FOUND;
}

std::string description(CIMProperty p)
{
    String s;
    p.getQualifier(p.findQualifier(CIMName("Description"))).getValue().get(s);
    return str(s);
}

} // namespace

TEST(ClassRepository, SubclassCarriesInheritedFeaturesWithOriginAndPropagation)
{
    Repo r;
    CIMClass leaf = r.get("leaf", false, true, true);
    EXPECT_EQ("Leaf", str(leaf.getClassName().getString()));
    EXPECT_EQ("Middle", str(leaf.getSuperClassName().getString()));
    EXPECT_EQ((std::set<std::string>{"Id", "Name", "Count", "Extra", "Own"}), propertyNames(leaf));

    struct Case
    {
        const char* property;
        const char* origin;
        bool propagated;
    } cases[] = {// A redeclared property keeps the origin of the one it overrides.
                 {"Id", "Base", true},
                 {"Name", "Base", true},
                 {"Count", "Base", false},
                 {"Extra", "Middle", true},
                 {"Own", "Leaf", false}};
    for (const Case& c : cases)
    {
        CIMProperty p = prop(leaf, c.property);
        EXPECT_EQ(c.origin, str(p.getClassOrigin().getString())) << c.property;
        EXPECT_EQ(c.propagated, p.getPropagated()) << c.property;
    }

    // What the class does not redeclare comes first, in the superclass's
    // order, then its own properties as declared (redeclared ones included).
    std::vector<std::string> order;
    for (Uint32 i = 0; i < leaf.getPropertyCount(); ++i)
    {
        order.push_back(str(leaf.getProperty(i).getName().getString()));
    }
    EXPECT_EQ((std::vector<std::string>{"Id", "Name", "Extra", "Count", "Own"}), order);

    // Inherited qualifiers propagate (Key, Description) but restricted ones (Override) do not.
    CIMProperty id = prop(leaf, "Id");
    EXPECT_TRUE(hasQualifier(id, "Key"));
    EXPECT_TRUE(id.getQualifier(id.findQualifier(CIMName("Key"))).getPropagated());
    Array<CIMName> keys;
    leaf.getKeyNames(keys);
    ASSERT_EQ(1u, keys.size());
    EXPECT_EQ("Id", str(keys[0].getString()));

    // Middle redefines Name: its own Description wins, the default is inherited, and Base's
    // restricted Override stays behind.
    CIMProperty name = prop(r.get("Middle", false, true, true), "Name");
    EXPECT_EQ("new name", description(name));
    EXPECT_FALSE(hasQualifier(name, "Override"));
    String nameDefault;
    name.getValue().get(nameDefault);
    EXPECT_EQ("base", str(nameDefault));

    // The override in Leaf replaces the value and adds qualifiers, keeping inherited ones.
    CIMProperty count = prop(leaf, "Count");
    Uint32 five = 0;
    count.getValue().get(five);
    EXPECT_EQ(5u, five);
    EXPECT_TRUE(hasQualifier(count, "Units"));

    CIMMethod reset = leaf.getMethod(leaf.findMethod(CIMName("Reset")));
    EXPECT_EQ("Leaf", str(reset.getClassOrigin().getString()));
    EXPECT_FALSE(reset.getPropagated());
    EXPECT_EQ("Base",
              str(r.get("Other", false, true, true).getMethod(0).getClassOrigin().getString()));
}

TEST(ClassRepository, ClassQualifiersPropagateByFlavor)
{
    Repo r;
    CIMClass base = r.get("Base", false, true, false);
    EXPECT_TRUE(base.isAbstract());
    CIMClass middle = r.get("Middle", false, true, false);
    EXPECT_FALSE(middle.isAbstract()); // Abstract is restricted
    EXPECT_EQ(PEG_NOT_FOUND, middle.findQualifier(CIMName("Version")));
    EXPECT_EQ(PEG_NOT_FOUND, middle.findQualifier(CIMName("Tag")));
    CIMClass other = r.get("Other", false, true, false);
    Uint32 d = other.findQualifier(CIMName("Description"));
    ASSERT_NE(PEG_NOT_FOUND, d);
    String text;
    other.getQualifier(d).getValue().get(text);
    EXPECT_EQ("middle", str(text));
    EXPECT_TRUE(other.getQualifier(d).getPropagated());
    EXPECT_FALSE(middle.getQualifier(middle.findQualifier(CIMName("Description"))).getPropagated());
}

TEST(ClassRepository, GetClassFlags)
{
    Repo r;
    struct Case
    {
        bool localOnly;
        bool includeQualifiers;
        bool includeClassOrigin;
        std::set<std::string> properties;
        bool classQualifiers;    // Description present on the class
        bool propertyQualifiers; // Key present on Id / Units on Count
        bool methodPresent;
    } cases[] = {
        {false, true, true, {"Id", "Name", "Count", "Extra", "Own"}, true, true, true},
        {true, true, true, {"Count", "Own"}, false, true, true},
        {false, false, true, {"Id", "Name", "Count", "Extra", "Own"}, false, false, true},
        {false, true, false, {"Id", "Name", "Count", "Extra", "Own"}, true, true, true},
        {true, false, false, {"Count", "Own"}, false, false, true},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(testing::Message()
                     << "localOnly=" << c.localOnly << " includeQualifiers=" << c.includeQualifiers
                     << " includeClassOrigin=" << c.includeClassOrigin);
        CIMClass leaf = r.get("Leaf", c.localOnly, c.includeQualifiers, c.includeClassOrigin);
        EXPECT_EQ(c.properties, propertyNames(leaf));
        // Leaf's Description is inherited from Middle, so localOnly drops it.
        EXPECT_EQ(c.classQualifiers, leaf.findQualifier(CIMName("Description")) != PEG_NOT_FOUND);
        EXPECT_EQ(c.propertyQualifiers, hasQualifier(prop(leaf, "Count"), "Units"));
        if (!c.localOnly)
        {
            EXPECT_EQ(c.propertyQualifiers, hasQualifier(prop(leaf, "Id"), "Key"));
        }
        ASSERT_EQ(c.methodPresent ? 1u : 0u, leaf.getMethodCount());
        CIMMethod reset = leaf.getMethod(0);
        EXPECT_EQ(c.includeQualifiers ? 1u : 0u, reset.getParameter(0).getQualifierCount());
        for (Uint32 i = 0; i < leaf.getPropertyCount(); ++i)
        {
            EXPECT_EQ(c.includeClassOrigin, !leaf.getProperty(i).getClassOrigin().isNull());
        }
        EXPECT_EQ(c.includeClassOrigin, !reset.getClassOrigin().isNull());
    }
    // Middle's local view: Name is redefined there, Extra new; Reset is only inherited.
    CIMClass middle = r.get("Middle", true, true, true);
    EXPECT_EQ((std::set<std::string>{"Name", "Extra"}), propertyNames(middle));
    EXPECT_EQ(0u, middle.getMethodCount());
}

TEST(ClassRepository, PropertyListFiltersWithoutRegardToCase)
{
    Repo r;
    Array<CIMName> wanted;
    wanted.append(CIMName("id"));
    wanted.append(CIMName("OWN"));
    wanted.append(CIMName("NoSuchProperty"));
    CIMClass leaf = r.get("Leaf", false, true, true, CIMPropertyList(wanted));
    EXPECT_EQ((std::set<std::string>{"Id", "Own"}), propertyNames(leaf));
    EXPECT_EQ(1u, leaf.getMethodCount());

    CIMClass none = r.get("Leaf", false, true, true, CIMPropertyList(Array<CIMName>()));
    EXPECT_EQ(0u, none.getPropertyCount());
}

TEST(ClassRepository, AnsweredClassesAreIndependentCopies)
{
    Repo r;
    CIMClass leaf = r.get("Leaf", false, true, true);
    leaf.removeProperty(leaf.findProperty(CIMName("Own")));
    CIMProperty id = prop(leaf, "Id");
    id.removeQualifier(id.findQualifier(CIMName("Key")));
    CIMClass again = r.get("Leaf", false, true, true);
    EXPECT_NE(PEG_NOT_FOUND, again.findProperty(CIMName("Own")));
    EXPECT_TRUE(hasQualifier(prop(again, "Id"), "Key"));
}

TEST(ClassRepository, EnumerationAndSubclassQueries)
{
    Repo r;
    struct Case
    {
        const char* className; // nullptr: from the roots
        bool deep;
        std::set<std::string> expected;
    } cases[] = {
        {nullptr, false, {"Base", "Lone"}},
        {nullptr, true, {"Base", "Middle", "Leaf", "Other", "Lone"}},
        {"Base", false, {"Middle"}},
        {"base", true, {"Middle", "Leaf", "Other"}},
        {"Middle", false, {"Leaf", "Other"}},
        {"Leaf", true, {}},
    };
    for (const Case& c : cases)
    {
        CIMName name = c.className ? CIMName(c.className) : CIMName();
        EXPECT_EQ(c.expected, names(r.repo.enumerateClassNames(ns, name, c.deep)))
            << (c.className ? c.className : "(roots)") << " deep=" << c.deep;
        EXPECT_EQ(c.expected, names(r.repo.getSubClassNames(ns, name, c.deep)));
    }
    Array<CIMName> ordered = r.repo.enumerateClassNames(ns, CIMName(), true);
    ASSERT_EQ(5u, ordered.size());
    EXPECT_EQ("Base", str(ordered[0].getString())); // definition order

    Array<CIMClass> classes =
        r.repo.enumerateClasses(ns, CIMName("Middle"), true, true, false, false);
    ASSERT_EQ(2u, classes.size());
    EXPECT_EQ((std::set<std::string>{"Own", "Count"}), propertyNames(classes[0]));
    EXPECT_EQ(0u, classes[0].getQualifierCount());

    EXPECT_TRUE(r.repo.isSubClassOf(ns, CIMName("Leaf"), CIMName("BASE")));
    EXPECT_TRUE(r.repo.isSubClassOf(ns, CIMName("Leaf"), CIMName("Leaf")));
    EXPECT_FALSE(r.repo.isSubClassOf(ns, CIMName("Base"), CIMName("Leaf")));
    EXPECT_FALSE(r.repo.isSubClassOf(ns, CIMName("Other"), CIMName("Leaf")));
    EXPECT_FALSE(r.repo.isSubClassOf(ns, CIMName("Nope"), CIMName("Nope")));
    EXPECT_FALSE(
        r.repo.isSubClassOf(CIMNamespaceName("root/none"), CIMName("Leaf"), CIMName("Leaf")));
    EXPECT_TRUE(r.repo.classExists(ns, CIMName("lone")));
    EXPECT_FALSE(r.repo.classExists(CIMNamespaceName("root/none"), CIMName("Lone")));
    EXPECT_TRUE(r.repo.namespaceExists(CIMNamespaceName("ROOT/Test")));
    EXPECT_EQ("Middle", str(r.repo.getSuperClassName(ns, CIMName("Leaf")).getString()));
    EXPECT_TRUE(r.repo.getSuperClassName(ns, CIMName("Base")).isNull());
}

TEST(ClassRepository, ErrorsCarryTheStatusCodesOfACimServer)
{
    Repo r;
    auto code = [](auto&& fn)
    {
        try
        {
            fn();
        }
        catch (const CIMException& e)
        {
            return e.getCode();
        }
        return CIM_ERR_SUCCESS;
    };
    const CIMNamespaceName nowhere("root/nowhere");
    EXPECT_EQ(
        CIM_ERR_INVALID_NAMESPACE,
        code([&]
             { r.repo.getClass(nowhere, CIMName("Leaf"), false, true, true, CIMPropertyList()); }));
    EXPECT_EQ(CIM_ERR_NOT_FOUND, code([&] { r.get("Nope", false, true, true); }));
    EXPECT_EQ(CIM_ERR_INVALID_NAMESPACE,
              code([&] { r.repo.enumerateClassNames(nowhere, CIMName(), true); }));
    EXPECT_EQ(CIM_ERR_INVALID_CLASS,
              code([&] { r.repo.enumerateClassNames(ns, CIMName("Nope"), false); }));
    EXPECT_EQ(CIM_ERR_INVALID_CLASS,
              code([&] { r.repo.enumerateClasses(ns, CIMName("Nope"), true, false, true, true); }));
    EXPECT_EQ(CIM_ERR_ALREADY_EXISTS,
              code([&] { r.repo.addClass(ns, CIMClass(CIMName("LEAF"))); }));
    EXPECT_EQ(CIM_ERR_INVALID_SUPERCLASS,
              code([&] { r.repo.addClass(ns, CIMClass(CIMName("X"), CIMName("Nope"))); }));
    EXPECT_EQ(CIM_ERR_NOT_FOUND, code([&] { r.repo.getQualifierDecl(ns, CIMName("Key")); }));
    EXPECT_TRUE(r.repo.findQualifierDecl(nowhere, CIMName("Key")).isUninitialized());
}

TEST(ClassRepository, AddClassDerivesInheritedFeaturesItself)
{
    ClassRepository repo;
    CIMClass base(CIMName("B"));
    base.addProperty(CIMProperty(CIMName("P"), CIMValue(Uint32(1))));
    repo.addClass(ns, base);

    // A class handed in with stale inherited copies: those are derived again from the superclass.
    CIMClass sub(CIMName("S"), CIMName("b"));
    sub.addProperty(
        CIMProperty(CIMName("P"), CIMValue(Uint32(9)), 0, CIMName(), CIMName("B"), true));
    sub.addProperty(CIMProperty(CIMName("Q"), CIMValue(String("q"))));
    repo.addClass(ns, sub);
    CIMClass s = repo.getClass(ns, CIMName("S"), false, true, true, CIMPropertyList());
    EXPECT_EQ("B", str(s.getSuperClassName().getString()));
    Uint32 p = 0;
    prop(s, "P").getValue().get(p);
    EXPECT_EQ(1u, p);
    EXPECT_TRUE(prop(s, "P").getPropagated());
    EXPECT_EQ("S", str(prop(s, "Q").getClassOrigin().getString()));

    // Changing the passed class afterwards does not reach the repository.
    sub.addProperty(CIMProperty(CIMName("Late"), CIMValue(String("x"))));
    EXPECT_EQ(PEG_NOT_FOUND, repo.getClass(ns, CIMName("S"), false, true, true, CIMPropertyList())
                                 .findProperty(CIMName("Late")));
}
