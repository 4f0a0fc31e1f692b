#ifndef Pegasus_CIMClient_h
#define Pegasus_CIMClient_h

#include <Pegasus/Client/CIMClientException.h>
#include <Pegasus/Client/Linkage.h>
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
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/SSLContext.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

class CIMClientRep;

// A client of a CIM server. connectLocal() reaches the object manager of this
// process, acting as the server itself (empty user name). connect() reaches a
// WBEM server over CIM-XML on HTTP, or HTTPS with an SSLContext, and
// authenticates with HTTP Basic; remotely it offers the instance, association
// and method operations (the class and query operations throw
// CIM_ERR_NOT_SUPPORTED). Failures: CIMException for CIM errors,
// CannotConnectException, ConnectionTimeoutException (after getTimeout()
// milliseconds, 20000 by default), SSLException, CIMClientHTTPErrorException
// for HTTP errors (401 for refused credentials), CIMClientXmlException for an
// unreadable answer. Operations on a client that is not connected throw
// NotConnectedException.
class PEGASUS_CLIENT_LINKAGE CIMClient
{
public:
    CIMClient();
    ~CIMClient();

    Uint32 getTimeout() const;
    void setTimeout(Uint32 timeoutMilliseconds);

    void connect(const String& host, const Uint32 portNumber, const String& userName,
                 const String& password);
    void connect(const String& host, const Uint32 portNumber, const SSLContext& sslContext,
                 const String& userName, const String& password);
    void connectLocal();
    void disconnect();

    CIMClass getClass(const CIMNamespaceName& nameSpace, const CIMName& className,
                      Boolean localOnly = true, Boolean includeQualifiers = true,
                      Boolean includeClassOrigin = false,
                      const CIMPropertyList& propertyList = CIMPropertyList());

    CIMInstance getInstance(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
                            Boolean localOnly = true, Boolean includeQualifiers = false,
                            Boolean includeClassOrigin = false,
                            const CIMPropertyList& propertyList = CIMPropertyList());

    void deleteClass(const CIMNamespaceName& nameSpace, const CIMName& className);

    void deleteInstance(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName);

    void createClass(const CIMNamespaceName& nameSpace, const CIMClass& newClass);

    CIMObjectPath createInstance(const CIMNamespaceName& nameSpace,
                                 const CIMInstance& newInstance);

    void modifyClass(const CIMNamespaceName& nameSpace, const CIMClass& modifiedClass);

    void modifyInstance(const CIMNamespaceName& nameSpace, const CIMInstance& modifiedInstance,
                        Boolean includeQualifiers = true,
                        const CIMPropertyList& propertyList = CIMPropertyList());

    Array<CIMClass> enumerateClasses(const CIMNamespaceName& nameSpace,
                                     const CIMName& className = CIMName(),
                                     Boolean deepInheritance = false, Boolean localOnly = true,
                                     Boolean includeQualifiers = true,
                                     Boolean includeClassOrigin = false);

    Array<CIMName> enumerateClassNames(const CIMNamespaceName& nameSpace,
                                       const CIMName& className = CIMName(),
                                       Boolean deepInheritance = false);

    Array<CIMInstance> enumerateInstances(const CIMNamespaceName& nameSpace,
                                          const CIMName& className,
                                          Boolean deepInheritance = true,
                                          Boolean localOnly = true,
                                          Boolean includeQualifiers = false,
                                          Boolean includeClassOrigin = false,
                                          const CIMPropertyList& propertyList = CIMPropertyList());

    Array<CIMObjectPath> enumerateInstanceNames(const CIMNamespaceName& nameSpace,
                                                const CIMName& className);

    Array<CIMObject> execQuery(const CIMNamespaceName& nameSpace, const String& queryLanguage,
                               const String& query);

    Array<CIMObject> associators(const CIMNamespaceName& nameSpace,
                                 const CIMObjectPath& objectName,
                                 const CIMName& assocClass = CIMName(),
                                 const CIMName& resultClass = CIMName(),
                                 const String& role = String::EMPTY,
                                 const String& resultRole = String::EMPTY,
                                 Boolean includeQualifiers = false,
                                 Boolean includeClassOrigin = false,
                                 const CIMPropertyList& propertyList = CIMPropertyList());

    Array<CIMObjectPath> associatorNames(const CIMNamespaceName& nameSpace,
                                         const CIMObjectPath& objectName,
                                         const CIMName& assocClass = CIMName(),
                                         const CIMName& resultClass = CIMName(),
                                         const String& role = String::EMPTY,
                                         const String& resultRole = String::EMPTY);

    Array<CIMObject> references(const CIMNamespaceName& nameSpace,
                                const CIMObjectPath& objectName,
                                const CIMName& resultClass = CIMName(),
                                const String& role = String::EMPTY,
                                Boolean includeQualifiers = false,
                                Boolean includeClassOrigin = false,
                                const CIMPropertyList& propertyList = CIMPropertyList());

    Array<CIMObjectPath> referenceNames(const CIMNamespaceName& nameSpace,
                                        const CIMObjectPath& objectName,
                                        const CIMName& resultClass = CIMName(),
                                        const String& role = String::EMPTY);

    CIMValue getProperty(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
                         const CIMName& propertyName);

    void setProperty(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
                     const CIMName& propertyName, const CIMValue& newValue = CIMValue());

    CIMValue invokeMethod(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
                          const CIMName& methodName, const Array<CIMParamValue>& inParameters,
                          Array<CIMParamValue>& outParameters);

private:
    CIMClient(const CIMClient&);
    CIMClient& operator=(const CIMClient&);

    CIMClientRep* _rep;
};

PEGASUS_NAMESPACE_END

#endif
