// CIMDateTime text forms, validation, arithmetic and comparison.

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

PEGASUS_USING_PEGASUS;

TEST(CIMDateTimeTest, DefaultIsZeroInterval)
{
    CIMDateTime d;
    EXPECT_EQ(d.toString(), "00000000000000.000000:000");
    EXPECT_TRUE(d.isInterval());
    EXPECT_EQ(d.toMicroSeconds(), 0u);
}

TEST(CIMDateTimeTest, ValidAndInvalidText)
{
    struct Case
    {
        const char* text;
        bool valid;
    };
    const Case cases[] = {
        {"20240229235959.999999+000", true}, // leap day
        {"19700101000000.000000-060", true},
        {"99991231235959.999999+999", true},
        {"00000001000000.000000:000", true}, // one day
        {"99999999235959.999999:000", true},
        {"20240101******.******+000", true},  // wildcards from a field on
        {"20240101120000.123***+000", true},  // partial microseconds
        {"20230229000000.000000+000", false}, // not a leap year
        {"20241301000000.000000+000", false}, // month 13
        {"20240100000000.000000+000", false}, // day 0
        {"20240101240000.000000+000", false}, // hour 24
        {"20240101006000.000000+000", false}, // minute 60
        {"20240101000060.000000+000", false}, // second 60
        {"2024010100000.000000+0000", false}, // dot misplaced
        {"20240101000000.000000+00", false},  // too short
        {"20240101000000.000000*000", false}, // bad sign
        {"00000000240000.000000:000", false}, // interval hour 24
        {"00000000000000.000000:001", false}, // interval offset must be 000
        {"2024*101000000.000000+000", false}, // wildcard inside a field
        {"202401**000000.000000+000", false}, // digits after a wildcard
        {"20240101000000.000000+0a0", false},
        {"2024-1-1", false},
    };
    for (const Case& c : cases)
    {
        if (c.valid)
        {
            EXPECT_EQ(CIMDateTime(c.text).toString(), c.text);
        }
        else
        {
            EXPECT_THROW(CIMDateTime d(c.text), InvalidDateTimeFormatException) << c.text;
        }
    }
}

TEST(CIMDateTimeTest, FailedSetKeepsOldValue)
{
    CIMDateTime d("20240101000000.000000+000");
    EXPECT_THROW(d.set("garbage"), InvalidDateTimeFormatException);
    EXPECT_EQ(d.toString(), "20240101000000.000000+000");
    d.clear();
    EXPECT_EQ(d.toString(), "00000000000000.000000:000");
}

TEST(CIMDateTimeTest, Components)
{
    EXPECT_EQ(CIMDateTime(2024, 2, 29, 23, 5, 9, 42, 6, -300).toString(),
              "20240229230509.000042-300");
    EXPECT_EQ(CIMDateTime(2024, 2, 29, 23, 5, 9, 123456, 3, 0).toString(),
              "20240229230509.123***+000");
    EXPECT_EQ(CIMDateTime(3, 4, 5, 6, 7, 6).toString(), "00000003040506.000007:000");
    EXPECT_THROW(CIMDateTime(2023, 2, 29, 0, 0, 0, 0, 6, 0), DateTimeOutOfRangeException);
    EXPECT_THROW(CIMDateTime(2024, 1, 1, 0, 0, 0, 1000000, 6, 0), DateTimeOutOfRangeException);
    EXPECT_THROW(CIMDateTime(2024, 1, 1, 0, 0, 0, 0, 6, 1000), DateTimeOutOfRangeException);
    EXPECT_THROW(CIMDateTime(100000000, 0, 0, 0, 0, 6), DateTimeOutOfRangeException);
}

TEST(CIMDateTimeTest, IntervalMultiplyAndDivide)
{
    const CIMDateTime hour(0, 1, 0, 0, 0, 6);
    EXPECT_EQ((hour * 25).toString(), "00000001010000.000000:000");
    EXPECT_EQ((hour / 7).toString(), "00000000000834.285714:000");
    EXPECT_EQ(CIMDateTime(1, 0, 0, 0, 0, 6) / hour, 24u);
    CIMDateTime d = hour;
    d *= 2;
    d /= 4;
    EXPECT_EQ(d.toString(), "00000000003000.000000:000");

    const CIMDateTime stamp("20240101000000.000000+000");
    EXPECT_THROW(stamp * 2, TypeMismatchException);
    EXPECT_THROW(stamp / 2, TypeMismatchException);
    EXPECT_THROW(hour / stamp, TypeMismatchException);
    EXPECT_THROW(hour / 0, Exception);
    EXPECT_THROW(hour / CIMDateTime(), Exception);
    EXPECT_THROW(hour * 10000000000ull, DateTimeOutOfRangeException);
    EXPECT_THROW(hour * ~0ull, DateTimeOutOfRangeException);

    d.setTimeStamp(2024, 2, 29, 1, 2, 3, 4, 6, 60);
    EXPECT_EQ(d.toString(), "20240229010203.000004+060");
    d.setInterval(2, 0, 0, 1, 0, 6);
    EXPECT_EQ(d.toString(), "00000002000001.000000:000");
    EXPECT_THROW(d.setInterval(0, 24, 0, 0, 0, 6), DateTimeOutOfRangeException);
    EXPECT_EQ(d.toString(), "00000002000001.000000:000");
}

TEST(CIMDateTimeTest, MicrosecondsAndOffsets)
{
    // The epoch of Unix time, at UTC and written 60 minutes west of UTC.
    CIMDateTime utc("19700101000000.000000+000");
    CIMDateTime west("19691231230000.000000-060");
    EXPECT_TRUE(utc == west);
    EXPECT_EQ(utc.toMicroSeconds(), west.toMicroSeconds());
    EXPECT_EQ(CIMDateTime(utc.toMicroSeconds(), false).toString(), utc.toString());

    // Days between 0000-01-01 and 1970-01-01.
    EXPECT_EQ(utc.toMicroSeconds(), 719528ULL * 86400ULL * 1000000ULL);

    CIMDateTime later("19700102000000.000001+000");
    EXPECT_EQ(CIMDateTime::getDifference(utc, later), 86400000001LL);
    EXPECT_TRUE(utc < later);
    EXPECT_TRUE(later >= utc);
    EXPECT_TRUE(utc != later);

    CIMDateTime interval("00000001000000.000001:000");
    EXPECT_EQ(interval.toMicroSeconds(), 86400000001ULL);
    EXPECT_TRUE(utc + interval == later);
    EXPECT_EQ((later - utc).toString(), "00000001000000.000001:000");
    EXPECT_THROW(utc + utc, TypeMismatchException);
    EXPECT_THROW((void)(utc < interval), TypeMismatchException);
    EXPECT_FALSE(utc == CIMDateTime(utc.toMicroSeconds(), true));

    CIMDateTime shifted = utc;
    shifted.setUtcOffSet(-60);
    EXPECT_EQ(shifted.toString(), "19700101000000.000000-060");
    EXPECT_EQ(utc.toString(), "19700101000000.000000+000");
}

TEST(CIMDateTimeTest, CurrentTimeIsAValidLocalTimeStamp)
{
    time_t before = time(nullptr);
    CIMDateTime now = CIMDateTime::getCurrentDateTime();
    time_t after = time(nullptr);
    EXPECT_TRUE(now.isTimeStamp());
    EXPECT_EQ(CIMDateTime(now.toString()).toString(), now.toString());

    Uint64 epoch = CIMDateTime("19700101000000.000000+000").toMicroSeconds();
    Sint64 secs = Sint64((now.toMicroSeconds() - epoch) / 1000000ULL);
    EXPECT_GE(secs, Sint64(before));
    EXPECT_LE(secs, Sint64(after));

    struct tm local;
    localtime_r(&before, &local);
    long offset = local.tm_gmtoff / 60;
    String text = now.toString();
    EXPECT_EQ(Uint16(text[21]), offset < 0 ? '-' : '+');
    EXPECT_EQ(atoi(static_cast<const char*>(text.subString(22).getCString())), labs(offset));
}
