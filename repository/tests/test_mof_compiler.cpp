// From MOF text to typed classes, qualifier declarations and instances.

#include <cimrepo/ClassRepository.h>
#include <cimrepo/MofCompiler.h>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <stdlib.h>
#include <unistd.h>

using namespace Pegasus;
using namespace cimrepo;

namespace
{

const CIMNamespaceName ns("root/test");

std::string str(const String& s)
{
    return std::string(static_cast<const char*>(s.getCString()));
}

struct Fixture
{
    ClassRepository repo;
    MofCompiler compiler{repo};

    void compile(const std::string& mof)
    {
        compiler.compileString(mof, "t.mof", ns);
    }

    CIMClass cls(const char* name)
    {
        return repo.getClass(ns, CIMName(name), false, true, true, CIMPropertyList());
    }

    CIMValue defaultOf(const char* className, const char* property)
    {
        CIMClass c = cls(className);
        Uint32 i = c.findProperty(CIMName(property));
        EXPECT_NE(PEG_NOT_FOUND, i);
        return c.getProperty(i).getValue();
    }
};

std::string errorOf(Fixture& f, const std::string& mof)
{
    try
    {
        f.compile(mof);
    }
    catch (const MofError& e)
    {
        return e.what();
    }
    return "(no error)";
}

class TempDir
{
public:
    TempDir()
    {
        char pattern[] = "/tmp/mofcompXXXXXX";
        _path = mkdtemp(pattern);
    }
    ~TempDir()
    {
        std::system(("rm -rf " + _path).c_str());
    }
    std::string write(const std::string& name, const std::string& content)
    {
        std::string p = _path + "/" + name;
        std::ofstream(p) << content;
        return p;
    }
    const std::string& path() const
    {
        return _path;
    }

private:
    std::string _path;
};

} // namespace

TEST(MofCompiler, DefaultValuesAreTypedFromTheDeclaration)
{
    Fixture f;
    f.compile(R"(class T {
        boolean B = true;
        string S = "x" "y";
        char16 C = 'z';
        datetime D = "20240102030405.000006+060";
        uint8 U8 = 0xFF;
        sint8 S8 = -128;
        uint16 U16 = 0177;
        sint16 S16 = -1010b;
        uint32 U32 = 4294967295;
        sint32 S32 = -2147483648;
        uint64 U64 = 18446744073709551615;
        sint64 S64 = -9223372036854775808;
        real32 R32 = 1.5;
        real64 R64 = -2;
        string N = null;
        string Missing;
        uint16 List[] = {1, 2, 3};
        string Fixed[2] = {"a"};
    };)");
    Boolean b = false;
    f.defaultOf("T", "B").get(b);
    EXPECT_TRUE(b);
    String s;
    f.defaultOf("T", "S").get(s);
    EXPECT_EQ("xy", str(s));
    Char16 c;
    f.defaultOf("T", "C").get(c);
    EXPECT_EQ(Uint16('z'), Uint16(c));
    CIMDateTime d;
    f.defaultOf("T", "D").get(d);
    EXPECT_EQ("20240102030405.000006+060", str(d.toString()));
    Uint8 u8 = 0;
    f.defaultOf("T", "U8").get(u8);
    EXPECT_EQ(255, u8);
    Sint8 s8 = 0;
    f.defaultOf("T", "S8").get(s8);
    EXPECT_EQ(-128, s8);
    Uint16 u16 = 0;
    f.defaultOf("T", "U16").get(u16);
    EXPECT_EQ(127, u16);
    Sint16 s16 = 0;
    f.defaultOf("T", "S16").get(s16);
    EXPECT_EQ(-10, s16);
    Uint32 u32 = 0;
    f.defaultOf("T", "U32").get(u32);
    EXPECT_EQ(4294967295u, u32);
    Sint32 s32 = 0;
    f.defaultOf("T", "S32").get(s32);
    EXPECT_EQ(-2147483647 - 1, s32);
    Uint64 u64 = 0;
    f.defaultOf("T", "U64").get(u64);
    EXPECT_EQ(18446744073709551615ULL, u64);
    Sint64 s64 = 0;
    f.defaultOf("T", "S64").get(s64);
    EXPECT_EQ(INT64_MIN, s64);
    Real32 r32 = 0;
    f.defaultOf("T", "R32").get(r32);
    EXPECT_FLOAT_EQ(1.5f, r32);
    Real64 r64 = 0;
    f.defaultOf("T", "R64").get(r64);
    EXPECT_DOUBLE_EQ(-2.0, r64);

    CIMValue n = f.defaultOf("T", "N");
    EXPECT_TRUE(n.isNull());
    EXPECT_EQ(CIMTYPE_STRING, n.getType());
    EXPECT_TRUE(f.defaultOf("T", "Missing").isNull());

    Array<Uint16> list;
    f.defaultOf("T", "List").get(list);
    ASSERT_EQ(3u, list.size());
    EXPECT_EQ(3, list[2]);
    CIMClass t = f.cls("T");
    EXPECT_EQ(2u, t.getProperty(t.findProperty(CIMName("Fixed"))).getArraySize());
}

TEST(MofCompiler, BadValuesAreRejectedWithTheirLine)
{
    struct Case
    {
        const char* declaration;
        const char* expected;
    } cases[] = {
        {"uint8 X = 256;", "t.mof:2: value out of range for uint8"},
        {"uint32 X = -1;", "t.mof:2: value out of range for uint32"},
        {"sint8 X = 128;", "t.mof:2: value out of range for sint8"},
        {"uint32 X = \"7\";", "t.mof:2: expected a uint32 value"},
        {"string X = 7;", "t.mof:2: expected a string value"},
        {"boolean X = 1;", "t.mof:2: expected a boolean value"},
        {"datetime X = \"yesterday\";", "t.mof:2: expected a datetime value"},
        {"char16 X = \"two\";", "t.mof:2: expected a char16 value"},
        {"string X[] = \"not a list\";", "t.mof:2: expected an array of string value"},
        {"string X = {\"a\"};", "t.mof:2: expected a string value"},
        {"uint8 X[2] = {1, 2, 3};", "t.mof:2: expected at most 2 array elements"},
        {"uint8 X[] = {1, null};", "t.mof:2: expected a value, found null"},
    };
    for (const Case& c : cases)
    {
        Fixture f;
        std::string error = errorOf(f, std::string("class T {\n") + c.declaration + "\n};");
        EXPECT_EQ(0u, error.rfind(c.expected, 0)) << c.declaration << " -> " << error;
        EXPECT_FALSE(f.repo.classExists(ns, CIMName("T")));
    }
}

TEST(MofCompiler, SemanticErrorsNameTheDeclaration)
{
    struct Case
    {
        const char* mof;
        const char* expected;
    } cases[] = {
        {"class A {};\n\nclass B : Nowhere {};",
         "t.mof:3: superclass Nowhere of class B is not defined"},
        {"class A {};\nclass a {};", "t.mof:2: class a is already defined"},
        {"class A {\n string X;\n uint8 x;\n};", "t.mof:3: x is defined twice in class A"},
        {"[Association] class A {\n Missing REF R;\n};",
         "t.mof:2: class Missing referenced by A.R"},
        {"class A {\n [Key, Key] string X;\n};", "t.mof:2: qualifier Key is given twice"},
        {"Qualifier Key : boolean = false, Scope(property);\n[Key] class A {};",
         "t.mof:2: qualifier Key is not allowed on class A"},
        {"Qualifier MaxLen : uint32, Scope(property);\nclass A {\n [MaxLen(\"x\")] string S;\n};",
         "t.mof:3: expected a uint32 value"},
        {"class A { string X; };\ninstance of A {\n Y = 1;\n};",
         "t.mof:3: class A has no property Y"},
        {"class A { uint8 X; };\ninstance of A {\n X = \"1\";\n};",
         "t.mof:3: expected a uint8 value"},
        {"class A { string X; };\ninstance of A { X = \"a\"; x = \"b\"; };",
         "t.mof:2: property x is set twice"},
        {"\ninstance of Nothing {};", "t.mof:2: class Nothing of the instance is not defined"},
        {"[Association] class A { A REF R; };\ninstance of A {\n R = $nope;\n};",
         "t.mof:3: expected a defined alias"},
        {"[Association] class A { A REF R; };\ninstance of A {\n R = \"not a path\";\n};",
         "t.mof:3: expected an object path"},
        {"class B { [Key] string K; };\nclass C : B {\n [Key(false)] string K;\n};",
         "t.mof:2: qualifier Key of property C.K cannot be overridden"},
        {"class B { string K; };\nclass C : B {\n uint8 K;\n};",
         "t.mof:2: property C.K changes the type"},
        {"#pragma namespace (\"bad//name\")", "t.mof:1: expected a valid namespace name"},
    };
    for (const Case& c : cases)
    {
        Fixture f;
        std::string error = errorOf(f, c.mof);
        EXPECT_EQ(0u, error.rfind(c.expected, 0)) << c.mof << "\n -> " << error;
    }
}

TEST(MofCompiler, QualifiersTakeTypeAndFlavorFromDeclarationOrStandard)
{
    Fixture f;
    f.compile(R"(
Qualifier Tag : sint32 = 3, Scope(any), Flavor(Restricted);
[Description("d"), Abstract, Tag]
class A {
    [Key, MaxLen(16), ValueMap("only"), Vendor(12), Marks{1.5}, Gone: Restricted]
    string K;
};)");
    CIMClass a = f.cls("A");
    CIMQualifier desc = a.getQualifier(a.findQualifier(CIMName("Description")));
    EXPECT_EQ(CIMTYPE_STRING, desc.getType());
    EXPECT_TRUE(desc.getFlavor().hasFlavor(CIMFlavor::TRANSLATABLE));
    EXPECT_TRUE(desc.getFlavor().hasFlavor(CIMFlavor::TOSUBCLASS));
    CIMQualifier abstract = a.getQualifier(a.findQualifier(CIMName("Abstract")));
    EXPECT_FALSE(abstract.getFlavor().hasFlavor(CIMFlavor::TOSUBCLASS));
    EXPECT_TRUE(a.isAbstract());
    // A declared non-boolean qualifier written without a value takes the declared default.
    CIMQualifier tag = a.getQualifier(a.findQualifier(CIMName("Tag")));
    Sint32 tagValue = 0;
    tag.getValue().get(tagValue);
    EXPECT_EQ(3, tagValue);
    EXPECT_TRUE(tag.getFlavor().hasFlavor(CIMFlavor::RESTRICTED));

    CIMProperty k = a.getProperty(a.findProperty(CIMName("K")));
    CIMQualifier key = k.getQualifier(k.findQualifier(CIMName("Key")));
    EXPECT_EQ(CIMTYPE_BOOLEAN, key.getType());
    EXPECT_FALSE(key.getFlavor().hasFlavor(CIMFlavor::ENABLEOVERRIDE));
    EXPECT_EQ(CIMTYPE_UINT32, k.getQualifier(k.findQualifier(CIMName("MaxLen"))).getType());
    CIMQualifier valueMap = k.getQualifier(k.findQualifier(CIMName("ValueMap")));
    EXPECT_TRUE(valueMap.isArray()); // a lone value becomes a one-element array
    EXPECT_EQ(1u, valueMap.getValue().getArraySize());
    EXPECT_EQ(CIMTYPE_UINT64, k.getQualifier(k.findQualifier(CIMName("Vendor"))).getType());
    CIMQualifier marks = k.getQualifier(k.findQualifier(CIMName("Marks")));
    EXPECT_EQ(CIMTYPE_REAL64, marks.getType());
    EXPECT_TRUE(marks.isArray());
    EXPECT_TRUE(k.getQualifier(k.findQualifier(CIMName("Gone")))
                    .getFlavor()
                    .hasFlavor(CIMFlavor::RESTRICTED));

    CIMQualifierDecl decl = f.repo.getQualifierDecl(ns, CIMName("tag"));
    EXPECT_TRUE(decl.getScope().hasScope(CIMScope::ANY));
    EXPECT_EQ(1u, f.compiler.qualifierDeclCount());
}

TEST(MofCompiler, MethodsAndReferences)
{
    Fixture f;
    f.compile(R"(
class CIM_E {};
[Association] class Link {
    [Key] CIM_E REF Left;
    [Key] CIM_E REF Right;
    uint32 Go([IN] string Names[], [IN, OUT] CIM_E REF Target, [OUT] uint16 Codes[4]);
};)");
    CIMClass link = f.cls("Link");
    EXPECT_TRUE(link.isAssociation());
    CIMProperty left = link.getProperty(link.findProperty(CIMName("Left")));
    EXPECT_EQ(CIMTYPE_REFERENCE, left.getType());
    EXPECT_EQ("CIM_E", str(left.getReferenceClassName().getString()));
    CIMMethod go = link.getMethod(link.findMethod(CIMName("Go")));
    EXPECT_EQ(CIMTYPE_UINT32, go.getType());
    ASSERT_EQ(3u, go.getParameterCount());
    EXPECT_TRUE(go.getParameter(0).isArray());
    EXPECT_EQ(CIMTYPE_STRING, go.getParameter(0).getType());
    EXPECT_EQ(CIMTYPE_REFERENCE, go.getParameter(1).getType());
    EXPECT_EQ("CIM_E", str(go.getParameter(1).getReferenceClassName().getString()));
    EXPECT_EQ(2u, go.getParameter(1).getQualifierCount());
    EXPECT_EQ(4u, go.getParameter(2).getArraySize());
}

TEST(MofCompiler, InstancesAreTypedFromTheirClass)
{
    Fixture f;
    f.compile(R"(
class Module { [Key] string Name; string Vendor = "ORV"; uint16 Types[]; string Note; };
[Association] class Uses { [Key] Module REF Owner; [Key] Module REF Used; };
instance of Module as $M { Name = "one"; Types = {2, 5}; };
instance of Module as $N { Name = "two"; Vendor = "X"; Note = null; };
instance of Uses { Owner = $M; Used = "//h/root/test:Module.Name=\"two\""; };
instance of Module { Vendor = "keyless"; };
)");
    const auto& out = f.compiler.instances();
    ASSERT_EQ(4u, out.size());
    EXPECT_EQ("t.mof", out[0].file);
    EXPECT_EQ(4, out[0].line);
    EXPECT_TRUE(out[0].nameSpace.equal(ns));

    CIMInstance one = out[0].instance;
    Array<Uint16> types;
    one.getProperty(one.findProperty(CIMName("Types"))).getValue().get(types);
    ASSERT_EQ(2u, types.size());
    EXPECT_EQ(5, types[1]);
    // Left-out properties take the class default; those without one stay absent.
    String vendor;
    one.getProperty(one.findProperty(CIMName("Vendor"))).getValue().get(vendor);
    EXPECT_EQ("ORV", str(vendor));
    EXPECT_EQ(PEG_NOT_FOUND, one.findProperty(CIMName("Note")));
    EXPECT_EQ("root/test:Module.Name=\"one\"", str(one.getPath().toString()));

    CIMInstance two = out[1].instance;
    two.getProperty(two.findProperty(CIMName("Vendor"))).getValue().get(vendor);
    EXPECT_EQ("X", str(vendor));
    EXPECT_TRUE(two.getProperty(two.findProperty(CIMName("Note"))).getValue().isNull());

    CIMInstance uses = out[2].instance;
    CIMObjectPath owner, used;
    uses.getProperty(uses.findProperty(CIMName("Owner"))).getValue().get(owner);
    uses.getProperty(uses.findProperty(CIMName("Used"))).getValue().get(used);
    EXPECT_TRUE(owner.identical(one.getPath()));
    EXPECT_EQ("h", str(used.getHost()));
    EXPECT_EQ(2u, uses.getPath().getKeyBindings().size());

    EXPECT_EQ(0u, out[3].instance.getPath().getKeyBindings().size());
    EXPECT_EQ("Module", str(out[3].instance.getPath().getClassName().getString()));
}

TEST(MofCompiler, IncludesAreRelativeToTheIncludingFile)
{
    TempDir dir;
    std::system(("mkdir -p " + dir.path() + "/sub").c_str());
    dir.write("sub/base.mof", "class Base { string A; };\n#pragma include (\"leaf.mof\")\n");
    dir.write("sub/leaf.mof", "class Leaf : Base {};\n");
    std::string top = dir.write("top.mof", "#pragma locale (\"en_US\")\n"
                                           "#pragma include (\"sub/base.mof\")\n"
                                           "class Top : Leaf {};\n");
    Fixture f;
    f.compiler.compileFile(top, ns);
    EXPECT_TRUE(f.repo.isSubClassOf(ns, CIMName("Top"), CIMName("Base")));
    EXPECT_EQ(3u, f.compiler.classCount());

    // Errors inside an included file name that file.
    dir.write("sub/broken.mof", "class Broken {\n string X\n};\n");
    std::string bad = dir.write("bad.mof", "#pragma include (\"sub/broken.mof\")\n");
    Fixture g;
    try
    {
        g.compiler.compileFile(bad, ns);
        ADD_FAILURE() << "no error";
    }
    catch (const MofError& e)
    {
        EXPECT_EQ(dir.path() + "/sub/broken.mof", e.file());
        EXPECT_EQ(2, e.line());
    }
}

TEST(MofCompiler, MissingAndRecursiveIncludesAreErrors)
{
    TempDir dir;
    std::string missing = dir.write("m.mof", "class A {};\n\n#pragma include (\"nothere.mof\")\n");
    std::string self = dir.write("self.mof", "#pragma include (\"self.mof\")\n");
    Fixture f;
    try
    {
        f.compiler.compileFile(missing, ns);
        ADD_FAILURE() << "no error";
    }
    catch (const MofError& e)
    {
        EXPECT_EQ(missing, e.file());
        EXPECT_EQ(3, e.line());
        EXPECT_NE(std::string::npos, e.message().find("nothere.mof"));
    }
    EXPECT_TRUE(f.repo.classExists(ns, CIMName("A"))); // what came before stays
    EXPECT_THROW(f.compiler.compileFile(self, ns), MofError);
    EXPECT_THROW(f.compiler.compileFile(dir.path() + "/absent.mof", ns), MofError);
}

TEST(MofCompiler, NamespacePragmaLastsUntilTheEndOfItsFile)
{
    TempDir dir;
    dir.write("other.mof", "#pragma namespace (\"root/other\")\nclass InOther {};\n");
    std::string top = dir.write("top.mof", "#pragma include (\"other.mof\")\nclass InDefault {};\n"
                                           "#pragma namespace (\"root/third\")\nclass InThird {};\n"
                                           "instance of InThird {};\n");
    Fixture f;
    f.compiler.compileFile(top, ns);
    EXPECT_TRUE(f.repo.classExists(CIMNamespaceName("root/other"), CIMName("InOther")));
    EXPECT_TRUE(f.repo.classExists(ns, CIMName("InDefault")));
    EXPECT_TRUE(f.repo.classExists(CIMNamespaceName("root/third"), CIMName("InThird")));
    EXPECT_FALSE(f.repo.classExists(ns, CIMName("InThird")));
    ASSERT_EQ(1u, f.compiler.instances().size());
    EXPECT_EQ("root/third", str(f.compiler.instances()[0].nameSpace.getString()));
}
