// The record-level builders of the statistical-data providers, fed with
// records directly: busy percentage, identifier forms and their parsers.

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "ORV_LUNStatisticalDataProvider.h"
#include "ORV_NodeStatisticalDataProvider.h"
#include "ORV_VolumeStatisticalDataProvider.h"
#include "StatsTestSupport.h"

using namespace orvtest;
using namespace orvstats;

namespace
{

typedef ORV_VolumeStatisticalDataProvider Volume;
typedef ORV_LUNStatisticalDataProvider Lun;
typedef ORV_NodeStatisticalDataProvider Node;

api_stats_t interval(Uint64 begin, Uint64 now, Uint64 busy)
{
    api_stats_t s;
    memset(&s, 0, sizeof(s));
    s.begin = begin;
    s.now = now;
    s.busyticks = busy;
    return s;
}

TEST(PercentBusy, RoundsNarrowsAndCaps)
{
    struct Case
    {
        const char* what;
        Uint64 begin, now, busy;
        Uint32 expected;
    } cases[] = {
        {"no interval", 500, 500, 100, 0},
        {"994 tenths", 0, 1000, 994, 99},
        {"995 tenths round up", 0, 1000, 995, 100},
        {"1004 tenths", 0, 1000, 1004, 100},
        {"1005 tenths capped", 0, 1000, 1005, 100},
        {"5 tenths round up", 0, 1000, 5, 1},
        // Only the low halves count: a 2^31 interval reads as negative.
        {"negative low difference", 0, 0x80000000ULL, 0x40000000ULL, 0},
        {"now before begin", 1000, 500, 10, 0},
        // ...and a wrap of the low word is no obstacle: 0x100 - 0xFFFFFF00 = 512.
        {"low word wraps", 0xFFFFFF00ULL, 0x100000100ULL, 256, 50},
        // The high halves are ignored altogether.
        {"high halves differ", 0x500000000ULL, 0x900000000ULL + 1000, 250, 25},
        // busy * 1000 wraps at 2^64: 2^61 * 1000 = 125 * 2^64 = 0.
        {"product wraps", 0, 1000, 1ULL << 61, 0},
        // The tenths are narrowed to 32 bits: (2^32 + 5) -> 5 -> 1 %.
        {"tenths narrowed", 0, 1000, 4294967301ULL, 1},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(c.expected, Volume::percentBusy(interval(c.begin, c.now, c.busy))) << c.what;
    }
}

api_VLunStats_t vlun(Uint32 lunID, const char* vvName, lpid_t portID, Uint32 type,
                     const char* host)
{
    api_VLunStats_t r;
    memset(&r, 0, sizeof(r));
    r.lunID = lunID;
    snprintf(r.vvName, sizeof(r.vvName), "%s", vvName);
    r.portID = portID;
    r.vlunType = type;
    snprintf(r.host_hwid, sizeof(r.host_hwid), "%s", host);
    return r;
}

TEST(LunInstanceId, LongAndShortForms)
{
    // Port position 0x0193 = node 3, slot 2, port 3.
    const lpid_t pos = (3 << 7) | (2 << 3) | 3;
    struct Case
    {
        Uint32 lun;
        lpid_t port;
        Uint32 type;
        const char* expected;
    } cases[] = {
        {5, pos, 1, "QZ_KYRO:VLUN_5_vol01:3:2:3_10000000C9AB1234"},
        {5, pos, 2, "QZ_KYRO:VLUN_5_vol01:3:2:3_10000000C9AB1234"},
        {5, pos, 4, "QZ_KYRO:VLUN_5_vol01:3:2:3_10000000C9AB1234"},
        {9, 0xFFFC, 3, "QZ_KYRO:VLUN_9_vol01:253:-7:-8_10000000C9AB1234"},
        {0, 0x03FF, 1, "QZ_KYRO:VLUN_0_vol01:7:15:7_10000000C9AB1234"},
        {5, pos, 0, "QZ_KYRO:VLUN_5-Stats"},
        {5, pos, 5, "QZ_KYRO:VLUN_5-Stats"},
        {4294967295u, pos, 0, "QZ_KYRO:VLUN_-1-Stats"},
        {2147483648u, pos, 1, "QZ_KYRO:VLUN_-2147483648_vol01:3:2:3_10000000C9AB1234"},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(c.expected,
                  str(Lun::makeInstanceID(vlun(c.lun, "vol01", c.port, c.type, "10000000C9AB1234"))));
    }

    // The longest fields a record can hold still fit the ID buffer whole.
    std::string host(223, 'h');
    std::string id = str(Lun::makeInstanceID(
        vlun(2147483648u, "abcdefghijklmnopqrstuvwxyz01234", 0xFFFC, 1, host.c_str())));
    EXPECT_EQ("QZ_KYRO:VLUN_-2147483648_abcdefghijklmnopqrstuvwxyz01234:253:-7:-8_" + host, id);
}

struct Parsed
{
    Sint32 status;
    Sint32 lun, node, slot, port;
    std::string name, host;
};

Parsed parse(const char* id)
{
    Parsed p;
    p.lun = -5;
    p.node = p.slot = p.port = -1;
    char name[Lun::VV_NAME_SIZE];
    char host[Lun::HOST_HWID_SIZE];
    strcpy(name, "preset");
    strcpy(host, "preset");
    p.status = Lun::parseID(id, &p.lun, name, &p.node, &p.slot, &p.port, host);
    p.name = name;
    p.host = host;
    return p;
}

TEST(LunParseId, FieldCountingAndPresets)
{
    struct Case
    {
        const char* id;
        Sint32 status, lun, node, slot, port;
        const char* name;
        const char* host;
    } cases[] = {
        {"QZ_KYRO:VLUN_5_vol01:1:2:3_10000000C9AB1234", 0, 5, 1, 2, 3, "vol01", "10000000C9AB1234"},
        {"QZ_KYRO:VLUN_6_vol02:253:-7:-8_10000000c9ab5678", 0, 6, 253, -7, -8, "vol02",
         "10000000c9ab5678"},
        // Three fields: only the LUN is taken, the rest keeps the presets.
        {"QZ_KYRO:VLUN_7-Stats", 0, 7, -1, -1, -1, "preset", "preset"},
        // Neither discarded word is compared with anything.
        {"ANY:THING_12_v:0:0:0_h", 0, 12, 0, 0, 0, "v", "h"},
        // A ':' in the volume name splits there; the scan stops at "b".
        {"QZ_KYRO:VLUN_3_a:b:1:2:3_h", 0, 3, -1, -1, -1, "a", "preset"},
        // Whitespace ends the host.
        {"QZ_KYRO:VLUN_3_v:1:2:3_host one", 0, 3, 1, 2, 3, "v", "host"},
        // A name longer than the buffer is cut to 31 characters.
        {"QZ_KYRO:VLUN_1_abcdefghijklmnopqrstuvwxyz0123456789:1:2:3_h", 0, 1, 1, 2, 3,
         "abcdefghijklmnopqrstuvwxyz01234", "h"},
        {"QZ_KYRO:VLUN_x", 1181, -5, -1, -1, -1, "preset", "preset"},
        {"QZ_KYRO:0123456789ABCDEF0123456789ABCDEF-Stats", 1181, -5, -1, -1, -1, "preset",
         "preset"},
        {":VLUN_1", 1181, -5, -1, -1, -1, "preset", "preset"},
        {"", 1181, -5, -1, -1, -1, "preset", "preset"},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.id);
        Parsed p = parse(c.id);
        EXPECT_EQ(c.status, p.status);
        EXPECT_EQ(c.lun, p.lun);
        EXPECT_EQ(c.node, p.node);
        EXPECT_EQ(c.slot, p.slot);
        EXPECT_EQ(c.port, p.port);
        EXPECT_EQ(c.name, p.name);
        EXPECT_EQ(c.host, p.host);
    }
}

TEST(LunParseId, HostileIdsCannotOverrunTheBuffers)
{
    std::string huge = "QZ_KYRO:VLUN_1_" + std::string(5000, 'n') + ":1:2:3_" +
                       std::string(5000, 'h');
    Parsed p = parse(huge.c_str());
    EXPECT_EQ(0, p.status);
    EXPECT_EQ(31u, p.name.size());
    EXPECT_EQ(223u, p.host.size());
    Sint32 v = 0;
    EXPECT_EQ(1181, Lun::parseID("QZ_KYRO:VLUN_1-Stats", &v, NULL, &v, &v, &v, NULL));
}

TEST(VolumeParseWwn, SelectorFromInstanceId)
{
    const uint64_t ALL = 0xFFFFFFFFFFFFFFF6ULL;
    struct Case
    {
        const char* id;
        uint64_t wwn, wwn_re;
    } cases[] = {
        {"QZ_KYRO:0123456789ABCDEF0123456789ABCDEF-Stats", 0x0123456789ABCDEFULL,
         0x0123456789ABCDEFULL},
        {"QZ_KYRO:60002AC0000000000000000000001234-Stats", 0x60002AC000000000ULL, 0x1234ULL},
        // The part after the dash is never looked at.
        {"QZ_KYRO:60002ac0000000000000000000001234-Whatever", 0x60002AC000000000ULL, 0x1234ULL},
        {"xyzQZ_KYRO:FF-Stats", 0, 0xFF},
        // Only the text before the first dash is converted.
        {"QZ_KYRO:0123-4567-Stats", 0, 0x123},
        {"QZ_KYRO:0123456789ABCDEF0123456789ABCDEF", ALL, 0},
        {"QZ_KYRO:-Stats", ALL, 0},
        {"0123456789ABCDEF0123456789ABCDEF-Stats", ALL, 0},
        // Malformed hexadecimal is rejected by the library: defaults stand.
        {"QZ_KYRO:XYZ-Stats", ALL, 0},
        {"", ALL, 0},
    };
    for (const Case& c : cases)
    {
        uint64_t wwn = 7, wwn_re = 7;
        Volume::parseWWN(c.id, &wwn_re, &wwn);
        EXPECT_EQ(c.wwn, wwn) << c.id;
        EXPECT_EQ(c.wwn_re, wwn_re) << c.id;
    }
    // Either pointer may be left out.
    uint64_t wwn = 0;
    Volume::parseWWN("QZ_KYRO:FF-Stats", NULL, &wwn);
    EXPECT_EQ(0u, wwn);
    Volume::parseWWN("QZ_KYRO:FF-Stats", NULL, NULL);
}

TEST(NodeIds, NameFromInstanceIdAndNodeOfPort)
{
    const char* cases[][2] = {
        {"QZ_KYRO:n0-Stats", "n0"}, {"abcQZ_KYRO:7-Stats", "7"}, {"QZ_KYRO:a-Stats-Stats", "a"},
        {"QZ_KYRO:-Stats", ""},     {"QZ_KYRO:7", ""},            {"7-Stats", ""},
    };
    for (auto& c : cases)
    {
        EXPECT_EQ(c[1], str(Node::extractNodeIDFromInstID(c[0]))) << c[0];
    }
    EXPECT_EQ(1u, Node::nodeOfPort(0x0080));
    EXPECT_EQ(2u, Node::nodeOfPort(0x0100));
    // Bits above the node field are not part of it.
    EXPECT_EQ(0u, Node::nodeOfPort(0x0400));
    EXPECT_EQ(253u, Node::nodeOfPort(0xFFFC));
}

} // namespace

// A build reads the library's records once, front to back. The pages it has
// read past go back to the system; one it has yet to read must not.
TEST(ReleaseBehind, GivesBackOnlyWhatWasReadPast)
{
    struct Record
    {
        unsigned char bytes[360];
    };
    const size_t count = 30000; // about 10 MB, several release batches
    Record* records = static_cast<Record*>(malloc(count * sizeof(Record)));
    ASSERT_NE(records, nullptr);
    memset(records, 0xAB, count * sizeof(Record));
    {
        ORV_VolumeStatisticalDataProvider::ReleaseBehind released(records);
        for (size_t i = 0; i < count; i++)
        {
            for (unsigned char b : records[i].bytes)
            {
                ASSERT_EQ(b, 0xAB) << "record " << i << " was given back before it was read";
            }
            released.readUpTo(&records[i + 1]);
        }
    }
    const uintptr_t page = (uintptr_t)sysconf(_SC_PAGESIZE);
    const uintptr_t first = ((uintptr_t)records + page - 1) & ~(page - 1);
    std::vector<unsigned char> resident(4);
    ASSERT_EQ(mincore((void*)first, 4 * page, resident.data()), 0);
    for (unsigned char r : resident)
    {
        EXPECT_EQ(r & 1, 0) << "the first pages read were kept";
    }
    free(records);
}
