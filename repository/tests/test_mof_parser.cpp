// Grammar of the MOF reader, checked on its syntax tree.

#include "MofParser.h"

#include <cimrepo/MofError.h>

#include <gtest/gtest.h>

using namespace cimrepo;
using namespace cimrepo::mof;

namespace
{

const ClassNode& onlyClass(const std::vector<Production>& p)
{
    EXPECT_EQ(1u, p.size());
    EXPECT_EQ(Production::CLASS, p.at(0).kind);
    return p.at(0).classDecl;
}

Literal defaultOf(const std::string& declaration)
{
    auto p = parseMof("class A { " + declaration + " };", "t.mof");
    return onlyClass(p).features.at(0).defaultValue;
}

} // namespace

TEST(MofParser, IntegerLiteralForms)
{
    struct Case
    {
        const char* text;
        bool negative;
        std::uint64_t magnitude;
    } cases[] = {
        {"0", false, 0},
        {"42", false, 42},
        {"-17", true, 17},
        {"+5", false, 5},
        {"0x1F", false, 31},
        {"-0X10", true, 16},
        {"1011b", false, 11},
        {"-101B", true, 5},
        {"017", false, 15},
        {"18446744073709551615", false, 18446744073709551615ULL},
        {"-9223372036854775808", true, 9223372036854775808ULL},
    };
    for (const Case& c : cases)
    {
        Literal l = defaultOf(std::string("uint64 X = ") + c.text + ";");
        ASSERT_EQ(Literal::INTEGER, l.kind) << c.text;
        EXPECT_EQ(c.negative, l.negative) << c.text;
        EXPECT_EQ(c.magnitude, l.magnitude) << c.text;
    }
}

TEST(MofParser, RealLiteralForms)
{
    struct Case
    {
        const char* text;
        double value;
    } cases[] = {{"1.5", 1.5}, {"-0.25", -0.25}, {".5", 0.5}, {"2e3", 2000.0}, {"-1.5E-2", -0.015}};
    for (const Case& c : cases)
    {
        Literal l = defaultOf(std::string("real64 X = ") + c.text + ";");
        ASSERT_EQ(Literal::REAL, l.kind) << c.text;
        EXPECT_DOUBLE_EQ(c.value, l.real) << c.text;
    }
}

TEST(MofParser, StringsEscapesAndConcatenation)
{
    Literal l = defaultOf("string S = \"a\\\"b\" \"\\\\c\\n\"\n   \"\\x41\\X00e9\";");
    ASSERT_EQ(Literal::STRING, l.kind);
    EXPECT_EQ("a\"b\\c\nA\xC3\xA9", l.text);

    Literal c = defaultOf("char16 C = '\\t';");
    ASSERT_EQ(Literal::CHAR, c.kind);
    EXPECT_EQ('\t', c.character);
}

TEST(MofParser, KeywordsAndValuesIgnoreCase)
{
    auto p = parseMof("CLASS A { Boolean B = TRUE; String S = NULL; uint8 U[] = {1, 2}; };", "t");
    const ClassNode& c = onlyClass(p);
    ASSERT_EQ(3u, c.features.size());
    EXPECT_EQ("boolean", c.features[0].type);
    EXPECT_TRUE(c.features[0].defaultValue.boolean);
    EXPECT_EQ(Literal::NUL, c.features[1].defaultValue.kind);
    EXPECT_TRUE(c.features[2].isArray);
    EXPECT_EQ(2u, c.features[2].defaultValue.elements.size());
}

TEST(MofParser, ClassWithQualifiersPropertiesReferencesAndMethods)
{
    const char* mof = R"(
// line comment
/* block
   comment */
[Association, Version ("2.1.0"), Description ("two " "parts"),
 ValueMap {"1", "2"}, Key : DisableOverride Restricted]
class Sub : Base
{
    [Key] Base REF Antecedent;
    string Names[];
    uint8 Fixed[8] = {1, 2};
    uint32 Do([IN, Description("p")] string A[], [IN (false), OUT] CIM_X REF B, sint64 C);
};
)";
    auto p = parseMof(mof, "t.mof");
    const ClassNode& c = onlyClass(p);
    EXPECT_EQ("Sub", c.name);
    EXPECT_EQ("Base", c.superClass);
    EXPECT_EQ(5, c.line); // where the qualifier list opens
    ASSERT_EQ(5u, c.qualifiers.size());
    EXPECT_EQ(Literal::NONE, c.qualifiers[0].value.kind);
    EXPECT_EQ("two parts", c.qualifiers[2].value.text);
    EXPECT_EQ(Literal::ARRAY, c.qualifiers[3].value.kind);
    EXPECT_EQ((std::vector<std::string>{"DisableOverride", "Restricted"}), c.qualifiers[4].flavors);

    ASSERT_EQ(4u, c.features.size());
    EXPECT_EQ(FeatureNode::REFERENCE, c.features[0].kind);
    EXPECT_EQ("Base", c.features[0].refClass);
    EXPECT_TRUE(c.features[1].isArray);
    EXPECT_EQ(0u, c.features[1].arraySize);
    EXPECT_EQ(8u, c.features[2].arraySize);

    const FeatureNode& m = c.features[3];
    EXPECT_EQ(FeatureNode::METHOD, m.kind);
    EXPECT_EQ("uint32", m.type);
    ASSERT_EQ(3u, m.parameters.size());
    EXPECT_TRUE(m.parameters[0].isArray);
    EXPECT_EQ(2u, m.parameters[0].qualifiers.size());
    EXPECT_EQ("ref", m.parameters[1].type);
    EXPECT_EQ("CIM_X", m.parameters[1].refClass);
    EXPECT_FALSE(m.parameters[1].qualifiers[0].value.boolean);
    EXPECT_EQ("sint64", m.parameters[2].type);
}

TEST(MofParser, QualifierDeclarationPragmasAndInstances)
{
    const char* mof = R"(#pragma locale ("en_US")
#pragma include ("a/" "b.mof")
Qualifier MaxLen : uint32 = null, Scope(property, method, parameter), Flavor(EnableOverride, ToSubclass);
Qualifier Values : string[], Scope(property);
instance of PG_Provider as $P
{
    Name = "x";
    Types = {2, 3};
    Ref = $Other;
};
)";
    auto p = parseMof(mof, "t.mof");
    ASSERT_EQ(5u, p.size());
    EXPECT_EQ("locale", p[0].pragma.name);
    EXPECT_EQ(std::vector<std::string>{"a/b.mof"}, p[1].pragma.arguments);
    EXPECT_EQ(2, p[1].pragma.line);

    const QualifierDeclNode& d = p[2].qualifierDecl;
    EXPECT_EQ("uint32", d.type);
    EXPECT_EQ(Literal::NUL, d.defaultValue.kind);
    EXPECT_EQ((std::vector<std::string>{"property", "method", "parameter"}), d.scopes);
    EXPECT_EQ(2u, d.flavors.size());
    EXPECT_TRUE(p[3].qualifierDecl.isArray);
    EXPECT_TRUE(p[3].qualifierDecl.flavors.empty());

    const InstanceNode& i = p[4].instance;
    EXPECT_EQ("PG_Provider", i.className);
    EXPECT_EQ("P", i.alias);
    ASSERT_EQ(3u, i.values.size());
    EXPECT_EQ(Literal::ARRAY, i.values[1].value.kind);
    EXPECT_EQ(Literal::ALIAS, i.values[2].value.kind);
    EXPECT_EQ(9, i.values[2].line);
}

TEST(MofParser, SyntaxErrorsNameFileLineAndWhatWasExpected)
{
    struct Case
    {
        const char* mof;
        int line;
        const char* message; // start of the message after "file:line: "
    } cases[] = {
        {"class A {\n  string X\n  string Y;\n};", 2, "expected ';'"},
        {"class A {\n  string X;\n}", 3, "expected ';'"},
        {"class A {\n  strin X;\n};", 2, "expected a data type, found 'strin'"},
        {"class A : {\n};", 1, "expected a superclass name"},
        {"class A {\n string S = \"open\n};", 2, "expected '\"'"},
        {"\n\n/* never closed", 3, "expected '*/'"},
        {"class A {\n uint8 X = 0x;\n};", 2, "expected hexadecimal digits"},
        {"class A {\n uint8 X = 09;\n};", 2, "expected octal digits"},
        {"class A {\n uint8 X = 12ab;\n};", 2, "expected a number"},
        {"class A {\n uint8 X[0];\n};", 2, "expected a positive array size"},
        {"Qualifier Q : boolean, Scope(everywhere);", 1, "expected a scope"},
        {"[Key : Sometimes] class A {};", 1, "expected a flavor"},
        {"#pragma include \"x.mof\"", 1, "expected '('"},
        {"#include (\"x\")", 1, "expected 'pragma'"},
        {"instance A { X = 1; };", 1, "expected 'of'"},
        {"instance of A {\n X = ;\n};", 2, "expected a value"},
        {"class A {\n string S = \"bad \\q escape\";\n};", 2, "expected a valid escape"},
        {"klass A {};", 1, "expected 'class', 'instance', 'qualifier' or '#pragma'"},
        {"class A {\n string X;\n", 3, "expected '}'"},
        {"class A { @ };", 1, "unexpected character '@'"},
        {"class A {\n uint64 X = 18446744073709551616;\n};", 2, "integer value out of range"},
    };
    for (const Case& c : cases)
    {
        try
        {
            parseMof(c.mof, "dir/x.mof");
            ADD_FAILURE() << "no error for: " << c.mof;
        }
        catch (const MofError& e)
        {
            EXPECT_EQ("dir/x.mof", e.file()) << c.mof;
            EXPECT_EQ(c.line, e.line()) << c.mof << " -> " << e.what();
            EXPECT_EQ(0u, e.message().rfind(c.message, 0)) << c.mof << " -> " << e.what();
            std::string prefix = "dir/x.mof:" + std::to_string(c.line) + ": ";
            EXPECT_EQ(0u, std::string(e.what()).rfind(prefix, 0)) << e.what();
        }
    }
}
