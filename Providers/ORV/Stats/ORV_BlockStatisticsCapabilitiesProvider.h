#ifndef ORV_BlockStatisticsCapabilitiesProvider_h
#define ORV_BlockStatisticsCapabilitiesProvider_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

PEGASUS_USING_PEGASUS;

// Serves ORV_BlockStatisticsCapabilities: the one read-only instance that
// tells clients which element types and methods the statistics service
// covers and the unit of its time counters.
class ORV_BlockStatisticsCapabilitiesProvider : public CIMInstanceProvider
{
public:
    ORV_BlockStatisticsCapabilitiesProvider();
    ORV_BlockStatisticsCapabilitiesProvider(const CIMObjectPath& path);
    virtual ~ORV_BlockStatisticsCapabilitiesProvider();

    virtual void initialize(CIMOMHandle& cimom);
    virtual void terminate();

    virtual void getInstance(const OperationContext& context,
                             const CIMObjectPath& instanceReference,
                             const Boolean includeQualifiers, const Boolean includeClassOrigin,
                             const CIMPropertyList& propertyList, InstanceResponseHandler& handler);

    virtual void
    enumerateInstances(const OperationContext& context, const CIMObjectPath& classReference,
                       const Boolean includeQualifiers, const Boolean includeClassOrigin,
                       const CIMPropertyList& propertyList, InstanceResponseHandler& handler);

    virtual void enumerateInstanceNames(const OperationContext& context,
                                        const CIMObjectPath& classReference,
                                        ObjectPathResponseHandler& handler);

    virtual void modifyInstance(const OperationContext& context,
                                const CIMObjectPath& instanceReference,
                                const CIMInstance& instanceObject, const Boolean includeQualifiers,
                                const CIMPropertyList& propertyList, ResponseHandler& handler);

    virtual void createInstance(const OperationContext& context,
                                const CIMObjectPath& instanceReference,
                                const CIMInstance& instanceObject,
                                ObjectPathResponseHandler& handler);

    virtual void deleteInstance(const OperationContext& context,
                                const CIMObjectPath& instanceReference, ResponseHandler& handler);

    static CIMInstance buildInstance(CIMClass cls, const String& hostAddr,
                                     const String& systemName);
    static CIMObjectPath buildObjectPath(const String& hostAddr, const String& instanceID);
    static String makeInstanceID(const String& systemName);

private:
    Array<CIMInstance> _build_instances(CIMName className, bool includeQualifiers,
                                        bool includeClassOrigin,
                                        const CIMPropertyList& propertyList);
    Array<CIMObjectPath> _build_ref();

    CIMOMHandle _cimom;
    String _hostAddr;
    String _systemName;
};

#endif
