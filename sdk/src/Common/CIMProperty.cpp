#include <Pegasus/Common/CIMProperty.h>

#include "SdkRepAccess.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{
Ref<CIMPropertyRep> makeProperty(const CIMName& name, const CIMValue& value, Uint32 arraySize,
                                 const CIMName& referenceClassName, const CIMName& classOrigin,
                                 Boolean propagated)
{
    if (name.isNull())
    {
        throw UninitializedObjectException();
    }
    // A reference class only makes sense for a reference-valued property.
    if (!referenceClassName.isNull() && value.getType() != CIMTYPE_REFERENCE)
    {
        throw TypeMismatchException();
    }
    auto decl = makeRef<CIMPropertyDecl>();
    decl->name = name;
    decl->arraySize = arraySize;
    decl->referenceClassName = referenceClassName;
    decl->classOrigin = classOrigin;
    decl->propagated = propagated;
    auto rep = makeRef<CIMPropertyRep>();
    rep->decl = std::move(decl);
    rep->value = value;
    return rep;
}

bool identicalProperties(const CIMPropertyRep& a, const CIMPropertyRep& b)
{
    const CIMPropertyDecl& x = *a.decl;
    const CIMPropertyDecl& y = *b.decl;
    return x.name.equal(y.name) && a.value == b.value && x.arraySize == y.arraySize &&
           x.referenceClassName.equal(y.referenceClassName) &&
           x.classOrigin.equal(y.classOrigin) && x.propagated == y.propagated &&
           a.qualifiers().identical<CIMConstQualifier>(b.qualifiers());
}

// Assignment that survives self-assignment and a handle reached through
// the one assigned.
void assign(CIMPropertyRep*& to, CIMPropertyRep* from)
{
    CIMPropertyRep* old = to;
    to = holdRep(from);
    dropRep(old);
}
} // namespace

CIMProperty::CIMProperty()
{
}

CIMProperty::CIMProperty(const CIMProperty& x) : _rep(holdRep(x._rep))
{
}

CIMProperty::CIMProperty(const CIMName& name, const CIMValue& value, Uint32 arraySize,
                         const CIMName& referenceClassName, const CIMName& classOrigin,
                         Boolean propagated)
    : _rep(makeProperty(name, value, arraySize, referenceClassName, classOrigin, propagated).detach())
{
}

CIMProperty::~CIMProperty()
{
    dropRep(_rep);
}

CIMProperty& CIMProperty::operator=(const CIMProperty& x)
{
    assign(_rep, x._rep);
    return *this;
}

const CIMName& CIMProperty::getName() const
{
    return needRep(_rep).decl->name;
}

void CIMProperty::setName(const CIMName& name)
{
    if (name.isNull())
    {
        throw UninitializedObjectException();
    }
    needRep(_rep).ownDecl().name = name;
}

const CIMValue& CIMProperty::getValue() const
{
    return needRep(_rep).value;
}

CIMType CIMProperty::getType() const
{
    return needRep(_rep).value.getType();
}

Boolean CIMProperty::isArray() const
{
    return needRep(_rep).value.isArray();
}

void CIMProperty::setValue(const CIMValue& value)
{
    CIMPropertyRep& rep = needRep(_rep);
    // The declared type is part of the property; only its value may change.
    if (value.getType() != rep.value.getType() || value.isArray() != rep.value.isArray())
    {
        throw TypeMismatchException(String("value of property \"") + rep.decl->name.getString() +
                                    "\" has the wrong type");
    }
    rep.value = value;
}

Uint32 CIMProperty::getArraySize() const
{
    return needRep(_rep).decl->arraySize;
}

const CIMName& CIMProperty::getReferenceClassName() const
{
    return needRep(_rep).decl->referenceClassName;
}

const CIMName& CIMProperty::getClassOrigin() const
{
    return needRep(_rep).decl->classOrigin;
}

void CIMProperty::setClassOrigin(const CIMName& classOrigin)
{
    needRep(_rep).ownDecl().classOrigin = classOrigin;
}

Boolean CIMProperty::getPropagated() const
{
    return needRep(_rep).decl->propagated;
}

void CIMProperty::setPropagated(Boolean propagated)
{
    needRep(_rep).ownDecl().propagated = propagated;
}

CIMProperty& CIMProperty::addQualifier(const CIMQualifier& x)
{
    needRep(_rep).ownQualifiers().add(x, "qualifier");
    return *this;
}

Uint32 CIMProperty::findQualifier(const CIMName& name) const
{
    return needRep(_rep).qualifiers().find(name);
}

CIMQualifier CIMProperty::getQualifier(Uint32 index)
{
    return needRep(_rep).ownQualifiers().get(index);
}

CIMConstQualifier CIMProperty::getQualifier(Uint32 index) const
{
    return std::as_const(needRep(_rep).ownQualifiers()).get(index);
}

void CIMProperty::removeQualifier(Uint32 index)
{
    needRep(_rep).ownQualifiers().remove(index);
}

Uint32 CIMProperty::getQualifierCount() const
{
    return needRep(_rep).qualifiers().count();
}

Boolean CIMProperty::identical(const CIMConstProperty& x) const
{
    return identicalProperties(needRep(_rep), needRep(x._rep));
}

CIMProperty CIMProperty::clone() const
{
    return SdkRepAccess::wrap<CIMProperty>(needRep(_rep).clone());
}

Boolean CIMProperty::isUninitialized() const
{
    return !_rep;
}

CIMConstProperty::CIMConstProperty()
{
}

CIMConstProperty::CIMConstProperty(const CIMConstProperty& x) : _rep(holdRep(x._rep))
{
}

CIMConstProperty::CIMConstProperty(const CIMProperty& x) : _rep(holdRep(x._rep))
{
}

CIMConstProperty::CIMConstProperty(const CIMName& name, const CIMValue& value, Uint32 arraySize,
                                   const CIMName& referenceClassName, const CIMName& classOrigin,
                                   Boolean propagated)
    : _rep(makeProperty(name, value, arraySize, referenceClassName, classOrigin, propagated).detach())
{
}

CIMConstProperty::~CIMConstProperty()
{
    dropRep(_rep);
}

CIMConstProperty& CIMConstProperty::operator=(const CIMConstProperty& x)
{
    assign(_rep, x._rep);
    return *this;
}

CIMConstProperty& CIMConstProperty::operator=(const CIMProperty& x)
{
    assign(_rep, x._rep);
    return *this;
}

const CIMName& CIMConstProperty::getName() const
{
    return needRep(_rep).decl->name;
}

const CIMValue& CIMConstProperty::getValue() const
{
    return needRep(_rep).value;
}

CIMType CIMConstProperty::getType() const
{
    return needRep(_rep).value.getType();
}

Boolean CIMConstProperty::isArray() const
{
    return needRep(_rep).value.isArray();
}

Uint32 CIMConstProperty::getArraySize() const
{
    return needRep(_rep).decl->arraySize;
}

const CIMName& CIMConstProperty::getReferenceClassName() const
{
    return needRep(_rep).decl->referenceClassName;
}

const CIMName& CIMConstProperty::getClassOrigin() const
{
    return needRep(_rep).decl->classOrigin;
}

Boolean CIMConstProperty::getPropagated() const
{
    return needRep(_rep).decl->propagated;
}

Uint32 CIMConstProperty::findQualifier(const CIMName& name) const
{
    return needRep(_rep).qualifiers().find(name);
}

CIMConstQualifier CIMConstProperty::getQualifier(Uint32 index) const
{
    return std::as_const(needRep(_rep).ownQualifiers()).get(index);
}

Uint32 CIMConstProperty::getQualifierCount() const
{
    return needRep(_rep).qualifiers().count();
}

Boolean CIMConstProperty::identical(const CIMConstProperty& x) const
{
    return identicalProperties(needRep(_rep), needRep(x._rep));
}

CIMProperty CIMConstProperty::clone() const
{
    return SdkRepAccess::wrap<CIMProperty>(needRep(_rep).clone());
}

Boolean CIMConstProperty::isUninitialized() const
{
    return !_rep;
}

PEGASUS_NAMESPACE_END
