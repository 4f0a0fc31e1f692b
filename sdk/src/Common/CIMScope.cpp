#include <Pegasus/Common/CIMScope.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{
const Uint32 SCOPE_NONE = 0;
const Uint32 SCOPE_CLASS = 1;
const Uint32 SCOPE_ASSOCIATION = 2;
const Uint32 SCOPE_INDICATION = 4;
const Uint32 SCOPE_PROPERTY = 8;
const Uint32 SCOPE_REFERENCE = 16;
const Uint32 SCOPE_METHOD = 32;
const Uint32 SCOPE_PARAMETER = 64;
const Uint32 SCOPE_ANY = 127;
} // namespace

const CIMScope CIMScope::NONE(SCOPE_NONE);
const CIMScope CIMScope::CLASS(SCOPE_CLASS);
const CIMScope CIMScope::ASSOCIATION(SCOPE_ASSOCIATION);
const CIMScope CIMScope::INDICATION(SCOPE_INDICATION);
const CIMScope CIMScope::PROPERTY(SCOPE_PROPERTY);
const CIMScope CIMScope::REFERENCE(SCOPE_REFERENCE);
const CIMScope CIMScope::METHOD(SCOPE_METHOD);
const CIMScope CIMScope::PARAMETER(SCOPE_PARAMETER);
const CIMScope CIMScope::ANY(SCOPE_ANY);

CIMScope::CIMScope() : cimScope(SCOPE_NONE)
{
}

CIMScope::CIMScope(const CIMScope& scope) : cimScope(scope.cimScope)
{
}

CIMScope::CIMScope(const Uint32 scope) : cimScope(scope)
{
}

CIMScope& CIMScope::operator=(const CIMScope& scope)
{
    cimScope = scope.cimScope;
    return *this;
}

void CIMScope::addScope(const CIMScope& scope)
{
    cimScope |= scope.cimScope;
}

void CIMScope::removeScope(const CIMScope& scope)
{
    cimScope &= ~scope.cimScope;
}

Boolean CIMScope::hasScope(const CIMScope& scope) const
{
    return (cimScope & scope.cimScope) == scope.cimScope;
}

Boolean CIMScope::equal(const CIMScope& scope) const
{
    return cimScope == scope.cimScope;
}

CIMScope CIMScope::operator+(const CIMScope& scope) const
{
    return CIMScope(cimScope | scope.cimScope);
}

String CIMScope::toString() const
{
    if (cimScope == SCOPE_ANY)
    {
        return String("ANY");
    }
    static const struct
    {
        Uint32 bit;
        const char* word;
    } words[] = {{SCOPE_CLASS, "CLASS"},         {SCOPE_ASSOCIATION, "ASSOCIATION"},
                 {SCOPE_INDICATION, "INDICATION"}, {SCOPE_PROPERTY, "PROPERTY"},
                 {SCOPE_REFERENCE, "REFERENCE"},   {SCOPE_METHOD, "METHOD"},
                 {SCOPE_PARAMETER, "PARAMETER"}};
    String text;
    for (const auto& w : words)
    {
        if (cimScope & w.bit)
        {
            if (text.size())
            {
                text.append(" ");
            }
            text.append(w.word);
        }
    }
    return text;
}

PEGASUS_NAMESPACE_END
