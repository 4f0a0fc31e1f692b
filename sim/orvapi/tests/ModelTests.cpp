// Models: the embedded default, JSON models with exact records, and counters
// that move with the clock.
#include "SimFixture.h"

#include <dirent.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace
{

constexpr int64_t kBoot = 1700000000;

struct Sample
{
    std::vector<api_VolumeStats_t> volumes;
    std::vector<api_DiskStats_t> disks;
    std::vector<api_PortStats_t> ports;
    std::vector<api_VLunStats_t> vluns;
    api_NodeStats_t nodes{};
    std::vector<cpustats> cpus;
};

template <class Rec>
std::vector<Rec> own(Rec* p, uint32_t n)
{
    std::vector<Rec> v(p, p + n);
    std::free(p);
    return v;
}

Sample sampleAll()
{
    Sample s;
    api_VolumesStats_t v{};
    EXPECT_EQ(0, api_getVolumeStats_chunk(&v, API_WWN_ALL_VOLUMES, 0, nullptr, 0));
    s.volumes = own(v.stats, v.count);
    api_DisksStats_t d{};
    EXPECT_EQ(0, api_getDiskStats(API_DISK_ALL, API_WWN_ALL_VOLUMES, API_SEL_ANY, API_SEL_ANY, API_SEL_ANY, &d));
    s.disks = own(d.stats, d.count);
    api_PortsStats_t p{};
    EXPECT_EQ(0, api_getPortStats(API_PORT_TYPE_ALL, API_SEL_ANY, API_SEL_ANY, API_SEL_ANY, &p));
    s.ports = own(p.stats, p.count);
    api_VLunsStats_t l{};
    EXPECT_EQ(0, api_getVLunStats(0, nullptr, -5, -1, -1, -1, &l));
    s.vluns = own(l.stats, l.count);
    EXPECT_EQ(0, api_getNodeStats(&s.nodes));
    for (uint32_t n = 0; n < orvsim_node_count(); ++n)
    {
        cpustats c{};
        EXPECT_EQ(0, api_getNodeCPUStats(n, &c, nullptr));
        s.cpus.push_back(c);
    }
    return s;
}

uint32_t percentBusyTenths(const api_stats_t& s)
{
    const uint64_t elapsed = s.now - s.begin;
    return elapsed ? static_cast<uint32_t>(s.busyticks * 1000 / elapsed) : 0;
}

void expectGrown(const api_stats_t& a, const api_stats_t& b, const std::string& what)
{
    EXPECT_LE(a.read.count, b.read.count) << what;
    EXPECT_LE(a.read.bytes, b.read.bytes) << what;
    EXPECT_LE(a.read.ticks, b.read.ticks) << what;
    EXPECT_LE(a.write.count, b.write.count) << what;
    EXPECT_LE(a.write.bytes, b.write.bytes) << what;
    EXPECT_LE(a.write.ticks, b.write.ticks) << what;
    EXPECT_LT(a.now, b.now) << what;
    // The busy interval stays short enough for a positive 32-bit difference.
    EXPECT_GT(static_cast<int32_t>(static_cast<uint32_t>(b.now) - static_cast<uint32_t>(b.begin)), 0) << what;
    EXPECT_LE(percentBusyTenths(b), 1000u) << what;
}

TEST_F(SimTest, DefaultModelLooksLikeAnArray)
{
    orvsim_set_time(kBoot + 86400);
    const Sample s = sampleAll();
    ASSERT_EQ(4u, orvsim_node_count());
    EXPECT_GE(s.disks.size(), 90u);
    EXPECT_GE(s.volumes.size(), 200u);
    EXPECT_GE(s.vluns.size(), 200u);

    std::map<std::pair<int, int>, int> kinds; // (type, protocol) -> ports
    for (const api_PortStats_t& p : s.ports)
    {
        ++kinds[{p.type, p.portProtocol}];
        EXPECT_EQ(std::to_string((p.portID >> 7) & 7), p.nodeDeviceID);
    }
    EXPECT_GT((kinds[{API_PORT_TYPE_TARGET, PORT_PROTOCOL_FC}]), 0);
    EXPECT_GT((kinds[{API_PORT_TYPE_TARGET, PORT_PROTOCOL_ISCSI}]), 0);
    EXPECT_GT((kinds[{API_PORT_TYPE_TARGET, PORT_PROTOCOL_FCOE}]), 0);
    EXPECT_GT((kinds[{API_PORT_TYPE_INIT, PORT_PROTOCOL_SAS}]), 0);

    std::set<std::string> wwns;
    for (const api_VolumeStats_t& v : s.volumes)
    {
        EXPECT_EQ(32u, std::strlen(v.volDeviceID));
        EXPECT_EQ(std::string::npos, std::string(v.volDeviceID).find_first_not_of("0123456789ABCDEF"));
        wwns.insert(v.volDeviceID);
    }
    EXPECT_EQ(s.volumes.size(), wwns.size());

    std::set<uint32_t> vlunTypes;
    for (const api_VLunStats_t& l : s.vluns)
    {
        vlunTypes.insert(l.vlunType);
        const bool longForm = l.vlunType >= 1 && l.vlunType <= 4;
        EXPECT_EQ(longForm, l.host_hwid[0] != '\0') << l.vlunType;
    }
    EXPECT_EQ((std::set<uint32_t>{0, 1, 2, 3, 4, 5}), vlunTypes);
    EXPECT_TRUE(std::any_of(s.vluns.begin(), s.vluns.end(),
                            [](const api_VLunStats_t& l) { return l.portID == 0xFFFC && l.vlunType == 3; }));

    std::set<std::string> classes;
    for (const api_DiskStats_t& d : s.disks)
    {
        orvsim_disk_info_t info{};
        ASSERT_EQ(0, orvsim_get_disk_info(d.diskDeviceID, &info));
        classes.insert(info.deviceClass);
    }
    EXPECT_EQ(4u, classes.size());

    orvsim_identity_t id{};
    ASSERT_EQ(0, orvsim_get_identity(&id));
    EXPECT_STREQ("ARRAY1", id.systemName);
    EXPECT_EQ(1, id.quadPort);
}

TEST_F(SimTest, CountersGrowAcrossSamplesAndWindows)
{
    const int64_t offsets[] = {0, 1, 37, 299, 300, 301, 1000, 86400};
    orvsim_set_time(kBoot + 100000);
    Sample prev = sampleAll();
    for (size_t k = 1; k < sizeof offsets / sizeof offsets[0]; ++k)
    {
        orvsim_set_time(kBoot + 100000 + offsets[k]);
        const Sample cur = sampleAll();
        ASSERT_EQ(prev.volumes.size(), cur.volumes.size());
        for (size_t i = 0; i < cur.volumes.size(); ++i)
        {
            expectGrown(prev.volumes[i].stats, cur.volumes[i].stats, "volume " + std::to_string(i));
            EXPECT_LE(prev.volumes[i].cacheRead.hit, cur.volumes[i].cacheRead.hit);
            EXPECT_LE(prev.volumes[i].cacheRead.miss, cur.volumes[i].cacheRead.miss);
            EXPECT_EQ(cur.volumes[i].stats.read.count,
                      cur.volumes[i].cacheRead.hit + cur.volumes[i].cacheRead.miss);
        }
        for (size_t i = 0; i < cur.disks.size(); ++i)
        {
            expectGrown(prev.disks[i].stats, cur.disks[i].stats, "disk " + std::to_string(i));
        }
        for (size_t i = 0; i < cur.ports.size(); ++i)
        {
            expectGrown(prev.ports[i].dataStats, cur.ports[i].dataStats, "port " + std::to_string(i));
        }
        for (size_t i = 0; i < cur.vluns.size(); ++i)
        {
            expectGrown(prev.vluns[i].stats, cur.vluns[i].stats, "vlun " + std::to_string(i));
        }
        for (int n = 0; n < 4; ++n)
        {
            EXPECT_LE(prev.nodes.cmp_cst[n].cmp_total_ios[1], cur.nodes.cmp_cst[n].cmp_total_ios[1]);
            EXPECT_LE(cur.nodes.cmp_cst[n].cmp_hits[0], cur.nodes.cmp_cst[n].cmp_total_ios[0]);
            EXPECT_LE(prev.cpus[n].cpustat_intr, cur.cpus[n].cpustat_intr);
            EXPECT_LE(prev.cpus[n].cpustat_idle[1], cur.cpus[n].cpustat_idle[1]);
        }
        prev = cur;
    }
}

// Whatever busy window a model may choose, the low 32 bits of now - begin
// stay a positive signed count; a window that cannot keep that is refused.
TEST_F(SimTest, EveryAcceptedBusyWindowKeepsThe32BitIntervalPositive)
{
    int accepted = 0;
    for (const int window : {0, 1, 300, 1073, 1074, 1800, 3600})
    {
        const std::string json = "{\"busyWindowSec\": " + std::to_string(window) +
                                 ", \"volumes\": {\"count\": 1}, \"vluns\": {\"count\": 0}}";
        if (orvsim_load_model_json(json.c_str()) != 0)
        {
            EXPECT_NE(std::string::npos, std::string(orvsim_last_error()).find("busyWindowSec"));
            continue;
        }
        ++accepted;
        for (int64_t t = kBoot + 100000; t < kBoot + 100000 + 3 * 3600; t += 97)
        {
            orvsim_set_time(t);
            api_VolumesStats_t out{};
            ASSERT_EQ(0, api_getVolumeStats_chunk(&out, API_WWN_ALL_VOLUMES, 0, nullptr, 0));
            const api_stats_t s = out.stats[0].stats;
            std::free(out.stats);
            ASSERT_GT(static_cast<int32_t>(static_cast<uint32_t>(s.now) - static_cast<uint32_t>(s.begin)), 0)
                << "window " << window << " at " << t;
        }
    }
    EXPECT_GE(accepted, 3) << "the usual windows load";
}

TEST_F(SimTest, SteadyWorkloadGivesItsConfiguredRates)
{
    load(R"({"volumes": {"items": [{"workload": {"iops": 1000, "readPct": 60, "readBlock": 4096,
               "writeBlock": 8192, "readSvcUs": 500, "writeSvcUs": 1000, "busyPct": 40, "qlen": 3,
               "readHitPct": 75, "burst": 0}}]}, "vluns": {"count": 0}})");
    auto one = [](int64_t t) {
        orvsim_set_time(t);
        api_VolumesStats_t out{};
        EXPECT_EQ(0, api_getVolumeStats_chunk(&out, API_WWN_ALL_VOLUMES, 0, nullptr, 0));
        api_VolumeStats_t v = out.stats[0];
        std::free(out.stats);
        return v;
    };
    const api_VolumeStats_t a = one(kBoot + 5000);
    const api_VolumeStats_t b = one(kBoot + 5010);
    EXPECT_NEAR(6000.0, double(b.stats.read.count - a.stats.read.count), 1.0);
    EXPECT_NEAR(4000.0, double(b.stats.write.count - a.stats.write.count), 1.0);
    EXPECT_EQ(4096 * a.stats.read.count, a.stats.read.bytes);
    EXPECT_EQ(8192 * a.stats.write.count, a.stats.write.bytes);
    EXPECT_NEAR(500.0 * a.stats.read.count, double(a.stats.read.ticks), 1.0);
    EXPECT_NEAR(0.75 * a.stats.read.count, double(a.cacheRead.hit), 1.0);
    EXPECT_EQ(kBoot + 5010, b.time);
    EXPECT_EQ(uint64_t(kBoot + 5010) * 1000000, b.stats.now);
    EXPECT_NEAR(400.0, percentBusyTenths(b.stats), 1.0);
    EXPECT_EQ(3u, b.stats.qlen);
    // The busy interval restarts every 300 s and always spans one to two of them.
    EXPECT_GE(b.stats.now - b.stats.begin, 300000000u);
    EXPECT_LT(b.stats.now - b.stats.begin, 600000000u);
}

TEST_F(SimTest, BurstyWorkloadAveragesToItsRateOverAPeriod)
{
    load(R"({"periodSec": 600, "volumes": {"items": [{"workload": {"iops": 2000, "readPct": 50,
               "burst": 0.5, "phase": 123}}]}, "vluns": {"count": 0}})");
    auto reads = [](int64_t t) {
        orvsim_set_time(t);
        api_VolumesStats_t out{};
        EXPECT_EQ(0, api_getVolumeStats_chunk(&out, API_WWN_ALL_VOLUMES, 0, nullptr, 0));
        const uint64_t r = out.stats[0].stats.read.count;
        std::free(out.stats);
        return r;
    };
    const uint64_t start = reads(kBoot + 7777);
    EXPECT_NEAR(600000.0, double(reads(kBoot + 7777 + 600) - start), 1.0);
    const double fast = double(reads(kBoot + 7777 + 10) - start);
    EXPECT_GT(std::abs(fast - 10000.0), 100.0) << "the rate should swing, not stay flat";
}

const char* const kExactModel = R"({
  "bootTime": 1600000000,
  "nodes": {"count": 2},
  "volumes": {"items": [
    {"name": "exact31-characters-volume-name1", "wwn": "0123456789abcdef0123456789ABCDEF", "vvID": 42,
     "started": false, "statsGen": 9, "time": 1700001000,
     "stats": {"read": {"count": 10, "bytes": 1535, "ticks": 77}, "write": {"ticks": 5},
               "begin": 1000, "now": 101000, "busyticks": 100400, "qlen": 3},
     "cacheRead": {"hit": 6, "miss": 4}},
    {"name": "generated-counters"}
  ]},
  "disks": {"items": [{"deviceID": "DUP", "name": "a", "stats": {}}, {"deviceID": "DUP", "name": "b"}]},
  "ports": {"items": [{"portID": "0xFFFC", "type": "target", "protocol": "fcoe",
                       "dataStats": {"read": {"count": 100, "bytes": 600}}}]},
  "vluns": {"count": 0},
  "system": {"name": "TEST-ARRAY", "hostName": "test.local", "id": 99, "quadPort": true}
})";

TEST_F(SimTest, ExplicitRecordsComeBackExactly)
{
    load(kExactModel);
    EXPECT_EQ(2u, orvsim_volume_count());
    EXPECT_EQ(0u, orvsim_vlun_count());

    api_VolumesStats_t vols{};
    ASSERT_EQ(0, api_getVolumeStats_chunk(&vols, API_WWN_ALL_VOLUMES, 0, nullptr, 0));
    Freed<api_VolumeStats_t> f{vols.stats};
    ASSERT_EQ(2u, vols.count);
    const api_VolumeStats_t& v = vols.stats[0];
    EXPECT_STREQ("0123456789ABCDEF0123456789ABCDEF", v.volDeviceID);
    EXPECT_STREQ("exact31-characters-volume-name1", v.vvName);
    EXPECT_EQ(42u, v.vvID);
    EXPECT_EQ(0, v.vvStarted);
    EXPECT_EQ(9u, v.stats_gen);
    EXPECT_EQ(1700001000, v.time);
    EXPECT_EQ(10u, v.stats.read.count);
    EXPECT_EQ(1535u, v.stats.read.bytes);
    EXPECT_EQ(77u, v.stats.read.ticks);
    EXPECT_EQ(0u, v.stats.write.count);
    EXPECT_EQ(5u, v.stats.write.ticks);
    EXPECT_EQ(1000u, v.stats.begin);
    EXPECT_EQ(101000u, v.stats.now);
    EXPECT_EQ(100400u, v.stats.busyticks);
    EXPECT_EQ(3u, v.stats.qlen);
    EXPECT_EQ(6u, v.cacheRead.hit);
    EXPECT_EQ(4u, v.cacheRead.miss);
    EXPECT_EQ(0u, v.cacheWrite.hit);
    EXPECT_STREQ("generated-counters", vols.stats[1].vvName);
    EXPECT_GT(vols.stats[1].stats.now, 0u) << "fields not given stay generated";

    api_DisksStats_t disks{};
    ASSERT_EQ(0, api_getDiskStats(API_DISK_ALL, API_WWN_ALL_VOLUMES, API_SEL_ANY, API_SEL_ANY, API_SEL_ANY, &disks));
    Freed<api_DiskStats_t> g{disks.stats};
    ASSERT_EQ(2u, disks.count);
    EXPECT_STREQ("DUP", disks.stats[0].diskDeviceID);
    EXPECT_STREQ("DUP", disks.stats[1].diskDeviceID);
    EXPECT_STREQ("a", disks.stats[0].diskName);
    EXPECT_EQ(0u, disks.stats[0].stats.read.count + disks.stats[0].stats.busyticks);

    api_PortsStats_t ports{};
    ASSERT_EQ(0, api_getPortStats(API_PORT_TYPE_ALL, API_SEL_ANY, API_SEL_ANY, API_SEL_ANY, &ports));
    Freed<api_PortStats_t> h{ports.stats};
    ASSERT_EQ(1u, ports.count);
    EXPECT_EQ(0xFFFC, ports.stats[0].portID);
    EXPECT_EQ(API_PORT_TYPE_TARGET, ports.stats[0].type);
    EXPECT_EQ(PORT_PROTOCOL_FCOE, ports.stats[0].portProtocol);
    EXPECT_EQ(100u, ports.stats[0].dataStats.read.count);
    EXPECT_EQ(600u, ports.stats[0].dataStats.read.bytes);
    EXPECT_EQ(0u, ports.stats[0].ctlStats.read.count);

    api_VLunsStats_t vluns{};
    ASSERT_EQ(0, api_getVLunStats(0, "", -5, -1, -1, -1, &vluns));
    EXPECT_EQ(0u, vluns.count);
    EXPECT_EQ(nullptr, vluns.stats);

    orvsim_identity_t id{};
    ASSERT_EQ(0, orvsim_get_identity(&id));
    EXPECT_STREQ("TEST-ARRAY", id.systemName);
    EXPECT_STREQ("test.local", id.hostName);
    EXPECT_EQ(99u, id.systemID);
    EXPECT_EQ(1, id.quadPort);
    EXPECT_EQ(2u, orvsim_node_count());
}

TEST_F(SimTest, ExplicitNodeCacheAndCpuRecords)
{
    load(R"({"nodes": {"items": [
        {"number": 1, "cache": {"totalIos": [100, 50], "hits": [60, 50], "blklck": [1, 2]},
         "lru": {"lru_free_anon_len": 7, "lru_ws_len": -1}, "cdev": {"4": {"dirty": 3, "max": 9, "dack": 1}},
         "cpu": {"ncpus": 0, "intr": 11, "ctxt": 12}},
        {"number": 5, "online": false}]}})");
    api_NodeStats_t ns{};
    ASSERT_EQ(0, api_getNodeStats(&ns));
    EXPECT_EQ(1u << 1, ns.cmp_online) << "offline nodes are not reported";
    EXPECT_EQ(100u, ns.cmp_cst[1].cmp_total_ios[0]);
    EXPECT_EQ(60u, ns.cmp_cst[1].cmp_hits[0]);
    EXPECT_EQ(2u, ns.cmp_cst[1].cmp_blklck[1]);
    EXPECT_EQ(7, ns.cmp_lru[1].lru_free_anon_len);
    EXPECT_EQ(-1, ns.cmp_lru[1].lru_ws_len);
    EXPECT_EQ(9, ns.cmp_cdev[1][4].cdev_cfc_max);
    EXPECT_EQ(0, ns.cmp_cdev[1][1].cdev_cfc_max);
    cpustats cpu{};
    ASSERT_EQ(0, api_getNodeCPUStats(1, &cpu, nullptr));
    EXPECT_EQ(0u, cpu.cpustat_ncpus);
    EXPECT_EQ(11u, cpu.cpustat_intr);
    EXPECT_EQ(12u, cpu.cpustat_ctxt);
    api_error_t err{};
    EXPECT_EQ(API_ERR_IO, api_getNodeCPUStats(5, &cpu, &err));
    EXPECT_STREQ("node 5 is offline", err.text);
}

struct BadModel
{
    const char* json;
    const char* mentions;
};

class BadModels : public SimTest, public ::testing::WithParamInterface<BadModel>
{
};

TEST_P(BadModels, AreRefusedAndKeepThePreviousModel)
{
    load(R"({"volumes": {"count": 3}})");
    const BadModel& c = GetParam();
    EXPECT_NE(0, orvsim_load_model_json(c.json));
    EXPECT_NE(std::string::npos, std::string(orvsim_last_error()).find(c.mentions)) << orvsim_last_error();
    EXPECT_EQ(3u, orvsim_volume_count());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BadModels,
    ::testing::Values(BadModel{"{nope", "not valid JSON"}, BadModel{"[1]", "JSON object"},
                      BadModel{R"({"volume": {}})", "unknown key \"volume\""},
                      BadModel{R"({"volumes": {"count": -1}})", "volumes.count"},
                      BadModel{R"({"volumes": {"count": 1, "items": [{}, {}]}})", "more items than count"},
                      BadModel{R"({"nodes": {"count": 9}})", "nodes.count"},
                      BadModel{R"({"nodes": {"items": [{"number": 1}, {"number": 1}]}})", "used twice"},
                      BadModel{R"({"nodes": {"items": [{"cpu": {"ncpus": 33}}]}})", "nodes.items[0].cpu.ncpus"},
                      BadModel{R"({"volumes": {"items": [{"name": "0123456789012345678901234567890123"}]}})",
                               "volumes.items[0].name"},
                      BadModel{R"({"volumes": {"items": [{"wwn": "XYZ"}]}})", "volumes.items[0].wwn"},
                      BadModel{R"({"volumes": {"items": [{"workload": {"readPct": 150}}]}})", "percentages"},
                      BadModel{R"({"ports": {"items": [{"portID": 70000}]}})", "ports.items[0].portID"},
                      BadModel{R"({"disks": {"items": [{"stats": {"read": {"count": "x"}}}]}})",
                               "disks.items[0].stats.read.count"},
                      BadModel{R"({"system": {"ipv4": "1.2.3"}})", "system.ipv4"},
                      BadModel{R"({"users": [{"role": "super"}]})", "needs a name"},
                      BadModel{R"({"faults": [{"call": "api_nope", "status": 1}]})", "api_nope"},
                      BadModel{R"({"faults": "api_getNodes=0"})", "api_getNodes"}));

TEST_F(SimTest, FaultsListedInAModelAreArmed)
{
    load(R"({"faults": [{"call": "api_getNodes", "status": 4, "after": 1}]})");
    api_NodeList_t nodes{};
    EXPECT_EQ(0, api_getNodes(&nodes));
    std::free(nodes.nodes);
    nodes = api_NodeList_t{};
    EXPECT_EQ(4, api_getNodes(&nodes));
    EXPECT_EQ(nullptr, nodes.nodes);
}

TEST_F(SimTest, LargeArraysLoadAndAnswerInChunks)
{
    load(R"({"volumes": {"count": 65536}, "vluns": {"count": 100000}})");
    uint32_t cursor = 0;
    unsigned chunks = 0;
    uint64_t total = 0;
    do
    {
        api_VolumesStats_t out{};
        ASSERT_EQ(0, api_getVolumeStats_chunk(&out, API_WWN_ALL_VOLUMES, API_WWN_ALL_VOLUMES, &cursor, 200));
        total += out.count;
        ++chunks;
        std::free(out.stats);
    } while (cursor != 0 && chunks < 1000);
    EXPECT_EQ(65536u, total);
    EXPECT_EQ(328u, chunks);
    api_VLunsStats_t vluns{};
    ASSERT_EQ(0, api_getVLunStats(0, "", -5, -1, -1, -1, &vluns));
    Freed<api_VLunStats_t> f{vluns.stats};
    EXPECT_EQ(100000u, vluns.count);
    std::set<std::string> ids;
    for (uint32_t i = 0; i < vluns.count; ++i)
    {
        const api_VLunStats_t& l = vluns.stats[i];
        if (l.vlunType >= 1 && l.vlunType <= 4)
        {
            ids.insert(std::to_string(l.lunID) + l.vvName + std::to_string(l.portID) + l.host_hwid);
        }
    }
    EXPECT_EQ(ids.size(), 90000u) << "long-form VLUN identities are distinct";
}

TEST_F(SimTest, ShippedModelFilesLoad)
{
    DIR* dir = opendir(ORVSIM_MODEL_DIR);
    ASSERT_NE(nullptr, dir);
    int loaded = 0;
    while (dirent* e = readdir(dir))
    {
        const std::string name = e->d_name;
        if (name.size() > 5 && name.substr(name.size() - 5) == ".json")
        {
            EXPECT_EQ(0, orvsim_load_model_file((std::string(ORVSIM_MODEL_DIR) + "/" + name).c_str()))
                << name << ": " << orvsim_last_error();
            ++loaded;
        }
    }
    closedir(dir);
    EXPECT_GE(loaded, 2);
    EXPECT_NE(0, orvsim_load_model_file("/nonexistent/model.json"));
}

} // namespace
