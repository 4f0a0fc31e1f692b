#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/MessageLoader.h> // InternalException.h needs it first
#include <Pegasus/Common/InternalException.h>

#include "SdkRepAccess.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{
std::shared_ptr<CIMObjectRep> makeInstanceRep(const CIMName& className)
{
    if (className.isNull())
    {
        throw UninitializedObjectException();
    }
    auto rep = std::make_shared<CIMObjectRep>();
    rep->kind = CIMObjectRep::INSTANCE;
    rep->className = className;
    rep->path = CIMObjectPath(String(), CIMNamespaceName(), className);
    return rep;
}

// Instances may only share the representation of an instance.
const std::shared_ptr<CIMObjectRep>& instanceRep(const std::shared_ptr<CIMObjectRep>& rep)
{
    if (!rep || rep->kind != CIMObjectRep::INSTANCE)
    {
        throw DynamicCastFailedException();
    }
    return rep;
}

CIMObjectPath buildInstancePath(const CIMObjectRep& instance, const CIMConstClass& cimClass)
{
    Array<CIMName> keyNames;
    cimClass.getKeyNames(keyNames);
    Array<CIMKeyBinding> keyBindings;
    const auto properties = instance.properties.view();
    for (Uint32 i = 0; i < keyNames.size(); i++)
    {
        Uint32 pos = instance.properties.find(keyNames[i]);
        if (pos == PEG_NOT_FOUND || pos >= properties.size())
        {
            throw NoSuchProperty(keyNames[i].getString());
        }
        keyBindings.append(CIMKeyBinding(properties[pos].getName(), properties.value(pos)));
    }
    return CIMObjectPath(String(), CIMNamespaceName(), instance.className, keyBindings);
}
} // namespace

CIMInstance::CIMInstance()
{
}

CIMInstance::CIMInstance(const CIMInstance& x) : _rep(x._rep)
{
}

CIMInstance::CIMInstance(const CIMObject& x) : _rep(instanceRep(x._rep))
{
}

CIMInstance::CIMInstance(const CIMName& className) : _rep(makeInstanceRep(className))
{
}

CIMInstance::~CIMInstance()
{
}

CIMInstance& CIMInstance::operator=(const CIMInstance& x)
{
    _rep = x._rep;
    return *this;
}

const CIMName& CIMInstance::getClassName() const
{
    return needRep(_rep).className;
}

const CIMObjectPath& CIMInstance::getPath() const
{
    return needRep(_rep).path;
}

void CIMInstance::setPath(const CIMObjectPath& path)
{
    needRep(_rep).path = path;
}

CIMInstance& CIMInstance::addQualifier(const CIMQualifier& qualifier)
{
    needRep(_rep).qualifiers.add(qualifier, "qualifier");
    return *this;
}

Uint32 CIMInstance::findQualifier(const CIMName& name) const
{
    return needRep(_rep).qualifiers.find(name);
}

CIMQualifier CIMInstance::getQualifier(Uint32 index)
{
    return needRep(_rep).qualifiers.get(index);
}

CIMConstQualifier CIMInstance::getQualifier(Uint32 index) const
{
    return std::as_const(needRep(_rep).qualifiers).get(index);
}

void CIMInstance::removeQualifier(Uint32 index)
{
    needRep(_rep).qualifiers.remove(index);
}

Uint32 CIMInstance::getQualifierCount() const
{
    return needRep(_rep).qualifiers.count();
}

CIMInstance& CIMInstance::addProperty(const CIMProperty& x)
{
    needRep(_rep).properties.add(x, "property");
    return *this;
}

Uint32 CIMInstance::findProperty(const CIMName& name) const
{
    return needRep(_rep).properties.find(name);
}

CIMProperty CIMInstance::getProperty(Uint32 index)
{
    return needRep(_rep).properties.get(index);
}

CIMConstProperty CIMInstance::getProperty(Uint32 index) const
{
    return std::as_const(needRep(_rep).properties).get(index);
}

void CIMInstance::removeProperty(Uint32 index)
{
    needRep(_rep).properties.remove(index);
}

Uint32 CIMInstance::getPropertyCount() const
{
    return needRep(_rep).properties.count();
}

CIMObjectPath CIMInstance::buildPath(const CIMConstClass& cimClass) const
{
    return buildInstancePath(needRep(_rep), cimClass);
}

CIMInstance CIMInstance::clone() const
{
    return SdkRepAccess::wrap<CIMInstance>(needRep(_rep).deepCopy());
}

Boolean CIMInstance::identical(const CIMConstInstance& x) const
{
    return needRep(_rep).identical(needRep(x._rep));
}

Boolean CIMInstance::isUninitialized() const
{
    return !_rep;
}

void CIMInstance::filter(Boolean includeQualifiers, Boolean includeClassOrigin,
                         const CIMPropertyList& propertyList)
{
    CIMObjectRep& rep = needRep(_rep);
    if (!includeQualifiers)
    {
        rep.qualifiers.clear();
    }
    if (propertyList.isNull() && includeQualifiers && includeClassOrigin)
    {
        return;
    }
    // Decided on a look at the list, so that properties that stay as they
    // are are neither handed out nor copied; the kept ones that change are
    // changed in place, as handles to them may be held.
    std::vector<Uint32> drop;
    std::vector<Uint32> strip;
    {
        const auto properties = rep.properties.view();
        for (Uint32 i = 0; i < properties.size(); i++)
        {
            const CIMProperty& p = properties[i];
            if (!propertyList.isNull() && !propertyList.contains(p.getName()))
            {
                drop.push_back(i);
            }
            else if (SdkRepAccess::rep(p)->carries(!includeQualifiers, !includeClassOrigin))
            {
                strip.push_back(i);
            }
        }
    }
    for (Uint32 i : strip)
    {
        SdkRepAccess::rep(rep.properties.get(i))->strip(!includeQualifiers, !includeClassOrigin);
    }
    for (size_t k = drop.size(); k-- > 0;)
    {
        rep.properties.remove(drop[k]);
    }
}

void CIMInstance::instanceFilter(Boolean includeQualifiers, Boolean includeClassOrigin,
                                 const CIMPropertyList& propertyList)
{
    filter(includeQualifiers, includeClassOrigin, propertyList);
}

CIMConstInstance::CIMConstInstance()
{
}

CIMConstInstance::CIMConstInstance(const CIMConstInstance& x) : _rep(x._rep)
{
}

CIMConstInstance::CIMConstInstance(const CIMInstance& x) : _rep(x._rep)
{
}

CIMConstInstance::CIMConstInstance(const CIMObject& x) : _rep(instanceRep(x._rep))
{
}

CIMConstInstance::CIMConstInstance(const CIMConstObject& x) : _rep(instanceRep(x._rep))
{
}

CIMConstInstance::CIMConstInstance(const CIMName& className) : _rep(makeInstanceRep(className))
{
}

CIMConstInstance::~CIMConstInstance()
{
}

CIMConstInstance& CIMConstInstance::operator=(const CIMConstInstance& x)
{
    _rep = x._rep;
    return *this;
}

CIMConstInstance& CIMConstInstance::operator=(const CIMInstance& x)
{
    _rep = x._rep;
    return *this;
}

const CIMName& CIMConstInstance::getClassName() const
{
    return needRep(_rep).className;
}

const CIMObjectPath& CIMConstInstance::getPath() const
{
    return needRep(_rep).path;
}

Uint32 CIMConstInstance::findQualifier(const CIMName& name) const
{
    return needRep(_rep).qualifiers.find(name);
}

CIMConstQualifier CIMConstInstance::getQualifier(Uint32 index) const
{
    return std::as_const(needRep(_rep).qualifiers).get(index);
}

Uint32 CIMConstInstance::getQualifierCount() const
{
    return needRep(_rep).qualifiers.count();
}

Uint32 CIMConstInstance::findProperty(const CIMName& name) const
{
    return needRep(_rep).properties.find(name);
}

CIMConstProperty CIMConstInstance::getProperty(Uint32 index) const
{
    return std::as_const(needRep(_rep).properties).get(index);
}

Uint32 CIMConstInstance::getPropertyCount() const
{
    return needRep(_rep).properties.count();
}

CIMObjectPath CIMConstInstance::buildPath(const CIMConstClass& cimClass) const
{
    return buildInstancePath(needRep(_rep), cimClass);
}

CIMInstance CIMConstInstance::clone() const
{
    return SdkRepAccess::wrap<CIMInstance>(needRep(_rep).deepCopy());
}

Boolean CIMConstInstance::identical(const CIMConstInstance& x) const
{
    return needRep(_rep).identical(needRep(x._rep));
}

Boolean CIMConstInstance::isUninitialized() const
{
    return !_rep;
}

PEGASUS_NAMESPACE_END
