#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{

Boolean _isFirstChar(Uint16 c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' ||
           (c >= 0x0080 && c <= 0xFFEF);
}

Boolean _isNextChar(Uint16 c)
{
    return _isFirstChar(c) || (c >= '0' && c <= '9');
}

// Whether [begin, end) of p is a legal identifier.
Boolean _legalIdentifier(const Char16* p, Uint32 begin, Uint32 end)
{
    if (begin >= end || !_isFirstChar(p[begin]))
    {
        return false;
    }
    for (Uint32 i = begin + 1; i < end; i++)
    {
        if (!_isNextChar(p[i]))
        {
            return false;
        }
    }
    return true;
}

String _withoutLeadingSlash(const String& name)
{
    if (name.size() && name[0] == '/')
    {
        return name.subString(1);
    }
    return name;
}

} // namespace

//
// CIMName
//

CIMName::CIMName() {}

CIMName::CIMName(const String& name) : cimName(name)
{
    if (!legal(name))
    {
        throw InvalidNameException(name);
    }
}

CIMName::CIMName(const char* name) : CIMName(String(name)) {}

CIMName::CIMName(const CIMName& name) = default;

CIMName& CIMName::operator=(const CIMName& name) = default;

CIMName& CIMName::operator=(const String& name)
{
    if (!legal(name))
    {
        throw InvalidNameException(name);
    }
    cimName = name;
    return *this;
}

CIMName& CIMName::operator=(const char* name)
{
    return *this = String(name);
}

const String& CIMName::getString() const
{
    return cimName;
}

Boolean CIMName::isNull() const
{
    return cimName.size() == 0;
}

void CIMName::clear()
{
    cimName.clear();
}

Boolean CIMName::equal(const CIMName& name) const
{
    return String::equalNoCase(cimName, name.cimName);
}

Boolean CIMName::legal(const String& name)
{
    return _legalIdentifier(name.getChar16Data(), 0, name.size());
}

Boolean operator==(const CIMName& name1, const CIMName& name2)
{
    return name1.equal(name2);
}

Boolean operator==(const CIMName& name1, const char* name2)
{
    return String::equalNoCase(name1.getString(), String(name2));
}

Boolean operator==(const char* name1, const CIMName& name2)
{
    return name2 == name1;
}

Boolean operator!=(const CIMName& name1, const CIMName& name2)
{
    return !name1.equal(name2);
}

Boolean operator!=(const CIMName& name1, const char* name2)
{
    return !(name1 == name2);
}

Boolean operator!=(const char* name1, const CIMName& name2)
{
    return !(name2 == name1);
}

//
// CIMNamespaceName
//

CIMNamespaceName::CIMNamespaceName() {}

CIMNamespaceName::CIMNamespaceName(const String& name)
{
    *this = name;
}

CIMNamespaceName::CIMNamespaceName(const char* name)
{
    *this = String(name);
}

CIMNamespaceName::CIMNamespaceName(const CIMNamespaceName& name) = default;

CIMNamespaceName& CIMNamespaceName::operator=(const CIMNamespaceName& name) = default;

CIMNamespaceName& CIMNamespaceName::operator=(const String& name)
{
    if (!legal(name))
    {
        throw InvalidNamespaceNameException(name);
    }
    cimNamespaceName = _withoutLeadingSlash(name);
    return *this;
}

CIMNamespaceName& CIMNamespaceName::operator=(const char* name)
{
    return *this = String(name);
}

const String& CIMNamespaceName::getString() const
{
    return cimNamespaceName;
}

Boolean CIMNamespaceName::isNull() const
{
    return cimNamespaceName.size() == 0;
}

void CIMNamespaceName::clear()
{
    cimNamespaceName.clear();
}

Boolean CIMNamespaceName::equal(const CIMNamespaceName& name) const
{
    return String::equalNoCase(cimNamespaceName, name.cimNamespaceName);
}

Boolean CIMNamespaceName::legal(const String& name)
{
    String text = _withoutLeadingSlash(name);
    const Char16* p = text.getChar16Data();
    Uint32 n = text.size();
    if (n == 0)
    {
        return false;
    }
    Uint32 begin = 0;
    for (Uint32 i = 0; i <= n; i++)
    {
        if (i == n || p[i] == '/')
        {
            if (!_legalIdentifier(p, begin, i))
            {
                return false;
            }
            begin = i + 1;
        }
    }
    return true;
}

Boolean operator==(const CIMNamespaceName& name1, const CIMNamespaceName& name2)
{
    return name1.equal(name2);
}

Boolean operator==(const CIMNamespaceName& name1, const char* name2)
{
    return String::equalNoCase(name1.getString(), _withoutLeadingSlash(String(name2)));
}

Boolean operator==(const char* name1, const CIMNamespaceName& name2)
{
    return name2 == name1;
}

Boolean operator!=(const CIMNamespaceName& name1, const CIMNamespaceName& name2)
{
    return !name1.equal(name2);
}

Boolean operator!=(const CIMNamespaceName& name1, const char* name2)
{
    return !(name1 == name2);
}

Boolean operator!=(const char* name1, const CIMNamespaceName& name2)
{
    return !(name2 == name1);
}

PEGASUS_NAMESPACE_END
