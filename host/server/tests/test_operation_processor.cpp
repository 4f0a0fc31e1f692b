#include "CimOperationProcessor.h"
#include "CimXmlWriter.h"

#include <ORV_ClientAddressContainer.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/Exception.h>
#include <gtest/gtest.h>

#include <libxml/parser.h>

#include <map>
#include <new>
#include <set>

using namespace orvhost;
using namespace Pegasus;

namespace
{
std::string _s(const String& s)
{
    return std::string(static_cast<const char*>(s.getCString()));
}

// Records what the processor asks for and answers with fixed objects.
class RecordingDispatcher : public CIMOMDispatcher
{
public:
    std::string call;
    std::string user;
    std::string address;
    std::map<std::string, std::string> args;
    CIMException toThrow;
    bool fail = false;
    bool outOfMemory = false;

    void _enter(const char* name, const OperationContext& ctx)
    {
        call = name;
        user = _s(IdentityContainer(ctx.get(IdentityContainer::NAME)).getUserName());
        address = _s(ORV_getClientAddress(ctx));
        if (fail)
        {
            throw toThrow;
        }
        if (outOfMemory)
        {
            throw std::bad_alloc();
        }
    }
    static std::string b(Boolean v)
    {
        return v ? "T" : "F";
    }
    static CIMInstance widget()
    {
        CIMInstance i(CIMName("T_Widget"));
        i.addProperty(CIMProperty(CIMName("Id"), CIMValue(String("w<1>&\""))));
        i.addProperty(CIMProperty(CIMName("On"), CIMValue(Boolean(true))));
        i.addProperty(CIMProperty(CIMName("Sizes"), CIMValue(Array<Uint16>(2, 7))));
        i.addProperty(CIMProperty(CIMName("Empty"), CIMValue(CIMTYPE_UINT32, false)));
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding(CIMName("Id"), String("w<1>&\""), CIMKeyBinding::STRING));
        i.setPath(CIMObjectPath(String(), CIMNamespaceName(), CIMName("T_Widget"), keys));
        return i;
    }

    CIMClass getClass(const OperationContext& c, const CIMNamespaceName& ns, const CIMName& cn,
                      Boolean lo, Boolean iq, Boolean ico, const CIMPropertyList&) override
    {
        _enter("getClass", c);
        args = {{"ns", _s(ns.getString())},
                {"class", _s(cn.getString())},
                {"flags", b(lo) + b(iq) + b(ico)}};
        return CIMClass(cn);
    }
    Array<CIMClass> enumerateClasses(const OperationContext& c, const CIMNamespaceName&,
                                     const CIMName& cn, Boolean di, Boolean lo, Boolean iq,
                                     Boolean ico) override
    {
        _enter("enumerateClasses", c);
        args = {{"class", cn.isNull() ? "(null)" : _s(cn.getString())},
                {"flags", b(di) + b(lo) + b(iq) + b(ico)}};
        return Array<CIMClass>();
    }
    Array<CIMName> enumerateClassNames(const OperationContext& c, const CIMNamespaceName&,
                                       const CIMName&, Boolean di) override
    {
        _enter("enumerateClassNames", c);
        args = {{"flags", b(di)}};
        Array<CIMName> names;
        names.append(CIMName("T_A"));
        return names;
    }
    CIMInstance getInstance(const OperationContext& c, const CIMNamespaceName&,
                            const CIMObjectPath& p, Boolean lo, Boolean iq, Boolean ico,
                            const CIMPropertyList& pl) override
    {
        _enter("getInstance", c);
        args = {{"path", _s(p.toString())},
                {"flags", b(lo) + b(iq) + b(ico)},
                {"props", pl.isNull() ? "(null)" : std::to_string(pl.size())}};
        return widget();
    }
    Array<CIMInstance> enumerateInstances(const OperationContext& c, const CIMNamespaceName&,
                                          const CIMName& cn, Boolean di, Boolean lo, Boolean iq,
                                          Boolean ico, const CIMPropertyList&) override
    {
        _enter("enumerateInstances", c);
        args = {{"class", _s(cn.getString())}, {"flags", b(di) + b(lo) + b(iq) + b(ico)}};
        Array<CIMInstance> out;
        out.append(widget());
        return out;
    }
    // As the object manager does: each instance handed on as delivered,
    // `copies` of them, failing with toThrow after failAfter when set.
    Uint32 copies = 1;
    Uint32 failAfter = 0;
    void enumerateInstances(const OperationContext& c, const CIMNamespaceName& ns,
                            const CIMName& cn, Boolean di, Boolean lo, Boolean iq, Boolean ico,
                            const CIMPropertyList& pl, const InstanceSink& sink) override
    {
        Array<CIMInstance> one = enumerateInstances(c, ns, cn, di, lo, iq, ico, pl);
        for (Uint32 i = 0; i < copies; i++)
        {
            if (failAfter != 0 && i == failAfter)
            {
                throw toThrow;
            }
            sink(one[0]);
        }
    }
    using CIMOMDispatcher::enumerateInstanceNames;
    Array<CIMObjectPath> enumerateInstanceNames(const OperationContext& c, const CIMNamespaceName&,
                                                const CIMName&) override
    {
        _enter("enumerateInstanceNames", c);
        return Array<CIMObjectPath>();
    }
    Array<CIMObject> associators(const OperationContext& c, const CIMNamespaceName&,
                                 const CIMObjectPath& p, const CIMName& ac, const CIMName& rc,
                                 const String& role, const String& rr, Boolean iq, Boolean ico,
                                 const CIMPropertyList&) override
    {
        _enter("associators", c);
        args = {{"path", _s(p.toString())},
                {"filters", _s(ac.isNull() ? String("-") : ac.getString()) + "|" +
                                _s(rc.isNull() ? String("-") : rc.getString()) + "|" + _s(role) +
                                "|" + _s(rr)},
                {"flags", b(iq) + b(ico)}};
        Array<CIMObject> out;
        out.append(CIMObject(widget()));
        return out;
    }
    Array<CIMObjectPath> associatorNames(const OperationContext& c, const CIMNamespaceName&,
                                         const CIMObjectPath&, const CIMName&, const CIMName&,
                                         const String&, const String&) override
    {
        _enter("associatorNames", c);
        Array<CIMObjectPath> out;
        out.append(widget().getPath());
        return out;
    }
    Array<CIMObject> references(const OperationContext& c, const CIMNamespaceName&,
                                const CIMObjectPath&, const CIMName&, const String&, Boolean,
                                Boolean, const CIMPropertyList&) override
    {
        _enter("references", c);
        return Array<CIMObject>();
    }
    Array<CIMObjectPath> referenceNames(const OperationContext& c, const CIMNamespaceName&,
                                        const CIMObjectPath&, const CIMName&,
                                        const String&) override
    {
        _enter("referenceNames", c);
        return Array<CIMObjectPath>();
    }
    CIMValue invokeMethod(const OperationContext& c, const CIMNamespaceName& ns,
                          const CIMObjectPath& p, const CIMName& m, const Array<CIMParamValue>& in,
                          Array<CIMParamValue>& out) override
    {
        _enter("invokeMethod", c);
        args = {{"ns", _s(ns.getString())},
                {"path", _s(p.toString())},
                {"method", _s(m.getString())},
                {"in", std::to_string(in.size())}};
        out.append(CIMParamValue("Job", CIMValue(CIMTYPE_REFERENCE, false)));
        Array<String> stats;
        stats.append("a;1;");
        out.append(CIMParamValue("Statistics", CIMValue(stats)));
        return CIMValue(Uint32(0));
    }
};

const std::string orvNs =
    "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"orv\"/></LOCALNAMESPACEPATH>";

HttpRequest _request(const std::string& method, const std::string& call,
                     const std::string& object = "root%2Forv")
{
    HttpRequest r;
    r.method = "POST";
    r.url = "/cimom";
    r.user = "demo";
    r.peer = "10.1.2.3";
    r.headers = {{"Content-Type", "application/xml; charset=\"utf-8\""},
                 {"CIMOperation", "MethodCall"},
                 {"CIMMethod", method},
                 {"CIMObject", object}};
    r.body = "<?xml version=\"1.0\" encoding=\"utf-8\"?><CIM CIMVERSION=\"2.0\" "
             "DTDVERSION=\"2.0\"><MESSAGE ID=\"9\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>" +
             call + "</SIMPLEREQ></MESSAGE></CIM>";
    return r;
}

HttpRequest _intrinsic(const std::string& name, const std::string& params)
{
    return _request(name,
                    "<IMETHODCALL NAME=\"" + name + "\">" + orvNs + params + "</IMETHODCALL>");
}

std::string _header(const HttpResponse& r, const std::string& name)
{
    for (const auto& h : r.headers)
    {
        if (h.first == name)
        {
            return h.second;
        }
    }
    return "";
}

// Every element the responses use, with the attributes DSP0201 allows it;
// strict clients reject anything else.
const std::map<std::string, std::set<std::string>> allowedAttributes = {
    {"CIM", {"CIMVERSION", "DTDVERSION"}},
    {"MESSAGE", {"ID", "PROTOCOLVERSION"}},
    {"SIMPLERSP", {}},
    {"IMETHODRESPONSE", {"NAME"}},
    {"METHODRESPONSE", {"NAME"}},
    {"IRETURNVALUE", {}},
    {"RETURNVALUE", {"PARAMTYPE"}},
    {"PARAMVALUE", {"NAME", "PARAMTYPE"}},
    {"ERROR", {"CODE", "DESCRIPTION"}},
    {"CLASS", {"NAME", "SUPERCLASS"}},
    {"CLASSNAME", {"NAME"}},
    {"INSTANCE", {"CLASSNAME"}},
    {"INSTANCENAME", {"CLASSNAME"}},
    {"KEYBINDING", {"NAME"}},
    {"KEYVALUE", {"VALUETYPE"}},
    {"PROPERTY", {"NAME", "TYPE", "CLASSORIGIN", "PROPAGATED"}},
    {"PROPERTY.ARRAY", {"NAME", "TYPE", "ARRAYSIZE", "CLASSORIGIN", "PROPAGATED"}},
    {"PROPERTY.REFERENCE", {"NAME", "REFERENCECLASS", "CLASSORIGIN", "PROPAGATED"}},
    {"VALUE", {}},
    {"VALUE.ARRAY", {}},
    {"VALUE.NAMEDINSTANCE", {}},
    {"VALUE.OBJECTWITHPATH", {}},
    {"VALUE.REFERENCE", {}},
    {"OBJECTPATH", {}},
    {"INSTANCEPATH", {}},
    {"NAMESPACEPATH", {}},
    {"HOST", {}},
    {"LOCALNAMESPACEPATH", {}},
    {"NAMESPACE", {"NAME"}},
};

void _checkElements(const xmlNode* node, std::vector<std::string>& problems)
{
    for (; node != nullptr; node = node->next)
    {
        if (node->type != XML_ELEMENT_NODE)
        {
            continue;
        }
        std::string name = reinterpret_cast<const char*>(node->name);
        auto allowed = allowedAttributes.find(name);
        if (allowed == allowedAttributes.end())
        {
            problems.push_back("unexpected element " + name);
        }
        else
        {
            for (const xmlAttr* a = node->properties; a != nullptr; a = a->next)
            {
                std::string attr = reinterpret_cast<const char*>(a->name);
                if (allowed->second.count(attr) == 0)
                {
                    problems.push_back(name + " has attribute " + attr);
                }
            }
        }
        _checkElements(node->children, problems);
    }
}

// The body must be well-formed and use only what the DTD allows.
void _expectStrictXml(const std::string& body)
{
    xmlDoc* doc = xmlReadMemory(body.data(), static_cast<int>(body.size()), "r.xml", nullptr,
                                XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    ASSERT_NE(doc, nullptr) << body;
    std::vector<std::string> problems;
    _checkElements(xmlDocGetRootElement(doc), problems);
    xmlFreeDoc(doc);
    EXPECT_TRUE(problems.empty()) << problems.front() << "\n" << body;
}

class ProcessorTest : public testing::Test
{
protected:
    RecordingDispatcher dispatcher;
    CimOperationProcessor processor{dispatcher, String("server1")};
};
} // namespace

TEST_F(ProcessorTest, ProtocolErrorsFollowDsp0200)
{
    struct Case
    {
        const char* what;
        std::function<void(HttpRequest&)> change;
        int status;
        const char* cimError;
    } cases[] = {
        {"wrong path", [](HttpRequest& r) { r.url = "/other"; }, 404, ""},
        {"no CIMOperation", [](HttpRequest& r) { r.headers.erase("CIMOperation"); }, 400,
         "unsupported-operation"},
        {"CIMOperation not a call",
         [](HttpRequest& r) { r.headers["CIMOperation"] = "MethodResponse"; }, 400,
         "unsupported-operation"},
        {"protocol version 2", [](HttpRequest& r) { r.headers["CIMProtocolVersion"] = "2.0"; }, 501,
         "unsupported-protocol-version"},
        {"not XML content", [](HttpRequest& r) { r.headers["Content-Type"] = "text/plain"; }, 400,
         "request-not-valid"},
        {"latin-1", [](HttpRequest& r) { r.headers["content-type"] = "text/xml; charset=latin1"; },
         400, "request-not-valid"},
        {"method mismatch", [](HttpRequest& r) { r.headers["CIMMethod"] = "GetClass"; }, 400,
         "header-mismatch"},
        {"namespace mismatch", [](HttpRequest& r) { r.headers["CIMObject"] = "root%2Fother"; }, 400,
         "header-mismatch"},
        {"no CIMObject", [](HttpRequest& r) { r.headers.erase("CIMObject"); }, 400,
         "header-mismatch"},
        {"broken body", [](HttpRequest& r) { r.body.resize(r.body.size() / 2); }, 400,
         "request-not-well-formed"},
    };
    for (const Case& c : cases)
    {
        HttpRequest r = _intrinsic("EnumerateInstanceNames",
                                   "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"T_W\"/>"
                                   "</IPARAMVALUE>");
        c.change(r);
        dispatcher.call.clear();
        HttpResponse response = processor.handle(r);
        EXPECT_EQ(response.status, c.status) << c.what;
        EXPECT_EQ(_header(response, "CIMError"), c.cimError) << c.what;
        EXPECT_TRUE(dispatcher.call.empty()) << c.what << ": reached " << dispatcher.call;
    }

    // Accepted variants: quoted charset, lower-case header names, no version.
    HttpRequest r = _intrinsic("EnumerateInstanceNames", "<IPARAMVALUE NAME=\"ClassName\">"
                                                         "<CLASSNAME NAME=\"T_W\"/></IPARAMVALUE>");
    r.headers.erase("CIMObject");
    r.headers["cimobject"] = "root/orv";
    EXPECT_EQ(processor.handle(r).status, 200);
    EXPECT_EQ(dispatcher.call, "enumerateInstanceNames");
}

TEST_F(ProcessorTest, IntrinsicDefaultsAndExplicitParameters)
{
    const std::string cls =
        "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"T_W\"/></IPARAMVALUE>";
    const std::string inst = "<IPARAMVALUE NAME=\"InstanceName\"><INSTANCENAME "
                             "CLASSNAME=\"T_W\"><KEYBINDING NAME=\"Id\"><KEYVALUE>x</KEYVALUE>"
                             "</KEYBINDING></INSTANCENAME></IPARAMVALUE>";
    auto flag = [](const char* name, const char* v)
    {
        return std::string("<IPARAMVALUE NAME=\"") + name + "\"><VALUE>" + v +
               "</VALUE></IPARAMVALUE>";
    };
    struct Case
    {
        const char* op;
        std::string params;
        const char* call;
        const char* key;
        const char* expected;
    } cases[] = {
        {"GetClass", cls, "getClass", "flags", "TTF"},
        {"GetClass", cls + flag("LocalOnly", "false") + flag("IncludeClassOrigin", "TRUE"),
         "getClass", "flags", "FTT"},
        {"EnumerateClasses", "", "enumerateClasses", "flags", "FTTF"},
        {"EnumerateClasses", "", "enumerateClasses", "class", "(null)"},
        {"EnumerateClassNames", flag("DeepInheritance", "true"), "enumerateClassNames", "flags",
         "T"},
        {"GetInstance", inst, "getInstance", "flags", "TFF"},
        {"GetInstance", inst, "getInstance", "props", "(null)"},
        {"GetInstance",
         inst + "<IPARAMVALUE NAME=\"PropertyList\"><VALUE.ARRAY><VALUE>A</VALUE></VALUE.ARRAY>"
                "</IPARAMVALUE>",
         "getInstance", "props", "1"},
        {"EnumerateInstances", cls, "enumerateInstances", "flags", "TTFF"},
        {"EnumerateInstances", cls + flag("DeepInheritance", "FALSE"), "enumerateInstances",
         "flags", "FTFF"},
        {"Associators",
         "<IPARAMVALUE NAME=\"ObjectName\"><INSTANCENAME CLASSNAME=\"T_W\"><KEYBINDING "
         "NAME=\"Id\"><KEYVALUE>x</KEYVALUE></KEYBINDING></INSTANCENAME></IPARAMVALUE>"
         "<IPARAMVALUE NAME=\"AssocClass\"><CLASSNAME NAME=\"T_Link\"/></IPARAMVALUE>" +
             flag("Role", "Left"),
         "associators", "filters", "T_Link|-|Left|"},
    };
    for (const Case& c : cases)
    {
        HttpResponse response = processor.handle(_intrinsic(c.op, c.params));
        EXPECT_EQ(response.status, 200) << c.op;
        EXPECT_EQ(dispatcher.call, c.call) << c.op;
        EXPECT_EQ(dispatcher.args[c.key], c.expected) << c.op << " " << c.params;
        EXPECT_EQ(dispatcher.user, "demo");
        EXPECT_EQ(dispatcher.address, "10.1.2.3");
        _expectStrictXml(response.body);
    }
}

TEST_F(ProcessorTest, CimErrorsAreErrorElements)
{
    const std::string cls =
        "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"T_W\"/></IPARAMVALUE>";
    struct Case
    {
        const char* what;
        std::string op;
        std::string params;
        bool providerFails;
        Uint32 code;
    } cases[] = {
        {"provider error", "EnumerateInstances", cls, true, CIM_ERR_NOT_FOUND},
        {"filtered pull", "OpenEnumerateInstances",
         cls + "<IPARAMVALUE NAME=\"FilterQueryLanguage\"><VALUE>DMTF:FQL</VALUE></IPARAMVALUE>"
               "<IPARAMVALUE NAME=\"FilterQuery\"><VALUE>x=1</VALUE></IPARAMVALUE>",
         false, CIM_ERR_FILTERED_ENUMERATION_NOT_SUPPORTED},
        {"pull from no context", "PullInstancesWithPath",
         "<IPARAMVALUE NAME=\"EnumerationContext\"><VALUE>0123</VALUE></IPARAMVALUE>"
         "<IPARAMVALUE NAME=\"MaxObjectCount\"><VALUE>5</VALUE></IPARAMVALUE>",
         false, CIM_ERR_INVALID_ENUMERATION_CONTEXT},
        {"class change", "CreateClass", "", false, CIM_ERR_NOT_SUPPORTED},
        {"unknown operation", "Frobnicate", "", false, CIM_ERR_NOT_SUPPORTED},
        {"unknown parameter", "EnumerateInstances", cls + "<IPARAMVALUE NAME=\"Bogus\"/>", false,
         CIM_ERR_INVALID_PARAMETER},
        {"repeated parameter", "EnumerateInstances", cls + cls, false, CIM_ERR_INVALID_PARAMETER},
        {"bad boolean", "EnumerateInstances",
         cls + "<IPARAMVALUE NAME=\"LocalOnly\"><VALUE>maybe</VALUE></IPARAMVALUE>", false,
         CIM_ERR_INVALID_PARAMETER},
        {"missing class", "EnumerateInstances", "", false, CIM_ERR_INVALID_PARAMETER},
        {"class where instance belongs", "GetInstance",
         "<IPARAMVALUE NAME=\"InstanceName\"><CLASSNAME NAME=\"T_W\"/></IPARAMVALUE>", false,
         CIM_ERR_INVALID_PARAMETER},
    };
    for (const Case& c : cases)
    {
        dispatcher.fail = c.providerFails;
        dispatcher.toThrow = CIMException(CIM_ERR_NOT_FOUND, "no such \"thing\" <here>");
        dispatcher.call.clear();
        HttpResponse response = processor.handle(_intrinsic(c.op, c.params));
        EXPECT_EQ(response.status, 200) << c.what;
        EXPECT_EQ(_header(response, "CIMOperation"), "MethodResponse") << c.what;
        EXPECT_NE(response.body.find("<ERROR CODE=\"" + std::to_string(c.code) + "\""),
                  std::string::npos)
            << c.what << ": " << response.body;
        EXPECT_EQ(response.summary.cimStatus, std::to_string(c.code)) << c.what;
        EXPECT_EQ(!dispatcher.call.empty(), c.providerFails) << c.what;
        _expectStrictXml(response.body);
    }
    // Memory running out in a provider is the operation's failure, told in
    // the CIM answer, not a bare HTTP 500.
    dispatcher.outOfMemory = true;
    HttpResponse starved = processor.handle(_intrinsic("EnumerateInstances", cls));
    dispatcher.outOfMemory = false;
    EXPECT_EQ(starved.status, 200);
    EXPECT_NE(starved.body.find("<ERROR CODE=\"1\""), std::string::npos) << starved.body;
    EXPECT_EQ(starved.summary.cimStatus, "1");
    _expectStrictXml(starved.body);

    // OpenPegasus's form: the status name, ": ", then the text.
    dispatcher.fail = true;
    EXPECT_NE(processor.handle(_intrinsic("EnumerateInstances", cls))
                  .body.find("DESCRIPTION=\"CIM_ERR_NOT_FOUND: no such &quot;thing&quot; "
                             "&lt;here&gt;\""),
              std::string::npos);
}

TEST_F(ProcessorTest, ResultsEncodeValuesAndPaths)
{
    HttpResponse response = processor.handle(
        _intrinsic("EnumerateInstances",
                   "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"T_W\"/></IPARAMVALUE>"));
    const std::string& body = response.body;
    _expectStrictXml(body);
    EXPECT_NE(body.find("<MESSAGE ID=\"9\" PROTOCOLVERSION=\"1.0\">"), std::string::npos);
    EXPECT_NE(body.find("<VALUE.NAMEDINSTANCE><INSTANCENAME CLASSNAME=\"T_Widget\"><KEYBINDING "
                        "NAME=\"Id\"><KEYVALUE VALUETYPE=\"string\">w&lt;1&gt;&amp;&quot;"
                        "</KEYVALUE>"),
              std::string::npos)
        << body;
    EXPECT_NE(body.find("<PROPERTY NAME=\"On\" TYPE=\"boolean\"><VALUE>TRUE</VALUE></PROPERTY>"),
              std::string::npos);
    EXPECT_NE(body.find("<PROPERTY.ARRAY NAME=\"Sizes\" TYPE=\"uint16\"><VALUE.ARRAY><VALUE>7"
                        "</VALUE><VALUE>7</VALUE></VALUE.ARRAY></PROPERTY.ARRAY>"),
              std::string::npos);
    EXPECT_NE(body.find("<PROPERTY NAME=\"Empty\" TYPE=\"uint32\"></PROPERTY>"), std::string::npos)
        << "a null value has no VALUE";

    // Associators: full paths, with this server's host filled in.
    response = processor.handle(_intrinsic(
        "Associators", "<IPARAMVALUE NAME=\"ObjectName\"><INSTANCENAME CLASSNAME=\"T_W\"/>"
                       "</IPARAMVALUE>"));
    _expectStrictXml(response.body);
    EXPECT_NE(response.body.find("<VALUE.OBJECTWITHPATH><INSTANCEPATH><NAMESPACEPATH><HOST>"
                                 "server1</HOST><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/>"
                                 "<NAMESPACE NAME=\"orv\"/></LOCALNAMESPACEPATH>"),
              std::string::npos)
        << response.body;
}

TEST_F(ProcessorTest, ExtrinsicCallAndOutputParameters)
{
    HttpRequest r = _request(
        "GetStatisticsCollection",
        "<METHODCALL NAME=\"GetStatisticsCollection\"><LOCALINSTANCEPATH>" + orvNs +
            "<INSTANCENAME CLASSNAME=\"T_Svc\"><KEYBINDING NAME=\"Name\"><KEYVALUE>s</KEYVALUE>"
            "</KEYBINDING></INSTANCENAME></LOCALINSTANCEPATH>"
            "<PARAMVALUE NAME=\"ElementTypes\"><VALUE.ARRAY><VALUE>2</VALUE></VALUE.ARRAY>"
            "</PARAMVALUE></METHODCALL>",
        "root%2Forv%3AT_Svc.Name%3D%22s%22");
    HttpResponse response = processor.handle(r);
    ASSERT_EQ(response.status, 200) << response.body;
    EXPECT_EQ(dispatcher.call, "invokeMethod");
    EXPECT_EQ(dispatcher.args["ns"], "root/orv");
    EXPECT_EQ(dispatcher.args["method"], "GetStatisticsCollection");
    EXPECT_EQ(dispatcher.args["in"], "1");
    EXPECT_EQ(dispatcher.args["path"].find("root/orv"), std::string::npos)
        << "the provider gets a local path";
    EXPECT_EQ(response.summary.className, "T_Svc");
    _expectStrictXml(response.body);
    EXPECT_NE(response.body.find("<METHODRESPONSE NAME=\"GetStatisticsCollection\"><RETURNVALUE "
                                 "PARAMTYPE=\"uint32\"><VALUE>0</VALUE></RETURNVALUE>"
                                 "<PARAMVALUE NAME=\"Statistics\" PARAMTYPE=\"string\">"
                                 "<VALUE.ARRAY><VALUE>a;1;</VALUE></VALUE.ARRAY></PARAMVALUE>"),
              std::string::npos)
        << response.body;
    // The null "Job" is not sent at all.
    EXPECT_EQ(response.body.find("NAME=\"Job\""), std::string::npos) << response.body;
}

TEST(CimXmlWriter, EscapesEverythingXmlCannotCarryRaw)
{
    EXPECT_EQ(cimxml::escape("a<b>&\"c\"\n\x01"), "a&lt;b&gt;&amp;&quot;c&quot;&#10;&#xFFFD;");
    EXPECT_EQ(cimxml::escape("caf\xc3\xa9"), "caf\xc3\xa9") << "UTF-8 passes unchanged";
    std::string out;
    cimxml::appendValue(out, CIMValue(CIMDateTime(String("20240102030405.000000+060"))));
    EXPECT_EQ(out, "<VALUE>20240102030405.000000+060</VALUE>");
}

// The in-place writer must give exactly what converting to UTF-8 and then
// escaping gives, fast path or not, so that answers stay byte for byte.
TEST(CimXmlWriter, InPlaceEscapingOfStringsMatchesConvertThenEscape)
{
    const Char16 loneSurrogate[] = {Char16('a'), Char16(0xD800), Char16('b'), Char16(0)};
    const Char16 withNul[] = {Char16('k'), Char16(0), Char16('<'), Char16('z')};
    const Char16 bmp[] = {Char16(0x20AC), Char16('&'), Char16(0xFFFE), Char16(0)};
    const struct
    {
        const char* label;
        String text;
    } rows[] = {
        {"empty", String()},
        {"plain ASCII", String("QZ_KYRO:VLUN_5_vol01:1:2:3_10000000C9AB1234")},
        {"markup late in the text", String("abcdefgh\"ij<kl>&m")},
        {"controls", String("tab\there\nline\rcr\x7f")},
        {"non-ASCII after ASCII", String("caf\xc3\xa9 cr\xc3\xa8me")},
        {"lone surrogate", String(loneSurrogate)},
        {"embedded NUL cuts", String(withNul, 4)},
        {"BMP and a non-character", String(bmp)},
    };
    for (const auto& row : rows)
    {
        std::string inPlace = "prefix:";
        cimxml::appendEscaped(inPlace, row.text);
        EXPECT_EQ(inPlace, "prefix:" + cimxml::escape(cimxml::str(row.text))) << row.label;
    }
}

// What the HTTP layer gets from a streamed answer.
struct CapturedStream : StreamingBody
{
    std::string body;
    bool finished = false;
    std::string failedCode;
    void write(std::string bytes) override
    {
        body += bytes;
    }
    void finish() override
    {
        finished = true;
    }
    void fail(const std::string& code, const std::string&) override
    {
        failedCode = code;
    }
};

TEST_F(ProcessorTest, LargeAnswersStreamWithTheSameBodyAndLateErrorsFailTheStream)
{
    const std::string cls =
        "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"T_W\"/></IPARAMVALUE>";
    auto streamed = [&](std::shared_ptr<CapturedStream> captured, int& heads)
    {
        HttpRequest r = _intrinsic("EnumerateInstances", cls);
        r.startStreaming = [&heads, captured](const HttpResponse& head)
        {
            ++heads;
            EXPECT_EQ(head.status, 200);
            EXPECT_EQ(_header(head, "CIMOperation"), "MethodResponse");
            return std::shared_ptr<StreamingBody>(captured);
        };
        return processor.handle(r);
    };

    // Small: one body, however the connection could stream.
    int heads = 0;
    auto small = std::make_shared<CapturedStream>();
    HttpResponse response = streamed(small, heads);
    EXPECT_FALSE(response.streamed);
    EXPECT_EQ(heads, 0);

    // Large: streamed once past the threshold, byte for byte the whole answer.
    dispatcher.copies = 5000;
    auto large = std::make_shared<CapturedStream>();
    response = streamed(large, heads);
    EXPECT_TRUE(response.streamed);
    EXPECT_EQ(heads, 1);
    EXPECT_TRUE(large->finished);
    HttpResponse whole = processor.handle(_intrinsic("EnumerateInstances", cls));
    EXPECT_FALSE(whole.streamed);
    EXPECT_GT(whole.body.size(), 256u * 1024u);
    EXPECT_EQ(large->body, whole.body);
    _expectStrictXml(large->body);

    // A failure after the start fails the stream with its status...
    dispatcher.toThrow = CIMException(CIM_ERR_NOT_FOUND, "gone");
    dispatcher.failAfter = 4000;
    auto broken = std::make_shared<CapturedStream>();
    heads = 0;
    response = streamed(broken, heads);
    EXPECT_TRUE(response.streamed);
    EXPECT_FALSE(broken->finished);
    EXPECT_EQ(broken->failedCode, "6");

    // ...and one before it is still an ERROR element in place of the answer.
    dispatcher.failAfter = 3;
    auto early = std::make_shared<CapturedStream>();
    heads = 0;
    response = streamed(early, heads);
    EXPECT_FALSE(response.streamed);
    EXPECT_EQ(heads, 0);
    EXPECT_NE(response.body.find("<ERROR CODE=\"6\""), std::string::npos);
    EXPECT_EQ(response.body.find("VALUE.NAMEDINSTANCE"), std::string::npos);
    _expectStrictXml(response.body);
}

TEST_F(ProcessorTest, HeadersMustStateExactlyWhatTheBodyHolds)
{
    const std::string target = "<LOCALINSTANCEPATH>" + orvNs +
                               "<INSTANCENAME CLASSNAME=\"T_Svc\"><KEYBINDING NAME=\"Name\">"
                               "<KEYVALUE>s</KEYVALUE></KEYBINDING></INSTANCENAME>"
                               "</LOCALINSTANCEPATH>";
    const std::string types = "<PARAMVALUE NAME=\"ElementTypes\"><VALUE.ARRAY><VALUE>2</VALUE>"
                              "</VALUE.ARRAY></PARAMVALUE>";
    auto call = [&](const std::string& params)
    {
        return _request("GetStatisticsCollection",
                        "<METHODCALL NAME=\"GetStatisticsCollection\">" + target + params +
                            "</METHODCALL>",
                        "root%2Forv%3AT_Svc.Name%3D%22s%22");
    };
    struct Case
    {
        const char* what;
        std::function<void(HttpRequest&)> change;
        int status;
        const char* cimError; ///< "" when the call must reach the provider
    } cases[] = {
        {"as sent by clients", [](HttpRequest&) {}, 200, ""},
        {"text/xml", [](HttpRequest& r) { r.headers["Content-Type"] = "text/xml"; }, 200, ""},
        {"media type in capitals and a blank before the parameters",
         [](HttpRequest& r) { r.headers["Content-Type"] = "Application/XML ; charset=utf-8"; }, 200,
         ""},
        {"another media type starting alike",
         [](HttpRequest& r) { r.headers["Content-Type"] = "application/xmlfoo"; }, 400,
         "request-not-valid"},
        {"text/xml-ish", [](HttpRequest& r) { r.headers["Content-Type"] = "text/xml2"; }, 400,
         "request-not-valid"},
        {"no Content-Type", [](HttpRequest& r) { r.headers.erase("Content-Type"); }, 400,
         "request-not-valid"},
        {"protocol version 1.1", [](HttpRequest& r) { r.headers["CIMProtocolVersion"] = "1.1"; },
         200, ""},
        {"protocol version 1.zzz",
         [](HttpRequest& r) { r.headers["CIMProtocolVersion"] = "1.zzz"; }, 501,
         "unsupported-protocol-version"},
        {"protocol version 1.", [](HttpRequest& r) { r.headers["CIMProtocolVersion"] = "1."; }, 501,
         "unsupported-protocol-version"},
        {"CIMObject names the target in another form",
         [](HttpRequest& r) { r.headers["CIMObject"] = "root/orv:t_svc.name=\"s\""; }, 200, ""},
        {"CIMObject names another key value",
         [](HttpRequest& r) { r.headers["CIMObject"] = "root%2Forv%3AT_Svc.Name%3D%22t%22"; }, 400,
         "header-mismatch"},
        {"CIMObject names another class",
         [](HttpRequest& r) { r.headers["CIMObject"] = "root%2Forv%3AT_Other.Name%3D%22s%22"; },
         400, "header-mismatch"},
        {"CIMObject names the namespace only",
         [](HttpRequest& r) { r.headers["CIMObject"] = "root%2Forv"; }, 400, "header-mismatch"},
        {"CIMObject is no path",
         [](HttpRequest& r) { r.headers["CIMObject"] = "root%2Forv%3A%3D%3D"; }, 400,
         "header-mismatch"},
    };
    for (const Case& c : cases)
    {
        HttpRequest r = call(types);
        c.change(r);
        dispatcher.call.clear();
        HttpResponse response = processor.handle(r);
        EXPECT_EQ(response.status, c.status) << c.what << ": " << response.body;
        EXPECT_EQ(_header(response, "CIMError"), c.cimError) << c.what;
        EXPECT_EQ(dispatcher.call, *c.cimError ? "" : "invokeMethod") << c.what;
    }

    // A parameter given twice (in any case) is a CIM error, not a choice.
    dispatcher.call.clear();
    HttpResponse twice = processor.handle(call(types + "<PARAMVALUE NAME=\"elementtypes\">"
                                                       "<VALUE.ARRAY><VALUE>3</VALUE>"
                                                       "</VALUE.ARRAY></PARAMVALUE>"));
    EXPECT_EQ(twice.status, 200);
    EXPECT_NE(twice.body.find("ERROR CODE=\"4\""), std::string::npos) << twice.body;
    EXPECT_EQ(dispatcher.call, "");
}

TEST_F(ProcessorTest, AnswersPastTheLimitAreCimErrorsOrFailedStreams)
{
    const size_t streamAfter = 256 * 1024; // where the processor starts streaming
    const std::string cls =
        "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"T_W\"/></IPARAMVALUE>";
    dispatcher.copies = 20000;
    const size_t whole = processor.handle(_intrinsic("EnumerateInstances", cls)).body.size();
    ASSERT_GT(whole, 3 * streamAfter);

    struct Case
    {
        const char* what;
        size_t limit;
        bool streamed; ///< the limit is met after the answer started going out
    } cases[] = {
        {"before anything was sent", streamAfter / 2, false},
        {"while it streams", 2 * streamAfter, true},
    };
    for (const Case& c : cases)
    {
        processor.setMaxAnswerBytes(c.limit);
        auto captured = std::make_shared<CapturedStream>();
        HttpRequest r = _intrinsic("EnumerateInstances", cls);
        r.startStreaming = [captured](const HttpResponse&)
        { return std::shared_ptr<StreamingBody>(captured); };
        HttpResponse response = processor.handle(r);
        EXPECT_EQ(response.streamed, c.streamed) << c.what;
        if (c.streamed)
        {
            EXPECT_FALSE(captured->finished) << c.what;
            EXPECT_EQ(captured->failedCode, "1") << c.what;
            EXPECT_LE(captured->body.size(), c.limit) << c.what;
        }
        else
        {
            EXPECT_EQ(response.status, 200) << c.what;
            EXPECT_NE(response.body.find("<ERROR CODE=\"1\""), std::string::npos) << c.what;
            EXPECT_NE(response.body.find(std::to_string(c.limit)), std::string::npos) << c.what;
            EXPECT_EQ(response.body.find("VALUE.NAMEDINSTANCE"), std::string::npos) << c.what;
            _expectStrictXml(response.body);
        }
    }
    // At the limit exactly, the answer is whole.
    processor.setMaxAnswerBytes(whole);
    EXPECT_EQ(processor.handle(_intrinsic("EnumerateInstances", cls)).body.size(), whole);
}
