#ifndef ORV_PortStatisticalDataProvider_h
#define ORV_PortStatisticalDataProvider_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

#include "orvapi.h"

PEGASUS_USING_PEGASUS;

// Serves ORV_PortStatisticalData: one instance per front-end or back-end
// port, with the counters of its data traffic.
class ORV_PortStatisticalDataProvider : public CIMInstanceProvider
{
public:
    ORV_PortStatisticalDataProvider();
    ORV_PortStatisticalDataProvider(const CIMObjectPath& path);
    virtual ~ORV_PortStatisticalDataProvider();

    virtual void initialize(CIMOMHandle& cimom);
    virtual void terminate();

    virtual void getInstance(const OperationContext& context,
                             const CIMObjectPath& instanceReference,
                             const Boolean includeQualifiers, const Boolean includeClassOrigin,
                             const CIMPropertyList& propertyList,
                             InstanceResponseHandler& handler);

    virtual void enumerateInstances(const OperationContext& context,
                                    const CIMObjectPath& classReference,
                                    const Boolean includeQualifiers,
                                    const Boolean includeClassOrigin,
                                    const CIMPropertyList& propertyList,
                                    InstanceResponseHandler& handler);

    virtual void enumerateInstanceNames(const OperationContext& context,
                                        const CIMObjectPath& classReference,
                                        ObjectPathResponseHandler& handler);

    virtual void modifyInstance(const OperationContext& context,
                                const CIMObjectPath& instanceReference,
                                const CIMInstance& instanceObject,
                                const Boolean includeQualifiers,
                                const CIMPropertyList& propertyList, ResponseHandler& handler);

    virtual void createInstance(const OperationContext& context,
                                const CIMObjectPath& instanceReference,
                                const CIMInstance& instanceObject,
                                ObjectPathResponseHandler& handler);

    virtual void deleteInstance(const OperationContext& context,
                                const CIMObjectPath& instanceReference,
                                ResponseHandler& handler);

    static CIMInstance buildInstance(CIMClass cimClass, const api_PortStats_t& data,
                                     const String& hostAddr);
    static CIMObjectPath buildObjectPath(const String& hostAddr, const String& instanceID);
    static String makeInstanceID(const api_PortStats_t& stats);

private:
    Array<CIMInstance> _build_instances(const CIMName& inputClassName, bool includeQualifiers,
                                        bool includeClassOrigin,
                                        const CIMPropertyList& propertyList);
    Array<CIMObjectPath> _build_ref();

    CIMOMHandle _cimom;
    String _hostAddr;
};

#endif
