#include "ORV_NodeStatisticalDataProvider.h"

#include <cstring>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ORV_Common.h"
#include "ORV_InstanceFrame.h"
#include "ORV_VolumeStatisticalDataProvider.h"
#include "orvapi.h"

PEGASUS_USING_PEGASUS;

static const String ClassName("ORV_NodeStatisticalDataProvider");

namespace
{
typedef ORV_VolumeStatisticalDataProvider Family;

const CIMName SERVED_CLASS("ORV_NodeStatisticalData");
// The shared request flow, under this provider's name and source file.
const ORV_InstanceFrame FRAME(ClassName, SERVED_CLASS, __FILE__, __LINE__);
const String ID_SUFFIX("-Stats");
const Uint16 ELEMENT_TYPE_NODE = 4;
const int LOG_TRACE = 4;

// The CPU record is fetched only when the class asks for one of these.
const char* const CPU_PROPERTIES[] = {"TotalCPUUserTimeCounter", "TotalCPUIdleTimeCounter",
                                      "TotalCPUSystemTimeCounter", "Interrupts", "ContextSwitches"};

void setU64(CIMInstance& instance, const char* name, Uint64 value)
{
    ORV_Common::setPropertyValue(instance, CIMName(name), value);
}

// Page counts and device figures are signed in the record and published as
// uint32, so negative values wrap.
void setU32(CIMInstance& instance, const char* name, Sint32 value)
{
    ORV_Common::setPropertyValue(instance, CIMName(name), Uint32(value));
}

bool wantsCpuBlock(const CIMInstance& instance)
{
    for (size_t i = 0; i < sizeof(CPU_PROPERTIES) / sizeof(CPU_PROPERTIES[0]); i++)
    {
        if (instance.findProperty(CIMName(CPU_PROPERTIES[i])) != PEG_NOT_FOUND)
        {
            return true;
        }
    }
    return false;
}

void setCpuBlock(CIMInstance& instance, Uint32 node)
{
    cpustats cpu;
    memset(&cpu, 0, sizeof(cpu));
    api_error_t error;
    memset(&error, 0, sizeof(error));
    // Made without the semaphore on purpose: the CPU query does not go
    // through the serialised part of the library.
    if (api_getNodeCPUStats(node, &cpu, &error) != 0)
    {
        return;
    }
    Uint64 user = 0;
    Uint64 idle = 0;
    Uint64 sys = 0;
    const Uint32 maxCpus = API_MAX_CPUS;
    Uint32 filled = cpu.cpustat_ncpus < maxCpus ? cpu.cpustat_ncpus : maxCpus;
    for (Uint32 i = 0; i < filled; i++)
    {
        user += cpu.cpustat_user[i] + cpu.cpustat_nice[i];
        idle += cpu.cpustat_idle[i];
        sys += cpu.cpustat_sys[i];
    }
    Uint64 ncpus = cpu.cpustat_ncpus;
    setU64(instance, "TotalCPUUserTimeCounter", ncpus ? user / ncpus : 0);
    setU64(instance, "TotalCPUIdleTimeCounter", ncpus ? idle / ncpus : 0);
    setU64(instance, "TotalCPUSystemTimeCounter", ncpus ? sys / ncpus : 0);
    setU64(instance, "Interrupts", cpu.cpustat_intr);
    setU64(instance, "ContextSwitches", cpu.cpustat_ctxt);
}

void addCounters(api_stats_data_t& sum, const api_stats_data_t& part)
{
    sum.count += part.count;
    sum.bytes += part.bytes;
    sum.ticks += part.ticks;
}
} // namespace

ORV_NodeStatisticalDataProvider::ORV_NodeStatisticalDataProvider()
{
}

ORV_NodeStatisticalDataProvider::ORV_NodeStatisticalDataProvider(const CIMObjectPath&)
{
    FRAME.refuse("constructor with object path");
}

ORV_NodeStatisticalDataProvider::~ORV_NodeStatisticalDataProvider()
{
}

void ORV_NodeStatisticalDataProvider::initialize(CIMOMHandle& cimom)
{
    FRAME.initialize(cimom, _cimom, _hostAddr);
}

void ORV_NodeStatisticalDataProvider::terminate()
{
    delete this;
}

void ORV_NodeStatisticalDataProvider::getInstance(const OperationContext& context,
                                                  const CIMObjectPath& instanceReference,
                                                  const Boolean includeQualifiers,
                                                  const Boolean includeClassOrigin,
                                                  const CIMPropertyList& propertyList,
                                                  InstanceResponseHandler& handler)
{
    FRAME.getInstance(
        context, instanceReference,
        [&](const CIMName& className, const String&) {
            return _build_instances(className, includeQualifiers, includeClassOrigin, propertyList);
        },
        handler);
}

void ORV_NodeStatisticalDataProvider::enumerateInstances(const OperationContext& context,
                                                         const CIMObjectPath& classReference,
                                                         const Boolean includeQualifiers,
                                                         const Boolean includeClassOrigin,
                                                         const CIMPropertyList& propertyList,
                                                         InstanceResponseHandler& handler)
{
    // A single chunk, so that a failure reads as a failed operation.
    FRAME.enumerateInstanceChunks(
        context, classReference,
        [&](const CIMName& className, Boolean&) {
            return _build_instances(className, includeQualifiers, includeClassOrigin, propertyList);
        },
        handler);
}

void ORV_NodeStatisticalDataProvider::enumerateInstanceNames(const OperationContext& context,
                                                             const CIMObjectPath& classReference,
                                                             ObjectPathResponseHandler& handler)
{
    FRAME.enumerateInstanceNameChunks(
        context, classReference, [this](Boolean&) { return _build_ref(); }, handler);
}

void ORV_NodeStatisticalDataProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
                                                     const CIMInstance&, const Boolean,
                                                     const CIMPropertyList&, ResponseHandler&)
{
    FRAME.refuse("modifyInstance");
}

void ORV_NodeStatisticalDataProvider::createInstance(const OperationContext&, const CIMObjectPath&,
                                                     const CIMInstance&, ObjectPathResponseHandler&)
{
    FRAME.refuse("createInstance");
}

void ORV_NodeStatisticalDataProvider::deleteInstance(const OperationContext&, const CIMObjectPath&,
                                                     ResponseHandler&)
{
    FRAME.refuse("deleteInstance");
}

// ---- builders ---------------------------------------------------------------

String ORV_NodeStatisticalDataProvider::makeInstanceID(String nodeName)
{
    return ORV_Common::INSTANCE_ID_PREFIX + ":" + nodeName + ID_SUFFIX;
}

String ORV_NodeStatisticalDataProvider::makeInstanceID(const api_PortStats_t& portStats)
{
    return makeInstanceID(
        Family::fieldText(portStats.nodeDeviceID, sizeof(portStats.nodeDeviceID)));
}

String ORV_NodeStatisticalDataProvider::extractNodeIDFromInstID(String instanceID)
{
    String rest = ORV_Common::extractFromInstanceID(instanceID);
    if (rest.size() == 0)
    {
        return String();
    }
    Uint32 suffix = rest.find(ID_SUFFIX);
    if (suffix == PEG_NOT_FOUND)
    {
        return String();
    }
    return rest.subString(0, suffix);
}

CIMObjectPath ORV_NodeStatisticalDataProvider::buildObjectPath(const String& hostAddr,
                                                               const String& instanceID)
{
    return ORV_Common::buildInstanceIDPath(hostAddr, SERVED_CLASS, instanceID);
}

Uint32 ORV_NodeStatisticalDataProvider::nodeOfPort(lpid_t portID)
{
    if (portID == API_PORTID_NONE)
    {
        return PORT_NODE_NONE;
    }
    return (portID >> 7) & 7;
}

CIMInstance ORV_NodeStatisticalDataProvider::buildInstance(CIMClass cls, Uint32 node,
                                                           const api_PortStats_t& portStats,
                                                           const api_NodeStats_t& nodeStats,
                                                           const String& hostAddr)
{
    if (node >= API_MAX_NODES)
    {
        throw CIMInvalidParameterException(ClassName + " invalid node number.");
    }
    const api_stats_t& s = portStats.dataStats;
    const cmp_stats& cache = nodeStats.cmp_cst[node];
    const cmp_lru_lens& lru = nodeStats.cmp_lru[node];
    const cmp_dev_stat* cdev = nodeStats.cmp_cdev[node];

    CIMInstance instance = ORV_Common::buildInstanceSkeleton(cls);
    String instanceID = makeInstanceID(portStats);
    String elementName = String("Node ") +
                         Family::fieldText(portStats.nodeDeviceID, sizeof(portStats.nodeDeviceID)) +
                         " Statistical Data";

    ORV_Common::setPropertyValue(instance, CIMName("InstanceID"), instanceID);
    ORV_Common::setPropertyValue(instance, CIMName("ElementName"), elementName);
    ORV_Common::setPropertyValue(instance, CIMName("StatisticTime"),
                                 ORV_Common::getCIMDateTime(portStats.time));
    Family::setStartStatisticTime(instance, portStats.time, s, "NodeStatisticalData", elementName);
    ORV_Common::setPropertyValue(instance, CIMName("ElementType"), ELEMENT_TYPE_NODE);
    Family::setIoCounters(instance, s.read, s.write);

    setU64(instance, "ReadHitIOs", cache.cmp_hits[0]);
    setU64(instance, "WriteHitIOs", cache.cmp_hits[1]);
    setU64(instance, "ReadMissIOs", cache.cmp_total_ios[0] - cache.cmp_hits[0]);
    setU64(instance, "WriteMissIOs", cache.cmp_total_ios[1] - cache.cmp_hits[1]);
    setU64(instance, "LockedReadBlocks", cache.cmp_blklck[0]);
    setU64(instance, "LockedWriteBlocks", cache.cmp_blklck[1]);
    setU32(instance, "FreeCachePages", lru.lru_free_anon_len);
    setU32(instance, "CleanCachePages", lru.lru_clean_len);
    setU32(instance, "Write1CachePages", lru.lru_w1_len);
    setU32(instance, "WriteNCachePages", lru.lru_wn_len);
    setU32(instance, "WriteScheduledCachePages", lru.lru_ws_len);
    setU32(instance, "WritingCachePages", lru.lru_ldwrt_len);
    setU32(instance, "PendingDelayedCopyOnWriteCachePages", lru.lru_dcow_pend_len);
    setU32(instance, "ProcessingDelayedCopyOnWriteCachePages", lru.lru_dcow_proc_len);
    // Device classes in the published order 10k, 15k, nearline, SSD.
    setU32(instance, "FC10kRPMCfcDirty", cdev[API_DEV_CLASS_FC10K].cdev_cfc_dirty);
    setU32(instance, "FC15kRPMCfcDirty", cdev[API_DEV_CLASS_FC15K].cdev_cfc_dirty);
    setU32(instance, "NLCfcDirty", cdev[API_DEV_CLASS_NL].cdev_cfc_dirty);
    setU32(instance, "SSDCfcDirty", cdev[API_DEV_CLASS_SSD].cdev_cfc_dirty);
    setU32(instance, "FC10kRPMCfcMax", cdev[API_DEV_CLASS_FC10K].cdev_cfc_max);
    setU32(instance, "FC15kRPMCfcMax", cdev[API_DEV_CLASS_FC15K].cdev_cfc_max);
    setU32(instance, "NLCfcMax", cdev[API_DEV_CLASS_NL].cdev_cfc_max);
    setU32(instance, "SSDCfcMax", cdev[API_DEV_CLASS_SSD].cdev_cfc_max);
    setU32(instance, "FC10kRPMDelayedAck", cdev[API_DEV_CLASS_FC10K].cdev_dack);
    setU32(instance, "FC15kRPMDelayedAck", cdev[API_DEV_CLASS_FC15K].cdev_dack);
    setU32(instance, "NLDelayedAck", cdev[API_DEV_CLASS_NL].cdev_dack);
    setU32(instance, "SSDDelayedAck", cdev[API_DEV_CLASS_SSD].cdev_dack);

    // A property list without CPU figures spares the CPU query.
    if (wantsCpuBlock(instance))
    {
        setCpuBlock(instance, node);
    }

    instance.setPath(buildObjectPath(hostAddr, instanceID));
    return instance;
}

// ---- fetching ---------------------------------------------------------------

Array<CIMInstance>
ORV_NodeStatisticalDataProvider::_build_instances(const CIMName&, bool includeQualifiers,
                                                  bool includeClassOrigin,
                                                  const CIMPropertyList& propertyList)
{
    log_message(LOG_TRACE, "--> ORV_NodeStatisticalDataProvider::_build_instances\n");
    api_PortStats_t aggregates[API_MAX_NODES];
    memset(aggregates, 0, sizeof(aggregates));
    api_NodeStats_t nodeStats;
    memset(&nodeStats, 0, sizeof(nodeStats));
    api_NodeList_t nodes;
    memset(&nodes, 0, sizeof(nodes));
    Family::FreeOnExit<api_NodeInfo_t> releaseNodes(nodes.nodes);
    api_PortsStats_t ports;
    memset(&ports, 0, sizeof(ports));
    Family::FreeOnExit<api_PortStats_t> releasePorts(ports.stats);

    CIMClass cimClass = ORV_Common::getStoredCIMClass(
        _cimom, OperationContext(), ORV_Common::NAMESPACE, SERVED_CLASS, false, includeQualifiers,
        includeClassOrigin, propertyList);

    // A node is reported only when the node list names it.
    if (Family::callLocked([&]() { return api_getNodes(&nodes); }) == 0)
    {
        for (Uint32 i = 0; i < nodes.count; i++)
        {
            const api_NodeInfo_t& info = nodes.nodes[i];
            if (info.nodeID < API_MAX_NODES)
            {
                char* target = aggregates[info.nodeID].nodeDeviceID;
                memset(target, 0, API_DEVICE_ID_LEN);
                memcpy(target, info.nodeName, strnlen(info.nodeName, sizeof(info.nodeName)));
            }
        }
    }

    // Node I/O is the sum over its ports; the last port of a node sets the
    // times. Ports not bound to a node count nowhere.
    if (Family::callLocked(
            [&]() {
                return api_getPortStats(API_PORT_TYPE_ALL, API_SEL_ANY, API_SEL_ANY, API_SEL_ANY,
                                        &ports);
            }) == 0)
    {
        for (Uint32 i = 0; i < ports.count; i++)
        {
            const api_PortStats_t& port = ports.stats[i];
            Uint32 node = nodeOfPort(port.portID);
            if (node >= API_MAX_NODES)
            {
                continue;
            }
            api_PortStats_t& sum = aggregates[node];
            sum.time = port.time;
            sum.dataStats.begin = port.dataStats.begin;
            sum.dataStats.now = port.dataStats.now;
            addCounters(sum.dataStats.read, port.dataStats.read);
            addCounters(sum.dataStats.write, port.dataStats.write);
        }
    }

    // Cache figures are best effort: a failure leaves them at zero.
    Family::callLocked([&]() { return api_getNodeStats(&nodeStats); });

    Array<CIMInstance> instances;
    for (Uint32 node = 0; node < API_MAX_NODES; node++)
    {
        if (aggregates[node].nodeDeviceID[0] != '\0')
        {
            instances.append(buildInstance(cimClass, node, aggregates[node], nodeStats, _hostAddr));
        }
    }
    log_message(LOG_TRACE, "<-- ORV_NodeStatisticalDataProvider::_build_instances\n");
    return instances;
}

Array<CIMObjectPath> ORV_NodeStatisticalDataProvider::_build_ref()
{
    log_message(LOG_TRACE, "--> ORV_NodeStatisticalDataProvider::_build_ref\n");
    Array<CIMObjectPath> paths;
    api_NodeList_t nodes;
    memset(&nodes, 0, sizeof(nodes));
    Family::FreeOnExit<api_NodeInfo_t> releaseNodes(nodes.nodes);
    if (Family::callLocked([&]() { return api_getNodes(&nodes); }) == 0)
    {
        for (Uint32 i = 0; i < nodes.count; i++)
        {
            const api_NodeInfo_t& info = nodes.nodes[i];
            paths.append(buildObjectPath(_hostAddr, makeInstanceID(Family::fieldText(
                                                        info.nodeName, sizeof(info.nodeName)))));
        }
    }
    log_message(LOG_TRACE, "<-- ORV_NodeStatisticalDataProvider::_build_ref\n");
    return paths;
}
