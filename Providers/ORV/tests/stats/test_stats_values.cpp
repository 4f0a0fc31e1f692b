// Counter values of the six statistical-data classes, through the object
// manager, against models/exact.json. Every expected figure below was worked
// out by hand from that file; the comments show the arithmetic.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "StatsTestSupport.h"

using namespace orvtest;
using namespace orvstats;

namespace
{

const CIMName VOLUME("ORV_VolumeStatisticalData");
const CIMName DISK("ORV_DiskStatisticalData");
const CIMName PORT("ORV_PortStatisticalData");
const CIMName NODE("ORV_NodeStatisticalData");
const CIMName ARRAY("ORV_ArrayStatisticalData");
const CIMName LUN("ORV_LUNStatisticalData");

const Uint64 U64_MAX = 18446744073709551615ULL;

// The uint64 I/O block every class carries, in one row.
struct IoCounters
{
    Uint64 total, read, write, kbTotal, kbWritten, kbRead, ioTime, readTime, writeTime;
};

void expectIo(const CIMInstance& inst, const IoCounters& e)
{
    EXPECT_EQ(e.total, get<Uint64>(inst, "TotalIOs"));
    EXPECT_EQ(e.read, get<Uint64>(inst, "ReadIOs"));
    EXPECT_EQ(e.write, get<Uint64>(inst, "WriteIOs"));
    EXPECT_EQ(e.kbTotal, get<Uint64>(inst, "KBytesTransferred"));
    EXPECT_EQ(e.kbWritten, get<Uint64>(inst, "KBytesWritten"));
    EXPECT_EQ(e.kbRead, get<Uint64>(inst, "KBytesRead"));
    EXPECT_EQ(e.ioTime, get<Uint64>(inst, "IOTimeCounter"));
    EXPECT_EQ(e.readTime, get<Uint64>(inst, "ReadIOTimeCounter"));
    EXPECT_EQ(e.writeTime, get<Uint64>(inst, "WriteIOTimeCounter"));
}

class StatsValuesTest : public ModuleFixture
{
protected:
    void SetUp() override
    {
        ModuleFixture::SetUp();
        loadModelFile("exact.json");
        if (HasFatalFailure())
        {
            return;
        }
        host = simHostName();
    }

    // Every instance carries this system's host, the namespace and one key.
    void expectPathShape(const CIMInstance& inst, const CIMName& cls)
    {
        CIMObjectPath p = inst.getPath();
        EXPECT_EQ(host, str(p.getHost()));
        EXPECT_EQ("root/orv", str(p.getNameSpace().getString()));
        EXPECT_TRUE(p.getClassName().equal(cls));
        ASSERT_EQ(1u, p.getKeyBindings().size());
        EXPECT_EQ(text(inst, "InstanceID"), instanceIdOf(p));
    }

    std::string host;
};

TEST_F(StatsValuesTest, VolumesCarryHandComputedCounters)
{
    Array<CIMInstance> all;
    std::string log = captureLog([&]() { all = enumerateInstances(READER_USER, VOLUME); });
    ASSERT_EQ(4u, all.size());
    // Library order is kept.
    EXPECT_EQ("QZ_KYRO:0123456789ABCDEF0123456789ABCDEF-Stats", instanceIdOf(all[0].getPath()));
    EXPECT_EQ("QZ_KYRO:60002AC00000000000000000000BAD00-Stats", instanceIdOf(all[3].getPath()));

    CIMInstance v1 = all[0];
    expectPathShape(v1, VOLUME);
    EXPECT_EQ("Volume vol01 Statistical Data", text(v1, "ElementName"));
    EXPECT_EQ(8, get<Uint16>(v1, "ElementType"));
    EXPECT_EQ(dateOf(1700003600), date(v1, "StatisticTime"));
    // (now - begin) = 3600 s of microseconds.
    EXPECT_EQ(dateOf(1700000000), date(v1, "StartStatisticTime"));
    // 3+5 I/Os; bytes 1023+2049 = 3072 -> 3 KB, 2049 -> 2, 1023 -> 0.
    expectIo(v1, {8, 3, 5, 3, 2, 0, 71, 30, 41});
    EXPECT_EQ(1u, get<Uint64>(v1, "ReadHitIOs"));
    EXPECT_EQ(4u, get<Uint64>(v1, "WriteHitIOs"));
    EXPECT_EQ(2u, get<Uint64>(v1, "ReadMissIOs"));
    EXPECT_EQ(1u, get<Uint64>(v1, "WriteMissIOs"));
    // 30/3, 41/5, 71/8.
    EXPECT_EQ(10u, get<Uint64>(v1, "ReadServiceTimeCounter"));
    EXPECT_EQ(8u, get<Uint64>(v1, "WriteServiceTimeCounter"));
    EXPECT_EQ(8u, get<Uint64>(v1, "TotalServiceTimeCounter"));
    EXPECT_EQ(2u, get<Uint32>(v1, "QueueLength"));

    CIMInstance v2 = all[1];
    // No reads but read ticks: the read service time stays 0.
    EXPECT_EQ(0u, get<Uint64>(v2, "ReadServiceTimeCounter"));
    EXPECT_EQ(10u, get<Uint64>(v2, "WriteServiceTimeCounter"));
    EXPECT_EQ(12u, get<Uint64>(v2, "TotalServiceTimeCounter"));
    // 995 * 1000 / 1000 = 995 tenths: rounds up to 100.
    EXPECT_EQ(100u, get<Uint32>(v2, "PercentBusy"));
    EXPECT_EQ(dateOf(1700003600), date(v2, "StartStatisticTime"));

    CIMInstance v3 = all[2];
    // A 31-character name is kept whole.
    EXPECT_EQ("Volume abcdefghijklmnopqrstuvwxyz01234 Statistical Data", text(v3, "ElementName"));
    // Sums wrap at 2^64: max+2 = 1, max+1025 = 1024 (-> 1 KB), max+1 = 0.
    expectIo(v3, {1, U64_MAX, 2, 1, 1, U64_MAX >> 10, 0, U64_MAX, 1});
    EXPECT_EQ(1u, get<Uint64>(v3, "ReadServiceTimeCounter"));
    EXPECT_EQ(0u, get<Uint64>(v3, "WriteServiceTimeCounter"));
    EXPECT_EQ(0u, get<Uint64>(v3, "TotalServiceTimeCounter"));

    // now < begin: the start would lie ~1.8e13 s back; the epoch stands in.
    EXPECT_EQ(dateOf(0), date(all[3], "StartStatisticTime"));
    EXPECT_EQ(dateOf(1700003600), date(all[3], "StatisticTime"));
    EXPECT_NE(std::string::npos,
              log.find("Error calculating StartStatisticTime for VolumeStatisticalData: "
                       "Volume backwards Statistical Data, "))
        << log;
}

TEST_F(StatsValuesTest, DisksCarryHandComputedCountersAndKeepDuplicates)
{
    Array<CIMInstance> all = enumerateInstances(READER_USER, DISK);
    ASSERT_EQ(4u, all.size());
    // Both drives reporting ...1001 are listed.
    EXPECT_EQ(instanceIdOf(all[1].getPath()), instanceIdOf(all[2].getPath()));

    CIMInstance d0 = all[0];
    expectPathShape(d0, DISK);
    EXPECT_EQ("QZ_KYRO:5000C50000001000-Stats", text(d0, "InstanceID"));
    EXPECT_EQ("Disk 0:0:0 Statistical Data", text(d0, "ElementName"));
    EXPECT_EQ(10, get<Uint16>(d0, "ElementType"));
    EXPECT_EQ(dateOf(1700003600), date(d0, "StatisticTime"));
    EXPECT_EQ(dateOf(1700003600), date(d0, "StartStatisticTime"));
    expectIo(d0, {10, 10, 0, 10, 0, 10, 55, 55, 0});
    EXPECT_EQ(5u, get<Uint64>(d0, "ReadServiceTimeCounter"));
    EXPECT_EQ(0u, get<Uint64>(d0, "WriteServiceTimeCounter"));
    EXPECT_EQ(5u, get<Uint64>(d0, "TotalServiceTimeCounter"));
    EXPECT_EQ(1u, get<Uint32>(d0, "QueueLength"));

    EXPECT_FALSE(hasProperty(all[1], "ReadHitIOs") && !valueOf(all[1], "ReadHitIOs").isNull());

    CIMInstance d3 = all[3];
    // 1000 + 24 bytes = 1 KB in all, 0 each way; 40 ticks over 7 I/Os.
    expectIo(d3, {7, 3, 4, 1, 0, 0, 40, 31, 9});
    EXPECT_EQ(10u, get<Uint64>(d3, "ReadServiceTimeCounter"));
    EXPECT_EQ(2u, get<Uint64>(d3, "WriteServiceTimeCounter"));
    EXPECT_EQ(5u, get<Uint64>(d3, "TotalServiceTimeCounter"));
    // 994 tenths: rounds down to 99.
    EXPECT_EQ(99u, get<Uint32>(d3, "PercentBusy"));

    // getInstance of a duplicated ID answers the first drive in library order.
    CIMInstance got =
        getInstance(READER_USER, instancePath(DISK, "QZ_KYRO:5000C50000001001-Stats"));
    EXPECT_EQ("Disk 0:1:0 Statistical Data", text(got, "ElementName"));
}

TEST_F(StatsValuesTest, PortsReportOnlyDataTraffic)
{
    Array<CIMInstance> all = enumerateInstances(READER_USER, PORT);
    ASSERT_EQ(5u, all.size());
    struct Row
    {
        const char* id;
        const char* name;
        Uint16 type;
        long time;
        IoCounters io;
    } rows[] = {
        // 1535 read bytes -> 1 KB; control traffic is ignored.
        {"P-0-1-1", "0:1:1", 6, 1700003600, {150, 100, 50, 1, 0, 1, 3000, 2000, 1000}},
        // Byte counts below 1 KB read as 0.
        {"P-1-2-1", "1:2:1", 6, 1700003000, {100, 100, 0, 0, 0, 0, 0, 0, 0}},
        // Initiator: back-end. 600 + 1023 = 1623 bytes -> 1 KB in all.
        {"P-1-0-1", "1:0:1", 7, 1700003600, {57, 50, 7, 1, 0, 0, 13, 10, 3}},
        {"P-UNBOUND", "none", 6, 1700009999, {7, 7, 0, 4, 0, 4, 0, 0, 0}},
        // Type "all" counts as back-end; only control traffic: all zero.
        {"P-0-2-2", "0:2:2", 7, 1700004000, {0, 0, 0, 0, 0, 0, 0, 0, 0}},
    };
    for (size_t i = 0; i < sizeof(rows) / sizeof(rows[0]); i++)
    {
        SCOPED_TRACE(rows[i].id);
        const CIMInstance& p = all[i];
        expectPathShape(p, PORT);
        EXPECT_EQ("QZ_KYRO:" + std::string(rows[i].id) + "-Stats", text(p, "InstanceID"));
        EXPECT_EQ("Port " + std::string(rows[i].name) + " Statistical Data",
                  text(p, "ElementName"));
        EXPECT_EQ(rows[i].type, get<Uint16>(p, "ElementType"));
        EXPECT_EQ(dateOf(rows[i].time), date(p, "StatisticTime"));
        expectIo(p, rows[i].io);
        // Ports publish no start time.
        EXPECT_TRUE(valueOf(p, "StartStatisticTime").isNull());
    }
}

TEST_F(StatsValuesTest, NodesSumTheirPortsAndCarryCacheAndCpuFigures)
{
    Array<CIMInstance> all = enumerateInstances(READER_USER, NODE);
    ASSERT_EQ(3u, all.size());

    CIMInstance n0 = all[0];
    expectPathShape(n0, NODE);
    EXPECT_EQ("QZ_KYRO:n0-Stats", text(n0, "InstanceID"));
    EXPECT_EQ("Node n0 Statistical Data", text(n0, "ElementName"));
    EXPECT_EQ(4, get<Uint16>(n0, "ElementType"));
    // The last port of node 0 (P-0-2-2) sets the times: 60 s interval.
    EXPECT_EQ(dateOf(1700004000), date(n0, "StatisticTime"));
    EXPECT_EQ(dateOf(1700003940), date(n0, "StartStatisticTime"));
    expectIo(n0, {150, 100, 50, 1, 0, 1, 3000, 2000, 1000});
    EXPECT_EQ(700u, get<Uint64>(n0, "ReadHitIOs"));
    EXPECT_EQ(390u, get<Uint64>(n0, "WriteHitIOs"));
    EXPECT_EQ(300u, get<Uint64>(n0, "ReadMissIOs"));
    EXPECT_EQ(10u, get<Uint64>(n0, "WriteMissIOs"));
    EXPECT_EQ(3u, get<Uint64>(n0, "LockedReadBlocks"));
    EXPECT_EQ(4u, get<Uint64>(n0, "LockedWriteBlocks"));
    const struct
    {
        const char* name;
        Uint32 value;
    } pages[] = {
        {"FreeCachePages", 5000}, {"CleanCachePages", 2000}, {"Write1CachePages", 10},
        {"WriteNCachePages", 11}, {"WriteScheduledCachePages", 12}, {"WritingCachePages", 13},
        {"PendingDelayedCopyOnWriteCachePages", 14}, {"ProcessingDelayedCopyOnWriteCachePages", 15},
        // Device classes: 1 = 10k, 3 = 15k, 2 = nearline, 4 = SSD.
        {"FC10kRPMCfcDirty", 10}, {"FC15kRPMCfcDirty", 30}, {"NLCfcDirty", 20},
        {"SSDCfcDirty", 40}, {"FC10kRPMCfcMax", 100}, {"FC15kRPMCfcMax", 300}, {"NLCfcMax", 200},
        {"SSDCfcMax", 400}, {"FC10kRPMDelayedAck", 1}, {"FC15kRPMDelayedAck", 3},
        {"NLDelayedAck", 2}, {"SSDDelayedAck", 4},
    };
    for (const auto& p : pages)
    {
        EXPECT_EQ(p.value, get<Uint32>(n0, p.name)) << p.name;
    }
    // (101 + 302) / 2, (850 + 651) / 2, (50 + 51) / 2.
    EXPECT_EQ(201u, get<Uint64>(n0, "TotalCPUUserTimeCounter"));
    EXPECT_EQ(750u, get<Uint64>(n0, "TotalCPUIdleTimeCounter"));
    EXPECT_EQ(50u, get<Uint64>(n0, "TotalCPUSystemTimeCounter"));
    EXPECT_EQ(12345u, get<Uint64>(n0, "Interrupts"));
    EXPECT_EQ(67890u, get<Uint64>(n0, "ContextSwitches"));

    CIMInstance n1 = all[1];
    EXPECT_EQ("QZ_KYRO:n1-Stats", text(n1, "InstanceID"));
    // 100 + 50 reads, 7 writes; bytes 600 + 600 = 1200 -> 1 KB read,
    // 1023 -> 0 written, 2223 -> 2 in all. The unbound port counts nowhere.
    expectIo(n1, {157, 150, 7, 2, 0, 1, 13, 10, 3});
    EXPECT_EQ(dateOf(1700003600), date(n1, "StatisticTime"));
    EXPECT_EQ(dateOf(1700003597), date(n1, "StartStatisticTime"));
    EXPECT_EQ(6u, get<Uint64>(n1, "ReadMissIOs"));
    // No CPUs: the averages are 0, the counts are still reported.
    EXPECT_EQ(0u, get<Uint64>(n1, "TotalCPUUserTimeCounter"));
    EXPECT_EQ(0u, get<Uint64>(n1, "TotalCPUIdleTimeCounter"));
    EXPECT_EQ(0u, get<Uint64>(n1, "TotalCPUSystemTimeCounter"));
    EXPECT_EQ(5u, get<Uint64>(n1, "Interrupts"));
    EXPECT_EQ(6u, get<Uint64>(n1, "ContextSwitches"));

    // A node without ports: zero counters and epoch times.
    CIMInstance n2 = all[2];
    expectIo(n2, {0, 0, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(dateOf(0), date(n2, "StatisticTime"));
    EXPECT_EQ(dateOf(0), date(n2, "StartStatisticTime"));
    EXPECT_EQ(9u, get<Uint64>(n2, "TotalCPUUserTimeCounter"));
}

TEST_F(StatsValuesTest, ArraySumsEveryPortAndShiftsOnce)
{
    time_t before = time(NULL);
    Array<CIMInstance> all = enumerateInstances(READER_USER, ARRAY);
    time_t after = time(NULL);
    ASSERT_EQ(1u, all.size());
    CIMInstance a = all[0];
    expectPathShape(a, ARRAY);
    EXPECT_EQ("QZ_KYRO:" + simSystemName() + "-Stats", text(a, "InstanceID"));
    EXPECT_EQ("Array " + simSystemName() + " Statistical Data", text(a, "ElementName"));
    EXPECT_EQ(2, get<Uint16>(a, "ElementType"));
    // Reads 100+100+50+7 = 257, writes 50+7 = 57. Read bytes
    // 1535+600+600+4096 = 6831 -> 6 KB (per port it would be 1+0+0+4 = 5);
    // written 1023 -> 0; together 7854 -> 7.
    expectIo(a, {314, 257, 57, 7, 0, 6, 3013, 2010, 1003});
    // The controller's clock, not a sample time; no start time.
    std::string stamp = date(a, "StatisticTime");
    EXPECT_TRUE(stamp == dateOf(before) || stamp == dateOf(after)) << stamp;
    EXPECT_TRUE(valueOf(a, "StartStatisticTime").isNull());
}

TEST_F(StatsValuesTest, LunPathsCarryBothIdFormsAndCounters)
{
    Array<CIMInstance> all = enumerateInstances(READER_USER, LUN);
    ASSERT_EQ(5u, all.size());
    const char* ids[] = {
        "QZ_KYRO:VLUN_5_vol01:1:2:3_10000000C9AB1234",
        // Unbound port position 0xFFFC reads 253:-7:-8.
        "QZ_KYRO:VLUN_6_vol02:253:-7:-8_10000000C9AB0001",
        "QZ_KYRO:VLUN_6_vol02:253:-7:-8_10000000C9AB5678",
        // Kinds other than 1..4: the short form with its suffix.
        "QZ_KYRO:VLUN_7-Stats",
        // The LUN number is written signed in the ID.
        "QZ_KYRO:VLUN_-1-Stats",
    };
    for (Uint32 i = 0; i < all.size(); i++)
    {
        EXPECT_EQ(ids[i], text(all[i], "InstanceID"));
        expectPathShape(all[i], LUN);
        EXPECT_EQ(11, get<Uint16>(all[i], "ElementType"));
    }
    CIMInstance l0 = all[0];
    EXPECT_EQ("VLUN 5 Statistical Data", text(l0, "ElementName"));
    EXPECT_EQ(dateOf(1700003600), date(l0, "StatisticTime"));
    // 8192 + 1024 bytes -> 9 KB; 80 + 20 ticks.
    expectIo(l0, {10, 8, 2, 9, 1, 8, 100, 80, 20});
    EXPECT_TRUE(valueOf(l0, "StartStatisticTime").isNull());
    // ... and unsigned in the name.
    EXPECT_EQ("VLUN 4294967295 Statistical Data", text(all[4], "ElementName"));
    // 3000 bytes -> 2 KB.
    expectIo(all[3], {3, 0, 3, 2, 2, 0, 0, 0, 0});
}

TEST_F(StatsValuesTest, InstanceNamesMatchTheEnumeratedInstances)
{
    const CIMName classes[] = {VOLUME, DISK, PORT, NODE, ARRAY, LUN};
    for (const CIMName& cls : classes)
    {
        SCOPED_TRACE(str(cls.getString()));
        Array<CIMInstance> instances = enumerateInstances(READER_USER, cls);
        Array<CIMObjectPath> names = enumerateInstanceNames(READER_USER, cls);
        ASSERT_EQ(instances.size(), names.size());
        for (Uint32 i = 0; i < names.size(); i++)
        {
            EXPECT_TRUE(ORV_Common::matchObjectPath(names[i], instances[i].getPath()));
            EXPECT_EQ(host, str(names[i].getHost()));
        }
    }
}

TEST_F(StatsValuesTest, GetInstanceFindsEachKindByItsId)
{
    struct Case
    {
        CIMName cls;
        const char* id;
        const char* elementName;
    } cases[] = {
        {VOLUME, "QZ_KYRO:60002AC0000000000000000000001234-Stats", "Volume vol02 Statistical Data"},
        {DISK, "QZ_KYRO:5000C50000001003-Stats", "Disk 0:3:0 Statistical Data"},
        {PORT, "QZ_KYRO:P-1-0-1-Stats", "Port 1:0:1 Statistical Data"},
        {NODE, "QZ_KYRO:n1-Stats", "Node n1 Statistical Data"},
        {LUN, "QZ_KYRO:VLUN_5_vol01:1:2:3_10000000C9AB1234", "VLUN 5 Statistical Data"},
        // The host picks the second of two paths that differ only in host.
        {LUN, "QZ_KYRO:VLUN_6_vol02:253:-7:-8_10000000C9AB5678", "VLUN 6 Statistical Data"},
        {LUN, "QZ_KYRO:VLUN_7-Stats", "VLUN 7 Statistical Data"},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.id);
        CIMInstance got = getInstance(READER_USER, instancePath(c.cls, c.id));
        EXPECT_EQ(c.id, text(got, "InstanceID"));
        EXPECT_EQ(c.elementName, text(got, "ElementName"));
    }
    std::string arrayId = "QZ_KYRO:" + simSystemName() + "-Stats";
    EXPECT_EQ("Array " + simSystemName() + " Statistical Data",
              text(getInstance(READER_USER, instancePath(ARRAY, arrayId.c_str())), "ElementName"));

    CIMInstance second = getInstance(
        READER_USER, instancePath(LUN, "QZ_KYRO:VLUN_6_vol02:253:-7:-8_10000000C9AB5678"));
    EXPECT_EQ(2u, get<Uint64>(second, "ReadIOs"));
}

TEST_F(StatsValuesTest, GetInstanceNarrowsTheManagementQuery)
{
    getInstance(READER_USER, instancePath(VOLUME, "QZ_KYRO:0123456789ABCDEF0123456789ABCDEF-Stats"));
    char* call = orvsim_last_call("api_getVolumeStats_chunk");
    ASSERT_NE(nullptr, call);
    // One volume (upper, lower words), chunk size 0.
    EXPECT_STREQ("api_getVolumeStats_chunk(0x0123456789ABCDEF,0x0123456789ABCDEF,0,0)", call);
    free(call);

    // Node 253 and port -8 travel narrowed to 8 bits: -3 and -8.
    getInstance(READER_USER,
                instancePath(LUN, "QZ_KYRO:VLUN_6_vol02:253:-7:-8_10000000C9AB5678"));
    call = orvsim_last_call("api_getVLunStats");
    ASSERT_NE(nullptr, call);
    EXPECT_STREQ("api_getVLunStats(0,\"vol02\",6,-3,-7,-8)", call);
    free(call);

    // The short form selects by LUN only.
    getInstance(READER_USER, instancePath(LUN, "QZ_KYRO:VLUN_7-Stats"));
    call = orvsim_last_call("api_getVLunStats");
    ASSERT_NE(nullptr, call);
    EXPECT_STREQ("api_getVLunStats(0,\"\",7,-1,-1,-1)", call);
    free(call);
}

TEST_F(StatsValuesTest, UnknownOrMalformedIdsAreNotFound)
{
    struct Case
    {
        CIMName cls;
        const char* id;
        const char* message;
    } cases[] = {
        // No dash: every volume is fetched and none has this path.
        {VOLUME, "QZ_KYRO:0123456789ABCDEF0123456789ABCDEF",
         "ORV_VolumeStatisticalDataProvider CIM Object not found."
         "QZ_KYRO:0123456789ABCDEF0123456789ABCDEF"},
        // The WWN is taken after the prefix wherever it stands, but the path
        // match compares the whole ID.
        {VOLUME, "xyzQZ_KYRO:0123456789ABCDEF0123456789ABCDEF-Stats", nullptr},
        {VOLUME, "QZ_KYRO:FFFF-Stats", nullptr},
        {DISK, "QZ_KYRO:5000C5000000DEAD-Stats",
         "ORV_DiskStatisticalDataProvider CIM Object not found.QZ_KYRO:5000C5000000DEAD-Stats"},
        {PORT, "QZ_KYRO:P-0-1-1", nullptr},
        {NODE, "QZ_KYRO:n7-Stats", nullptr},
        {ARRAY, "QZ_KYRO:OTHER-Stats", nullptr},
        // Two fields only: parsing fails.
        {LUN, "QZ_KYRO:VLUN_x", "ORV_LUNStatisticalDataProvider CIM Object not found.QZ_KYRO:VLUN_x"},
        // Host not among the selected paths.
        {LUN, "QZ_KYRO:VLUN_5_vol01:1:2:3_2100000000000000", nullptr},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.id);
        CimOutcome o = runCatching([&]() { getInstance(READER_USER, instancePath(c.cls, c.id)); });
        EXPECT_EQ(CIM_ERR_NOT_FOUND, o.code);
        if (c.message)
        {
            EXPECT_EQ(c.message, o.message);
        }
    }
    // The unparsable LUN ID is logged twice: by the parser and by the build.
    std::string log = captureLog([&]() {
        runCatching([&]() { getInstance(READER_USER, instancePath(LUN, "QZ_KYRO:VLUN_x")); });
    });
    EXPECT_NE(std::string::npos, log.find("\tparseID: Invalid Instance ID QZ_KYRO:VLUN_x, 2.\n"));
    EXPECT_NE(std::string::npos, log.find("\t_build_instances: parsing instance ID failure.\n"));
}

TEST_F(StatsValuesTest, PropertyListsActThroughTheClassDefinition)
{
    CIMPropertyList list;
    Array<CIMName> names;
    names.append(CIMName("ReadIOs"));
    list.set(names);
    orvsim_reset_call_counts();
    Array<CIMInstance> nodes = enumerateInstances(READER_USER, NODE, list);
    ASSERT_EQ(3u, nodes.size());
    EXPECT_EQ(100u, get<Uint64>(nodes[0], "ReadIOs"));
    EXPECT_FALSE(hasProperty(nodes[0], "Interrupts"));
    // No CPU property asked for: the CPU query is spared.
    EXPECT_EQ(0ul, orvsim_call_count("api_getNodeCPUStats"));

    names.append(CIMName("Interrupts"));
    list.set(names);
    nodes = enumerateInstances(READER_USER, NODE, list);
    EXPECT_EQ(3ul, orvsim_call_count("api_getNodeCPUStats"));
    EXPECT_EQ(12345u, get<Uint64>(nodes[0], "Interrupts"));
    EXPECT_FALSE(hasProperty(nodes[0], "ContextSwitches"));

    Array<CIMInstance> vols = enumerateInstances(READER_USER, VOLUME, list);
    ASSERT_EQ(4u, vols.size());
    EXPECT_FALSE(hasProperty(vols[0], "PercentBusy"));
    EXPECT_EQ(3u, get<Uint64>(vols[0], "ReadIOs"));
}

} // namespace
