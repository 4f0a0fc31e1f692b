// The call contracts that the statistics providers rely on.
#include "SimFixture.h"

#include <functional>

#include <cstring>
#include <set>
#include <string>
#include <vector>

namespace
{

std::string volumesModel(unsigned count)
{
    return "{\"volumes\": {\"count\": " + std::to_string(count) + "}, \"vluns\": {\"count\": 0}}";
}

struct ChunkCase
{
    unsigned volumes;
    uint32_t chunk;
    std::vector<uint32_t> sizes; // expected records per call
};

class VolumeChunks : public SimTest, public ::testing::WithParamInterface<ChunkCase>
{
};

TEST_P(VolumeChunks, CursorWalksEveryVolumeOnceAndEndsAtZero)
{
    const ChunkCase& c = GetParam();
    load(volumesModel(c.volumes));
    uint32_t cursor = 0;
    std::vector<std::string> seen;
    std::vector<uint32_t> sizes;
    do
    {
        api_VolumesStats_t out{};
        ASSERT_EQ(0, api_getVolumeStats_chunk(&out, API_WWN_ALL_VOLUMES, API_WWN_ALL_VOLUMES, &cursor, c.chunk));
        Freed<api_VolumeStats_t> f{out.stats};
        sizes.push_back(out.count);
        for (uint32_t i = 0; i < out.count; ++i)
        {
            seen.emplace_back(out.stats[i].volDeviceID);
        }
        ASSERT_LT(sizes.size(), 100u) << "cursor never returned to 0";
    } while (cursor != 0);
    EXPECT_EQ(c.sizes, sizes);
    EXPECT_EQ(c.volumes, seen.size());
    EXPECT_EQ(seen.size(), std::set<std::string>(seen.begin(), seen.end()).size());
}

INSTANTIATE_TEST_SUITE_P(Sizes, VolumeChunks,
                         ::testing::Values(ChunkCase{450, 200, {200, 200, 50}}, ChunkCase{400, 200, {200, 200}},
                                           ChunkCase{199, 200, {199}}, ChunkCase{0, 200, {0}},
                                           ChunkCase{450, 0, {450}}, ChunkCase{5, 2, {2, 2, 1}}));

TEST_F(SimTest, VolumeChunkSizeZeroIgnoresAndClearsTheCursor)
{
    load(volumesModel(250));
    uint32_t cursor = 17;
    api_VolumesStats_t out{};
    ASSERT_EQ(0, api_getVolumeStats_chunk(&out, API_WWN_ALL_VOLUMES, 0, &cursor, 0));
    Freed<api_VolumeStats_t> f{out.stats};
    EXPECT_EQ(250u, out.count);
    EXPECT_EQ(0u, cursor);
    api_VolumesStats_t again{};
    EXPECT_EQ(0, api_getVolumeStats_chunk(&again, API_WWN_ALL_VOLUMES, 0, nullptr, 0));
    Freed<api_VolumeStats_t> g{again.stats};
    EXPECT_EQ(250u, again.count);
    api_VolumesStats_t bad{};
    EXPECT_NE(0, api_getVolumeStats_chunk(&bad, API_WWN_ALL_VOLUMES, 0, nullptr, 200));
    EXPECT_EQ(nullptr, bad.stats);
}

TEST_F(SimTest, SingleWwnSelectsExactlyThatVolume)
{
    load(volumesModel(300));
    uint32_t cursor = 0;
    api_VolumesStats_t all{};
    ASSERT_EQ(0, api_getVolumeStats_chunk(&all, API_WWN_ALL_VOLUMES, 0, &cursor, 0));
    Freed<api_VolumeStats_t> f{all.stats};
    ASSERT_EQ(300u, all.count);
    const api_VolumeStats_t& target = all.stats[123];

    std::string lower = target.volDeviceID;
    for (char& ch : lower)
    {
        ch = static_cast<char>(tolower(ch));
    }
    for (const std::string& text : {std::string(target.volDeviceID), lower})
    {
        uint64_t wwn = 0, wwnRe = 0;
        api_wwn_scratch_t scratch;
        ASSERT_EQ(0, api_wwnStringToInt(&scratch, text.c_str(), &wwnRe, &wwn));
        api_VolumesStats_t one{};
        ASSERT_EQ(0, api_getVolumeStats_chunk(&one, wwn, wwnRe, &cursor, 0));
        Freed<api_VolumeStats_t> g{one.stats};
        ASSERT_EQ(1u, one.count) << text;
        EXPECT_STREQ(target.volDeviceID, one.stats[0].volDeviceID);
        EXPECT_STREQ(target.vvName, one.stats[0].vvName);
        EXPECT_EQ(0u, cursor);
    }

    api_VolumesStats_t none{};
    EXPECT_EQ(0, api_getVolumeStats_chunk(&none, 0x1234, 0x5678, &cursor, 0));
    EXPECT_EQ(0u, none.count);
    EXPECT_EQ(nullptr, none.stats);
}

struct WwnCase
{
    const char* text;
    bool ok;
    uint64_t hi;
    uint64_t lo;
};

class WwnText : public SimTest, public ::testing::WithParamInterface<WwnCase>
{
};

TEST_P(WwnText, ConvertsOrLeavesTheWordsAlone)
{
    const WwnCase& c = GetParam();
    uint64_t wwn = 0xAAAA, wwnRe = 0xBBBB;
    const int32_t rc = api_wwnStringToInt(nullptr, c.text, &wwnRe, &wwn);
    if (!c.ok)
    {
        EXPECT_NE(0, rc);
        EXPECT_EQ(0xAAAAu, wwn);
        EXPECT_EQ(0xBBBBu, wwnRe);
        return;
    }
    ASSERT_EQ(0, rc);
    EXPECT_EQ(c.hi, wwn);
    EXPECT_EQ(c.lo, wwnRe);
    char text[API_WWN_TEXT_LEN];
    ASSERT_EQ(0, api_wwnIntToString(wwnRe, wwn, text));
    EXPECT_EQ(32u, std::strlen(text));
    uint64_t hi2 = 0, lo2 = 0;
    ASSERT_EQ(0, api_wwnStringToInt(nullptr, text, &lo2, &hi2));
    EXPECT_EQ(wwn, hi2);
    EXPECT_EQ(wwnRe, lo2);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, WwnText,
    ::testing::Values(WwnCase{"0123456789ABCDEF0123456789ABCDEF", true, 0x0123456789ABCDEFULL, 0x0123456789ABCDEFULL},
                      WwnCase{"60002ac000000000000000f30001a2b3", true, 0x60002AC000000000ULL, 0x000000F30001A2B3ULL},
                      WwnCase{"ABC", true, 0, 0xABC},
                      WwnCase{"10000000000000000", true, 1, 0},
                      WwnCase{"", false, 0, 0}, WwnCase{"XYZ", false, 0, 0},
                      WwnCase{"0123456789ABCDEF0123456789ABCDEF0", false, 0, 0},
                      WwnCase{"0123-4567", false, 0, 0}, WwnCase{nullptr, false, 0, 0}));

TEST_F(SimTest, WwnIntToStringWritesUpperCaseDigits)
{
    char text[API_WWN_TEXT_LEN];
    ASSERT_EQ(0, api_wwnIntToString(0x00000000000000ABULL, 0xFFFFFFFFFFFFFFF6ULL, text));
    EXPECT_STREQ("FFFFFFFFFFFFFFF600000000000000AB", text);
    EXPECT_NE(0, api_wwnIntToString(1, 2, nullptr));
}

TEST_F(SimTest, VolumeListChunksMatchTheStatistics)
{
    load(volumesModel(420));
    uint32_t cursor = 0;
    std::vector<std::string> wwns;
    int calls = 0;
    do
    {
        api_VVsInfo_t out{};
        ASSERT_EQ(0, api_getVVs_chunk(&out, &cursor, 200));
        Freed<api_VVInfo_t> f{out.vvs};
        for (uint32_t i = 0; i < out.count; ++i)
        {
            wwns.emplace_back(out.vvs[i].vvWWN);
        }
        ++calls;
    } while (cursor != 0 && calls < 10);
    EXPECT_EQ(3, calls);
    api_VolumesStats_t stats{};
    ASSERT_EQ(0, api_getVolumeStats_chunk(&stats, API_WWN_ALL_VOLUMES, 0, nullptr, 0));
    Freed<api_VolumeStats_t> g{stats.stats};
    ASSERT_EQ(wwns.size(), stats.count);
    for (uint32_t i = 0; i < stats.count; ++i)
    {
        EXPECT_EQ(wwns[i], stats.stats[i].volDeviceID);
    }
}

// A small array whose VLUN positions are known, for the selectors.
const char* const kVLunModel = R"({
  "volumes": {"count": 0},
  "vluns": {"items": [
    {"lunID": 1, "vvName": "alpha", "node": 0, "slot": 1, "port": 1, "vlunType": 1, "hostHwid": "10000090FA000001"},
    {"lunID": 2, "vvName": "alpha", "node": 1, "slot": 1, "port": 2, "vlunType": 1, "hostHwid": "10000090FA000002"},
    {"lunID": 3, "vvName": "beta",  "node": 1, "slot": 2, "port": 1, "vlunType": 3, "hostHwid": "iqn.x:h3"},
    {"lunID": 4, "vvName": "beta",  "portID": "0xFFFC", "vlunType": 3, "hostHwid": "10000090FA000004"},
    {"lunID": 5, "vvName": "gamma", "portID": "0xFFFC", "vlunType": 0},
    {"lunID": 2, "vvName": "gamma", "node": 7, "slot": 15, "port": 7, "vlunType": 5}
  ]}
})";

struct VLunCase
{
    const char* what;
    const char* name;
    int32_t lun;
    int node, slot, port;
    std::vector<uint32_t> luns;
};

class VLunSelectors : public SimTest, public ::testing::WithParamInterface<VLunCase>
{
};

TEST_P(VLunSelectors, NarrowTheResult)
{
    load(kVLunModel);
    const VLunCase& c = GetParam();
    api_VLunsStats_t out{};
    ASSERT_EQ(0, api_getVLunStats(0, c.name, c.lun, static_cast<int8_t>(c.node), static_cast<int16_t>(c.slot),
                                  static_cast<int8_t>(c.port), &out));
    Freed<api_VLunStats_t> f{out.stats};
    std::vector<uint32_t> luns;
    for (uint32_t i = 0; i < out.count; ++i)
    {
        luns.push_back(out.stats[i].lunID);
    }
    EXPECT_EQ(c.luns, luns) << c.what;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, VLunSelectors,
    ::testing::Values(VLunCase{"all, empty name", "", -5, -1, -1, -1, {1, 2, 3, 4, 5, 2}},
                      VLunCase{"all, null name", nullptr, -5, -1, -1, -1, {1, 2, 3, 4, 5, 2}},
                      VLunCase{"by name", "beta", -5, -1, -1, -1, {3, 4}},
                      VLunCase{"name is exact", "BETA", -5, -1, -1, -1, {}},
                      VLunCase{"by lun", "", 2, -1, -1, -1, {2, 2}},
                      VLunCase{"by name and lun", "gamma", 2, -1, -1, -1, {2}},
                      VLunCase{"by node", "", -5, 1, -1, -1, {2, 3}},
                      VLunCase{"by node and slot", "", -5, 1, 2, -1, {3}},
                      VLunCase{"by full position", "", -5, 1, 1, 2, {2}},
                      VLunCase{"highest position", "", -5, 7, 15, 7, {2}},
                      VLunCase{"unbound, narrowed 253", "", -5, 253, -7, -8, {4, 5}},
                      VLunCase{"unbound by port only", "", -5, -1, -1, -8, {4, 5}},
                      VLunCase{"unbound short ID query", "", 5, -1, -1, -1, {5}},
                      VLunCase{"no such lun", "", 99, -1, -1, -1, {}}));

// LUN numbers are unsigned 32-bit while the selector is signed: both sides
// compare as 32 bits, so the upper half of the range is reachable.
TEST_F(SimTest, VLunNumbersCompareAs32BitValues)
{
    load(R"({"volumes": {"count": 0}, "vluns": {"items": [
      {"lunID": 7, "vvName": "low", "node": 0, "slot": 1, "port": 1, "vlunType": 1, "hostHwid": "H1"},
      {"lunID": 2147483648, "vvName": "mid", "node": 0, "slot": 1, "port": 1, "vlunType": 1, "hostHwid": "H2"},
      {"lunID": 4294967290, "vvName": "top", "node": 0, "slot": 1, "port": 1, "vlunType": 1, "hostHwid": "H3"},
      {"lunID": 4294967291, "vvName": "all", "node": 0, "slot": 1, "port": 1, "vlunType": 1, "hostHwid": "H4"}
    ]}})");
    const struct
    {
        uint32_t selector; // as the caller's LUN number, passed narrowed
        std::vector<uint32_t> luns;
    } cases[] = {
        {7, {7}},
        {2147483648u, {2147483648u}},
        {4294967290u, {4294967290u}},
        // The same 32 bits as the all-LUNs selector.
        {4294967291u, {7, 2147483648u, 4294967290u, 4294967291u}},
        {2147483649u, {}},
    };
    for (const auto& c : cases)
    {
        api_VLunsStats_t out{};
        ASSERT_EQ(0, api_getVLunStats(0, "", static_cast<int32_t>(c.selector), -1, -1, -1, &out));
        Freed<api_VLunStats_t> f{out.stats};
        std::vector<uint32_t> luns;
        for (uint32_t i = 0; i < out.count; ++i)
        {
            luns.push_back(out.stats[i].lunID);
        }
        EXPECT_EQ(c.luns, luns) << c.selector;
    }
    // A record numbered like the all-LUNs selector is no wildcard itself.
    api_VLunsStats_t out{};
    ASSERT_EQ(0, api_getVLunStats(0, "low", 7, -1, -1, -1, &out));
    Freed<api_VLunStats_t> f{out.stats};
    ASSERT_EQ(1u, out.count);
    EXPECT_EQ(7u, out.stats[0].lunID);
}

TEST_F(SimTest, VLunTemplatesCarryNoHostAndTheUnboundPortID)
{
    load(kVLunModel);
    api_VLunsStats_t out{};
    ASSERT_EQ(0, api_getVLunStats(0, "gamma", -5, -1, -1, -1, &out));
    Freed<api_VLunStats_t> f{out.stats};
    ASSERT_EQ(2u, out.count);
    EXPECT_EQ(0xFFFC, out.stats[0].portID);
    EXPECT_STREQ("", out.stats[0].host_hwid);
    EXPECT_EQ((7 << 7) | (15 << 3) | 7, out.stats[1].portID);
    EXPECT_STREQ("", out.stats[1].host_hwid);
    EXPECT_EQ(5u, out.stats[1].vlunType);
}

TEST_F(SimTest, DiskAndPortSelectors)
{
    api_DisksStats_t all{};
    ASSERT_EQ(0, api_getDiskStats(API_DISK_ALL, API_WWN_ALL_VOLUMES, API_SEL_ANY, API_SEL_ANY, API_SEL_ANY, &all));
    Freed<api_DiskStats_t> f{all.stats};
    EXPECT_EQ(orvsim_disk_count(), all.count);
    api_DisksStats_t one{};
    ASSERT_EQ(0, api_getDiskStats(7, API_WWN_ALL_VOLUMES, API_SEL_ANY, API_SEL_ANY, API_SEL_ANY, &one));
    Freed<api_DiskStats_t> g{one.stats};
    ASSERT_EQ(1u, one.count);
    EXPECT_EQ(7u, one.stats[0].diskID);

    api_PortsStats_t ports{};
    ASSERT_EQ(0, api_getPortStats(API_PORT_TYPE_ALL, API_SEL_ANY, API_SEL_ANY, API_SEL_ANY, &ports));
    Freed<api_PortStats_t> h{ports.stats};
    EXPECT_EQ(orvsim_port_count(), ports.count);
    unsigned targets = 0;
    for (uint32_t i = 0; i < ports.count; ++i)
    {
        targets += ports.stats[i].type == API_PORT_TYPE_TARGET;
    }
    api_PortsStats_t onlyTargets{};
    ASSERT_EQ(0, api_getPortStats(API_PORT_TYPE_TARGET, API_SEL_ANY, API_SEL_ANY, API_SEL_ANY, &onlyTargets));
    Freed<api_PortStats_t> k{onlyTargets.stats};
    EXPECT_EQ(targets, onlyTargets.count);
    api_PortsStats_t node2{};
    ASSERT_EQ(0, api_getPortStats(API_PORT_TYPE_ALL, 2, API_SEL_ANY, API_SEL_ANY, &node2));
    Freed<api_PortStats_t> l{node2.stats};
    ASSERT_GT(node2.count, 0u);
    for (uint32_t i = 0; i < node2.count; ++i)
    {
        EXPECT_EQ(2, (node2.stats[i].portID >> 7) & 7);
        EXPECT_STREQ("2", node2.stats[i].nodeDeviceID);
    }
}

TEST_F(SimTest, UnboundPortsAnswerOnlyTheAnyPositionQuery)
{
    load(R"({"ports": {"items": [{"node": 1, "slot": 2, "port": 3}, {"portID": "0xFFFC"}]}})");
    struct
    {
        uint32_t node, slot, port;
        uint32_t expected;
    } cases[] = {{API_SEL_ANY, API_SEL_ANY, API_SEL_ANY, 2},
                 {1, 2, 3, 1},
                 {253, API_SEL_ANY, API_SEL_ANY, 0},
                 {253, static_cast<uint32_t>(-7), static_cast<uint32_t>(-8), 0},
                 {API_SEL_ANY, API_SEL_ANY, static_cast<uint32_t>(-8), 0}};
    for (const auto& c : cases)
    {
        api_PortsStats_t out{};
        ASSERT_EQ(0, api_getPortStats(API_PORT_TYPE_ALL, c.node, c.slot, c.port, &out));
        Freed<api_PortStats_t> f{out.stats};
        EXPECT_EQ(c.expected, out.count) << c.node << "/" << c.slot << "/" << c.port;
    }
}

TEST_F(SimTest, NodesAndTheirCpuRecords)
{
    api_NodeList_t nodes{};
    ASSERT_EQ(0, api_getNodes(&nodes));
    Freed<api_NodeInfo_t> f{nodes.nodes};
    ASSERT_EQ(4u, nodes.count);
    for (uint32_t i = 0; i < nodes.count; ++i)
    {
        EXPECT_EQ(i, nodes.nodes[i].nodeID);
        EXPECT_EQ(std::to_string(i), nodes.nodes[i].nodeName);
        cpustats cpu{};
        api_error_t err{};
        ASSERT_EQ(0, api_getNodeCPUStats(i, &cpu, &err));
        EXPECT_EQ(8u, cpu.cpustat_ncpus);
        EXPECT_GT(cpu.cpustat_idle[0], 0u);
        EXPECT_EQ(0u, cpu.cpustat_user[8]) << "only ncpus entries are filled";
    }
    api_NodeStats_t ns{};
    ASSERT_EQ(0, api_getNodeStats(&ns));
    EXPECT_EQ(0xFu, ns.cmp_online);
    EXPECT_GT(ns.cmp_cst[3].cmp_total_ios[0], ns.cmp_cst[3].cmp_hits[0]);
    EXPECT_EQ(0u, ns.cmp_cst[4].cmp_total_ios[0]);
    EXPECT_GT(ns.cmp_cdev[0][API_DEV_CLASS_SSD].cdev_cfc_max, 0);

    cpustats cpu{};
    api_error_t err{};
    EXPECT_EQ(API_ERR_NOT_FOUND, api_getNodeCPUStats(6, &cpu, &err));
    EXPECT_EQ(API_ERR_NOT_FOUND, err.code);
    EXPECT_STREQ("node 6 not found", err.text);
}

struct AuthCase
{
    const char* user;
    int32_t open;  // 0 or non-zero
    int32_t getStats;
    int32_t modify;
};

class Users : public SimTest, public ::testing::WithParamInterface<AuthCase>
{
};

TEST_P(Users, OpenAndAuthorizeFollowTheRole)
{
    const AuthCase& c = GetParam();
    EXPECT_EQ(c.open, api_orvOpenForCimserver(c.user) != 0) << (c.user ? c.user : "null");
    EXPECT_EQ(c.getStats, api_authorizeCIMUser(c.user, "10.0.0.1",
                                               "orv_blockstatisticsservice.getstatisticscollection"));
    EXPECT_EQ(c.modify, api_authorizeCIMUser(c.user, "10.0.0.1", "orv_storagevolume.createvolume"));
}

INSTANTIATE_TEST_SUITE_P(DefaultModel, Users,
                         ::testing::Values(AuthCase{nullptr, 0, 0, 0}, AuthCase{"", 0, 0, 0},
                                           AuthCase{"admin", 0, 0, 0}, AuthCase{"demo", 0, 0, 2},
                                           AuthCase{"noaccess", 0, 1, 1}, AuthCase{"auditor", 0, 2, 2},
                                           AuthCase{"legacy", 0, 3, 3}, AuthCase{"locked", 1, 1, 1},
                                           AuthCase{"stranger", 1, 1, 1}));

TEST_F(SimTest, UserAddressesAndFixedAnswersFromTheModel)
{
    load(R"({"users": [{"name": "ops", "role": "super", "addresses": ["10.1.1.1"]},
                       {"name": "odd", "authorize": 7}]})");
    EXPECT_EQ(0, api_authorizeCIMUser("ops", "10.1.1.1", "a.b"));
    EXPECT_EQ(2, api_authorizeCIMUser("ops", "10.1.1.2", "a.b"));
    EXPECT_EQ(7, api_authorizeCIMUser("odd", "", "a.getb"));
    EXPECT_NE(0, api_orvOpenForCimserver("admin")) << "the model's users replace the default ones";
}

TEST_F(SimTest, DualIpFollowsTheIdentity)
{
    api_ipaddr_t ip{};
    ASSERT_EQ(0, api_getSystemDualIP(&ip));
    EXPECT_EQ(API_DUAL_IP_V4_V6, ip.dual_flag);
    const uint8_t* b = reinterpret_cast<const uint8_t*>(&ip.ipv4_addr);
    EXPECT_EQ(192, b[0]);
    EXPECT_EQ(10, b[3]);
    EXPECT_EQ(0x20, ip.ipv6_addr[0]);
    load(R"({"system": {"ipv4": "10.2.3.4", "ipv6": ""}})");
    ASSERT_EQ(0, api_getSystemDualIP(&ip));
    EXPECT_EQ(API_DUAL_IP_V4, ip.dual_flag);
}

// Every failing call hands back the injected status; list calls also leave
// their array behind when asked to, and the caller frees it.
struct FaultCase
{
    const char* call;
    int (*invoke)(void** leftBehind);
};

int callVolumes(void** left)
{
    api_VolumesStats_t out{};
    uint32_t cursor = 0;
    const int rc = api_getVolumeStats_chunk(&out, API_WWN_ALL_VOLUMES, 0, &cursor, 200);
    *left = out.stats;
    return rc;
}
int callVVs(void** left)
{
    api_VVsInfo_t out{};
    uint32_t cursor = 0;
    const int rc = api_getVVs_chunk(&out, &cursor, 200);
    *left = out.vvs;
    return rc;
}
int callDisks(void** left)
{
    api_DisksStats_t out{};
    const int rc = api_getDiskStats(API_DISK_ALL, API_WWN_ALL_VOLUMES, API_SEL_ANY, API_SEL_ANY, API_SEL_ANY, &out);
    *left = out.stats;
    return rc;
}
int callPorts(void** left)
{
    api_PortsStats_t out{};
    const int rc = api_getPortStats(API_PORT_TYPE_ALL, API_SEL_ANY, API_SEL_ANY, API_SEL_ANY, &out);
    *left = out.stats;
    return rc;
}
int callNodes(void** left)
{
    api_NodeList_t out{};
    const int rc = api_getNodes(&out);
    *left = out.nodes;
    return rc;
}
int callVLuns(void** left)
{
    api_VLunsStats_t out{};
    const int rc = api_getVLunStats(0, "", -5, -1, -1, -1, &out);
    *left = out.stats;
    return rc;
}
int callNodeStats(void**)
{
    api_NodeStats_t out{};
    return api_getNodeStats(&out);
}
int callCpu(void**)
{
    cpustats out{};
    api_error_t err{};
    const int rc = api_getNodeCPUStats(0, &out, &err);
    return rc != 0 && err.code != rc ? -1 : rc;
}
int callOpen(void**)
{
    return api_orvOpenForCimserver("admin");
}
int callAuthorize(void**)
{
    return api_authorizeCIMUser("admin", "", "x.getstatisticscollection");
}
int callStringToInt(void**)
{
    uint64_t a = 0, b = 0;
    return api_wwnStringToInt(nullptr, "ABCD", &a, &b);
}
int callIntToString(void**)
{
    char text[API_WWN_TEXT_LEN];
    return api_wwnIntToString(1, 2, text);
}
int callDualIP(void**)
{
    api_ipaddr_t ip{};
    return api_getSystemDualIP(&ip);
}

class Faults : public SimTest, public ::testing::WithParamInterface<FaultCase>
{
};

TEST_P(Faults, InjectedStatusAfterNCallsAndLeftBehindArrays)
{
    const FaultCase& c = GetParam();
    void* left = nullptr;
    ASSERT_EQ(0, orvsim_set_fault(c.call, 1181, 2, 0));
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_EQ(0, c.invoke(&left)) << c.call << " call " << i;
        std::free(left);
        left = nullptr;
    }
    EXPECT_EQ(1181, c.invoke(&left)) << c.call;
    EXPECT_EQ(nullptr, left) << c.call << ": a plain failure allocates nothing";
    EXPECT_EQ(1181, c.invoke(&left)) << c.call << ": the fault stays armed";

    orvsim_clear_faults();
    EXPECT_EQ(0, c.invoke(&left));
    std::free(left);
    left = nullptr;

    ASSERT_EQ(0, orvsim_set_fault_times(c.call, 5, 0, 1, 1));
    const int rc = c.invoke(&left);
    EXPECT_EQ(5, rc);
    std::free(left); // leak-checked under the sanitizers
    left = nullptr;
    EXPECT_EQ(0, c.invoke(&left)) << c.call << ": a one-shot fault fires once";
    std::free(left);
}

INSTANTIATE_TEST_SUITE_P(
    Calls, Faults,
    ::testing::Values(FaultCase{"api_getVolumeStats_chunk", callVolumes}, FaultCase{"api_getVVs_chunk", callVVs},
                      FaultCase{"api_getDiskStats", callDisks}, FaultCase{"api_getPortStats", callPorts},
                      FaultCase{"api_getNodes", callNodes}, FaultCase{"api_getVLunStats", callVLuns},
                      FaultCase{"api_getNodeStats", callNodeStats}, FaultCase{"api_getNodeCPUStats", callCpu},
                      FaultCase{"api_orvOpenForCimserver", callOpen},
                      FaultCase{"api_authorizeCIMUser", callAuthorize},
                      FaultCase{"api_wwnStringToInt", callStringToInt},
                      FaultCase{"api_wwnIntToString", callIntToString},
                      FaultCase{"api_getSystemDualIP", callDualIP}));

TEST_F(SimTest, LeftBehindArraysAreMarkedAndTheCursorStays)
{
    ASSERT_EQ(0, orvsim_set_fault("api_getVolumeStats_chunk", 9, 1, 1));
    uint32_t cursor = 0;
    api_VolumesStats_t first{};
    ASSERT_EQ(0, api_getVolumeStats_chunk(&first, API_WWN_ALL_VOLUMES, 0, &cursor, 200));
    std::free(first.stats);
    const uint32_t after = cursor;
    ASSERT_NE(0u, after);
    api_VolumesStats_t second{};
    EXPECT_EQ(9, api_getVolumeStats_chunk(&second, API_WWN_ALL_VOLUMES, 0, &cursor, 200));
    EXPECT_NE(nullptr, second.stats);
    EXPECT_EQ(after, cursor);
    std::free(second.stats);
}

// An empty chunk whose cursor still says "more": a caller must stop on it
// rather than ask again for ever.
TEST_F(SimTest, EmptyChunkWithALiveCursorOnDemand)
{
    load(volumesModel(250));
    const struct
    {
        const char* call;
        std::function<int32_t(uint32_t*, uint32_t*)> invoke; // status; records
    } cases[] = {
        {"api_getVolumeStats_chunk",
         [](uint32_t* cursor, uint32_t* count)
         {
             api_VolumesStats_t out{};
             const int32_t rc =
                 api_getVolumeStats_chunk(&out, API_WWN_ALL_VOLUMES, API_WWN_ALL_VOLUMES, cursor, 200);
             std::free(out.stats);
             *count = out.count;
             return rc;
         }},
        {"api_getVVs_chunk",
         [](uint32_t* cursor, uint32_t* count)
         {
             api_VVsInfo_t out{};
             const int32_t rc = api_getVVs_chunk(&out, cursor, 200);
             std::free(out.vvs);
             *count = out.count;
             return rc;
         }},
    };
    for (const auto& c : cases)
    {
        for (int after : {0, 1})
        {
            orvsim_clear_faults();
            const std::string spec = std::string(c.call) + "=empty@" + std::to_string(after) + "*1";
            ASSERT_EQ(0, orvsim_set_faults_spec(spec.c_str())) << spec;
            uint32_t cursor = 0;
            uint32_t count = 0;
            std::vector<uint32_t> counts;
            std::vector<uint32_t> cursors;
            do
            {
                ASSERT_EQ(0, c.invoke(&cursor, &count)) << spec;
                counts.push_back(count);
                cursors.push_back(cursor);
            } while (cursor != 0 && counts.size() < 10);
            // The withheld records are skipped: the cursor moves past them.
            const std::vector<uint32_t> expectedCounts =
                after == 0 ? std::vector<uint32_t>{0, 50} : std::vector<uint32_t>{200, 0, 0};
            const std::vector<uint32_t> expectedCursors =
                after == 0 ? std::vector<uint32_t>{200, 0} : std::vector<uint32_t>{200, 250, 0};
            EXPECT_EQ(expectedCounts, counts) << spec;
            EXPECT_EQ(expectedCursors, cursors) << spec;
        }
    }
    // Only the chunked calls can answer empty.
    EXPECT_NE(0, orvsim_set_faults_spec("api_getDiskStats=empty"));
}

TEST_F(SimTest, UnknownFaultsAreRefused)
{
    EXPECT_NE(0, orvsim_set_fault("api_nothing", 5, 0, 0));
    EXPECT_NE(0, orvsim_set_fault("api_getDiskStats", 0, 0, 0));
    EXPECT_NE(0, orvsim_set_fault(nullptr, 5, 0, 0));
}

} // namespace
