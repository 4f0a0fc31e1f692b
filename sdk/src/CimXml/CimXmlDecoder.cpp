#include <CimXml/CimXmlDecoder.h>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/Exception.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>

using namespace Pegasus;

namespace orv
{
namespace cimxml
{

std::string nodeName(const xmlNode* node)
{
    return reinterpret_cast<const char*>(node->name);
}

bool isElement(const xmlNode* node, const char* name)
{
    return strcmp(reinterpret_cast<const char*>(node->name), name) == 0;
}

bool attribute(const xmlNode* node, const char* name, std::string& out)
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

std::string nodeText(const xmlNode* node)
{
    xmlChar* value = xmlNodeGetContent(node);
    std::string out = value == nullptr ? "" : reinterpret_cast<const char*>(value);
    xmlFree(value);
    return out;
}

std::vector<const xmlNode*> elementChildren(const xmlNode* node)
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

[[noreturn]] void fault(const std::string& text, CIMStatusCode code)
{
    throw DecodeFault{code, text};
}

std::string requiredAttribute(const xmlNode* node, const char* name)
{
    std::string value;
    if (!attribute(node, name, value))
    {
        fault(nodeName(node) + " lacks the " + name + " attribute");
    }
    return value;
}

CIMName cimName(const std::string& text, const std::string& what)
{
    try
    {
        return CIMName(String(text.c_str()));
    }
    catch (const Exception&)
    {
        fault("invalid " + what + " \"" + text + "\"");
    }
}

std::string namespaceText(const xmlNode* localNs)
{
    if (!isElement(localNs, "LOCALNAMESPACEPATH"))
    {
        fault("expected LOCALNAMESPACEPATH, found " + nodeName(localNs));
    }
    std::string ns;
    for (const xmlNode* part : elementChildren(localNs))
    {
        if (!isElement(part, "NAMESPACE"))
        {
            fault("unexpected " + nodeName(part) + " in LOCALNAMESPACEPATH");
        }
        if (!ns.empty())
        {
            ns += "/";
        }
        ns += requiredAttribute(part, "NAME");
    }
    if (ns.empty())
    {
        fault("empty LOCALNAMESPACEPATH", CIM_ERR_INVALID_NAMESPACE);
    }
    return ns;
}

CIMNamespaceName namespaceName(const std::string& text)
{
    try
    {
        return CIMNamespaceName(String(text.c_str()));
    }
    catch (const Exception&)
    {
        fault("invalid namespace \"" + text + "\"", CIM_ERR_INVALID_NAMESPACE);
    }
}

namespace
{
CIMKeyBinding::Type _keyType(const xmlNode* keyValue)
{
    std::string type = "string";
    attribute(keyValue, "VALUETYPE", type);
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
    fault("invalid KEYVALUE VALUETYPE \"" + type + "\"");
}

void _checkKeyLength(size_t length)
{
    if (length > PathLimits::maxKeyValueBytes)
    {
        fault("a key value is longer than " + std::to_string(PathLimits::maxKeyValueBytes) +
              " bytes, the limit");
    }
}

CIMKeyBinding _keyBinding(const CIMName& name, const xmlNode* value, unsigned depth)
{
    if (isElement(value, "KEYVALUE"))
    {
        std::string text = nodeText(value);
        _checkKeyLength(text.size());
        return CIMKeyBinding(name, String(text.c_str()), _keyType(value));
    }
    if (isElement(value, "VALUE.REFERENCE"))
    {
        std::vector<const xmlNode*> inner = elementChildren(value);
        if (inner.size() != 1)
        {
            fault("VALUE.REFERENCE needs exactly one path");
        }
        if (depth >= PathLimits::maxReferenceDepth)
        {
            fault("paths nest in reference keys deeper than " +
                  std::to_string(PathLimits::maxReferenceDepth) + " levels, the limit");
        }
        CIMKeyBinding key(name, CIMValue(decodeObjectPath(inner[0], depth + 1)));
        // The path is held as quoted text; bound it before the next level
        // quotes it again.
        _checkKeyLength(key.getValue().size());
        return key;
    }
    fault("unexpected " + nodeName(value) + " as a key value");
}
} // namespace

CIMObjectPath decodeInstanceName(const xmlNode* node, unsigned depth)
{
    CIMName className = cimName(requiredAttribute(node, "CLASSNAME"), "class name");
    Array<CIMKeyBinding> keys;
    for (const xmlNode* child : elementChildren(node))
    {
        if (isElement(child, "KEYBINDING"))
        {
            CIMName keyName = cimName(requiredAttribute(child, "NAME"), "key name");
            std::vector<const xmlNode*> values = elementChildren(child);
            if (values.size() != 1)
            {
                fault("KEYBINDING " + std::string(keyName.getString().getCString()) +
                       " needs exactly one value");
            }
            keys.append(_keyBinding(keyName, values[0], depth));
        }
        else if (isElement(child, "KEYVALUE") || isElement(child, "VALUE.REFERENCE"))
        {
            // A single unnamed key: the class's only key property, whose
            // name the path cannot state.
            keys.append(_keyBinding(CIMName(), child, depth));
        }
        else
        {
            fault("unexpected " + nodeName(child) + " in INSTANCENAME");
        }
    }
    try
    {
        return CIMObjectPath(String(), CIMNamespaceName(), className, keys);
    }
    catch (const Exception& e)
    {
        fault(std::string("invalid instance name: ") + (const char*)e.getMessage().getCString());
    }
}

CIMObjectPath decodeObjectPath(const xmlNode* node, unsigned depth)
{
    std::vector<const xmlNode*> kids = elementChildren(node);
    if (isElement(node, "INSTANCENAME"))
    {
        return decodeInstanceName(node, depth);
    }
    if (isElement(node, "CLASSNAME"))
    {
        CIMObjectPath path;
        path.setClassName(cimName(requiredAttribute(node, "NAME"), "class name"));
        return path;
    }
    if (isElement(node, "LOCALINSTANCEPATH") || isElement(node, "LOCALCLASSPATH"))
    {
        if (kids.size() != 2)
        {
            fault(nodeName(node) + " needs a namespace and a name");
        }
        CIMObjectPath path = decodeObjectPath(kids[1], depth);
        path.setNameSpace(namespaceName(namespaceText(kids[0])));
        return path;
    }
    if (isElement(node, "INSTANCEPATH") || isElement(node, "CLASSPATH"))
    {
        if (kids.size() != 2 || !isElement(kids[0], "NAMESPACEPATH"))
        {
            fault(nodeName(node) + " needs a NAMESPACEPATH and a name");
        }
        std::vector<const xmlNode*> nsParts = elementChildren(kids[0]);
        if (nsParts.size() != 2 || !isElement(nsParts[0], "HOST"))
        {
            fault("NAMESPACEPATH needs a HOST and a LOCALNAMESPACEPATH");
        }
        CIMObjectPath path = decodeObjectPath(kids[1], depth);
        path.setHost(String(nodeText(nsParts[0]).c_str()));
        path.setNameSpace(namespaceName(namespaceText(nsParts[1])));
        return path;
    }
    fault("unexpected " + nodeName(node) + " where an object path belongs");
}

// One property of an INSTANCE: its value typed by the TYPE the client states
// (text that does not fit that type is refused here).
CIMProperty decodeProperty(const xmlNode* node)
{
    const std::string name = requiredAttribute(node, "NAME");
    const CIMName propertyName = cimName(name, "property name");
    if (isElement(node, "PROPERTY.REFERENCE"))
    {
        CIMValue value(CIMTYPE_REFERENCE, false);
        for (const xmlNode* child : elementChildren(node))
        {
            if (isElement(child, "VALUE.REFERENCE"))
            {
                std::vector<const xmlNode*> inner = elementChildren(child);
                if (inner.size() != 1)
                {
                    fault("VALUE.REFERENCE of " + name + " needs exactly one path");
                }
                value = CIMValue(decodeObjectPath(inner[0]));
            }
        }
        std::string refClass;
        CIMName referenceClass;
        if (attribute(node, "REFERENCECLASS", refClass))
        {
            referenceClass = cimName(refClass, "reference class");
        }
        return CIMProperty(propertyName, value, 0, referenceClass);
    }
    const bool isArray = isElement(node, "PROPERTY.ARRAY");
    const std::string typeText = requiredAttribute(node, "TYPE");
    CIMType type;
    if (!parseType(typeText, type) || type == CIMTYPE_REFERENCE)
    {
        fault("property " + name + " has an unknown TYPE \"" + typeText + "\"");
    }
    for (const xmlNode* child : elementChildren(node))
    {
        if (isElement(child, "VALUE") && !isArray)
        {
            return CIMProperty(propertyName,
                               valueFromText(CIMValue(String(nodeText(child).c_str())), type,
                                                       false, String(name.c_str())));
        }
        if (isElement(child, "VALUE.ARRAY") && isArray)
        {
            Array<String> items;
            for (const xmlNode* item : elementChildren(child))
            {
                if (isElement(item, "VALUE"))
                {
                    items.append(String(nodeText(item).c_str()));
                }
            }
            return CIMProperty(propertyName, valueFromText(CIMValue(items), type, true,
                                                                     String(name.c_str())));
        }
        if (!isElement(child, "QUALIFIER"))
        {
            fault("unexpected " + nodeName(child) + " in property " + name);
        }
    }
    return CIMProperty(propertyName, CIMValue(type, isArray));
}

CIMInstance decodeInstance(const xmlNode* node)
{
    CIMInstance instance(cimName(requiredAttribute(node, "CLASSNAME"), "class name"));
    for (const xmlNode* child : elementChildren(node))
    {
        if (isElement(child, "PROPERTY") || isElement(child, "PROPERTY.ARRAY") ||
            isElement(child, "PROPERTY.REFERENCE"))
        {
            CIMProperty property = decodeProperty(child);
            if (instance.findProperty(property.getName()) != PEG_NOT_FOUND)
            {
                fault("property " + std::string(property.getName().getString().getCString()) +
                       " given twice");
            }
            instance.addProperty(property);
        }
        else if (!isElement(child, "QUALIFIER"))
        {
            fault("unexpected " + nodeName(child) + " in INSTANCE");
        }
    }
    return instance;
}

bool parseType(const std::string& text, CIMType& type)
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

CIMParamValue decodeParamValue(const xmlNode* node)
{
    std::string name = requiredAttribute(node, "NAME");
    std::string typeText;
    bool typed = attribute(node, "PARAMTYPE", typeText);
    CIMType type = CIMTYPE_STRING;
    if (typed && !parseType(typeText, type))
    {
        fault("parameter " + name + " has an unknown PARAMTYPE \"" + typeText + "\"");
    }
    std::vector<const xmlNode*> kids = elementChildren(node);
    if (kids.size() > 1)
    {
        fault("parameter " + name + " has more than one value");
    }
    if (kids.empty())
    {
        // No value: a null of the stated type, or an untyped null text.
        return CIMParamValue(String(name.c_str()), CIMValue(type, false), typed);
    }
    const xmlNode* value = kids[0];
    CIMValue text;
    bool isArray = false;
    if (isElement(value, "VALUE.REFERENCE") || isElement(value, "VALUE.REFARRAY"))
    {
        if (typed && type != CIMTYPE_REFERENCE)
        {
            fault("parameter " + name + " is declared " + typeText + " but holds a reference");
        }
        if (isElement(value, "VALUE.REFERENCE"))
        {
            std::vector<const xmlNode*> inner = elementChildren(value);
            if (inner.size() != 1)
            {
                fault("VALUE.REFERENCE of " + name + " needs exactly one path");
            }
            return CIMParamValue(String(name.c_str()), CIMValue(decodeObjectPath(inner[0])), true);
        }
        Array<CIMObjectPath> paths;
        for (const xmlNode* item : elementChildren(value))
        {
            std::vector<const xmlNode*> inner = elementChildren(item);
            if (!isElement(item, "VALUE.REFERENCE") || inner.size() != 1)
            {
                fault("VALUE.REFARRAY of " + name + " holds a bad reference");
            }
            paths.append(decodeObjectPath(inner[0]));
        }
        return CIMParamValue(String(name.c_str()), CIMValue(paths), true);
    }
    if (isElement(value, "VALUE"))
    {
        text = CIMValue(String(nodeText(value).c_str()));
    }
    else if (isElement(value, "VALUE.ARRAY"))
    {
        isArray = true;
        Array<String> items;
        for (const xmlNode* item : elementChildren(value))
        {
            if (isElement(item, "VALUE"))
            {
                items.append(String(nodeText(item).c_str()));
            }
            else if (!isElement(item, "VALUE.NULL"))
            {
                fault("unexpected " + nodeName(item) + " in VALUE.ARRAY of " + name);
            }
        }
        text = CIMValue(items);
    }
    else
    {
        fault("unexpected " + nodeName(value) + " as the value of parameter " + name);
    }
    if (!typed)
    {
        // The object manager types it from the method's declaration.
        return CIMParamValue(String(name.c_str()), text, false);
    }
    return CIMParamValue(String(name.c_str()),
                         valueFromText(text, type, isArray, String(name.c_str())), true);
}

namespace
{

[[noreturn]] void badValue(const String& what, const std::string& text, const char* expected)
{
    throw CIMException(CIM_ERR_INVALID_PARAMETER,
                       what + String((": \"" + text + "\" is not " + expected).c_str()));
}

std::string trimmed(const std::string& s)
{
    std::string::size_type b = s.find_first_not_of(" \t\r\n");
    if (b == std::string::npos)
    {
        return std::string();
    }
    std::string::size_type e = s.find_last_not_of(" \t\r\n");
    return s.substr(b, e - b + 1);
}

bool parseSigned(const std::string& text, long long& out)
{
    if (text.empty())
    {
        return false;
    }
    const char* start = text.c_str();
    char* end = nullptr;
    errno = 0;
    bool hex = text.size() > 2 && (text[0] == '-' || text[0] == '+')
                   ? (text[1] == '0' && (text[2] == 'x' || text[2] == 'X'))
                   : (text.size() > 1 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X'));
    out = std::strtoll(start, &end, hex ? 16 : 10);
    return errno == 0 && end && *end == '\0' && end != start;
}

bool parseUnsigned(const std::string& text, unsigned long long& out)
{
    if (text.empty() || text[0] == '-')
    {
        return false;
    }
    const char* start = text.c_str();
    char* end = nullptr;
    errno = 0;
    bool hex = text.size() > 1 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    out = std::strtoull(start, &end, hex ? 16 : 10);
    return errno == 0 && end && *end == '\0' && end != start;
}

template <class T> T toUnsigned(const String& what, const std::string& text, const char* typeName)
{
    unsigned long long v = 0;
    if (!parseUnsigned(text, v) || v > std::numeric_limits<T>::max())
    {
        badValue(what, text, typeName);
    }
    return static_cast<T>(v);
}

template <class T> T toSigned(const String& what, const std::string& text, const char* typeName)
{
    long long v = 0;
    if (!parseSigned(text, v) || v < std::numeric_limits<T>::min() ||
        v > std::numeric_limits<T>::max())
    {
        badValue(what, text, typeName);
    }
    return static_cast<T>(v);
}

double toReal(const String& what, const std::string& text)
{
    if (text.empty())
    {
        badValue(what, text, "a real number");
    }
    char* end = nullptr;
    errno = 0;
    double v = std::strtod(text.c_str(), &end);
    if (errno != 0 || !end || *end != '\0')
    {
        badValue(what, text, "a real number");
    }
    return v;
}

// One scalar from its text. Strings keep their exact text (no trimming).
CIMValue scalarFromText(const String& text, CIMType type, const String& what)
{
    std::string s = trimmed(std::string((const char*)text.getCString()));
    switch (type)
    {
    case CIMTYPE_STRING:
        return CIMValue(text);
    case CIMTYPE_BOOLEAN:
        if (String::equalNoCase(String(s.c_str()), "true"))
        {
            return CIMValue(Boolean(true));
        }
        if (String::equalNoCase(String(s.c_str()), "false"))
        {
            return CIMValue(Boolean(false));
        }
        badValue(what, s, "a boolean (TRUE or FALSE)");
    case CIMTYPE_UINT8:
        return CIMValue(toUnsigned<Uint8>(what, s, "a uint8"));
    case CIMTYPE_UINT16:
        return CIMValue(toUnsigned<Uint16>(what, s, "a uint16"));
    case CIMTYPE_UINT32:
        return CIMValue(toUnsigned<Uint32>(what, s, "a uint32"));
    case CIMTYPE_UINT64:
        return CIMValue(toUnsigned<Uint64>(what, s, "a uint64"));
    case CIMTYPE_SINT8:
        return CIMValue(toSigned<Sint8>(what, s, "a sint8"));
    case CIMTYPE_SINT16:
        return CIMValue(toSigned<Sint16>(what, s, "a sint16"));
    case CIMTYPE_SINT32:
        return CIMValue(toSigned<Sint32>(what, s, "a sint32"));
    case CIMTYPE_SINT64:
        return CIMValue(toSigned<Sint64>(what, s, "a sint64"));
    case CIMTYPE_REAL32:
        return CIMValue(Real32(toReal(what, s)));
    case CIMTYPE_REAL64:
        return CIMValue(Real64(toReal(what, s)));
    case CIMTYPE_CHAR16:
        if (text.size() != 1)
        {
            badValue(what, std::string((const char*)text.getCString()), "a single character");
        }
        return CIMValue(text[0]);
    case CIMTYPE_DATETIME:
        try
        {
            return CIMValue(CIMDateTime(String(s.c_str())));
        }
        catch (const Exception&)
        {
            badValue(what, s, "a CIM datetime");
        }
    case CIMTYPE_REFERENCE:
        try
        {
            return CIMValue(CIMObjectPath(String(s.c_str())));
        }
        catch (const Exception&)
        {
            badValue(what, s, "an object path");
        }
    default:
        throw CIMException(CIM_ERR_INVALID_PARAMETER,
                           what + " has a type that cannot be given as text");
    }
}

template <class T> CIMValue collect(const Array<String>& texts, CIMType type, const String& what)
{
    Array<T> out;
    for (Uint32 i = 0; i < texts.size(); i++)
    {
        T item;
        scalarFromText(texts[i], type, what).get(item);
        out.append(item);
    }
    return CIMValue(out);
}

CIMValue arrayFromText(const Array<String>& texts, CIMType type, const String& what)
{
    switch (type)
    {
    case CIMTYPE_STRING:
        return CIMValue(texts);
    case CIMTYPE_BOOLEAN:
        return collect<Boolean>(texts, type, what);
    case CIMTYPE_UINT8:
        return collect<Uint8>(texts, type, what);
    case CIMTYPE_UINT16:
        return collect<Uint16>(texts, type, what);
    case CIMTYPE_UINT32:
        return collect<Uint32>(texts, type, what);
    case CIMTYPE_UINT64:
        return collect<Uint64>(texts, type, what);
    case CIMTYPE_SINT8:
        return collect<Sint8>(texts, type, what);
    case CIMTYPE_SINT16:
        return collect<Sint16>(texts, type, what);
    case CIMTYPE_SINT32:
        return collect<Sint32>(texts, type, what);
    case CIMTYPE_SINT64:
        return collect<Sint64>(texts, type, what);
    case CIMTYPE_REAL32:
        return collect<Real32>(texts, type, what);
    case CIMTYPE_REAL64:
        return collect<Real64>(texts, type, what);
    case CIMTYPE_CHAR16:
        return collect<Char16>(texts, type, what);
    case CIMTYPE_DATETIME:
        return collect<CIMDateTime>(texts, type, what);
    case CIMTYPE_REFERENCE:
        return collect<CIMObjectPath>(texts, type, what);
    default:
        throw CIMException(CIM_ERR_INVALID_PARAMETER,
                           what + " has a type that cannot be given as text");
    }
}

} // namespace

CIMValue valueFromText(const CIMValue& text, CIMType type, Boolean isArray, const String& what)
{
    if (text.isNull())
    {
        CIMValue nullValue;
        nullValue.setNullValue(type, isArray);
        return nullValue;
    }
    if (text.getType() != CIMTYPE_STRING)
    {
        throw CIMException(CIM_ERR_INVALID_PARAMETER, what + " is not given as text");
    }
    if (isArray)
    {
        Array<String> texts;
        if (text.isArray())
        {
            text.get(texts);
        }
        else
        {
            String one;
            text.get(one);
            texts.append(one);
        }
        return arrayFromText(texts, type, what);
    }
    if (text.isArray())
    {
        throw CIMException(CIM_ERR_INVALID_PARAMETER, what + " takes one value, not an array");
    }
    String one;
    text.get(one);
    return scalarFromText(one, type, what);
}

} // namespace cimxml
} // namespace orv
