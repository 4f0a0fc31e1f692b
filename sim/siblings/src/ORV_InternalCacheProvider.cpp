#include "ORV_InternalCacheProvider.h"

#include "ArrayAccess.h"
#include "ElementInstances.h"
#include "ElementPaths.h"
#include "ProviderSupport.h"

#include <ORV_InternalCacheService.h>

#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/ProviderException.h>

PEGASUS_USING_PEGASUS;

namespace orvsib
{

const char* const ORV_InternalCacheProvider::PROVIDER_NAME = "ORV_InternalCacheProvider";

namespace
{

const Uint32 METHOD_SUCCEEDED = 0;

String _text(const String& what)
{
    return String(ORV_InternalCacheProvider::PROVIDER_NAME) + String(": ") + what;
}

// The one output parameter of each method, from the system's identity.
bool _answer(const CIMName& methodName, const orvsim_identity_t& identity, CIMParamValue& out)
{
    if (methodName.equal(CIMName("GetSystemName")))
    {
        out = CIMParamValue("SystemName", CIMValue(String(identity.systemName)));
    }
    else if (methodName.equal(CIMName("GetSystemID")))
    {
        out = CIMParamValue("SystemID", CIMValue(Uint32(identity.systemID)));
    }
    else if (methodName.equal(CIMName("IsQuadPortSystem")))
    {
        out = CIMParamValue("IsQuadPort", CIMValue(Uint8(identity.quadPort)));
    }
    else if (methodName.equal(CIMName("GetSystemType")))
    {
        out = CIMParamValue("SystemType", CIMValue(Sint32(identity.systemType)));
    }
    else if (methodName.equal(CIMName("GetSystemHostName")))
    {
        out = CIMParamValue("SystemHostName", CIMValue(String(identity.hostName)));
    }
    else if (methodName.equal(CIMName("GetSystemAddress")))
    {
        out = CIMParamValue("SystemAddress", CIMValue(String(identity.address)));
    }
    else
    {
        return false;
    }
    return true;
}

} // namespace

ORV_InternalCacheProvider::ORV_InternalCacheProvider() {}

ORV_InternalCacheProvider::~ORV_InternalCacheProvider() {}

void ORV_InternalCacheProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
}

void ORV_InternalCacheProvider::terminate()
{
    delete this;
}

void ORV_InternalCacheProvider::_checkRequest(const OperationContext& context,
                                              const CIMObjectPath& path) const
{
    checkUserOrServerAccount(context);
    if (!path.getClassName().equal(CIMName(INTERNAL_CACHE_CLASS)))
    {
        throw CIMNotSupportedException(_text("class not served: ") +
                                       path.getClassName().getString());
    }
}

void ORV_InternalCacheProvider::_checkInstance(const CIMObjectPath& path) const
{
    const Array<CIMKeyBinding>& keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        if (keys[i].getName().equal(CIMName("InstanceID")))
        {
            if (keys.size() == 1 && keys[i].getValue() == String(INTERNAL_CACHE_ID))
            {
                return;
            }
            break;
        }
    }
    throw CIMObjectNotFoundException(_text("no such instance: ") + path.toString());
}

CIMInstance ORV_InternalCacheProvider::_buildInstance(Boolean includeQualifiers,
                                                      Boolean includeClassOrigin,
                                                      const CIMPropertyList& propertyList)
{
    const CIMClass cimClass = ORV_InternalCacheService::getInstance()->getStoredCIMClass(
        _cimom, OperationContext(), CIMNamespaceName(INTERNAL_CACHE_NAMESPACE),
        CIMName(INTERNAL_CACHE_CLASS), false, includeQualifiers, includeClassOrigin, propertyList);
    String host;
    reportingApiFailures(PROVIDER_NAME, [&] { host = readIdentity().hostName; });
    return buildInternalCache(cimClass, host);
}

void ORV_InternalCacheProvider::getInstance(const OperationContext& context,
                                            const CIMObjectPath& instanceReference,
                                            const Boolean includeQualifiers,
                                            const Boolean includeClassOrigin,
                                            const CIMPropertyList& propertyList,
                                            InstanceResponseHandler& handler)
{
    _checkRequest(context, instanceReference);
    _checkInstance(instanceReference);
    const CIMInstance instance =
        _buildInstance(includeQualifiers, includeClassOrigin, propertyList);
    handler.processing();
    handler.deliver(instance);
    handler.complete();
}

void ORV_InternalCacheProvider::enumerateInstances(const OperationContext& context,
                                                   const CIMObjectPath& classReference,
                                                   const Boolean includeQualifiers,
                                                   const Boolean includeClassOrigin,
                                                   const CIMPropertyList& propertyList,
                                                   InstanceResponseHandler& handler)
{
    _checkRequest(context, classReference);
    const CIMInstance instance =
        _buildInstance(includeQualifiers, includeClassOrigin, propertyList);
    handler.processing();
    handler.deliver(instance);
    handler.complete();
}

void ORV_InternalCacheProvider::enumerateInstanceNames(const OperationContext& context,
                                                       const CIMObjectPath& classReference,
                                                       ObjectPathResponseHandler& handler)
{
    _checkRequest(context, classReference);
    String host;
    reportingApiFailures(PROVIDER_NAME, [&] { host = readIdentity().hostName; });
    handler.processing();
    handler.deliver(internalCachePath(host));
    handler.complete();
}

void ORV_InternalCacheProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
                                               const CIMInstance&, const Boolean,
                                               const CIMPropertyList&, ResponseHandler&)
{
    throw CIMNotSupportedException(_text("modifyInstance is not supported"));
}

void ORV_InternalCacheProvider::createInstance(const OperationContext&, const CIMObjectPath&,
                                               const CIMInstance&, ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(_text("createInstance is not supported"));
}

void ORV_InternalCacheProvider::deleteInstance(const OperationContext&, const CIMObjectPath&,
                                               ResponseHandler&)
{
    throw CIMNotSupportedException(_text("deleteInstance is not supported"));
}

void ORV_InternalCacheProvider::invokeMethod(const OperationContext& context,
                                             const CIMObjectPath& objectReference,
                                             const CIMName& methodName,
                                             const Array<CIMParamValue>& inParameters,
                                             MethodResultResponseHandler& handler)
{
    _checkRequest(context, objectReference);
    _checkInstance(objectReference);
    if (inParameters.size() != 0)
    {
        throw CIMInvalidParameterException(_text("the method takes no input parameters: ") +
                                           methodName.getString());
    }
    orvsim_identity_t identity;
    reportingApiFailures(PROVIDER_NAME, [&] { identity = readIdentity(); });
    CIMParamValue out;
    if (!_answer(methodName, identity, out))
    {
        throw CIMException(CIM_ERR_METHOD_NOT_FOUND,
                           _text("no such method: ") + methodName.getString());
    }
    handler.processing();
    handler.deliverParamValue(out);
    handler.deliver(CIMValue(METHOD_SUCCEEDED));
    handler.complete();
}

} // namespace orvsib
