#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Sdk/CIMOMDispatcher.h>

#include "RemoteConnection.h"

#include <cstdio>

PEGASUS_NAMESPACE_BEGIN

namespace
{
const Uint32 DEFAULT_TIMEOUT_MILLISECONDS = 20000;
} // namespace

class CIMClientRep
{
public:
    CIMClientRep() : dispatcher(0), remote(0), timeout(DEFAULT_TIMEOUT_MILLISECONDS)
    {
    }

    ~CIMClientRep()
    {
        delete remote;
    }

    bool isConnected() const
    {
        return dispatcher != 0 || remote != 0;
    }

    void requireConnected() const
    {
        if (!isConnected())
        {
            throw NotConnectedException();
        }
    }

    // Local requests act for the server itself, which has no user name.
    CIMOMDispatcher& connected(OperationContext& context) const
    {
        if (dispatcher == 0)
        {
            throw NotConnectedException();
        }
        context.insert(IdentityContainer(String()));
        return *dispatcher;
    }

    CIMOMDispatcher* dispatcher;
    RemoteConnection* remote;
    Uint32 timeout;
};

namespace
{
CIMException notSupported(const char* operation)
{
    return CIMException(CIM_ERR_NOT_SUPPORTED,
                        String("CIMClient::") + operation + " is not supported by this client");
}
} // namespace

CIMClient::CIMClient() : _rep(new CIMClientRep)
{
}

CIMClient::~CIMClient()
{
    delete _rep;
}

Uint32 CIMClient::getTimeout() const
{
    return _rep->timeout;
}

void CIMClient::setTimeout(Uint32 timeoutMilliseconds)
{
    _rep->timeout = timeoutMilliseconds;
    if (_rep->remote != 0)
    {
        _rep->remote->setTimeout(timeoutMilliseconds);
    }
}

void CIMClient::connect(const String& host, const Uint32 portNumber, const String& userName,
                        const String& password)
{
    if (_rep->isConnected())
    {
        throw AlreadyConnectedException();
    }
    _rep->remote = new RemoteConnection(host, portNumber, false, userName, password, String(),
                                        String(), String(), _rep->timeout);
}

void CIMClient::connect(const String& host, const Uint32 portNumber, const SSLContext& sslContext,
                        const String& userName, const String& password)
{
    if (_rep->isConnected())
    {
        throw AlreadyConnectedException();
    }
    _rep->remote = new RemoteConnection(host, portNumber, true, userName, password,
                                        sslContext.getTrustStore(), sslContext.getCertPath(),
                                        sslContext.getKeyPath(), _rep->timeout);
}

void CIMClient::connectLocal()
{
    if (_rep->isConnected())
    {
        throw AlreadyConnectedException();
    }
    CIMOMDispatcher* dispatcher = Sdk::getLocalDispatcher();
    if (dispatcher == 0)
    {
        throw CannotConnectException("no local CIM server is running in this process");
    }
    _rep->dispatcher = dispatcher;
}

void CIMClient::disconnect()
{
    _rep->dispatcher = 0;
    delete _rep->remote;
    _rep->remote = 0;
}

CIMClass CIMClient::getClass(const CIMNamespaceName& nameSpace, const CIMName& className,
                             Boolean localOnly, Boolean includeQualifiers,
                             Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    if (_rep->remote != 0)
    {
        throw notSupported("getClass");
    }
    OperationContext context;
    return _rep->connected(context).getClass(context, nameSpace, className, localOnly,
                                             includeQualifiers, includeClassOrigin, propertyList);
}

CIMInstance CIMClient::getInstance(const CIMNamespaceName& nameSpace,
                                   const CIMObjectPath& instanceName, Boolean localOnly,
                                   Boolean includeQualifiers, Boolean includeClassOrigin,
                                   const CIMPropertyList& propertyList)
{
    if (_rep->remote != 0)
    {
        return _rep->remote->getInstance(nameSpace, instanceName, localOnly, includeQualifiers,
                                          includeClassOrigin, propertyList);
    }
    OperationContext context;
    return _rep->connected(context).getInstance(context, nameSpace, instanceName, localOnly,
                                                includeQualifiers, includeClassOrigin,
                                                propertyList);
}

void CIMClient::deleteClass(const CIMNamespaceName&, const CIMName&)
{
    _rep->requireConnected();
    throw notSupported("deleteClass");
}

void CIMClient::deleteInstance(const CIMNamespaceName&, const CIMObjectPath&)
{
    _rep->requireConnected();
    throw notSupported("deleteInstance");
}

void CIMClient::createClass(const CIMNamespaceName&, const CIMClass&)
{
    _rep->requireConnected();
    throw notSupported("createClass");
}

CIMObjectPath CIMClient::createInstance(const CIMNamespaceName&, const CIMInstance&)
{
    _rep->requireConnected();
    throw notSupported("createInstance");
}

void CIMClient::modifyClass(const CIMNamespaceName&, const CIMClass&)
{
    _rep->requireConnected();
    throw notSupported("modifyClass");
}

void CIMClient::modifyInstance(const CIMNamespaceName&, const CIMInstance&, Boolean,
                               const CIMPropertyList&)
{
    _rep->requireConnected();
    throw notSupported("modifyInstance");
}

Array<CIMClass> CIMClient::enumerateClasses(const CIMNamespaceName& nameSpace,
                                            const CIMName& className, Boolean deepInheritance,
                                            Boolean localOnly, Boolean includeQualifiers,
                                            Boolean includeClassOrigin)
{
    if (_rep->remote != 0)
    {
        throw notSupported("enumerateClasses");
    }
    OperationContext context;
    return _rep->connected(context).enumerateClasses(context, nameSpace, className,
                                                     deepInheritance, localOnly,
                                                     includeQualifiers, includeClassOrigin);
}

Array<CIMName> CIMClient::enumerateClassNames(const CIMNamespaceName& nameSpace,
                                              const CIMName& className, Boolean deepInheritance)
{
    if (_rep->remote != 0)
    {
        throw notSupported("enumerateClassNames");
    }
    OperationContext context;
    return _rep->connected(context).enumerateClassNames(context, nameSpace, className,
                                                        deepInheritance);
}

Array<CIMInstance> CIMClient::enumerateInstances(const CIMNamespaceName& nameSpace,
                                                 const CIMName& className,
                                                 Boolean deepInheritance, Boolean localOnly,
                                                 Boolean includeQualifiers,
                                                 Boolean includeClassOrigin,
                                                 const CIMPropertyList& propertyList)
{
    if (_rep->remote != 0)
    {
        return _rep->remote->enumerateInstances(nameSpace, className, deepInheritance, localOnly,
                                                 includeQualifiers, includeClassOrigin,
                                                 propertyList);
    }
    OperationContext context;
    return _rep->connected(context).enumerateInstances(context, nameSpace, className,
                                                       deepInheritance, localOnly,
                                                       includeQualifiers, includeClassOrigin,
                                                       propertyList);
}

Array<CIMObjectPath> CIMClient::enumerateInstanceNames(const CIMNamespaceName& nameSpace,
                                                       const CIMName& className)
{
    if (_rep->remote != 0)
    {
        return _rep->remote->enumerateInstanceNames(nameSpace, className);
    }
    OperationContext context;
    return _rep->connected(context).enumerateInstanceNames(context, nameSpace, className);
}

Array<CIMObject> CIMClient::execQuery(const CIMNamespaceName&, const String&, const String&)
{
    _rep->requireConnected();
    throw notSupported("execQuery");
}

Array<CIMObject> CIMClient::associators(const CIMNamespaceName& nameSpace,
                                        const CIMObjectPath& objectName,
                                        const CIMName& assocClass, const CIMName& resultClass,
                                        const String& role, const String& resultRole,
                                        Boolean includeQualifiers, Boolean includeClassOrigin,
                                        const CIMPropertyList& propertyList)
{
    if (_rep->remote != 0)
    {
        return _rep->remote->associators(nameSpace, objectName, assocClass, resultClass, role,
                                          resultRole, includeQualifiers, includeClassOrigin,
                                          propertyList);
    }
    OperationContext context;
    return _rep->connected(context).associators(context, nameSpace, objectName, assocClass,
                                                resultClass, role, resultRole,
                                                includeQualifiers, includeClassOrigin,
                                                propertyList);
}

Array<CIMObjectPath> CIMClient::associatorNames(const CIMNamespaceName& nameSpace,
                                                const CIMObjectPath& objectName,
                                                const CIMName& assocClass,
                                                const CIMName& resultClass, const String& role,
                                                const String& resultRole)
{
    if (_rep->remote != 0)
    {
        return _rep->remote->associatorNames(nameSpace, objectName, assocClass, resultClass, role,
                                              resultRole);
    }
    OperationContext context;
    return _rep->connected(context).associatorNames(context, nameSpace, objectName, assocClass,
                                                    resultClass, role, resultRole);
}

Array<CIMObject> CIMClient::references(const CIMNamespaceName& nameSpace,
                                       const CIMObjectPath& objectName,
                                       const CIMName& resultClass, const String& role,
                                       Boolean includeQualifiers, Boolean includeClassOrigin,
                                       const CIMPropertyList& propertyList)
{
    if (_rep->remote != 0)
    {
        return _rep->remote->references(nameSpace, objectName, resultClass, role,
                                         includeQualifiers, includeClassOrigin, propertyList);
    }
    OperationContext context;
    return _rep->connected(context).references(context, nameSpace, objectName, resultClass,
                                               role, includeQualifiers, includeClassOrigin,
                                               propertyList);
}

Array<CIMObjectPath> CIMClient::referenceNames(const CIMNamespaceName& nameSpace,
                                               const CIMObjectPath& objectName,
                                               const CIMName& resultClass, const String& role)
{
    if (_rep->remote != 0)
    {
        return _rep->remote->referenceNames(nameSpace, objectName, resultClass, role);
    }
    OperationContext context;
    return _rep->connected(context).referenceNames(context, nameSpace, objectName, resultClass,
                                                   role);
}

CIMValue CIMClient::getProperty(const CIMNamespaceName&, const CIMObjectPath&, const CIMName&)
{
    _rep->requireConnected();
    throw notSupported("getProperty");
}

void CIMClient::setProperty(const CIMNamespaceName&, const CIMObjectPath&, const CIMName&,
                            const CIMValue&)
{
    _rep->requireConnected();
    throw notSupported("setProperty");
}

CIMValue CIMClient::invokeMethod(const CIMNamespaceName& nameSpace,
                                 const CIMObjectPath& instanceName, const CIMName& methodName,
                                 const Array<CIMParamValue>& inParameters,
                                 Array<CIMParamValue>& outParameters)
{
    if (_rep->remote != 0)
    {
        return _rep->remote->invokeMethod(nameSpace, instanceName, methodName, inParameters,
                                           outParameters);
    }
    OperationContext context;
    return _rep->connected(context).invokeMethod(context, nameSpace, instanceName, methodName,
                                                 inParameters, outParameters);
}

PEGASUS_NAMESPACE_END
