#ifndef ORV_DASHBOARD_RATEWINDOW_H
#define ORV_DASHBOARD_RATEWINDOW_H

#include "RateEngine.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace orvdash
{

/// The kinds of element the dashboard shows; ports join front and back end.
enum class Kind
{
    ARRAY,
    NODE,
    PORT,
    VOLUME,
    DISK,
    LUN,
};
constexpr size_t KIND_COUNT = 6;

/// The kind of an ElementType; false for one the dashboard does not show.
bool kindOf(uint16_t elementType, Kind& out);
/// "volume" and the like, as the API's `type` parameter names them.
bool kindNamed(const std::string& name, Kind& out);
const char* kindName(Kind kind);

/// The array's figures at one sample.
struct Totals
{
    double time = 0; ///< wall clock, seconds since the epoch
    double readIops = 0;
    double writeIops = 0;
    double totalIops = 0;
    double readMBps = 0;
    double writeMBps = 0;
    double totalMBps = 0;
    /// I/O-weighted mean service time in ms; -1 without I/O.
    double latencyMs = -1;
};

/// The array's totals at one sample: its own statistics element where the
/// server has one, otherwise the sum over the volumes. `fromArray` tells
/// which.
Totals arrayTotals(const orvstat::RateResult& result, double time, bool& fromArray);

/// The elements of one kind at one sample, ranked once when the sample
/// arrives so that a request only copies the head of a ranking.
struct KindView
{
    std::vector<orvstat::ElementRates> rates;
    /// Indexes into `rates`: by total IOPS, highest first, ties by id.
    std::vector<uint32_t> byIops;
    /// Indexes of the elements with a service time, longest first.
    std::vector<uint32_t> byLatency;
    /// Elements whose counters went back in the interval.
    size_t resets = 0;
};

KindView rankKind(std::vector<orvstat::ElementRates> rates);

/// A rolling window of the array's totals and the latest rates of every
/// element, shared between the polling thread (add) and the HTTP threads
/// (the JSON getters). Everything a request needs is prepared in add.
class RateWindow
{
public:
    explicit RateWindow(double windowSeconds, double intervalSeconds);

    /// Takes the rates between two samples, taken at wall clock `time`.
    void add(double time, const orvstat::RateResult& result);
    /// What went wrong at the last attempt to sample, or "" once it works
    /// again.
    void setProblem(const std::string& text);

    /// `{"type":..,"time":..,"total":n,"resets":n,"sort":..,"rows":[...]}`
    /// with the first `top` elements of a kind by "iops" or "latency".
    std::string ratesJson(Kind kind, const std::string& sort, size_t top) const;
    /// The totals over the window, as columns (uPlot's data layout), and the
    /// state of the polling.
    std::string totalsJson() const;

    size_t samples() const;

private:
    struct Latest
    {
        double time = 0;
        KindView kinds[KIND_COUNT];
    };

    std::string _buildTotalsJson() const;

    const double _windowSeconds;
    const double _intervalSeconds;
    mutable std::mutex _lock;
    std::deque<Totals> _totals;
    bool _fromArray = true;
    std::shared_ptr<const Latest> _latest;
    /// The sample before `_latest`, kept until the next one arrives: a
    /// request still reading it then never ends up freeing it (a large
    /// array's sample takes tens of milliseconds to free).
    std::shared_ptr<const Latest> _retired;
    std::string _problem;
    std::string _totalsJson;
};

/// A number for JSON: fixed decimals, null for a negative "not known".
std::string jsonNumber(double value, int decimals = 3);

} // namespace orvdash

#endif
