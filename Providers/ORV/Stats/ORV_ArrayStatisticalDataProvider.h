#ifndef ORV_ArrayStatisticalDataProvider_h
#define ORV_ArrayStatisticalDataProvider_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

#include "orvapi.h"

PEGASUS_USING_PEGASUS;

// Serves ORV_ArrayStatisticalData: the one instance of the whole storage
// system, its counters summed over every port of the array.
class ORV_ArrayStatisticalDataProvider : public CIMInstanceProvider
{
public:
    ORV_ArrayStatisticalDataProvider();
    ORV_ArrayStatisticalDataProvider(const CIMObjectPath& path);
    virtual ~ORV_ArrayStatisticalDataProvider();

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

    static CIMInstance buildInstance(CIMClass cls, const api_PortsStats_t& ports,
                                     const String& hostAddr, const String& systemName);
    static CIMObjectPath buildObjectPath(const String& hostAddr, const String& instanceID);
    static String makeInstanceID(const String& systemName);

private:
    Array<CIMInstance> _build_instances(const CIMName& className, bool includeQualifiers,
                                        bool includeClassOrigin,
                                        const CIMPropertyList& propertyList);
    Array<CIMObjectPath> _build_ref();

    CIMOMHandle _cimom;
    String _hostAddr;
    String _systemName;
};

#endif
