// Hostile CIM-XML against the operation processor: every answer stays a
// well-formed document whatever the caller or a provider puts in strings,
// and markup tricks (DTDs, entities, deep nesting, huge values) are refused
// cleanly.

#include "CimOperationProcessor.h"
#include "EchoDispatcher.h"

#include <Pegasus/Common/Char16.h>
#include <gtest/gtest.h>
#include <libxml/parser.h>

#include <string>

using namespace orvhost;

namespace
{
const std::string orvNs =
    "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"orv\"/></LOCALNAMESPACEPATH>";

HttpRequest _request(const std::string& method, const std::string& call,
                     const std::string& messageId = "7", const std::string& prolog = "")
{
    HttpRequest r;
    r.method = "POST";
    r.url = "/cimom";
    r.user = "demo";
    r.peer = "10.0.0.1";
    r.headers = {{"Content-Type", "application/xml; charset=utf-8"},
                 {"CIMOperation", "MethodCall"},
                 {"CIMMethod", method},
                 {"CIMObject", "root/orv"}};
    r.body = "<?xml version=\"1.0\" encoding=\"utf-8\"?>" + prolog +
             "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"" + messageId +
             "\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>" + call + "</SIMPLEREQ></MESSAGE></CIM>";
    return r;
}

HttpRequest _getInstance(const std::string& keyValue, const std::string& messageId = "7")
{
    return _request("GetInstance",
                    "<IMETHODCALL NAME=\"GetInstance\">" + orvNs +
                        "<IPARAMVALUE NAME=\"InstanceName\"><INSTANCENAME CLASSNAME=\"T_W\">"
                        "<KEYBINDING NAME=\"Id\"><KEYVALUE>" +
                        keyValue + "</KEYVALUE></KEYBINDING></INSTANCENAME></IPARAMVALUE>"
                                   "</IMETHODCALL>",
                    messageId);
}

// The parsed answer, or null when a client could not read it.
std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> _parse(const std::string& body)
{
    return {xmlReadMemory(body.data(), static_cast<int>(body.size()), "answer.xml", nullptr,
                          XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING),
            xmlFreeDoc};
}

class CimRobustness : public ::testing::Test
{
protected:
    fuzzing::EchoDispatcher dispatcher;
    CimOperationProcessor processor{dispatcher, "host"};
};

TEST_F(CimRobustness, ProviderStringsAlwaysEncodeToWellFormedXml)
{
    const Pegasus::Char16 loneSurrogate[] = {'a', 0xD800, 'b', 0};
    const Pegasus::Char16 nonCharacter[] = {'a', 0xFFFE, 0xFFFF, 'b', 0};
    struct Case
    {
        const char* name;
        Pegasus::String text;
    };
    const Case cases[] = {
        {"cdata terminator", "x]]>y"},
        {"markup", "<a b=\"c\">&amp;'</a>"},
        {"control characters", "a\x01\x08\x0b\x0c\x1f\x7f" "b"},
        {"lone surrogate", Pegasus::String(loneSurrogate)},
        {"non-characters", Pegasus::String(nonCharacter)},
    };
    for (const Case& c : cases)
    {
        dispatcher.extra = c.text;
        for (const HttpRequest& request :
             {_getInstance("k"),
              _request("EnumerateInstanceNames", "<IMETHODCALL NAME=\"EnumerateInstanceNames\">" +
                                                     orvNs +
                                                     "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME "
                                                     "NAME=\"T_W\"/></IPARAMVALUE></IMETHODCALL>")})
        {
            HttpResponse response = processor.handle(request);
            ASSERT_EQ(response.status, 200) << c.name;
            EXPECT_TRUE(_parse(response.body)) << c.name << ":\n" << response.body;
        }
    }
}

TEST_F(CimRobustness, CallerTextsAreEchoedEscaped)
{
    // The message ID and key values come back verbatim, never as markup.
    HttpResponse response = processor.handle(_getInstance("]]&gt;&lt;x/&gt;&#9;&amp;", "a&quot;&lt;b"));
    ASSERT_EQ(response.status, 200);
    auto doc = _parse(response.body);
    ASSERT_TRUE(doc) << response.body;
    xmlNode* message = xmlDocGetRootElement(doc.get())->children;
    xmlChar* id = xmlGetProp(message, reinterpret_cast<const xmlChar*>("ID"));
    EXPECT_STREQ(reinterpret_cast<const char*>(id), "a\"<b");
    xmlFree(id);
    EXPECT_NE(response.body.find("]]&gt;&lt;x/&gt;"), std::string::npos) << response.body;
}

TEST_F(CimRobustness, MarkupTricksAreRefusedWithoutReachingTheObjectManager)
{
    const std::string laughs = "<!DOCTYPE CIM [<!ENTITY a \"aaaaaaaaaa\">"
                               "<!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">"
                               "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\">"
                               "<!ENTITY d \"&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;\">]>";
    const std::string external = "<!DOCTYPE CIM [<!ENTITY x SYSTEM \"file:///etc/passwd\">]>";
    const std::string remote = "<!DOCTYPE CIM SYSTEM \"http://192.0.2.1/cim.dtd\">";
    struct Case
    {
        const char* name;
        HttpRequest request;
    };
    std::string deep;
    for (int i = 0; i < 5000; ++i)
    {
        deep += "<VALUE.ARRAY>";
    }
    const Case cases[] = {
        {"entity expansion", _request("GetInstance", "<IMETHODCALL NAME=\"GetInstance\">&d;</IMETHODCALL>", "1", laughs)},
        {"external entity", _request("GetInstance", "<IMETHODCALL NAME=\"GetInstance\">&x;</IMETHODCALL>", "1", external)},
        {"external DTD", _request("GetInstance", "<IMETHODCALL NAME=\"GetInstance\"/>", "1", remote)},
        {"deep nesting", _request("GetInstance", "<IMETHODCALL NAME=\"GetInstance\">" + orvNs +
                                                     "<IPARAMVALUE NAME=\"X\">" + deep +
                                                     "</IPARAMVALUE></IMETHODCALL>")},
    };
    for (const Case& c : cases)
    {
        HttpResponse response = processor.handle(c.request);
        EXPECT_EQ(response.status, 400) << c.name << ": " << response.body;
        EXPECT_EQ(response.body.find("root:"), std::string::npos) << c.name;
    }
    EXPECT_EQ(dispatcher.calls, 0);
}

TEST_F(CimRobustness, HugeNamesAndValuesGetACimError)
{
    const std::string huge(1 << 20, 'A');
    HttpResponse byClass = processor.handle(_request(
        "EnumerateInstanceNames", "<IMETHODCALL NAME=\"EnumerateInstanceNames\">" + orvNs +
                                      "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"" + huge +
                                      "\"/></IPARAMVALUE></IMETHODCALL>"));
    ASSERT_EQ(byClass.status, 200);
    EXPECT_TRUE(_parse(byClass.body));

    HttpResponse byKey = processor.handle(_getInstance(huge));
    ASSERT_EQ(byKey.status, 200);
    EXPECT_TRUE(_parse(byKey.body));
}
} // namespace

namespace
{
TEST_F(CimRobustness, BadBytesAreAnsweredNotPrintedOnTheServerConsole)
{
    // Bytes that do not convert from the declared encoding.
    HttpRequest request = _getInstance("k");
    request.body.replace(0, request.body.find("?>"),
                         "<?xml version=\"1.0\" encoding=\"ISO-2022-JP\"");
    request.body.insert(request.body.find("<SIMPLEREQ>"), "\x1b$B\xff\xff\xd1\xff");
    testing::internal::CaptureStderr();
    HttpResponse response = processor.handle(request);
    std::string printed = testing::internal::GetCapturedStderr();
    EXPECT_EQ(response.status, 400);
    EXPECT_EQ(printed, "");
}
} // namespace
