#include "RateEngine.h"

#include <gtest/gtest.h>

using namespace orvstat;

namespace
{

ElementSample _element(const std::string& id, int64_t timeSeconds,
                       std::map<std::string, uint64_t> counters, int busy = -1)
{
    ElementSample e;
    e.id = id;
    e.elementType = 8;
    e.statisticTimeUs = timeSeconds * 1000000;
    e.counters = std::move(counters);
    e.percentBusy = busy;
    return e;
}

ElementSample _clocked(ElementSample e, double clock)
{
    e.clockSeconds = clock;
    return e;
}

Sample _sample(double clock, std::vector<ElementSample> elements)
{
    Sample s;
    s.clockSeconds = clock;
    for (ElementSample& e : elements)
    {
        s.elements[e.id] = e;
    }
    return s;
}

const uint64_t MAX64 = ~uint64_t(0);

} // namespace

TEST(CounterDelta, WrapsNearTheModulusAndResetsOtherwise)
{
    struct Case
    {
        const char* what;
        uint64_t before, after, bits;
        uint64_t delta;
        bool reset;
    } cases[] = {
        {"growth", 100, 250, 64, 150, false},
        {"no change", 7, 7, 64, 0, false},
        {"64-bit wrap", MAX64 - 9, 20, 64, 30, false},
        {"KBytes wrap at 2^54", (uint64_t(1) << 54) - 4, 6, 54, 10, false},
        {"restart from zero", 1000000, 10, 64, 0, true},
        {"KBytes value past 2^54 cannot wrap there", uint64_t(1) << 60, 5, 54, 0, true},
        {"small drop is a reset, not a wrap", 5000, 4999, 64, 0, true},
    };
    for (const Case& c : cases)
    {
        bool reset = false;
        EXPECT_EQ(counterDelta(c.before, c.after, c.bits, reset), c.delta) << c.what;
        EXPECT_EQ(reset, c.reset) << c.what;
    }
}

TEST(RateEngine, RatesFromHandMadePairs)
{
    // Counters hand-computed for a 2 s interval: 300 reads and 100 writes
    // of 8 KB, 2.5 ms per read and 5 ms per write, 240 hits.
    std::map<std::string, uint64_t> start = {
        {"TotalIOs", 1000},        {"ReadIOs", 600},           {"WriteIOs", 400},
        {"KBytesRead", 4800},      {"KBytesWritten", 3200},    {"KBytesTransferred", 8000},
        {"IOTimeCounter", 100000}, {"ReadIOTimeCounter", 60000}, {"WriteIOTimeCounter", 40000},
        {"ReadHitIOs", 500},       {"WriteHitIOs", 100}};
    std::map<std::string, uint64_t> end = {
        {"TotalIOs", 1400},        {"ReadIOs", 900},            {"WriteIOs", 500},
        {"KBytesRead", 7200},      {"KBytesWritten", 4000},     {"KBytesTransferred", 11200},
        {"IOTimeCounter", 1350000}, {"ReadIOTimeCounter", 810000}, {"WriteIOTimeCounter", 540000},
        {"ReadHitIOs", 700},       {"WriteHitIOs", 140}};
    RateResult r = computeRates(_sample(50, {_element("v", 100, start)}),
                                _sample(53, {_element("v", 102, end)}));
    ASSERT_EQ(r.rates.size(), 1u);
    const ElementRates& v = r.rates[0];
    EXPECT_EQ(v.status, RateStatus::OK);
    EXPECT_DOUBLE_EQ(v.intervalSeconds, 2.0); // the array's time, not the client's 3 s
    EXPECT_DOUBLE_EQ(v.readIops, 150);
    EXPECT_DOUBLE_EQ(v.writeIops, 50);
    EXPECT_DOUBLE_EQ(v.totalIops, 200);
    EXPECT_DOUBLE_EQ(v.readMBps, 2400.0 / 1024 / 2);
    EXPECT_DOUBLE_EQ(v.writeMBps, 800.0 / 1024 / 2);
    EXPECT_DOUBLE_EQ(v.totalMBps, 3200.0 / 1024 / 2);
    EXPECT_DOUBLE_EQ(v.serviceMs, 1250000.0 / 400 / 1000);
    EXPECT_DOUBLE_EQ(v.readServiceMs, 2.5);
    EXPECT_DOUBLE_EQ(v.writeServiceMs, 5.0);
    EXPECT_DOUBLE_EQ(v.busyPercent, -1); // no PercentBusy from the server: unknown
    EXPECT_DOUBLE_EQ(v.cacheHitPercent, 60);
}

TEST(RateEngine, EdgeCasesOfPairs)
{
    struct Case
    {
        const char* what;
        Sample before, after;
        RateStatus status;
        double totalIops, totalMBps, serviceMs, busy, hit;
    } cases[] = {
        // The sample's clock says 2 s, but this element was read by requests
        // 2.5 s apart (the other types' requests in between took longer).
        {"the element's own request clock wins over the sample's",
         _sample(0, {_clocked(_element("v", 10, {{"TotalIOs", 0}}), 0.2)}),
         _sample(2, {_clocked(_element("v", 12, {{"TotalIOs", 250}}), 2.7)}), RateStatus::OK, 100,
         0, -1, -1, -1},
        {"64-bit wrap of the I/O count",
         _sample(0, {_element("v", 10, {{"TotalIOs", MAX64 - 99}})}),
         _sample(1, {_element("v", 12, {{"TotalIOs", 100}})}), RateStatus::OK, 100, 0, -1, -1,
         -1},
        {"counter reset after a restart",
         _sample(0, {_element("v", 10, {{"TotalIOs", 90000}, {"ReadIOs", 5}})}),
         _sample(1, {_element("v", 12, {{"TotalIOs", 40}, {"ReadIOs", 9}})}), RateStatus::RESET,
         0, 0, -1, -1, -1},
        {"zero interval on both clocks",
         _sample(5, {_element("v", 10, {{"TotalIOs", 1}})}),
         _sample(5, {_element("v", 10, {{"TotalIOs", 9}})}), RateStatus::NO_INTERVAL, 0, 0, -1,
         -1, -1},
        {"whole-second stamps agreeing with the clock: the clock's precision",
         _sample(0, {_element("v", 10, {{"TotalIOs", 0}})}),
         _sample(2.5, {_element("v", 12, {{"TotalIOs", 250}})}), RateStatus::OK, 100, 0, -1, -1,
         -1},
        {"fixed element time falls back to the client's clock",
         _sample(100, {_element("v", 10, {{"TotalIOs", 0}})}),
         _sample(104, {_element("v", 10, {{"TotalIOs", 400}})}), RateStatus::OK, 100, 0, -1, -1,
         -1},
        {"sub-KB I/O: the total counter carries bytes the directions truncate",
         _sample(0, {_element("v", 10,
                              {{"KBytesRead", 10}, {"KBytesWritten", 10}, {"KBytesTransferred", 20}})}),
         _sample(1, {_element("v", 11,
                              {{"KBytesRead", 10}, {"KBytesWritten", 10}, {"KBytesTransferred", 21}})}),
         RateStatus::OK, 0, 1.0 / 1024, -1, -1, -1},
        {"no I/O: no service time and no hit ratio",
         _sample(0, {_element("v", 10, {{"TotalIOs", 5}, {"IOTimeCounter", 50}, {"ReadHitIOs", 1}})}),
         _sample(1, {_element("v", 11, {{"TotalIOs", 5}, {"IOTimeCounter", 50}, {"ReadHitIOs", 1}})}),
         RateStatus::OK, 0, 0, -1, -1, -1},
        {"the server's busy figure is shown",
         _sample(0, {_element("v", 10, {{"TotalIOs", 0}, {"IOTimeCounter", 0}})}),
         _sample(1, {_element("v", 11, {{"TotalIOs", 10}, {"IOTimeCounter", 5000000}}, 37)}),
         RateStatus::OK, 10, 0, 500, 37, -1},
        {"I/O time alone does not make a busy figure",
         _sample(0, {_element("v", 10, {{"TotalIOs", 0}, {"IOTimeCounter", 0}})}),
         _sample(1, {_element("v", 11, {{"TotalIOs", 10}, {"IOTimeCounter", 5000000}})}),
         RateStatus::OK, 10, 0, 500, -1, -1},
        {"total from the directions when TotalIOs is absent",
         _sample(0, {_element("v", 10, {{"ReadIOs", 0}, {"WriteIOs", 0}})}),
         _sample(1, {_element("v", 12, {{"ReadIOs", 30}, {"WriteIOs", 10}})}), RateStatus::OK, 20,
         0, -1, -1, -1},
    };
    for (const Case& c : cases)
    {
        RateResult r = computeRates(c.before, c.after);
        ASSERT_EQ(r.rates.size(), 1u) << c.what;
        const ElementRates& v = r.rates[0];
        EXPECT_EQ(v.status, c.status) << c.what;
        if (c.status != RateStatus::OK)
        {
            continue;
        }
        EXPECT_DOUBLE_EQ(v.totalIops, c.totalIops) << c.what;
        EXPECT_DOUBLE_EQ(v.totalMBps, c.totalMBps) << c.what;
        EXPECT_DOUBLE_EQ(v.serviceMs, c.serviceMs) << c.what;
        EXPECT_DOUBLE_EQ(v.busyPercent, c.busy) << c.what;
        EXPECT_DOUBLE_EQ(v.cacheHitPercent, c.hit) << c.what;
    }
}

TEST(RateEngine, ElementsThatAppearOrVanish)
{
    RateResult r = computeRates(
        _sample(0, {_element("stays", 10, {{"TotalIOs", 0}}), _element("gone", 10, {})}),
        _sample(1, {_element("stays", 11, {{"TotalIOs", 5}}), _element("new", 11, {{"TotalIOs", 99}})}));
    ASSERT_EQ(r.rates.size(), 1u);
    EXPECT_EQ(r.rates[0].id, "stays");
    EXPECT_DOUBLE_EQ(r.rates[0].totalIops, 5);
    EXPECT_EQ(r.added, std::vector<std::string>{"new"});
    EXPECT_EQ(r.vanished, std::vector<std::string>{"gone"});
}
