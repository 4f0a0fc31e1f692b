// Objects that share their element lists underneath (instances built from a
// class, clones of classes and instances) must still behave as independent
// copies: no change through one is ever seen through another, while handles
// that OpenPegasus shares keep reaching their object.

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Sdk/Ownership.h>

#include "../src/Common/SdkRepAccess.h"

PEGASUS_USING_PEGASUS;

namespace
{

const CIMName SIZE("Size");
const CIMName UNITS("Units");

CIMClass makeClass()
{
    CIMClass c(CIMName("Test_Stats"));
    c.addQualifier(CIMQualifier(CIMName("Description"), CIMValue(String("statistics"))));
    CIMProperty size(SIZE, CIMValue(Uint64(0)), 0, CIMName(), CIMName("Test_Stats"));
    size.addQualifier(CIMQualifier(UNITS, CIMValue(String("bytes"))));
    size.addQualifier(CIMQualifier(CIMName("Counter"), CIMValue(Boolean(true))));
    c.addProperty(size);
    c.addProperty(CIMProperty(CIMName("Name"), CIMValue(String("n")), 0, CIMName(),
                              CIMName("Test_Stats")));
    return c;
}

// What an object looks like, for comparing before and after a change.
std::string dump(const CIMConstInstance& inst)
{
    std::string text = std::to_string(inst.getQualifierCount()) + ";";
    for (Uint32 i = 0; i < inst.getPropertyCount(); i++)
    {
        CIMConstProperty p = inst.getProperty(i);
        text += (const char*)p.getName().getString().getCString();
        text += "=";
        text += (const char*)p.getValue().toString().getCString();
        text += "/";
        text += (const char*)p.getClassOrigin().getString().getCString();
        text += p.getPropagated() ? "+" : "";
        for (Uint32 k = 0; k < p.getQualifierCount(); k++)
        {
            CIMConstQualifier q = p.getQualifier(k);
            text += " ";
            text += (const char*)q.getName().getString().getCString();
            text += ":";
            text += (const char*)q.getValue().toString().getCString();
        }
        text += ";";
    }
    return text;
}

std::string dump(const CIMClass& cls)
{
    return dump(cls.buildInstance(true, true, CIMPropertyList()));
}

using Change = std::function<void(CIMInstance&)>;

const struct
{
    const char* what;
    Change change;
} INSTANCE_CHANGES[] = {
    {"property value", [](CIMInstance& i) { i.getProperty(0).setValue(CIMValue(Uint64(9))); }},
    {"qualifier value",
     [](CIMInstance& i) { i.getProperty(0).getQualifier(0).setValue(CIMValue(String("KiB"))); }},
    {"qualifier added",
     [](CIMInstance& i) {
         i.getProperty(0).addQualifier(CIMQualifier(CIMName("Max"), CIMValue(Uint32(1))));
     }},
    {"qualifier removed", [](CIMInstance& i) { i.getProperty(0).removeQualifier(1); }},
    {"class origin", [](CIMInstance& i) { i.getProperty(1).setClassOrigin(CIMName("X")); }},
    {"property renamed", [](CIMInstance& i) { i.getProperty(0).setName(CIMName("Bytes")); }},
    {"propagated", [](CIMInstance& i) { i.getProperty(1).setPropagated(true); }},
    {"qualifiers only dropped", [](CIMInstance& i) { i.filter(false, true, CIMPropertyList()); }},
    {"class origin only dropped", [](CIMInstance& i) { i.filter(true, false, CIMPropertyList()); }},
    {"property removed", [](CIMInstance& i) { i.removeProperty(0); }},
    {"instance qualifier removed", [](CIMInstance& i) { i.removeQualifier(0); }},
    {"filtered", [](CIMInstance& i) { i.filter(false, false, CIMPropertyList()); }},
};

} // namespace

TEST(ObjectsSharing, ChangesToOneCopyNeverReachAnother)
{
    for (const auto& c : INSTANCE_CHANGES)
    {
        SCOPED_TRACE(c.what);
        CIMClass cls = makeClass();
        const std::string classBefore = dump(cls);
        CIMInstance changed = cls.buildInstance(true, true, CIMPropertyList());
        CIMInstance sibling = cls.buildInstance(true, true, CIMPropertyList());
        CIMInstance cloneBefore = changed.clone();
        const std::string original = dump(changed);

        c.change(changed);
        CIMInstance cloneAfter = changed.clone();

        EXPECT_NE(original, dump(changed));
        EXPECT_EQ(original, dump(sibling));
        EXPECT_EQ(original, dump(cloneBefore));
        EXPECT_EQ(classBefore, dump(cls));
        EXPECT_EQ(dump(changed), dump(cloneAfter));

        // And the other way: changing the copies leaves the changed one alone.
        const std::string changedText = dump(changed);
        cloneAfter.removeProperty(0);
        sibling.getProperty(0).getQualifier(0).setValue(CIMValue(String("other")));
        EXPECT_EQ(changedText, dump(changed));
    }
}

TEST(ObjectsSharing, ClassChangesDoNotReachInstancesOrClones)
{
    CIMClass cls = makeClass();
    CIMInstance inst = cls.buildInstance(true, true, CIMPropertyList());
    CIMInstance partial = cls.buildInstance(true, false, CIMPropertyList());
    CIMClass copy = cls.clone();
    const std::string instBefore = dump(inst);
    const std::string partialBefore = dump(partial);
    const std::string copyBefore = dump(copy);

    cls.getProperty(0).getQualifier(0).setValue(CIMValue(String("bits")));
    cls.getProperty(0).removeQualifier(1);
    cls.removeQualifier(0);

    EXPECT_EQ(instBefore, dump(inst));
    EXPECT_EQ(partialBefore, dump(partial));
    EXPECT_EQ(copyBefore, dump(copy));
    EXPECT_NE(copyBefore, dump(cls));
}

TEST(ObjectsSharing, HandlesKeepReachingTheirOwnObject)
{
    CIMClass cls = makeClass();
    CIMInstance inst = cls.buildInstance(true, true, CIMPropertyList());

    // Taken before a clone: still the instance's, never the clone's.
    CIMQualifier units = inst.getProperty(0).getQualifier(0);
    CIMInstance clone = inst.clone();
    units.setValue(CIMValue(String("KiB")));
    EXPECT_EQ("KiB", std::string((const char*)inst.getProperty(0)
                                     .getQualifier(0)
                                     .getValue()
                                     .toString()
                                     .getCString()));
    EXPECT_EQ("bytes", std::string((const char*)clone.getProperty(0)
                                       .getQualifier(0)
                                       .getValue()
                                       .toString()
                                       .getCString()));

    // A read-only view follows later changes made through the object.
    CIMInstance other = cls.buildInstance(true, true, CIMPropertyList());
    const CIMConstInstance view(other);
    CIMConstProperty size = view.getProperty(0);
    CIMConstQualifier sizeUnits = size.getQualifier(0);
    other.getProperty(0).setValue(CIMValue(Uint64(5)));
    other.getProperty(0).getQualifier(0).setValue(CIMValue(String("MiB")));
    EXPECT_EQ(CIMValue(Uint64(5)), size.getValue());
    EXPECT_EQ(CIMValue(String("MiB")), sizeUnits.getValue());

    // A qualifier handed to addQualifier stays shared with the property, and
    // instances built afterwards do not follow it.
    CIMQualifier added(CIMName("Max"), CIMValue(Uint32(1)));
    CIMProperty classSize = cls.getProperty(0);
    classSize.addQualifier(added);
    CIMInstance built = cls.buildInstance(true, true, CIMPropertyList());
    added.setValue(CIMValue(Uint32(2)));
    EXPECT_EQ(CIMValue(Uint32(2)), classSize.getQualifier(2).getValue());
    EXPECT_EQ(CIMValue(Uint32(1)), built.getProperty(0).getQualifier(2).getValue());
}

TEST(ObjectsSharing, OneClassReadFromManyThreads)
{
    const CIMClass cls = makeClass().clone();
    const std::string expected = dump(cls);
    std::vector<std::string> seen(4);
    std::vector<int> wrong(seen.size(), 0);
    std::vector<std::thread> threads;
    for (size_t t = 0; t < seen.size(); t++)
    {
        threads.emplace_back([&, t]() {
            for (int i = 0; i < 2000; i++)
            {
                // Every flag pair, so that the threads race to make the
                // class's shared declarations without qualifiers or origin.
                const bool qualifiers = (i + t) % 2 == 0;
                const bool origin = (i + t) % 4 < 2;
                CIMInstance inst = cls.buildInstance(qualifiers, origin, CIMPropertyList());
                inst.getProperty(0).setValue(CIMValue(Uint64(i)));
                const CIMConstInstance read = inst;
                CIMConstProperty size = read.getProperty(read.findProperty(SIZE));
                if (size.getQualifierCount() != (qualifiers ? 2u : 0u) ||
                    size.getClassOrigin().isNull() == origin || !(size.getValue() == CIMValue(Uint64(i))))
                {
                    wrong[t]++;
                }
                CIMConstProperty p = cls.getProperty(0);
                (void)p.getQualifier(0);
            }
            seen[t] = dump(cls);
        });
    }
    for (std::thread& t : threads)
    {
        t.join();
    }
    for (size_t t = 0; t < seen.size(); t++)
    {
        EXPECT_EQ(expected, seen[t]);
        EXPECT_EQ(0, wrong[t]);
    }
}

TEST(ObjectsSharing, ExclusiveInstanceCopiesWhateverSomeoneElseHolds)
{
    const struct
    {
        const char* what;
        bool touched; // a property reached before, so the class no longer shares them
        std::function<void(const CIMInstance&, std::vector<CIMInstance>&,
                           std::vector<CIMProperty>&)>
            hold;
    } holders[] = {
        {"another handle", true,
         [](const CIMInstance& i, std::vector<CIMInstance>& held, std::vector<CIMProperty>&) {
             held.push_back(i);
         }},
        {"a property handle", true,
         [](const CIMInstance& i, std::vector<CIMInstance>&, std::vector<CIMProperty>& props) {
             props.push_back(CIMInstance(i).getProperty(1));
         }},
        {"the class it was built from", false,
         [](const CIMInstance&, std::vector<CIMInstance>&, std::vector<CIMProperty>&) {}},
    };
    for (const auto& h : holders)
    {
        SCOPED_TRACE(h.what);
        CIMClass cls = makeClass();
        const std::string classBefore = dump(cls);
        CIMInstance inst = cls.buildInstance(true, true, CIMPropertyList());
        if (h.touched)
        {
            inst.getProperty(0).setValue(CIMValue(Uint64(3)));
        }
        std::vector<CIMInstance> held;
        std::vector<CIMProperty> props;
        h.hold(inst, held, props);
        const std::string before = dump(inst);

        CIMInstance mine = Sdk::exclusiveInstance(inst);
        mine.filter(false, false, CIMPropertyList());
        mine.removeProperty(0);

        EXPECT_EQ(classBefore, dump(cls));
        if (!held.empty() || !props.empty())
        {
            EXPECT_EQ(before, dump(inst));
        }
        for (const CIMProperty& p : props)
        {
            EXPECT_EQ(CIMName("Test_Stats"), p.getClassOrigin());
        }
    }

    // Nobody else holding it: no copy is made.
    CIMClass cls = makeClass();
    CIMInstance alone = cls.buildInstance(true, true, CIMPropertyList());
    alone.getProperty(0).setValue(CIMValue(Uint64(3)));
    CIMInstance same = Sdk::exclusiveInstance(alone);
    same.removeProperty(0);
    EXPECT_EQ(1u, alone.getPropertyCount());
}

// Instances built or filtered without qualifiers or class origins share a
// trimmed form of their class's declarations; it must match the class as it
// is when the instance is made, not as it was when the form was first made.
TEST(ObjectsSharing, TrimmedInstancesFollowTheClassAsItIsNow)
{
    const struct
    {
        bool qualifiers;
        bool classOrigin;
    } flags[] = {{false, true}, {true, false}, {false, false}};
    for (const auto& f : flags)
    {
        SCOPED_TRACE(std::to_string(f.qualifiers) + std::to_string(f.classOrigin));
        CIMClass cls = makeClass();
        CIMInstance built = cls.buildInstance(f.qualifiers, f.classOrigin, CIMPropertyList());
        CIMInstance filtered = cls.buildInstance(true, true, CIMPropertyList());
        filtered.getProperty(0).setValue(CIMValue(Uint64(0)));
        filtered.filter(f.qualifiers, f.classOrigin, CIMPropertyList());
        const std::string before = dump(built);
        EXPECT_EQ(before, dump(filtered));

        CIMProperty size = cls.getProperty(0);
        size.setName(CIMName("Bytes"));
        size.setClassOrigin(CIMName("Test_Base"));
        size.setPropagated(true);
        CIMInstance later = cls.buildInstance(f.qualifiers, f.classOrigin, CIMPropertyList());
        CIMInstance laterFiltered = cls.buildInstance(true, true, CIMPropertyList());
        laterFiltered.filter(f.qualifiers, f.classOrigin, CIMPropertyList());

        EXPECT_EQ(before, dump(built));
        EXPECT_EQ(before, dump(filtered));
        EXPECT_EQ(dump(later), dump(laterFiltered));
        EXPECT_EQ(CIMName("Bytes"), later.getProperty(0).getName());
        EXPECT_TRUE(later.getProperty(0).getPropagated());
        EXPECT_EQ(f.classOrigin ? CIMName("Test_Base") : CIMName(),
                  later.getProperty(0).getClassOrigin());
        EXPECT_EQ(f.qualifiers ? 2u : 0u, later.getProperty(0).getQualifierCount());

        // Renaming in one trimmed instance reaches no other.
        later.getProperty(0).setName(CIMName("Mine"));
        EXPECT_EQ(CIMName("Bytes"), laterFiltered.getProperty(0).getName());
        EXPECT_EQ(CIMName("Bytes"), cls.getProperty(0).getName());
    }
}

TEST(ObjectsSharing, PropertyClonesAndTheirQualifierHandles)
{
    CIMProperty original(SIZE, CIMValue(Uint64(1)), 0, CIMName(), CIMName("Test_Stats"));
    CIMQualifier units(UNITS, CIMValue(String("bytes")));
    original.addQualifier(units);
    CIMProperty copy = original.clone();

    // The handle given to addQualifier reaches the original, not the copy.
    units.setValue(CIMValue(String("KiB")));
    EXPECT_EQ(CIMValue(String("KiB")), original.getQualifier(0).getValue());
    EXPECT_EQ(CIMValue(String("bytes")), copy.getQualifier(0).getValue());

    // A read-only handle follows changes made through its own property only.
    const CIMConstProperty view(copy);
    CIMConstQualifier seen = view.getQualifier(0);
    CIMProperty copyOfCopy = copy.clone();
    copy.getQualifier(0).setValue(CIMValue(String("MiB")));
    copy.setName(CIMName("Bytes"));
    EXPECT_EQ(CIMValue(String("MiB")), seen.getValue());
    EXPECT_EQ(CIMName("Bytes"), view.getName());
    EXPECT_EQ(CIMValue(String("bytes")), copyOfCopy.getQualifier(0).getValue());
    EXPECT_EQ(SIZE, copyOfCopy.getName());
    EXPECT_EQ(CIMValue(String("KiB")), original.getQualifier(0).getValue());
    EXPECT_EQ(SIZE, original.getName());

    // Values are the property's own as well.
    copyOfCopy.setValue(CIMValue(Uint64(2)));
    EXPECT_EQ(CIMValue(Uint64(1)), original.getValue());
    EXPECT_EQ(CIMValue(Uint64(1)), copy.getValue());
    EXPECT_TRUE(original.identical(copy.clone()) == false);
    EXPECT_TRUE(copy.identical(copy.clone()));
}

// Copies share the properties nobody holds a handle to, and stop sharing one
// as soon as either side reaches it: whatever order copying, reaching and
// changing come in, a change shows only where OpenPegasus would show it.
TEST(ObjectsSharing, CopiesShareOnlyWhatNoHandleReaches)
{
    const struct
    {
        const char* what;
        // Runs on `inst` (built from the class, Size set to 3 through a
        // dropped handle) and `copy` (a clone of it taken at `cloneAt`).
        std::function<void(CIMInstance& inst, CIMInstance& copy)> steps;
        Uint64 instSize;
        Uint64 copySize;
    } cases[] = {
        {"change the original after the clone",
         [](CIMInstance& inst, CIMInstance& copy) {
             copy = inst.clone();
             inst.getProperty(0).setValue(CIMValue(Uint64(7)));
         },
         7, 3},
        {"change the clone",
         [](CIMInstance& inst, CIMInstance& copy) {
             copy = inst.clone();
             copy.getProperty(0).setValue(CIMValue(Uint64(8)));
         },
         3, 8},
        {"a handle taken before the clone changes only the original",
         [](CIMInstance& inst, CIMInstance& copy) {
             CIMProperty held = inst.getProperty(0);
             copy = inst.clone();
             held.setValue(CIMValue(Uint64(9)));
         },
         9, 3},
        {"a handle taken from the clone changes only the clone",
         [](CIMInstance& inst, CIMInstance& copy) {
             copy = inst.clone();
             CIMProperty held = copy.getProperty(0);
             inst.getProperty(0).setValue(CIMValue(Uint64(4)));
             held.setValue(CIMValue(Uint64(5)));
         },
         4, 5},
        {"clone of a clone, then both change",
         [](CIMInstance& inst, CIMInstance& copy) {
             CIMInstance middle = inst.clone();
             copy = middle.clone();
             middle.getProperty(0).setValue(CIMValue(Uint64(1)));
             copy.getProperty(0).setValue(CIMValue(Uint64(2)));
             EXPECT_EQ(CIMValue(Uint64(1)), middle.getProperty(0).getValue());
         },
         3, 2},
        {"a handle still reaches its instance after a later get",
         [](CIMInstance& inst, CIMInstance& copy) {
             CIMProperty first = inst.getProperty(0);
             copy = inst.clone();
             inst.getProperty(0).setValue(CIMValue(Uint64(6)));
             EXPECT_EQ(CIMValue(Uint64(6)), first.getValue());
         },
         6, 3},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        CIMClass cls = makeClass();
        const std::string classBefore = dump(cls);
        CIMInstance inst = cls.buildInstance(true, true, CIMPropertyList());
        inst.getProperty(0).setValue(CIMValue(Uint64(3)));
        CIMInstance copy;
        c.steps(inst, copy);
        EXPECT_EQ(CIMValue(c.instSize), inst.getProperty(0).getValue());
        EXPECT_EQ(CIMValue(c.copySize), copy.getProperty(0).getValue());
        // The property never reached stays the class's, unchanged everywhere.
        EXPECT_EQ(CIMValue(String("n")), copy.getProperty(1).getValue());
        EXPECT_EQ(classBefore, dump(cls));
    }
}

// The flags a list keeps of what it handed out, against a plain model, past
// the 64 held in place and across that boundary when elements are removed.
TEST(ObjectsSharing, OutFlagsFollowAPlainModel)
{
    OutSet flags;
    std::vector<bool> model;
    unsigned seed = 12345;
    auto next = [&seed](unsigned n) {
        seed = seed * 1103515245u + 12345u;
        return (seed >> 8) % n;
    };
    for (int step = 0; step < 20000; step++)
    {
        const size_t size = model.size();
        const unsigned op = next(8);
        if (op < 3 || size == 0)
        {
            model.push_back(false);
        }
        else if (op < 5)
        {
            size_t i = next(unsigned(size));
            flags.set(i);
            model[i] = true;
        }
        else if (op < 6)
        {
            size_t i = next(unsigned(size));
            flags.reset(i);
            model[i] = false;
        }
        else if (op < 7 && size > 40)
        {
            size_t i = next(unsigned(size));
            flags.erase(i);
            model.erase(model.begin() + long(i));
        }
        else if (next(400) == 0)
        {
            flags.clear();
            model.assign(model.size(), false);
        }
        bool any = false;
        for (size_t i = 0; i < model.size(); i++)
        {
            ASSERT_EQ(model[i], flags.test(i)) << "step " << step << ", flag " << i;
            any = any || model[i];
        }
        ASSERT_EQ(any, flags.any()) << "step " << step;
        if (model.size() > 150)
        {
            model.resize(0);
            flags.clear();
        }
    }
}
