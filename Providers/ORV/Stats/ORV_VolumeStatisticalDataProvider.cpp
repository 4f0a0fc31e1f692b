#include "ORV_VolumeStatisticalDataProvider.h"

#include <cstring>

#include <sys/mman.h>
#include <unistd.h>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ORV_Common.h"
#include "ORV_InstanceFrame.h"
#include "orvapi.h"

PEGASUS_USING_PEGASUS;

static const String ClassName("ORV_VolumeStatisticalDataProvider");

namespace
{
const CIMName SERVED_CLASS("ORV_VolumeStatisticalData");
// The shared request flow, under this provider's name and source file.
const ORV_InstanceFrame FRAME(ClassName, SERVED_CLASS, __FILE__, __LINE__);
const CIMName INSTANCE_ID("InstanceID");
const String ID_SUFFIX("-Stats");
const Uint16 ELEMENT_TYPE_VOLUME = 8;
const int LOG_ERROR = 2;
const int LOG_TRACE = 4;

// Property names, built once rather than per instance.
const CIMName P_ELEMENT_NAME("ElementName");
const CIMName P_STATISTIC_TIME("StatisticTime");
const CIMName P_START_STATISTIC_TIME("StartStatisticTime");
const CIMName P_ELEMENT_TYPE("ElementType");
const CIMName P_TOTAL_IOS("TotalIOs");
const CIMName P_READ_IOS("ReadIOs");
const CIMName P_WRITE_IOS("WriteIOs");
const CIMName P_KBYTES_TRANSFERRED("KBytesTransferred");
const CIMName P_KBYTES_WRITTEN("KBytesWritten");
const CIMName P_KBYTES_READ("KBytesRead");
const CIMName P_IO_TIME("IOTimeCounter");
const CIMName P_READ_IO_TIME("ReadIOTimeCounter");
const CIMName P_WRITE_IO_TIME("WriteIOTimeCounter");
const CIMName P_READ_HITS("ReadHitIOs");
const CIMName P_WRITE_HITS("WriteHitIOs");
const CIMName P_READ_MISSES("ReadMissIOs");
const CIMName P_WRITE_MISSES("WriteMissIOs");
const CIMName P_READ_SERVICE_TIME("ReadServiceTimeCounter");
const CIMName P_WRITE_SERVICE_TIME("WriteServiceTimeCounter");
const CIMName P_TOTAL_SERVICE_TIME("TotalServiceTimeCounter");
const CIMName P_QUEUE_LENGTH("QueueLength");
const CIMName P_PERCENT_BUSY("PercentBusy");

void setU64(CIMInstance& instance, const CIMName& name, Uint64 value)
{
    ORV_Common::setPropertyValue(instance, name, value);
}
} // namespace

ORV_VolumeStatisticalDataProvider::ORV_VolumeStatisticalDataProvider()
{
}

ORV_VolumeStatisticalDataProvider::ORV_VolumeStatisticalDataProvider(const CIMObjectPath&)
{
    FRAME.refuse("constructor with object path");
}

ORV_VolumeStatisticalDataProvider::~ORV_VolumeStatisticalDataProvider()
{
}

void ORV_VolumeStatisticalDataProvider::initialize(CIMOMHandle& cimom)
{
    FRAME.initialize(cimom, _cimom, _hostAddr);
}

void ORV_VolumeStatisticalDataProvider::terminate()
{
    delete this;
}

void ORV_VolumeStatisticalDataProvider::getInstance(const OperationContext& context,
                                                    const CIMObjectPath& instanceReference,
                                                    const Boolean includeQualifiers,
                                                    const Boolean includeClassOrigin,
                                                    const CIMPropertyList& propertyList,
                                                    InstanceResponseHandler& handler)
{
    // One volume is asked for, in a single unchunked call; the ID only
    // narrows the query and the path match still decides.
    FRAME.getInstance(
        context, instanceReference,
        [&](const CIMName& className, const String& instanceID)
        {
            uint64_t vvWWN = API_WWN_ALL_VOLUMES;
            uint64_t vvWWN_re = 0;
            parseWWN(instanceID, &vvWWN_re, &vvWWN);
            Uint32 cursor_id = 0;
            return _build_instances(className, includeQualifiers, includeClassOrigin, propertyList,
                                    vvWWN_re, vvWWN, &cursor_id, false);
        },
        handler);
}

void ORV_VolumeStatisticalDataProvider::enumerateInstances(const OperationContext& context,
                                                           const CIMObjectPath& classReference,
                                                           const Boolean includeQualifiers,
                                                           const Boolean includeClassOrigin,
                                                           const CIMPropertyList& propertyList,
                                                           InstanceResponseHandler& handler)
{
    // Each chunk is delivered before the next is fetched; the semaphore is
    // released between chunks so other requests can interleave.
    Uint32 cursor_id = 0;
    FRAME.enumerateInstanceChunks(
        context, classReference,
        [&](const CIMName& className, Boolean& more)
        {
            Array<CIMInstance> instances =
                _build_instances(className, includeQualifiers, includeClassOrigin, propertyList, 0,
                                 API_WWN_ALL_VOLUMES, &cursor_id, true);
            more = cursor_id != 0;
            return instances;
        },
        handler);
}

void ORV_VolumeStatisticalDataProvider::enumerateInstanceNames(const OperationContext& context,
                                                               const CIMObjectPath& classReference,
                                                               ObjectPathResponseHandler& handler)
{
    Uint32 cursor_id = 0;
    FRAME.enumerateInstanceNameChunks(
        context, classReference,
        [&](Boolean& more)
        {
            Array<CIMObjectPath> paths = _build_ref(&cursor_id, CHUNK_SIZE);
            more = cursor_id != 0;
            return paths;
        },
        handler);
}

void ORV_VolumeStatisticalDataProvider::modifyInstance(const OperationContext&,
                                                       const CIMObjectPath&, const CIMInstance&,
                                                       const Boolean, const CIMPropertyList&,
                                                       ResponseHandler&)
{
    FRAME.refuse("modifyInstance");
}

void ORV_VolumeStatisticalDataProvider::createInstance(const OperationContext&,
                                                       const CIMObjectPath&, const CIMInstance&,
                                                       ObjectPathResponseHandler&)
{
    FRAME.refuse("createInstance");
}

void ORV_VolumeStatisticalDataProvider::deleteInstance(const OperationContext&,
                                                       const CIMObjectPath&, ResponseHandler&)
{
    FRAME.refuse("deleteInstance");
}

// ---- builders ---------------------------------------------------------------

String ORV_VolumeStatisticalDataProvider::makeInstanceID(const String& deviceID)
{
    return ORV_Common::INSTANCE_ID_PREFIX + ":" + deviceID + ID_SUFFIX;
}

String ORV_VolumeStatisticalDataProvider::makeInstanceID(const api_VolumeStats_t& stats)
{
    return makeInstanceID(fieldText(stats.volDeviceID, sizeof(stats.volDeviceID)));
}

CIMObjectPath ORV_VolumeStatisticalDataProvider::buildObjectPath(const String& hostAddr,
                                                                 const String& instanceID)
{
    return ORV_Common::buildInstanceIDPath(hostAddr, SERVED_CLASS, instanceID);
}

void ORV_VolumeStatisticalDataProvider::parseWWN(const String& instanceID, uint64_t* wwn_re,
                                                 uint64_t* wwn)
{
    if (wwn)
    {
        *wwn = API_WWN_ALL_VOLUMES;
    }
    if (wwn_re)
    {
        *wwn_re = 0;
    }
    String rest = ORV_Common::extractFromInstanceID(instanceID);
    if (rest.size() == 0)
    {
        return;
    }
    Uint32 dash = rest.find('-');
    if (dash == PEG_NOT_FOUND || dash == 0)
    {
        return;
    }
    // Malformed hexadecimal is the library's to judge; its answer is not
    // needed since the selector keeps its defaults on failure.
    api_wwn_scratch_t scratch;
    memset(&scratch, 0, sizeof(scratch));
    api_wwnStringToInt(&scratch, rest.subString(0, dash).getCString(), wwn_re, wwn);
}

CIMInstance ORV_VolumeStatisticalDataProvider::buildInstance(CIMClass cimClass,
                                                             const api_VolumeStats_t& data,
                                                             const String& hostAddr)
{
    const api_stats_t& s = data.stats;
    Uint64 totalCount = s.read.count + s.write.count;
    Uint64 totalTicks = s.read.ticks + s.write.ticks;

    CIMInstance instance = ORV_Common::buildInstanceSkeleton(cimClass);
    String instanceID = makeInstanceID(data);
    String elementName =
        String("Volume ") + fieldText(data.vvName, sizeof(data.vvName)) + " Statistical Data";

    ORV_Common::setPropertyValue(instance, INSTANCE_ID, instanceID);
    ORV_Common::setPropertyValue(instance, P_ELEMENT_NAME, elementName);
    ORV_Common::setPropertyValue(instance, P_STATISTIC_TIME, ORV_Common::getCIMDateTime(data.time));
    setStartStatisticTime(instance, data.time, s, "VolumeStatisticalData", elementName);
    ORV_Common::setPropertyValue(instance, P_ELEMENT_TYPE, ELEMENT_TYPE_VOLUME);
    setIoCounters(instance, s.read, s.write);
    setU64(instance, P_READ_HITS, data.cacheRead.hit);
    setU64(instance, P_WRITE_HITS, data.cacheWrite.hit);
    setU64(instance, P_READ_MISSES, data.cacheRead.miss);
    setU64(instance, P_WRITE_MISSES, data.cacheWrite.miss);
    setU64(instance, P_READ_SERVICE_TIME, serviceTime(s.read.ticks, s.read.count));
    setU64(instance, P_WRITE_SERVICE_TIME, serviceTime(s.write.ticks, s.write.count));
    setU64(instance, P_TOTAL_SERVICE_TIME, serviceTime(totalTicks, totalCount));
    ORV_Common::setPropertyValue(instance, P_QUEUE_LENGTH, Uint32(s.qlen));
    ORV_Common::setPropertyValue(instance, P_PERCENT_BUSY, percentBusy(s));

    instance.setPath(buildObjectPath(hostAddr, instanceID));
    return instance;
}

// ---- shared computations ----------------------------------------------------

Uint32 ORV_VolumeStatisticalDataProvider::percentBusy(const api_stats_t& stats)
{
    // The interval deliberately comes from the low halves only: a wrap of the
    // low word reads as no interval at all.
    Sint32 ticksElapsed = (Sint32)((Uint32)stats.now - (Uint32)stats.begin);
    if (ticksElapsed <= 0)
    {
        return 0;
    }
    Uint32 percent = (Uint32)((Uint64(stats.busyticks) * 1000) / (Uint64)ticksElapsed);
    Uint32 result = percent / 10;
    if (percent % 10 > 4)
    {
        result++;
    }
    return result > 100 ? 100 : result;
}

void ORV_VolumeStatisticalDataProvider::setIoCounters(CIMInstance& instance,
                                                      const api_stats_data_t& read,
                                                      const api_stats_data_t& write)
{
    setU64(instance, P_TOTAL_IOS, read.count + write.count);
    setU64(instance, P_READ_IOS, read.count);
    setU64(instance, P_WRITE_IOS, write.count);
    setU64(instance, P_KBYTES_TRANSFERRED, (read.bytes + write.bytes) >> 10);
    setU64(instance, P_KBYTES_WRITTEN, write.bytes >> 10);
    setU64(instance, P_KBYTES_READ, read.bytes >> 10);
    setU64(instance, P_IO_TIME, read.ticks + write.ticks);
    setU64(instance, P_READ_IO_TIME, read.ticks);
    setU64(instance, P_WRITE_IO_TIME, write.ticks);
}

Uint64 ORV_VolumeStatisticalDataProvider::serviceTime(Uint64 ticks, Uint64 count)
{
    return count == 0 ? 0 : ticks / count;
}

void ORV_VolumeStatisticalDataProvider::setStartStatisticTime(CIMInstance& instance,
                                                              time_t sampleTime,
                                                              const api_stats_t& stats,
                                                              const char* what,
                                                              const String& elementName)
{
    Uint64 secsElapsed = (Uint64(stats.now) - Uint64(stats.begin)) / 1000000;
    long start = (long)(Uint64(sampleTime) - secsElapsed);
    try
    {
        ORV_Common::setPropertyValue(instance, P_START_STATISTIC_TIME,
                                     ORV_Common::getCIMDateTime(start));
    }
    catch (Exception& e)
    {
        ORV_Common::setPropertyValue(instance, P_START_STATISTIC_TIME,
                                     ORV_Common::getCIMDateTime(0));
        log_message(LOG_ERROR, "Error calculating StartStatisticTime for %s: %s, %s\n", what,
                    (const char*)elementName.getCString(),
                    (const char*)e.getMessage().getCString());
    }
}

String ORV_VolumeStatisticalDataProvider::fieldText(const char* field, size_t size)
{
    size_t length = 0;
    while (length < size && field[length] != '\0')
    {
        length++;
    }
    return String(field, (Uint32)length);
}

namespace
{
uintptr_t pageSize()
{
    static const uintptr_t size = (uintptr_t)sysconf(_SC_PAGESIZE);
    return size;
}

// Fewer, larger calls: a page at a time would cost a system call per ten
// records.
const uintptr_t RELEASE_BATCH = 1 << 20;
} // namespace

ORV_VolumeStatisticalDataProvider::ReleaseBehind::ReleaseBehind(const void* records)
    // The first whole page inside the array: the allocator's own bookkeeping
    // lies before it.
    : _from(((uintptr_t)records + pageSize() - 1) & ~(pageSize() - 1))
{
}

void ORV_VolumeStatisticalDataProvider::ReleaseBehind::readUpTo(const void* unread)
{
    const uintptr_t to = (uintptr_t)unread & ~(pageSize() - 1);
    if (to < _from + RELEASE_BATCH)
    {
        return;
    }
    // The pages stay mapped and read as zero if touched again; a failure
    // only leaves them in place.
    madvise((void*)_from, to - _from, MADV_DONTNEED);
    _from = to;
}

// ---- fetching ---------------------------------------------------------------

Array<CIMInstance> ORV_VolumeStatisticalDataProvider::_build_instances(
    const CIMName&, bool includeQualifiers, bool includeClassOrigin,
    const CIMPropertyList& propertyList, Uint64 vvWWN_re, Uint64 vvWWN, Uint32* cursor_id,
    bool isChunked)
{
    log_message(LOG_TRACE, "--> ORV_VolumeStatisticalDataProvider::_build_instances\n");
    Array<CIMInstance> instances;
    api_VolumesStats_t allstats;
    memset(&allstats, 0, sizeof(allstats));
    FreeOnExit<api_VolumeStats_t> release(allstats.stats);

    Sint32 status;
    if (!isChunked)
    {
        status = callLocked(
            [&]() { return api_getVolumeStats_chunk(&allstats, vvWWN, vvWWN_re, cursor_id, 0); });
    }
    else
    {
        if (cursor_id == NULL)
        {
            log_message(LOG_ERROR, "ORV_VolumeStatisticalDataProvider::_buildVVInstances  "
                                   "getVVs_chunk() invalid cursor_id.\n");
            throw CIMOperationFailedException("Internal error.");
        }
        status = callLocked(
            [&]()
            {
                return api_getVolumeStats_chunk(&allstats, API_WWN_ALL_VOLUMES, API_WWN_ALL_VOLUMES,
                                                cursor_id, CHUNK_SIZE);
            });
        if (status != 0)
        {
            log_message(LOG_ERROR,
                        "ORV_VolumeStatisticalDataProvider::_buildVVInstances  getVVs_chunk() "
                        "failed, status = %d \n",
                        status);
            throw CIMOperationFailedException("Internal error.");
        }
    }

    if (status == 0)
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
    log_message(LOG_TRACE, "<-- ORV_VolumeStatisticalDataProvider::_build_instances\n");
    return instances;
}

Array<CIMObjectPath> ORV_VolumeStatisticalDataProvider::_build_ref(Uint32* cursor_id,
                                                                   Uint32 chunk_size)
{
    log_message(LOG_TRACE, "--> ORV_VolumeStatisticalDataProvider::_build_ref\n");
    if (cursor_id == NULL)
    {
        log_message(LOG_ERROR,
                    "ORV_VolumeStatisticalData,_build_ref  getVVs_chunk() invalid cursor_id.\n");
        throw CIMOperationFailedException("Internal error.");
    }
    Array<CIMObjectPath> paths;
    api_VolumesStats_t allstats;
    memset(&allstats, 0, sizeof(allstats));
    FreeOnExit<api_VolumeStats_t> release(allstats.stats);

    Sint32 status = callLocked(
        [&]()
        {
            return api_getVolumeStats_chunk(&allstats, API_WWN_ALL_VOLUMES, API_WWN_ALL_VOLUMES,
                                            cursor_id, chunk_size);
        });
    // Unlike the instance chunks, a failure here just ends the listing.
    if (status == 0)
    {
        paths.reserveCapacity(allstats.count);
        for (Uint32 i = 0; i < allstats.count; i++)
        {
            paths.append(buildObjectPath(_hostAddr, makeInstanceID(allstats.stats[i])));
        }
    }
    log_message(LOG_TRACE, "<-- ORV_VolumeStatisticalDataProvider::_build_ref\n");
    return paths;
}
