#include <Pegasus/Common/CIMMethod.h>

#include "SdkRepAccess.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{
std::shared_ptr<CIMMethodRep> makeMethod(const CIMName& name, CIMType type,
                                         const CIMName& classOrigin, Boolean propagated)
{
    if (name.isNull())
    {
        throw UninitializedObjectException();
    }
    auto rep = std::make_shared<CIMMethodRep>();
    rep->name = name;
    rep->type = type;
    rep->classOrigin = classOrigin;
    rep->propagated = propagated;
    return rep;
}

std::shared_ptr<CIMMethodRep> cloneMethod(const CIMMethodRep& rep)
{
    auto copy = std::make_shared<CIMMethodRep>(rep);
    copy->qualifiers = rep.qualifiers.deepCopy();
    copy->parameters = rep.parameters.deepCopy();
    return copy;
}

bool identicalMethods(const CIMMethodRep& a, const CIMMethodRep& b)
{
    return a.name.equal(b.name) && a.type == b.type && a.classOrigin.equal(b.classOrigin) &&
           a.propagated == b.propagated &&
           a.qualifiers.identical<CIMConstQualifier>(b.qualifiers) &&
           a.parameters.identical<CIMConstParameter>(b.parameters);
}
} // namespace

CIMMethod::CIMMethod()
{
}

CIMMethod::CIMMethod(const CIMMethod& x) : _rep(x._rep)
{
}

CIMMethod::CIMMethod(const CIMName& name, CIMType type, const CIMName& classOrigin,
                     Boolean propagated)
    : _rep(makeMethod(name, type, classOrigin, propagated))
{
}

CIMMethod::~CIMMethod()
{
}

CIMMethod& CIMMethod::operator=(const CIMMethod& x)
{
    _rep = x._rep;
    return *this;
}

const CIMName& CIMMethod::getName() const
{
    return needRep(_rep).name;
}

void CIMMethod::setName(const CIMName& name)
{
    if (name.isNull())
    {
        throw UninitializedObjectException();
    }
    needRep(_rep).name = name;
}

CIMType CIMMethod::getType() const
{
    return needRep(_rep).type;
}

void CIMMethod::setType(CIMType type)
{
    needRep(_rep).type = type;
}

const CIMName& CIMMethod::getClassOrigin() const
{
    return needRep(_rep).classOrigin;
}

void CIMMethod::setClassOrigin(const CIMName& classOrigin)
{
    needRep(_rep).classOrigin = classOrigin;
}

Boolean CIMMethod::getPropagated() const
{
    return needRep(_rep).propagated;
}

void CIMMethod::setPropagated(Boolean propagated)
{
    needRep(_rep).propagated = propagated;
}

CIMMethod& CIMMethod::addQualifier(const CIMQualifier& x)
{
    needRep(_rep).qualifiers.add(x, "qualifier");
    return *this;
}

Uint32 CIMMethod::findQualifier(const CIMName& name) const
{
    return needRep(_rep).qualifiers.find(name);
}

CIMQualifier CIMMethod::getQualifier(Uint32 index)
{
    return needRep(_rep).qualifiers.get(index);
}

CIMConstQualifier CIMMethod::getQualifier(Uint32 index) const
{
    return std::as_const(needRep(_rep).qualifiers).get(index);
}

void CIMMethod::removeQualifier(Uint32 index)
{
    needRep(_rep).qualifiers.remove(index);
}

Uint32 CIMMethod::getQualifierCount() const
{
    return needRep(_rep).qualifiers.count();
}

CIMMethod& CIMMethod::addParameter(const CIMParameter& x)
{
    needRep(_rep).parameters.add(x, "parameter");
    return *this;
}

Uint32 CIMMethod::findParameter(const CIMName& name) const
{
    return needRep(_rep).parameters.find(name);
}

CIMParameter CIMMethod::getParameter(Uint32 index)
{
    return needRep(_rep).parameters.get(index);
}

CIMConstParameter CIMMethod::getParameter(Uint32 index) const
{
    return std::as_const(needRep(_rep).parameters).get(index);
}

void CIMMethod::removeParameter(Uint32 index)
{
    needRep(_rep).parameters.remove(index);
}

Uint32 CIMMethod::getParameterCount() const
{
    return needRep(_rep).parameters.count();
}

Boolean CIMMethod::isUninitialized() const
{
    return !_rep;
}

Boolean CIMMethod::identical(const CIMConstMethod& x) const
{
    return identicalMethods(needRep(_rep), needRep(x._rep));
}

CIMMethod CIMMethod::clone() const
{
    return SdkRepAccess::wrap<CIMMethod>(cloneMethod(needRep(_rep)));
}

CIMConstMethod::CIMConstMethod()
{
}

CIMConstMethod::CIMConstMethod(const CIMConstMethod& x) : _rep(x._rep)
{
}

CIMConstMethod::CIMConstMethod(const CIMMethod& x) : _rep(x._rep)
{
}

CIMConstMethod::CIMConstMethod(const CIMName& name, CIMType type, const CIMName& classOrigin,
                               Boolean propagated)
    : _rep(makeMethod(name, type, classOrigin, propagated))
{
}

CIMConstMethod::~CIMConstMethod()
{
}

CIMConstMethod& CIMConstMethod::operator=(const CIMConstMethod& x)
{
    _rep = x._rep;
    return *this;
}

CIMConstMethod& CIMConstMethod::operator=(const CIMMethod& x)
{
    _rep = x._rep;
    return *this;
}

const CIMName& CIMConstMethod::getName() const
{
    return needRep(_rep).name;
}

CIMType CIMConstMethod::getType() const
{
    return needRep(_rep).type;
}

const CIMName& CIMConstMethod::getClassOrigin() const
{
    return needRep(_rep).classOrigin;
}

Boolean CIMConstMethod::getPropagated() const
{
    return needRep(_rep).propagated;
}

Uint32 CIMConstMethod::findQualifier(const CIMName& name) const
{
    return needRep(_rep).qualifiers.find(name);
}

CIMConstQualifier CIMConstMethod::getQualifier(Uint32 index) const
{
    return std::as_const(needRep(_rep).qualifiers).get(index);
}

Uint32 CIMConstMethod::getQualifierCount() const
{
    return needRep(_rep).qualifiers.count();
}

Uint32 CIMConstMethod::findParameter(const CIMName& name) const
{
    return needRep(_rep).parameters.find(name);
}

CIMConstParameter CIMConstMethod::getParameter(Uint32 index) const
{
    return std::as_const(needRep(_rep).parameters).get(index);
}

Uint32 CIMConstMethod::getParameterCount() const
{
    return needRep(_rep).parameters.count();
}

Boolean CIMConstMethod::isUninitialized() const
{
    return !_rep;
}

Boolean CIMConstMethod::identical(const CIMConstMethod& x) const
{
    return identicalMethods(needRep(_rep), needRep(x._rep));
}

CIMMethod CIMConstMethod::clone() const
{
    return SdkRepAccess::wrap<CIMMethod>(cloneMethod(needRep(_rep)));
}

PEGASUS_NAMESPACE_END
