#ifndef ORV_LUNStatisticalDataProvider_h
#define ORV_LUNStatisticalDataProvider_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

#include "orvapi.h"

PEGASUS_USING_PEGASUS;

// Serves ORV_LUNStatisticalData: one instance per exported LUN path (VLUN).
// Its InstanceIDs carry the LUN, volume, port position and host, which
// getInstance parses back to narrow the management query.
class ORV_LUNStatisticalDataProvider : public CIMInstanceProvider
{
public:
    ORV_LUNStatisticalDataProvider();
    ORV_LUNStatisticalDataProvider(const CIMObjectPath& path);
    virtual ~ORV_LUNStatisticalDataProvider();

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

    // Sizes of the parseID output buffers, terminator included.
    static const Uint32 VV_NAME_SIZE = API_NAME_LEN;
    static const Uint32 HOST_HWID_SIZE = API_HOST_HWID_LEN;
    // Status of parseID for an ID it cannot take apart.
    static const Sint32 PARSE_FAILED = 1181;

    static CIMInstance buildInstance(CIMClass cimClass, const api_VLunStats_t& data,
                                     const String& hostAddr);
    static CIMObjectPath buildObjectPath(const String& hostAddr, const String& instanceID);
    static String makeInstanceID(const api_VLunStats_t& data);

    // Takes an InstanceID apart into the query selectors; vvname holds
    // VV_NAME_SIZE bytes and host_hwid HOST_HWID_SIZE. Fields that the ID does
    // not reach keep the caller's values. 0 on success, PARSE_FAILED when
    // fewer than three fields could be read.
    static Sint32 parseID(const String& instanceID, Sint32* lunid, char* vvname, Sint32* nsp_n,
                          Sint32* nsp_s, Sint32* nsp_p, char* host_hwid);

    // Node, slot and port of a port position, with the fixed odd triple
    // 253, -7, -8 for a path not bound to a physical port.
    static void splitPortID(lpid_t portID, int& node, int& slot, int& port);

private:
    Array<CIMInstance> _build_instances(const CIMName& inputClassName, bool includeQualifiers,
                                        bool includeClassOrigin,
                                        const CIMPropertyList& propertyList,
                                        const String& instanceId);
    Array<CIMObjectPath> _build_ref();

    CIMOMHandle _cimom;
    String _hostAddr;
};

#endif
