#ifndef ORV_StatisticsElementCapabilitiesProvider_h
#define ORV_StatisticsElementCapabilitiesProvider_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

#include "ORV_AssociationFrame.h"

PEGASUS_NAMESPACE_BEGIN

// Serves ORV_StatisticsElementCapabilities: ties the block statistics
// service ("ManagedElement") to its capabilities ("Capabilities").
class ORV_StatisticsElementCapabilitiesProvider : public CIMAssociationProvider,
                                                  public CIMInstanceProvider
{
public:
    ORV_StatisticsElementCapabilitiesProvider();
    ORV_StatisticsElementCapabilitiesProvider(const CIMObjectPath& path);
    virtual ~ORV_StatisticsElementCapabilitiesProvider();

    virtual void initialize(CIMOMHandle& cimom);
    virtual void terminate();

    virtual void associators(const OperationContext& context, const CIMObjectPath& objectName,
                             const CIMName& associationClass, const CIMName& resultClass,
                             const String& role, const String& resultRole,
                             const Boolean includeQualifiers, const Boolean includeClassOrigin,
                             const CIMPropertyList& propertyList, ObjectResponseHandler& handler);

    virtual void associatorNames(const OperationContext& context, const CIMObjectPath& objectName,
                                 const CIMName& associationClass, const CIMName& resultClass,
                                 const String& role, const String& resultRole,
                                 ObjectPathResponseHandler& handler);

    virtual void references(const OperationContext& context, const CIMObjectPath& objectName,
                            const CIMName& resultClass, const String& role,
                            const Boolean includeQualifiers, const Boolean includeClassOrigin,
                            const CIMPropertyList& propertyList, ObjectResponseHandler& handler);

    virtual void referenceNames(const OperationContext& context, const CIMObjectPath& objectName,
                                const CIMName& resultClass, const String& role,
                                ObjectPathResponseHandler& handler);

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

private:
    CIMInstance _buildAssociationInstance(const CIMObjectPath& servicePath,
                                          const CIMObjectPath& capabilitiesPath,
                                          Boolean includeQualifiers, Boolean includeClassOrigin,
                                          const CIMPropertyList& propertyList);
    CIMObjectPath _buildAssociationName(const CIMObjectPath& servicePath,
                                        const CIMObjectPath& capabilitiesPath);
    Array<CIMInstance> _getRelatedInstances(const CIMObjectPath& objectName,
                                            const OperationContext& context,
                                            Boolean includeQualifiers, Boolean includeClassOrigin,
                                            const CIMPropertyList& propertyList);
    Array<CIMObjectPath> _getRelatedInstanceNames(const CIMObjectPath& objectName,
                                                  const OperationContext& context);
    Array<CIMInstance> _getInstances(Boolean includeQualifiers, Boolean includeClassOrigin,
                                     const CIMPropertyList& propertyList);
    Array<CIMObjectPath> _getInstanceNames();
    Boolean _invalidParms(const CIMObjectPath& objectName, String role, String resultRole,
                          CIMName resultClass, String operation);

    ORV_AssociationShape _shape() const;
    ORV_AssociationFrame _frame();

    CIMOMHandle _cimom;
    CIMName _assoClassName;
    CIMName _capabClassName;
    CIMName _serviceClassName;
    String _hostAddr;
    String _systemName;
};

PEGASUS_NAMESPACE_END

#endif
