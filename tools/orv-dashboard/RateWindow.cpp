#include "RateWindow.h"

#include "ElementTypes.h"

#include <algorithm>
#include <cstdio>

using orvstat::ElementRates;
using orvstat::RateResult;
using orvstat::RateStatus;

namespace orvdash
{

namespace
{

const char* const KIND_NAMES[KIND_COUNT] = {"array", "node", "port", "volume", "disk", "lun"};

const char* _status(RateStatus status)
{
    return status == RateStatus::RESET         ? "reset"
           : status == RateStatus::NO_INTERVAL ? "no-interval"
                                               : "ok";
}

std::string _row(const ElementRates& r)
{
    return "{\"id\":" + orvstat::jsonQuote(r.id) +
           ",\"type\":" + orvstat::jsonQuote(orvstat::elementTypeName(r.elementType)) +
           ",\"status\":" + orvstat::jsonQuote(_status(r.status)) +
           ",\"read_iops\":" + jsonNumber(r.readIops) +
           ",\"write_iops\":" + jsonNumber(r.writeIops) +
           ",\"total_iops\":" + jsonNumber(r.totalIops) +
           ",\"read_mbps\":" + jsonNumber(r.readMBps) +
           ",\"write_mbps\":" + jsonNumber(r.writeMBps) +
           ",\"total_mbps\":" + jsonNumber(r.totalMBps) +
           ",\"service_ms\":" + jsonNumber(r.serviceMs) +
           ",\"busy_pct\":" + jsonNumber(r.busyPercent, 1) +
           ",\"cache_hit_pct\":" + jsonNumber(r.cacheHitPercent, 1) + "}";
}

} // namespace

bool kindOf(uint16_t elementType, Kind& out)
{
    switch (elementType)
    {
    case 2:
        out = Kind::ARRAY;
        return true;
    case 4:
        out = Kind::NODE;
        return true;
    case 6:
    case 7:
        out = Kind::PORT;
        return true;
    case 8:
        out = Kind::VOLUME;
        return true;
    case 10:
        out = Kind::DISK;
        return true;
    case 11:
        out = Kind::LUN;
        return true;
    default:
        return false;
    }
}

bool kindNamed(const std::string& name, Kind& out)
{
    for (size_t i = 0; i < KIND_COUNT; ++i)
    {
        if (name == KIND_NAMES[i])
        {
            out = static_cast<Kind>(i);
            return true;
        }
    }
    return false;
}

const char* kindName(Kind kind)
{
    return KIND_NAMES[static_cast<size_t>(kind)];
}

std::string jsonNumber(double value, int decimals)
{
    if (value < 0)
    {
        return "null";
    }
    char text[64];
    snprintf(text, sizeof(text), "%.*f", decimals, value);
    return text;
}

Totals arrayTotals(const RateResult& result, double time, bool& fromArray)
{
    fromArray = std::any_of(result.rates.begin(), result.rates.end(),
                            [](const ElementRates& r) { return r.elementType == 2; });
    const uint16_t counted = fromArray ? 2 : 8;
    Totals t;
    t.time = time;
    double ioTime = 0; // ms of service summed over the I/Os that report one
    double timedIops = 0;
    for (const ElementRates& r : result.rates)
    {
        if (r.elementType != counted || r.status != RateStatus::OK)
        {
            continue;
        }
        t.readIops += r.readIops;
        t.writeIops += r.writeIops;
        t.totalIops += r.totalIops;
        t.readMBps += r.readMBps;
        t.writeMBps += r.writeMBps;
        t.totalMBps += r.totalMBps;
        if (r.serviceMs >= 0)
        {
            ioTime += r.serviceMs * r.totalIops;
            timedIops += r.totalIops;
        }
    }
    if (timedIops > 0)
    {
        t.latencyMs = ioTime / timedIops;
    }
    return t;
}

KindView rankKind(std::vector<ElementRates> rates)
{
    KindView view;
    view.rates = std::move(rates);
    const std::vector<ElementRates>& r = view.rates;
    for (uint32_t i = 0; i < r.size(); ++i)
    {
        if (r[i].status == RateStatus::OK)
        {
            view.byIops.push_back(i);
            if (r[i].serviceMs >= 0)
            {
                view.byLatency.push_back(i);
            }
        }
        else if (r[i].status == RateStatus::RESET)
        {
            ++view.resets;
        }
    }
    std::sort(view.byIops.begin(), view.byIops.end(),
              [&](uint32_t a, uint32_t b) {
                  return r[a].totalIops != r[b].totalIops ? r[a].totalIops > r[b].totalIops
                                                          : r[a].id < r[b].id;
              });
    std::sort(view.byLatency.begin(), view.byLatency.end(),
              [&](uint32_t a, uint32_t b) {
                  return r[a].serviceMs != r[b].serviceMs ? r[a].serviceMs > r[b].serviceMs
                                                          : r[a].id < r[b].id;
              });
    return view;
}

RateWindow::RateWindow(double windowSeconds, double intervalSeconds)
    : _windowSeconds(windowSeconds), _intervalSeconds(intervalSeconds)
{
    _totalsJson = _buildTotalsJson();
}

void RateWindow::add(double time, const RateResult& result)
{
    // Sorting 100k LUN paths takes a while: done before taking the lock, so
    // requests meanwhile answer from the previous sample.
    bool fromArray = false;
    const Totals totals = arrayTotals(result, time, fromArray);
    std::vector<ElementRates> byKind[KIND_COUNT];
    for (const ElementRates& r : result.rates)
    {
        Kind kind;
        if (kindOf(r.elementType, kind))
        {
            byKind[static_cast<size_t>(kind)].push_back(r);
        }
    }
    auto latest = std::make_shared<Latest>();
    latest->time = time;
    for (size_t i = 0; i < KIND_COUNT; ++i)
    {
        latest->kinds[i] = rankKind(std::move(byKind[i]));
    }
    std::shared_ptr<const Latest> previous;
    {
        std::lock_guard<std::mutex> guard(_lock);
        while (!_totals.empty() && _totals.front().time < time - _windowSeconds)
        {
            _totals.pop_front();
        }
        _totals.push_back(totals);
        _fromArray = fromArray;
        previous = std::move(_retired);
        _retired = std::move(_latest);
        _latest = std::move(latest);
        _problem.clear();
        _totalsJson = _buildTotalsJson();
    }
    // `previous` (the sample before last, large on a large array) is freed
    // here, on the polling thread and outside the lock.
}

void RateWindow::setProblem(const std::string& text)
{
    std::lock_guard<std::mutex> guard(_lock);
    _problem = text;
    _totalsJson = _buildTotalsJson();
}

size_t RateWindow::samples() const
{
    std::lock_guard<std::mutex> guard(_lock);
    return _totals.size();
}

std::string RateWindow::ratesJson(Kind kind, const std::string& sort, size_t top) const
{
    std::shared_ptr<const Latest> latest;
    {
        std::lock_guard<std::mutex> guard(_lock);
        latest = _latest;
    }
    std::string out =
        "{\"type\":" + orvstat::jsonQuote(kindName(kind)) + ",\"sort\":" + orvstat::jsonQuote(sort);
    if (!latest)
    {
        return out + ",\"time\":null,\"total\":0,\"resets\":0,\"rows\":[]}";
    }
    const KindView& view = latest->kinds[static_cast<size_t>(kind)];
    const std::vector<uint32_t>& order = sort == "latency" ? view.byLatency : view.byIops;
    out += ",\"time\":" + jsonNumber(latest->time) +
           ",\"total\":" + std::to_string(view.rates.size()) +
           ",\"resets\":" + std::to_string(view.resets) + ",\"rows\":[";
    const size_t n = std::min(top, order.size());
    for (size_t i = 0; i < n; ++i)
    {
        out += (i ? "," : "") + _row(view.rates[order[i]]);
    }
    return out + "]}";
}

std::string RateWindow::totalsJson() const
{
    std::lock_guard<std::mutex> guard(_lock);
    return _totalsJson;
}

std::string RateWindow::_buildTotalsJson() const
{
    std::string columns[7];
    for (const Totals& t : _totals)
    {
        const double values[7] = {t.time,      t.readIops,  t.writeIops, t.totalIops,
                                  t.totalMBps, t.latencyMs, t.readMBps};
        for (int c = 0; c < 7; ++c)
        {
            if (!columns[c].empty())
            {
                columns[c] += ',';
            }
            columns[c] += jsonNumber(values[c]);
        }
    }
    std::string counts;
    if (_latest)
    {
        for (size_t i = 0; i < KIND_COUNT; ++i)
        {
            counts += std::string(i ? "," : "") + orvstat::jsonQuote(KIND_NAMES[i]) + ":" +
                      std::to_string(_latest->kinds[i].rates.size());
        }
    }
    return "{\"interval_s\":" + jsonNumber(_intervalSeconds) +
           ",\"window_s\":" + jsonNumber(_windowSeconds) +
           ",\"source\":" + orvstat::jsonQuote(_fromArray ? "array" : "volumes") +
           ",\"problem\":" + (_problem.empty() ? "null" : orvstat::jsonQuote(_problem)) +
           ",\"elements\":{" + counts + "},\"time\":[" + columns[0] + "],\"read_iops\":[" +
           columns[1] + "],\"write_iops\":[" + columns[2] + "],\"total_iops\":[" + columns[3] +
           "],\"total_mbps\":[" + columns[4] + "],\"latency_ms\":[" + columns[5] +
           "],\"read_mbps\":[" + columns[6] + "]}";
}

} // namespace orvdash
