#ifndef ORV_STAT_RATEENGINE_H
#define ORV_STAT_RATEENGINE_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace orvstat
{

/// The cumulative counters of one element at one sample, as the statistics
/// carry them: I/O counts, KBytes, I/O time in microseconds. A counter the
/// server did not give is absent from `counters`.
struct ElementSample
{
    std::string id;
    uint16_t elementType = 0;
    /// StatisticTime in microseconds since the epoch; 0 when unknown.
    int64_t statisticTimeUs = 0;
    std::map<std::string, uint64_t> counters;
    /// PercentBusy as the server computed it, or -1 when not given.
    int percentBusy = -1;
    /// The client's monotonic clock in the middle of the request that read
    /// this element, where a sample takes one request per element type; 0:
    /// the sample's clock.
    double clockSeconds = 0;
};

/// One sample of many elements, with the client's monotonic clock in the
/// middle of the requests that took it.
struct Sample
{
    double clockSeconds = 0;
    std::map<std::string, ElementSample> elements;
};

enum class RateStatus
{
    OK,
    RESET,       ///< a counter went back: the interval holds no usable difference
    NO_INTERVAL, ///< the two samples were taken at the same time
};

struct ElementRates
{
    std::string id;
    uint16_t elementType = 0;
    RateStatus status = RateStatus::OK;
    double intervalSeconds = 0;
    double readIops = 0;
    double writeIops = 0;
    double totalIops = 0;
    double readMBps = 0;
    double writeMBps = 0;
    double totalMBps = 0;
    /// Average service time per I/O in milliseconds; -1 without I/O.
    double serviceMs = -1;
    double readServiceMs = -1;
    double writeServiceMs = -1;
    /// % busy as the server gives it (PercentBusy); -1 when it does not.
    double busyPercent = -1;
    /// Cache hits over all I/Os of the interval; -1 without hit counters or I/O.
    double cacheHitPercent = -1;
};

struct RateResult
{
    std::vector<ElementRates> rates; ///< elements present in both samples
    std::vector<std::string> added;  ///< only in the later sample
    std::vector<std::string> vanished;
};

/// The difference of one counter between two samples. A smaller later value
/// is a wrap when the counter was close to its modulus (2^64 for counts and
/// times, 2^54 for KBytes, which are bytes shifted right by 10) and a reset
/// otherwise; `reset` is set for a reset.
uint64_t counterDelta(uint64_t before, uint64_t after, uint64_t modulusBits, bool& reset);

/// Rates between two samples of the same elements. Pure: no I/O, no clock.
RateResult computeRates(const Sample& before, const Sample& after);

} // namespace orvstat

#endif
