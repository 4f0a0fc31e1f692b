#ifndef ORV_SIBLINGS_ORV_InternalCacheProvider_h
#define ORV_SIBLINGS_ORV_InternalCacheProvider_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>

namespace orvsib
{

// The one ORV_InternalCache instance in root/PG_Internal, whose methods tell
// the provider modules which storage system they speak for (name, ID, type,
// host name, address, quad-port flag). Answers come from the array's model on
// every call.
class ORV_InternalCacheProvider : public Pegasus::CIMInstanceProvider,
                                  public Pegasus::CIMMethodProvider
{
public:
    static const char* const PROVIDER_NAME;

    ORV_InternalCacheProvider();
    ~ORV_InternalCacheProvider() override;

    void initialize(Pegasus::CIMOMHandle& cimom) override;
    void terminate() override;

    void getInstance(const Pegasus::OperationContext& context,
                     const Pegasus::CIMObjectPath& instanceReference,
                     const Pegasus::Boolean includeQualifiers,
                     const Pegasus::Boolean includeClassOrigin,
                     const Pegasus::CIMPropertyList& propertyList,
                     Pegasus::InstanceResponseHandler& handler) override;

    void enumerateInstances(const Pegasus::OperationContext& context,
                            const Pegasus::CIMObjectPath& classReference,
                            const Pegasus::Boolean includeQualifiers,
                            const Pegasus::Boolean includeClassOrigin,
                            const Pegasus::CIMPropertyList& propertyList,
                            Pegasus::InstanceResponseHandler& handler) override;

    void enumerateInstanceNames(const Pegasus::OperationContext& context,
                                const Pegasus::CIMObjectPath& classReference,
                                Pegasus::ObjectPathResponseHandler& handler) override;

    void modifyInstance(const Pegasus::OperationContext& context,
                        const Pegasus::CIMObjectPath& instanceReference,
                        const Pegasus::CIMInstance& instanceObject,
                        const Pegasus::Boolean includeQualifiers,
                        const Pegasus::CIMPropertyList& propertyList,
                        Pegasus::ResponseHandler& handler) override;

    void createInstance(const Pegasus::OperationContext& context,
                        const Pegasus::CIMObjectPath& instanceReference,
                        const Pegasus::CIMInstance& instanceObject,
                        Pegasus::ObjectPathResponseHandler& handler) override;

    void deleteInstance(const Pegasus::OperationContext& context,
                        const Pegasus::CIMObjectPath& instanceReference,
                        Pegasus::ResponseHandler& handler) override;

    void invokeMethod(const Pegasus::OperationContext& context,
                      const Pegasus::CIMObjectPath& objectReference,
                      const Pegasus::CIMName& methodName,
                      const Pegasus::Array<Pegasus::CIMParamValue>& inParameters,
                      Pegasus::MethodResultResponseHandler& handler) override;

private:
    void _checkRequest(const Pegasus::OperationContext& context,
                       const Pegasus::CIMObjectPath& path) const;
    void _checkInstance(const Pegasus::CIMObjectPath& path) const;
    Pegasus::CIMInstance _buildInstance(Pegasus::Boolean includeQualifiers,
                                        Pegasus::Boolean includeClassOrigin,
                                        const Pegasus::CIMPropertyList& propertyList);

    Pegasus::CIMOMHandle _cimom;
};

} // namespace orvsib

#endif
