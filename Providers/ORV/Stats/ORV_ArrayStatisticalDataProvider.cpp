#include "ORV_ArrayStatisticalDataProvider.h"

#include <cstring>
#include <ctime>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/Exception.h>

#include "ORV_Common.h"
#include "ORV_InstanceFrame.h"
#include "ORV_VolumeStatisticalDataProvider.h"
#include "orvapi.h"

PEGASUS_USING_PEGASUS;

static const String ClassName("ORV_ArrayStatisticalDataProvider");

namespace
{
typedef ORV_VolumeStatisticalDataProvider Family;

const CIMName SERVED_CLASS("ORV_ArrayStatisticalData");
// The shared request flow, under this provider's name and source file.
const ORV_InstanceFrame FRAME(ClassName, SERVED_CLASS, __FILE__, __LINE__);
const String ID_SUFFIX("-Stats");
const Uint16 ELEMENT_TYPE_SYSTEM = 2;
const int LOG_TRACE = 4;

} // namespace

ORV_ArrayStatisticalDataProvider::ORV_ArrayStatisticalDataProvider()
{
}

ORV_ArrayStatisticalDataProvider::ORV_ArrayStatisticalDataProvider(const CIMObjectPath&)
{
    FRAME.refuse("constructor with object path");
}

ORV_ArrayStatisticalDataProvider::~ORV_ArrayStatisticalDataProvider()
{
}

void ORV_ArrayStatisticalDataProvider::initialize(CIMOMHandle& cimom)
{
    FRAME.initialize(cimom, _cimom, _hostAddr, _systemName);
}

void ORV_ArrayStatisticalDataProvider::terminate()
{
    delete this;
}

void ORV_ArrayStatisticalDataProvider::getInstance(const OperationContext& context,
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

void ORV_ArrayStatisticalDataProvider::enumerateInstances(const OperationContext& context,
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

void ORV_ArrayStatisticalDataProvider::enumerateInstanceNames(const OperationContext& context,
                                                              const CIMObjectPath& classReference,
                                                              ObjectPathResponseHandler& handler)
{
    FRAME.enumerateInstanceNameChunks(
        context, classReference, [this](Boolean&) { return _build_ref(); }, handler);
}

void ORV_ArrayStatisticalDataProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
                                                      const CIMInstance&, const Boolean,
                                                      const CIMPropertyList&, ResponseHandler&)
{
    FRAME.refuse("modifyInstance");
}

void ORV_ArrayStatisticalDataProvider::createInstance(const OperationContext&, const CIMObjectPath&,
                                                      const CIMInstance&,
                                                      ObjectPathResponseHandler&)
{
    FRAME.refuse("createInstance");
}

void ORV_ArrayStatisticalDataProvider::deleteInstance(const OperationContext&, const CIMObjectPath&,
                                                      ResponseHandler&)
{
    FRAME.refuse("deleteInstance");
}

// ---- builders ---------------------------------------------------------------

String ORV_ArrayStatisticalDataProvider::makeInstanceID(const String& systemName)
{
    return ORV_Common::INSTANCE_ID_PREFIX + ":" + systemName + ID_SUFFIX;
}

CIMObjectPath ORV_ArrayStatisticalDataProvider::buildObjectPath(const String& hostAddr,
                                                                const String& instanceID)
{
    return ORV_Common::buildInstanceIDPath(hostAddr, SERVED_CLASS, instanceID);
}

CIMInstance ORV_ArrayStatisticalDataProvider::buildInstance(CIMClass cls,
                                                            const api_PortsStats_t& ports,
                                                            const String& hostAddr,
                                                            const String& systemName)
{
    // Sums over every port's data traffic; bytes are summed first and shifted
    // once so that sub-kilobyte remainders of single ports still count.
    api_stats_data_t read;
    api_stats_data_t write;
    memset(&read, 0, sizeof(read));
    memset(&write, 0, sizeof(write));
    for (Uint32 i = 0; ports.stats && i < ports.count; i++)
    {
        const api_stats_t& s = ports.stats[i].dataStats;
        read.count += s.read.count;
        read.bytes += s.read.bytes;
        read.ticks += s.read.ticks;
        write.count += s.write.count;
        write.bytes += s.write.bytes;
        write.ticks += s.write.ticks;
    }

    CIMInstance instance = ORV_Common::buildInstanceSkeleton(cls);
    String instanceID = makeInstanceID(systemName);
    ORV_Common::setPropertyValue(instance, CIMName("InstanceID"), instanceID);
    ORV_Common::setPropertyValue(instance, CIMName("ElementName"),
                                 String("Array ") + systemName + " Statistical Data");
    // The controller's clock at request time, not a library sample time.
    ORV_Common::setPropertyValue(instance, CIMName("StatisticTime"),
                                 ORV_Common::getCIMDateTime(time(NULL)));
    ORV_Common::setPropertyValue(instance, CIMName("ElementType"), ELEMENT_TYPE_SYSTEM);
    Family::setIoCounters(instance, read, write);

    instance.setPath(buildObjectPath(hostAddr, instanceID));
    return instance;
}

// ---- fetching ---------------------------------------------------------------

Array<CIMInstance>
ORV_ArrayStatisticalDataProvider::_build_instances(const CIMName&, bool includeQualifiers,
                                                   bool includeClassOrigin,
                                                   const CIMPropertyList& propertyList)
{
    log_message(LOG_TRACE, "--> ORV_ArrayStatisticalDataProvider::_build_instances\n");
    Array<CIMInstance> instances;
    api_PortsStats_t ports;
    memset(&ports, 0, sizeof(ports));
    Family::FreeOnExit<api_PortStats_t> release(ports.stats);

    // Without the port counters there is no array instance at all.
    if (Family::callLocked(
            [&]() {
                return api_getPortStats(API_PORT_TYPE_ALL, API_SEL_ANY, API_SEL_ANY, API_SEL_ANY,
                                        &ports);
            }) == 0)
    {
        CIMClass cimClass = ORV_Common::getStoredCIMClass(
            _cimom, OperationContext(), ORV_Common::NAMESPACE, SERVED_CLASS, false,
            includeQualifiers, includeClassOrigin, propertyList);
        instances.append(buildInstance(cimClass, ports, _hostAddr, _systemName));
    }
    log_message(LOG_TRACE, "<-- ORV_ArrayStatisticalDataProvider::_build_instances\n");
    return instances;
}

Array<CIMObjectPath> ORV_ArrayStatisticalDataProvider::_build_ref()
{
    // Names need no library call, so they are listed even when the counters
    // cannot be read.
    log_message(LOG_TRACE, "--> ORV_ArrayStatisticalDataProvider::_build_ref\n");
    Array<CIMObjectPath> paths;
    paths.append(buildObjectPath(_hostAddr, makeInstanceID(_systemName)));
    log_message(LOG_TRACE, "<-- ORV_ArrayStatisticalDataProvider::_build_ref\n");
    return paths;
}
