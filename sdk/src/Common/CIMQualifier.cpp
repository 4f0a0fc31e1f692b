#include <Pegasus/Common/CIMQualifier.h>

#include "SdkRepAccess.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{
std::shared_ptr<CIMQualifierRep> makeQualifier(const CIMName& name, const CIMValue& value,
                                               const CIMFlavor& flavor, Boolean propagated)
{
    if (name.isNull())
    {
        throw UninitializedObjectException();
    }
    auto rep = std::make_shared<CIMQualifierRep>();
    rep->name = name;
    rep->value = value;
    rep->flavor = flavor;
    rep->propagated = propagated;
    return rep;
}

bool identicalQualifiers(const CIMQualifierRep& a, const CIMQualifierRep& b)
{
    return a.name.equal(b.name) && a.value == b.value && a.flavor.equal(b.flavor) &&
           a.propagated == b.propagated;
}
} // namespace

CIMQualifier::CIMQualifier()
{
}

CIMQualifier::CIMQualifier(const CIMQualifier& x) : _rep(x._rep)
{
}

CIMQualifier::CIMQualifier(const CIMName& name, const CIMValue& value, const CIMFlavor& flavor,
                           Boolean propagated)
    : _rep(makeQualifier(name, value, flavor, propagated))
{
}

CIMQualifier::~CIMQualifier()
{
}

CIMQualifier& CIMQualifier::operator=(const CIMQualifier& x)
{
    _rep = x._rep;
    return *this;
}

const CIMName& CIMQualifier::getName() const
{
    return needRep(_rep).name;
}

void CIMQualifier::setName(const CIMName& name)
{
    if (name.isNull())
    {
        throw UninitializedObjectException();
    }
    needRep(_rep).name = name;
}

CIMType CIMQualifier::getType() const
{
    return needRep(_rep).value.getType();
}

Boolean CIMQualifier::isArray() const
{
    return needRep(_rep).value.isArray();
}

const CIMValue& CIMQualifier::getValue() const
{
    return needRep(_rep).value;
}

void CIMQualifier::setValue(const CIMValue& value)
{
    needRep(_rep).value = value;
}

void CIMQualifier::setFlavor(const CIMFlavor& flavor)
{
    needRep(_rep).flavor.addFlavor(flavor);
}

void CIMQualifier::unsetFlavor(const CIMFlavor& flavor)
{
    needRep(_rep).flavor.removeFlavor(flavor);
}

const CIMFlavor& CIMQualifier::getFlavor() const
{
    return needRep(_rep).flavor;
}

Uint32 CIMQualifier::getPropagated() const
{
    return needRep(_rep).propagated ? 1 : 0;
}

void CIMQualifier::setPropagated(Boolean propagated)
{
    needRep(_rep).propagated = propagated;
}

Boolean CIMQualifier::isUninitialized() const
{
    return !_rep;
}

Boolean CIMQualifier::identical(const CIMConstQualifier& x) const
{
    return identicalQualifiers(needRep(_rep), needRep(x._rep));
}

CIMQualifier CIMQualifier::clone() const
{
    return SdkRepAccess::wrap<CIMQualifier>(std::make_shared<CIMQualifierRep>(needRep(_rep)));
}

CIMConstQualifier::CIMConstQualifier()
{
}

CIMConstQualifier::CIMConstQualifier(const CIMConstQualifier& x) : _rep(x._rep)
{
}

CIMConstQualifier::CIMConstQualifier(const CIMQualifier& x) : _rep(x._rep)
{
}

CIMConstQualifier::CIMConstQualifier(const CIMName& name, const CIMValue& value,
                                     const CIMFlavor& flavor, Boolean propagated)
    : _rep(makeQualifier(name, value, flavor, propagated))
{
}

CIMConstQualifier::~CIMConstQualifier()
{
}

CIMConstQualifier& CIMConstQualifier::operator=(const CIMConstQualifier& x)
{
    _rep = x._rep;
    return *this;
}

CIMConstQualifier& CIMConstQualifier::operator=(const CIMQualifier& x)
{
    _rep = x._rep;
    return *this;
}

const CIMName& CIMConstQualifier::getName() const
{
    return needRep(_rep).name;
}

CIMType CIMConstQualifier::getType() const
{
    return needRep(_rep).value.getType();
}

Boolean CIMConstQualifier::isArray() const
{
    return needRep(_rep).value.isArray();
}

const CIMValue& CIMConstQualifier::getValue() const
{
    return needRep(_rep).value;
}

const CIMFlavor& CIMConstQualifier::getFlavor() const
{
    return needRep(_rep).flavor;
}

Uint32 CIMConstQualifier::getPropagated() const
{
    return needRep(_rep).propagated ? 1 : 0;
}

Boolean CIMConstQualifier::isUninitialized() const
{
    return !_rep;
}

Boolean CIMConstQualifier::identical(const CIMConstQualifier& x) const
{
    return identicalQualifiers(needRep(_rep), needRep(x._rep));
}

CIMQualifier CIMConstQualifier::clone() const
{
    return SdkRepAccess::wrap<CIMQualifier>(std::make_shared<CIMQualifierRep>(needRep(_rep)));
}

PEGASUS_NAMESPACE_END
