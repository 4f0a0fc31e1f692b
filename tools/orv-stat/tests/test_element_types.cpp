#include "ElementTypes.h"

#include <gtest/gtest.h>

using namespace orvstat;

TEST(ElementTypes, ServerUrls)
{
    struct Case
    {
        const char* url;
        bool ok;
        const char* scheme;
        const char* host;
        unsigned port;
    } cases[] = {
        {"http://array.example", true, "http", "array.example", 5988},
        {"https://array.example", true, "https", "array.example", 5989},
        {"https://array.example:15989/cimom", true, "https", "array.example", 15989},
        {"localhost:7000", true, "http", "localhost", 7000},
        {"http://[::1]", true, "http", "::1", 5988},
        {"http://[fe80::1]:6000/", true, "http", "fe80::1", 6000},
        {"ftp://array.example", false, "", "", 0},
        {"http://", false, "", "", 0},
        {"http://array.example:0", false, "", "", 0},
        {"http://array.example:http", false, "", "", 0},
    };
    for (const Case& c : cases)
    {
        ServerAddress address;
        ASSERT_EQ(parseServerUrl(c.url, address), c.ok) << c.url;
        if (c.ok)
        {
            EXPECT_EQ(address.scheme, c.scheme) << c.url;
            EXPECT_EQ(address.host, c.host) << c.url;
            EXPECT_EQ(address.port, c.port) << c.url;
        }
    }
}

TEST(ElementTypes, JsonQuoting)
{
    struct Case
    {
        std::string text;
        const char* json;
    } cases[] = {
        {"QZ_KYRO:0-Stats", "\"QZ_KYRO:0-Stats\""},
        {"say \"hi\"", "\"say \\\"hi\\\"\""},
        {"a\\b", "\"a\\\\b\""},
        {std::string("t\tn\n\x01", 5), "\"t\\u0009n\\u000a\\u0001\""},
        {"", "\"\""},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(jsonQuote(c.text), c.json) << c.text;
    }
}

TEST(ElementTypes, WordsAndNames)
{
    EXPECT_EQ(elementTypesNamed("port"), (std::vector<uint16_t>{6, 7}));
    EXPECT_EQ(elementTypesNamed("all").size(), 7u);
    EXPECT_TRUE(elementTypesNamed("ports").empty());
    for (uint16_t type : elementTypesNamed("all"))
    {
        EXPECT_STRNE(elementTypeName(type), "other") << type;
    }
    EXPECT_STREQ(elementTypeName(3), "other");
}
