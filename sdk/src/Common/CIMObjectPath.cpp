#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <vector>

PEGASUS_NAMESPACE_BEGIN

namespace
{

Boolean _isDigit(Uint16 c)
{
    return c >= '0' && c <= '9';
}

Boolean _isHexDigit(Uint16 c)
{
    return _isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// ASCII text of s, or false when s holds anything else.
Boolean _ascii(const String& s, std::string& out)
{
    out.clear();
    for (Uint32 i = 0; i < s.size(); i++)
    {
        Uint16 c = s[i];
        if (c == 0 || c > 0x7F)
        {
            return false;
        }
        out += char(c);
    }
    return true;
}

// Integer literals: decimal with an optional sign, or 0x hexadecimal.
// Real literals: digits with a '.' and/or an exponent.
enum NumberKind
{
    NOT_A_NUMBER,
    SIGNED_INTEGER,
    UNSIGNED_INTEGER,
    REAL_NUMBER
};

NumberKind _numberKind(const String& s)
{
    Uint32 n = s.size();
    Uint32 i = 0;
    Boolean negative = false;
    if (i < n && (s[i] == '+' || s[i] == '-'))
    {
        negative = s[i] == '-';
        i++;
    }
    if (i + 1 < n && s[i] == '0' && (s[i + 1] == 'x' || s[i + 1] == 'X'))
    {
        i += 2;
        if (i == n)
        {
            return NOT_A_NUMBER;
        }
        for (; i < n; i++)
        {
            if (!_isHexDigit(s[i]))
            {
                return NOT_A_NUMBER;
            }
        }
        return negative ? SIGNED_INTEGER : UNSIGNED_INTEGER;
    }
    Uint32 digits = 0;
    for (; i < n && _isDigit(s[i]); i++)
    {
        digits++;
    }
    if (i == n)
    {
        return digits ? (negative ? SIGNED_INTEGER : UNSIGNED_INTEGER) : NOT_A_NUMBER;
    }
    if (s[i] == '.')
    {
        for (i++; i < n && _isDigit(s[i]); i++)
        {
            digits++;
        }
    }
    if (!digits)
    {
        return NOT_A_NUMBER;
    }
    if (i < n && (s[i] == 'e' || s[i] == 'E'))
    {
        i++;
        if (i < n && (s[i] == '+' || s[i] == '-'))
        {
            i++;
        }
        Uint32 expDigits = 0;
        for (; i < n && _isDigit(s[i]); i++)
        {
            expDigits++;
        }
        if (!expDigits)
        {
            return NOT_A_NUMBER;
        }
    }
    return i == n ? REAL_NUMBER : NOT_A_NUMBER;
}

// The number in a canonical text, so that equal numbers written
// differently ("10", "+10", "0xA") compare and hash alike.
String _canonicalNumber(const String& s)
{
    std::string text;
    NumberKind kind = _numberKind(s);
    if (kind == NOT_A_NUMBER || !_ascii(s, text))
    {
        return s;
    }
    char buffer[64];
    // Leading zeros are decimal, not octal.
    int base =
        (text.find('x') != std::string::npos || text.find('X') != std::string::npos) ? 16 : 10;
    errno = 0;
    if (kind == UNSIGNED_INTEGER)
    {
        const char* p = text.c_str() + (text[0] == '+' ? 1 : 0);
        unsigned long long v = strtoull(p, nullptr, base);
        if (errno == 0)
        {
            snprintf(buffer, sizeof(buffer), "%llu", v);
            return String(buffer);
        }
    }
    else if (kind == SIGNED_INTEGER)
    {
        long long v = strtoll(text.c_str(), nullptr, base);
        if (errno == 0)
        {
            if (v == 0)
            {
                return String("0");
            }
            snprintf(buffer, sizeof(buffer), "%lld", v);
            return String(buffer);
        }
    }
    double d = strtod(text.c_str(), nullptr);
    // The range first: converting a double beyond long long is undefined.
    if (d > -9.2e18 && d < 9.2e18 && d == static_cast<double>(static_cast<long long>(d)))
    {
        snprintf(buffer, sizeof(buffer), "%lld", static_cast<long long>(d));
    }
    else
    {
        snprintf(buffer, sizeof(buffer), "%.17g", d);
    }
    return String(buffer);
}

Boolean _legalHost(const String& host)
{
    Uint32 n = host.size();
    if (n == 0)
    {
        return true;
    }
    Uint32 i = 0;
    if (host[0] == '[')
    {
        Uint32 close = host.find(Char16(']'));
        if (close == PEG_NOT_FOUND || close < 2)
        {
            return false;
        }
        for (i = 1; i < close; i++)
        {
            Uint16 c = host[i];
            if (!_isHexDigit(c) && c != ':' && c != '.')
            {
                return false;
            }
        }
        i = close + 1;
    }
    else
    {
        for (; i < n && host[i] != ':'; i++)
        {
            Uint16 c = host[i];
            if (!(_isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' ||
                  c == '_' || c == '.'))
            {
                return false;
            }
        }
        if (i == 0)
        {
            return false;
        }
    }
    if (i == n)
    {
        return true;
    }
    if (host[i] != ':' || i + 1 == n || n - i - 1 > 5)
    {
        return false;
    }
    Uint32 port = 0;
    for (i++; i < n; i++)
    {
        if (!_isDigit(host[i]))
        {
            return false;
        }
        port = port * 10 + (host[i] - '0');
    }
    return port <= 65535;
}

std::vector<CIMKeyBinding> _sorted(const Array<CIMKeyBinding>& keys)
{
    std::vector<CIMKeyBinding> result(keys.getData(), keys.getData() + keys.size());
    std::stable_sort(
        result.begin(), result.end(),
        [](const CIMKeyBinding& a, const CIMKeyBinding& b)
        { return String::compareNoCase(a.getName().getString(), b.getName().getString()) < 0; });
    return result;
}

void _appendQuoted(String& out, const String& value)
{
    out.append(Char16('"'));
    for (Uint32 i = 0; i < value.size(); i++)
    {
        Char16 c = value[i];
        if (c == '"' || c == '\\')
        {
            out.append(Char16('\\'));
        }
        out.append(c);
    }
    out.append(Char16('"'));
}

[[noreturn]] void _malformed(const String& objectName)
{
    throw MalformedObjectNameException(objectName);
}

// Whether a quoted key value is itself an instance path.
Boolean _isReference(const String& value)
{
    try
    {
        CIMObjectPath path(value);
        return path.getKeyBindings().size() > 0;
    }
    catch (const Exception&)
    {
        return false;
    }
}

void _parse(const String& text, String& host, CIMNamespaceName& nameSpace, CIMName& className,
            Array<CIMKeyBinding>& keys)
{
    const Uint32 n = text.size();
    Uint32 i = 0;

    if (n >= 2 && text[0] == '/' && text[1] == '/')
    {
        Uint32 slash = text.find(2, Char16('/'));
        if (slash == PEG_NOT_FOUND)
        {
            _malformed(text);
        }
        host = text.subString(2, slash - 2);
        if (host.size() == 0 || !_legalHost(host))
        {
            _malformed(text);
        }
        i = slash + 1;
    }

    Uint32 stop = i;
    while (stop < n && text[stop] != ':' && text[stop] != '.' && text[stop] != '=' &&
           text[stop] != '"')
    {
        stop++;
    }
    if (stop < n && text[stop] == ':')
    {
        String ns = text.subString(i, stop - i);
        // "//host/:Class" is how a path with a host but no namespace prints.
        if (ns.size() == 0 && host.size() != 0)
        {
            i = stop + 1;
        }
        else if (!CIMNamespaceName::legal(ns))
        {
            _malformed(text);
        }
        else
        {
            nameSpace = CIMNamespaceName(ns);
            i = stop + 1;
        }
    }

    stop = i;
    while (stop < n && text[stop] != '.' && text[stop] != '=')
    {
        stop++;
    }
    String cls = text.subString(i, stop - i);
    if (!CIMName::legal(cls))
    {
        _malformed(text);
    }
    className = CIMName(cls);
    i = stop;
    if (i == n)
    {
        return;
    }
    if (text[i] == '=')
    {
        // "Class=@": the one instance of a keyless class.
        if (i + 2 != n || text[i + 1] != '@')
        {
            _malformed(text);
        }
        return;
    }

    // Key bindings after the '.'. A '.' with nothing after it names the class
    // alone, as OpenPegasus reads it.
    i++;
    if (i == n)
    {
        return;
    }
    for (;;)
    {
        Uint32 eq = text.find(i, Char16('='));
        if (eq == PEG_NOT_FOUND)
        {
            _malformed(text);
        }
        String keyName = text.subString(i, eq - i);
        if (!CIMName::legal(keyName))
        {
            _malformed(text);
        }
        for (Uint32 k = 0; k < keys.size(); k++)
        {
            if (String::equalNoCase(keys[k].getName().getString(), keyName))
            {
                _malformed(text);
            }
        }
        i = eq + 1;
        if (i == n)
        {
            _malformed(text);
        }

        String value;
        CIMKeyBinding::Type type;
        if (text[i] == '"')
        {
            for (i++; i < n && text[i] != '"'; i++)
            {
                if (text[i] == '\\')
                {
                    if (++i == n)
                    {
                        _malformed(text);
                    }
                }
                value.append(text[i]);
            }
            if (i == n)
            {
                _malformed(text);
            }
            i++;
            type = _isReference(value) ? CIMKeyBinding::REFERENCE : CIMKeyBinding::STRING;
        }
        else if (text[i] == '\'')
        {
            // A char16 key: one character in single quotes.
            if (i + 2 >= n || text[i + 2] != '\'')
            {
                _malformed(text);
            }
            value.append(text[i + 1]);
            i += 3;
            type = CIMKeyBinding::STRING;
        }
        else
        {
            Uint32 end = text.find(i, Char16(','));
            if (end == PEG_NOT_FOUND)
            {
                end = n;
            }
            value = text.subString(i, end - i);
            i = end;
            if (String::equalNoCase(value, "TRUE") || String::equalNoCase(value, "FALSE"))
            {
                type = CIMKeyBinding::BOOLEAN;
            }
            else if (_numberKind(value) != NOT_A_NUMBER)
            {
                type = CIMKeyBinding::NUMERIC;
            }
            else
            {
                _malformed(text);
            }
        }
        keys.append(CIMKeyBinding(CIMName(keyName), value, type));

        if (i == n)
        {
            return;
        }
        if (text[i] != ',' || i + 1 == n)
        {
            _malformed(text);
        }
        i++;
    }
}

Boolean _valuesEqual(CIMKeyBinding::Type type, const String& x, const String& y)
{
    switch (type)
    {
    case CIMKeyBinding::REFERENCE:
        try
        {
            return CIMObjectPath(x).identical(CIMObjectPath(y));
        }
        catch (const Exception&)
        {
            return String::equal(x, y);
        }
    case CIMKeyBinding::NUMERIC:
        return String::equal(_canonicalNumber(x), _canonicalNumber(y));
    case CIMKeyBinding::BOOLEAN:
        return String::equalNoCase(x, y);
    case CIMKeyBinding::STRING:
    default:
        return String::equal(x, y);
    }
}

String _canonicalPath(const CIMObjectPath& path);

String _canonicalValue(const CIMKeyBinding& key)
{
    String value = key.getValue();
    switch (key.getType())
    {
    case CIMKeyBinding::REFERENCE:
        try
        {
            return _canonicalPath(CIMObjectPath(value));
        }
        catch (const Exception&)
        {
            return value;
        }
    case CIMKeyBinding::NUMERIC:
        return _canonicalNumber(value);
    case CIMKeyBinding::BOOLEAN:
        value.toLower();
        return value;
    case CIMKeyBinding::STRING:
    default:
        return value;
    }
}

// A text equal for identical paths and different otherwise.
String _canonicalPath(const CIMObjectPath& path)
{
    String host = path.getHost();
    String ns = path.getNameSpace().getString();
    String cls = path.getClassName().getString();
    host.toLower();
    ns.toLower();
    cls.toLower();
    String out = host + "/" + ns + ":" + cls;
    for (const CIMKeyBinding& key : _sorted(path.getKeyBindings()))
    {
        String name = key.getName().getString();
        name.toLower();
        out.append(Char16(','));
        out.append(name);
        out.append(Char16('='));
        out.append(Char16(Uint16('0' + key.getType())));
        _appendQuoted(out, _canonicalValue(key));
    }
    return out;
}

} // namespace

//
// CIMKeyBinding
//

CIMKeyBinding::CIMKeyBinding() : _type(STRING) {}

CIMKeyBinding::CIMKeyBinding(const CIMKeyBinding& x) = default;

CIMKeyBinding::CIMKeyBinding(const CIMName& name, const String& value, Type type)
    : _name(name), _value(value), _type(type)
{
}

CIMKeyBinding::CIMKeyBinding(const CIMName& name, const CIMValue& value) : _name(name)
{
    if (value.isArray())
    {
        throw TypeMismatchException();
    }
    switch (value.getType())
    {
    case CIMTYPE_BOOLEAN:
        _type = BOOLEAN;
        break;
    case CIMTYPE_UINT8:
    case CIMTYPE_SINT8:
    case CIMTYPE_UINT16:
    case CIMTYPE_SINT16:
    case CIMTYPE_UINT32:
    case CIMTYPE_SINT32:
    case CIMTYPE_UINT64:
    case CIMTYPE_SINT64:
    case CIMTYPE_REAL32:
    case CIMTYPE_REAL64:
        _type = NUMERIC;
        break;
    case CIMTYPE_CHAR16:
    case CIMTYPE_STRING:
    case CIMTYPE_DATETIME:
        _type = STRING;
        break;
    case CIMTYPE_REFERENCE:
        _type = REFERENCE;
        break;
    default:
        throw TypeMismatchException();
    }
    _value = value.toString();
}

CIMKeyBinding::~CIMKeyBinding() {}

CIMKeyBinding& CIMKeyBinding::operator=(const CIMKeyBinding& x) = default;

const CIMName& CIMKeyBinding::getName() const
{
    return _name;
}

void CIMKeyBinding::setName(const CIMName& name)
{
    _name = name;
}

const String& CIMKeyBinding::getValue() const
{
    return _value;
}

void CIMKeyBinding::setValue(const String& value)
{
    _value = value;
}

CIMKeyBinding::Type CIMKeyBinding::getType() const
{
    return _type;
}

void CIMKeyBinding::setType(Type type)
{
    _type = type;
}

Boolean CIMKeyBinding::equal(CIMValue value)
{
    try
    {
        CIMKeyBinding other(_name, value);
        return other.getType() == _type && _valuesEqual(_type, _value, other.getValue());
    }
    catch (const TypeMismatchException&)
    {
        return false;
    }
}

Boolean operator==(const CIMKeyBinding& x, const CIMKeyBinding& y)
{
    return x.getName().equal(y.getName()) && x.getType() == y.getType() &&
           _valuesEqual(x.getType(), x.getValue(), y.getValue());
}

//
// CIMObjectPath
//

CIMObjectPath::CIMObjectPath() {}

CIMObjectPath::CIMObjectPath(const CIMObjectPath& x) = default;

CIMObjectPath::CIMObjectPath(const String& objectName)
{
    set(objectName);
}

CIMObjectPath::CIMObjectPath(const String& host, const CIMNamespaceName& nameSpace,
                             const CIMName& className, const Array<CIMKeyBinding>& keyBindings)
{
    set(host, nameSpace, className, keyBindings);
}

CIMObjectPath::~CIMObjectPath() {}

CIMObjectPath& CIMObjectPath::operator=(const CIMObjectPath& x) = default;

CIMObjectPath& CIMObjectPath::operator=(const String& objectName)
{
    set(objectName);
    return *this;
}

void CIMObjectPath::clear()
{
    _host.clear();
    _nameSpace.clear();
    _className.clear();
    _keyBindings.clear();
}

void CIMObjectPath::set(const String& host, const CIMNamespaceName& nameSpace,
                        const CIMName& className, const Array<CIMKeyBinding>& keyBindings)
{
    setHost(host);
    _nameSpace = nameSpace;
    _className = className;
    _keyBindings = keyBindings;
}

void CIMObjectPath::set(const String& objectName)
{
    String host;
    CIMNamespaceName nameSpace;
    CIMName className;
    Array<CIMKeyBinding> keys;
    _parse(objectName, host, nameSpace, className, keys);
    _host = host;
    _nameSpace = nameSpace;
    _className = className;
    _keyBindings = keys;
}

const String& CIMObjectPath::getHost() const
{
    return _host;
}

void CIMObjectPath::setHost(const String& host)
{
    if (!_legalHost(host))
    {
        throw MalformedObjectNameException(host);
    }
    _host = host;
}

const CIMNamespaceName& CIMObjectPath::getNameSpace() const
{
    return _nameSpace;
}

void CIMObjectPath::setNameSpace(const CIMNamespaceName& nameSpace)
{
    _nameSpace = nameSpace;
}

const CIMName& CIMObjectPath::getClassName() const
{
    return _className;
}

void CIMObjectPath::setClassName(const CIMName& className)
{
    _className = className;
}

const Array<CIMKeyBinding>& CIMObjectPath::getKeyBindings() const
{
    return _keyBindings;
}

void CIMObjectPath::setKeyBindings(const Array<CIMKeyBinding>& keyBindings)
{
    _keyBindings = keyBindings;
}

String CIMObjectPath::toString() const
{
    String out;
    if (_host.size())
    {
        out.append("//", 2);
        out.append(_host);
        out.append(Char16('/'));
    }
    // A host is always followed by the namespace part, even an empty one.
    if (!_nameSpace.isNull() || _host.size())
    {
        out.append(_nameSpace.getString());
        out.append(Char16(':'));
    }
    out.append(_className.getString());
    Boolean first = true;
    for (const CIMKeyBinding& key : _sorted(_keyBindings))
    {
        out.append(Char16(first ? '.' : ','));
        first = false;
        out.append(key.getName().getString());
        out.append(Char16('='));
        if (key.getType() == CIMKeyBinding::STRING || key.getType() == CIMKeyBinding::REFERENCE)
        {
            _appendQuoted(out, key.getValue());
        }
        else
        {
            out.append(key.getValue());
        }
    }
    return out;
}

Boolean CIMObjectPath::identical(const CIMObjectPath& x) const
{
    if (!String::equalNoCase(_host, x._host) || !_nameSpace.equal(x._nameSpace) ||
        !_className.equal(x._className) || _keyBindings.size() != x._keyBindings.size())
    {
        return false;
    }
    std::vector<CIMKeyBinding> a = _sorted(_keyBindings);
    std::vector<CIMKeyBinding> b = _sorted(x._keyBindings);
    for (size_t i = 0; i < a.size(); i++)
    {
        if (!(a[i] == b[i]))
        {
            return false;
        }
    }
    return true;
}

Uint32 CIMObjectPath::makeHashCode() const
{
    String text = _canonicalPath(*this);
    Uint32 hash = 2166136261u;
    for (Uint32 i = 0; i < text.size(); i++)
    {
        hash = (hash ^ Uint16(text[i])) * 16777619u;
    }
    return hash;
}

Boolean operator==(const CIMObjectPath& x, const CIMObjectPath& y)
{
    return x.identical(y);
}

Boolean operator!=(const CIMObjectPath& x, const CIMObjectPath& y)
{
    return !x.identical(y);
}

PEGASUS_NAMESPACE_END
