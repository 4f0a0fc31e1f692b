#include <Pegasus/Common/CIMQualifierDecl.h>

#include "SdkRepAccess.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{
std::shared_ptr<CIMQualifierDeclRep> makeDecl(const CIMName& name, const CIMValue& value,
                                              const CIMScope& scope, const CIMFlavor& flavor,
                                              Uint32 arraySize)
{
    if (name.isNull())
    {
        throw UninitializedObjectException();
    }
    auto rep = std::make_shared<CIMQualifierDeclRep>();
    rep->name = name;
    rep->value = value;
    rep->scope = scope;
    rep->flavor = flavor;
    rep->arraySize = arraySize;
    return rep;
}

bool identicalDecls(const CIMQualifierDeclRep& a, const CIMQualifierDeclRep& b)
{
    return a.name.equal(b.name) && a.value == b.value && a.scope.equal(b.scope) &&
           a.flavor.equal(b.flavor) && a.arraySize == b.arraySize;
}
} // namespace

CIMQualifierDecl::CIMQualifierDecl()
{
}

CIMQualifierDecl::CIMQualifierDecl(const CIMQualifierDecl& x) : _rep(x._rep)
{
}

CIMQualifierDecl::CIMQualifierDecl(const CIMName& name, const CIMValue& value,
                                   const CIMScope& scope, const CIMFlavor& flavor,
                                   Uint32 arraySize)
    : _rep(makeDecl(name, value, scope, flavor, arraySize))
{
}

CIMQualifierDecl::~CIMQualifierDecl()
{
}

CIMQualifierDecl& CIMQualifierDecl::operator=(const CIMQualifierDecl& x)
{
    _rep = x._rep;
    return *this;
}

const CIMName& CIMQualifierDecl::getName() const
{
    return needRep(_rep).name;
}

void CIMQualifierDecl::setName(const CIMName& name)
{
    if (name.isNull())
    {
        throw UninitializedObjectException();
    }
    needRep(_rep).name = name;
}

CIMType CIMQualifierDecl::getType() const
{
    return needRep(_rep).value.getType();
}

Boolean CIMQualifierDecl::isArray() const
{
    return needRep(_rep).value.isArray();
}

const CIMValue& CIMQualifierDecl::getValue() const
{
    return needRep(_rep).value;
}

void CIMQualifierDecl::setValue(const CIMValue& value)
{
    needRep(_rep).value = value;
}

const CIMScope& CIMQualifierDecl::getScope() const
{
    return needRep(_rep).scope;
}

const CIMFlavor& CIMQualifierDecl::getFlavor() const
{
    return needRep(_rep).flavor;
}

Uint32 CIMQualifierDecl::getArraySize() const
{
    return needRep(_rep).arraySize;
}

Boolean CIMQualifierDecl::isUninitialized() const
{
    return !_rep;
}

Boolean CIMQualifierDecl::identical(const CIMConstQualifierDecl& x) const
{
    return identicalDecls(needRep(_rep), needRep(x._rep));
}

CIMQualifierDecl CIMQualifierDecl::clone() const
{
    return SdkRepAccess::wrap<CIMQualifierDecl>(
        std::make_shared<CIMQualifierDeclRep>(needRep(_rep)));
}

CIMConstQualifierDecl::CIMConstQualifierDecl()
{
}

CIMConstQualifierDecl::CIMConstQualifierDecl(const CIMConstQualifierDecl& x) : _rep(x._rep)
{
}

CIMConstQualifierDecl::CIMConstQualifierDecl(const CIMQualifierDecl& x) : _rep(x._rep)
{
}

CIMConstQualifierDecl::CIMConstQualifierDecl(const CIMName& name, const CIMValue& value,
                                             const CIMScope& scope, const CIMFlavor& flavor,
                                             Uint32 arraySize)
    : _rep(makeDecl(name, value, scope, flavor, arraySize))
{
}

CIMConstQualifierDecl::~CIMConstQualifierDecl()
{
}

CIMConstQualifierDecl& CIMConstQualifierDecl::operator=(const CIMConstQualifierDecl& x)
{
    _rep = x._rep;
    return *this;
}

CIMConstQualifierDecl& CIMConstQualifierDecl::operator=(const CIMQualifierDecl& x)
{
    _rep = x._rep;
    return *this;
}

const CIMName& CIMConstQualifierDecl::getName() const
{
    return needRep(_rep).name;
}

CIMType CIMConstQualifierDecl::getType() const
{
    return needRep(_rep).value.getType();
}

Boolean CIMConstQualifierDecl::isArray() const
{
    return needRep(_rep).value.isArray();
}

const CIMValue& CIMConstQualifierDecl::getValue() const
{
    return needRep(_rep).value;
}

const CIMScope& CIMConstQualifierDecl::getScope() const
{
    return needRep(_rep).scope;
}

const CIMFlavor& CIMConstQualifierDecl::getFlavor() const
{
    return needRep(_rep).flavor;
}

Uint32 CIMConstQualifierDecl::getArraySize() const
{
    return needRep(_rep).arraySize;
}

Boolean CIMConstQualifierDecl::isUninitialized() const
{
    return !_rep;
}

Boolean CIMConstQualifierDecl::identical(const CIMConstQualifierDecl& x) const
{
    return identicalDecls(needRep(_rep), needRep(x._rep));
}

CIMQualifierDecl CIMConstQualifierDecl::clone() const
{
    return SdkRepAccess::wrap<CIMQualifierDecl>(
        std::make_shared<CIMQualifierDeclRep>(needRep(_rep)));
}

PEGASUS_NAMESPACE_END
