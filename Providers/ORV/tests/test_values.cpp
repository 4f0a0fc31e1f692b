// Property and parameter readers and writers, date-times and identifiers.

#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/Exception.h>

#include "ModuleFixture.h"
#include "ORV_Common.h"

using orvtest::captureLog;
using orvtest::str;

namespace
{

// An instance with a few typed properties, one of them null.
CIMInstance sampleInstance()
{
    CIMInstance inst(CIMName("ORV_Sample"));
    inst.addProperty(CIMProperty(CIMName("Count32"), CIMValue(Uint32(42))));
    inst.addProperty(CIMProperty(CIMName("Count64"), CIMValue(Uint64(1) << 40)));
    inst.addProperty(CIMProperty(CIMName("Missing64"), CIMValue(CIMTYPE_UINT64, false)));
    inst.addProperty(CIMProperty(CIMName("Name"), CIMValue(String("vol1"))));
    inst.addProperty(CIMProperty(CIMName("NullName"), CIMValue(CIMTYPE_STRING, false)));
    return inst;
}

TEST(PropertyReaders, StatusCodesAndUntouchedOutput)
{
    CIMInstance inst = sampleInstance();

    Uint32 v32 = 7;
    EXPECT_EQ(0u, ORV_Common::getProperty(inst, "count32", v32));
    EXPECT_EQ(42u, v32);

    unsigned long long v64 = 9;
    EXPECT_EQ(4u, ORV_Common::getProperty(inst, "Missing64", v64));
    EXPECT_EQ(9u, v64);
    EXPECT_EQ(3u, ORV_Common::getProperty(inst, "NotThere", v64));
    EXPECT_EQ(9u, v64);
    EXPECT_EQ(0u, ORV_Common::getProperty(inst, "Count64", v64));
    EXPECT_EQ(1ull << 40, v64);
}

TEST(PropertyReaders, WrongTypeThrowsFromTheFramework)
{
    CIMInstance inst = sampleInstance();
    Uint16 v16 = 0;
    EXPECT_ANY_THROW(ORV_Common::getProperty(inst, "Count32", v16));
}

TEST(PropertyReaders, TraceLinesNameTheTypeAndValue)
{
    CIMInstance inst = sampleInstance();
    Uint32 v32 = 0;
    std::string log = captureLog([&]() { ORV_Common::getProperty(inst, "Count32", v32); });
    EXPECT_NE(std::string::npos,
              log.find("-->ORV_Common::getProperty(uint32), propertyName = Count32\n"));
    EXPECT_NE(std::string::npos, log.find("<--ORV_Common::getProperty(uint32), value = 42\n"));
}

TEST(StringReaders, InstanceAndPath)
{
    CIMInstance inst = sampleInstance();
    EXPECT_EQ("vol1", str(ORV_Common::getStringProperty(inst, "name")));
    EXPECT_EQ("", str(ORV_Common::getStringProperty(inst, "NullName")));
    EXPECT_EQ("", str(ORV_Common::getStringProperty(inst, "NotThere")));

    std::string log;
    log = captureLog([&]() { EXPECT_EQ("", str(ORV_Common::getStringProperty(inst, ""))); });
    EXPECT_NE(std::string::npos, log.find("\tInvalid property name.\n"));

    // The last of several same-named keys wins.
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), "first", CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("Other"), "x", CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("instanceid"), "second", CIMKeyBinding::STRING));
    CIMObjectPath path(String(), CIMNamespaceName("root/orv"), CIMName("ORV_X"), keys);
    EXPECT_EQ("second", str(ORV_Common::getStringProperty(path, "InstanceID")));
    EXPECT_EQ("", str(ORV_Common::getStringProperty(path, "Absent")));
}

Array<CIMParamValue> params(std::initializer_list<CIMParamValue> list)
{
    Array<CIMParamValue> a;
    for (const CIMParamValue& p : list)
    {
        a.append(p);
    }
    return a;
}

TEST(ParameterReaders, NullParametersReadAsAbsentUnlessAValueFollows)
{
    CIMParamValue nullSize("Size", CIMValue(CIMTYPE_UINT32, false));
    CIMParamValue size5("size", CIMValue(Uint32(5)));

    struct Case
    {
        const char* what;
        Array<CIMParamValue> in;
        Uint32 status;
        Uint32 value;
    } cases[] = {
        {"null then value", params({nullSize, size5}), 4, 5},
        {"value only", params({size5}), 0, 5},
        {"null only", params({nullSize}), 3, 99},
        {"none", params({}), 3, 99},
        {"value then null", params({size5, nullSize}), 0, 5},
    };
    for (Case& c : cases)
    {
        Uint32 value = 99;
        EXPECT_EQ(c.status, ORV_Common::getParameter(c.in, "Size", value)) << c.what;
        EXPECT_EQ(c.value, value) << c.what;
    }
}

TEST(ParameterReaders, ArraysAndReferences)
{
    Array<Uint16> types;
    types.append(8);
    types.append(10);
    CIMObjectPath ref = orvtest::instancePath(CIMName("ORV_BlockStatisticsManifestCollection"),
                                              "QZ_KYRO:S1-BlockStatisticsManifestCollection");
    Array<CIMParamValue> in = params({CIMParamValue("ElementTypes", CIMValue(types)),
                                      CIMParamValue("ManifestCollection", CIMValue(ref))});

    Array<unsigned short> gotTypes;
    EXPECT_EQ(0u, ORV_Common::getParameter(in, "elementtypes", gotTypes));
    ASSERT_EQ(2u, gotTypes.size());
    EXPECT_EQ(10, gotTypes[1]);

    CIMObjectPath gotRef;
    EXPECT_EQ(0u, ORV_Common::getParameter(in, "ManifestCollection", gotRef));
    EXPECT_TRUE(gotRef.identical(ref));

    unsigned short format = 2;
    EXPECT_EQ(3u, ORV_Common::getParameter(in, "StatisticsFormat", format));
    EXPECT_EQ(2, format);
}

TEST(PropertyWriters, SetOnlyWhatTheSkeletonHas)
{
    CIMInstance inst = sampleInstance();
    ORV_Common::setPropertyValue(inst, CIMName("Count32"), (unsigned int)7);
    ORV_Common::setPropertyValue(inst, CIMName("TimeLastSampled"),
                                 ORV_Common::getCIMDateTime(0));
    ORV_Common::setPropertyValue(inst, CIMName("Absent"), String("x"));
    Uint32 v = 0;
    EXPECT_EQ(0u, ORV_Common::getProperty(inst, "Count32", v));
    EXPECT_EQ(7u, v);
    EXPECT_EQ(PEG_NOT_FOUND, inst.findProperty(CIMName("TimeLastSampled")));
    EXPECT_EQ(PEG_NOT_FOUND, inst.findProperty(CIMName("Absent")));

    ORV_Common::setPropertyValueToNull(inst, CIMName("Count32"), CIMTYPE_UINT32);
    EXPECT_EQ(4u, ORV_Common::getProperty(inst, "Count32", v));

    // An embedded instance is added even where the skeleton had nothing.
    ORV_Common::setPropertyValue(inst, CIMName("Embedded"), CIMInstance(CIMName("ORV_Inner")));
    Uint32 pos = inst.findProperty(CIMName("Embedded"));
    ASSERT_NE(PEG_NOT_FOUND, pos);
    EXPECT_EQ(CIMTYPE_INSTANCE, inst.getProperty(pos).getValue().getType());
}

TEST(PropertyWriters, AssocInstanceCarriesBothReferencesWithTheHost)
{
    CIMClass cls(CIMName("ORV_MemberOfStatisticsCollection"));
    cls.addProperty(CIMProperty(CIMName("Collection"), CIMValue(CIMTYPE_REFERENCE, false), 0,
                                CIMName("ORV_StatisticsCollection")));
    cls.addProperty(CIMProperty(CIMName("Member"), CIMValue(CIMTYPE_REFERENCE, false), 0,
                                CIMName("CIM_BlockStorageStatisticalData")));
    CIMObjectPath coll = orvtest::instancePath(CIMName("ORV_StatisticsCollection"),
                                               "QZ_KYRO:S1-StatisticsCollection");
    CIMObjectPath member =
        orvtest::instancePath(CIMName("ORV_DiskStatisticalData"), "QZ_KYRO:d1-Stats");
    member.setHost("client.example");

    CIMInstance inst = ORV_Common::buildAssocInstance(CIMName("ORV_MemberOfStatisticsCollection"),
                                                      "Collection", "Member", coll, member, cls,
                                                      "array1", "root/orv");
    CIMObjectPath got;
    ASSERT_EQ(0u, ORV_Common::getProperty(inst, "Member", got));
    EXPECT_EQ("array1", str(got.getHost()));
    EXPECT_TRUE(ORV_Common::matchObjectPath(got, member));
    ASSERT_EQ(0u, ORV_Common::getProperty(inst, "Collection", got));
    EXPECT_EQ("array1", str(got.getHost()));
    EXPECT_EQ(2u, inst.getPath().getKeyBindings().size());
    EXPECT_EQ("array1", str(inst.getPath().getHost()));
}

// Runs the body with TZ set to zone, then restores the previous zone.
class TimeZoneTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const char* tz = getenv("TZ");
        _hadTz = tz != nullptr;
        _savedTz = tz ? tz : "";
    }
    void TearDown() override
    {
        if (_hadTz)
        {
            setenv("TZ", _savedTz.c_str(), 1);
        }
        else
        {
            unsetenv("TZ");
        }
        tzset();
    }
    static void useZone(const char* zone)
    {
        setenv("TZ", zone, 1);
        tzset();
    }

private:
    bool _hadTz = false;
    std::string _savedTz;
};

TEST_F(TimeZoneTest, CimDateTimeCarriesTheZoneOffset)
{
    // 2021-03-04 05:06:07 UTC
    const long t = 1614834367;
    struct Case
    {
        const char* zone;
        const char* text;
        const char* timeZone;
    } cases[] = {
        {"UTC0", "20210304050607.000000+000", "GMT-0"},
        {"WST1", "20210304040607.000000-060", "GMT-1"},
        {"IST-5:30", "20210304103607.000000+330", "GMT+5"},
        {"EST5", "20210304000607.000000-300", "GMT-5"},
    };
    for (const Case& c : cases)
    {
        useZone(c.zone);
        CIMDateTime dt = ORV_Common::getCIMDateTime(t);
        EXPECT_EQ(c.text, str(dt.toString())) << c.zone;
        EXPECT_EQ(t, (long)ORV_Common::getDateTime(dt)) << c.zone;
        EXPECT_EQ(c.timeZone, str(ORV_Common::getTimeZone())) << c.zone;
    }
}

TEST_F(TimeZoneTest, DateTimeTextParsing)
{
    useZone("UTC0");
    tm out;
    EXPECT_EQ(0, ORV_Common::_formatDateTime("00000000000000.000000+000", &out));
    EXPECT_EQ(1, ORV_Common::_formatDateTime("19991231235958.123456-060", &out));
    EXPECT_EQ(99, out.tm_year);
    EXPECT_EQ(11, out.tm_mon);
    EXPECT_EQ(31, out.tm_mday);
    EXPECT_EQ(58, out.tm_sec);
    EXPECT_EQ(-1, ORV_Common::_formatDateTime("18000101000000.000000+000", &out));
    EXPECT_EQ(-1, ORV_Common::_formatDateTime("20210004000000.000000+000", &out));

    CIMDateTime zeroYear;
    zeroYear.set("00000101000000.000000+000");
    EXPECT_EQ(0, (long)ORV_Common::getDateTime(zeroYear));
}

// The text is read with the broken-down time cleared, daylight saving flag
// included: in summer a zone with daylight saving reads it as standard time.
TEST_F(TimeZoneTest, DateTimeIsReadWithoutDaylightSaving)
{
    useZone("CET-1CEST,M3.5.0,M10.5.0/3");
    struct Case
    {
        const char* text;
        long seconds;
    } cases[] = {
        // 2024-07-01 12:00 at UTC+1 (not +2 as the zone's summer time says).
        {"20240701120000.000000+120", 1719831600},
        // Winter: standard time anyway.
        {"20240115120000.000000+060", 1705316400},
    };
    for (const Case& c : cases)
    {
        CIMDateTime dt;
        dt.set(c.text);
        EXPECT_EQ(c.seconds, (long)ORV_Common::getDateTime(dt)) << c.text;
        tm out;
        ASSERT_EQ(1, ORV_Common::_formatDateTime(c.text, &out));
        EXPECT_EQ(0, out.tm_isdst) << c.text;
    }
}

TEST(Identifiers, ExtractFromInstanceID)
{
    struct Case
    {
        const char* id;
        const char* rest;
    } cases[] = {
        {"QZ_KYRO:ARRAY1-StatisticsCollection", "ARRAY1-StatisticsCollection"},
        {"ARRAY1-StatisticsCollection", ""},
        {"xyzQZ_KYRO:WWN-Stats", "WWN-Stats"},
        {"QZ_KYRO:a:QZ_KYRO:b", "a:QZ_KYRO:b"},
        {"QZ_KYRO", ""},
        {"QZ_KYRO:", ""},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(c.rest, str(ORV_Common::extractFromInstanceID(c.id))) << c.id;
    }
}

TEST(Identifiers, NodePairIndex)
{
    const int expected[] = {-1, 0, 0, 1, 1, 2, 2, 3, 3, -1};
    for (int node = -1; node <= 8; node++)
    {
        EXPECT_EQ(expected[node + 1], ORV_Common::getNodePairIndex(node)) << node;
    }
}

TEST(Identifiers, RandomStringsUseTheAlphabetAndEndWithZero)
{
    char one[4] = {'x', 'x', 'x', 'x'};
    ORV_Common::generate_random_string(one, 1);
    EXPECT_EQ('\0', one[0]);
    EXPECT_EQ('x', one[1]);

    char a[33];
    char b[33];
    ORV_Common::generate_random_string(a, sizeof(a));
    ORV_Common::generate_random_string(b, sizeof(b));
    EXPECT_EQ(32u, strlen(a));
    EXPECT_EQ(strspn(a, "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_"), 32u);
    // Later calls continue the sequence instead of starting over.
    EXPECT_STRNE(a, b);
}

TEST(IdentifiersDeathTest, RandomStringAssertsOnBadArguments)
{
    // Exactly the two report lines, naming the helper's own source file,
    // and nothing after them.
    const char* report = "^Assertion failed: len > 0 && str != NULL\n"
                         "Assertion point: file: [^\n]*ORV_Common\\.cpp, line: [0-9]+\n$";
    char buf[4];
    EXPECT_DEATH(ORV_Common::generate_random_string(buf, 0), report);
    EXPECT_DEATH(ORV_Common::generate_random_string(nullptr, 4), report);
}

} // namespace
