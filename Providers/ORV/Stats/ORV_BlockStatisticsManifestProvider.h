#ifndef ORV_BlockStatisticsManifestProvider_h
#define ORV_BlockStatisticsManifestProvider_h

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

PEGASUS_USING_PEGASUS;

// Serves ORV_BlockStatisticsManifest: one fixed, read-only manifest per
// supported element type, telling which counters GetStatisticsCollection
// returns and in which order. The class also owns the element-type tables
// that the service and the collection associations use, so that the mapping
// from element type to statistics class lives in one place.
class ORV_BlockStatisticsManifestProvider : public CIMInstanceProvider
{
public:
    ORV_BlockStatisticsManifestProvider();
    ORV_BlockStatisticsManifestProvider(const CIMObjectPath& path);
    virtual ~ORV_BlockStatisticsManifestProvider();

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

    static CIMInstance buildInstance(CIMClass cls, const Uint16& elementType,
                                     const String& hostAddr, const String& systemName);
    static CIMObjectPath buildObjectPath(const String& hostAddr, const String& instanceID);
    static String makeInstanceID(const Uint16& elementType, const String& systemName);

    // Supported element types: 2, 4, 6, 7, 8, 10, 11.
    static Array<Uint16> getElementTypes();
    // The statistical-data class of an element type; null when unsupported.
    static CIMName getClassName(Uint16 elementType);
    static String getElementTypeName(const Uint16& elementType);
    static String getElementTypeFullName(const Uint16& elementType);

private:
    Array<CIMInstance> _build_instances(CIMName className, bool includeQualifiers,
                                        bool includeClassOrigin,
                                        const CIMPropertyList& propertyList);
    Array<CIMObjectPath> _build_ref();

    // Pairs of (Include switch, counter it governs), in record order; the
    // row with an empty switch name ends the table.
    static const String _schemaProps[12][2];

    CIMOMHandle _cimom;
    String _hostAddr;
    String _systemName;
};

#endif
