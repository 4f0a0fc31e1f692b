#ifndef Pegasus_Sdk_CIMOMDispatcher_h
#define Pegasus_Sdk_CIMOMDispatcher_h

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include <functional>

PEGASUS_NAMESPACE_BEGIN

// What an object manager offers to CIMOMHandle and to locally connected CIMClients.
// Each method has the parameter list of the CIMOMHandle method of the same name;
// failures are reported by throwing CIMException.
class PEGASUS_COMMON_LINKAGE CIMOMDispatcher
{
public:
    virtual ~CIMOMDispatcher();

    virtual CIMClass getClass(const OperationContext& context, const CIMNamespaceName& nameSpace,
                              const CIMName& className, Boolean localOnly,
                              Boolean includeQualifiers, Boolean includeClassOrigin,
                              const CIMPropertyList& propertyList) = 0;

    virtual Array<CIMClass> enumerateClasses(const OperationContext& context,
                                             const CIMNamespaceName& nameSpace,
                                             const CIMName& className, Boolean deepInheritance,
                                             Boolean localOnly, Boolean includeQualifiers,
                                             Boolean includeClassOrigin) = 0;

    virtual Array<CIMName> enumerateClassNames(const OperationContext& context,
                                               const CIMNamespaceName& nameSpace,
                                               const CIMName& className,
                                               Boolean deepInheritance) = 0;

    virtual CIMInstance getInstance(const OperationContext& context,
                                    const CIMNamespaceName& nameSpace,
                                    const CIMObjectPath& instanceName, Boolean localOnly,
                                    Boolean includeQualifiers, Boolean includeClassOrigin,
                                    const CIMPropertyList& propertyList) = 0;

    virtual Array<CIMInstance> enumerateInstances(const OperationContext& context,
                                                  const CIMNamespaceName& nameSpace,
                                                  const CIMName& className,
                                                  Boolean deepInheritance, Boolean localOnly,
                                                  Boolean includeQualifiers,
                                                  Boolean includeClassOrigin,
                                                  const CIMPropertyList& propertyList) = 0;

    virtual Array<CIMObjectPath> enumerateInstanceNames(const OperationContext& context,
                                                        const CIMNamespaceName& nameSpace,
                                                        const CIMName& className) = 0;

    virtual Array<CIMObject> associators(const OperationContext& context,
                                         const CIMNamespaceName& nameSpace,
                                         const CIMObjectPath& objectName,
                                         const CIMName& assocClass, const CIMName& resultClass,
                                         const String& role, const String& resultRole,
                                         Boolean includeQualifiers, Boolean includeClassOrigin,
                                         const CIMPropertyList& propertyList) = 0;

    virtual Array<CIMObjectPath> associatorNames(const OperationContext& context,
                                                 const CIMNamespaceName& nameSpace,
                                                 const CIMObjectPath& objectName,
                                                 const CIMName& assocClass,
                                                 const CIMName& resultClass, const String& role,
                                                 const String& resultRole) = 0;

    virtual Array<CIMObject> references(const OperationContext& context,
                                        const CIMNamespaceName& nameSpace,
                                        const CIMObjectPath& objectName,
                                        const CIMName& resultClass, const String& role,
                                        Boolean includeQualifiers, Boolean includeClassOrigin,
                                        const CIMPropertyList& propertyList) = 0;

    virtual Array<CIMObjectPath> referenceNames(const OperationContext& context,
                                                const CIMNamespaceName& nameSpace,
                                                const CIMObjectPath& objectName,
                                                const CIMName& resultClass,
                                                const String& role) = 0;

    virtual CIMValue invokeMethod(const OperationContext& context,
                                  const CIMNamespaceName& nameSpace,
                                  const CIMObjectPath& instanceName, const CIMName& methodName,
                                  const Array<CIMParamValue>& inParameters,
                                  Array<CIMParamValue>& outParameters) = 0;

    // Enumerations handed over one object at a time, as the providers deliver
    // them, so that a caller can pass each on and keep none. The default
    // implementations enumerate whole and then hand over.
    typedef std::function<void(const CIMInstance&)> InstanceSink;
    typedef std::function<void(const CIMObjectPath&)> PathSink;

    virtual void enumerateInstances(const OperationContext& context,
                                    const CIMNamespaceName& nameSpace, const CIMName& className,
                                    Boolean deepInheritance, Boolean localOnly,
                                    Boolean includeQualifiers, Boolean includeClassOrigin,
                                    const CIMPropertyList& propertyList,
                                    const InstanceSink& sink);

    virtual void enumerateInstanceNames(const OperationContext& context,
                                        const CIMNamespaceName& nameSpace,
                                        const CIMName& className, const PathSink& sink);

    // Instance changes and single properties. An object manager that does not
    // route them answers CIM_ERR_NOT_SUPPORTED.
    virtual CIMObjectPath createInstance(const OperationContext& context,
                                         const CIMNamespaceName& nameSpace,
                                         const CIMInstance& newInstance);

    virtual void modifyInstance(const OperationContext& context,
                                const CIMNamespaceName& nameSpace,
                                const CIMInstance& modifiedInstance, Boolean includeQualifiers,
                                const CIMPropertyList& propertyList);

    virtual void deleteInstance(const OperationContext& context,
                                const CIMNamespaceName& nameSpace,
                                const CIMObjectPath& instanceName);

    virtual CIMValue getProperty(const OperationContext& context,
                                 const CIMNamespaceName& nameSpace,
                                 const CIMObjectPath& instanceName, const CIMName& propertyName);

    virtual void setProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
                             const CIMObjectPath& instanceName, const CIMName& propertyName,
                             const CIMValue& newValue);
};

namespace Sdk
{
// The dispatcher that CIMClient::connectLocal() reaches; null detaches it.
// The pointer is not owned.
PEGASUS_COMMON_LINKAGE void setLocalDispatcher(CIMOMDispatcher* dispatcher);
PEGASUS_COMMON_LINKAGE CIMOMDispatcher* getLocalDispatcher();

// A handle whose requests go to dispatcher (not owned; it must outlive the handle's use).
// A null dispatcher gives an unbound handle.
PEGASUS_COMMON_LINKAGE CIMOMHandle makeCIMOMHandle(CIMOMDispatcher* dispatcher);
} // namespace Sdk

PEGASUS_NAMESPACE_END

#endif
