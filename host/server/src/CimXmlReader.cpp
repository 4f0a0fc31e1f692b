#include "CimXmlReader.h"

#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>
#include <cimom/ParamTyping.h>

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstring>
#include <memory>
#include <set>

using namespace Pegasus;

namespace orvhost
{

namespace
{
// A fault in the content of one parameter or path.
struct ParamFault
{
    CIMStatusCode code;
    std::string text;
};

const char notWellFormed[] = "request-not-well-formed";
const char notValid[] = "request-not-valid";

struct DocFree
{
    void operator()(xmlDoc* doc) const
    {
        xmlFreeDoc(doc);
    }
};

std::string _name(const xmlNode* node)
{
    return reinterpret_cast<const char*>(node->name);
}

bool _is(const xmlNode* node, const char* name)
{
    return strcmp(reinterpret_cast<const char*>(node->name), name) == 0;
}

bool _attr(const xmlNode* node, const char* name, std::string& out)
{
    xmlChar* value = xmlGetNoNsProp(node, reinterpret_cast<const xmlChar*>(name));
    if (value == nullptr)
    {
        return false;
    }
    out = reinterpret_cast<const char*>(value);
    xmlFree(value);
    return true;
}

std::string _text(const xmlNode* node)
{
    xmlChar* value = xmlNodeGetContent(node);
    std::string out = value == nullptr ? "" : reinterpret_cast<const char*>(value);
    xmlFree(value);
    return out;
}

// Element children; text between elements is layout only.
std::vector<const xmlNode*> _children(const xmlNode* node)
{
    std::vector<const xmlNode*> out;
    for (const xmlNode* c = node->children; c != nullptr; c = c->next)
    {
        if (c->type == XML_ELEMENT_NODE)
        {
            out.push_back(c);
        }
    }
    return out;
}

[[noreturn]] void _fault(const std::string& text, CIMStatusCode code = CIM_ERR_INVALID_PARAMETER)
{
    throw ParamFault{code, text};
}

std::string _requiredAttr(const xmlNode* node, const char* name)
{
    std::string value;
    if (!_attr(node, name, value))
    {
        _fault(_name(node) + " lacks the " + name + " attribute");
    }
    return value;
}

CIMName _cimName(const std::string& text, const std::string& what)
{
    try
    {
        return CIMName(String(text.c_str()));
    }
    catch (const Exception&)
    {
        _fault("invalid " + what + " \"" + text + "\"");
    }
}

std::string _namespaceText(const xmlNode* localNs)
{
    if (!_is(localNs, "LOCALNAMESPACEPATH"))
    {
        _fault("expected LOCALNAMESPACEPATH, found " + _name(localNs));
    }
    std::string ns;
    for (const xmlNode* part : _children(localNs))
    {
        if (!_is(part, "NAMESPACE"))
        {
            _fault("unexpected " + _name(part) + " in LOCALNAMESPACEPATH");
        }
        if (!ns.empty())
        {
            ns += "/";
        }
        ns += _requiredAttr(part, "NAME");
    }
    if (ns.empty())
    {
        _fault("empty LOCALNAMESPACEPATH", CIM_ERR_INVALID_NAMESPACE);
    }
    return ns;
}

CIMNamespaceName _namespace(const std::string& text)
{
    try
    {
        return CIMNamespaceName(String(text.c_str()));
    }
    catch (const Exception&)
    {
        _fault("invalid namespace \"" + text + "\"", CIM_ERR_INVALID_NAMESPACE);
    }
}

CIMObjectPath _objectPath(const xmlNode* node, unsigned depth = 0);

CIMKeyBinding::Type _keyType(const xmlNode* keyValue)
{
    std::string type = "string";
    _attr(keyValue, "VALUETYPE", type);
    if (type == "string")
    {
        return CIMKeyBinding::STRING;
    }
    if (type == "boolean")
    {
        return CIMKeyBinding::BOOLEAN;
    }
    if (type == "numeric")
    {
        return CIMKeyBinding::NUMERIC;
    }
    _fault("invalid KEYVALUE VALUETYPE \"" + type + "\"");
}

void _checkKeyLength(size_t length)
{
    if (length > RequestLimits::maxKeyValueBytes)
    {
        _fault("a key value is longer than " + std::to_string(RequestLimits::maxKeyValueBytes) +
               " bytes, the limit");
    }
}

// depth: how many reference keys down from the outermost path this key is.
CIMKeyBinding _keyBinding(const CIMName& name, const xmlNode* value, unsigned depth)
{
    if (_is(value, "KEYVALUE"))
    {
        std::string text = _text(value);
        _checkKeyLength(text.size());
        return CIMKeyBinding(name, String(text.c_str()), _keyType(value));
    }
    if (_is(value, "VALUE.REFERENCE"))
    {
        std::vector<const xmlNode*> inner = _children(value);
        if (inner.size() != 1)
        {
            _fault("VALUE.REFERENCE needs exactly one path");
        }
        if (depth >= RequestLimits::maxReferenceDepth)
        {
            _fault("paths nest in reference keys deeper than " +
                   std::to_string(RequestLimits::maxReferenceDepth) + " levels, the limit");
        }
        CIMKeyBinding key(name, CIMValue(_objectPath(inner[0], depth + 1)));
        // The path is held as quoted text; bound it before the next level
        // quotes it again.
        _checkKeyLength(key.getValue().size());
        return key;
    }
    _fault("unexpected " + _name(value) + " as a key value");
}

CIMObjectPath _instanceName(const xmlNode* node, unsigned depth = 0)
{
    CIMName className = _cimName(_requiredAttr(node, "CLASSNAME"), "class name");
    Array<CIMKeyBinding> keys;
    for (const xmlNode* child : _children(node))
    {
        if (_is(child, "KEYBINDING"))
        {
            CIMName keyName = _cimName(_requiredAttr(child, "NAME"), "key name");
            std::vector<const xmlNode*> values = _children(child);
            if (values.size() != 1)
            {
                _fault("KEYBINDING " + std::string(keyName.getString().getCString()) +
                       " needs exactly one value");
            }
            keys.append(_keyBinding(keyName, values[0], depth));
        }
        else if (_is(child, "KEYVALUE") || _is(child, "VALUE.REFERENCE"))
        {
            // A single unnamed key: the class's only key property, whose
            // name the path cannot state.
            keys.append(_keyBinding(CIMName(), child, depth));
        }
        else
        {
            _fault("unexpected " + _name(child) + " in INSTANCENAME");
        }
    }
    try
    {
        return CIMObjectPath(String(), CIMNamespaceName(), className, keys);
    }
    catch (const Exception& e)
    {
        _fault(std::string("invalid instance name: ") + (const char*)e.getMessage().getCString());
    }
}

// Any of the six path forms that DSP0201 allows in a reference.
CIMObjectPath _objectPath(const xmlNode* node, unsigned depth)
{
    std::vector<const xmlNode*> kids = _children(node);
    if (_is(node, "INSTANCENAME"))
    {
        return _instanceName(node, depth);
    }
    if (_is(node, "CLASSNAME"))
    {
        CIMObjectPath path;
        path.setClassName(_cimName(_requiredAttr(node, "NAME"), "class name"));
        return path;
    }
    if (_is(node, "LOCALINSTANCEPATH") || _is(node, "LOCALCLASSPATH"))
    {
        if (kids.size() != 2)
        {
            _fault(_name(node) + " needs a namespace and a name");
        }
        CIMObjectPath path = _objectPath(kids[1], depth);
        path.setNameSpace(_namespace(_namespaceText(kids[0])));
        return path;
    }
    if (_is(node, "INSTANCEPATH") || _is(node, "CLASSPATH"))
    {
        if (kids.size() != 2 || !_is(kids[0], "NAMESPACEPATH"))
        {
            _fault(_name(node) + " needs a NAMESPACEPATH and a name");
        }
        std::vector<const xmlNode*> nsParts = _children(kids[0]);
        if (nsParts.size() != 2 || !_is(nsParts[0], "HOST"))
        {
            _fault("NAMESPACEPATH needs a HOST and a LOCALNAMESPACEPATH");
        }
        CIMObjectPath path = _objectPath(kids[1], depth);
        path.setHost(String(_text(nsParts[0]).c_str()));
        path.setNameSpace(_namespace(_namespaceText(nsParts[1])));
        return path;
    }
    _fault("unexpected " + _name(node) + " where an object path belongs");
}

bool _parseType(const std::string& text, CIMType& type);

// One property of an INSTANCE: its value typed by the TYPE the client states
// (text that does not fit that type is refused here).
CIMProperty _property(const xmlNode* node)
{
    const std::string name = _requiredAttr(node, "NAME");
    const CIMName propertyName = _cimName(name, "property name");
    if (_is(node, "PROPERTY.REFERENCE"))
    {
        CIMValue value(CIMTYPE_REFERENCE, false);
        for (const xmlNode* child : _children(node))
        {
            if (_is(child, "VALUE.REFERENCE"))
            {
                std::vector<const xmlNode*> inner = _children(child);
                if (inner.size() != 1)
                {
                    _fault("VALUE.REFERENCE of " + name + " needs exactly one path");
                }
                value = CIMValue(_objectPath(inner[0]));
            }
        }
        std::string refClass;
        CIMName referenceClass;
        if (_attr(node, "REFERENCECLASS", refClass))
        {
            referenceClass = _cimName(refClass, "reference class");
        }
        return CIMProperty(propertyName, value, 0, referenceClass);
    }
    const bool isArray = _is(node, "PROPERTY.ARRAY");
    const std::string typeText = _requiredAttr(node, "TYPE");
    CIMType type;
    if (!_parseType(typeText, type) || type == CIMTYPE_REFERENCE)
    {
        _fault("property " + name + " has an unknown TYPE \"" + typeText + "\"");
    }
    for (const xmlNode* child : _children(node))
    {
        if (_is(child, "VALUE") && !isArray)
        {
            return CIMProperty(propertyName,
                               cimom::convertTextValue(CIMValue(String(_text(child).c_str())), type,
                                                       false, String(name.c_str())));
        }
        if (_is(child, "VALUE.ARRAY") && isArray)
        {
            Array<String> items;
            for (const xmlNode* item : _children(child))
            {
                if (_is(item, "VALUE"))
                {
                    items.append(String(_text(item).c_str()));
                }
            }
            return CIMProperty(propertyName, cimom::convertTextValue(CIMValue(items), type, true,
                                                                     String(name.c_str())));
        }
        if (!_is(child, "QUALIFIER"))
        {
            _fault("unexpected " + _name(child) + " in property " + name);
        }
    }
    return CIMProperty(propertyName, CIMValue(type, isArray));
}

CIMInstance _instance(const xmlNode* node)
{
    CIMInstance instance(_cimName(_requiredAttr(node, "CLASSNAME"), "class name"));
    for (const xmlNode* child : _children(node))
    {
        if (_is(child, "PROPERTY") || _is(child, "PROPERTY.ARRAY") ||
            _is(child, "PROPERTY.REFERENCE"))
        {
            CIMProperty property = _property(child);
            if (instance.findProperty(property.getName()) != PEG_NOT_FOUND)
            {
                _fault("property " + std::string(property.getName().getString().getCString()) +
                       " given twice");
            }
            instance.addProperty(property);
        }
        else if (!_is(child, "QUALIFIER"))
        {
            _fault("unexpected " + _name(child) + " in INSTANCE");
        }
    }
    return instance;
}

IParam _iparam(const xmlNode* node)
{
    IParam param;
    param.name = _requiredAttr(node, "NAME");
    std::vector<const xmlNode*> kids = _children(node);
    if (kids.empty())
    {
        param.kind = IParam::NULL_VALUE;
        return param;
    }
    if (kids.size() > 1)
    {
        _fault("parameter " + param.name + " has more than one value");
    }
    const xmlNode* value = kids[0];
    param.element = _name(value);
    if (_is(value, "VALUE"))
    {
        param.kind = IParam::VALUE;
        param.text = _text(value);
    }
    else if (_is(value, "VALUE.ARRAY"))
    {
        param.kind = IParam::VALUE_ARRAY;
        for (const xmlNode* item : _children(value))
        {
            if (!_is(item, "VALUE"))
            {
                _fault("unexpected " + _name(item) + " in VALUE.ARRAY of " + param.name);
            }
            param.texts.push_back(_text(item));
        }
    }
    else if (_is(value, "CLASSNAME"))
    {
        param.kind = IParam::CLASS_NAME;
        param.className = _cimName(_requiredAttr(value, "NAME"), "class name");
    }
    else if (_is(value, "INSTANCENAME"))
    {
        param.kind = IParam::INSTANCE_NAME;
        param.path = _instanceName(value);
    }
    else if (_is(value, "INSTANCE"))
    {
        param.kind = IParam::INSTANCE;
        param.instance = _instance(value);
    }
    else if (_is(value, "VALUE.NAMEDINSTANCE"))
    {
        std::vector<const xmlNode*> parts = _children(value);
        if (parts.size() != 2 || !_is(parts[0], "INSTANCENAME") || !_is(parts[1], "INSTANCE"))
        {
            _fault("VALUE.NAMEDINSTANCE of " + param.name + " needs an INSTANCENAME and an INSTANCE");
        }
        param.kind = IParam::NAMED_INSTANCE;
        param.path = _instanceName(parts[0]);
        param.instance = _instance(parts[1]);
        param.instance.setPath(param.path);
    }
    else
    {
        param.kind = IParam::OTHER;
    }
    return param;
}

bool _parseType(const std::string& text, CIMType& type)
{
    static const struct
    {
        const char* name;
        CIMType type;
    } types[] = {{"boolean", CIMTYPE_BOOLEAN}, {"uint8", CIMTYPE_UINT8},
                 {"sint8", CIMTYPE_SINT8},     {"uint16", CIMTYPE_UINT16},
                 {"sint16", CIMTYPE_SINT16},   {"uint32", CIMTYPE_UINT32},
                 {"sint32", CIMTYPE_SINT32},   {"uint64", CIMTYPE_UINT64},
                 {"sint64", CIMTYPE_SINT64},   {"real32", CIMTYPE_REAL32},
                 {"real64", CIMTYPE_REAL64},   {"char16", CIMTYPE_CHAR16},
                 {"string", CIMTYPE_STRING},   {"datetime", CIMTYPE_DATETIME},
                 {"reference", CIMTYPE_REFERENCE}};
    for (const auto& t : types)
    {
        if (text == t.name)
        {
            type = t.type;
            return true;
        }
    }
    return false;
}

CIMParamValue _paramValue(const xmlNode* node)
{
    std::string name = _requiredAttr(node, "NAME");
    std::string typeText;
    bool typed = _attr(node, "PARAMTYPE", typeText);
    CIMType type = CIMTYPE_STRING;
    if (typed && !_parseType(typeText, type))
    {
        _fault("parameter " + name + " has an unknown PARAMTYPE \"" + typeText + "\"");
    }
    std::vector<const xmlNode*> kids = _children(node);
    if (kids.size() > 1)
    {
        _fault("parameter " + name + " has more than one value");
    }
    if (kids.empty())
    {
        // No value: a null of the stated type, or an untyped null text.
        return CIMParamValue(String(name.c_str()), CIMValue(type, false), typed);
    }
    const xmlNode* value = kids[0];
    CIMValue text;
    bool isArray = false;
    if (_is(value, "VALUE.REFERENCE") || _is(value, "VALUE.REFARRAY"))
    {
        if (typed && type != CIMTYPE_REFERENCE)
        {
            _fault("parameter " + name + " is declared " + typeText + " but holds a reference");
        }
        if (_is(value, "VALUE.REFERENCE"))
        {
            std::vector<const xmlNode*> inner = _children(value);
            if (inner.size() != 1)
            {
                _fault("VALUE.REFERENCE of " + name + " needs exactly one path");
            }
            return CIMParamValue(String(name.c_str()), CIMValue(_objectPath(inner[0])), true);
        }
        Array<CIMObjectPath> paths;
        for (const xmlNode* item : _children(value))
        {
            std::vector<const xmlNode*> inner = _children(item);
            if (!_is(item, "VALUE.REFERENCE") || inner.size() != 1)
            {
                _fault("VALUE.REFARRAY of " + name + " holds a bad reference");
            }
            paths.append(_objectPath(inner[0]));
        }
        return CIMParamValue(String(name.c_str()), CIMValue(paths), true);
    }
    if (_is(value, "VALUE"))
    {
        text = CIMValue(String(_text(value).c_str()));
    }
    else if (_is(value, "VALUE.ARRAY"))
    {
        isArray = true;
        Array<String> items;
        for (const xmlNode* item : _children(value))
        {
            if (_is(item, "VALUE"))
            {
                items.append(String(_text(item).c_str()));
            }
            else if (!_is(item, "VALUE.NULL"))
            {
                _fault("unexpected " + _name(item) + " in VALUE.ARRAY of " + name);
            }
        }
        text = CIMValue(items);
    }
    else
    {
        _fault("unexpected " + _name(value) + " as the value of parameter " + name);
    }
    if (!typed)
    {
        // The object manager types it from the method's declaration.
        return CIMParamValue(String(name.c_str()), text, false);
    }
    return CIMParamValue(String(name.c_str()),
                         cimom::convertTextValue(text, type, isArray, String(name.c_str())), true);
}

void _checkVersion(const xmlNode* node, const char* attr, const char* errorName)
{
    std::string version;
    if (!_attr(node, attr, version))
    {
        throw CimProtocolError(400, notValid, _name(node) + " lacks " + attr);
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
    std::vector<const xmlNode*> kids = _children(call);
    size_t next = 0;
    if (request.intrinsic)
    {
        if (kids.empty() || !_is(kids[0], "LOCALNAMESPACEPATH"))
        {
            throw CimProtocolError(400, notValid, "IMETHODCALL needs a LOCALNAMESPACEPATH");
        }
        request.nameSpaceText = _namespaceText(kids[0]);
        request.nameSpace = _namespace(request.nameSpaceText);
        for (next = 1; next < kids.size(); ++next)
        {
            if (!_is(kids[next], "IPARAMVALUE"))
            {
                throw CimProtocolError(400, notValid,
                                       "unexpected " + _name(kids[next]) + " in IMETHODCALL");
            }
            request.iparams.push_back(_iparam(kids[next]));
        }
        return;
    }
    if (kids.empty() || !(_is(kids[0], "LOCALINSTANCEPATH") || _is(kids[0], "LOCALCLASSPATH")))
    {
        throw CimProtocolError(400, notValid,
                               "METHODCALL needs a LOCALINSTANCEPATH or LOCALCLASSPATH");
    }
    std::vector<const xmlNode*> pathParts = _children(kids[0]);
    if (!pathParts.empty() && _is(pathParts[0], "LOCALNAMESPACEPATH"))
    {
        request.nameSpaceText = _namespaceText(pathParts[0]);
    }
    request.objectPath = _objectPath(kids[0]);
    request.nameSpace = request.objectPath.getNameSpace();
    std::set<std::string> seen;
    for (next = 1; next < kids.size(); ++next)
    {
        if (!_is(kids[next], "PARAMVALUE"))
        {
            throw CimProtocolError(400, notValid,
                                   "unexpected " + _name(kids[next]) + " in METHODCALL");
        }
        CIMParamValue param = _paramValue(kids[next]);
        String folded = param.getParameterName();
        folded.toLower();
        if (!seen.insert(static_cast<const char*>(folded.getCString())).second)
        {
            _fault("parameter " + _requiredAttr(kids[next], "NAME") + " given twice");
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

static void _quietXmlError(void*, const char*, ...)
{
}

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
    if (root == nullptr || !_is(root, "CIM"))
    {
        throw CimProtocolError(400, notValid, "the root element is not CIM");
    }
    _checkVersion(root, "CIMVERSION", "unsupported-cim-version");
    _checkVersion(root, "DTDVERSION", "unsupported-dtd-version");
    std::vector<const xmlNode*> kids = _children(root);
    if (kids.size() != 1 || !_is(kids[0], "MESSAGE"))
    {
        throw CimProtocolError(400, notValid, "CIM must hold one MESSAGE");
    }
    const xmlNode* message = kids[0];
    CimRequest request;
    if (!_attr(message, "ID", request.messageId))
    {
        throw CimProtocolError(400, notValid, "MESSAGE lacks ID");
    }
    _checkVersion(message, "PROTOCOLVERSION", "unsupported-protocol-version");
    _attr(message, "PROTOCOLVERSION", request.protocolVersion);
    kids = _children(message);
    if (kids.size() == 1 && _is(kids[0], "MULTIREQ"))
    {
        throw CimProtocolError(501, "multiple-requests-unsupported",
                               "multiple requests in one message are not supported");
    }
    if (kids.size() != 1 || !_is(kids[0], "SIMPLEREQ"))
    {
        throw CimProtocolError(400, notValid, "MESSAGE must hold a SIMPLEREQ");
    }
    const xmlNode* call = nullptr;
    for (const xmlNode* child : _children(kids[0]))
    {
        if (_is(child, "CORRELATOR"))
        {
            continue;
        }
        if (call != nullptr || !(_is(child, "IMETHODCALL") || _is(child, "METHODCALL")))
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
    request.intrinsic = _is(call, "IMETHODCALL");
    if (!_attr(call, "NAME", request.methodName) || request.methodName.empty())
    {
        throw CimProtocolError(400, notValid, _name(call) + " lacks NAME");
    }
    try
    {
        _decodeCall(call, request);
    }
    catch (const ParamFault& fault)
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
    return request;
}

} // namespace orvhost
