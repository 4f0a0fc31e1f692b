#ifndef Pegasus_CIMOMHandle_h
#define Pegasus_CIMOMHandle_h

#include <memory>

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
#include <Pegasus/Provider/Linkage.h>

PEGASUS_NAMESPACE_BEGIN

class CIMOMHandleRep;
struct SdkRepAccess;

// A provider's way back into the object manager: requests made here are routed
// like client requests, to the repository or to other providers. Copies share
// the same binding. A handle that was never bound throws CIMException(CIM_ERR_FAILED).
class PEGASUS_PROVIDER_LINKAGE CIMOMHandle
{
public:
    CIMOMHandle();
    CIMOMHandle(const CIMOMHandle& handle);
    virtual ~CIMOMHandle();
    CIMOMHandle& operator=(const CIMOMHandle& handle);

    CIMClass getClass(const OperationContext& context, const CIMNamespaceName& nameSpace,
                      const CIMName& className, Boolean localOnly, Boolean includeQualifiers,
                      Boolean includeClassOrigin, const CIMPropertyList& propertyList);

    Array<CIMClass> enumerateClasses(const OperationContext& context,
                                     const CIMNamespaceName& nameSpace, const CIMName& className,
                                     Boolean deepInheritance, Boolean localOnly,
                                     Boolean includeQualifiers, Boolean includeClassOrigin);

    Array<CIMName> enumerateClassNames(const OperationContext& context,
                                       const CIMNamespaceName& nameSpace,
                                       const CIMName& className, Boolean deepInheritance);

    void createClass(const OperationContext& context, const CIMNamespaceName& nameSpace,
                     const CIMClass& newClass);

    void modifyClass(const OperationContext& context, const CIMNamespaceName& nameSpace,
                     const CIMClass& modifiedClass);

    void deleteClass(const OperationContext& context, const CIMNamespaceName& nameSpace,
                     const CIMName& className);

    CIMInstance getInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
                            const CIMObjectPath& instanceName, Boolean localOnly,
                            Boolean includeQualifiers, Boolean includeClassOrigin,
                            const CIMPropertyList& propertyList);

    Array<CIMInstance> enumerateInstances(const OperationContext& context,
                                          const CIMNamespaceName& nameSpace,
                                          const CIMName& className, Boolean deepInheritance,
                                          Boolean localOnly, Boolean includeQualifiers,
                                          Boolean includeClassOrigin,
                                          const CIMPropertyList& propertyList);

    Array<CIMObjectPath> enumerateInstanceNames(const OperationContext& context,
                                                const CIMNamespaceName& nameSpace,
                                                const CIMName& className);

    CIMObjectPath createInstance(const OperationContext& context,
                                 const CIMNamespaceName& nameSpace,
                                 const CIMInstance& newInstance);

    void modifyInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
                        const CIMInstance& modifiedInstance, Boolean includeQualifiers,
                        const CIMPropertyList& propertyList);

    void deleteInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
                        const CIMObjectPath& instanceName);

    Array<CIMObject> execQuery(const OperationContext& context, const CIMNamespaceName& nameSpace,
                               const String& queryLanguage, const String& query);

    Array<CIMObject> associators(const OperationContext& context,
                                 const CIMNamespaceName& nameSpace,
                                 const CIMObjectPath& objectName, const CIMName& assocClass,
                                 const CIMName& resultClass, const String& role,
                                 const String& resultRole, Boolean includeQualifiers,
                                 Boolean includeClassOrigin, const CIMPropertyList& propertyList);

    Array<CIMObjectPath> associatorNames(const OperationContext& context,
                                         const CIMNamespaceName& nameSpace,
                                         const CIMObjectPath& objectName,
                                         const CIMName& assocClass, const CIMName& resultClass,
                                         const String& role, const String& resultRole);

    Array<CIMObject> references(const OperationContext& context,
                                const CIMNamespaceName& nameSpace,
                                const CIMObjectPath& objectName, const CIMName& resultClass,
                                const String& role, Boolean includeQualifiers,
                                Boolean includeClassOrigin, const CIMPropertyList& propertyList);

    Array<CIMObjectPath> referenceNames(const OperationContext& context,
                                        const CIMNamespaceName& nameSpace,
                                        const CIMObjectPath& objectName,
                                        const CIMName& resultClass, const String& role);

    CIMValue getProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
                         const CIMObjectPath& instanceName, const CIMName& propertyName);

    void setProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
                     const CIMObjectPath& instanceName, const CIMName& propertyName,
                     const CIMValue& newValue);

    CIMValue invokeMethod(const OperationContext& context, const CIMNamespaceName& nameSpace,
                          const CIMObjectPath& instanceName, const CIMName& methodName,
                          const Array<CIMParamValue>& inParameters,
                          Array<CIMParamValue>& outParameters);

    // Providers here are never unloaded while running, so these only keep the API whole.
    void disallowProviderUnload();
    void allowProviderUnload();

    OperationContext getResponseContext();

private:
    std::shared_ptr<CIMOMHandleRep> _rep;

    friend struct SdkRepAccess;
};

PEGASUS_NAMESPACE_END

#endif
