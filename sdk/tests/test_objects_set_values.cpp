// Providers fill an instance built from a class one property at a time, each
// through a handle (getProperty(i).setValue). The instance keeps sharing its
// class's properties and holds only the values set; whichever way the
// instance is read afterwards, it must read as if every property were its
// own, and handles must keep reaching it as OpenPegasus's do.

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Sdk/Ownership.h>

#include "../src/CimXml/CimXmlWriter.h"
#include "../src/Common/SdkRepAccess.h"

PEGASUS_USING_PEGASUS;

namespace
{

const CIMName CLASS("Test_Counters");

// A key, counters of several value kinds and a property no provider sets.
CIMClass makeClass()
{
    CIMClass c(CLASS);
    CIMProperty id(CIMName("InstanceID"), CIMValue(String()), 0, CIMName(), CLASS);
    id.addQualifier(CIMQualifier(CIMName("Key"), CIMValue(Boolean(true))));
    c.addProperty(id);
    c.addProperty(CIMProperty(CIMName("ReadIOs"), CIMValue(Uint64(0)), 0, CIMName(), CLASS));
    c.addProperty(CIMProperty(CIMName("WriteIOs"), CIMValue(Uint64(0)), 0, CIMName(), CLASS));
    c.addProperty(CIMProperty(CIMName("ElementName"), CIMValue(String("unset")), 0, CIMName(), CLASS));
    c.addProperty(
        CIMProperty(CIMName("Sizes"), CIMValue(Array<Uint16>()), 0, CIMName(), CLASS));
    c.addProperty(CIMProperty(CIMName("Untouched"), CIMValue(Uint32(7)), 0, CIMName(), CLASS));
    return c;
}

// The class as the class cache hands it out: shared, so that instances
// built from it share its properties.
CIMClass sharedClass()
{
    static const CIMClass cls = makeClass();
    return cls.clone();
}

void set(CIMInstance& inst, const char* name, const CIMValue& value)
{
    inst.getProperty(inst.findProperty(CIMName(name))).setValue(value);
}

CIMValue valueOf(const CIMConstInstance& inst, const char* name)
{
    return inst.getProperty(inst.findProperty(CIMName(name))).getValue();
}

std::string encoded(const CIMConstInstance& inst)
{
    std::string xml;
    orv::cimxml::appendInstance(xml, inst);
    return xml;
}

Array<Uint16> sizes(Uint16 a, Uint16 b)
{
    Array<Uint16> x;
    x.append(a);
    x.append(b);
    return x;
}

// What the filled instance must read as: the same values set on an instance
// that was given a copy of each property of the class, sharing nothing.
CIMInstance reference(const CIMClass& cls, const String& id, Uint64 reads, Uint64 writes,
                      const Array<Uint16>& sz)
{
    CIMInstance inst(cls.getClassName());
    for (Uint32 i = 0; i < cls.getPropertyCount(); i++)
    {
        inst.addProperty(cls.getProperty(i).clone());
    }
    set(inst, "InstanceID", CIMValue(id));
    set(inst, "ReadIOs", CIMValue(reads));
    set(inst, "WriteIOs", CIMValue(writes));
    set(inst, "Sizes", CIMValue(sz));
    return inst;
}

} // namespace

TEST(ObjectsSetValues, AFilledInstanceReadsTheSameEveryWay)
{
    const CIMClass cls = sharedClass();
    const std::string classBefore = encoded(cls.buildInstance(true, true, CIMPropertyList()));
    CIMInstance inst = cls.buildInstance(true, true, CIMPropertyList());
    CIMInstance sibling = cls.buildInstance(true, true, CIMPropertyList());

    // Out of list order, one property set twice with another in between.
    set(inst, "WriteIOs", CIMValue(Uint64(5)));
    set(inst, "InstanceID", CIMValue(String("id-1")));
    set(inst, "Sizes", CIMValue(sizes(1, 2)));
    set(inst, "WriteIOs", CIMValue(Uint64(6)));
    set(inst, "ReadIOs", CIMValue(Uint64(1) << 40));
    set(sibling, "ReadIOs", CIMValue(Uint64(99)));

    const CIMInstance expected = reference(cls, "id-1", Uint64(1) << 40, 6, sizes(1, 2));
    EXPECT_EQ(encoded(expected), encoded(inst));
    EXPECT_TRUE(inst.identical(expected));
    EXPECT_TRUE(expected.identical(inst));
    EXPECT_EQ(CIMValue(Uint64(6)), valueOf(inst, "WriteIOs"));
    EXPECT_EQ(CIMValue(Uint32(7)), valueOf(inst, "Untouched"));
    EXPECT_EQ(CIMValue(String("unset")), valueOf(inst, "ElementName"));

    // Copies and paths take the values set, not the class's.
    CIMInstance copy = inst.clone();
    EXPECT_EQ(encoded(expected), encoded(copy));
    EXPECT_EQ(String("id-1"), inst.buildPath(cls).getKeyBindings()[0].getValue());
    const String mof = CIMObject(inst).toString();
    EXPECT_NE(PEG_NOT_FOUND, mof.find("id-1")) << mof;

    // Changes after the copy stay on their side.
    set(copy, "ReadIOs", CIMValue(Uint64(3)));
    EXPECT_EQ(CIMValue(Uint64(1) << 40), valueOf(inst, "ReadIOs"));
    set(inst, "WriteIOs", CIMValue(Uint64(8)));
    EXPECT_EQ(CIMValue(Uint64(6)), valueOf(copy, "WriteIOs"));

    // Neither the class nor a sibling built from it saw any of it.
    EXPECT_EQ(classBefore, encoded(cls.buildInstance(true, true, CIMPropertyList())));
    EXPECT_EQ(CIMValue(Uint64(99)), valueOf(sibling, "ReadIOs"));
    EXPECT_EQ(CIMValue(Uint64(0)), valueOf(sibling, "WriteIOs"));
    EXPECT_EQ(CIMValue(String()), valueOf(sibling, "InstanceID"));
}

TEST(ObjectsSetValues, HandlesKeepReachingTheInstanceWhileOthersAreSet)
{
    const CIMClass cls = sharedClass();
    CIMInstance inst = cls.buildInstance(true, true, CIMPropertyList());
    const CIMConstInstance reader(inst);

    // A handle kept while the same property is reached again, then while
    // another is set: both reach the instance, and reads follow them live.
    CIMProperty reads = inst.getProperty(inst.findProperty(CIMName("ReadIOs")));
    reads.setValue(CIMValue(Uint64(1)));
    EXPECT_EQ(CIMValue(Uint64(1)), valueOf(inst, "ReadIOs"));
    set(inst, "ReadIOs", CIMValue(Uint64(2)));
    EXPECT_EQ(CIMValue(Uint64(2)), reads.getValue());
    // A copy taken while the handle is held does not follow it.
    const CIMInstance copy = inst.clone();
    reads.setValue(CIMValue(Uint64(20)));
    EXPECT_EQ(CIMValue(Uint64(2)), valueOf(copy, "ReadIOs"));
    const std::string before = encoded(reader);
    set(inst, "WriteIOs", CIMValue(Uint64(3)));
    reads.setValue(CIMValue(Uint64(4)));
    EXPECT_EQ(CIMValue(Uint64(4)), valueOf(reader, "ReadIOs"));
    EXPECT_EQ(CIMValue(Uint64(3)), valueOf(reader, "WriteIOs"));
    EXPECT_NE(before, encoded(reader));

    // A handle taken through a const reader sees later sets.
    CIMConstProperty seen = reader.getProperty(reader.findProperty(CIMName("WriteIOs")));
    set(inst, "WriteIOs", CIMValue(Uint64(5)));
    EXPECT_EQ(CIMValue(Uint64(5)), seen.getValue());

    // An internal walk keeps reading what it started from while the
    // instance goes on being filled.
    CIMInstance walked = cls.buildInstance(true, true, CIMPropertyList());
    const Uint32 readIdx = walked.findProperty(CIMName("ReadIOs"));
    const Uint32 writeIdx = walked.findProperty(CIMName("WriteIOs"));
    CIMProperty held = walked.getProperty(readIdx);
    held.setValue(CIMValue(Uint64(1)));
    const auto walk = SdkRepAccess::rep(walked)->properties.view();
    held = CIMProperty();
    set(walked, "WriteIOs", CIMValue(Uint64(2)));
    set(walked, "ReadIOs", CIMValue(Uint64(3)));
    EXPECT_EQ(CIMValue(Uint64(1)), walk.value(readIdx));
    EXPECT_EQ(CIMValue(Uint64(0)), walk.value(writeIdx));
    EXPECT_EQ(CIMValue(Uint64(2)), valueOf(walked, "WriteIOs"));
    EXPECT_EQ(CIMValue(Uint64(3)), valueOf(walked, "ReadIOs"));

    // The instance is someone else's as long as a handle reaches into it.
    EXPECT_NE(SdkRepAccess::rep(Sdk::exclusiveInstance(inst)), SdkRepAccess::rep(inst));
    CIMInstance alone = cls.buildInstance(true, true, CIMPropertyList());
    set(alone, "ReadIOs", CIMValue(Uint64(6)));
    set(alone, "WriteIOs", CIMValue(Uint64(7)));
    EXPECT_EQ(SdkRepAccess::rep(Sdk::exclusiveInstance(alone)), SdkRepAccess::rep(alone));
}

TEST(ObjectsSetValues, HandleChangesBeyondTheValueStayWithTheInstance)
{
    const CIMClass cls = sharedClass();
    CIMInstance inst = cls.buildInstance(true, true, CIMPropertyList());
    set(inst, "ReadIOs", CIMValue(Uint64(1)));
    {
        CIMProperty p = inst.getProperty(inst.findProperty(CIMName("WriteIOs")));
        p.setValue(CIMValue(Uint64(2)));
        p.setName(CIMName("Writes"));
        p.addQualifier(CIMQualifier(CIMName("Counter"), CIMValue(Boolean(true))));
    }
    EXPECT_EQ(PEG_NOT_FOUND, inst.findProperty(CIMName("WriteIOs")));
    EXPECT_NE(PEG_NOT_FOUND, inst.findProperty(CIMName("Writes")));
    set(inst, "ElementName", CIMValue(String("named")));

    EXPECT_EQ(PEG_NOT_FOUND, inst.findProperty(CIMName("WriteIOs")));
    const Uint32 renamed = inst.findProperty(CIMName("Writes"));
    ASSERT_NE(PEG_NOT_FOUND, renamed);
    EXPECT_EQ(1u, inst.getProperty(renamed).getQualifierCount());
    EXPECT_EQ(CIMValue(Uint64(2)), valueOf(inst, "Writes"));
    EXPECT_EQ(CIMValue(Uint64(1)), valueOf(inst, "ReadIOs"));
    EXPECT_EQ(CIMValue(String("named")), valueOf(inst, "ElementName"));

    CIMInstance sibling = cls.buildInstance(true, true, CIMPropertyList());
    EXPECT_NE(PEG_NOT_FOUND, sibling.findProperty(CIMName("WriteIOs")));
    EXPECT_EQ(0u, sibling.getProperty(sibling.findProperty(CIMName("WriteIOs"))).getQualifierCount());
}

// A filled instance handed to several threads at once (a provider's result
// shared by the requests reading it): reads through handles and whole
// encodings race with each other.
TEST(ObjectsSetValues, OneFilledInstanceReadFromManyThreads)
{
    const CIMClass cls = sharedClass();
    CIMInstance inst = cls.buildInstance(true, true, CIMPropertyList());
    set(inst, "InstanceID", CIMValue(String("id-2")));
    set(inst, "ReadIOs", CIMValue(Uint64(11)));
    set(inst, "WriteIOs", CIMValue(Uint64(12)));
    const CIMConstInstance shared = inst;
    const std::string expected = encoded(reference(cls, "id-2", 11, 12, Array<Uint16>()));
    const char* names[] = {"InstanceID", "ReadIOs", "WriteIOs", "Untouched"};
    const CIMValue values[] = {CIMValue(String("id-2")), CIMValue(Uint64(11)),
                               CIMValue(Uint64(12)), CIMValue(Uint32(7))};

    std::vector<int> wrong(4, 0);
    std::vector<std::thread> threads;
    for (size_t t = 0; t < wrong.size(); t++)
    {
        threads.emplace_back([&, t]() {
            for (int i = 0; i < 500; i++)
            {
                const size_t k = (i + t) % 4;
                if (!(valueOf(shared, names[k]) == values[k]))
                {
                    wrong[t]++;
                }
                if (i % 50 == 0 && encoded(shared) != expected)
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
    EXPECT_EQ(expected, encoded(inst));
}

// Reading a class property by property (as the server does to learn its
// property names) must leave instances built afterwards sharing its
// properties, not each with copies of them.
TEST(ObjectsSetValues, ReadingAClassLeavesItShared)
{
    // A copy, as the repository hands out: the two share one block.
    const CIMClass stored = sharedClass();
    const CIMClass cls = stored.clone();
    for (Uint32 i = 0; i < cls.getPropertyCount(); i++)
    {
        EXPECT_FALSE(cls.getProperty(i).getName().isNull());
    }
    CIMClass writable = cls;
    writable.getProperty(1).getValue();

    const CIMInstance inst = cls.buildInstance(true, true, CIMPropertyList());
    const auto mine = SdkRepAccess::rep(inst)->properties.view();
    const auto theirs = SdkRepAccess::rep(cls)->properties.view();
    ASSERT_EQ(theirs.size(), mine.size());
    for (size_t i = 0; i < mine.size(); i++)
    {
        EXPECT_EQ(SdkRepAccess::rep(theirs[i]), SdkRepAccess::rep(mine[i])) << i;
    }
}
