#include "RemoteConnection.h"

#include <CimXml/CimXmlDecoder.h>
#include <CimXml/CimXmlWriter.h>
#include <Pegasus/Client/CIMClientException.h>
#include <Pegasus/Common/Exception.h>

#include <curl/curl.h>
#include <libxml/parser.h>

#include <strings.h>

#include <cstdlib>
#include <memory>

PEGASUS_NAMESPACE_BEGIN

namespace cimxml = orv::cimxml;

namespace
{

std::string _std(const String& text)
{
    return std::string((const char*)text.getCString());
}

size_t _collect(char* data, size_t size, size_t count, void* target)
{
    static_cast<std::string*>(target)->append(data, size * count);
    return size * count;
}

// The status line's reason and the CIMError headers of an HTTP error.
struct HttpHeaders
{
    std::string reason;
    std::string cimError;
    std::string cimErrorDetail;
};

std::string _trim(std::string text)
{
    while (!text.empty() && (text.back() == '\r' || text.back() == '\n' || text.back() == ' '))
    {
        text.pop_back();
    }
    size_t start = text.find_first_not_of(' ');
    return start == std::string::npos ? std::string() : text.substr(start);
}

size_t _header(char* data, size_t size, size_t count, void* target)
{
    HttpHeaders& headers = *static_cast<HttpHeaders*>(target);
    std::string line(data, size * count);
    if (line.compare(0, 5, "HTTP/") == 0)
    {
        size_t code = line.find(' ');
        size_t reason = code == std::string::npos ? code : line.find(' ', code + 1);
        headers.reason = reason == std::string::npos ? "" : _trim(line.substr(reason + 1));
        headers.cimError.clear();
        headers.cimErrorDetail.clear();
        return size * count;
    }
    size_t colon = line.find(':');
    if (colon != std::string::npos)
    {
        std::string name = line.substr(0, colon);
        if (strcasecmp(name.c_str(), "CIMError") == 0)
        {
            headers.cimError = _trim(line.substr(colon + 1));
        }
        else if (strcasecmp(name.c_str(), "PGErrorDetail") == 0)
        {
            headers.cimErrorDetail = _trim(line.substr(colon + 1));
        }
    }
    return size * count;
}

// Transport failures as OpenPegasus's client reports them.
[[noreturn]] void _throwTransport(CURLcode code, const char* detail, const std::string& url)
{
    std::string text = url + ": " + (detail[0] != '\0' ? detail : curl_easy_strerror(code));
    switch (code)
    {
    case CURLE_OPERATION_TIMEDOUT:
        throw ConnectionTimeoutException();
    case CURLE_URL_MALFORMAT:
        throw InvalidLocatorException(String(text.c_str()));
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
        throw SSLException(String(text.c_str()));
    default:
        throw CannotConnectException(String(text.c_str()));
    }
}

struct DocFree
{
    void operator()(xmlDoc* doc) const
    {
        xmlFreeDoc(doc);
    }
};

struct Headers
{
    curl_slist* list = nullptr;
    ~Headers()
    {
        curl_slist_free_all(list);
    }
    void add(const std::string& line)
    {
        list = curl_slist_append(list, line.c_str());
    }
};

std::string _escapeHeader(const std::string& text)
{
    char* escaped = curl_easy_escape(nullptr, text.c_str(), static_cast<int>(text.size()));
    std::string out = escaped != nullptr ? escaped : text;
    curl_free(escaped);
    return out;
}

void _boolParam(std::string& out, const char* name, Boolean value)
{
    out += std::string("<IPARAMVALUE NAME=\"") + name + "\"><VALUE>" +
           (value ? "TRUE" : "FALSE") + "</VALUE></IPARAMVALUE>";
}

void _classParam(std::string& out, const char* name, const CIMName& className)
{
    if (className.isNull())
    {
        return;
    }
    out += std::string("<IPARAMVALUE NAME=\"") + name + "\">";
    cimxml::appendClassName(out, className);
    out += "</IPARAMVALUE>";
}

void _stringParam(std::string& out, const char* name, const String& value)
{
    if (value.size() == 0)
    {
        return;
    }
    out += std::string("<IPARAMVALUE NAME=\"") + name + "\"><VALUE>" +
           cimxml::escape(cimxml::str(value)) + "</VALUE></IPARAMVALUE>";
}

void _propertyListParam(std::string& out, const CIMPropertyList& propertyList)
{
    if (propertyList.isNull())
    {
        return;
    }
    out += "<IPARAMVALUE NAME=\"PropertyList\"><VALUE.ARRAY>";
    for (Uint32 i = 0; i < propertyList.size(); ++i)
    {
        out += "<VALUE>" + cimxml::escape(cimxml::str(propertyList[i].getString())) + "</VALUE>";
    }
    out += "</VALUE.ARRAY></IPARAMVALUE>";
}

void _objectNameParam(std::string& out, const CIMObjectPath& objectName)
{
    out += "<IPARAMVALUE NAME=\"ObjectName\">";
    if (objectName.getKeyBindings().size() == 0)
    {
        cimxml::appendClassName(out, objectName.getClassName());
    }
    else
    {
        cimxml::appendInstanceName(out, objectName);
    }
    out += "</IPARAMVALUE>";
}

// The payload of one response: its (I)METHODRESPONSE element, kept with the
// document that owns it. A CIM error in it is thrown as CIMException.
class Response
{
public:
    Response(const std::string& body, const std::string& method)
    {
        _doc.reset(xmlReadMemory(body.data(), static_cast<int>(body.size()), "response.xml",
                                 nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR |
                                              XML_PARSE_NOWARNING | XML_PARSE_HUGE));
        if (!_doc)
        {
            throw CIMClientXmlException("the response is not well-formed XML");
        }
        const xmlNode* node = xmlDocGetRootElement(_doc.get());
        const char* path[] = {"CIM", "MESSAGE", "SIMPLERSP"};
        for (const char* name : path)
        {
            if (node == nullptr || !cimxml::isElement(node, name))
            {
                throw CIMClientXmlException(String("the response lacks ") + name);
            }
            std::vector<const xmlNode*> kids = cimxml::elementChildren(node);
            node = kids.size() == 1 ? kids[0] : nullptr;
        }
        std::string name;
        if (node == nullptr ||
            !(cimxml::isElement(node, "IMETHODRESPONSE") ||
              cimxml::isElement(node, "METHODRESPONSE")) ||
            !cimxml::attribute(node, "NAME", name) || name != method)
        {
            throw CIMClientResponseException(
                String(("the response does not answer " + method).c_str()));
        }
        _call = node;
        for (const xmlNode* child : cimxml::elementChildren(node))
        {
            if (cimxml::isElement(child, "ERROR"))
            {
                std::string code = "1";
                std::string description;
                cimxml::attribute(child, "CODE", code);
                cimxml::attribute(child, "DESCRIPTION", description);
                throw CIMException(CIMStatusCode(std::atoi(code.c_str())),
                                   String(description.c_str()));
            }
        }
    }

    // The elements of IRETURNVALUE (none when it is absent).
    std::vector<const xmlNode*> returned() const
    {
        for (const xmlNode* child : cimxml::elementChildren(_call))
        {
            if (cimxml::isElement(child, "IRETURNVALUE"))
            {
                return cimxml::elementChildren(child);
            }
        }
        return std::vector<const xmlNode*>();
    }

    const xmlNode* call() const
    {
        return _call;
    }

private:
    std::unique_ptr<xmlDoc, DocFree> _doc;
    const xmlNode* _call = nullptr;
};

// Decoding faults in an answer are the server's, not the caller's.
template <class F> auto _decode(F f) -> decltype(f())
{
    try
    {
        return f();
    }
    catch (const cimxml::DecodeFault& fault)
    {
        throw CIMClientXmlException(String(("bad response: " + fault.text).c_str()));
    }
    catch (const CIMException& e)
    {
        throw CIMClientXmlException("bad response: " + e.getMessage());
    }
}

CIMObject _objectWithPath(const xmlNode* node)
{
    std::vector<const xmlNode*> parts = cimxml::elementChildren(node);
    if (!cimxml::isElement(node, "VALUE.OBJECTWITHPATH") || parts.size() != 2 ||
        !cimxml::isElement(parts[1], "INSTANCE"))
    {
        cimxml::fault("expected VALUE.OBJECTWITHPATH holding an instance, found " +
                      cimxml::nodeName(node));
    }
    CIMInstance instance = cimxml::decodeInstance(parts[1]);
    instance.setPath(cimxml::decodeObjectPath(parts[0]));
    return CIMObject(instance);
}

CIMObjectPath _objectPathElement(const xmlNode* node)
{
    std::vector<const xmlNode*> parts = cimxml::elementChildren(node);
    if (!cimxml::isElement(node, "OBJECTPATH") || parts.size() != 1)
    {
        cimxml::fault("expected OBJECTPATH, found " + cimxml::nodeName(node));
    }
    return cimxml::decodeObjectPath(parts[0]);
}

// The objects (or paths) an association operation returned, each decoded.
Array<CIMObject> _objectsOf(const Response& response)
{
    return _decode([&] {
        Array<CIMObject> out;
        for (const xmlNode* node : response.returned())
        {
            out.append(_objectWithPath(node));
        }
        return out;
    });
}

Array<CIMObjectPath> _pathsOf(const Response& response)
{
    return _decode([&] {
        Array<CIMObjectPath> out;
        for (const xmlNode* node : response.returned())
        {
            out.append(_objectPathElement(node));
        }
        return out;
    });
}

} // namespace

RemoteConnection::RemoteConnection(const String& host, Uint32 port, bool https,
                                   const String& userName, const String& password,
                                   const String& trustStore, const String& certPath,
                                   const String& keyPath, Uint32 timeoutMilliseconds)
    : _curl(nullptr), _user(_std(userName)), _password(_std(password)),
      _trustStore(_std(trustStore)), _certPath(_std(certPath)), _keyPath(_std(keyPath)),
      _timeout(timeoutMilliseconds), _messageId(0)
{
    static const bool initialized = [] {
        curl_global_init(CURL_GLOBAL_DEFAULT);
        xmlInitParser();
        return true;
    }();
    (void)initialized;
    std::string name = _std(host);
    if (name.empty() || name.find_first_of("/?#@ ") != std::string::npos)
    {
        throw InvalidLocatorException(host);
    }
    if (name.find(':') != std::string::npos && name[0] != '[')
    {
        name = "[" + name + "]"; // an IPv6 literal
    }
    _url = std::string(https ? "https://" : "http://") + name + ":" + std::to_string(port) +
           "/cimom";

    // Reach the server now (TCP, and TLS for https), as OpenPegasus connects
    // its socket in connect(); requests later reuse one handle and its
    // connection.
    CURL* probe = curl_easy_init();
    if (probe == nullptr)
    {
        throw CannotCreateSocketException();
    }
    _setCommonOptions(probe);
    curl_easy_setopt(probe, CURLOPT_CONNECT_ONLY, 1L);
    char error[CURL_ERROR_SIZE] = "";
    curl_easy_setopt(probe, CURLOPT_ERRORBUFFER, error);
    CURLcode code = curl_easy_perform(probe);
    curl_easy_cleanup(probe);
    if (code != CURLE_OK)
    {
        _throwTransport(code, error, _url);
    }
    _curl = curl_easy_init();
    if (_curl == nullptr)
    {
        throw CannotCreateSocketException();
    }
}

RemoteConnection::~RemoteConnection()
{
    if (_curl != nullptr)
    {
        curl_easy_cleanup(_curl);
    }
}

void RemoteConnection::setTimeout(Uint32 timeoutMilliseconds)
{
    _timeout = timeoutMilliseconds;
}

void RemoteConnection::_setCommonOptions(CURL* curl)
{
    curl_easy_setopt(curl, CURLOPT_URL, _url.c_str());
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, static_cast<long>(_timeout));
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(_timeout));
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
    // Without a trust store the server is not verified, as with
    // OpenPegasus's SSLContext; with one, its chain must lead to it (the
    // name in the certificate is not compared, as OpenPegasus does not).
    const bool verify = !_trustStore.empty();
    curl_easy_setopt(curl, CURLOPT_SSL_VERIFYPEER, verify ? 1L : 0L);
    curl_easy_setopt(curl, CURLOPT_SSL_VERIFYHOST, 0L);
    if (verify)
    {
        curl_easy_setopt(curl, _trustStore.back() == '/' ? CURLOPT_CAPATH : CURLOPT_CAINFO,
                         _trustStore.c_str());
    }
    if (!_certPath.empty())
    {
        curl_easy_setopt(curl, CURLOPT_SSLCERT, _certPath.c_str());
        curl_easy_setopt(curl, CURLOPT_SSLKEY, _keyPath.c_str());
    }
}

std::string RemoteConnection::_post(const std::string& method, const std::string& object,
                                    const std::string& call)
{
    std::string body = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                       "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"" +
                       std::to_string(++_messageId) +
                       "\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>" + call +
                       "</SIMPLEREQ></MESSAGE></CIM>\n";
    Headers headers;
    headers.add("Content-Type: application/xml; charset=\"utf-8\"");
    headers.add("CIMOperation: MethodCall");
    headers.add("CIMMethod: " + _escapeHeader(method));
    headers.add("CIMObject: " + _escapeHeader(object));
    headers.add("CIMProtocolVersion: 1.0");
    headers.add("Expect:");

    std::string answer;
    HttpHeaders httpHeaders;
    char error[CURL_ERROR_SIZE] = "";
    curl_easy_reset(_curl);
    _setCommonOptions(_curl);
    curl_easy_setopt(_curl, CURLOPT_HTTPHEADER, headers.list);
    curl_easy_setopt(_curl, CURLOPT_POSTFIELDS, body.c_str());
    curl_easy_setopt(_curl, CURLOPT_POSTFIELDSIZE, static_cast<long>(body.size()));
    curl_easy_setopt(_curl, CURLOPT_WRITEFUNCTION, _collect);
    curl_easy_setopt(_curl, CURLOPT_WRITEDATA, &answer);
    curl_easy_setopt(_curl, CURLOPT_HEADERFUNCTION, _header);
    curl_easy_setopt(_curl, CURLOPT_HEADERDATA, &httpHeaders);
    curl_easy_setopt(_curl, CURLOPT_ERRORBUFFER, error);
    if (!_user.empty())
    {
        curl_easy_setopt(_curl, CURLOPT_HTTPAUTH, CURLAUTH_BASIC);
        curl_easy_setopt(_curl, CURLOPT_USERNAME, _user.c_str());
        curl_easy_setopt(_curl, CURLOPT_PASSWORD, _password.c_str());
    }
    CURLcode code = curl_easy_perform(_curl);
    if (code != CURLE_OK)
    {
        _throwTransport(code, error, _url);
    }
    long status = 0;
    curl_easy_getinfo(_curl, CURLINFO_RESPONSE_CODE, &status);
    if (status != 200)
    {
        throw CIMClientHTTPErrorException(static_cast<Uint32>(status),
                                          String(httpHeaders.reason.c_str()),
                                          String(httpHeaders.cimError.c_str()),
                                          String(httpHeaders.cimErrorDetail.c_str()));
    }
    return answer;
}

std::string RemoteConnection::_intrinsic(const char* method, const CIMNamespaceName& nameSpace,
                                         const std::string& params)
{
    std::string call = std::string("<IMETHODCALL NAME=\"") + method + "\">";
    cimxml::appendLocalNamespacePath(call, nameSpace);
    call += params + "</IMETHODCALL>";
    return _post(method, _std(nameSpace.getString()), call);
}

CIMInstance RemoteConnection::getInstance(const CIMNamespaceName& nameSpace,
                                          const CIMObjectPath& instanceName, Boolean localOnly,
                                          Boolean includeQualifiers, Boolean includeClassOrigin,
                                          const CIMPropertyList& propertyList)
{
    std::string params = "<IPARAMVALUE NAME=\"InstanceName\">";
    cimxml::appendInstanceName(params, instanceName);
    params += "</IPARAMVALUE>";
    _boolParam(params, "LocalOnly", localOnly);
    _boolParam(params, "IncludeQualifiers", includeQualifiers);
    _boolParam(params, "IncludeClassOrigin", includeClassOrigin);
    _propertyListParam(params, propertyList);
    Response response(_intrinsic("GetInstance", nameSpace, params), "GetInstance");
    return _decode([&] {
        std::vector<const xmlNode*> found = response.returned();
        if (found.size() != 1 || !cimxml::isElement(found[0], "INSTANCE"))
        {
            cimxml::fault("GetInstance must return one INSTANCE");
        }
        CIMInstance instance = cimxml::decodeInstance(found[0]);
        instance.setPath(instanceName);
        return instance;
    });
}

Array<CIMInstance> RemoteConnection::enumerateInstances(
    const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance,
    Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    std::string params;
    _classParam(params, "ClassName", className);
    _boolParam(params, "DeepInheritance", deepInheritance);
    _boolParam(params, "LocalOnly", localOnly);
    _boolParam(params, "IncludeQualifiers", includeQualifiers);
    _boolParam(params, "IncludeClassOrigin", includeClassOrigin);
    _propertyListParam(params, propertyList);
    Response response(_intrinsic("EnumerateInstances", nameSpace, params), "EnumerateInstances");
    return _decode([&] {
        Array<CIMInstance> out;
        for (const xmlNode* node : response.returned())
        {
            std::vector<const xmlNode*> parts = cimxml::elementChildren(node);
            if (!cimxml::isElement(node, "VALUE.NAMEDINSTANCE") || parts.size() != 2)
            {
                cimxml::fault("expected VALUE.NAMEDINSTANCE, found " + cimxml::nodeName(node));
            }
            CIMInstance instance = cimxml::decodeInstance(parts[1]);
            instance.setPath(cimxml::decodeInstanceName(parts[0]));
            out.append(instance);
        }
        return out;
    });
}

Array<CIMObjectPath> RemoteConnection::enumerateInstanceNames(const CIMNamespaceName& nameSpace,
                                                              const CIMName& className)
{
    std::string params;
    _classParam(params, "ClassName", className);
    Response response(_intrinsic("EnumerateInstanceNames", nameSpace, params),
                      "EnumerateInstanceNames");
    return _decode([&] {
        Array<CIMObjectPath> out;
        for (const xmlNode* node : response.returned())
        {
            out.append(cimxml::decodeInstanceName(node));
        }
        return out;
    });
}

Array<CIMObject> RemoteConnection::associators(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    std::string params;
    _objectNameParam(params, objectName);
    _classParam(params, "AssocClass", assocClass);
    _classParam(params, "ResultClass", resultClass);
    _stringParam(params, "Role", role);
    _stringParam(params, "ResultRole", resultRole);
    _boolParam(params, "IncludeQualifiers", includeQualifiers);
    _boolParam(params, "IncludeClassOrigin", includeClassOrigin);
    _propertyListParam(params, propertyList);
    Response response(_intrinsic("Associators", nameSpace, params), "Associators");
    return _objectsOf(response);
}

Array<CIMObjectPath> RemoteConnection::associatorNames(const CIMNamespaceName& nameSpace,
                                                       const CIMObjectPath& objectName,
                                                       const CIMName& assocClass,
                                                       const CIMName& resultClass,
                                                       const String& role,
                                                       const String& resultRole)
{
    std::string params;
    _objectNameParam(params, objectName);
    _classParam(params, "AssocClass", assocClass);
    _classParam(params, "ResultClass", resultClass);
    _stringParam(params, "Role", role);
    _stringParam(params, "ResultRole", resultRole);
    Response response(_intrinsic("AssociatorNames", nameSpace, params), "AssociatorNames");
    return _pathsOf(response);
}

Array<CIMObject> RemoteConnection::references(const CIMNamespaceName& nameSpace,
                                              const CIMObjectPath& objectName,
                                              const CIMName& resultClass, const String& role,
                                              Boolean includeQualifiers,
                                              Boolean includeClassOrigin,
                                              const CIMPropertyList& propertyList)
{
    std::string params;
    _objectNameParam(params, objectName);
    _classParam(params, "ResultClass", resultClass);
    _stringParam(params, "Role", role);
    _boolParam(params, "IncludeQualifiers", includeQualifiers);
    _boolParam(params, "IncludeClassOrigin", includeClassOrigin);
    _propertyListParam(params, propertyList);
    Response response(_intrinsic("References", nameSpace, params), "References");
    return _objectsOf(response);
}

Array<CIMObjectPath> RemoteConnection::referenceNames(const CIMNamespaceName& nameSpace,
                                                      const CIMObjectPath& objectName,
                                                      const CIMName& resultClass,
                                                      const String& role)
{
    std::string params;
    _objectNameParam(params, objectName);
    _classParam(params, "ResultClass", resultClass);
    _stringParam(params, "Role", role);
    Response response(_intrinsic("ReferenceNames", nameSpace, params), "ReferenceNames");
    return _pathsOf(response);
}

CIMValue RemoteConnection::invokeMethod(const CIMNamespaceName& nameSpace,
                                        const CIMObjectPath& instanceName,
                                        const CIMName& methodName,
                                        const Array<CIMParamValue>& inParameters,
                                        Array<CIMParamValue>& outParameters)
{
    const std::string method = _std(methodName.getString());
    const bool isClass = instanceName.getKeyBindings().size() == 0;
    std::string call = "<METHODCALL NAME=\"" + cimxml::escape(method) + "\">";
    call += isClass ? "<LOCALCLASSPATH>" : "<LOCALINSTANCEPATH>";
    cimxml::appendLocalNamespacePath(call, nameSpace);
    if (isClass)
    {
        cimxml::appendClassName(call, instanceName.getClassName());
    }
    else
    {
        cimxml::appendInstanceName(call, instanceName);
    }
    call += isClass ? "</LOCALCLASSPATH>" : "</LOCALINSTANCEPATH>";
    for (Uint32 i = 0; i < inParameters.size(); ++i)
    {
        cimxml::appendParamValue(call, inParameters[i]);
    }
    call += "</METHODCALL>";
    CIMObjectPath local(String(), CIMNamespaceName(), instanceName.getClassName(),
                        instanceName.getKeyBindings());
    const std::string object = _std(nameSpace.getString()) + ":" + _std(local.toString());
    Response response(_post(method, object, call), method);
    return _decode([&] {
        CIMValue returned;
        Array<CIMParamValue> out;
        for (const xmlNode* node : cimxml::elementChildren(response.call()))
        {
            if (cimxml::isElement(node, "PARAMVALUE"))
            {
                out.append(cimxml::decodeParamValue(node));
            }
            else if (cimxml::isElement(node, "RETURNVALUE"))
            {
                std::vector<const xmlNode*> kids = cimxml::elementChildren(node);
                std::string typeText;
                CIMType type = CIMTYPE_STRING;
                if (cimxml::attribute(node, "PARAMTYPE", typeText) &&
                    !cimxml::parseType(typeText, type))
                {
                    cimxml::fault("unknown PARAMTYPE \"" + typeText + "\" of RETURNVALUE");
                }
                if (kids.size() == 1 && cimxml::isElement(kids[0], "VALUE.REFERENCE"))
                {
                    std::vector<const xmlNode*> inner = cimxml::elementChildren(kids[0]);
                    if (inner.size() != 1)
                    {
                        cimxml::fault("VALUE.REFERENCE of RETURNVALUE needs exactly one path");
                    }
                    returned = CIMValue(cimxml::decodeObjectPath(inner[0]));
                }
                else if (kids.size() == 1 && cimxml::isElement(kids[0], "VALUE"))
                {
                    returned = cimxml::valueFromText(
                        CIMValue(String(cimxml::nodeText(kids[0]).c_str())), type, false,
                        "the return value");
                }
            }
        }
        outParameters = out;
        return returned;
    });
}

PEGASUS_NAMESPACE_END
