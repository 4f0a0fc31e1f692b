#include "ORV_LUNStatisticalDataProvider.h"

#include <cstdio>
#include <cstring>
#include <strings.h>
#include <vector>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/Exception.h>

#include "ORV_Common.h"
#include "ORV_InstanceFrame.h"
#include "ORV_VolumeStatisticalDataProvider.h"
#include "orvapi.h"

PEGASUS_USING_PEGASUS;

static const String ClassName("ORV_LUNStatisticalDataProvider");

namespace
{
typedef ORV_VolumeStatisticalDataProvider Family;

const CIMName SERVED_CLASS("ORV_LUNStatisticalData");
const CIMName P_INSTANCE_ID("InstanceID");
const CIMName P_ELEMENT_NAME("ElementName");
const CIMName P_STATISTIC_TIME("StatisticTime");
const CIMName P_ELEMENT_TYPE("ElementType");
// The shared request flow, under this provider's name and source file.
const ORV_InstanceFrame FRAME(ClassName, SERVED_CLASS, __FILE__, __LINE__);
const char* const ID_PREFIX = "QZ_KYRO";
const Uint16 ELEMENT_TYPE_LOGICAL_UNITS = 11;
const int LOG_ERROR = 2;
const int LOG_TRACE = 4;

// Buffer of a composed InstanceID, and the bound applied to its long form.
const size_t ID_BUFFER_SIZE = 327;
const size_t ID_LONG_FORM_BOUND = 326;

int fieldLength(const char* field, size_t size)
{
    return (int)strnlen(field, size);
}

// Copies a scanned field into a caller's buffer of `size` bytes, cut so
// that the last byte stays the terminator.
void copyField(char* target, size_t size, const std::vector<char>& field)
{
    size_t length = strnlen(field.data(), field.size());
    if (length > size - 1)
    {
        length = size - 1;
    }
    memcpy(target, field.data(), length);
    target[length] = '\0';
}
} // namespace

ORV_LUNStatisticalDataProvider::ORV_LUNStatisticalDataProvider()
{
}

ORV_LUNStatisticalDataProvider::ORV_LUNStatisticalDataProvider(const CIMObjectPath&)
{
    FRAME.refuse("constructor with object path");
}

ORV_LUNStatisticalDataProvider::~ORV_LUNStatisticalDataProvider()
{
}

void ORV_LUNStatisticalDataProvider::initialize(CIMOMHandle& cimom)
{
    FRAME.initialize(cimom, _cimom, _hostAddr);
}

void ORV_LUNStatisticalDataProvider::terminate()
{
    delete this;
}

void ORV_LUNStatisticalDataProvider::getInstance(const OperationContext& context,
                                                 const CIMObjectPath& instanceReference,
                                                 const Boolean includeQualifiers,
                                                 const Boolean includeClassOrigin,
                                                 const CIMPropertyList& propertyList,
                                                 InstanceResponseHandler& handler)
{
    FRAME.traceEntry("getInstance");
    FRAME.checkUser(context);
    // A second open for the server itself; its failure is only logged, with
    // the wording the initialize path uses.
    if (api_orvOpenForCimserver(NULL) != 0)
    {
        log_message(LOG_ERROR, "ORV_LUNStatisticalDataProvider::initialize(): "
                               "api_orvOpenForCimserver failed\n");
    }
    CIMName className = instanceReference.getClassName();
    FRAME.checkClass(className);
    String instanceID = FRAME.requireInstanceID(instanceReference);

    // The ID narrows the query; the path match still decides.
    FRAME.deliverMatch(instanceReference,
                       _build_instances(className, includeQualifiers, includeClassOrigin,
                                        propertyList, instanceID),
                       instanceID, handler);
}

void ORV_LUNStatisticalDataProvider::enumerateInstances(const OperationContext& context,
                                                        const CIMObjectPath& classReference,
                                                        const Boolean includeQualifiers,
                                                        const Boolean includeClassOrigin,
                                                        const CIMPropertyList& propertyList,
                                                        InstanceResponseHandler& handler)
{
    FRAME.enumerateInstances(
        context, classReference,
        [&](const CIMName& className)
        {
            return _build_instances(className, includeQualifiers, includeClassOrigin, propertyList,
                                    String());
        },
        handler);
}

void ORV_LUNStatisticalDataProvider::enumerateInstanceNames(const OperationContext& context,
                                                            const CIMObjectPath& classReference,
                                                            ObjectPathResponseHandler& handler)
{
    FRAME.enumerateInstanceNames(
        context, classReference, [this]() { return _build_ref(); }, handler);
}

void ORV_LUNStatisticalDataProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
                                                    const CIMInstance&, const Boolean,
                                                    const CIMPropertyList&, ResponseHandler&)
{
    FRAME.refuse("modifyInstance");
}

void ORV_LUNStatisticalDataProvider::createInstance(const OperationContext&, const CIMObjectPath&,
                                                    const CIMInstance&, ObjectPathResponseHandler&)
{
    FRAME.refuse("createInstance");
}

void ORV_LUNStatisticalDataProvider::deleteInstance(const OperationContext&, const CIMObjectPath&,
                                                    ResponseHandler&)
{
    FRAME.refuse("deleteInstance");
}

// ---- builders ---------------------------------------------------------------

void ORV_LUNStatisticalDataProvider::splitPortID(lpid_t portID, int& node, int& slot, int& port)
{
    if (portID == API_PORTID_NONE)
    {
        node = 253;
        slot = -7;
        port = -8;
        return;
    }
    node = (portID >> 7) & 7;
    slot = (portID >> 3) & 15;
    port = portID & 7;
}

String ORV_LUNStatisticalDataProvider::makeInstanceID(const api_VLunStats_t& data)
{
    char id[ID_BUFFER_SIZE];
    memset(id, 0, sizeof(id));
    // LUN numbers are written as signed, as the established ID format has it.
    int lunID = (int)data.lunID;
    if (data.vlunType >= 1 && data.vlunType <= 4)
    {
        int node, slot, port;
        splitPortID(data.portID, node, slot, port);
        snprintf(id, ID_LONG_FORM_BOUND, "%s:VLUN_%d_%.*s:%d:%d:%d_%.*s", ID_PREFIX, lunID,
                 fieldLength(data.vvName, sizeof(data.vvName)), data.vvName, node, slot, port,
                 fieldLength(data.host_hwid, sizeof(data.host_hwid)), data.host_hwid);
    }
    else
    {
        // Kinds without a host or port get the short form, with the suffix
        // that the long form lacks.
        snprintf(id, sizeof(id), "%s:VLUN_%d-Stats", ID_PREFIX, lunID);
    }
    return String(id);
}

Sint32 ORV_LUNStatisticalDataProvider::parseID(const String& instanceID, Sint32* lunid,
                                               char* vvname, Sint32* nsp_n, Sint32* nsp_s,
                                               Sint32* nsp_p, char* host_hwid)
{
    if (instanceID.size() == 0 || !lunid || !vvname || !nsp_n || !nsp_s || !nsp_p || !host_hwid)
    {
        log_message(LOG_ERROR, "\tparseID: Invalid parameter.\n");
        return PARSE_FAILED;
    }
    CString text = instanceID.getCString();
    const char* id = (const char*)text;
    // Every text field gets room for the whole ID, so no client-supplied ID
    // can overrun; the results are cut to the callers' sizes afterwards.
    size_t room = strlen(id) + 1;
    std::vector<char> prefix(room, '\0');
    std::vector<char> kind(room, '\0');
    std::vector<char> name(room, '\0');
    std::vector<char> host(room, '\0');
    int lun = *lunid;
    int node = *nsp_n;
    int slot = *nsp_s;
    int port = *nsp_p;
    int fields = sscanf(id, "%[^:]:%[^_]_%d_%[^:]:%d:%d:%d_%s", prefix.data(), kind.data(), &lun,
                        name.data(), &node, &slot, &port, host.data());
    if (fields > 2)
    {
        *lunid = lun;
        if (fields >= 4)
        {
            copyField(vvname, VV_NAME_SIZE, name);
        }
        *nsp_n = node;
        *nsp_s = slot;
        *nsp_p = port;
        if (fields >= 8)
        {
            copyField(host_hwid, HOST_HWID_SIZE, host);
        }
        return 0;
    }
    log_message(LOG_ERROR, "\tparseID: Invalid Instance ID %s, %d.\n", id, fields);
    return PARSE_FAILED;
}

CIMObjectPath ORV_LUNStatisticalDataProvider::buildObjectPath(const String& hostAddr,
                                                              const String& instanceID)
{
    return ORV_Common::buildInstanceIDPath(hostAddr, SERVED_CLASS, instanceID);
}

CIMInstance ORV_LUNStatisticalDataProvider::buildInstance(CIMClass cimClass,
                                                          const api_VLunStats_t& data,
                                                          const String& hostAddr)
{
    const api_stats_t& s = data.stats;
    char elementName[64];
    snprintf(elementName, sizeof(elementName), "VLUN %u Statistical Data", data.lunID);

    CIMInstance instance = ORV_Common::buildInstanceSkeleton(cimClass);
    String instanceID = makeInstanceID(data);
    ORV_Common::setPropertyValue(instance, P_INSTANCE_ID, instanceID);
    ORV_Common::setPropertyValue(instance, P_ELEMENT_NAME, String(elementName));
    ORV_Common::setPropertyValue(instance, P_STATISTIC_TIME,
                                 ORV_Common::getCIMDateTime(data.time));
    ORV_Common::setPropertyValue(instance, P_ELEMENT_TYPE, ELEMENT_TYPE_LOGICAL_UNITS);
    Family::setIoCounters(instance, s.read, s.write);

    instance.setPath(buildObjectPath(hostAddr, instanceID));
    return instance;
}

// ---- fetching ---------------------------------------------------------------

Array<CIMInstance> ORV_LUNStatisticalDataProvider::_build_instances(
    const CIMName&, bool includeQualifiers, bool includeClassOrigin,
    const CIMPropertyList& propertyList, const String& instanceId)
{
    log_message(LOG_TRACE, "--> ORV_LUNStatisticalDataProvider::_build_instances\n");
    Array<CIMInstance> instances;
    bool isGetInstance = false;
    char vvname[VV_NAME_SIZE];
    char host_hwid[HOST_HWID_SIZE];
    memset(vvname, 0, sizeof(vvname));
    memset(host_hwid, 0, sizeof(host_hwid));
    Sint32 lunid = API_LUN_ALL;
    Sint32 nsp_n = API_NSP_ALL;
    Sint32 nsp_s = API_NSP_ALL;
    Sint32 nsp_p = API_NSP_ALL;

    if (instanceId.size() != 0)
    {
        if (parseID(instanceId, &lunid, vvname, &nsp_n, &nsp_s, &nsp_p, host_hwid) != 0)
        {
            log_message(LOG_ERROR, "\t_build_instances: parsing instance ID failure.\n");
            return instances;
        }
        vvname[VV_NAME_SIZE - 1] = '\0';
        host_hwid[HOST_HWID_SIZE - 1] = '\0';
        isGetInstance = true;
    }

    api_VLunsStats_t allstats;
    memset(&allstats, 0, sizeof(allstats));
    Family::FreeOnExit<api_VLunStats_t> release(allstats.stats);
    // The library takes node and port as signed 8 bits and the slot as signed
    // 16 bits; node 253 of unbound paths thus travels as -3.
    Sint32 status = Family::callLocked(
        [&]()
        {
            return api_getVLunStats(0, vvname, lunid, (Sint8)nsp_n, (Sint16)nsp_s, (Sint8)nsp_p,
                                    &allstats);
        });
    if (status != 0)
    {
        return instances;
    }

    CIMClass cimClass = ORV_Common::getStoredCIMClass(
        _cimom, OperationContext(), ORV_Common::NAMESPACE, SERVED_CLASS, false, includeQualifiers,
        includeClassOrigin, propertyList);
    if (!isGetInstance)
    {
        instances.reserveCapacity(allstats.count);
        Family::ReleaseBehind released(allstats.stats);
        for (Uint32 i = 0; i < allstats.count; i++)
        {
            instances.append(buildInstance(cimClass, allstats.stats[i], _hostAddr));
            released.readUpTo(&allstats.stats[i + 1]);
        }
    }
    else
    {
        // The host is the one part of the ID the query cannot select on.
        for (Uint32 i = 0; i < allstats.count; i++)
        {
            const api_VLunStats_t& record = allstats.stats[i];
            char recordHost[HOST_HWID_SIZE];
            memcpy(recordHost, record.host_hwid, sizeof(recordHost));
            recordHost[HOST_HWID_SIZE - 1] = '\0';
            if (strcasecmp(recordHost, host_hwid) == 0)
            {
                instances.append(buildInstance(cimClass, record, _hostAddr));
                break;
            }
        }
    }
    log_message(LOG_TRACE, "<-- ORV_LUNStatisticalDataProvider::_build_instances\n");
    return instances;
}

Array<CIMObjectPath> ORV_LUNStatisticalDataProvider::_build_ref()
{
    log_message(LOG_TRACE, "--> ORV_LUNStatisticalDataProvider::_build_ref\n");
    Array<CIMObjectPath> paths;
    api_VLunsStats_t allstats;
    memset(&allstats, 0, sizeof(allstats));
    Family::FreeOnExit<api_VLunStats_t> release(allstats.stats);
    if (Family::callLocked(
            [&]()
            {
                return api_getVLunStats(0, NULL, API_LUN_ALL, API_NSP_ALL, API_NSP_ALL, API_NSP_ALL,
                                        &allstats);
            }) == 0)
    {
        paths.reserveCapacity(allstats.count);
        Family::ReleaseBehind released(allstats.stats);
        for (Uint32 i = 0; i < allstats.count; i++)
        {
            paths.append(buildObjectPath(_hostAddr, makeInstanceID(allstats.stats[i])));
            released.readUpTo(&allstats.stats[i + 1]);
        }
    }
    log_message(LOG_TRACE, "<-- ORV_LUNStatisticalDataProvider::_build_ref\n");
    return paths;
}
