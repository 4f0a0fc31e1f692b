// CIMValue, CIMParamValue and CIMPropertyList.

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

#include <type_traits>

PEGASUS_USING_PEGASUS;

namespace
{

// Checks that a value built from x reports the type, gives x back, and
// refuses every other scalar and array target.
template <class T> void expectRoundTrip(const T& x, CIMType type, bool isArray)
{
    CIMValue v(x);
    EXPECT_EQ(v.getType(), type) << cimTypeToString(type);
    EXPECT_EQ(v.isArray(), isArray);
    EXPECT_FALSE(v.isNull());
    T back;
    v.get(back);
    EXPECT_TRUE(CIMValue(back) == v) << cimTypeToString(type);

    Uint32 u32 = 0;
    Array<Uint32> au32;
    String s;
    Array<String> as;
    if (type != CIMTYPE_UINT32 || isArray)
    {
        EXPECT_THROW(v.get(u32), TypeMismatchException) << cimTypeToString(type);
    }
    if (type != CIMTYPE_UINT32 || !isArray)
    {
        EXPECT_THROW(v.get(au32), TypeMismatchException) << cimTypeToString(type);
    }
    if (type != CIMTYPE_STRING || isArray)
    {
        EXPECT_THROW(v.get(s), TypeMismatchException) << cimTypeToString(type);
    }
    if (type != CIMTYPE_STRING || !isArray)
    {
        EXPECT_THROW(v.get(as), TypeMismatchException) << cimTypeToString(type);
    }
}

template <class T> Array<T> arrayOf(const T& a, const T& b)
{
    Array<T> r;
    r.append(a);
    r.append(b);
    return r;
}

CIMInstance makeInstance(const char* id)
{
    CIMInstance inst(CIMName("ORV_Thing"));
    inst.addProperty(CIMProperty(CIMName("InstanceID"), CIMValue(String(id))));
    return inst;
}

} // namespace

TEST(CIMValueTest, EveryTypeRoundTripsAndRejectsOtherTargets)
{
    expectRoundTrip(Boolean(true), CIMTYPE_BOOLEAN, false);
    expectRoundTrip(Uint8(200), CIMTYPE_UINT8, false);
    expectRoundTrip(Sint8(-100), CIMTYPE_SINT8, false);
    expectRoundTrip(Uint16(60000), CIMTYPE_UINT16, false);
    expectRoundTrip(Sint16(-30000), CIMTYPE_SINT16, false);
    expectRoundTrip(Uint32(4000000000u), CIMTYPE_UINT32, false);
    expectRoundTrip(Sint32(-2000000000), CIMTYPE_SINT32, false);
    expectRoundTrip(Uint64(18446744073709551615ULL), CIMTYPE_UINT64, false);
    expectRoundTrip(Sint64(-9000000000LL), CIMTYPE_SINT64, false);
    expectRoundTrip(Real32(1.5f), CIMTYPE_REAL32, false);
    expectRoundTrip(Real64(2.25), CIMTYPE_REAL64, false);
    expectRoundTrip(Char16('z'), CIMTYPE_CHAR16, false);
    expectRoundTrip(String("text"), CIMTYPE_STRING, false);
    expectRoundTrip(CIMDateTime("20240102030405.000006+060"), CIMTYPE_DATETIME, false);
    expectRoundTrip(CIMObjectPath("root/orv:C.k=1"), CIMTYPE_REFERENCE, false);

    expectRoundTrip(arrayOf<Boolean>(true, false), CIMTYPE_BOOLEAN, true);
    expectRoundTrip(arrayOf<Uint16>(1, 2), CIMTYPE_UINT16, true);
    expectRoundTrip(arrayOf<Uint32>(1, 2), CIMTYPE_UINT32, true);
    expectRoundTrip(arrayOf<Sint32>(-1, 2), CIMTYPE_SINT32, true);
    expectRoundTrip(arrayOf<Uint64>(1, 2), CIMTYPE_UINT64, true);
    expectRoundTrip(arrayOf<String>("a", "b"), CIMTYPE_STRING, true);
    expectRoundTrip(arrayOf(CIMDateTime(), CIMDateTime(5, false)), CIMTYPE_DATETIME, true);
    expectRoundTrip(arrayOf(CIMObjectPath("A"), CIMObjectPath("B.k=1")), CIMTYPE_REFERENCE, true);
}

TEST(CIMValueTest, ConversionsPickTheRightType)
{
    // A string literal would silently become a boolean on the real server,
    // so it must not compile here at all; String is the way in.
    static_assert(!std::is_constructible<CIMValue, const char*>::value, "literal refused");
    static_assert(std::is_constructible<CIMValue, String>::value, "String accepted");
    EXPECT_EQ(CIMValue(String("abc")).getType(), CIMTYPE_STRING);
    // Char16 and Uint16 are different CIM types.
    EXPECT_EQ(CIMValue(Char16('a')).getType(), CIMTYPE_CHAR16);
    EXPECT_EQ(CIMValue(Uint16('a')).getType(), CIMTYPE_UINT16);
    EXPECT_EQ(CIMValue(Uint8(1)).getType(), CIMTYPE_UINT8);
    EXPECT_EQ(CIMValue(Sint8(1)).getType(), CIMTYPE_SINT8);

    // Getting a narrower integer type than stored is a mismatch, not a cast.
    Uint16 small = 0;
    EXPECT_THROW(CIMValue(Uint32(1)).get(small), TypeMismatchException);
}

TEST(CIMValueTest, NullValues)
{
    CIMValue v;
    EXPECT_TRUE(v.isNull());
    EXPECT_EQ(v.getType(), CIMTYPE_BOOLEAN);
    EXPECT_FALSE(v.isArray());

    v.setNullValue(CIMTYPE_UINT64, true, 3);
    EXPECT_TRUE(v.isNull());
    EXPECT_TRUE(v.isArray());
    EXPECT_EQ(v.getType(), CIMTYPE_UINT64);
    EXPECT_EQ(v.getArraySize(), 0u);
    EXPECT_EQ(v.toString(), "");

    // Reading a null leaves the target alone; reading the wrong type throws.
    Array<Uint64> kept;
    kept.append(9);
    v.get(kept);
    EXPECT_EQ(kept.size(), 1u);
    Uint64 scalar = 0;
    EXPECT_THROW(v.get(scalar), TypeMismatchException);

    CIMValue typed(CIMTYPE_STRING, false);
    EXPECT_TRUE(typed.isNull());
    EXPECT_TRUE(typed == CIMValue(CIMTYPE_STRING, false));
    EXPECT_FALSE(typed == CIMValue(CIMTYPE_STRING, true));
    EXPECT_FALSE(typed == CIMValue(String("")));

    typed.set(String("x"));
    EXPECT_FALSE(typed.isNull());
    typed.clear();
    EXPECT_TRUE(typed.isNull());
    EXPECT_EQ(typed.getType(), CIMTYPE_BOOLEAN);
}

TEST(CIMValueTest, ToStringText)
{
    struct Case
    {
        CIMValue value;
        const char* text;
    };
    const Case cases[] = {
        {CIMValue(true), "TRUE"},
        {CIMValue(false), "FALSE"},
        {CIMValue(Uint8(255)), "255"},
        {CIMValue(Sint8(-5)), "-5"},
        {CIMValue(Uint64(18446744073709551615ULL)), "18446744073709551615"},
        {CIMValue(Sint64(-1)), "-1"},
        {CIMValue(Char16('q')), "q"},
        {CIMValue(String("a b")), "a b"},
        {CIMValue(CIMDateTime()), "00000000000000.000000:000"},
        {CIMValue(CIMObjectPath("root/orv:C.k=\"v\"")), "root/orv:C.k=\"v\""},
        {CIMValue(arrayOf<Uint16>(1, 2)), "1 2 "},
        {CIMValue(arrayOf<Boolean>(true, false)), "TRUE FALSE "},
        {CIMValue(Array<String>()), ""},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(c.value.toString(), c.text);
    }
}

TEST(CIMValueTest, CopiesAreIndependent)
{
    CIMValue a(Uint32(1));
    CIMValue b = a;
    b.set(String("changed"));
    Uint32 x = 0;
    a.get(x);
    EXPECT_EQ(x, 1u);
    EXPECT_EQ(b.getType(), CIMTYPE_STRING);

    Array<String> source = arrayOf<String>("a", "b");
    CIMValue v(source);
    source[0] = "changed";
    Array<String> back;
    v.get(back);
    EXPECT_EQ(back[0], "a");
    EXPECT_EQ(v.getArraySize(), 2u);
}

TEST(CIMValueTest, EmbeddedInstancesAreCopiedDeeply)
{
    CIMInstance inst = makeInstance("one");
    CIMValue v(inst);
    EXPECT_EQ(v.getType(), CIMTYPE_INSTANCE);

    // Changing the original after storing must not reach the value.
    inst.getProperty(0).setValue(CIMValue(String("two")));
    CIMInstance back;
    v.get(back);
    String id;
    back.getProperty(0).getValue().get(id);
    EXPECT_EQ(id, "one");

    // Nor may changing what was read back.
    back.getProperty(0).setValue(CIMValue(String("three")));
    CIMInstance again;
    v.get(again);
    again.getProperty(0).getValue().get(id);
    EXPECT_EQ(id, "one");

    CIMInstance uninitialized;
    EXPECT_THROW(CIMValue v2(uninitialized), UninitializedObjectException);
    CIMInstance target;
    EXPECT_THROW(CIMValue(String("x")).get(target), TypeMismatchException);
}

TEST(CIMParamValueTest, HandleSharingAndClone)
{
    CIMParamValue p("Statistics", CIMValue(arrayOf<String>("a;b", "c;d")));
    EXPECT_EQ(p.getParameterName(), "Statistics");
    EXPECT_TRUE(p.isTyped());

    CIMParamValue shared = p;
    CIMParamValue copy = p.clone();
    CIMValue other(Uint16(3));
    shared.setValue(other);
    EXPECT_EQ(p.getValue().getType(), CIMTYPE_UINT16);
    EXPECT_EQ(copy.getValue().getType(), CIMTYPE_STRING);

    CIMParamValue untyped("X", CIMValue(String("1")), false);
    EXPECT_FALSE(untyped.isTyped());

    CIMParamValue empty;
    EXPECT_TRUE(empty.isUninitialized());
    EXPECT_THROW(empty.getValue(), UninitializedObjectException);
    EXPECT_THROW(empty.clone(), UninitializedObjectException);
}

TEST(CIMPropertyListTest, NullEmptyAndNamed)
{
    CIMPropertyList nullList;
    EXPECT_TRUE(nullList.isNull());
    EXPECT_EQ(nullList.size(), 0u);
    EXPECT_FALSE(nullList.contains(CIMName("A")));

    CIMPropertyList empty{Array<CIMName>()};
    EXPECT_FALSE(empty.isNull());
    EXPECT_EQ(empty.size(), 0u);

    Array<String> names;
    names.append("ElementName");
    names.append("InstanceID");
    CIMPropertyList list;
    list.append(names);
    EXPECT_FALSE(list.isNull());
    EXPECT_EQ(list.size(), 2u);
    EXPECT_EQ(list[1].getString(), "InstanceID");
    EXPECT_TRUE(list.contains(CIMName("instanceid")));
    EXPECT_FALSE(list.contains(CIMName("Other")));
    EXPECT_THROW(list[2], IndexOutOfBoundsException);
    EXPECT_EQ(list.getPropertyNameArray().size(), 2u);

    names.append("not legal");
    CIMPropertyList bad;
    EXPECT_THROW(bad.append(names), InvalidNameException);
    EXPECT_TRUE(bad.isNull());

    list.clear();
    EXPECT_TRUE(list.isNull());
}
