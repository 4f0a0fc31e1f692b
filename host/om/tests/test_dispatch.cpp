// Instance operations and methods routed through the object manager to the
// test providers: which provider calls are made, what comes back, which
// errors the caller sees.

#include "TestSupport.h"

#include <Pegasus/Common/CIMClass.h>

#include <algorithm>
#include <functional>

PEGASUS_USING_PEGASUS;
using namespace omtest;

namespace
{

class DispatchTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        om = makeObjectManager();
        resetProviderEvents();
    }

    std::unique_ptr<cimom::ObjectManager> om;
    OperationContext ctx = contextFor("alice");
};

typedef std::vector<std::string> Strings;

TEST_F(DispatchTest, EnumerationReachesTheProviderOfEveryServedSubclass)
{
    Array<CIMInstance> all = om->enumerateInstances(ctx, NS, CIMName("OMT_Base"), true, false,
                                                    false, false, CIMPropertyList());
    EXPECT_EQ(ids(all), (Strings{"G1", "W1", "W2"}));
    // One call per registered class, each naming its own class; OMT_Base and
    // OMT_Orphan have no provider and are skipped.
    EXPECT_EQ(eventsStartingWith("enumerateInstances:"),
              (Strings{"enumerateInstances:OMT_WidgetProvider:OMT_Widget",
                       "enumerateInstances:OMT_WidgetProvider:OMT_Gadget"}));

    resetProviderEvents();
    Array<CIMObjectPath> names = om->enumerateInstanceNames(ctx, NS, CIMName("omt_widget"));
    EXPECT_EQ(ids(names), (Strings{"G1", "W1", "W2"}));
    EXPECT_EQ(eventsStartingWith("enumerateInstanceNames:").size(), 2u);

    Array<CIMInstance> gadgets = om->enumerateInstances(ctx, NS, CIMName("OMT_Gadget"), true,
                                                        false, false, false, CIMPropertyList());
    EXPECT_EQ(ids(gadgets), (Strings{"G1"}));
}

TEST_F(DispatchTest, ClassesWithoutProviderAnswerAsAnEmptyRepository)
{
    EXPECT_EQ(om->enumerateInstances(ctx, NS, CIMName("OMT_Orphan"), true, false, false, false,
                                     CIMPropertyList())
                  .size(),
              0u);
    EXPECT_EQ(om->enumerateInstanceNames(ctx, NS, CIMName("OMT_Orphan")).size(), 0u);
    CimError e = cimError([&] {
        om->getInstance(ctx, NS, elementPath("OMT_Orphan", "O1"), false, false, false,
                        CIMPropertyList());
    });
    EXPECT_EQ(e.code, CIM_ERR_NOT_FOUND);
}

struct FilterCase
{
    const char* description;
    bool deepInheritance;
    bool localOnly;
    std::vector<const char*> propertyList; // {"*"} stands for a null list
    Strings expected;
};

TEST_F(DispatchTest, EnumeratedInstancesAreCutToInheritanceAndPropertyList)
{
    // A gadget enumerated as a widget; OMT_Base defines Id, BaseProp,
    // Counter; OMT_Widget adds Color, Size; OMT_Gadget adds Extra.
    const FilterCase cases[] = {
        {"deep, all", true, false, {"*"}, {"baseprop", "color", "counter", "extra", "id", "size"}},
        {"shallow keeps the requested class's properties", false, false, {"*"},
         {"baseprop", "color", "counter", "id", "size"}},
        // As in OpenPegasus, localOnly does not cut instances.
        {"deep, local only is ignored", true, true, {"*"},
         {"baseprop", "color", "counter", "extra", "id", "size"}},
        {"shallow, local only is ignored", false, true, {"*"},
         {"baseprop", "color", "counter", "id", "size"}},
        {"property list, unknown names ignored", true, false, {"SIZE", "Extra", "Nope"},
         {"extra", "size"}},
        {"property list within shallow", false, false, {"Size", "Extra"}, {"size"}},
        {"empty property list", true, false, {}, {}},
    };
    for (const FilterCase& c : cases)
    {
        CIMPropertyList list;
        if (c.propertyList.size() != 1 || std::string(c.propertyList[0]) != "*")
        {
            Array<CIMName> names;
            for (const char* n : c.propertyList)
            {
                names.append(CIMName(n));
            }
            list.set(names);
        }
        Array<CIMInstance> result = om->enumerateInstances(
            ctx, NS, CIMName("OMT_Widget"), c.deepInheritance, c.localOnly, false, false, list);
        bool found = false;
        for (Uint32 i = 0; i < result.size(); i++)
        {
            if (result[i].getClassName().equal(CIMName("OMT_Gadget")))
            {
                found = true;
                EXPECT_EQ(propertyNames(result[i]), c.expected) << c.description;
            }
        }
        EXPECT_TRUE(found) << c.description;
    }
}

TEST_F(DispatchTest, QualifiersAndClassOriginOnlyWhenAskedFor)
{
    for (bool include : {false, true})
    {
        Array<CIMInstance> result = om->enumerateInstances(ctx, NS, CIMName("OMT_Widget"), true,
                                                           false, include, include,
                                                           CIMPropertyList());
        ASSERT_GT(result.size(), 0u);
        for (Uint32 i = 0; i < result.size(); i++)
        {
            Uint32 pos = result[i].findProperty(CIMName("Id"));
            ASSERT_NE(pos, PEG_NOT_FOUND);
            CIMConstProperty id = result[i].getProperty(pos);
            EXPECT_EQ(id.findQualifier(CIMName("Key")) != PEG_NOT_FOUND, include);
            EXPECT_EQ(id.getClassOrigin().isNull(), !include);
            if (include)
            {
                EXPECT_TRUE(id.getClassOrigin().equal(CIMName("OMT_Base")));
            }
        }
    }
}

TEST_F(DispatchTest, DeliveredPathsGetHostAndNamespaceOnlyWhereMissing)
{
    Array<CIMInstance> widgets = om->enumerateInstances(ctx, NS, CIMName("OMT_Widget"), false,
                                                        false, false, false, CIMPropertyList());
    Array<CIMObjectPath> names = om->enumerateInstanceNames(ctx, NS, CIMName("OMT_Widget"));
    Array<CIMObjectPath> paths;
    for (Uint32 i = 0; i < widgets.size(); i++)
    {
        paths.append(widgets[i].getPath());
    }
    paths.appendArray(names);
    ASSERT_EQ(paths.size(), 6u);
    for (Uint32 i = 0; i < paths.size(); i++)
    {
        std::string id = ids(Array<CIMObjectPath>(&paths[i], 1))[0];
        // W2 came with its own host; the others had none.
        EXPECT_EQ(str(paths[i].getHost()), id == "W2" ? "otherhost" : "omhost") << id;
        EXPECT_EQ(paths[i].getNameSpace(), NS) << id;
    }

    CIMInstance w1 = om->getInstance(ctx, NS, elementPath("OMT_Widget", "W1"), false, false,
                                     false, CIMPropertyList());
    EXPECT_EQ(str(w1.getPath().getHost()), "omhost");
    EXPECT_EQ(w1.getPath().getNameSpace(), NS);
}

TEST_F(DispatchTest, GetInstanceReachesTheProviderOfThePathsClass)
{
    CIMInstance g1 = om->getInstance(ctx, NS, elementPath("OMT_Gadget", "G1"), false, false,
                                     false, CIMPropertyList());
    EXPECT_TRUE(g1.getClassName().equal(CIMName("OMT_Gadget")));
    String extra;
    g1.getProperty(g1.findProperty(CIMName("Extra"))).getValue().get(extra);
    EXPECT_EQ(str(extra), "gizmo");
    EXPECT_EQ(eventsStartingWith("getInstance:"),
              (Strings{"getInstance:OMT_WidgetProvider:OMT_Gadget"}));

    // localOnly is ignored on instances: the inherited properties stay.
    CIMInstance local = om->getInstance(ctx, NS, elementPath("OMT_Gadget", "G1"), true, false,
                                        false, CIMPropertyList());
    EXPECT_EQ(propertyNames(local), propertyNames(g1));
}

TEST_F(DispatchTest, RequestErrorsFoundBeforeAnyProviderIsCalled)
{
    const CIMNamespaceName badNs("no/such");
    const CIMObjectPath nope = elementPath("OMT_Nope", "X");
    const CIMObjectPath w1 = elementPath("OMT_Widget", "W1");
    Array<CIMParamValue> out;
    struct Case
    {
        const char* description;
        std::function<void()> call;
        CIMStatusCode expected;
    } cases[] = {
        {"enumerate in unknown namespace",
         [&] {
             om->enumerateInstances(ctx, badNs, CIMName("OMT_Widget"), true, false, false, false,
                                    CIMPropertyList());
         },
         CIM_ERR_INVALID_NAMESPACE},
        {"enumerate unknown class",
         [&] {
             om->enumerateInstances(ctx, NS, CIMName("OMT_Nope"), true, false, false, false,
                                    CIMPropertyList());
         },
         CIM_ERR_INVALID_CLASS},
        {"names of unknown class", [&] { om->enumerateInstanceNames(ctx, NS, CIMName("OMT_Nope")); },
         CIM_ERR_INVALID_CLASS},
        {"get of unknown class",
         [&] { om->getInstance(ctx, NS, nope, false, false, false, CIMPropertyList()); },
         CIM_ERR_INVALID_CLASS},
        {"get in unknown namespace",
         [&] { om->getInstance(ctx, badNs, w1, false, false, false, CIMPropertyList()); },
         CIM_ERR_INVALID_NAMESPACE},
        {"associators of unknown class",
         [&] {
             om->associators(ctx, NS, nope, CIMName(), CIMName(), String(), String(), false, false,
                             CIMPropertyList());
         },
         CIM_ERR_INVALID_PARAMETER},
        {"associator names with an illegal role",
         [&] { om->associatorNames(ctx, NS, w1, CIMName(), CIMName(), "bad role!", String()); },
         CIM_ERR_INVALID_PARAMETER},
        {"associators with an illegal result role",
         [&] {
             om->associators(ctx, NS, w1, CIMName(), CIMName(), String(), "9x", false, false,
                             CIMPropertyList());
         },
         CIM_ERR_INVALID_PARAMETER},
        {"references of unknown class",
         [&] { om->referenceNames(ctx, NS, nope, CIMName(), String()); },
         CIM_ERR_INVALID_PARAMETER},
        {"references in unknown namespace",
         [&] {
             om->referenceNames(ctx, badNs, w1, CIMName(), String());
         },
         CIM_ERR_INVALID_NAMESPACE},
        {"method the class lacks",
         [&] {
             om->invokeMethod(ctx, NS, w1, CIMName("Nope"), Array<CIMParamValue>(), out);
         },
         CIM_ERR_METHOD_NOT_AVAILABLE},
        {"method of unknown class",
         [&] {
             om->invokeMethod(ctx, NS, nope, CIMName("Paint"), Array<CIMParamValue>(), out);
         },
         CIM_ERR_INVALID_CLASS},
        {"inherited method without a method provider",
         [&] {
             om->invokeMethod(ctx, NS, elementPath("OMT_Gadget", "G1"), CIMName("WhoAmI"),
                              Array<CIMParamValue>(), out);
         },
         CIM_ERR_NOT_SUPPORTED},
        {"class definition of unknown class",
         [&] {
             om->getClass(ctx, NS, CIMName("OMT_Nope"), false, true, true, CIMPropertyList());
         },
         CIM_ERR_NOT_FOUND},
        {"class names in unknown namespace",
         [&] { om->enumerateClassNames(ctx, badNs, CIMName(), true); }, CIM_ERR_INVALID_NAMESPACE},
    };
    for (Case& c : cases)
    {
        CimError e = cimError(c.call);
        EXPECT_EQ(e.code, c.expected) << c.description << ": " << e.message;
        EXPECT_FALSE(e.message.empty()) << c.description;
    }
    EXPECT_TRUE(eventsStartingWith("getInstance:").empty());
    EXPECT_TRUE(eventsStartingWith("invokeMethod:").empty());
}

TEST_F(DispatchTest, ProviderExceptionsReachTheCaller)
{
    struct Case
    {
        const char* kind;
        CIMStatusCode code;
        const char* text; // exact, or nullptr when any text will do
    } cases[] = {
        {"cim", CIM_ERR_ACCESS_DENIED, "OMT refuses you"},
        {"traceable", CIM_ERR_INVALID_PARAMETER, "OMT traceable text"},
        {"pegasus", CIM_ERR_FAILED, nullptr},
        {"std", CIM_ERR_FAILED, "OMT std failure"},
        {"anything else", CIM_ERR_FAILED, nullptr},
    };
    for (const Case& c : cases)
    {
        Array<CIMParamValue> in, out;
        in.append(CIMParamValue("Kind", CIMValue(String(c.kind))));
        CimError e = cimError([&] {
            om->invokeMethod(ctx, NS, elementPath("OMT_Widget", "W1"), CIMName("Fail"), in, out);
        });
        EXPECT_EQ(e.code, c.code) << c.kind;
        if (c.text)
        {
            EXPECT_EQ(e.message, c.text) << c.kind;
        }
        else
        {
            EXPECT_FALSE(e.message.empty()) << c.kind;
        }
    }

    CimError missing = cimError([&] {
        om->getInstance(ctx, NS, elementPath("OMT_Widget", "W9"), false, false, false,
                        CIMPropertyList());
    });
    EXPECT_EQ(missing.code, CIM_ERR_NOT_FOUND);
    EXPECT_EQ(missing.message, "OMT_WidgetProvider: no element W9");
}

TEST_F(DispatchTest, RegistrationClassesLiveInTheInteropNamespace)
{
    CIMClass caps = om->getClass(ctx, CIMNamespaceName("root/PG_InterOp"),
                                 CIMName("PG_ProviderCapabilities"), false, false, false,
                                 CIMPropertyList());
    for (const char* name : {"ProviderModuleName", "ProviderName", "CapabilityID", "ClassName",
                             "Namespaces", "ProviderType"})
    {
        EXPECT_NE(caps.findProperty(CIMName(name)), PEG_NOT_FOUND) << name;
    }
}

} // namespace
