#include <Pegasus/Common/CIMParameter.h>

#include "SdkRepAccess.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{
std::shared_ptr<CIMParameterRep> makeParameter(const CIMName& name, CIMType type,
                                               Boolean isArray, Uint32 arraySize,
                                               const CIMName& referenceClassName)
{
    if (name.isNull())
    {
        throw UninitializedObjectException();
    }
    if (!referenceClassName.isNull() && type != CIMTYPE_REFERENCE)
    {
        throw TypeMismatchException();
    }
    auto rep = std::make_shared<CIMParameterRep>();
    rep->name = name;
    rep->type = type;
    rep->isArray = isArray;
    rep->arraySize = arraySize;
    rep->referenceClassName = referenceClassName;
    return rep;
}

std::shared_ptr<CIMParameterRep> cloneParameter(const CIMParameterRep& rep)
{
    auto copy = std::make_shared<CIMParameterRep>(rep);
    copy->qualifiers = rep.qualifiers.deepCopy();
    return copy;
}

bool identicalParameters(const CIMParameterRep& a, const CIMParameterRep& b)
{
    return a.name.equal(b.name) && a.type == b.type && a.isArray == b.isArray &&
           a.arraySize == b.arraySize && a.referenceClassName.equal(b.referenceClassName) &&
           a.qualifiers.identical<CIMConstQualifier>(b.qualifiers);
}
} // namespace

CIMParameter::CIMParameter()
{
}

CIMParameter::CIMParameter(const CIMParameter& x) : _rep(x._rep)
{
}

CIMParameter::CIMParameter(const CIMName& name, CIMType type, Boolean isArray, Uint32 arraySize,
                           const CIMName& referenceClassName)
    : _rep(makeParameter(name, type, isArray, arraySize, referenceClassName))
{
}

CIMParameter::~CIMParameter()
{
}

CIMParameter& CIMParameter::operator=(const CIMParameter& x)
{
    _rep = x._rep;
    return *this;
}

CIMParameter& CIMParameter::addQualifier(const CIMQualifier& x)
{
    needRep(_rep).qualifiers.add(x, "qualifier");
    return *this;
}

Uint32 CIMParameter::findQualifier(const CIMName& name) const
{
    return needRep(_rep).qualifiers.find(name);
}

CIMQualifier CIMParameter::getQualifier(Uint32 index)
{
    return needRep(_rep).qualifiers.get(index);
}

CIMConstQualifier CIMParameter::getQualifier(Uint32 index) const
{
    return std::as_const(needRep(_rep).qualifiers).get(index);
}

void CIMParameter::removeQualifier(Uint32 index)
{
    needRep(_rep).qualifiers.remove(index);
}

Uint32 CIMParameter::getQualifierCount() const
{
    return needRep(_rep).qualifiers.count();
}

const CIMName& CIMParameter::getName() const
{
    return needRep(_rep).name;
}

void CIMParameter::setName(const CIMName& name)
{
    if (name.isNull())
    {
        throw UninitializedObjectException();
    }
    needRep(_rep).name = name;
}

Boolean CIMParameter::isArray() const
{
    return needRep(_rep).isArray;
}

Uint32 CIMParameter::getArraySize() const
{
    return needRep(_rep).arraySize;
}

const CIMName& CIMParameter::getReferenceClassName() const
{
    return needRep(_rep).referenceClassName;
}

CIMType CIMParameter::getType() const
{
    return needRep(_rep).type;
}

Boolean CIMParameter::isUninitialized() const
{
    return !_rep;
}

Boolean CIMParameter::identical(const CIMConstParameter& x) const
{
    return identicalParameters(needRep(_rep), needRep(x._rep));
}

CIMParameter CIMParameter::clone() const
{
    return SdkRepAccess::wrap<CIMParameter>(cloneParameter(needRep(_rep)));
}

CIMConstParameter::CIMConstParameter()
{
}

CIMConstParameter::CIMConstParameter(const CIMConstParameter& x) : _rep(x._rep)
{
}

CIMConstParameter::CIMConstParameter(const CIMParameter& x) : _rep(x._rep)
{
}

CIMConstParameter::CIMConstParameter(const CIMName& name, CIMType type, Boolean isArray,
                                     Uint32 arraySize, const CIMName& referenceClassName)
    : _rep(makeParameter(name, type, isArray, arraySize, referenceClassName))
{
}

CIMConstParameter::~CIMConstParameter()
{
}

CIMConstParameter& CIMConstParameter::operator=(const CIMConstParameter& x)
{
    _rep = x._rep;
    return *this;
}

CIMConstParameter& CIMConstParameter::operator=(const CIMParameter& x)
{
    _rep = x._rep;
    return *this;
}

Uint32 CIMConstParameter::findQualifier(const CIMName& name) const
{
    return needRep(_rep).qualifiers.find(name);
}

CIMConstQualifier CIMConstParameter::getQualifier(Uint32 index) const
{
    return std::as_const(needRep(_rep).qualifiers).get(index);
}

Uint32 CIMConstParameter::getQualifierCount() const
{
    return needRep(_rep).qualifiers.count();
}

const CIMName& CIMConstParameter::getName() const
{
    return needRep(_rep).name;
}

Boolean CIMConstParameter::isArray() const
{
    return needRep(_rep).isArray;
}

Uint32 CIMConstParameter::getArraySize() const
{
    return needRep(_rep).arraySize;
}

const CIMName& CIMConstParameter::getReferenceClassName() const
{
    return needRep(_rep).referenceClassName;
}

CIMType CIMConstParameter::getType() const
{
    return needRep(_rep).type;
}

Boolean CIMConstParameter::isUninitialized() const
{
    return !_rep;
}

Boolean CIMConstParameter::identical(const CIMConstParameter& x) const
{
    return identicalParameters(needRep(_rep), needRep(x._rep));
}

CIMParameter CIMConstParameter::clone() const
{
    return SdkRepAccess::wrap<CIMParameter>(cloneParameter(needRep(_rep)));
}

PEGASUS_NAMESPACE_END
