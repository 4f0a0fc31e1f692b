// Strings and values share their storage between copies: a change through
// one copy, by any of the changing operations, must never show in another,
// also when copies are made and dropped from several threads at once.

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Sdk/Utf8.h>

PEGASUS_USING_PEGASUS;

namespace
{

std::string utf8(const String& s)
{
    return std::string((const char*)s.getCString());
}

const struct
{
    const char* what;
    std::function<void(String&)> change;
    const char* result;
} STRING_CHANGES[] = {
    {"indexed write", [](String& s) { s[0] = Char16('X'); }, "Xtatistics"},
    {"append", [](String& s) { s.append(String("!")); }, "Statistics!"},
    {"append itself", [](String& s) { s.append(s); }, "StatisticsStatistics"},
    {"append UTF-8", [](String& s) { s.append("\xc3\xa9", 2); }, "Statistics\xc3\xa9"},
    {"remove", [](String& s) { s.remove(0, 4); }, "istics"},
    {"remove all", [](String& s) { s.remove(0); }, ""},
    {"lower", [](String& s) { s.toLower(); }, "statistics"},
    {"upper", [](String& s) { s.toUpper(); }, "STATISTICS"},
    {"clear", [](String& s) { s.clear(); }, ""},
    {"assign", [](String& s) { s.assign("other"); }, "other"},
    {"assign own tail", [](String& s) { s.assign(s.getChar16Data() + 5, 5); }, "stics"},
    {"reserve", [](String& s) { s.reserveCapacity(100); }, "Statistics"},
    {"printf", [](String& s) { s.appendPrintf("%d", 42); }, "Statistics42"},
};

} // namespace

TEST(StringSharing, ChangingOneCopyLeavesTheOthers)
{
    for (const auto& c : STRING_CHANGES)
    {
        SCOPED_TRACE(c.what);
        const String original("Statistics");
        String changed = original;
        String other = changed;
        CIMValue value(changed);

        c.change(changed);

        EXPECT_EQ(c.result, utf8(changed));
        EXPECT_EQ(String(c.result).size(), changed.size());
        EXPECT_EQ(0, changed.getChar16Data()[changed.size()]);
        EXPECT_EQ("Statistics", utf8(original));
        EXPECT_EQ("Statistics", utf8(other));
        String held;
        value.get(held);
        EXPECT_EQ("Statistics", utf8(held));

        // And back: changing the others leaves the changed one as it is.
        other.append(String("+"));
        held.toUpper();
        EXPECT_EQ(c.result, utf8(changed));
    }
}

TEST(StringSharing, AppendingInALoopKeepsEveryStep)
{
    String s;
    String snapshot;
    for (int i = 0; i < 200; i++)
    {
        if (i == 100)
        {
            snapshot = s;
        }
        s.append(Char16(Uint16('a' + i % 26)));
    }
    EXPECT_EQ(200u, s.size());
    EXPECT_EQ(100u, snapshot.size());
    EXPECT_EQ(utf8(s).substr(0, 100), utf8(snapshot));
}

TEST(StringSharing, AppendUtf8GivesTheBytesOfGetCString)
{
    const Char16 LONE_HIGH[] = {Char16('a'), Char16(0xD800)};
    const Char16 LONE_LOW[] = {Char16(0xDC00), Char16('b')};
    const struct
    {
        const char* what;
        String text;
    } cases[] = {
        {"empty", String()},
        {"ASCII", String("InstanceID")},
        {"two-byte", String("caf\xc3\xa9")},
        {"three-byte after ASCII", String("x\xe2\x82\xac y")},
        {"surrogate pair", String("a\xf0\x9f\x98\x80z")},
        {"lone high surrogate", String(LONE_HIGH, 2)},
        {"lone low surrogate", String(LONE_LOW, 2)},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        std::string out = "<";
        Sdk::appendUtf8(out, c.text);
        EXPECT_EQ("<" + utf8(c.text), out);
    }
}

TEST(DateTimeSharing, ChangingOneCopyLeavesTheOthers)
{
    const char* const stamp = "20240102030405.000000+060";
    const struct
    {
        const char* what;
        std::function<void(CIMDateTime&)> change;
        const char* result;
    } changes[] = {
        {"set", [](CIMDateTime& d) { d.set("20250101000000.000000+000"); },
         "20250101000000.000000+000"},
        {"clear", [](CIMDateTime& d) { d.clear(); }, "00000000000000.000000:000"},
        {"utc offset", [](CIMDateTime& d) { d.setUtcOffSet(-120); }, "20240102030405.000000-120"},
        {"add", [](CIMDateTime& d) { d += CIMDateTime(Uint64(1000000), true); },
         "20240102030406.000000+060"},
        {"assign", [](CIMDateTime& d) { d = CIMDateTime("00000001000000.000000:000"); },
         "00000001000000.000000:000"},
        {"assign itself", [](CIMDateTime& d) { d = d; }, "20240102030405.000000+060"},
        {"time stamp", [](CIMDateTime& d) { d.setTimeStamp(1999, 12, 31, 23, 59, 59, 0, 6, 0); },
         "19991231235959.000000+000"},
    };
    for (const auto& c : changes)
    {
        SCOPED_TRACE(c.what);
        const CIMDateTime original(stamp);
        CIMDateTime changed = original;
        CIMDateTime other;
        other = changed;
        CIMValue value(changed);

        c.change(changed);

        EXPECT_EQ(c.result, utf8(changed.toString()));
        EXPECT_EQ(stamp, utf8(original.toString()));
        EXPECT_EQ(stamp, utf8(other.toString()));
        CIMDateTime held;
        value.get(held);
        EXPECT_EQ(stamp, utf8(held.toString()));
        EXPECT_TRUE(value == CIMValue(original));

        // A failed change leaves the value and its copies as they were.
        CIMDateTime kept = changed;
        EXPECT_THROW(changed.set("not a date-time"), InvalidDateTimeFormatException);
        EXPECT_EQ(c.result, utf8(changed.toString()));
        EXPECT_EQ(c.result, utf8(kept.toString()));
    }
}

TEST(ValueSharing, HeldInPlaceOrSharedCopiesStayIndependent)
{
    const struct
    {
        const char* what;
        CIMValue value;
    } cases[] = {
        {"null", CIMValue(CIMTYPE_STRING, false)},
        {"uint64", CIMValue(Uint64(1) << 40)},
        {"real64", CIMValue(Real64(2.5))},
        {"char16", CIMValue(Char16(0x263A))},
        {"string", CIMValue(String("seventeen"))},
        {"datetime", CIMValue(CIMDateTime("20240102030405.000000+000"))},
        {"array", CIMValue(Array<Uint16>(3, Uint16(7)))},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        const String text = c.value.toString();
        CIMValue copy = c.value;
        CIMValue assigned;
        assigned = copy;
        EXPECT_TRUE(copy == c.value);
        EXPECT_TRUE(assigned == c.value);

        copy.set(String("changed"));
        assigned.setNullValue(CIMTYPE_UINT8, true);
        const CIMValue& alias = assigned;
        assigned = alias;

        EXPECT_EQ(text, c.value.toString());
        EXPECT_EQ("changed", utf8(copy.toString()));
        EXPECT_TRUE(assigned.isNull());
        EXPECT_TRUE(assigned.isArray());
        EXPECT_EQ(CIMTYPE_UINT8, assigned.getType());
        EXPECT_FALSE(assigned == c.value);

        // A value set from its own content keeps it.
        CIMValue self = c.value;
        if (self.getType() == CIMTYPE_STRING && !self.isNull())
        {
            String s;
            self.get(s);
            self.set(s);
            EXPECT_TRUE(self == c.value);
        }
    }
}

TEST(ValueSharing, ValuesHeldInPlaceCompareByTypeAndContent)
{
    EXPECT_FALSE(CIMValue(Uint32(1)) == CIMValue(Sint32(1)));
    EXPECT_FALSE(CIMValue(Uint16(65)) == CIMValue(Char16(65)));
    EXPECT_FALSE(CIMValue(Uint8(0)) == CIMValue(CIMTYPE_UINT8, false));
    EXPECT_TRUE(CIMValue(Real64(0.0)) == CIMValue(Real64(-0.0)));
    EXPECT_TRUE(CIMValue(Sint8(-1)) == CIMValue(Sint8(-1)));
    EXPECT_EQ("-1", utf8(CIMValue(Sint8(-1)).toString()));
    EXPECT_EQ("TRUE", utf8(CIMValue(Boolean(true)).toString()));
    EXPECT_TRUE(CIMValue(String("a")) == CIMValue(String("a")));
    EXPECT_FALSE(CIMValue(String("a")) == CIMValue(String("A")));
}

TEST(ValueSharing, CopiesMadeAndDroppedFromManyThreads)
{
    const String text("shared between threads");
    const CIMValue value(text);
    const CIMValue array(Array<String>(4, text));
    const CIMDateTime when("20240102030405.000000+000");
    const CIMValue time(when);
    std::vector<std::thread> threads;
    std::vector<int> wrong(4, 0);
    for (size_t t = 0; t < wrong.size(); t++)
    {
        threads.emplace_back([&, t]() {
            for (int i = 0; i < 20000; i++)
            {
                String s = text;
                CIMValue v = value;
                CIMValue a = array;
                String back;
                v.get(back);
                s.append(Char16('!'));
                CIMDateTime d;
                time.get(d);
                d.setUtcOffSet(60);
                if (back != text || s.size() != text.size() + 1 || a.getArraySize() != 4 ||
                    !time.equal(CIMValue(when)) || d.equal(when))
                {
                    wrong[t]++;
                }
            }
        });
    }
    for (std::thread& t : threads)
    {
        t.join();
    }
    for (int w : wrong)
    {
        EXPECT_EQ(0, w);
    }
    EXPECT_EQ("shared between threads", utf8(text));
}
