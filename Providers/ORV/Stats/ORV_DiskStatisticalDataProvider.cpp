#include "ORV_DiskStatisticalDataProvider.h"

#include <cstring>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/Exception.h>

#include "ORV_Common.h"
#include "ORV_InstanceFrame.h"
#include "ORV_VolumeStatisticalDataProvider.h"
#include "orvapi.h"

PEGASUS_USING_PEGASUS;

static const String ClassName("ORV_DiskStatisticalDataProvider");

namespace
{
typedef ORV_VolumeStatisticalDataProvider Family;

const CIMName SERVED_CLASS("ORV_DiskStatisticalData");
// The shared request flow, under this provider's name and source file.
const ORV_InstanceFrame FRAME(ClassName, SERVED_CLASS, __FILE__, __LINE__);
const String ID_SUFFIX("-Stats");
const Uint16 ELEMENT_TYPE_DISK = 10;
const int LOG_TRACE = 4;

// Every drive: the selectors that ask for all of them.
Sint32 fetchAllDisks(api_DisksStats_t& out)
{
    return Family::callLocked(
        [&]()
        {
            return api_getDiskStats(API_DISK_ALL, API_WWN_ALL_VOLUMES, API_SEL_ANY, API_SEL_ANY,
                                    API_SEL_ANY, &out);
        });
}
} // namespace

ORV_DiskStatisticalDataProvider::ORV_DiskStatisticalDataProvider()
{
}

ORV_DiskStatisticalDataProvider::ORV_DiskStatisticalDataProvider(const CIMObjectPath&)
{
    FRAME.refuse("constructor with object path");
}

ORV_DiskStatisticalDataProvider::~ORV_DiskStatisticalDataProvider()
{
}

void ORV_DiskStatisticalDataProvider::initialize(CIMOMHandle& cimom)
{
    FRAME.initialize(cimom, _cimom, _hostAddr);
}

void ORV_DiskStatisticalDataProvider::terminate()
{
    delete this;
}

void ORV_DiskStatisticalDataProvider::getInstance(const OperationContext& context,
                                                  const CIMObjectPath& instanceReference,
                                                  const Boolean includeQualifiers,
                                                  const Boolean includeClassOrigin,
                                                  const CIMPropertyList& propertyList,
                                                  InstanceResponseHandler& handler)
{
    // The IDs are never parsed: all drives are built and the path decides.
    FRAME.getInstance(
        context, instanceReference,
        [&](const CIMName& className, const String&) {
            return _build_instances(className, includeQualifiers, includeClassOrigin, propertyList);
        },
        handler);
}

void ORV_DiskStatisticalDataProvider::enumerateInstances(const OperationContext& context,
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

void ORV_DiskStatisticalDataProvider::enumerateInstanceNames(const OperationContext& context,
                                                             const CIMObjectPath& classReference,
                                                             ObjectPathResponseHandler& handler)
{
    FRAME.enumerateInstanceNames(
        context, classReference, [this]() { return _build_ref(); }, handler);
}

void ORV_DiskStatisticalDataProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
                                                     const CIMInstance&, const Boolean,
                                                     const CIMPropertyList&, ResponseHandler&)
{
    FRAME.refuse("modifyInstance");
}

void ORV_DiskStatisticalDataProvider::createInstance(const OperationContext&, const CIMObjectPath&,
                                                     const CIMInstance&, ObjectPathResponseHandler&)
{
    FRAME.refuse("createInstance");
}

void ORV_DiskStatisticalDataProvider::deleteInstance(const OperationContext&, const CIMObjectPath&,
                                                     ResponseHandler&)
{
    FRAME.refuse("deleteInstance");
}

// ---- builders ---------------------------------------------------------------

String ORV_DiskStatisticalDataProvider::makeInstanceID(const api_DiskStats_t& stats)
{
    return ORV_Common::INSTANCE_ID_PREFIX + ":" +
           Family::fieldText(stats.diskDeviceID, sizeof(stats.diskDeviceID)) + ID_SUFFIX;
}

CIMObjectPath ORV_DiskStatisticalDataProvider::buildObjectPath(const String& hostAddr,
                                                               const String& instanceID)
{
    return ORV_Common::buildInstanceIDPath(hostAddr, SERVED_CLASS, instanceID);
}

CIMInstance ORV_DiskStatisticalDataProvider::buildInstance(CIMClass cimClass,
                                                           const api_DiskStats_t& data,
                                                           const String& hostAddr)
{
    const api_stats_t& s = data.stats;
    Uint64 totalCount = s.read.count + s.write.count;
    Uint64 totalTicks = s.read.ticks + s.write.ticks;

    CIMInstance instance = ORV_Common::buildInstanceSkeleton(cimClass);
    String instanceID = makeInstanceID(data);
    String elementName = String("Disk ") + Family::fieldText(data.diskName, sizeof(data.diskName)) +
                         " Statistical Data";

    ORV_Common::setPropertyValue(instance, CIMName("InstanceID"), instanceID);
    ORV_Common::setPropertyValue(instance, CIMName("ElementName"), elementName);
    ORV_Common::setPropertyValue(instance, CIMName("StatisticTime"),
                                 ORV_Common::getCIMDateTime(data.time));
    Family::setStartStatisticTime(instance, data.time, s, "DiskStatisticalData", elementName);
    ORV_Common::setPropertyValue(instance, CIMName("ElementType"), ELEMENT_TYPE_DISK);
    Family::setIoCounters(instance, s.read, s.write);
    ORV_Common::setPropertyValue(instance, CIMName("ReadServiceTimeCounter"),
                                 Family::serviceTime(s.read.ticks, s.read.count));
    ORV_Common::setPropertyValue(instance, CIMName("WriteServiceTimeCounter"),
                                 Family::serviceTime(s.write.ticks, s.write.count));
    ORV_Common::setPropertyValue(instance, CIMName("TotalServiceTimeCounter"),
                                 Family::serviceTime(totalTicks, totalCount));
    ORV_Common::setPropertyValue(instance, CIMName("QueueLength"), Uint32(s.qlen));
    ORV_Common::setPropertyValue(instance, CIMName("PercentBusy"), Family::percentBusy(s));

    instance.setPath(buildObjectPath(hostAddr, instanceID));
    return instance;
}

// ---- fetching ---------------------------------------------------------------

Array<CIMInstance>
ORV_DiskStatisticalDataProvider::_build_instances(const CIMName&, bool includeQualifiers,
                                                  bool includeClassOrigin,
                                                  const CIMPropertyList& propertyList)
{
    log_message(LOG_TRACE, "--> ORV_DiskStatisticalDataProvider::_build_instances\n");
    Array<CIMInstance> instances;
    api_DisksStats_t allstats;
    memset(&allstats, 0, sizeof(allstats));
    Family::FreeOnExit<api_DiskStats_t> release(allstats.stats);

    // A failed fetch is not reported: the answer is simply empty.
    if (fetchAllDisks(allstats) == 0)
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
    log_message(LOG_TRACE, "<-- ORV_DiskStatisticalDataProvider::_build_instances\n");
    return instances;
}

Array<CIMObjectPath> ORV_DiskStatisticalDataProvider::_build_ref()
{
    log_message(LOG_TRACE, "--> ORV_DiskStatisticalDataProvider::_build_ref\n");
    Array<CIMObjectPath> paths;
    api_DisksStats_t allstats;
    memset(&allstats, 0, sizeof(allstats));
    Family::FreeOnExit<api_DiskStats_t> release(allstats.stats);

    if (fetchAllDisks(allstats) == 0)
    {
        paths.reserveCapacity(allstats.count);
        for (Uint32 i = 0; i < allstats.count; i++)
        {
            paths.append(buildObjectPath(_hostAddr, makeInstanceID(allstats.stats[i])));
        }
    }
    log_message(LOG_TRACE, "<-- ORV_DiskStatisticalDataProvider::_build_ref\n");
    return paths;
}
