#include "RateEngine.h"

#include <algorithm>
#include <cmath>

namespace orvstat
{

namespace
{

// KBytes counters are byte counters shifted right by 10, so they wrap at
// 2^54; everything else wraps at 2^64.
uint64_t _modulusBits(const std::string& name)
{
    return name.compare(0, 6, "KBytes") == 0 ? 54 : 64;
}

struct Deltas
{
    std::map<std::string, uint64_t> values;
    bool reset = false;

    bool has(const char* name) const
    {
        return values.count(name) != 0;
    }
    double get(const char* name) const
    {
        auto it = values.find(name);
        return it == values.end() ? 0.0 : static_cast<double>(it->second);
    }
};

Deltas _deltas(const ElementSample& before, const ElementSample& after)
{
    Deltas d;
    for (const auto& counter : after.counters)
    {
        auto old = before.counters.find(counter.first);
        if (old == before.counters.end())
        {
            continue;
        }
        bool reset = false;
        d.values[counter.first] =
            counterDelta(old->second, counter.second, _modulusBits(counter.first), reset);
        d.reset = d.reset || reset;
    }
    return d;
}

double _interval(const ElementSample& before, const ElementSample& after, const Sample& sb,
                 const Sample& sa)
{
    // Element time stamps come in whole seconds, the client's clock is
    // precise: the clock serves while the two agree within that resolution.
    // Time stamps further apart from it (an element the array sampled at
    // another time) are taken as they are; without usable stamps (missing,
    // or fixed) the clock alone counts.
    // A sample of many types spans several requests: an element read first
    // and one read last are seconds apart on a large array.
    const double client = (after.clockSeconds != 0 ? after.clockSeconds : sa.clockSeconds) -
                          (before.clockSeconds != 0 ? before.clockSeconds : sb.clockSeconds);
    if (before.statisticTimeUs != 0 && after.statisticTimeUs > before.statisticTimeUs)
    {
        const double stamped =
            static_cast<double>(after.statisticTimeUs - before.statisticTimeUs) / 1e6;
        return client > 0 && std::fabs(stamped - client) < 1.0 ? client : stamped;
    }
    return std::max(0.0, client);
}

} // namespace

uint64_t counterDelta(uint64_t before, uint64_t after, uint64_t modulusBits, bool& reset)
{
    reset = false;
    if (after >= before)
    {
        return after - before;
    }
    const uint64_t mask = modulusBits >= 64 ? ~uint64_t(0) : (uint64_t(1) << modulusBits) - 1;
    // Distance forward through the wrap; a genuine wrap is short compared
    // with the counter's range, a restart from zero is not.
    const uint64_t forward = ((after - before) & mask);
    if (before <= mask && forward <= (mask >> 2))
    {
        return forward;
    }
    reset = true;
    return 0;
}

RateResult computeRates(const Sample& before, const Sample& after)
{
    RateResult result;
    for (const auto& entry : after.elements)
    {
        auto old = before.elements.find(entry.first);
        if (old == before.elements.end())
        {
            result.added.push_back(entry.first);
            continue;
        }
        const ElementSample& a = entry.second;
        const ElementSample& b = old->second;
        ElementRates r;
        r.id = a.id;
        r.elementType = a.elementType;
        r.intervalSeconds = _interval(b, a, before, after);
        Deltas d = _deltas(b, a);
        if (d.reset)
        {
            r.status = RateStatus::RESET;
            result.rates.push_back(r);
            continue;
        }
        if (r.intervalSeconds <= 0)
        {
            r.status = RateStatus::NO_INTERVAL;
            result.rates.push_back(r);
            continue;
        }
        const double dt = r.intervalSeconds;
        const double reads = d.get("ReadIOs");
        const double writes = d.get("WriteIOs");
        const double total = d.has("TotalIOs") ? d.get("TotalIOs") : reads + writes;
        r.readIops = reads / dt;
        r.writeIops = writes / dt;
        r.totalIops = total / dt;
        r.readMBps = d.get("KBytesRead") / 1024.0 / dt;
        r.writeMBps = d.get("KBytesWritten") / 1024.0 / dt;
        // The total is its own counter, truncated once: the sum of the two
        // truncated directions loses up to 2 KB per sample.
        r.totalMBps = (d.has("KBytesTransferred") ? d.get("KBytesTransferred")
                                                  : d.get("KBytesRead") + d.get("KBytesWritten")) /
                      1024.0 / dt;
        const double ioTime = d.has("IOTimeCounter")
                                  ? d.get("IOTimeCounter")
                                  : d.get("ReadIOTimeCounter") + d.get("WriteIOTimeCounter");
        const bool timed = d.has("IOTimeCounter") || d.has("ReadIOTimeCounter");
        if (total > 0 && timed)
        {
            r.serviceMs = ioTime / total / 1000.0;
        }
        if (reads > 0 && d.has("ReadIOTimeCounter"))
        {
            r.readServiceMs = d.get("ReadIOTimeCounter") / reads / 1000.0;
        }
        if (writes > 0 && d.has("WriteIOTimeCounter"))
        {
            r.writeServiceMs = d.get("WriteIOTimeCounter") / writes / 1000.0;
        }
        // Only the server knows how long the element was busy: I/O time
        // counters add up overlapping I/Os, so over the interval they give
        // the mean queue depth, not a busy share.
        if (a.percentBusy >= 0)
        {
            r.busyPercent = a.percentBusy;
        }
        if ((d.has("ReadHitIOs") || d.has("WriteHitIOs")) && total > 0)
        {
            r.cacheHitPercent = (d.get("ReadHitIOs") + d.get("WriteHitIOs")) / total * 100.0;
        }
        result.rates.push_back(r);
    }
    for (const auto& entry : before.elements)
    {
        if (after.elements.count(entry.first) == 0)
        {
            result.vanished.push_back(entry.first);
        }
    }
    return result;
}

} // namespace orvstat
