#include "RateWindow.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>

using namespace orvdash;
using nlohmann::json;
using orvstat::ElementRates;
using orvstat::RateResult;
using orvstat::RateStatus;

namespace
{

ElementRates _rates(const std::string& id, uint16_t type, double iops, double serviceMs,
                    RateStatus status = RateStatus::OK)
{
    ElementRates r;
    r.id = id;
    r.elementType = type;
    r.status = status;
    r.readIops = iops * 0.75;
    r.writeIops = iops * 0.25;
    r.totalIops = iops;
    r.readMBps = iops / 100;
    r.writeMBps = iops / 200;
    r.totalMBps = iops / 100 + iops / 200;
    r.serviceMs = serviceMs;
    return r;
}

std::vector<std::string> _ids(const KindView& view, const std::vector<uint32_t>& order)
{
    std::vector<std::string> ids;
    for (uint32_t i : order)
    {
        ids.push_back(view.rates[i].id);
    }
    return ids;
}

std::vector<std::string> _rowIds(const json& rates)
{
    std::vector<std::string> ids;
    for (const json& row : rates["rows"])
    {
        ids.push_back(row["id"]);
    }
    return ids;
}

} // namespace

TEST(RateWindow, RanksByIopsAndLatency)
{
    struct Case
    {
        const char* what;
        std::vector<ElementRates> rates;
        std::vector<std::string> byIops;
        std::vector<std::string> byLatency;
        size_t resets;
    } cases[] = {
        {"plain order",
         {_rates("a", 8, 10, 1), _rates("b", 8, 30, 0.5), _rates("c", 8, 20, 4)},
         {"b", "c", "a"},
         {"c", "a", "b"},
         0},
        {"ties by id, whatever the arrival order",
         {_rates("z", 8, 5, 2), _rates("m", 8, 5, 2), _rates("a", 8, 5, 2)},
         {"a", "m", "z"},
         {"a", "m", "z"},
         0},
        // An element without I/O has no service time: it ranks by IOPS (last)
        // but not by latency. A reset or timeless interval ranks nowhere.
        {"idle, reset and timeless elements",
         {_rates("idle", 10, 0, -1), _rates("busy", 10, 100, 8),
          _rates("reset", 10, 0, -1, RateStatus::RESET),
          _rates("same-time", 10, 0, -1, RateStatus::NO_INTERVAL)},
         {"busy", "idle"},
         {"busy"},
         1},
        {"nothing", {}, {}, {}, 0},
    };
    for (const Case& c : cases)
    {
        KindView view = rankKind(c.rates);
        EXPECT_EQ(_ids(view, view.byIops), c.byIops) << c.what;
        EXPECT_EQ(_ids(view, view.byLatency), c.byLatency) << c.what;
        EXPECT_EQ(view.resets, c.resets) << c.what;
    }
}

TEST(RateWindow, ArrayTotals)
{
    struct Case
    {
        const char* what;
        std::vector<ElementRates> rates;
        bool fromArray;
        double totalIops;
        double readIops;
        double totalMBps;
        double latencyMs;
    } cases[] = {
        // The array's own element wins over the volumes, which may leave out
        // traffic (snapshots, internal copies).
        {"array element",
         {_rates("array", 2, 1000, 2), _rates("v1", 8, 300, 1), _rates("v2", 8, 100, 1)},
         true,
         1000,
         750,
         15,
         2},
        // Latency is weighted by I/Os: 300 at 1 ms and 100 at 5 ms give 2 ms.
        {"sum of volumes",
         {_rates("v1", 8, 300, 1), _rates("v2", 8, 100, 5), _rates("d1", 10, 999, 9)},
         false,
         400,
         300,
         6,
         2},
        {"a reset volume counts nothing",
         {_rates("v1", 8, 300, 1), _rates("v2", 8, 0, -1, RateStatus::RESET)},
         false,
         300,
         225,
         4.5,
         1},
        {"no I/O: no latency", {_rates("v1", 8, 0, -1)}, false, 0, 0, 0, -1},
    };
    for (const Case& c : cases)
    {
        RateResult result;
        result.rates = c.rates;
        bool fromArray = !c.fromArray;
        const Totals t = arrayTotals(result, 1234.5, fromArray);
        EXPECT_EQ(fromArray, c.fromArray) << c.what;
        EXPECT_DOUBLE_EQ(t.time, 1234.5) << c.what;
        EXPECT_DOUBLE_EQ(t.totalIops, c.totalIops) << c.what;
        EXPECT_DOUBLE_EQ(t.readIops, c.readIops) << c.what;
        EXPECT_DOUBLE_EQ(t.writeIops, c.totalIops - c.readIops) << c.what;
        EXPECT_DOUBLE_EQ(t.totalMBps, c.totalMBps) << c.what;
        EXPECT_DOUBLE_EQ(t.latencyMs, c.latencyMs) << c.what;
    }
}

TEST(RateWindow, KeepsTheWindowOnly)
{
    RateWindow window(10, 2);
    for (int t = 0; t <= 20; t += 2)
    {
        RateResult result;
        result.rates = {_rates("array", 2, 100 + t, 1)};
        window.add(1000 + t, result);
    }
    const json totals = json::parse(window.totalsJson());
    // 1010 to 1020: the samples no older than ten seconds.
    ASSERT_EQ(totals["time"].size(), 6u);
    EXPECT_DOUBLE_EQ(totals["time"][0], 1010);
    EXPECT_DOUBLE_EQ(totals["time"][5], 1020);
    EXPECT_DOUBLE_EQ(totals["total_iops"][0], 110);
    EXPECT_DOUBLE_EQ(totals["total_iops"][5], 120);
    EXPECT_DOUBLE_EQ(totals["read_iops"][5], 90);
    EXPECT_EQ(totals["source"], "array");
    EXPECT_EQ(totals["elements"]["array"], 1);
    EXPECT_TRUE(totals["problem"].is_null());
    EXPECT_EQ(window.samples(), 6u);
}

TEST(RateWindow, ProblemsShowUntilTheNextSample)
{
    RateWindow window(60, 2);
    const json empty = json::parse(window.ratesJson(Kind::VOLUME, "iops", 10));
    EXPECT_TRUE(empty["rows"].empty());
    EXPECT_TRUE(empty["time"].is_null());

    window.setProblem("server \"x\" is not answering");
    EXPECT_EQ(json::parse(window.totalsJson())["problem"], "server \"x\" is not answering");
    RateResult result;
    result.rates = {_rates("v", 8, 1, 1)};
    window.add(5, result);
    const json totals = json::parse(window.totalsJson());
    EXPECT_TRUE(totals["problem"].is_null());
    // Without an array element the totals are the volumes' sum, and say so.
    EXPECT_EQ(totals["source"], "volumes");
    // A sample without I/O has no latency: null, which the chart leaves as
    // a gap, rather than 0 ms.
    result.rates = {_rates("v", 8, 0, -1)};
    window.add(7, result);
    EXPECT_TRUE(json::parse(window.totalsJson())["latency_ms"][1].is_null());
}

TEST(RateWindow, RatesJsonPerKindAndOrder)
{
    RateWindow window(3600, 2);
    RateResult result;
    for (int i = 0; i < 30; ++i)
    {
        // IOPS rise with i, latency falls with it.
        result.rates.push_back(_rates("vol" + std::to_string(100 + i), 8, 10.0 * i, 60.0 - i));
    }
    result.rates.push_back(_rates("fe", 6, 5, 1));
    result.rates.push_back(_rates("be", 7, 50, 1));
    result.rates.push_back(_rates("disk", 10, 7, 1));
    window.add(99, result);

    const json byIops = json::parse(window.ratesJson(Kind::VOLUME, "iops", 3));
    EXPECT_EQ(_rowIds(byIops), (std::vector<std::string>{"vol129", "vol128", "vol127"}));
    EXPECT_EQ(byIops["total"], 30);
    EXPECT_EQ(byIops["type"], "volume");
    EXPECT_DOUBLE_EQ(byIops["time"], 99);
    EXPECT_DOUBLE_EQ(byIops["rows"][0]["total_iops"], 290);
    EXPECT_DOUBLE_EQ(byIops["rows"][0]["read_iops"], 217.5);
    EXPECT_DOUBLE_EQ(byIops["rows"][0]["service_ms"], 31);

    const json byLatency = json::parse(window.ratesJson(Kind::VOLUME, "latency", 2));
    EXPECT_EQ(_rowIds(byLatency), (std::vector<std::string>{"vol100", "vol101"}));

    // Front and back end ports are one kind; other kinds stay apart.
    const json ports = json::parse(window.ratesJson(Kind::PORT, "iops", 10));
    EXPECT_EQ(_rowIds(ports), (std::vector<std::string>{"be", "fe"}));
    EXPECT_EQ(ports["rows"][0]["type"], "be-port");
    EXPECT_EQ(_rowIds(json::parse(window.ratesJson(Kind::DISK, "iops", 10))),
              std::vector<std::string>{"disk"});
    EXPECT_EQ(json::parse(window.ratesJson(Kind::LUN, "iops", 10))["total"], 0);
}

TEST(RateWindow, ElementNamesStayText)
{
    // Names come from the array: whatever they hold, the JSON stays valid
    // and gives them back unchanged.
    const std::string names[] = {"quote\"d", "back\\slash", "tab\there\nline",
                                 "</script><img src=x onerror=alert(1)>", "\x01\x1f"};
    for (const std::string& name : names)
    {
        RateWindow window(60, 2);
        RateResult result;
        result.rates = {_rates(name, 8, 1, 1)};
        window.add(1, result);
        const json rates = json::parse(window.ratesJson(Kind::VOLUME, "iops", 1));
        EXPECT_EQ(rates["rows"][0]["id"], name);
    }
}

TEST(RateWindow, LargeArrayRequestsStayFast)
{
    // The size of sim/orvapi/models/large.json: 64k volumes, 100k LUN paths.
    RateWindow window(3600, 2);
    RateResult result;
    for (int i = 0; i < 65536; ++i)
    {
        result.rates.push_back(_rates("volume-" + std::to_string(i), 8, i % 977, (i % 311) / 10.0));
    }
    for (int i = 0; i < 100000; ++i)
    {
        result.rates.push_back(_rates("lun-" + std::to_string(i), 11, i % 1009, (i % 97) / 10.0));
    }
    for (int t = 0; t < 3; ++t)
    {
        window.add(t * 2, result);
    }
    for (const char* sort : {"iops", "latency"})
    {
        for (Kind kind : {Kind::VOLUME, Kind::LUN})
        {
            const auto started = std::chrono::steady_clock::now();
            const std::string text = window.ratesJson(kind, sort, 500);
            const double ms = std::chrono::duration<double, std::milli>(
                                  std::chrono::steady_clock::now() - started)
                                  .count();
            EXPECT_LT(ms, 100) << sort << " " << kindName(kind);
            EXPECT_EQ(json::parse(text)["rows"].size(), 500u);
        }
    }
}
