#ifndef ORV_BlockStatisticsManifestCollectionProvider_h
#define ORV_BlockStatisticsManifestCollectionProvider_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

PEGASUS_USING_PEGASUS;

// Serves ORV_BlockStatisticsManifestCollection: the default collection of
// block statistics manifests, the one that GetStatisticsCollection uses.
class ORV_BlockStatisticsManifestCollectionProvider : public CIMInstanceProvider
{
public:
    ORV_BlockStatisticsManifestCollectionProvider();
    ORV_BlockStatisticsManifestCollectionProvider(const CIMObjectPath& path);
    virtual ~ORV_BlockStatisticsManifestCollectionProvider();

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

    static CIMInstance buildInstance(CIMClass cimClass, const String& host,
                                     const String& systemName);
    static CIMObjectPath buildObjectPath(const String& host, const String& instanceID);
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
