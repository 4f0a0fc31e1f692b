#ifndef Pegasus_CIMScope_h
#define Pegasus_CIMScope_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

// The set of element kinds a qualifier declaration may be applied to.
class PEGASUS_COMMON_LINKAGE CIMScope
{
public:
    CIMScope();
    CIMScope(const CIMScope& scope);
    CIMScope& operator=(const CIMScope& scope);

    void addScope(const CIMScope& scope);
    void removeScope(const CIMScope& scope);
    Boolean hasScope(const CIMScope& scope) const;
    Boolean equal(const CIMScope& scope) const;
    CIMScope operator+(const CIMScope& scope) const;
    String toString() const;

    static const CIMScope NONE;
    static const CIMScope CLASS;
    static const CIMScope ASSOCIATION;
    static const CIMScope INDICATION;
    static const CIMScope PROPERTY;
    static const CIMScope REFERENCE;
    static const CIMScope METHOD;
    static const CIMScope PARAMETER;
    static const CIMScope ANY;

private:
    CIMScope(const Uint32 scope);

    Uint32 cimScope;
};

PEGASUS_NAMESPACE_END

#endif
