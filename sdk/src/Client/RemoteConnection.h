#ifndef Pegasus_Client_RemoteConnection_h
#define Pegasus_Client_RemoteConnection_h

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/String.h>

#include <string>

typedef void CURL;

PEGASUS_NAMESPACE_BEGIN

// One CIM-XML over HTTP(S) connection of a CIMClient (DSP0200): builds the
// request messages, posts them with libcurl and decodes the answers. The
// encoding and decoding are the host's, shared through the SDK's codec.
class RemoteConnection
{
public:
    // Reaches host:port once (TCP, and TLS when https) so that connect()
    // fails as OpenPegasus's does; throws CannotConnectException,
    // ConnectionTimeoutException, SSLException or InvalidLocatorException.
    RemoteConnection(const String& host, Uint32 port, bool https, const String& userName,
                     const String& password, const String& trustStore, const String& certPath,
                     const String& keyPath, Uint32 timeoutMilliseconds);
    ~RemoteConnection();

    void setTimeout(Uint32 timeoutMilliseconds);

    CIMInstance getInstance(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
                            Boolean localOnly, Boolean includeQualifiers,
                            Boolean includeClassOrigin, const CIMPropertyList& propertyList);
    Array<CIMInstance> enumerateInstances(const CIMNamespaceName& nameSpace,
                                          const CIMName& className, Boolean deepInheritance,
                                          Boolean localOnly, Boolean includeQualifiers,
                                          Boolean includeClassOrigin,
                                          const CIMPropertyList& propertyList);
    Array<CIMObjectPath> enumerateInstanceNames(const CIMNamespaceName& nameSpace,
                                                const CIMName& className);
    Array<CIMObject> associators(const CIMNamespaceName& nameSpace,
                                 const CIMObjectPath& objectName, const CIMName& assocClass,
                                 const CIMName& resultClass, const String& role,
                                 const String& resultRole, Boolean includeQualifiers,
                                 Boolean includeClassOrigin, const CIMPropertyList& propertyList);
    Array<CIMObjectPath> associatorNames(const CIMNamespaceName& nameSpace,
                                         const CIMObjectPath& objectName,
                                         const CIMName& assocClass, const CIMName& resultClass,
                                         const String& role, const String& resultRole);
    Array<CIMObject> references(const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
                                const CIMName& resultClass, const String& role,
                                Boolean includeQualifiers, Boolean includeClassOrigin,
                                const CIMPropertyList& propertyList);
    Array<CIMObjectPath> referenceNames(const CIMNamespaceName& nameSpace,
                                        const CIMObjectPath& objectName,
                                        const CIMName& resultClass, const String& role);
    CIMValue invokeMethod(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
                          const CIMName& methodName, const Array<CIMParamValue>& inParameters,
                          Array<CIMParamValue>& outParameters);

private:
    RemoteConnection(const RemoteConnection&);
    RemoteConnection& operator=(const RemoteConnection&);

    void _setCommonOptions(CURL* curl);
    std::string _post(const std::string& method, const std::string& object,
                      const std::string& call);
    std::string _intrinsic(const char* method, const CIMNamespaceName& nameSpace,
                           const std::string& params);

    CURL* _curl;
    std::string _url;
    std::string _user;
    std::string _password;
    std::string _trustStore;
    std::string _certPath;
    std::string _keyPath;
    Uint32 _timeout;
    Uint32 _messageId;
};

PEGASUS_NAMESPACE_END

#endif
