// The filter an enumeration's instances pass through decides once per shape
// of instance; instances that differ from the one before in anything the
// decision rests on must still be filtered as if seen alone.

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>

#include "../src/ResultFilter.h"

PEGASUS_USING_PEGASUS;

namespace
{

const CIMName CLASS("Test_Stats");

CIMClass makeClass()
{
    CIMClass c(CLASS);
    CIMProperty id(CIMName("InstanceID"), CIMValue(String()), 0, CIMName(), CLASS);
    id.addQualifier(CIMQualifier(CIMName("Key"), CIMValue(Boolean(true))));
    c.addProperty(id);
    c.addProperty(CIMProperty(CIMName("ReadIOs"), CIMValue(Uint64(0)), 0, CIMName(), CLASS));
    c.addProperty(CIMProperty(CIMName("WriteIOs"), CIMValue(Uint64(0)), 0, CIMName(), CLASS));
    return c;
}

// Names, values, qualifier counts and class origins, in order.
std::string dump(const CIMConstInstance& inst)
{
    std::string out;
    for (Uint32 i = 0; i < inst.getPropertyCount(); i++)
    {
        CIMConstProperty p = inst.getProperty(i);
        out += (const char*)p.getName().getString().getCString();
        out += "=" + std::string((const char*)p.getValue().toString().getCString());
        out += " q" + std::to_string(p.getQualifierCount());
        out += p.getClassOrigin().isNull() ? "" : " o";
        out += ";";
    }
    out += " iq" + std::to_string(inst.getQualifierCount());
    return out;
}

CIMInstance built(const CIMClass& c, Uint64 reads)
{
    CIMInstance inst = c.buildInstance(false, false, CIMPropertyList());
    inst.getProperty(inst.findProperty(CIMName("ReadIOs"))).setValue(CIMValue(reads));
    return inst;
}

} // namespace

TEST(ResultFilter, EachInstanceIsFilteredAsIfSeenAlone)
{
    const CIMClass cls = makeClass();
    const struct
    {
        const char* what;
        std::function<CIMInstance()> make;
    } kinds[] = {
        {"plain", [&] { return built(cls, 1); }},
        {"with a qualifier of its own",
         [&]
         {
             CIMInstance inst = built(cls, 2);
             inst.getProperty(1).addQualifier(
                 CIMQualifier(CIMName("Counter"), CIMValue(Boolean(true))));
             return inst;
         }},
        {"with an instance qualifier",
         [&]
         {
             CIMInstance inst = built(cls, 3);
             inst.addQualifier(CIMQualifier(CIMName("Description"), CIMValue(String("x"))));
             return inst;
         }},
        {"lacking a property",
         [&]
         {
             CIMInstance inst = built(cls, 4);
             inst.removeProperty(inst.findProperty(CIMName("WriteIOs")));
             return inst;
         }},
        {"with a renamed property",
         [&]
         {
             CIMInstance inst = built(cls, 5);
             inst.getProperty(2).setName(CIMName("Extra"));
             return inst;
         }},
        {"from the class as it is",
         [&] { return cls.buildInstance(true, true, CIMPropertyList()); }},
    };
    Array<CIMName> some;
    some.append(CIMName("InstanceID"));
    some.append(CIMName("WriteIOs"));
    const struct
    {
        const char* what;
        CIMPropertyList list;
        bool qualifiers;
        bool classOrigin;
    } requests[] = {
        {"everything", CIMPropertyList(), true, true},
        {"no qualifiers", CIMPropertyList(), false, true},
        {"no class origin", CIMPropertyList(), true, false},
        {"some properties, bare", CIMPropertyList(some), false, false},
    };
    for (const auto& r : requests)
    {
        SCOPED_TRACE(r.what);
        cimom::InstanceFilter shared;
        shared.propertyList = r.list;
        shared.includeQualifiers = r.qualifiers;
        shared.includeClassOrigin = r.classOrigin;
        // Every kind after every other, through one filter.
        for (const auto& first : kinds)
        {
            for (const auto& second : kinds)
            {
                SCOPED_TRACE(std::string(first.what) + ", then " + second.what);
                for (const auto* k : {&first, &second})
                {
                    // As a provider's array holds what it delivers.
                    const CIMInstance held = k->make();
                    const CIMInstance& inst = held;
                    const CIMInstance providers = held;
                    const std::string before = dump(providers);
                    cimom::InstanceFilter alone;
                    alone.propertyList = r.list;
                    alone.includeQualifiers = r.qualifiers;
                    alone.includeClassOrigin = r.classOrigin;
                    const std::string expected = dump(cimom::filterInstance(inst, alone));
                    if (!r.qualifiers)
                    {
                        EXPECT_EQ(std::string::npos, expected.find(" q1"));
                        EXPECT_NE(std::string::npos, expected.find("iq0"));
                    }
                    if (!r.classOrigin)
                    {
                        EXPECT_EQ(std::string::npos, expected.find(" o"));
                    }
                    if (!r.list.isNull())
                    {
                        EXPECT_EQ(std::string::npos, expected.find("ReadIOs"));
                    }
                    EXPECT_EQ(expected, dump(cimom::filterInstance(inst, shared)));
                    // The provider's own object is left as it was.
                    EXPECT_EQ(before, dump(providers));
                }
            }
        }
    }
}
