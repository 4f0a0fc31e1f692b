// CIMObjectPath text form, parsing, identical() and CIMKeyBinding.

#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

PEGASUS_USING_PEGASUS;

namespace
{

Array<CIMKeyBinding> keys(std::initializer_list<CIMKeyBinding> list)
{
    Array<CIMKeyBinding> result;
    for (const CIMKeyBinding& k : list)
    {
        result.append(k);
    }
    return result;
}

std::string text(const CIMObjectPath& path)
{
    return static_cast<const char*>(path.toString().getCString());
}

} // namespace

TEST(ObjectPathTest, ToStringSortsKeysAndQuotes)
{
    CIMObjectPath path("myhost", CIMNamespaceName("root/orv"), CIMName("ORV_Port"),
                       keys({CIMKeyBinding("SystemName", "S\"1\\x", CIMKeyBinding::STRING),
                             CIMKeyBinding("id", "42", CIMKeyBinding::NUMERIC),
                             CIMKeyBinding("Enabled", "TRUE", CIMKeyBinding::BOOLEAN),
                             CIMKeyBinding("alpha", "v", CIMKeyBinding::STRING)}));
    EXPECT_EQ(text(path), "//myhost/root/orv:ORV_Port.alpha=\"v\",Enabled=TRUE,id=42,"
                          "SystemName=\"S\\\"1\\\\x\"");

    // No host part, no namespace part, no keys.
    EXPECT_EQ(text(CIMObjectPath("", CIMNamespaceName("root/orv"), CIMName("C"))), "root/orv:C");
    EXPECT_EQ(text(CIMObjectPath("", CIMNamespaceName(), CIMName("C"))), "C");
    // A host is followed by the namespace part even when there is no namespace.
    EXPECT_EQ(text(CIMObjectPath("h", CIMNamespaceName(), CIMName("C"))), "//h/:C");
    EXPECT_EQ(text(CIMObjectPath()), "");
}

TEST(ObjectPathTest, ParseRoundTrips)
{
    const char* cases[] = {
        "C",
        "root/orv:C",
        "//host/root/orv:C.k=\"v\"",
        "//host:5989/root/orv:C.a=1,b=-2,c=\"x,y=z\"",
        "//[fe80::1]:5988/root:C.b=FALSE",
        "//host/:C.k=1",
        "C.k=\"quote \\\" and backslash \\\\ inside\"",
        "C.k=\"\"",
        "C.k=\"a:b.c\"",
        "C.r=\"//h/root/orv:Inner.id=\\\"7\\\"\",s=\"t\"",
        "C.x=1.5e3",
        "C.x=0x1F",
    };
    for (const char* c : cases)
    {
        CIMObjectPath path(c);
        EXPECT_EQ(text(path), c);
        EXPECT_TRUE(CIMObjectPath(path.toString()).identical(path)) << c;
    }
}

TEST(ObjectPathTest, AssignFromTextParses)
{
    CIMObjectPath path;
    path = String("//h/:C.k=1");
    EXPECT_EQ(path.getHost(), "h");
    EXPECT_TRUE(path.getNameSpace().isNull());
    EXPECT_EQ(path.getKeyBindings().size(), 1u);
    path = "root/orv:D";
    EXPECT_EQ(text(path), "root/orv:D");
    EXPECT_THROW(path = "root/orv:", MalformedObjectNameException);
    EXPECT_EQ(text(path), "root/orv:D");
    // An empty namespace part is only allowed after a host.
    EXPECT_THROW(CIMObjectPath(":C"), MalformedObjectNameException);
}

TEST(ObjectPathTest, ParseFindsPartsAndTypes)
{
    CIMObjectPath path("//Host.example.com/root/orv:ORV_Vol.Ref=\"root/orv:Other.id=1\","
                       "Flag=true,Name=\"n\",Num=+12");
    EXPECT_EQ(path.getHost(), "Host.example.com");
    EXPECT_EQ(path.getNameSpace().getString(), "root/orv");
    EXPECT_EQ(path.getClassName().getString(), "ORV_Vol");
    const Array<CIMKeyBinding>& k = path.getKeyBindings();
    ASSERT_EQ(k.size(), 4u);
    EXPECT_EQ(k[0].getType(), CIMKeyBinding::REFERENCE);
    EXPECT_EQ(k[0].getValue(), "root/orv:Other.id=1");
    EXPECT_EQ(k[1].getType(), CIMKeyBinding::BOOLEAN);
    EXPECT_EQ(k[2].getType(), CIMKeyBinding::STRING);
    EXPECT_EQ(k[3].getType(), CIMKeyBinding::NUMERIC);

    // A quoted value that is just a word stays a string.
    EXPECT_EQ(CIMObjectPath("C.k=\"Word\"").getKeyBindings()[0].getType(), CIMKeyBinding::STRING);
    // The keyless singleton form.
    CIMObjectPath singleton("root/orv:C=@");
    EXPECT_EQ(singleton.getClassName().getString(), "C");
    EXPECT_EQ(singleton.getKeyBindings().size(), 0u);
}

TEST(ObjectPathTest, ClassNameAndDotIsTheKeylessPath)
{
    // Clients write "Class." for a keyless path; OpenPegasus reads it as the
    // class alone, with or without host and namespace.
    for (const char* c : {"ORV_X.", "root/orv:ORV_X.", "//h/root/orv:ORV_X."})
    {
        CIMObjectPath path(c);
        EXPECT_EQ(path.getClassName().getString(), "ORV_X") << c;
        EXPECT_EQ(path.getKeyBindings().size(), 0u) << c;
        const String withoutDot = String(c).subString(0, String(c).size() - 1);
        EXPECT_TRUE(path.identical(CIMObjectPath(withoutDot))) << c;
    }
    // Only a trailing dot: a dot followed by anything but a key stays malformed.
    EXPECT_THROW(CIMObjectPath("ORV_X.,"), MalformedObjectNameException);
    EXPECT_THROW(CIMObjectPath("ORV_X.."), MalformedObjectNameException);
}

TEST(ObjectPathTest, MalformedTextIsRejectedAndLeavesPathUnchanged)
{
    const char* cases[] = {
        "",
        "C.k",
        "C.k=",
        "C.k=\"unterminated",
        "C.k=\"v\"garbage",
        "C.k=\"v\",",
        "C.k=unquoted",
        "C.k=1,k=2",
        "C.1k=1",
        "C.=1",
        "Bad-Class",
        "//host",
        "//bad host/root:C",
        "//host:99999/root:C",
        "root//orv:C",
        "root/orv:",
        "C=@x",
        "C.k=\"v\\",
        "C.k='ab'",
    };
    CIMObjectPath path("root/orv:Keep.k=1");
    for (const char* c : cases)
    {
        EXPECT_THROW(CIMObjectPath p(c), MalformedObjectNameException) << c;
        EXPECT_THROW(path.set(c), MalformedObjectNameException) << c;
        EXPECT_EQ(text(path), "root/orv:Keep.k=1") << c;
    }
    EXPECT_THROW(path.setHost("a b"), MalformedObjectNameException);
}

TEST(ObjectPathTest, IdenticalRules)
{
    struct Case
    {
        const char* a;
        const char* b;
        bool identical;
    };
    const Case cases[] = {
        {"//HOST/root/orv:C.k=\"v\"", "//host/ROOT/ORV:c.K=\"v\"", true},
        {"//h1/root/orv:C.k=\"v\"", "//h2/root/orv:C.k=\"v\"", false},
        {"root/orv:C.k=\"v\"", "//h/root/orv:C.k=\"v\"", false},
        {"C.a=1,b=\"x\"", "C.b=\"x\",a=1", true},
        {"C.k=\"v\"", "C.k=\"V\"", false},
        {"C.k=10", "C.k=+10", true},
        {"C.k=10", "C.k=0xA", true},
        {"C.k=10", "C.k=11", false},
        {"C.k=1.5", "C.k=15e-1", true},
        // Reals beyond the integers' range compare as reals.
        {"C.k=1e22", "C.k=10000000000000000000000.0", true},
        {"C.k=-1E+22", "C.k=-1e22", true},
        {"C.k=1e22", "C.k=1e21", false},
        {"C.k=true", "C.k=TRUE", true},
        {"C.k=true", "C.k=\"true\"", false},
        {"C.k=1", "C.k=1,j=2", false},
        {"C.k=1", "D.k=1", false},
        {"root/a:C.k=1", "root/b:C.k=1", false},
        // References compare as paths: case of names, key order, numbers.
        {"C.r=\"//h/root/orv:In.a=1,b=\\\"s\\\"\"", "C.r=\"//H/ROOT/orv:in.B=\\\"s\\\",A=01\"",
         true},
        {"C.r=\"root/orv:In.a=\\\"s\\\"\"", "C.r=\"root/orv:In.a=\\\"S\\\"\"", false},
    };
    for (const Case& c : cases)
    {
        CIMObjectPath a(c.a);
        CIMObjectPath b(c.b);
        EXPECT_EQ(a.identical(b), c.identical) << c.a << " vs " << c.b;
        EXPECT_EQ(b.identical(a), c.identical) << c.b << " vs " << c.a;
        EXPECT_EQ(a == b, c.identical);
        if (c.identical)
        {
            EXPECT_EQ(a.makeHashCode(), b.makeHashCode()) << c.a << " vs " << c.b;
        }
    }
}

TEST(ObjectPathTest, CopiesAreIndependentAndClearResets)
{
    CIMObjectPath a("//h/root/orv:C.k=1");
    CIMObjectPath b = a;
    b.setClassName(CIMName("D"));
    b.setKeyBindings(Array<CIMKeyBinding>());
    EXPECT_EQ(text(a), "//h/root/orv:C.k=1");
    b.clear();
    EXPECT_EQ(text(b), "");
    EXPECT_TRUE(b.getNameSpace().isNull());
}

TEST(KeyBindingTest, FromValueChoosesTypeAndText)
{
    struct Case
    {
        CIMValue value;
        CIMKeyBinding::Type type;
        const char* text;
    };
    const Case cases[] = {
        {CIMValue(true), CIMKeyBinding::BOOLEAN, "TRUE"},
        {CIMValue(Uint16(7)), CIMKeyBinding::NUMERIC, "7"},
        {CIMValue(Sint64(-9)), CIMKeyBinding::NUMERIC, "-9"},
        {CIMValue(String("s")), CIMKeyBinding::STRING, "s"},
        {CIMValue(Char16('c')), CIMKeyBinding::STRING, "c"},
        {CIMValue(CIMObjectPath("root/orv:C.k=1")), CIMKeyBinding::REFERENCE, "root/orv:C.k=1"},
    };
    for (const Case& c : cases)
    {
        CIMKeyBinding k(CIMName("K"), c.value);
        EXPECT_EQ(k.getType(), c.type) << c.text;
        EXPECT_EQ(k.getValue(), c.text);
        EXPECT_TRUE(k.equal(c.value)) << c.text;
    }
    EXPECT_THROW(CIMKeyBinding(CIMName("K"), CIMValue(Array<Uint32>())), TypeMismatchException);

    CIMKeyBinding numeric(CIMName("K"), "010", CIMKeyBinding::NUMERIC);
    EXPECT_TRUE(numeric.equal(CIMValue(Uint32(10))));
    EXPECT_FALSE(numeric.equal(CIMValue(String("010"))));
    EXPECT_FALSE(numeric.equal(CIMValue(Uint32(11))));
}
