#ifndef ORV_VolumeStatisticalDataProvider_h
#define ORV_VolumeStatisticalDataProvider_h

#include <cstdint>
#include <cstdlib>
#include <ctime>

#include <Pegasus/Common/Config.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>

#include "orvapi.h"

PEGASUS_USING_PEGASUS;

// Serves ORV_VolumeStatisticalData: one instance per virtual volume, read
// from the management API at request time. Volumes are enumerated in chunks
// so that only one chunk of records and instances is held at a time.
//
// The public static members below the builders are the computations that the
// whole statistical-data family shares (disk, port, node, array and LUN
// providers call them).
class ORV_VolumeStatisticalDataProvider : public CIMInstanceProvider
{
public:
    // Records fetched per chunked management call.
    static const Uint32 CHUNK_SIZE = 200;

    ORV_VolumeStatisticalDataProvider();
    ORV_VolumeStatisticalDataProvider(const CIMObjectPath& path);
    virtual ~ORV_VolumeStatisticalDataProvider();

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

    static CIMInstance buildInstance(CIMClass cimClass, const api_VolumeStats_t& data,
                                     const String& hostAddr);
    static CIMObjectPath buildObjectPath(const String& hostAddr, const String& instanceID);
    static String makeInstanceID(const api_VolumeStats_t& stats);
    static String makeInstanceID(const String& deviceID);

    // Volume selector from an InstanceID "QZ_KYRO:<wwn>-...": wwn defaults to
    // the all-volumes value and wwn_re to 0 when the ID holds no WWN part.
    static void parseWWN(const String& instanceID, uint64_t* wwn_re, uint64_t* wwn);

    // ---- shared by the statistical-data providers -------------------------

    // Runs one management query while holding the process-wide semaphore. A
    // failed wait is returned as the query's status and the query is skipped.
    template <class Query>
    static Sint32 callLocked(Query query)
    {
        int waited = cim_sem_wait();
        if (waited != 0)
        {
            return waited;
        }
        Sint32 status = query();
        cim_sem_post();
        return status;
    }

    // Busy share of the sample interval in whole percent, 0 to 100. The
    // interval is taken from the low 32 bits of the two time stamps.
    static Uint32 percentBusy(const api_stats_t& stats);

    // Sets the I/O block every statistics class carries, from the read and
    // write counters: TotalIOs, ReadIOs, WriteIOs, the three KBytes figures
    // (byte sums shifted right by 10) and the three I/O time counters. Sums
    // wrap at 64 bits.
    static void setIoCounters(CIMInstance& instance, const api_stats_data_t& read,
                              const api_stats_data_t& write);

    // Average time per I/O; 0 when there was no I/O.
    static Uint64 serviceTime(Uint64 ticks, Uint64 count);

    // Sets StartStatisticTime to the sample time less the counting interval;
    // a time the date-time type cannot hold falls back to the epoch, and the
    // failure is logged naming `what` (e.g. "VolumeStatisticalData").
    static void setStartStatisticTime(CIMInstance& instance, time_t sampleTime,
                                      const api_stats_t& stats, const char* what,
                                      const String& elementName);

    // Releases a library-allocated result array when the scope ends, on
    // every path out of the building code.
    template <class T>
    class FreeOnExit
    {
    public:
        explicit FreeOnExit(T*& records) : _records(records)
        {
        }
        ~FreeOnExit()
        {
            if (_records)
            {
                free(_records);
                _records = 0;
            }
        }

    private:
        FreeOnExit(const FreeOnExit&);
        FreeOnExit& operator=(const FreeOnExit&);
        T*& _records;
    };

    // Gives the system back the pages of a library result array that a build
    // has read past. The array of all the LUN paths of a full-size array runs
    // to tens of megabytes and would otherwise sit, unread, beside every
    // instance built from it until the build ends. Only whole pages inside
    // the array are given back; their contents read as zero afterwards, and
    // the array is still freed whole (FreeOnExit).
    class ReleaseBehind
    {
    public:
        explicit ReleaseBehind(const void* records);
        // Everything before `unread` will not be read again.
        void readUpTo(const void* unread);

    private:
        ReleaseBehind(const ReleaseBehind&);
        ReleaseBehind& operator=(const ReleaseBehind&);
        uintptr_t _from;
    };

    // A fixed-size, NUL-terminated record field as a String, never reading
    // past the field even when the terminator is missing.
    static String fieldText(const char* field, size_t size);

private:
    Array<CIMInstance> _build_instances(const CIMName& inputClassName, bool includeQualifiers,
                                        bool includeClassOrigin,
                                        const CIMPropertyList& propertyList, Uint64 vvWWN_re,
                                        Uint64 vvWWN, Uint32* cursor_id, bool isChunked);
    Array<CIMObjectPath> _build_ref(Uint32* cursor_id, Uint32 chunk_size);

    CIMOMHandle _cimom;
    String _hostAddr;
};

#endif
