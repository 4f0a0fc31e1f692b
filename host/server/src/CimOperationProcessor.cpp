#include "CimOperationProcessor.h"

#include "CimXmlWriter.h"

#include <ORV_ClientAddressContainer.h>
#include <cimom/ObjectManager.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/OperationContext.h>

#include <strings.h>

#include <cerrno>
#include <cstdlib>

#include <algorithm>
#include <atomic>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>

using namespace Pegasus;

namespace orvhost
{

namespace
{
const char cimPath[] = "/cimom";
// Encoded results are handed to the connection in pieces of about this size.
const size_t batchBytes = 256 * 1024;

// The IRETURNVALUE of a pull: a page is megabytes, so it is sized once rather
// than grown by doubling, and each item is let go once copied.
void _pageOf(std::vector<std::string>& items, std::string& out)
{
    size_t total = 0;
    for (const std::string& item : items)
    {
        total += item.size();
    }
    out.clear();
    out.reserve(total + 512); // and the trailer
    out += "<IRETURNVALUE>";
    for (std::string& item : items)
    {
        out += item;
        std::string().swap(item);
    }
    out += "</IRETURNVALUE>";
}

// A fault found while reading the parameters of an intrinsic call.
struct ParamError
{
    CIMStatusCode code;
    std::string text;
};

std::string _lower(std::string text)
{
    for (char& c : text)
    {
        c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    }
    return text;
}

std::string _trim(const std::string& text)
{
    size_t b = text.find_first_not_of(" \t");
    size_t e = text.find_last_not_of(" \t");
    return b == std::string::npos ? "" : text.substr(b, e - b + 1);
}

std::string _urlDecode(const std::string& text)
{
    std::string out;
    for (size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] == '%' && i + 2 < text.size() && isxdigit(static_cast<unsigned char>(text[i + 1])) &&
            isxdigit(static_cast<unsigned char>(text[i + 2])))
        {
            out += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
            i += 2;
        }
        else
        {
            out += text[i];
        }
    }
    return out;
}

std::string _stripSlashes(std::string ns)
{
    while (!ns.empty() && ns.front() == '/')
    {
        ns.erase(0, 1);
    }
    while (!ns.empty() && ns.back() == '/')
    {
        ns.pop_back();
    }
    return ns;
}

// Intrinsic parameters by lower-case name, with DSP0200's rules on shapes.
class IParams
{
public:
    IParams(const std::vector<IParam>& params, std::set<std::string> allowed)
    {
        for (const IParam& p : params)
        {
            std::string key = _lower(p.name);
            if (allowed.count(key) == 0)
            {
                throw ParamError{CIM_ERR_INVALID_PARAMETER,
                                 "unexpected parameter " + p.name + " for this operation"};
            }
            if (!_params.emplace(key, &p).second)
            {
                throw ParamError{CIM_ERR_INVALID_PARAMETER, "parameter " + p.name + " repeated"};
            }
        }
    }

    const IParam* find(const char* name) const
    {
        auto it = _params.find(_lower(name));
        return it == _params.end() ? nullptr : it->second;
    }

    Boolean boolean(const char* name, Boolean defaultValue) const
    {
        const IParam* p = find(name);
        if (p == nullptr || p->kind == IParam::NULL_VALUE)
        {
            return defaultValue;
        }
        if (p->kind == IParam::VALUE)
        {
            std::string text = _lower(_trim(p->text));
            if (text == "true")
            {
                return true;
            }
            if (text == "false")
            {
                return false;
            }
        }
        throw ParamError{CIM_ERR_INVALID_PARAMETER,
                         std::string("parameter ") + name + " must be TRUE or FALSE"};
    }

    CIMName className(const char* name, bool required) const
    {
        const IParam* p = find(name);
        if (p == nullptr || p->kind == IParam::NULL_VALUE)
        {
            if (required)
            {
                throw ParamError{CIM_ERR_INVALID_PARAMETER,
                                 std::string("missing parameter ") + name};
            }
            return CIMName();
        }
        if (p->kind != IParam::CLASS_NAME)
        {
            throw ParamError{CIM_ERR_INVALID_PARAMETER,
                             std::string("parameter ") + name + " must be a CLASSNAME"};
        }
        return p->className;
    }

    CIMObjectPath instanceName(const char* name) const
    {
        const IParam* p = find(name);
        if (p == nullptr || p->kind != IParam::INSTANCE_NAME)
        {
            throw ParamError{CIM_ERR_INVALID_PARAMETER,
                             std::string("parameter ") + name + " must be an INSTANCENAME"};
        }
        return p->path;
    }

    // An object name: a class (CLASSNAME) or an instance (INSTANCENAME).
    CIMObjectPath objectName(const char* name) const
    {
        const IParam* p = find(name);
        if (p != nullptr && p->kind == IParam::CLASS_NAME)
        {
            CIMObjectPath path;
            path.setClassName(p->className);
            return path;
        }
        if (p != nullptr && p->kind == IParam::INSTANCE_NAME)
        {
            return p->path;
        }
        throw ParamError{CIM_ERR_INVALID_PARAMETER,
                         std::string("parameter ") + name + " must be a CLASSNAME or INSTANCENAME"};
    }

    String text(const char* name) const
    {
        const IParam* p = find(name);
        if (p == nullptr || p->kind == IParam::NULL_VALUE)
        {
            return String();
        }
        if (p->kind != IParam::VALUE)
        {
            throw ParamError{CIM_ERR_INVALID_PARAMETER,
                             std::string("parameter ") + name + " must be a VALUE"};
        }
        return String(p->text.c_str());
    }

    CIMName name(const char* param) const
    {
        String text = this->text(param);
        if (!CIMName::legal(text))
        {
            throw ParamError{CIM_ERR_INVALID_PARAMETER,
                             std::string("parameter ") + param + " must be a CIM name"};
        }
        return CIMName(text);
    }

    // An unsigned 32-bit VALUE; present tells whether the client gave one.
    Uint32 uint32(const char* param, Uint32 defaultValue, bool& present) const
    {
        const IParam* p = find(param);
        present = p != nullptr && p->kind != IParam::NULL_VALUE;
        if (!present)
        {
            return defaultValue;
        }
        std::string text = _trim(p->kind == IParam::VALUE ? p->text : std::string("x"));
        char* end = nullptr;
        errno = 0;
        unsigned long long value = strtoull(text.c_str(), &end, 10);
        if (text.empty() || text[0] == '-' || *end != '\0' || errno != 0 || value > 0xFFFFFFFFull)
        {
            throw ParamError{CIM_ERR_INVALID_PARAMETER,
                             std::string("parameter ") + param + " must be a uint32"};
        }
        return static_cast<Uint32>(value);
    }

    CIMPropertyList propertyList() const
    {
        const IParam* p = find("PropertyList");
        if (p == nullptr || p->kind == IParam::NULL_VALUE)
        {
            return CIMPropertyList();
        }
        if (p->kind != IParam::VALUE_ARRAY)
        {
            throw ParamError{CIM_ERR_INVALID_PARAMETER, "parameter PropertyList must be a VALUE.ARRAY"};
        }
        Array<CIMName> names;
        for (const std::string& text : p->texts)
        {
            try
            {
                names.append(CIMName(String(_trim(text).c_str())));
            }
            catch (const Exception&)
            {
                throw ParamError{CIM_ERR_INVALID_PARAMETER,
                                 "PropertyList holds an invalid name \"" + text + "\""};
            }
        }
        return CIMPropertyList(names);
    }

private:
    std::map<std::string, const IParam*> _params;
};

} // namespace

// The encoded answer: kept whole while small, so that a late error still
// replaces it; past streamAfter bytes sent on in chunks as it is produced,
// where the connection can stream.
class ResponseOutput
{
public:
    static const size_t streamAfter = 256 * 1024;

    ResponseOutput(const HttpRequest& http, const HttpResponse& head, size_t limit)
        : _http(http), _head(head), _limit(limit)
    {
    }

    void append(std::string text)
    {
        // Checked as the answer grows, and again on every later piece in
        // case a caller passes the failure by; the error path truncates.
        _total += text.size();
        if (_total > _limit)
        {
            throw CIMException(CIM_ERR_FAILED,
                               String(("the answer is larger than " + std::to_string(_limit) +
                                       " bytes, the limit (--max-answer)")
                                          .c_str()));
        }
        if (_stream)
        {
            _stream->write(std::move(text));
            return;
        }
        _buffer += text;
        if (_buffer.size() > streamAfter && _http.startStreaming)
        {
            _stream = _http.startStreaming(_head);
            if (_stream)
            {
                _stream->write(std::move(_buffer));
                _buffer = std::string();
            }
        }
    }

    bool streaming() const
    {
        return _stream != nullptr;
    }
    size_t size() const
    {
        return _buffer.size();
    }
    void truncate(size_t size)
    {
        _buffer.resize(size);
        _limit = static_cast<size_t>(-1); // for the error that replaces the answer
    }
    std::string take()
    {
        return std::move(_buffer);
    }
    void finish()
    {
        _stream->finish();
    }
    void fail(CIMStatusCode code, const std::string& description)
    {
        _stream->fail(std::to_string(code), description);
    }

private:
    const HttpRequest& _http;
    const HttpResponse& _head;
    size_t _limit;
    size_t _total = 0;
    std::string _buffer;
    std::shared_ptr<StreamingBody> _stream;
};

namespace
{
std::string _className(const CIMName& name)
{
    return name.isNull() ? "-" : cimxml::str(name.getString());
}

// As OpenPegasus writes it: the status name, then ": " and the text, if any.
std::string _description(CIMStatusCode code, const std::string& text)
{
    std::string out = cimxml::str(cimStatusCodeToString(code));
    out = out.substr(0, out.find(':'));
    return text.empty() ? out : out + ": " + text;
}

// "1." and a minor version in digits.
bool _isProtocolVersion1(const std::string& value)
{
    if (value.size() < 3 || value.compare(0, 2, "1.") != 0)
    {
        return false;
    }
    return std::all_of(value.begin() + 2, value.end(),
                       [](char c) { return isdigit(static_cast<unsigned char>(c)) != 0; });
}

// Whether a method call's CIMObject header names the object the body calls;
// the namespaces are compared on their own, before.
bool _namesTarget(const std::string& header, const CIMObjectPath& target)
{
    try
    {
        CIMObjectPath named{String(header.c_str())};
        CIMObjectPath body = target;
        named.setHost(String());
        body.setHost(String());
        named.setNameSpace(body.getNameSpace());
        return named.identical(body);
    }
    catch (const Exception&)
    {
        return false;
    }
}

HttpResponse _protocolError(int status, const std::string& cimError, const std::string& detail)
{
    HttpResponse response;
    response.status = status;
    response.headers.emplace_back("CIMError", cimError);
    response.headers.emplace_back("Content-Type", "text/plain; charset=utf-8");
    response.body = detail + "\n";
    response.summary.cimStatus = cimError;
    return response;
}

std::set<std::string> _names(std::initializer_list<const char*> names)
{
    std::set<std::string> out;
    for (const char* n : names)
    {
        out.insert(_lower(n));
    }
    return out;
}
} // namespace

CimOperationProcessor::CimOperationProcessor(CIMOMDispatcher& dispatcher, const String& hostName,
                                             const EnumerationContexts::Limits& pullLimits)
    : _dispatcher(dispatcher), _hostName(hostName), _contexts(pullLimits)
{
}

HttpResponse CimOperationProcessor::handle(const HttpRequest& http)
{
    std::string path = http.url;
    while (path.size() > 1 && path.back() == '/')
    {
        path.pop_back();
    }
    if (path != cimPath)
    {
        HttpResponse response;
        response.status = 404;
        response.headers.emplace_back("Content-Type", "text/plain; charset=utf-8");
        response.body = "CIM operations are served at " + std::string(cimPath) + "\n";
        return response;
    }
    // M-POST names its CIM headers with a numeric prefix declared in Man.
    std::string prefix;
    if (http.method == "M-POST")
    {
        auto man = http.headers.find("Man");
        size_t ns = man == http.headers.end() ? std::string::npos : man->second.find("ns=");
        if (ns == std::string::npos)
        {
            return _protocolError(400, "request-not-valid", "M-POST without a Man header ns");
        }
        std::string digits;
        for (size_t i = ns + 3; i < man->second.size() && isdigit(static_cast<unsigned char>(man->second[i])); ++i)
        {
            digits += man->second[i];
        }
        prefix = digits + "-";
    }
    auto header = [&](const char* name, std::string& value) {
        auto it = http.headers.find(prefix + name);
        if (it == http.headers.end())
        {
            return false;
        }
        value = _trim(it->second);
        return true;
    };

    std::string value;
    if (!header("CIMOperation", value) || strcasecmp(value.c_str(), "MethodCall") != 0)
    {
        return _protocolError(400, "unsupported-operation",
                              "the CIMOperation header must be MethodCall");
    }
    if (header("CIMProtocolVersion", value) && !_isProtocolVersion1(value))
    {
        return _protocolError(501, "unsupported-protocol-version",
                              "CIMProtocolVersion " + value + " is not supported");
    }
    auto contentType = http.headers.find("Content-Type");
    if (contentType == http.headers.end())
    {
        return _protocolError(400, "request-not-valid", "the Content-Type header is missing");
    }
    {
        std::string type = _lower(contentType->second);
        const std::string media = _trim(type.substr(0, type.find(';')));
        if (media != "application/xml" && media != "text/xml")
        {
            return _protocolError(400, "request-not-valid",
                                  "Content-Type must be application/xml or text/xml");
        }
        size_t charset = type.find("charset=");
        if (charset != std::string::npos)
        {
            std::string cs = type.substr(charset + 8);
            cs = cs.substr(0, cs.find(';'));
            cs.erase(std::remove(cs.begin(), cs.end(), '"'), cs.end());
            cs = _trim(cs);
            if (cs != "utf-8" && cs != "utf8")
            {
                return _protocolError(400, "request-not-valid", "only utf-8 is accepted");
            }
        }
    }

    CimRequest request;
    try
    {
        request = parseCimRequest(http.body);
    }
    catch (const CimProtocolError& e)
    {
        return _protocolError(e.httpStatus(), e.cimError(), e.what());
    }

    std::string method;
    if (!header("CIMMethod", method) || _urlDecode(method) != request.methodName)
    {
        return _protocolError(400, "header-mismatch",
                              "the CIMMethod header does not name the method in the body");
    }
    std::string object;
    if (!header("CIMObject", object))
    {
        return _protocolError(400, "header-mismatch", "the CIMObject header is missing");
    }
    object = _urlDecode(object);
    std::string headerNs = request.intrinsic ? object : object.substr(0, object.find(':'));
    if (!request.nameSpaceText.empty() &&
        strcasecmp(_stripSlashes(headerNs).c_str(),
                   _stripSlashes(request.nameSpaceText).c_str()) != 0)
    {
        return _protocolError(400, "header-mismatch",
                              "the CIMObject header does not match the namespace in the body");
    }
    if (!request.intrinsic && request.errorCode == CIM_ERR_SUCCESS &&
        !_namesTarget(object, request.objectPath))
    {
        return _protocolError(400, "header-mismatch",
                              "the CIMObject header does not name the object in the body");
    }

    HttpResponse response;
    response.summary.operation = request.methodName;
    response.headers.emplace_back("Content-Type", "application/xml; charset=\"utf-8\"");
    if (http.method == "M-POST")
    {
        response.headers.emplace_back("Ext", "");
        response.headers.emplace_back("Opt", "http://www.dmtf.org/cim/mapping/http/v1.0 ; ns=" +
                                                 prefix.substr(0, prefix.size() - 1));
    }
    response.headers.emplace_back(prefix + "CIMOperation", "MethodResponse");

    // Declared before the output, so gone after the answer's end went out.
    cimom::ReleaseAfterAnswer releaseAfterAnswer;
    ResponseOutput output(http, response, _maxAnswerBytes);
    const char* element = request.intrinsic ? "IMETHODRESPONSE" : "METHODRESPONSE";
    output.append(cimxml::messageStart(request.messageId) + "<" + element + " NAME=\"" +
                  cimxml::escape(request.methodName) + "\">");
    const size_t head = output.size();
    CIMStatusCode code = CIM_ERR_SUCCESS;
    std::string description;
    try
    {
        if (request.errorCode != CIM_ERR_SUCCESS)
        {
            throw CIMException(request.errorCode, String(request.errorText.c_str()));
        }
        OperationContext context;
        context.insert(IdentityContainer(String(http.user.c_str())));
        context.insert(ORV_ClientAddressContainer(String(http.peer.c_str())));
        response.summary.cimStatus = "0";
        output.append(request.intrinsic
                          ? _dispatchIntrinsic(request, context, http.user, response.summary,
                                               output)
                          : _dispatchExtrinsic(request, context, response.summary));
    }
    catch (const ParamError& e)
    {
        code = e.code;
        description = _description(e.code, e.text);
    }
    catch (const CIMException& e)
    {
        code = e.getCode();
        description = _description(e.getCode(), cimxml::str(e.getMessage()));
    }
    catch (const Exception& e)
    {
        code = CIM_ERR_FAILED;
        description = _description(CIM_ERR_FAILED, cimxml::str(e.getMessage()));
    }
    catch (const StreamClosed&)
    {
        // The client left mid-answer: nobody is there to tell.
        response.streamed = true;
        return response;
    }
    catch (const std::exception& e)
    {
        code = CIM_ERR_FAILED;
        description = _description(CIM_ERR_FAILED, e.what());
    }
    if (code != CIM_ERR_SUCCESS)
    {
        response.summary.cimStatus = std::to_string(code);
        if (output.streaming())
        {
            output.fail(code, description);
            response.streamed = true;
            return response;
        }
        output.truncate(head);
        std::string error;
        cimxml::appendError(error, code, description);
        output.append(error);
    }
    output.append(std::string("</") + element + ">" + cimxml::messageEnd());
    if (output.streaming())
    {
        output.finish();
        response.streamed = true;
        return response;
    }
    response.body = output.take();
    return response;
}

std::string CimOperationProcessor::_dispatchIntrinsic(const CimRequest& request,
                                                      const OperationContext& context,
                                                      const std::string& user,
                                                      RequestSummary& summary,
                                                      ResponseOutput& output)
{
    const std::string op = request.methodName;
    const CIMNamespaceName& ns = request.nameSpace;
    std::string pulled;
    if (_dispatchPull(request, context, user, summary, pulled))
    {
        return pulled;
    }
    std::string out = "<IRETURNVALUE>";
    auto objects = [&](const Array<CIMObject>& found) {
        for (Uint32 i = 0; i < found.size(); ++i)
        {
            out += "<VALUE.OBJECTWITHPATH>";
            if (found[i].isClass())
            {
                cimxml::appendClassPath(out, found[i].getPath(), _hostName, ns);
                cimxml::appendClass(out, CIMConstClass(found[i]));
            }
            else
            {
                cimxml::appendInstancePath(out, found[i].getPath(), _hostName, ns);
                cimxml::appendInstance(out, CIMConstInstance(found[i]));
            }
            out += "</VALUE.OBJECTWITHPATH>";
        }
    };
    auto paths = [&](const Array<CIMObjectPath>& found, bool classLevel) {
        for (Uint32 i = 0; i < found.size(); ++i)
        {
            out += "<OBJECTPATH>";
            if (classLevel)
            {
                cimxml::appendClassPath(out, found[i], _hostName, ns);
            }
            else
            {
                cimxml::appendInstancePath(out, found[i], _hostName, ns);
            }
            out += "</OBJECTPATH>";
        }
    };
    auto isClassLevel = [](const IParams& p) {
        return p.find("ObjectName")->kind == IParam::CLASS_NAME;
    };

    if (op == "GetClass")
    {
        IParams p(request.iparams, _names({"ClassName", "LocalOnly", "IncludeQualifiers",
                                           "IncludeClassOrigin", "PropertyList"}));
        CIMName name = p.className("ClassName", true);
        summary.className = _className(name);
        CIMClass c = _dispatcher.getClass(context, ns, name, p.boolean("LocalOnly", true),
                                          p.boolean("IncludeQualifiers", true),
                                          p.boolean("IncludeClassOrigin", false),
                                          p.propertyList());
        cimxml::appendClass(out, c);
    }
    else if (op == "EnumerateClasses")
    {
        IParams p(request.iparams, _names({"ClassName", "DeepInheritance", "LocalOnly",
                                           "IncludeQualifiers", "IncludeClassOrigin"}));
        CIMName name = p.className("ClassName", false);
        summary.className = _className(name);
        Array<CIMClass> found = _dispatcher.enumerateClasses(
            context, ns, name, p.boolean("DeepInheritance", false), p.boolean("LocalOnly", true),
            p.boolean("IncludeQualifiers", true), p.boolean("IncludeClassOrigin", false));
        for (Uint32 i = 0; i < found.size(); ++i)
        {
            cimxml::appendClass(out, found[i]);
        }
    }
    else if (op == "EnumerateClassNames")
    {
        IParams p(request.iparams, _names({"ClassName", "DeepInheritance"}));
        CIMName name = p.className("ClassName", false);
        summary.className = _className(name);
        Array<CIMName> found = _dispatcher.enumerateClassNames(
            context, ns, name, p.boolean("DeepInheritance", false));
        for (Uint32 i = 0; i < found.size(); ++i)
        {
            cimxml::appendClassName(out, found[i]);
        }
    }
    else if (op == "GetInstance")
    {
        IParams p(request.iparams, _names({"InstanceName", "LocalOnly", "IncludeQualifiers",
                                           "IncludeClassOrigin", "PropertyList"}));
        CIMObjectPath name = p.instanceName("InstanceName");
        summary.className = _className(name.getClassName());
        CIMInstance instance = _dispatcher.getInstance(
            context, ns, name, p.boolean("LocalOnly", true), p.boolean("IncludeQualifiers", false),
            p.boolean("IncludeClassOrigin", false), p.propertyList());
        cimxml::appendInstance(out, instance);
    }
    else if (op == "EnumerateInstances")
    {
        IParams p(request.iparams,
                  _names({"ClassName", "LocalOnly", "DeepInheritance", "IncludeQualifiers",
                          "IncludeClassOrigin", "PropertyList"}));
        CIMName name = p.className("ClassName", true);
        summary.className = _className(name);
        // Each instance is encoded and passed on as its provider delivers it.
        output.append(std::move(out));
        out.clear();
        std::string item;
        _dispatcher.enumerateInstances(
            context, ns, name, p.boolean("DeepInheritance", true), p.boolean("LocalOnly", true),
            p.boolean("IncludeQualifiers", false), p.boolean("IncludeClassOrigin", false),
            p.propertyList(), [&](const CIMInstance& instance) {
                item += "<VALUE.NAMEDINSTANCE>";
                cimxml::appendInstanceName(item, instance.getPath());
                cimxml::appendInstance(item, instance);
                item += "</VALUE.NAMEDINSTANCE>";
                if (item.size() >= batchBytes)
                {
                    output.append(std::move(item));
                    item = std::string();
                    // Room for a batch at once, not grown by doubling.
                    item.reserve(batchBytes + 8 * 1024);
                }
            });
        output.append(std::move(item));
    }
    else if (op == "EnumerateInstanceNames")
    {
        IParams p(request.iparams, _names({"ClassName"}));
        CIMName name = p.className("ClassName", true);
        summary.className = _className(name);
        output.append(std::move(out));
        out.clear();
        std::string item;
        _dispatcher.enumerateInstanceNames(context, ns, name, [&](const CIMObjectPath& path) {
            cimxml::appendInstanceName(item, path);
            if (item.size() >= batchBytes)
            {
                output.append(std::move(item));
                item = std::string();
                item.reserve(batchBytes + 8 * 1024);
            }
        });
        output.append(std::move(item));
    }
    else if (op == "Associators")
    {
        IParams p(request.iparams,
                  _names({"ObjectName", "AssocClass", "ResultClass", "Role", "ResultRole",
                          "IncludeQualifiers", "IncludeClassOrigin", "PropertyList"}));
        CIMObjectPath name = p.objectName("ObjectName");
        summary.className = _className(name.getClassName());
        objects(_dispatcher.associators(
            context, ns, name, p.className("AssocClass", false), p.className("ResultClass", false),
            p.text("Role"), p.text("ResultRole"), p.boolean("IncludeQualifiers", false),
            p.boolean("IncludeClassOrigin", false), p.propertyList()));
    }
    else if (op == "AssociatorNames")
    {
        IParams p(request.iparams,
                  _names({"ObjectName", "AssocClass", "ResultClass", "Role", "ResultRole"}));
        CIMObjectPath name = p.objectName("ObjectName");
        summary.className = _className(name.getClassName());
        paths(_dispatcher.associatorNames(context, ns, name, p.className("AssocClass", false),
                                          p.className("ResultClass", false), p.text("Role"),
                                          p.text("ResultRole")),
              isClassLevel(p));
    }
    else if (op == "References")
    {
        IParams p(request.iparams, _names({"ObjectName", "ResultClass", "Role",
                                           "IncludeQualifiers", "IncludeClassOrigin",
                                           "PropertyList"}));
        CIMObjectPath name = p.objectName("ObjectName");
        summary.className = _className(name.getClassName());
        objects(_dispatcher.references(context, ns, name, p.className("ResultClass", false),
                                       p.text("Role"), p.boolean("IncludeQualifiers", false),
                                       p.boolean("IncludeClassOrigin", false), p.propertyList()));
    }
    else if (op == "ReferenceNames")
    {
        IParams p(request.iparams, _names({"ObjectName", "ResultClass", "Role"}));
        CIMObjectPath name = p.objectName("ObjectName");
        summary.className = _className(name.getClassName());
        paths(_dispatcher.referenceNames(context, ns, name, p.className("ResultClass", false),
                                         p.text("Role")),
              isClassLevel(p));
    }
    else if (op == "CreateInstance")
    {
        IParams p(request.iparams, _names({"NewInstance"}));
        const IParam* given = p.find("NewInstance");
        if (given == nullptr || given->kind != IParam::INSTANCE)
        {
            throw ParamError{CIM_ERR_INVALID_PARAMETER, "parameter NewInstance must be an INSTANCE"};
        }
        summary.className = _className(given->instance.getClassName());
        cimxml::appendInstanceName(out, _dispatcher.createInstance(context, ns, given->instance));
    }
    else if (op == "ModifyInstance")
    {
        IParams p(request.iparams,
                  _names({"ModifiedInstance", "IncludeQualifiers", "PropertyList"}));
        const IParam* given = p.find("ModifiedInstance");
        if (given == nullptr || given->kind != IParam::NAMED_INSTANCE)
        {
            throw ParamError{CIM_ERR_INVALID_PARAMETER,
                             "parameter ModifiedInstance must be a VALUE.NAMEDINSTANCE"};
        }
        summary.className = _className(given->path.getClassName());
        _dispatcher.modifyInstance(context, ns, given->instance,
                                   p.boolean("IncludeQualifiers", true), p.propertyList());
        return std::string();
    }
    else if (op == "DeleteInstance")
    {
        IParams p(request.iparams, _names({"InstanceName"}));
        CIMObjectPath name = p.instanceName("InstanceName");
        summary.className = _className(name.getClassName());
        _dispatcher.deleteInstance(context, ns, name);
        return std::string();
    }
    else if (op == "GetProperty")
    {
        IParams p(request.iparams, _names({"InstanceName", "PropertyName"}));
        CIMObjectPath name = p.instanceName("InstanceName");
        summary.className = _className(name.getClassName());
        CIMValue value = _dispatcher.getProperty(context, ns, name, p.name("PropertyName"));
        if (!value.isNull())
        {
            cimxml::appendValue(out, value);
        }
    }
    else if (op == "SetProperty")
    {
        IParams p(request.iparams, _names({"InstanceName", "PropertyName", "NewValue"}));
        CIMObjectPath name = p.instanceName("InstanceName");
        summary.className = _className(name.getClassName());
        const IParam* given = p.find("NewValue");
        CIMValue value(CIMTYPE_STRING, false);
        if (given != nullptr && given->kind == IParam::VALUE)
        {
            value = CIMValue(String(given->text.c_str()));
        }
        else if (given != nullptr && given->kind == IParam::VALUE_ARRAY)
        {
            Array<String> items;
            for (const std::string& text : given->texts)
            {
                items.append(String(text.c_str()));
            }
            value = CIMValue(items);
        }
        else if (given != nullptr && given->kind != IParam::NULL_VALUE)
        {
            throw ParamError{CIM_ERR_INVALID_PARAMETER, "parameter NewValue must be a VALUE"};
        }
        _dispatcher.setProperty(context, ns, name, p.name("PropertyName"), value);
        return std::string();
    }
    else
    {
        // Class changes, qualifier declarations, queries and unknown names.
        throw CIMException(CIM_ERR_NOT_SUPPORTED,
                           String(("operation " + op + " is not supported").c_str()));
    }
    out += "</IRETURNVALUE>";
    return out;
}

std::string CimOperationProcessor::_dispatchExtrinsic(const CimRequest& request,
                                                      const OperationContext& context,
                                                      RequestSummary& summary)
{
    summary.className = _className(request.objectPath.getClassName());
    CIMName methodName;
    try
    {
        methodName = CIMName(String(request.methodName.c_str()));
    }
    catch (const Exception&)
    {
        throw CIMException(CIM_ERR_METHOD_NOT_FOUND,
                           String(("invalid method name " + request.methodName).c_str()));
    }
    // The namespace travels separately; the path handed on is the local one.
    CIMObjectPath target = request.objectPath;
    target.setHost(String());
    target.setNameSpace(CIMNamespaceName());
    Array<CIMParamValue> outParams;
    CIMValue returned = _dispatcher.invokeMethod(context, request.nameSpace, target, methodName,
                                                 request.inParams, outParams);
    std::string out;
    cimxml::appendReturnValue(out, returned);
    for (Uint32 i = 0; i < outParams.size(); ++i)
    {
        // A null output parameter is left out: clients read an absent one as
        // null, and sblim-wbemcli crashes on a PARAMVALUE without a value.
        if (!outParams[i].getValue().isNull())
        {
            cimxml::appendParamValue(out, outParams[i]);
        }
    }
    return out;
}

namespace
{
const std::set<std::string> _pullCommon = {"filterquerylanguage", "filterquery",
                                           "operationtimeout", "continueonerror",
                                           "maxobjectcount"};

std::set<std::string> _withPullCommon(std::initializer_list<const char*> names)
{
    std::set<std::string> out = _names(names);
    out.insert(_pullCommon.begin(), _pullCommon.end());
    return out;
}

// OpenPegasus's refusal of a page larger than the server allows.
void _checkMaxObjectCount(Uint32 max, const EnumerationContexts::Limits& limits)
{
    if (max > limits.maxObjectCount)
    {
        throw CIMException(CIM_ERR_INVALID_PARAMETER,
                           "Operation maximum object count argument " +
                               String(std::to_string(max).c_str()) +
                               " too large. Maximum allowed: " +
                               String(std::to_string(limits.maxObjectCount).c_str()) + ".");
    }
}

void _appendPullTrailer(std::string& out, bool endOfSequence, const std::string& context)
{
    out += "<PARAMVALUE NAME=\"EndOfSequence\"><VALUE>";
    out += endOfSequence ? "TRUE" : "FALSE";
    out += "</VALUE></PARAMVALUE><PARAMVALUE NAME=\"EnumerationContext\"><VALUE>";
    out += cimxml::escape(context);
    out += "</VALUE></PARAMVALUE>";
}
} // namespace

bool CimOperationProcessor::_dispatchPull(const CimRequest& request,
                                          const OperationContext& context,
                                          const std::string& user, RequestSummary& summary,
                                          std::string& out)
{
    const std::string& op = request.methodName;
    const CIMNamespaceName& ns = request.nameSpace;
    const EnumerationContexts::Limits& limits = _contexts.limits();

    if (op == "PullInstancesWithPath" || op == "PullInstancePaths" || op == "CloseEnumeration" ||
        op == "EnumerationCount")
    {
        const bool closing = op == "CloseEnumeration" || op == "EnumerationCount";
        IParams p(request.iparams, closing ? _names({"EnumerationContext"})
                                           : _names({"EnumerationContext", "MaxObjectCount"}));
        const IParam* given = p.find("EnumerationContext");
        if (given == nullptr || given->kind != IParam::VALUE)
        {
            throw ParamError{CIM_ERR_INVALID_PARAMETER, "parameter EnumerationContext is required"};
        }
        if (op == "EnumerationCount")
        {
            throw CIMException(CIM_ERR_NOT_SUPPORTED, "EnumerationCount");
        }
        if (op == "CloseEnumeration")
        {
            _contexts.close(user, given->text);
            out.clear();
            return true;
        }
        bool present = false;
        Uint32 max = p.uint32("MaxObjectCount", 0, present);
        if (!present)
        {
            throw ParamError{CIM_ERR_INVALID_PARAMETER, "parameter MaxObjectCount is required"};
        }
        _checkMaxObjectCount(max, limits);
        bool end = false;
        std::vector<std::string> items = _contexts.pull(
            user, given->text,
            op == "PullInstancesWithPath" ? EnumerationContexts::INSTANCES
                                          : EnumerationContexts::PATHS,
            max, end);
        _pageOf(items, out);
        _appendPullTrailer(out, end, end ? std::string() : given->text);
        return true;
    }

    const bool enumerate = op == "OpenEnumerateInstances" || op == "OpenEnumerateInstancePaths";
    const bool associators = op == "OpenAssociatorInstances" || op == "OpenAssociatorInstancePaths";
    const bool references = op == "OpenReferenceInstances" || op == "OpenReferenceInstancePaths";
    if (!enumerate && !associators && !references)
    {
        return false;
    }
    const bool pathsOnly = op.size() > 5 && op.compare(op.size() - 5, 5, "Paths") == 0;
    std::set<std::string> allowed;
    if (enumerate)
    {
        allowed = pathsOnly ? _withPullCommon({"ClassName"})
                            : _withPullCommon({"ClassName", "DeepInheritance", "IncludeClassOrigin",
                                               "PropertyList"});
    }
    else if (associators)
    {
        allowed = pathsOnly ? _withPullCommon({"InstanceName", "AssocClass", "ResultClass", "Role",
                                               "ResultRole"})
                            : _withPullCommon({"InstanceName", "AssocClass", "ResultClass", "Role",
                                               "ResultRole", "IncludeClassOrigin",
                                               "PropertyList"});
    }
    else
    {
        allowed = pathsOnly ? _withPullCommon({"InstanceName", "ResultClass", "Role"})
                            : _withPullCommon({"InstanceName", "ResultClass", "Role",
                                               "IncludeClassOrigin", "PropertyList"});
    }
    IParams p(request.iparams, allowed);

    // The checks OpenPegasus makes on every open, in its order.
    const String language = p.text("FilterQueryLanguage");
    const String query = p.text("FilterQuery");
    if (language.size() != 0 && query.size() == 0)
    {
        throw CIMException(CIM_ERR_FAILED,
                           "filterQueryLanguage parameter without filterQuery parameter");
    }
    if (language.size() == 0 && query.size() != 0)
    {
        throw CIMException(CIM_ERR_FAILED,
                           "filterQuery parameter without filterQueryLanguage parameter");
    }
    if (language.size() != 0)
    {
        throw CIMException(CIM_ERR_FILTERED_ENUMERATION_NOT_SUPPORTED,
                           "Operation does not support FilterQuery parameters");
    }
    if (p.boolean("ContinueOnError", false))
    {
        throw CIMException(CIM_ERR_NOT_SUPPORTED, "ContinueOnError = true argument not supported.");
    }
    bool present = false;
    const Uint32 max = p.uint32("MaxObjectCount", 0, present);
    _checkMaxObjectCount(max, limits);
    Uint32 timeout = p.uint32("OperationTimeout", limits.defaultTimeout, present);
    if (present && timeout == 0)
    {
        throw CIMException(CIM_ERR_INVALID_OPERATION_TIMEOUT,
                           "Operation timeout value of 0 not allowed.");
    }
    if (timeout > limits.maxTimeout)
    {
        throw CIMException(CIM_ERR_INVALID_OPERATION_TIMEOUT,
                           "Operation timeout too large. Maximum allowed: " +
                               String(std::to_string(limits.maxTimeout).c_str()) + ".");
    }

    // The enumeration runs on the context's own thread, from copies of what
    // the request gave; each object is encoded there as it is delivered.
    const CIMNamespaceName nsCopy = ns;
    const OperationContext contextCopy = context;
    const String hostName = _hostName;
    CIMOMDispatcher& dispatcher = _dispatcher;
    // The objects of one enumeration encode to much the same size: each item
    // starts with room for the last one.
    auto lastSize = std::make_shared<std::atomic<size_t>>(0);
    auto instanceItem = [nsCopy, hostName, lastSize](const CIMObjectPath& path,
                                                     const CIMConstInstance& instance) {
        std::string item;
        item.reserve(lastSize->load(std::memory_order_relaxed) + 64);
        item += "<VALUE.INSTANCEWITHPATH>";
        cimxml::appendInstancePath(item, path, hostName, nsCopy);
        cimxml::appendInstance(item, instance);
        item += "</VALUE.INSTANCEWITHPATH>";
        lastSize->store(item.size(), std::memory_order_relaxed);
        return item;
    };
    auto pathItem = [nsCopy, hostName](const CIMObjectPath& path) {
        std::string item;
        cimxml::appendInstancePath(item, path, hostName, nsCopy);
        return item;
    };
    EnumerationContexts::Producer producer;
    if (enumerate)
    {
        const CIMName name = p.className("ClassName", true);
        summary.className = _className(name);
        if (pathsOnly)
        {
            producer = [=, &dispatcher](const std::function<void(std::string)>& emit) {
                dispatcher.enumerateInstanceNames(
                    contextCopy, nsCopy, name,
                    [&](const CIMObjectPath& path) { emit(pathItem(path)); });
            };
        }
        else
        {
            const Boolean deep = p.boolean("DeepInheritance", true);
            const Boolean origin = p.boolean("IncludeClassOrigin", false);
            const CIMPropertyList list = p.propertyList();
            producer = [=, &dispatcher](const std::function<void(std::string)>& emit) {
                dispatcher.enumerateInstances(contextCopy, nsCopy, name, deep, false, false, origin,
                                              list, [&](const CIMInstance& instance) {
                                                  emit(instanceItem(instance.getPath(), instance));
                                              });
            };
        }
    }
    else
    {
        const CIMObjectPath name = p.instanceName("InstanceName");
        summary.className = _className(name.getClassName());
        if (name.getKeyBindings().size() == 0)
        {
            throw CIMException(CIM_ERR_INVALID_PARAMETER, "Full Model Path with keys required.");
        }
        const String role = p.text("Role");
        const String resultRole = associators ? p.text("ResultRole") : String();
        const CIMName assocClass = associators ? p.className("AssocClass", false) : CIMName();
        const CIMName resultClass = p.className("ResultClass", false);
        const Boolean origin = pathsOnly ? false : p.boolean("IncludeClassOrigin", false);
        const CIMPropertyList list = pathsOnly ? CIMPropertyList() : p.propertyList();
        producer = [=, &dispatcher](const std::function<void(std::string)>& emit) {
            if (pathsOnly)
            {
                Array<CIMObjectPath> found =
                    associators ? dispatcher.associatorNames(contextCopy, nsCopy, name, assocClass,
                                                             resultClass, role, resultRole)
                                : dispatcher.referenceNames(contextCopy, nsCopy, name,
                                                            resultClass, role);
                for (Uint32 i = 0; i < found.size(); ++i)
                {
                    emit(pathItem(found[i]));
                }
                return;
            }
            Array<CIMObject> found =
                associators ? dispatcher.associators(contextCopy, nsCopy, name, assocClass,
                                                     resultClass, role, resultRole, false, origin,
                                                     list)
                            : dispatcher.references(contextCopy, nsCopy, name, resultClass, role,
                                                    false, origin, list);
            for (Uint32 i = 0; i < found.size(); ++i)
            {
                if (found[i].isInstance())
                {
                    emit(instanceItem(found[i].getPath(), CIMConstInstance(found[i])));
                }
            }
        };
    }

    std::vector<std::string> first;
    bool end = false;
    const std::string name = _contexts.open(
        user, pathsOnly ? EnumerationContexts::PATHS : EnumerationContexts::INSTANCES, producer,
        timeout, max, first, end);
    _pageOf(first, out);
    _appendPullTrailer(out, end, name);
    return true;
}

} // namespace orvhost
