#include "CimXmlReader.h"

#include <CimXml/CimXmlDecoder.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstring>
#include <memory>
#include <new>
#include <set>

using namespace Pegasus;

namespace orvhost
{

namespace
{
// Paths, instances and values decode as in any CIM-XML message; what is
// particular to requests stays here.
using namespace ::orv::cimxml;

const char notWellFormed[] = "request-not-well-formed";
const char notValid[] = "request-not-valid";

struct DocFree
{
    void operator()(xmlDoc* doc) const
    {
        xmlFreeDoc(doc);
    }
};

// An array parameter's values counted before any is decoded.
void _checkArraySize(const std::string& name, const xmlNode* value)
{
    if (!isElement(value, "VALUE.ARRAY") && !isElement(value, "VALUE.REFARRAY"))
    {
        return;
    }
    size_t values = 0;
    for (const xmlNode* item = value->children; item; item = item->next)
    {
        if (item->type == XML_ELEMENT_NODE && ++values > RequestLimits::maxArrayValues)
        {
            fault("parameter " + name + " holds more than " +
                  std::to_string(RequestLimits::maxArrayValues) + " values, the limit");
        }
    }
}

IParam _iparam(const xmlNode* node)
{
    IParam param;
    param.name = requiredAttribute(node, "NAME");
    std::vector<const xmlNode*> kids = elementChildren(node);
    if (kids.empty())
    {
        param.kind = IParam::NULL_VALUE;
        return param;
    }
    if (kids.size() > 1)
    {
        fault("parameter " + param.name + " has more than one value");
    }
    const xmlNode* value = kids[0];
    param.element = nodeName(value);
    _checkArraySize(param.name, value);
    if (isElement(value, "VALUE"))
    {
        param.kind = IParam::VALUE;
        param.text = nodeText(value);
    }
    else if (isElement(value, "VALUE.ARRAY"))
    {
        param.kind = IParam::VALUE_ARRAY;
        for (const xmlNode* item : elementChildren(value))
        {
            if (!isElement(item, "VALUE"))
            {
                fault("unexpected " + nodeName(item) + " in VALUE.ARRAY of " + param.name);
            }
            param.texts.push_back(nodeText(item));
        }
    }
    else if (isElement(value, "CLASSNAME"))
    {
        param.kind = IParam::CLASS_NAME;
        param.className = cimName(requiredAttribute(value, "NAME"), "class name");
    }
    else if (isElement(value, "INSTANCENAME"))
    {
        param.kind = IParam::INSTANCE_NAME;
        param.path = decodeInstanceName(value);
    }
    else if (isElement(value, "INSTANCE"))
    {
        param.kind = IParam::INSTANCE;
        param.instance = decodeInstance(value);
    }
    else if (isElement(value, "VALUE.NAMEDINSTANCE"))
    {
        std::vector<const xmlNode*> parts = elementChildren(value);
        if (parts.size() != 2 || !isElement(parts[0], "INSTANCENAME") ||
            !isElement(parts[1], "INSTANCE"))
        {
            fault("VALUE.NAMEDINSTANCE of " + param.name +
                  " needs an INSTANCENAME and an INSTANCE");
        }
        param.kind = IParam::NAMED_INSTANCE;
        param.path = decodeInstanceName(parts[0]);
        param.instance = decodeInstance(parts[1]);
        param.instance.setPath(param.path);
    }
    else
    {
        param.kind = IParam::OTHER;
    }
    return param;
}

void _checkVersion(const xmlNode* node, const char* attr, const char* errorName)
{
    std::string version;
    if (!attribute(node, attr, version))
    {
        throw CimProtocolError(400, notValid, nodeName(node) + " lacks " + attr);
    }
    // Major version 2 of the DTD and the CIM model; 1.x of the protocol.
    const char* major = strcmp(attr, "PROTOCOLVERSION") == 0 ? "1." : "2.";
    if (version.compare(0, 2, major) != 0)
    {
        throw CimProtocolError(501, errorName,
                               std::string(attr) + " \"" + version + "\" is not supported");
    }
}

void _decodeCall(const xmlNode* call, CimRequest& request)
{
    std::vector<const xmlNode*> kids = elementChildren(call);
    size_t next = 0;
    if (request.intrinsic)
    {
        if (kids.empty() || !isElement(kids[0], "LOCALNAMESPACEPATH"))
        {
            throw CimProtocolError(400, notValid, "IMETHODCALL needs a LOCALNAMESPACEPATH");
        }
        request.nameSpaceText = namespaceText(kids[0]);
        request.nameSpace = namespaceName(request.nameSpaceText);
        for (next = 1; next < kids.size(); ++next)
        {
            if (!isElement(kids[next], "IPARAMVALUE"))
            {
                throw CimProtocolError(400, notValid,
                                       "unexpected " + nodeName(kids[next]) + " in IMETHODCALL");
            }
            request.iparams.push_back(_iparam(kids[next]));
        }
        return;
    }
    if (kids.empty() ||
        !(isElement(kids[0], "LOCALINSTANCEPATH") || isElement(kids[0], "LOCALCLASSPATH")))
    {
        throw CimProtocolError(400, notValid,
                               "METHODCALL needs a LOCALINSTANCEPATH or LOCALCLASSPATH");
    }
    std::vector<const xmlNode*> pathParts = elementChildren(kids[0]);
    if (!pathParts.empty() && isElement(pathParts[0], "LOCALNAMESPACEPATH"))
    {
        request.nameSpaceText = namespaceText(pathParts[0]);
    }
    request.objectPath = decodeObjectPath(kids[0]);
    request.nameSpace = request.objectPath.getNameSpace();
    std::set<std::string> seen;
    for (next = 1; next < kids.size(); ++next)
    {
        if (!isElement(kids[next], "PARAMVALUE"))
        {
            throw CimProtocolError(400, notValid,
                                   "unexpected " + nodeName(kids[next]) + " in METHODCALL");
        }
        std::vector<const xmlNode*> values = elementChildren(kids[next]);
        if (!values.empty())
        {
            _checkArraySize(requiredAttribute(kids[next], "NAME"), values[0]);
        }
        CIMParamValue param = decodeParamValue(kids[next]);
        String folded = param.getParameterName();
        folded.toLower();
        if (!seen.insert(static_cast<const char*>(folded.getCString())).second)
        {
            fault("parameter " + requiredAttribute(kids[next], "NAME") + " given twice");
        }
        request.inParams.append(param);
    }
}

const char* _skipPast(const char* p, const char* end, const char* terminator)
{
    const size_t n = strlen(terminator);
    for (; p + n <= end; ++p)
    {
        if (memcmp(p, terminator, n) == 0)
        {
            return p + n;
        }
    }
    return nullptr;
}

// One linear pass over the bytes before libxml2 sees them: libxml2 compares
// an element's attributes pairwise and builds a node per element, so both
// counts are capped here. It counts rather than checks; what it misreads
// libxml2 refuses afterwards.
void _prescan(const std::string& body)
{
    const char* p = body.data();
    const char* const end = p + body.size();
    size_t elements = 0;
    while ((p = static_cast<const char*>(memchr(p, '<', static_cast<size_t>(end - p)))) != nullptr)
    {
        ++p;
        const char* terminator = nullptr;
        if (end - p >= 3 && memcmp(p, "!--", 3) == 0)
        {
            terminator = "-->";
        }
        else if (end - p >= 8 && memcmp(p, "![CDATA[", 8) == 0)
        {
            terminator = "]]>";
        }
        else if (p < end && *p == '?')
        {
            terminator = "?>";
        }
        else if (p < end && *p == '!')
        {
            // No client of ours needs a DTD; refusing it rules out entity
            // tricks and declarations libxml2 would have to digest.
            throw CimProtocolError(400, notValid, "a DOCTYPE is not accepted");
        }
        else if (p < end && *p == '/')
        {
            terminator = ">";
        }
        if (terminator != nullptr)
        {
            p = _skipPast(p, end, terminator);
            if (p == nullptr)
            {
                return;
            }
            continue;
        }
        if (++elements > RequestLimits::maxElements)
        {
            throw CimProtocolError(400, notValid,
                                   "the request has more than " +
                                       std::to_string(RequestLimits::maxElements) +
                                       " elements, the limit");
        }
        size_t attributes = 0;
        char quote = 0;
        for (; p < end; ++p)
        {
            if (quote != 0)
            {
                if (*p == quote)
                {
                    quote = 0;
                }
            }
            else if (*p == '"' || *p == '\'')
            {
                quote = *p;
            }
            else if (*p == '=' && ++attributes > RequestLimits::maxAttributesPerElement)
            {
                throw CimProtocolError(400, notValid,
                                       "an element has more than " +
                                           std::to_string(RequestLimits::maxAttributesPerElement) +
                                           " attributes, the limit");
            }
            else if (*p == '>')
            {
                break;
            }
        }
    }
}
} // namespace

static void _quietXmlError(void*, const char*, ...) {}

void initXmlLibrary()
{
    xmlInitParser();
}

CimRequest parseCimRequest(const std::string& body)
{
    if (body.empty())
    {
        throw CimProtocolError(400, notWellFormed, "empty request body");
    }
    _prescan(body);
    // Encoding and I/O faults in a client's bytes would otherwise be printed
    // on the server's stderr, once per bad request; they are answered below.
    xmlSetGenericErrorFunc(nullptr, _quietXmlError);
    std::unique_ptr<xmlDoc, DocFree> doc(
        xmlReadMemory(body.data(), static_cast<int>(body.size()), "request.xml", nullptr,
                      XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
    if (!doc)
    {
        const xmlError* error = xmlGetLastError();
        std::string detail = "the request is not well-formed XML";
        if (error != nullptr && error->message != nullptr)
        {
            detail += std::string(": line ") + std::to_string(error->line) + ": " + error->message;
            while (!detail.empty() && detail.back() == '\n')
            {
                detail.pop_back();
            }
        }
        throw CimProtocolError(400, notWellFormed, detail);
    }
    // No client of ours needs a DTD; refusing it rules out entity tricks.
    if (doc->intSubset != nullptr || doc->extSubset != nullptr)
    {
        throw CimProtocolError(400, notValid, "a DOCTYPE is not accepted");
    }
    const xmlNode* root = xmlDocGetRootElement(doc.get());
    if (root == nullptr || !isElement(root, "CIM"))
    {
        throw CimProtocolError(400, notValid, "the root element is not CIM");
    }
    _checkVersion(root, "CIMVERSION", "unsupported-cim-version");
    _checkVersion(root, "DTDVERSION", "unsupported-dtd-version");
    std::vector<const xmlNode*> kids = elementChildren(root);
    if (kids.size() != 1 || !isElement(kids[0], "MESSAGE"))
    {
        throw CimProtocolError(400, notValid, "CIM must hold one MESSAGE");
    }
    const xmlNode* message = kids[0];
    CimRequest request;
    if (!attribute(message, "ID", request.messageId))
    {
        throw CimProtocolError(400, notValid, "MESSAGE lacks ID");
    }
    _checkVersion(message, "PROTOCOLVERSION", "unsupported-protocol-version");
    attribute(message, "PROTOCOLVERSION", request.protocolVersion);
    kids = elementChildren(message);
    if (kids.size() == 1 && isElement(kids[0], "MULTIREQ"))
    {
        throw CimProtocolError(501, "multiple-requests-unsupported",
                               "multiple requests in one message are not supported");
    }
    if (kids.size() != 1 || !isElement(kids[0], "SIMPLEREQ"))
    {
        throw CimProtocolError(400, notValid, "MESSAGE must hold a SIMPLEREQ");
    }
    const xmlNode* call = nullptr;
    for (const xmlNode* child : elementChildren(kids[0]))
    {
        if (isElement(child, "CORRELATOR"))
        {
            continue;
        }
        if (call != nullptr || !(isElement(child, "IMETHODCALL") || isElement(child, "METHODCALL")))
        {
            throw CimProtocolError(400, notValid,
                                   "SIMPLEREQ must hold one IMETHODCALL or METHODCALL");
        }
        call = child;
    }
    if (call == nullptr)
    {
        throw CimProtocolError(400, notValid, "SIMPLEREQ must hold one IMETHODCALL or METHODCALL");
    }
    request.intrinsic = isElement(call, "IMETHODCALL");
    if (!attribute(call, "NAME", request.methodName) || request.methodName.empty())
    {
        throw CimProtocolError(400, notValid, nodeName(call) + " lacks NAME");
    }
    try
    {
        _decodeCall(call, request);
    }
    catch (const DecodeFault& fault)
    {
        request.errorCode = fault.code;
        request.errorText = fault.text;
    }
    catch (const CIMException& e)
    {
        request.errorCode = e.getCode();
        request.errorText = (const char*)e.getMessage().getCString();
    }
    catch (const Exception& e)
    {
        request.errorCode = CIM_ERR_INVALID_PARAMETER;
        request.errorText = (const char*)e.getMessage().getCString();
    }
    catch (const std::bad_alloc&)
    {
        // The message is known by now, so the client gets a CIM error for
        // it rather than a bare HTTP failure.
        request.errorCode = CIM_ERR_FAILED;
        request.errorText = "out of memory while decoding the request";
    }
    return request;
}

} // namespace orvhost
