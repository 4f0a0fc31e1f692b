#ifndef ORV_NodeStatisticalDataProvider_h
#define ORV_NodeStatisticalDataProvider_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

#include "orvapi.h"

PEGASUS_USING_PEGASUS;

// Serves ORV_NodeStatisticalData: one instance per controller node. I/O
// counters are summed over the node's ports; cache figures come from the
// node statistics and CPU figures from the node's CPU record.
class ORV_NodeStatisticalDataProvider : public CIMInstanceProvider
{
public:
    ORV_NodeStatisticalDataProvider();
    ORV_NodeStatisticalDataProvider(const CIMObjectPath& path);
    virtual ~ORV_NodeStatisticalDataProvider();

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

    // node: the node number (0 to 7); portStats: the node's ports summed,
    // with the node's name in nodeDeviceID.
    static CIMInstance buildInstance(CIMClass cls, Uint32 node, const api_PortStats_t& portStats,
                                     const api_NodeStats_t& nodeStats, const String& hostAddr);
    static CIMObjectPath buildObjectPath(const String& hostAddr, const String& instanceID);
    static String makeInstanceID(const api_PortStats_t& portStats);
    static String makeInstanceID(String nodeName);
    // The node name inside "QZ_KYRO:<name>-Stats"; "" when the ID has no
    // such form.
    static String extractNodeIDFromInstID(String instanceID);

    // Node number of a port position; PORT_NODE_NONE for a position that is
    // not bound to a physical port.
    static Uint32 nodeOfPort(lpid_t portID);
    static const Uint32 PORT_NODE_NONE = 253;

private:
    Array<CIMInstance> _build_instances(const CIMName& className, bool includeQualifiers,
                                        bool includeClassOrigin,
                                        const CIMPropertyList& propertyList);
    Array<CIMObjectPath> _build_ref();

    CIMOMHandle _cimom;
    String _hostAddr;
};

#endif
