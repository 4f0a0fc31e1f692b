// In-parameters sent as text by clients get the types their method declares.

#include "TestSupport.h"

#include <cimom/ParamTyping.h>

#include <Pegasus/Common/CIMDateTime.h>

PEGASUS_USING_PEGASUS;
using namespace omtest;

namespace
{

class ParamTypingTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        om = makeObjectManager();
    }

    // Types one untyped parameter of OMT_Widget.Paint.
    CIMValue typed(const char* name, const CIMValue& text)
    {
        Array<CIMParamValue> in;
        in.append(CIMParamValue(name, text, false));
        Array<CIMParamValue> out =
            om->typeMethodParameters(NS, CIMName("OMT_Widget"), CIMName("Paint"), in);
        EXPECT_EQ(out.size(), 1u);
        EXPECT_TRUE(out[0].isTyped());
        return out[0].getValue();
    }

    std::unique_ptr<cimom::ObjectManager> om;
};

CIMValue text(const char* s)
{
    return CIMValue(String(s));
}

CIMValue texts(std::initializer_list<const char*> items)
{
    Array<String> a;
    for (const char* s : items)
    {
        a.append(String(s));
    }
    return CIMValue(a);
}

TEST_F(ParamTypingTest, TextBecomesTheDeclaredType)
{
    struct Case
    {
        const char* parameter;
        CIMValue given;
        CIMValue expected;
    } cases[] = {
        {"Coats", text("7"), CIMValue(Uint32(7))},
        {"Coats", text(" 12 "), CIMValue(Uint32(12))},
        {"Coats", text("0x10"), CIMValue(Uint32(16))},
        {"Coats", text("4294967295"), CIMValue(Uint32(4294967295u))},
        {"Glossy", text("TRUE"), CIMValue(Boolean(true))},
        {"Glossy", text("false"), CIMValue(Boolean(false))},
        {"Offset", text("-32768"), CIMValue(Sint16(-32768))},
        {"Ratio", text("2.5"), CIMValue(Real64(2.5))},
        {"Color", text(" keep spaces "), CIMValue(String(" keep spaces "))},
        {"When", text("20240102030405.000000+000"),
         CIMValue(CIMDateTime(String("20240102030405.000000+000")))},
        {"Target", text("test/om:OMT_Widget.Id=\"W1\""),
         CIMValue(CIMObjectPath(String("test/om:OMT_Widget.Id=\"W1\"")))},
        {"Weights", texts({"1", "65535"}), CIMValue(Array<Uint16>())},
        {"Weights", text("3"), CIMValue(Array<Uint16>())},
    };
    // Arrays are compared element-wise below.
    Array<Uint16> weights1;
    weights1.append(1);
    weights1.append(65535);
    cases[11].expected = CIMValue(weights1);
    Array<Uint16> weights2;
    weights2.append(3);
    cases[12].expected = CIMValue(weights2);

    for (const Case& c : cases)
    {
        CIMValue result = typed(c.parameter, c.given);
        EXPECT_EQ(result.getType(), c.expected.getType()) << c.parameter << " " << str(c.given.toString());
        EXPECT_TRUE(result == c.expected)
            << c.parameter << ": " << str(result.toString()) << " != " << str(c.expected.toString());
    }
}

TEST_F(ParamTypingTest, NullsTypedValuesAndReferencesAsText)
{
    CIMValue nullText;
    nullText.setNullValue(CIMTYPE_STRING, false);
    CIMValue n = typed("Coats", nullText);
    EXPECT_TRUE(n.isNull());
    EXPECT_EQ(n.getType(), CIMTYPE_UINT32);

    // Already typed values are left alone...
    Array<CIMParamValue> in;
    in.append(CIMParamValue("Coats", CIMValue(Uint64(5)), true));
    // ...except a reference given as its text.
    in.append(CIMParamValue("Target", text("OMT_Widget.Id=\"W2\""), true));
    Array<CIMParamValue> out =
        om->typeMethodParameters(NS, CIMName("OMT_Widget"), CIMName("paint"), in);
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[0].getValue().getType(), CIMTYPE_UINT64);
    EXPECT_EQ(out[1].getValue().getType(), CIMTYPE_REFERENCE);
    // Parameter names come back as the class spells them.
    in.clear();
    in.append(CIMParamValue("coats", text("1"), false));
    out = om->typeMethodParameters(NS, CIMName("OMT_Widget"), CIMName("Paint"), in);
    EXPECT_EQ(str(out[0].getParameterName()), "Coats");
}

TEST_F(ParamTypingTest, TextThatDoesNotFitIsAnInvalidParameter)
{
    struct Case
    {
        const char* parameter;
        CIMValue given;
    } cases[] = {
        {"Coats", text("-1")},         {"Coats", text("4294967296")},
        {"Coats", text("7 coats")},    {"Coats", text("")},
        {"Offset", text("40000")},     {"Glossy", text("yes")},
        {"Ratio", text("1.5x")},       {"When", text("yesterday")},
        {"Target", text("OMT_Widget.Id=")}, {"Weights", texts({"1", "x"})},
        {"Color", texts({"a", "b"})},
        {"Coats", CIMValue(Array<Uint32>())},
    };
    for (const Case& c : cases)
    {
        CimError e = cimError([&] {
            Array<CIMParamValue> in;
            in.append(CIMParamValue(c.parameter, c.given, false));
            om->typeMethodParameters(NS, CIMName("OMT_Widget"), CIMName("Paint"), in);
        });
        EXPECT_EQ(e.code, CIM_ERR_INVALID_PARAMETER) << c.parameter << " " << str(c.given.toString());
        EXPECT_TRUE(e.message.find(c.parameter) != std::string::npos) << e.message;
    }
}

TEST_F(ParamTypingTest, ProviderReceivesTypedParameters)
{
    Array<CIMParamValue> in, out;
    in.append(CIMParamValue("Coats", text("3"), false));
    in.append(CIMParamValue("Glossy", text("true"), false));
    in.append(CIMParamValue("Target", text("OMT_Widget.Id=\"W1\""), false));
    CIMValue rc = om->invokeMethod(contextFor("bob"), NS, elementPath("OMT_Widget", "W1"),
                                   CIMName("Paint"), in, out);
    Uint32 code = 0;
    rc.get(code);
    EXPECT_EQ(code, 42u);
    ASSERT_EQ(out.size(), 1u);
    String echo;
    out[0].getValue().get(echo);
    EXPECT_EQ(str(echo).substr(0, 32), "Coats=uint32:3;Glossy=boolean:TR");
    EXPECT_NE(str(echo).find("Target=reference:"), std::string::npos) << str(echo);
}

} // namespace

TEST_F(ParamTypingTest, UndeclaredParametersPassUnchanged)
{
    // The provider judges what its method does not declare, as in OpenPegasus.
    Array<CIMParamValue> in;
    in.append(CIMParamValue("Nope", text("1"), false));
    in.append(CIMParamValue("Coats", text("2"), false));
    Array<CIMParamValue> out =
        om->typeMethodParameters(NS, CIMName("OMT_Widget"), CIMName("Paint"), in);
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(str(out[0].getParameterName()), "Nope");
    EXPECT_FALSE(out[0].isTyped());
    EXPECT_EQ(out[0].getValue().getType(), CIMTYPE_STRING);
    EXPECT_EQ(out[1].getValue().getType(), CIMTYPE_UINT32);
}
