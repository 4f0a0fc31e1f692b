#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Sdk/CIMOMDispatcher.h>

#include "../Common/SdkRepAccess.h"

PEGASUS_NAMESPACE_BEGIN

class CIMOMHandleRep
{
public:
    explicit CIMOMHandleRep(CIMOMDispatcher* d) : dispatcher(d)
    {
    }

    CIMOMDispatcher* dispatcher;
};

namespace
{
CIMOMDispatcher& bound(const std::shared_ptr<CIMOMHandleRep>& rep)
{
    if (!rep || rep->dispatcher == 0)
    {
        throw CIMException(CIM_ERR_FAILED, "CIMOMHandle is not bound to an object manager");
    }
    return *rep->dispatcher;
}

CIMException notSupported(const char* operation)
{
    return CIMException(CIM_ERR_NOT_SUPPORTED,
                        String("CIMOMHandle::") + operation + " is not supported");
}
} // namespace

namespace Sdk
{
CIMOMHandle makeCIMOMHandle(CIMOMDispatcher* dispatcher)
{
    CIMOMHandle handle;
    SdkRepAccess::rep(handle) = std::make_shared<CIMOMHandleRep>(dispatcher);
    return handle;
}
} // namespace Sdk

CIMOMHandle::CIMOMHandle()
{
}

CIMOMHandle::CIMOMHandle(const CIMOMHandle& handle) : _rep(handle._rep)
{
}

CIMOMHandle::~CIMOMHandle()
{
}

CIMOMHandle& CIMOMHandle::operator=(const CIMOMHandle& handle)
{
    _rep = handle._rep;
    return *this;
}

CIMClass CIMOMHandle::getClass(const OperationContext& context, const CIMNamespaceName& nameSpace,
                               const CIMName& className, Boolean localOnly,
                               Boolean includeQualifiers, Boolean includeClassOrigin,
                               const CIMPropertyList& propertyList)
{
    return bound(_rep).getClass(context, nameSpace, className, localOnly, includeQualifiers,
                                includeClassOrigin, propertyList);
}

Array<CIMClass> CIMOMHandle::enumerateClasses(const OperationContext& context,
                                              const CIMNamespaceName& nameSpace,
                                              const CIMName& className, Boolean deepInheritance,
                                              Boolean localOnly, Boolean includeQualifiers,
                                              Boolean includeClassOrigin)
{
    return bound(_rep).enumerateClasses(context, nameSpace, className, deepInheritance, localOnly,
                                        includeQualifiers, includeClassOrigin);
}

Array<CIMName> CIMOMHandle::enumerateClassNames(const OperationContext& context,
                                                const CIMNamespaceName& nameSpace,
                                                const CIMName& className,
                                                Boolean deepInheritance)
{
    return bound(_rep).enumerateClassNames(context, nameSpace, className, deepInheritance);
}

void CIMOMHandle::createClass(const OperationContext&, const CIMNamespaceName&, const CIMClass&)
{
    bound(_rep);
    throw notSupported("createClass");
}

void CIMOMHandle::modifyClass(const OperationContext&, const CIMNamespaceName&, const CIMClass&)
{
    bound(_rep);
    throw notSupported("modifyClass");
}

void CIMOMHandle::deleteClass(const OperationContext&, const CIMNamespaceName&, const CIMName&)
{
    bound(_rep);
    throw notSupported("deleteClass");
}

CIMInstance CIMOMHandle::getInstance(const OperationContext& context,
                                     const CIMNamespaceName& nameSpace,
                                     const CIMObjectPath& instanceName, Boolean localOnly,
                                     Boolean includeQualifiers, Boolean includeClassOrigin,
                                     const CIMPropertyList& propertyList)
{
    return bound(_rep).getInstance(context, nameSpace, instanceName, localOnly, includeQualifiers,
                                   includeClassOrigin, propertyList);
}

Array<CIMInstance> CIMOMHandle::enumerateInstances(const OperationContext& context,
                                                   const CIMNamespaceName& nameSpace,
                                                   const CIMName& className,
                                                   Boolean deepInheritance, Boolean localOnly,
                                                   Boolean includeQualifiers,
                                                   Boolean includeClassOrigin,
                                                   const CIMPropertyList& propertyList)
{
    return bound(_rep).enumerateInstances(context, nameSpace, className, deepInheritance,
                                          localOnly, includeQualifiers, includeClassOrigin,
                                          propertyList);
}

Array<CIMObjectPath> CIMOMHandle::enumerateInstanceNames(const OperationContext& context,
                                                         const CIMNamespaceName& nameSpace,
                                                         const CIMName& className)
{
    return bound(_rep).enumerateInstanceNames(context, nameSpace, className);
}

CIMObjectPath CIMOMHandle::createInstance(const OperationContext& context,
                                          const CIMNamespaceName& nameSpace,
                                          const CIMInstance& newInstance)
{
    return bound(_rep).createInstance(context, nameSpace, newInstance);
}

void CIMOMHandle::modifyInstance(const OperationContext& context,
                                 const CIMNamespaceName& nameSpace,
                                 const CIMInstance& modifiedInstance, Boolean includeQualifiers,
                                 const CIMPropertyList& propertyList)
{
    bound(_rep).modifyInstance(context, nameSpace, modifiedInstance, includeQualifiers,
                               propertyList);
}

void CIMOMHandle::deleteInstance(const OperationContext& context,
                                 const CIMNamespaceName& nameSpace,
                                 const CIMObjectPath& instanceName)
{
    bound(_rep).deleteInstance(context, nameSpace, instanceName);
}

Array<CIMObject> CIMOMHandle::execQuery(const OperationContext&, const CIMNamespaceName&,
                                        const String&, const String&)
{
    bound(_rep);
    throw notSupported("execQuery");
}

Array<CIMObject> CIMOMHandle::associators(const OperationContext& context,
                                          const CIMNamespaceName& nameSpace,
                                          const CIMObjectPath& objectName,
                                          const CIMName& assocClass, const CIMName& resultClass,
                                          const String& role, const String& resultRole,
                                          Boolean includeQualifiers, Boolean includeClassOrigin,
                                          const CIMPropertyList& propertyList)
{
    return bound(_rep).associators(context, nameSpace, objectName, assocClass, resultClass, role,
                                   resultRole, includeQualifiers, includeClassOrigin,
                                   propertyList);
}

Array<CIMObjectPath> CIMOMHandle::associatorNames(const OperationContext& context,
                                                  const CIMNamespaceName& nameSpace,
                                                  const CIMObjectPath& objectName,
                                                  const CIMName& assocClass,
                                                  const CIMName& resultClass, const String& role,
                                                  const String& resultRole)
{
    return bound(_rep).associatorNames(context, nameSpace, objectName, assocClass, resultClass,
                                       role, resultRole);
}

Array<CIMObject> CIMOMHandle::references(const OperationContext& context,
                                         const CIMNamespaceName& nameSpace,
                                         const CIMObjectPath& objectName,
                                         const CIMName& resultClass, const String& role,
                                         Boolean includeQualifiers, Boolean includeClassOrigin,
                                         const CIMPropertyList& propertyList)
{
    return bound(_rep).references(context, nameSpace, objectName, resultClass, role,
                                  includeQualifiers, includeClassOrigin, propertyList);
}

Array<CIMObjectPath> CIMOMHandle::referenceNames(const OperationContext& context,
                                                 const CIMNamespaceName& nameSpace,
                                                 const CIMObjectPath& objectName,
                                                 const CIMName& resultClass, const String& role)
{
    return bound(_rep).referenceNames(context, nameSpace, objectName, resultClass, role);
}

CIMValue CIMOMHandle::getProperty(const OperationContext& context,
                                  const CIMNamespaceName& nameSpace,
                                  const CIMObjectPath& instanceName, const CIMName& propertyName)
{
    return bound(_rep).getProperty(context, nameSpace, instanceName, propertyName);
}

void CIMOMHandle::setProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
                              const CIMObjectPath& instanceName, const CIMName& propertyName,
                              const CIMValue& newValue)
{
    bound(_rep).setProperty(context, nameSpace, instanceName, propertyName, newValue);
}

CIMValue CIMOMHandle::invokeMethod(const OperationContext& context,
                                   const CIMNamespaceName& nameSpace,
                                   const CIMObjectPath& instanceName, const CIMName& methodName,
                                   const Array<CIMParamValue>& inParameters,
                                   Array<CIMParamValue>& outParameters)
{
    return bound(_rep).invokeMethod(context, nameSpace, instanceName, methodName, inParameters,
                                    outParameters);
}

void CIMOMHandle::disallowProviderUnload()
{
}

void CIMOMHandle::allowProviderUnload()
{
}

OperationContext CIMOMHandle::getResponseContext()
{
    return OperationContext();
}

PEGASUS_NAMESPACE_END
