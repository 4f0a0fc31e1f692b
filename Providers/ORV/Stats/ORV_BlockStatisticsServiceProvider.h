#ifndef ORV_BlockStatisticsServiceProvider_h
#define ORV_BlockStatisticsServiceProvider_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>

PEGASUS_USING_PEGASUS;

// Serves ORV_BlockStatisticsService, the one statistics service of the
// storage system, and its bulk method GetStatisticsCollection, which returns
// the counters of every element of the requested types as CSV records in
// the order of each type's manifest.
class ORV_BlockStatisticsServiceProvider : public CIMInstanceProvider, public CIMMethodProvider
{
public:
    ORV_BlockStatisticsServiceProvider();
    ORV_BlockStatisticsServiceProvider(const CIMObjectPath& path);
    virtual ~ORV_BlockStatisticsServiceProvider();

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

    virtual void invokeMethod(const OperationContext& context,
                              const CIMObjectPath& objectReference, const CIMName& methodName,
                              const Array<CIMParamValue>& inParameters,
                              MethodResultResponseHandler& handler);

    static String makeName(const String& systemName);
    static CIMObjectPath buildObjectPath(const String& hostAddr, const String& systemName,
                                         const String& name);
    static CIMInstance buildInstance(CIMClass cls, const String& hostAddr,
                                     const String& systemName);

private:
    Array<CIMInstance> _build_instances(CIMName className, bool includeQualifiers,
                                        bool includeClassOrigin,
                                        const CIMPropertyList& propertyList);
    Array<CIMObjectPath> _build_ref();

    // Every record of one element type, one line per statistical instance.
    String _buildStatsRecord(const OperationContext& context, const Uint16& elementType,
                             CIMInstance& manifest);

    CIMOMHandle _cimom;
    String _hostAddr;
    String _systemName;
};

#endif
