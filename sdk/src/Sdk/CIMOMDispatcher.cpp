#include <Pegasus/Sdk/CIMOMDispatcher.h>

#include <Pegasus/Common/Exception.h>

#include <atomic>

PEGASUS_NAMESPACE_BEGIN

CIMOMDispatcher::~CIMOMDispatcher()
{
}

namespace
{
CIMException notRouted(const char* operation)
{
    return CIMException(CIM_ERR_NOT_SUPPORTED, String(operation) + " is not supported");
}
} // namespace

void CIMOMDispatcher::enumerateInstances(const OperationContext& context,
                                         const CIMNamespaceName& nameSpace,
                                         const CIMName& className, Boolean deepInheritance,
                                         Boolean localOnly, Boolean includeQualifiers,
                                         Boolean includeClassOrigin,
                                         const CIMPropertyList& propertyList,
                                         const InstanceSink& sink)
{
    Array<CIMInstance> all =
        enumerateInstances(context, nameSpace, className, deepInheritance, localOnly,
                           includeQualifiers, includeClassOrigin, propertyList);
    for (Uint32 i = 0; i < all.size(); i++)
    {
        sink(all[i]);
    }
}

void CIMOMDispatcher::enumerateInstanceNames(const OperationContext& context,
                                             const CIMNamespaceName& nameSpace,
                                             const CIMName& className, const PathSink& sink)
{
    Array<CIMObjectPath> all = enumerateInstanceNames(context, nameSpace, className);
    for (Uint32 i = 0; i < all.size(); i++)
    {
        sink(all[i]);
    }
}

CIMObjectPath CIMOMDispatcher::createInstance(const OperationContext&, const CIMNamespaceName&,
                                              const CIMInstance&)
{
    throw notRouted("createInstance");
}

void CIMOMDispatcher::modifyInstance(const OperationContext&, const CIMNamespaceName&,
                                     const CIMInstance&, Boolean, const CIMPropertyList&)
{
    throw notRouted("modifyInstance");
}

void CIMOMDispatcher::deleteInstance(const OperationContext&, const CIMNamespaceName&,
                                     const CIMObjectPath&)
{
    throw notRouted("deleteInstance");
}

CIMValue CIMOMDispatcher::getProperty(const OperationContext&, const CIMNamespaceName&,
                                      const CIMObjectPath&, const CIMName&)
{
    throw notRouted("getProperty");
}

void CIMOMDispatcher::setProperty(const OperationContext&, const CIMNamespaceName&,
                                  const CIMObjectPath&, const CIMName&, const CIMValue&)
{
    throw notRouted("setProperty");
}

namespace Sdk
{
namespace
{
// Set by the host before requests flow; read by every local client connection.
std::atomic<CIMOMDispatcher*> localDispatcher(nullptr);
} // namespace

void setLocalDispatcher(CIMOMDispatcher* dispatcher)
{
    localDispatcher.store(dispatcher);
}

CIMOMDispatcher* getLocalDispatcher()
{
    return localDispatcher.load();
}
} // namespace Sdk

PEGASUS_NAMESPACE_END
