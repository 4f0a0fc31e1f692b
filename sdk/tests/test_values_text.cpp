// String, Array, CIMName and CIMNamespaceName.

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/String.h>

#include <gtest/gtest.h>

#include <cstring>

PEGASUS_USING_PEGASUS;

TEST(StringTest, Utf8RoundTripCountsUtf16Units)
{
    struct Case
    {
        const char* utf8;
        Uint32 units;
    };
    const Case cases[] = {
        {"", 0},
        {"plain", 5},
        {"caf\xC3\xA9", 4},        // 2-byte sequence
        {"\xE2\x82\xAC 5", 3},     // 3-byte sequence
        {"x\xF0\x9F\x98\x80y", 4}, // outside the BMP: a surrogate pair
    };
    for (const Case& c : cases)
    {
        String s(c.utf8);
        EXPECT_EQ(s.size(), c.units) << c.utf8;
        EXPECT_STREQ(static_cast<const char*>(s.getCString()), c.utf8);
    }
    String euro("\xE2\x82\xAC");
    EXPECT_EQ(Uint16(euro[0]), 0x20AC);
}

TEST(StringTest, InvalidUtf8IsRejected)
{
    const char* cases[] = {
        "\xC3",             // truncated
        "\xC0\xAF",         // overlong '/'
        "\xED\xA0\x80",     // encoded surrogate
        "a\x80",            // stray continuation byte
        "\xF8\x88\x80\x80", // 5-byte lead
    };
    for (const char* c : cases)
    {
        EXPECT_THROW(String s(c), Exception) << c;
    }
}

TEST(StringTest, FindSubStringAndRemove)
{
    String s("root/orv:Class.Key=\"a\"");
    EXPECT_EQ(s.find(':'), 8u);
    EXPECT_EQ(s.find(12, Char16('a')), 20u);
    EXPECT_EQ(s.find(String("Class")), 9u);
    EXPECT_EQ(s.find(String("nope")), PEG_NOT_FOUND);
    EXPECT_EQ(s.find(String("")), 0u);
    EXPECT_EQ(s.reverseFind('"'), s.size() - 1);
    EXPECT_EQ(String("abc").find(String("abcd")), PEG_NOT_FOUND);

    EXPECT_EQ(s.subString(0, 4), "root");
    EXPECT_EQ(s.subString(9), "Class.Key=\"a\"");
    EXPECT_EQ(s.subString(100), "");
    EXPECT_EQ(s.subString(20, 100), "a\"");

    String r("abcdef");
    r.remove(1, 2);
    EXPECT_EQ(r, "adef");
    r.remove(2);
    EXPECT_EQ(r, "ad");
    EXPECT_THROW(r.remove(1, 5), IndexOutOfBoundsException);
    EXPECT_THROW(r.remove(3), IndexOutOfBoundsException);
    r.remove(0);
    EXPECT_EQ(r.size(), 0u);
    EXPECT_EQ(r.getChar16Data()[0], 0);
}

TEST(StringTest, IndexingIsChecked)
{
    String s("ab");
    EXPECT_EQ(s[1], 'b');
    s[0] = Char16('x');
    EXPECT_EQ(s, "xb");
    EXPECT_THROW(s[2], IndexOutOfBoundsException);
    const String& c = s;
    EXPECT_THROW(c[2], IndexOutOfBoundsException);
}

TEST(StringTest, ComparisonsAndCase)
{
    EXPECT_TRUE(String::equalNoCase("ORV_Volume", "orv_VOLUME"));
    EXPECT_FALSE(String::equalNoCase("abc", "abcd"));
    EXPECT_FALSE(String::equal("abc", "ABC"));
    EXPECT_LT(String::compare("abc", "abd"), 0);
    EXPECT_GT(String::compare("abcd", "abc"), 0);
    EXPECT_EQ(String::compare("abcx", "abcy", 3), 0);
    EXPECT_EQ(String::compareNoCase("ABC", "abc"), 0);
    EXPECT_LT(String::compareNoCase("abc", "ABD"), 0);
    EXPECT_TRUE(String("a") < String("b"));

    String u("MiXeD 1\xC3\xA9");
    u.toLower();
    EXPECT_EQ(u, "mixed 1\xC3\xA9");
    u.toUpper();
    EXPECT_EQ(u, "MIXED 1\xC3\xA9");
}

TEST(StringTest, AppendAndConcatenate)
{
    String s("a");
    s.append(s);
    s += 'c';
    s += Char16('d');
    s.append("efg", 2);
    EXPECT_EQ(s, "aacdef");
    EXPECT_EQ(String("x") + "y" + String("z"), "xyz");
    EXPECT_EQ("pre" + String("fix"), "prefix");
    String copy = s;
    copy.append("!");
    EXPECT_EQ(s, "aacdef");
    EXPECT_EQ(String::EMPTY.size(), 0u);

    String f("n=");
    f.appendPrintf("%u %s %05.1f", 7u, "\xc3\xa9", 2.25);
    EXPECT_EQ(f, "n=7 \xc3\xa9 002.2");
    EXPECT_EQ(f.size(), 11u); // the UTF-8 'e acute' is one unit
    f.appendPrintf("%s", "");
    EXPECT_EQ(f.size(), 11u);
}

TEST(ArrayTest, BoundsAreChecked)
{
    Array<Uint32> a;
    EXPECT_THROW(a[0], IndexOutOfBoundsException);
    a.append(1);
    EXPECT_THROW(a[1], IndexOutOfBoundsException);
    EXPECT_THROW(a.remove(1), IndexOutOfBoundsException);
    EXPECT_THROW(a.remove(0, 2), IndexOutOfBoundsException);
    EXPECT_THROW(a.insert(2, 5u), IndexOutOfBoundsException);
    const Array<Uint32>& c = a;
    EXPECT_THROW(c[7], IndexOutOfBoundsException);
}

TEST(ArrayTest, CopiesAreIndependent)
{
    Array<String> a;
    a.append("one");
    Array<String> b = a;
    b[0] = "changed";
    b.append("two");
    EXPECT_EQ(a.size(), 1u);
    EXPECT_EQ(a[0], "one");
    EXPECT_EQ(b[0], "changed");

    Array<String> c = a;
    a.remove(0);
    EXPECT_EQ(c.size(), 1u);
    EXPECT_EQ(c[0], "one");
}

TEST(ArrayTest, InsertPrependRemoveKeepOrder)
{
    Array<Sint32> a;
    for (Sint32 i = 0; i < 100; i++)
    {
        a.append(i);
    }
    a.prepend(-1);
    a.insert(50, 1000);
    const Sint32 more[] = {7, 8, 9};
    a.insert(2, more, 3);
    a.remove(0, 2);
    ASSERT_EQ(a.size(), 103u);
    EXPECT_EQ(a[0], 7);
    EXPECT_EQ(a[3], 1);
    EXPECT_EQ(a[51], 1000);
    EXPECT_EQ(a[102], 99);

    // Appending an element of the array itself while it grows.
    Array<String> s;
    s.append("x");
    for (int i = 0; i < 20; i++)
    {
        s.append(s[0]);
    }
    s.appendArray(s);
    EXPECT_EQ(s.size(), 42u);
    EXPECT_EQ(s[41], "x");
}

TEST(ArrayTest, BooleanDataIsContiguous)
{
    Array<Boolean> a(3, true);
    a[1] = false;
    const Boolean* p = a.getData();
    EXPECT_TRUE(p[0]);
    EXPECT_FALSE(p[1]);
    EXPECT_TRUE(p[2]);
    a.grow(2, false);
    EXPECT_EQ(a.size(), 5u);
    Array<Boolean> b;
    b.swap(a);
    EXPECT_EQ(a.size(), 0u);
    EXPECT_EQ(b.size(), 5u);
    b.clear();
    EXPECT_EQ(b.size(), 0u);
}

TEST(CIMNameTest, Legality)
{
    struct Case
    {
        const char* name;
        bool legal;
    };
    const Case cases[] = {
        {"ORV_VolumeStatisticalData", true},
        {"_x9", true},
        {"\xC3\xA9t\xC3\xA9", true},
        {"", false},
        {"9abc", false},
        {"a-b", false},
        {"a b", false},
        {"a.b", false},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(CIMName::legal(c.name), c.legal) << c.name;
        if (c.legal)
        {
            EXPECT_EQ(CIMName(c.name).getString(), c.name);
        }
        else
        {
            EXPECT_THROW(CIMName n(c.name), InvalidNameException) << c.name;
        }
    }
}

TEST(CIMNameTest, NullAndCaseInsensitiveEquality)
{
    CIMName n;
    EXPECT_TRUE(n.isNull());
    n = "InstanceID";
    EXPECT_FALSE(n.isNull());
    EXPECT_TRUE(n == CIMName("instanceid"));
    EXPECT_TRUE(n == "INSTANCEID");
    EXPECT_TRUE(n != "InstanceIDs");
    EXPECT_THROW(n = "bad name", InvalidNameException);
    EXPECT_EQ(n.getString(), "InstanceID");
    n.clear();
    EXPECT_TRUE(n.isNull());
}

TEST(CIMNamespaceNameTest, Legality)
{
    struct Case
    {
        const char* name;
        const char* stored; // nullptr when illegal
    };
    const Case cases[] = {
        {"root/orv", "root/orv"},
        {"/root/orv", "root/orv"},
        {"root", "root"},
        {"root/PG_InterOp", "root/PG_InterOp"},
        {"", nullptr},
        {"/", nullptr},
        {"root//orv", nullptr},
        {"root/orv/", nullptr},
        {"root/1x", nullptr},
        {"root:orv", nullptr},
    };
    for (const Case& c : cases)
    {
        if (c.stored)
        {
            EXPECT_EQ(CIMNamespaceName(c.name).getString(), c.stored) << c.name;
        }
        else
        {
            EXPECT_THROW(CIMNamespaceName n(c.name), InvalidNamespaceNameException) << c.name;
        }
    }
    EXPECT_TRUE(CIMNamespaceName("ROOT/Orv") == CIMNamespaceName("root/orv"));
    EXPECT_TRUE(CIMNamespaceName().isNull());
}
