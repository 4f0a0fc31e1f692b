#include <CimXml/CimXmlWriter.h>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMFlavor.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Sdk/Utf8.h>

#include "../Common/SdkRepAccess.h"

#include <charconv>
#include <memory>
#include <cinttypes>
#include <cstdio>
#include <string_view>

using namespace Pegasus;

namespace orv
{
namespace cimxml
{

namespace
{
void _attr(std::string& out, const char* name, std::string_view value)
{
    out += ' ';
    out += name;
    out += "=\"";
    appendEscaped(out, value);
    out += '"';
}

void _attrName(std::string& out, const char* name, const CIMName& value)
{
    out += ' ';
    out += name;
    out += "=\"";
    appendEscaped(out, value.getString());
    out += '"';
}

void _attrNumber(std::string& out, const char* name, Uint32 value)
{
    char buf[16];
    _attr(out, name, std::string_view(buf, std::to_chars(buf, buf + sizeof(buf), value).ptr - buf));
}

// Decimal text of an integer, appended without a temporary string.
template <class T> void _appendNumber(std::string& out, T value)
{
    char buf[24];
    out.append(buf, std::to_chars(buf, buf + sizeof(buf), value).ptr);
}

void _appendUtf8(std::string& out, Uint16 c)
{
    if (c < 0x80)
    {
        out += static_cast<char>(c);
    }
    else if (c < 0x800)
    {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
    else
    {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

template <class T> T _item(const CIMValue& value, Uint32 index)
{
    if (value.isArray())
    {
        Array<T> items;
        value.get(items);
        return items[index];
    }
    T item;
    value.get(item);
    return item;
}

const char* _keyValueType(CIMKeyBinding::Type type)
{
    switch (type)
    {
    case CIMKeyBinding::BOOLEAN:
        return "boolean";
    case CIMKeyBinding::NUMERIC:
        return "numeric";
    default:
        return "string";
    }
}

// Embedded objects travel as escaped CIM-XML text in a string value.
std::string _embedded(const CIMObject& object)
{
    std::string text;
    if (object.isClass())
    {
        appendClass(text, CIMConstClass(object));
    }
    else
    {
        appendInstance(text, CIMConstInstance(object));
    }
    return text;
}

void _qualifiers(std::string& out, const CIMConstQualifier& q)
{
    out += "<QUALIFIER";
    _attrName(out, "NAME", q.getName());
    _attr(out, "TYPE", cimTypeToString(q.getType()));
    // OpenPegasus never marks a qualifier as propagated on the wire.
    const CIMFlavor& flavor = q.getFlavor();
    // Only departures from the DTD's defaults are written.
    if (flavor.hasFlavor(CIMFlavor::DISABLEOVERRIDE))
    {
        _attr(out, "OVERRIDABLE", "false");
    }
    if (flavor.hasFlavor(CIMFlavor::RESTRICTED))
    {
        _attr(out, "TOSUBCLASS", "false");
    }
    if (flavor.hasFlavor(CIMFlavor::TOINSTANCE))
    {
        _attr(out, "TOINSTANCE", "true");
    }
    if (flavor.hasFlavor(CIMFlavor::TRANSLATABLE))
    {
        _attr(out, "TRANSLATABLE", "true");
    }
    out += '>';
    appendValue(out, q.getValue());
    out += "</QUALIFIER>";
}

template <class Owner> void _allQualifiers(std::string& out, const Owner& owner)
{
    for (Uint32 i = 0; i < owner.getQualifierCount(); ++i)
    {
        _qualifiers(out, owner.getQualifier(i));
    }
}

// Read through the list: handing qualifiers out would give each property of
// a shared class a list of its own.
void _allQualifiers(std::string& out, const NamedList<CIMQualifier>& qualifiers)
{
    for (const CIMQualifier& q : qualifiers.view())
    {
        _qualifiers(out, CIMConstQualifier(q));
    }
}

// The start tag of a property less its '>': element, name, type and the
// declaration's attributes.
void _propertyTag(std::string& out, const CIMPropertyDecl& d, CIMType type, bool isArray)
{
    out += '<';
    out += type == CIMTYPE_REFERENCE ? "PROPERTY.REFERENCE"
           : isArray                 ? "PROPERTY.ARRAY"
                                     : "PROPERTY";
    _attrName(out, "NAME", d.name);
    if (type == CIMTYPE_REFERENCE)
    {
        if (!d.referenceClassName.isNull())
        {
            _attrName(out, "REFERENCECLASS", d.referenceClassName);
        }
    }
    else if (type == CIMTYPE_OBJECT || type == CIMTYPE_INSTANCE)
    {
        _attr(out, "TYPE", "string");
    }
    else
    {
        _attr(out, "TYPE", cimTypeToString(type));
    }
    if (isArray && d.arraySize != 0)
    {
        _attrNumber(out, "ARRAYSIZE", d.arraySize);
    }
    if (!d.classOrigin.isNull())
    {
        _attrName(out, "CLASSORIGIN", d.classOrigin);
    }
    if (d.propagated)
    {
        _attr(out, "PROPAGATED", "true");
    }
    if (type == CIMTYPE_OBJECT || type == CIMTYPE_INSTANCE)
    {
        _attr(out, "EmbeddedObject", type == CIMTYPE_OBJECT ? "object" : "instance");
    }
}

// Every instance of a class repeats the same start tags, so each is made
// once per declaration and copied from then on.
void _property(std::string& out, const CIMProperty& p, const CIMValue& value)
{
    const CIMPropertyRep& rep = *SdkRepAccess::rep(p);
    const CIMType type = value.getType();
    const bool isArray = value.isArray();
    const CIMPropertyDecl::EncodedTag* tag = rep.decl->encodedTag();
    if (!tag)
    {
        auto made = std::make_unique<CIMPropertyDecl::EncodedTag>();
        made->type = type;
        made->isArray = isArray;
        _propertyTag(made->text, *rep.decl, type, isArray);
        tag = rep.decl->keepEncodedTag(std::move(made));
    }
    if (tag->type == type && tag->isArray == isArray)
    {
        out += tag->text;
    }
    else
    {
        _propertyTag(out, *rep.decl, type, isArray);
    }
    out += '>';
    if (rep.qualifiers().count() != 0)
    {
        _allQualifiers(out, rep.qualifiers());
    }
    appendValue(out, value);
    out += type == CIMTYPE_REFERENCE ? "</PROPERTY.REFERENCE>"
           : isArray                 ? "</PROPERTY.ARRAY>"
                                     : "</PROPERTY>";
}

void _parameter(std::string& out, const CIMConstParameter& p)
{
    bool ref = p.getType() == CIMTYPE_REFERENCE;
    const char* element = ref ? (p.isArray() ? "PARAMETER.REFARRAY" : "PARAMETER.REFERENCE")
                              : (p.isArray() ? "PARAMETER.ARRAY" : "PARAMETER");
    out += '<';
    out += element;
    _attrName(out, "NAME", p.getName());
    if (ref)
    {
        if (!p.getReferenceClassName().isNull())
        {
            _attrName(out, "REFERENCECLASS", p.getReferenceClassName());
        }
    }
    else
    {
        _attr(out, "TYPE", cimTypeToString(p.getType()));
    }
    if (p.isArray() && p.getArraySize() != 0)
    {
        _attrNumber(out, "ARRAYSIZE", p.getArraySize());
    }
    out += '>';
    _allQualifiers(out, p);
    out += "</";
    out += element;
    out += '>';
}

void _method(std::string& out, const CIMConstMethod& m)
{
    out += "<METHOD";
    _attrName(out, "NAME", m.getName());
    _attr(out, "TYPE", cimTypeToString(m.getType()));
    if (!m.getClassOrigin().isNull())
    {
        _attrName(out, "CLASSORIGIN", m.getClassOrigin());
    }
    if (m.getPropagated())
    {
        _attr(out, "PROPAGATED", "true");
    }
    out += '>';
    _allQualifiers(out, m);
    for (Uint32 i = 0; i < m.getParameterCount(); ++i)
    {
        _parameter(out, m.getParameter(i));
    }
    out += "</METHOD>";
}

std::string _paramType(const CIMValue& value)
{
    CIMType type = value.getType();
    if (type == CIMTYPE_OBJECT || type == CIMTYPE_INSTANCE)
    {
        return "string";
    }
    return cimTypeToString(type);
}
} // namespace

std::string str(const String& text)
{
    std::string out;
    Sdk::appendUtf8(out, text);
    // As the C string did: the text ends at an embedded NUL.
    size_t nul = out.find('\0');
    if (nul != std::string::npos)
    {
        out.resize(nul);
    }
    return out;
}

namespace
{
// Length of the well-formed UTF-8 sequence at text[i] that XML 1.0 can carry
// (no surrogates, no U+FFFE/U+FFFF), or 0.
size_t _xmlCharLength(std::string_view text, size_t i)
{
    unsigned char c = static_cast<unsigned char>(text[i]);
    size_t len = c >= 0xF0 && c <= 0xF4 ? 4 : c >= 0xE0 ? 3 : c >= 0xC2 && c < 0xE0 ? 2 : 0;
    if (len == 0 || c > 0xF4 || i + len > text.size())
    {
        return 0;
    }
    unsigned code = c & (0x7F >> len);
    for (size_t k = 1; k < len; ++k)
    {
        unsigned char next = static_cast<unsigned char>(text[i + k]);
        if ((next & 0xC0) != 0x80)
        {
            return 0;
        }
        code = (code << 6) | (next & 0x3F);
    }
    const unsigned minimum[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < minimum[len] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF) ||
        code == 0xFFFE || code == 0xFFFF)
    {
        return 0;
    }
    return len;
}
} // namespace

namespace
{
// Characters that go out as they are: printable ASCII but the markup ones.
inline bool _plain(unsigned c)
{
    return c >= 0x20 && c < 0x7f && c != '&' && c != '<' && c != '>' && c != '"';
}
} // namespace

void appendEscaped(std::string& out, std::string_view text)
{
    const size_t n = text.size();
    size_t i = 0;
    while (i < n)
    {
        // Runs of plain characters are copied whole.
        size_t run = i;
        while (run < n && _plain(static_cast<unsigned char>(text[run])))
        {
            ++run;
        }
        out.append(text.data() + i, run - i);
        i = run;
        if (i == n)
        {
            break;
        }
        unsigned char c = static_cast<unsigned char>(text[i]);
        if (c >= 0x80)
        {
            // Clients reject the whole answer over one bad character: put
            // the replacement character in its place instead.
            size_t len = _xmlCharLength(text, i);
            if (len == 0)
            {
                out += "&#xFFFD;";
                ++i;
            }
            else
            {
                out.append(text.data() + i, len);
                i += len;
            }
            continue;
        }
        switch (c)
        {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        case '\r':
            out += "&#13;";
            break;
        case '\n':
            out += "&#10;";
            break;
        case '\t':
            out += "&#9;";
            break;
        default:
            // XML 1.0 cannot carry other control characters at all.
            out += "&#xFFFD;";
        }
        ++i;
    }
}

void appendEscaped(std::string& out, const String& text)
{
    const Char16* p = text.getChar16Data();
    const size_t n = text.size();
    // Names and most values are plain ASCII: written straight from UTF-16.
    size_t start = out.size();
    out.resize(start + n);
    char* q = &out[start];
    size_t i = 0;
    for (; i < n && _plain(Uint16(p[i])); ++i)
    {
        q[i] = char(Uint16(p[i]));
    }
    out.resize(start + i);
    if (i < n)
    {
        appendEscaped(out, str(String(p + i, Uint32(n - i))));
    }
}

std::string escape(const std::string& text)
{
    std::string out;
    out.reserve(text.size());
    appendEscaped(out, text);
    return out;
}

void appendScalarText(std::string& out, const CIMValue& value, Uint32 index)
{
    char buf[64];
    switch (value.getType())
    {
    case CIMTYPE_BOOLEAN:
        out += _item<Boolean>(value, index) ? "TRUE" : "FALSE";
        return;
    case CIMTYPE_UINT8:
        _appendNumber(out, _item<Uint8>(value, index));
        return;
    case CIMTYPE_SINT8:
        _appendNumber(out, _item<Sint8>(value, index));
        return;
    case CIMTYPE_UINT16:
        _appendNumber(out, _item<Uint16>(value, index));
        return;
    case CIMTYPE_SINT16:
        _appendNumber(out, _item<Sint16>(value, index));
        return;
    case CIMTYPE_UINT32:
        _appendNumber(out, _item<Uint32>(value, index));
        return;
    case CIMTYPE_SINT32:
        _appendNumber(out, _item<Sint32>(value, index));
        return;
    case CIMTYPE_UINT64:
        _appendNumber(out, static_cast<uint64_t>(_item<Uint64>(value, index)));
        return;
    case CIMTYPE_SINT64:
        _appendNumber(out, static_cast<int64_t>(_item<Sint64>(value, index)));
        return;
    case CIMTYPE_REAL32:
        snprintf(buf, sizeof(buf), "%.9g", static_cast<double>(_item<Real32>(value, index)));
        out += buf;
        return;
    case CIMTYPE_REAL64:
        snprintf(buf, sizeof(buf), "%.17g", _item<Real64>(value, index));
        out += buf;
        return;
    case CIMTYPE_CHAR16:
    {
        std::string c;
        _appendUtf8(c, _item<Char16>(value, index));
        appendEscaped(out, c);
        return;
    }
    case CIMTYPE_STRING:
        appendEscaped(out, _item<String>(value, index));
        return;
    case CIMTYPE_DATETIME:
        appendEscaped(out, _item<CIMDateTime>(value, index).toString());
        return;
    case CIMTYPE_OBJECT:
        appendEscaped(out, _embedded(_item<CIMObject>(value, index)));
        return;
    case CIMTYPE_INSTANCE:
        appendEscaped(out, _embedded(CIMObject(_item<CIMInstance>(value, index))));
        return;
    case CIMTYPE_REFERENCE:
        appendEscaped(out, _item<CIMObjectPath>(value, index).toString());
        return;
    }
}

void appendValue(std::string& out, const CIMValue& value)
{
    if (value.isNull())
    {
        return;
    }
    if (value.getType() == CIMTYPE_REFERENCE)
    {
        if (!value.isArray())
        {
            CIMObjectPath path;
            value.get(path);
            appendValueReference(out, path);
            return;
        }
        Array<CIMObjectPath> paths;
        value.get(paths);
        out += "<VALUE.REFARRAY>";
        for (Uint32 i = 0; i < paths.size(); ++i)
        {
            appendValueReference(out, paths[i]);
        }
        out += "</VALUE.REFARRAY>";
        return;
    }
    if (!value.isArray())
    {
        out += "<VALUE>";
        appendScalarText(out, value, 0);
        out += "</VALUE>";
        return;
    }
    out += "<VALUE.ARRAY>";
    for (Uint32 i = 0; i < value.getArraySize(); ++i)
    {
        out += "<VALUE>";
        appendScalarText(out, value, i);
        out += "</VALUE>";
    }
    out += "</VALUE.ARRAY>";
}

void appendClassName(std::string& out, const CIMName& name)
{
    out += "<CLASSNAME";
    _attrName(out, "NAME", name);
    out += "/>";
}

void appendInstanceName(std::string& out, const CIMObjectPath& path)
{
    out += "<INSTANCENAME";
    _attrName(out, "CLASSNAME", path.getClassName());
    out += '>';
    Array<CIMKeyBinding> keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); ++i)
    {
        out += "<KEYBINDING";
        _attrName(out, "NAME", keys[i].getName());
        out += '>';
        if (keys[i].getType() == CIMKeyBinding::REFERENCE)
        {
            CIMObjectPath ref;
            try
            {
                ref = CIMObjectPath(keys[i].getValue());
            }
            catch (const Exception&)
            {
                // Unparsable reference text: still answer, as a plain string.
                out += "<KEYVALUE VALUETYPE=\"string\">";
                appendEscaped(out, keys[i].getValue());
                out += "</KEYVALUE></KEYBINDING>";
                continue;
            }
            appendValueReference(out, ref);
        }
        else
        {
            out += "<KEYVALUE";
            _attr(out, "VALUETYPE", _keyValueType(keys[i].getType()));
            out += '>';
            appendEscaped(out, keys[i].getValue());
            out += "</KEYVALUE>";
        }
        out += "</KEYBINDING>";
    }
    out += "</INSTANCENAME>";
}

void appendLocalNamespacePath(std::string& out, const CIMNamespaceName& ns)
{
    out += "<LOCALNAMESPACEPATH>";
    std::string text = str(ns.getString());
    size_t start = 0;
    while (start <= text.size())
    {
        size_t slash = text.find('/', start);
        std::string part = text.substr(start, slash == std::string::npos ? std::string::npos
                                                                          : slash - start);
        if (!part.empty())
        {
            out += "<NAMESPACE";
            _attr(out, "NAME", part);
            out += "/>";
        }
        if (slash == std::string::npos)
        {
            break;
        }
        start = slash + 1;
    }
    out += "</LOCALNAMESPACEPATH>";
}

namespace
{
void _namespacePath(std::string& out, const CIMObjectPath& path, const String& defaultHost,
                    const CIMNamespaceName& defaultNs)
{
    out += "<NAMESPACEPATH><HOST>";
    appendEscaped(out, path.getHost().size() != 0 ? path.getHost() : defaultHost);
    out += "</HOST>";
    appendLocalNamespacePath(out, path.getNameSpace().isNull() ? defaultNs : path.getNameSpace());
    out += "</NAMESPACEPATH>";
}
} // namespace

void appendInstancePath(std::string& out, const CIMObjectPath& path, const String& defaultHost,
                        const CIMNamespaceName& defaultNs)
{
    out += "<INSTANCEPATH>";
    _namespacePath(out, path, defaultHost, defaultNs);
    appendInstanceName(out, path);
    out += "</INSTANCEPATH>";
}

void appendClassPath(std::string& out, const CIMObjectPath& path, const String& defaultHost,
                     const CIMNamespaceName& defaultNs)
{
    out += "<CLASSPATH>";
    _namespacePath(out, path, defaultHost, defaultNs);
    appendClassName(out, path.getClassName());
    out += "</CLASSPATH>";
}

void appendValueReference(std::string& out, const CIMObjectPath& path)
{
    out += "<VALUE.REFERENCE>";
    bool hasNs = !path.getNameSpace().isNull();
    if (hasNs && path.getHost().size() != 0)
    {
        appendInstancePath(out, path, path.getHost(), path.getNameSpace());
    }
    else if (hasNs)
    {
        out += "<LOCALINSTANCEPATH>";
        appendLocalNamespacePath(out, path.getNameSpace());
        appendInstanceName(out, path);
        out += "</LOCALINSTANCEPATH>";
    }
    else
    {
        appendInstanceName(out, path);
    }
    out += "</VALUE.REFERENCE>";
}

void appendInstance(std::string& out, const CIMConstInstance& instance)
{
    out += "<INSTANCE";
    _attrName(out, "CLASSNAME", instance.getClassName());
    out += '>';
    _allQualifiers(out, SdkRepAccess::rep(instance)->qualifiers);
    // Read through the list, not handed out one by one.
    const auto properties = SdkRepAccess::rep(instance)->properties.view();
    for (size_t i = 0; i < properties.size(); i++)
    {
        _property(out, properties[i], properties.value(i));
    }
    out += "</INSTANCE>";
}

void appendClass(std::string& out, const CIMConstClass& cimClass)
{
    out += "<CLASS";
    _attrName(out, "NAME", cimClass.getClassName());
    if (!cimClass.getSuperClassName().isNull())
    {
        _attrName(out, "SUPERCLASS", cimClass.getSuperClassName());
    }
    out += '>';
    _allQualifiers(out, SdkRepAccess::rep(cimClass)->qualifiers);
    const auto properties = SdkRepAccess::rep(cimClass)->properties.view();
    for (size_t i = 0; i < properties.size(); i++)
    {
        _property(out, properties[i], properties.value(i));
    }
    for (Uint32 i = 0; i < cimClass.getMethodCount(); ++i)
    {
        _method(out, cimClass.getMethod(i));
    }
    out += "</CLASS>";
}

void appendReturnValue(std::string& out, const CIMValue& value)
{
    out += "<RETURNVALUE";
    _attr(out, "PARAMTYPE", _paramType(value));
    out += '>';
    appendValue(out, value);
    out += "</RETURNVALUE>";
}

void appendParamValue(std::string& out, const CIMParamValue& param)
{
    out += "<PARAMVALUE";
    _attr(out, "NAME", str(param.getParameterName()));
    const CIMValue& value = param.getValue();
    _attr(out, "PARAMTYPE", _paramType(value));
    out += '>';
    appendValue(out, value);
    out += "</PARAMVALUE>";
}

void appendError(std::string& out, Uint32 code, const std::string& description)
{
    out += "<ERROR";
    _attr(out, "CODE", std::to_string(code));
    _attr(out, "DESCRIPTION", description);
    out += "/>";
}

std::string messageStart(const std::string& messageId)
{
    std::string out = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                      "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE";
    _attr(out, "ID", messageId);
    _attr(out, "PROTOCOLVERSION", "1.0");
    out += "><SIMPLERSP>";
    return out;
}

std::string messageEnd()
{
    return "</SIMPLERSP></MESSAGE></CIM>\n";
}

} // namespace cimxml
} // namespace orv
