#include <Pegasus/Common/CIMClass.h>

#include "SdkRepAccess.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{
std::shared_ptr<CIMObjectRep> makeClassRep(const CIMName& className, const CIMName& superClassName)
{
    if (className.isNull())
    {
        throw UninitializedObjectException();
    }
    auto rep = std::make_shared<CIMObjectRep>();
    rep->kind = CIMObjectRep::CLASS;
    rep->className = className;
    rep->superClassName = superClassName;
    rep->path = CIMObjectPath(String(), CIMNamespaceName(), className);
    return rep;
}

const std::shared_ptr<CIMObjectRep>& classRep(const std::shared_ptr<CIMObjectRep>& rep)
{
    if (!rep || rep->kind != CIMObjectRep::CLASS)
    {
        throw DynamicCastFailedException();
    }
    return rep;
}

void keyNamesOf(const CIMObjectRep& rep, Array<CIMName>& keyNames)
{
    keyNames.clear();
    for (const CIMProperty& p : rep.properties.view())
    {
        if (hasTrueQualifier(SdkRepAccess::rep(p)->qualifiers(), "Key"))
        {
            keyNames.append(p.getName());
        }
    }
}

bool hasKeysOf(const CIMObjectRep& rep)
{
    for (const CIMProperty& p : rep.properties.view())
    {
        if (hasTrueQualifier(SdkRepAccess::rep(p)->qualifiers(), "Key"))
        {
            return true;
        }
    }
    return false;
}
} // namespace

CIMClass::CIMClass()
{
}

CIMClass::CIMClass(const CIMClass& x) : _rep(x._rep)
{
}

CIMClass::CIMClass(const CIMObject& x) : _rep(classRep(x._rep))
{
}

CIMClass::CIMClass(const CIMName& className, const CIMName& superClassName)
    : _rep(makeClassRep(className, superClassName))
{
}

CIMClass::~CIMClass()
{
}

CIMClass& CIMClass::operator=(const CIMClass& x)
{
    _rep = x._rep;
    return *this;
}

Boolean CIMClass::isAssociation() const
{
    return hasTrueQualifier(needRep(_rep).qualifiers, "Association");
}

Boolean CIMClass::isAbstract() const
{
    return hasTrueQualifier(needRep(_rep).qualifiers, "Abstract");
}

const CIMName& CIMClass::getClassName() const
{
    return needRep(_rep).className;
}

const CIMObjectPath& CIMClass::getPath() const
{
    return needRep(_rep).path;
}

void CIMClass::setPath(const CIMObjectPath& path)
{
    needRep(_rep).path = path;
}

const CIMName& CIMClass::getSuperClassName() const
{
    return needRep(_rep).superClassName;
}

void CIMClass::setSuperClassName(const CIMName& superClassName)
{
    needRep(_rep).superClassName = superClassName;
}

CIMClass& CIMClass::addQualifier(const CIMQualifier& qualifier)
{
    needRep(_rep).qualifiers.add(qualifier, "qualifier");
    return *this;
}

Uint32 CIMClass::findQualifier(const CIMName& name) const
{
    return needRep(_rep).qualifiers.find(name);
}

CIMQualifier CIMClass::getQualifier(Uint32 index)
{
    return needRep(_rep).qualifiers.get(index);
}

CIMConstQualifier CIMClass::getQualifier(Uint32 index) const
{
    return std::as_const(needRep(_rep).qualifiers).get(index);
}

void CIMClass::removeQualifier(Uint32 index)
{
    needRep(_rep).qualifiers.remove(index);
}

Uint32 CIMClass::getQualifierCount() const
{
    return needRep(_rep).qualifiers.count();
}

CIMClass& CIMClass::addProperty(const CIMProperty& x)
{
    needRep(_rep).properties.add(x, "property");
    return *this;
}

Uint32 CIMClass::findProperty(const CIMName& name) const
{
    return needRep(_rep).properties.find(name);
}

CIMProperty CIMClass::getProperty(Uint32 index)
{
    return needRep(_rep).properties.get(index);
}

CIMConstProperty CIMClass::getProperty(Uint32 index) const
{
    return std::as_const(needRep(_rep).properties).get(index);
}

void CIMClass::removeProperty(Uint32 index)
{
    needRep(_rep).properties.remove(index);
}

Uint32 CIMClass::getPropertyCount() const
{
    return needRep(_rep).properties.count();
}

CIMClass& CIMClass::addMethod(const CIMMethod& x)
{
    needRep(_rep).methods.add(x, "method");
    return *this;
}

Uint32 CIMClass::findMethod(const CIMName& name) const
{
    return needRep(_rep).methods.find(name);
}

CIMMethod CIMClass::getMethod(Uint32 index)
{
    return needRep(_rep).methods.get(index);
}

CIMConstMethod CIMClass::getMethod(Uint32 index) const
{
    return std::as_const(needRep(_rep).methods).get(index);
}

void CIMClass::removeMethod(Uint32 index)
{
    needRep(_rep).methods.remove(index);
}

Uint32 CIMClass::getMethodCount() const
{
    return needRep(_rep).methods.count();
}

void CIMClass::getKeyNames(Array<CIMName>& keyNames) const
{
    keyNamesOf(needRep(_rep), keyNames);
}

Boolean CIMClass::hasKeys() const
{
    return hasKeysOf(needRep(_rep));
}

CIMClass CIMClass::clone() const
{
    return SdkRepAccess::wrap<CIMClass>(needRep(_rep).deepCopy());
}

Boolean CIMClass::identical(const CIMConstClass& x) const
{
    return needRep(_rep).identical(needRep(x._rep));
}

Boolean CIMClass::isUninitialized() const
{
    return !_rep;
}

CIMInstance CIMClass::buildInstance(Boolean includeQualifiers, Boolean includeClassOrigin,
                                    const CIMPropertyList& propertyList) const
{
    const CIMObjectRep& rep = needRep(_rep);
    CIMInstance instance(rep.className);
    CIMObjectRep& target = *SdkRepAccess::rep(instance);
    if (includeQualifiers)
    {
        target.qualifiers = rep.qualifiers;
    }
    if (propertyList.isNull() && includeQualifiers && includeClassOrigin)
    {
        // Nothing to leave out: the instance starts from the class's own
        // properties, copied only when one of them is reached.
        target.properties = rep.properties;
        return instance;
    }
    const auto properties = rep.properties.view();
    for (size_t i = 0; i < properties.size(); i++)
    {
        if (!propertyList.isNull() && !propertyList.contains(properties[i].getName()))
        {
            continue;
        }
        CIMProperty copy = properties.item(i).clone();
        SdkRepAccess::rep(copy)->strip(!includeQualifiers, !includeClassOrigin);
        target.properties.adopt(std::move(copy));
    }
    return instance;
}

CIMConstClass::CIMConstClass()
{
}

CIMConstClass::CIMConstClass(const CIMConstClass& x) : _rep(x._rep)
{
}

CIMConstClass::CIMConstClass(const CIMClass& x) : _rep(x._rep)
{
}

CIMConstClass::CIMConstClass(const CIMObject& x) : _rep(classRep(x._rep))
{
}

CIMConstClass::CIMConstClass(const CIMConstObject& x) : _rep(classRep(x._rep))
{
}

CIMConstClass::CIMConstClass(const CIMName& className, const CIMName& superClassName)
    : _rep(makeClassRep(className, superClassName))
{
}

CIMConstClass::~CIMConstClass()
{
}

CIMConstClass& CIMConstClass::operator=(const CIMConstClass& x)
{
    _rep = x._rep;
    return *this;
}

CIMConstClass& CIMConstClass::operator=(const CIMClass& x)
{
    _rep = x._rep;
    return *this;
}

Boolean CIMConstClass::isAssociation() const
{
    return hasTrueQualifier(needRep(_rep).qualifiers, "Association");
}

Boolean CIMConstClass::isAbstract() const
{
    return hasTrueQualifier(needRep(_rep).qualifiers, "Abstract");
}

const CIMName& CIMConstClass::getClassName() const
{
    return needRep(_rep).className;
}

const CIMObjectPath& CIMConstClass::getPath() const
{
    return needRep(_rep).path;
}

const CIMName& CIMConstClass::getSuperClassName() const
{
    return needRep(_rep).superClassName;
}

Uint32 CIMConstClass::findQualifier(const CIMName& name) const
{
    return needRep(_rep).qualifiers.find(name);
}

CIMConstQualifier CIMConstClass::getQualifier(Uint32 index) const
{
    return std::as_const(needRep(_rep).qualifiers).get(index);
}

Uint32 CIMConstClass::getQualifierCount() const
{
    return needRep(_rep).qualifiers.count();
}

Uint32 CIMConstClass::findProperty(const CIMName& name) const
{
    return needRep(_rep).properties.find(name);
}

CIMConstProperty CIMConstClass::getProperty(Uint32 index) const
{
    return std::as_const(needRep(_rep).properties).get(index);
}

Uint32 CIMConstClass::getPropertyCount() const
{
    return needRep(_rep).properties.count();
}

Uint32 CIMConstClass::findMethod(const CIMName& name) const
{
    return needRep(_rep).methods.find(name);
}

CIMConstMethod CIMConstClass::getMethod(Uint32 index) const
{
    return std::as_const(needRep(_rep).methods).get(index);
}

Uint32 CIMConstClass::getMethodCount() const
{
    return needRep(_rep).methods.count();
}

void CIMConstClass::getKeyNames(Array<CIMName>& keyNames) const
{
    keyNamesOf(needRep(_rep), keyNames);
}

Boolean CIMConstClass::hasKeys() const
{
    return hasKeysOf(needRep(_rep));
}

CIMClass CIMConstClass::clone() const
{
    return SdkRepAccess::wrap<CIMClass>(needRep(_rep).deepCopy());
}

Boolean CIMConstClass::identical(const CIMConstClass& x) const
{
    return needRep(_rep).identical(needRep(x._rep));
}

Boolean CIMConstClass::isUninitialized() const
{
    return !_rep;
}

PEGASUS_NAMESPACE_END
