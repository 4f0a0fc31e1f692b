// Volume and VLUN records are written whole at query time from what the
// model keeps per element (shared names and host IDs, side records for
// model-given counters): every byte must come back as the model gave it.
#include "SimFixture.h"

#include <cstring>
#include <iterator>
#include <string>
#include <vector>

namespace
{

// Every counter and time is given, so each record is fully known. VLUN
// positions 0, 2, 4 fall on volume 0 and 1, 3 on volume 1.
const char* const kGivenModel = R"({
  "bootTime": 1700000000,
  "volumes": {"items": [
    {"name": "alpha", "wwn": "60002AC0000000000000000000000A01", "vvID": 7, "time": 1700000100,
     "sizeMiB": 2048, "usedMiB": 100, "thin": false,
     "stats": {"read": {"count": 4, "bytes": 4096, "ticks": 40}, "begin": 1, "now": 2,
               "busyticks": 1, "qlen": 3},
     "cacheRead": {"hit": 3, "miss": 1}},
    {"name": "a-name-of-exactly-31-characters", "wwn": "60002ac0000000000000000000000a02", "vvID": 8,
     "started": false, "statsGen": 5, "time": 1700000200, "sizeMiB": 4096, "usedMiB": 4096,
     "thin": true, "blockSize": 4096, "cacheWrite": {"hit": 9}}
  ]},
  "vluns": {"items": [
    {"lunID": 1, "portID": "0x89", "vlunType": 1, "portType": "fc", "hostHwid": "10000000C9000001",
     "time": 1700000300, "stats": {"read": {"count": 11}}},
    {"lunID": 2, "vvName": "ghost", "portID": "0x8A", "vlunType": 2, "portType": "iscsi",
     "hostHwid": "iqn.1994-05.com.example:db", "time": 1700000301, "stats": {"write": {"count": 12}}},
    {"lunID": 3, "vvName": "a-name-of-exactly-31-characters", "portID": "0x91", "vlunType": 3,
     "portType": "fc", "hostHwid": "10000000C9000001", "time": 1700000302,
     "stats": {"begin": 5, "now": 6, "busyticks": 7, "qlen": 8}},
    {"lunID": 4, "vvName": "ghost", "portID": "0xFFFC", "vlunType": 0, "portType": "unknown",
     "hostHwid": "", "time": 1700000303, "stats": {}},
    {"lunID": 4294967295, "portID": "0x89", "vlunType": 4, "portType": "sas",
     "hostHwid": "iqn.1994-05.com.example:db", "time": -1, "stats": {"read": {"bytes": 99}}}
  ]}
})";

struct VLunCase
{
    uint32_t lunID;
    const char* vvName;
    lpid_t portID;
    uint32_t vlunType;
    port_type_t portType;
    const char* host;
    time_t time;
    uint64_t readCount, writeCount, readBytes, begin, now, busyticks;
    uint32_t qlen;
};

const VLunCase kVLuns[] = {
    {1, "alpha", 0x89, 1, PORT_TYPE_FC, "10000000C9000001", 1700000300, 11, 0, 0, 0, 0, 0, 0},
    {2, "ghost", 0x8A, 2, PORT_TYPE_ISCSI, "iqn.1994-05.com.example:db", 1700000301, 0, 12, 0, 0, 0,
     0, 0},
    {3, "a-name-of-exactly-31-characters", 0x91, 3, PORT_TYPE_FC, "10000000C9000001", 1700000302, 0,
     0, 0, 5, 6, 7, 8},
    {4, "ghost", 0xFFFC, 0, PORT_TYPE_UNKNOWN, "", 1700000303, 0, 0, 0, 0, 0, 0, 0},
    {4294967295u, "alpha", 0x89, 4, PORT_TYPE_SAS, "iqn.1994-05.com.example:db", -1, 0, 0, 99, 0, 0,
     0, 0},
};

api_VLunStats_t expectedVLun(const VLunCase& c)
{
    api_VLunStats_t r;
    std::memset(&r, 0, sizeof r);
    r.time = c.time;
    r.lunID = c.lunID;
    std::strcpy(r.vvName, c.vvName);
    r.portID = c.portID;
    r.vlunType = c.vlunType;
    r.portType = c.portType;
    std::strcpy(r.host_hwid, c.host);
    r.stats.read.count = c.readCount;
    r.stats.read.bytes = c.readBytes;
    r.stats.write.count = c.writeCount;
    r.stats.begin = c.begin;
    r.stats.now = c.now;
    r.stats.busyticks = c.busyticks;
    r.stats.qlen = c.qlen;
    return r;
}

template <class Rec> bool sameBytes(const Rec& a, const Rec& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

std::vector<uint32_t> lunsOf(const char* vvName)
{
    api_VLunsStats_t out{};
    EXPECT_EQ(
        0, api_getVLunStats(0, vvName, API_LUN_ALL, API_NSP_ALL, API_NSP_ALL, API_NSP_ALL, &out));
    Freed<api_VLunStats_t> f{out.stats};
    std::vector<uint32_t> luns;
    for (uint32_t i = 0; i < out.count; ++i)
    {
        luns.push_back(out.stats[i].lunID);
    }
    return luns;
}

} // namespace

TEST_F(SimTest, VLunRecordsComeBackWholeWithSharedNamesAndHosts)
{
    load(kGivenModel);
    orvsim_set_time(1700009999);
    api_VLunsStats_t out{};
    ASSERT_EQ(
        0, api_getVLunStats(0, nullptr, API_LUN_ALL, API_NSP_ALL, API_NSP_ALL, API_NSP_ALL, &out));
    Freed<api_VLunStats_t> f{out.stats};
    ASSERT_EQ(std::size(kVLuns), out.count);
    for (size_t i = 0; i < out.count; ++i)
    {
        const api_VLunStats_t& got = out.stats[i];
        SCOPED_TRACE("VLUN " + std::to_string(i));
        EXPECT_STREQ(kVLuns[i].vvName, got.vvName);
        EXPECT_STREQ(kVLuns[i].host, got.host_hwid);
        EXPECT_EQ(kVLuns[i].time, got.time);
        EXPECT_TRUE(sameBytes(expectedVLun(kVLuns[i]), got))
            << "a field, its tail or padding differs";
    }

    // Selection by name sees the same names: a volume's own, one borrowed
    // from another position, and one that names no volume.
    const struct
    {
        const char* name;
        std::vector<uint32_t> luns;
    } kByName[] = {
        {"alpha", {1, 4294967295u}},
        {"ghost", {2, 4}},
        {"a-name-of-exactly-31-characters", {3}},
        {"alph", {}},
        {"ghost2", {}},
    };
    for (const auto& c : kByName)
    {
        EXPECT_EQ(c.luns, lunsOf(c.name)) << c.name;
    }
}

TEST_F(SimTest, VolumeRecordsComeBackWhole)
{
    load(kGivenModel);
    orvsim_set_time(1700009999);

    api_VolumeStats_t v0, v1;
    std::memset(&v0, 0, sizeof v0);
    std::memset(&v1, 0, sizeof v1);
    std::strcpy(v0.volDeviceID, "60002AC0000000000000000000000A01");
    v0.time = 1700000100;
    v0.vvID = 7;
    std::strcpy(v0.vvName, "alpha");
    v0.vvStarted = 1;
    v0.stats_gen = 1;
    v0.stats.read = {4, 4096, 40};
    v0.stats.begin = 1;
    v0.stats.now = 2;
    v0.stats.busyticks = 1;
    v0.stats.qlen = 3;
    v0.cacheRead = {3, 1};
    std::strcpy(v1.volDeviceID, "60002AC0000000000000000000000A02");
    v1.time = 1700000200;
    v1.vvID = 8;
    std::strcpy(v1.vvName, "a-name-of-exactly-31-characters");
    v1.stats_gen = 5;
    v1.cacheWrite = {9, 0};

    api_VolumesStats_t out{};
    ASSERT_EQ(0, api_getVolumeStats_chunk(&out, API_WWN_ALL_VOLUMES, 0, nullptr, 0));
    Freed<api_VolumeStats_t> f{out.stats};
    ASSERT_EQ(2u, out.count);
    EXPECT_STREQ(v0.volDeviceID, out.stats[0].volDeviceID);
    EXPECT_STREQ(v1.vvName, out.stats[1].vvName);
    EXPECT_TRUE(sameBytes(v0, out.stats[0]));
    EXPECT_TRUE(sameBytes(v1, out.stats[1]));

    api_VVInfo_t i0, i1;
    std::memset(&i0, 0, sizeof i0);
    std::memset(&i1, 0, sizeof i1);
    std::strcpy(i0.vvName, "alpha");
    std::strcpy(i0.vvWWN, v0.volDeviceID);
    i0.vvID = 7;
    i0.started = 1;
    i0.blockSize = 512;
    i0.sizeMiB = 2048;
    i0.usedMiB = 100;
    std::strcpy(i1.vvName, v1.vvName);
    std::strcpy(i1.vvWWN, v1.volDeviceID);
    i1.vvID = 8;
    i1.thin = 1;
    i1.blockSize = 4096;
    i1.sizeMiB = 4096;
    i1.usedMiB = 4096;
    api_VVsInfo_t vvs{};
    ASSERT_EQ(0, api_getVVs_chunk(&vvs, nullptr, 0));
    Freed<api_VVInfo_t> g{vvs.vvs};
    ASSERT_EQ(2u, vvs.count);
    EXPECT_STREQ(i0.vvWWN, vvs.vvs[0].vvWWN);
    EXPECT_TRUE(sameBytes(i0, vvs.vvs[0]));
    EXPECT_TRUE(sameBytes(i1, vvs.vvs[1]));
}

// Model-given times and counters belong to their element only: generated
// neighbours keep moving, a given time leaves the counters generated.
TEST_F(SimTest, GivenSamplesStayWithTheirElements)
{
    load(R"({"bootTime": 1700000000,
      "volumes": {"count": 4, "items": [{}, {"time": 1234}, {"stats": {"qlen": 77}}]},
      "vluns": {"count": 4, "items": [{}, {"stats": {"read": {"count": 5}}}, {"time": 99}]}})");
    for (const int64_t t : {1700000500, 1700086400})
    {
        SCOPED_TRACE(t);
        orvsim_set_time(t);
        const uint64_t nowUs = static_cast<uint64_t>(t) * 1000000u;
        api_VolumesStats_t vols{};
        ASSERT_EQ(0, api_getVolumeStats_chunk(&vols, API_WWN_ALL_VOLUMES, 0, nullptr, 0));
        Freed<api_VolumeStats_t> f{vols.stats};
        ASSERT_EQ(4u, vols.count);
        const time_t volTimes[] = {t, 1234, t, t};
        const uint64_t volNows[] = {nowUs, nowUs, 0, nowUs};
        for (int i = 0; i < 4; ++i)
        {
            EXPECT_EQ(volTimes[i], vols.stats[i].time) << "volume " << i;
            EXPECT_EQ(volNows[i], vols.stats[i].stats.now) << "volume " << i;
        }
        EXPECT_EQ(77u, vols.stats[2].stats.qlen);
        EXPECT_EQ(0u, vols.stats[2].stats.read.count + vols.stats[2].cacheRead.hit);
        EXPECT_GT(vols.stats[1].stats.read.count, 0u);

        api_VLunsStats_t vluns{};
        ASSERT_EQ(0, api_getVLunStats(0, nullptr, API_LUN_ALL, API_NSP_ALL, API_NSP_ALL,
                                      API_NSP_ALL, &vluns));
        Freed<api_VLunStats_t> g{vluns.stats};
        ASSERT_EQ(4u, vluns.count);
        const time_t lunTimes[] = {t, t, 99, t};
        const uint64_t lunNows[] = {nowUs, 0, nowUs, nowUs};
        for (int i = 0; i < 4; ++i)
        {
            EXPECT_EQ(lunTimes[i], vluns.stats[i].time) << "VLUN " << i;
            EXPECT_EQ(lunNows[i], vluns.stats[i].stats.now) << "VLUN " << i;
        }
        EXPECT_EQ(5u, vluns.stats[1].stats.read.count);
    }
}

// Lookups by WWN: duplicates answer with the first volume of that WWN,
// near misses (one word equal) with nothing.
TEST_F(SimTest, WwnLookupFindsTheFirstVolumeAndNothingElse)
{
    load(R"({"volumes": {"count": 6, "items": [
      {"name": "b1", "wwn": "2000000000000000B"}, {"name": "a", "wwn": "1000000000000000A"},
      {"name": "b2", "wwn": "2000000000000000B"}, {"name": "c", "wwn": "3000000000000000B"},
      {"name": "z", "wwn": "0"}]}})");
    const struct
    {
        uint64_t hi, lo;
        const char* name; // null: no volume
    } kCases[] = {
        {2, 0xB, "b1"},    {1, 0xA, "a"},           {3, 0xB, "c"},     {0, 0, "z"},
        {2, 0xA, nullptr}, {1, 0xB, nullptr},       {2, 0xC, nullptr}, {4, 0xB, nullptr},
        {0, 0xB, nullptr}, {~0ULL, ~0ULL, nullptr},
    };
    for (const auto& c : kCases)
    {
        api_VolumesStats_t out{};
        ASSERT_EQ(0, api_getVolumeStats_chunk(&out, c.hi, c.lo, nullptr, 0));
        Freed<api_VolumeStats_t> f{out.stats};
        ASSERT_EQ(c.name ? 1u : 0u, out.count) << c.hi << ":" << c.lo;
        if (c.name)
        {
            EXPECT_STREQ(c.name, out.stats[0].vvName);
        }
    }

    // Among many volumes sharing one WWN the first still answers.
    std::string many = R"({"volumes": {"items": [)";
    for (int i = 0; i < 300; ++i)
    {
        many += std::string(i ? "," : "") + R"({"name": "d)" + std::to_string(i) +
                R"(", "wwn": ")" + (i % 7 == 3 ? "8" : "7") + "\"}";
    }
    load(many + "]}}");
    const struct
    {
        uint64_t lo;
        const char* name;
    } kFirst[] = {{7, "d0"}, {8, "d3"}};
    for (const auto& c : kFirst)
    {
        api_VolumesStats_t out{};
        ASSERT_EQ(0, api_getVolumeStats_chunk(&out, 0, c.lo, nullptr, 0));
        Freed<api_VolumeStats_t> f{out.stats};
        ASSERT_EQ(1u, out.count);
        EXPECT_STREQ(c.name, out.stats[0].vvName);
    }

    // Every volume of a larger generated array is found by its own WWN.
    load(R"({"volumes": {"count": 2000}, "vluns": {"count": 0}})");
    api_VolumesStats_t all{};
    ASSERT_EQ(0, api_getVolumeStats_chunk(&all, API_WWN_ALL_VOLUMES, 0, nullptr, 0));
    Freed<api_VolumeStats_t> g{all.stats};
    ASSERT_EQ(2000u, all.count);
    for (uint32_t i = 0; i < all.count; ++i)
    {
        uint64_t hi = 0, lo = 0;
        ASSERT_EQ(0, api_wwnStringToInt(nullptr, all.stats[i].volDeviceID, &lo, &hi));
        api_VolumesStats_t one{};
        ASSERT_EQ(0, api_getVolumeStats_chunk(&one, hi, lo, nullptr, 0));
        Freed<api_VolumeStats_t> h{one.stats};
        ASSERT_EQ(1u, one.count) << i;
        ASSERT_EQ(i, one.stats[0].vvID);
    }
}
