#include "ORV_PortStatisticalDataProvider.h"

#include <cstring>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/Exception.h>

#include "ORV_Common.h"
#include "ORV_InstanceFrame.h"
#include "ORV_VolumeStatisticalDataProvider.h"
#include "orvapi.h"

PEGASUS_USING_PEGASUS;

static const String ClassName("ORV_PortStatisticalDataProvider");

namespace
{
typedef ORV_VolumeStatisticalDataProvider Family;

const CIMName SERVED_CLASS("ORV_PortStatisticalData");
// The shared request flow, under this provider's name and source file.
const ORV_InstanceFrame FRAME(ClassName, SERVED_CLASS, __FILE__, __LINE__);
const String ID_SUFFIX("-Stats");
// Front-end (target) ports and every other kind of port.
const Uint16 ELEMENT_TYPE_FRONT_END_PORT = 6;
const Uint16 ELEMENT_TYPE_BACK_END_PORT = 7;
const int LOG_TRACE = 4;

// Every port of every type on every node.
Sint32 fetchAllPorts(api_PortsStats_t& out)
{
    return Family::callLocked(
        [&]() {
            return api_getPortStats(API_PORT_TYPE_ALL, API_SEL_ANY, API_SEL_ANY, API_SEL_ANY, &out);
        });
}
} // namespace

ORV_PortStatisticalDataProvider::ORV_PortStatisticalDataProvider()
{
}

ORV_PortStatisticalDataProvider::ORV_PortStatisticalDataProvider(const CIMObjectPath&)
{
    FRAME.refuse("constructor with object path");
}

ORV_PortStatisticalDataProvider::~ORV_PortStatisticalDataProvider()
{
}

void ORV_PortStatisticalDataProvider::initialize(CIMOMHandle& cimom)
{
    FRAME.initialize(cimom, _cimom, _hostAddr);
}

void ORV_PortStatisticalDataProvider::terminate()
{
    delete this;
}

void ORV_PortStatisticalDataProvider::getInstance(const OperationContext& context,
                                                  const CIMObjectPath& instanceReference,
                                                  const Boolean includeQualifiers,
                                                  const Boolean includeClassOrigin,
                                                  const CIMPropertyList& propertyList,
                                                  InstanceResponseHandler& handler)
{
    // The IDs are never parsed: all ports are built and the path decides.
    FRAME.getInstance(
        context, instanceReference,
        [&](const CIMName& className, const String&) {
            return _build_instances(className, includeQualifiers, includeClassOrigin, propertyList);
        },
        handler);
}

void ORV_PortStatisticalDataProvider::enumerateInstances(const OperationContext& context,
                                                         const CIMObjectPath& classReference,
                                                         const Boolean includeQualifiers,
                                                         const Boolean includeClassOrigin,
                                                         const CIMPropertyList& propertyList,
                                                         InstanceResponseHandler& handler)
{
    FRAME.enumerateInstances(
        context, classReference,
        [&](const CIMName& className) {
            return _build_instances(className, includeQualifiers, includeClassOrigin, propertyList);
        },
        handler);
}

void ORV_PortStatisticalDataProvider::enumerateInstanceNames(const OperationContext& context,
                                                             const CIMObjectPath& classReference,
                                                             ObjectPathResponseHandler& handler)
{
    FRAME.enumerateInstanceNames(
        context, classReference, [this]() { return _build_ref(); }, handler);
}

void ORV_PortStatisticalDataProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
                                                     const CIMInstance&, const Boolean,
                                                     const CIMPropertyList&, ResponseHandler&)
{
    FRAME.refuse("modifyInstance");
}

void ORV_PortStatisticalDataProvider::createInstance(const OperationContext&, const CIMObjectPath&,
                                                     const CIMInstance&, ObjectPathResponseHandler&)
{
    FRAME.refuse("createInstance");
}

void ORV_PortStatisticalDataProvider::deleteInstance(const OperationContext&, const CIMObjectPath&,
                                                     ResponseHandler&)
{
    FRAME.refuse("deleteInstance");
}

// ---- builders ---------------------------------------------------------------

String ORV_PortStatisticalDataProvider::makeInstanceID(const api_PortStats_t& stats)
{
    return ORV_Common::INSTANCE_ID_PREFIX + ":" +
           Family::fieldText(stats.portDeviceID, sizeof(stats.portDeviceID)) + ID_SUFFIX;
}

CIMObjectPath ORV_PortStatisticalDataProvider::buildObjectPath(const String& hostAddr,
                                                               const String& instanceID)
{
    return ORV_Common::buildInstanceIDPath(hostAddr, SERVED_CLASS, instanceID);
}

CIMInstance ORV_PortStatisticalDataProvider::buildInstance(CIMClass cimClass,
                                                           const api_PortStats_t& data,
                                                           const String& hostAddr)
{
    // Only data traffic is reported; control traffic never shows.
    const api_stats_t& s = data.dataStats;

    CIMInstance instance = ORV_Common::buildInstanceSkeleton(cimClass);
    String instanceID = makeInstanceID(data);
    String elementName = String("Port ") + Family::fieldText(data.portName, sizeof(data.portName)) +
                         " Statistical Data";
    Uint16 elementType = data.type == API_PORT_TYPE_TARGET ? ELEMENT_TYPE_FRONT_END_PORT
                                                           : ELEMENT_TYPE_BACK_END_PORT;

    ORV_Common::setPropertyValue(instance, CIMName("InstanceID"), instanceID);
    ORV_Common::setPropertyValue(instance, CIMName("ElementName"), elementName);
    ORV_Common::setPropertyValue(instance, CIMName("StatisticTime"),
                                 ORV_Common::getCIMDateTime(data.time));
    ORV_Common::setPropertyValue(instance, CIMName("ElementType"), elementType);
    Family::setIoCounters(instance, s.read, s.write);

    instance.setPath(buildObjectPath(hostAddr, instanceID));
    return instance;
}

// ---- fetching ---------------------------------------------------------------

Array<CIMInstance>
ORV_PortStatisticalDataProvider::_build_instances(const CIMName&, bool includeQualifiers,
                                                  bool includeClassOrigin,
                                                  const CIMPropertyList& propertyList)
{
    log_message(LOG_TRACE, "--> ORV_PortStatisticalDataProvider::_build_instances\n");
    Array<CIMInstance> instances;
    api_PortsStats_t allstats;
    memset(&allstats, 0, sizeof(allstats));
    Family::FreeOnExit<api_PortStats_t> release(allstats.stats);

    // A failed fetch is not reported: the answer is simply empty.
    if (fetchAllPorts(allstats) == 0)
    {
        CIMClass cimClass = ORV_Common::getStoredCIMClass(
            _cimom, OperationContext(), ORV_Common::NAMESPACE, SERVED_CLASS, false,
            includeQualifiers, includeClassOrigin, propertyList);
        instances.reserveCapacity(allstats.count);
        for (Uint32 i = 0; i < allstats.count; i++)
        {
            instances.append(buildInstance(cimClass, allstats.stats[i], _hostAddr));
        }
    }
    log_message(LOG_TRACE, "<-- ORV_PortStatisticalDataProvider::_build_instances\n");
    return instances;
}

Array<CIMObjectPath> ORV_PortStatisticalDataProvider::_build_ref()
{
    log_message(LOG_TRACE, "--> ORV_PortStatisticalDataProvider::_build_ref\n");
    Array<CIMObjectPath> paths;
    api_PortsStats_t allstats;
    memset(&allstats, 0, sizeof(allstats));
    Family::FreeOnExit<api_PortStats_t> release(allstats.stats);

    if (fetchAllPorts(allstats) == 0)
    {
        paths.reserveCapacity(allstats.count);
        for (Uint32 i = 0; i < allstats.count; i++)
        {
            paths.append(buildObjectPath(_hostAddr, makeInstanceID(allstats.stats[i])));
        }
    }
    log_message(LOG_TRACE, "<-- ORV_PortStatisticalDataProvider::_build_ref\n");
    return paths;
}
