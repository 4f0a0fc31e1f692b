#include "StatRecords.h"

#include <gtest/gtest.h>

using namespace orvstat;

namespace
{

const ManifestOrder ORDER = {
    {8,
     {"InstanceID", "ElementType", "StatisticTime", "TotalIOs", "KBytesTransferred",
      "IOTimeCounter", "ReadIOs", "ReadHitIOs", "ReadIOTimeCounter", "KBytesRead", "WriteIOs",
      "WriteHitIOs", "WriteIOTimeCounter", "KBytesWritten"}},
    // Another server may order its fields otherwise; the manifest decides.
    {10, {"InstanceID", "ElementType", "StatisticTime", "WriteIOs", "ReadIOs"}},
};

} // namespace

TEST(StatRecords, CimDateTimes)
{
    struct Case
    {
        const char* text;
        int64_t us;
    } cases[] = {
        {"20231114221320.000000+000", 1700000000LL * 1000000},
        {"20231114231320.000250+060", 1700000000LL * 1000000 + 250},
        {"20231114211320.000000-060", 1700000000LL * 1000000},
        {"00000001000000.000000:000", 0}, // an interval, not a time stamp
        {"2023111422132", 0},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(parseCimDateTime(c.text), c.us) << c.text;
    }
}

TEST(StatRecords, FieldsFollowTheManifestOrder)
{
    DecodeResult r = decodeRecords(
        "QZ_KYRO:AB-Stats;8;20231114221320.000000+000;14;28;77;10;6;70;20;4;1;7;8;\n"
        "disk-1;10;20231114221320.000000+000;3;9;\n",
        ORDER);
    ASSERT_EQ(r.elements.size(), 2u);
    EXPECT_EQ(r.rejected, 0u);
    const ElementSample& v = r.elements[0];
    EXPECT_EQ(v.id, "QZ_KYRO:AB-Stats");
    EXPECT_EQ(v.elementType, 8);
    EXPECT_EQ(v.statisticTimeUs, 1700000000LL * 1000000);
    const std::map<std::string, uint64_t> expected = {
        {"TotalIOs", 14},  {"KBytesTransferred", 28}, {"IOTimeCounter", 77},
        {"ReadIOs", 10},   {"ReadHitIOs", 6},         {"ReadIOTimeCounter", 70},
        {"KBytesRead", 20}, {"WriteIOs", 4},          {"WriteHitIOs", 1},
        {"WriteIOTimeCounter", 7}, {"KBytesWritten", 8}};
    EXPECT_EQ(v.counters, expected);
    EXPECT_EQ(r.elements[1].counters.at("WriteIOs"), 3u);
    EXPECT_EQ(r.elements[1].counters.at("ReadIOs"), 9u);
}

TEST(StatRecords, RecordsThatCannotBeReadAreCountedNotGuessed)
{
    struct Case
    {
        const char* what;
        const char* text;
        size_t elements, rejected;
    } cases[] = {
        {"a skipped counter shifts the fields", "d;10;20231114221320.000000+000;3;\n", 0, 1},
        {"a type without manifest", "x;3;20231114221320.000000+000;1;2;\n", 0, 1},
        {"a counter that is not a number", "d;10;20231114221320.000000+000;3;-1;\n", 0, 1},
        {"too few fields", "d;10;\n", 0, 1},
        {"empty string: a type with no elements", "", 0, 0},
        {"last record without its line end", "d;10;20231114221320.000000+000;3;4;", 1, 0},
        {"uint64 extremes", "d;10;20231114221320.000000+000;18446744073709551615;0;\n", 1, 0},
    };
    for (const Case& c : cases)
    {
        DecodeResult r = decodeRecords(c.text, ORDER);
        EXPECT_EQ(r.elements.size(), c.elements) << c.what;
        EXPECT_EQ(r.rejected, c.rejected) << c.what;
    }
}
