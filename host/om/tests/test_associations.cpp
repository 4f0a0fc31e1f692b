// Association requests: which association providers the object manager
// picks for an object and filters, what each is told, and how results are
// filtered on the way back.
//
// Test data: OMT_Link (Left, Right: OMT_Base REF) links W1-W2 and W1-G1;
// OMT_Ownership (Owner: OMT_Widget REF, Part: OMT_Gadget REF) links W2-G1.

#include "TestSupport.h"

#include <set>

PEGASUS_USING_PEGASUS;
using namespace omtest;

namespace
{

typedef std::vector<std::string> Strings;

class AssociationTest : public ::testing::Test
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

struct RoutingCase
{
    const char* description;
    const char* objectClass;
    const char* objectId;
    const char* assocClass;  // "" for none
    const char* resultClass; // "" for none
    const char* role;
    Strings expectedIds;
    Strings expectedCalls; // "<provider>:<association class told>:<result class told>"
};

CIMName nameOrNull(const char* s)
{
    return *s ? CIMName(s) : CIMName();
}

const RoutingCase ROUTING[] = {
    {"no filter reaches every association referencing the class", "OMT_Widget", "W1", "", "", "",
     {"G1", "W2"},
     {"OMT_LinkProvider:OMT_Link:", "OMT_OwnershipProvider:OMT_Ownership:"}},
    {"both associations answer for W2", "OMT_Widget", "W2", "", "", "", {"G1", "W1"},
     {"OMT_LinkProvider:OMT_Link:", "OMT_OwnershipProvider:OMT_Ownership:"}},
    {"association class filter", "OMT_Widget", "W2", "OMT_Ownership", "", "", {"G1"},
     {"OMT_OwnershipProvider:OMT_Ownership:"}},
    {"result class filtered here even if the provider ignores it", "OMT_Widget", "W1", "",
     "OMT_Gadget", "", {"G1"},
     {"OMT_LinkProvider:OMT_Link:OMT_Gadget", "OMT_OwnershipProvider:OMT_Ownership:OMT_Gadget"}},
    {"result class superclass keeps subclasses", "OMT_Widget", "W1", "", "OMT_Base", "",
     {"G1", "W2"},
     {"OMT_LinkProvider:OMT_Link:OMT_Base", "OMT_OwnershipProvider:OMT_Ownership:OMT_Base"}},
    // The role is each provider's to judge: every association that can
    // reach the object is asked.
    {"role is judged by the providers", "OMT_Gadget", "G1", "", "", "part", {"W2"},
     {"OMT_LinkProvider:OMT_Link:", "OMT_OwnershipProvider:OMT_Ownership:"}},
    {"object class not referenced by the association", "OMT_Orphan", "O1", "", "", "", {},
     {"OMT_LinkProvider:OMT_Link:"}},
    {"association class filter that no provider serves", "OMT_Widget", "W1", "OMT_Base", "", "",
     {}, {}},
};

TEST_F(AssociationTest, AssociatorsAndNamesRouteByAssociationClassAndRole)
{
    for (const RoutingCase& c : ROUTING)
    {
        CIMObjectPath object = elementPath(c.objectClass, c.objectId);

        resetProviderEvents();
        Array<CIMObject> objects =
            om->associators(ctx, NS, object, nameOrNull(c.assocClass), nameOrNull(c.resultClass),
                            String(c.role), String(), false, false, CIMPropertyList());
        EXPECT_EQ(ids(objects), c.expectedIds) << c.description;
        Strings calls;
        for (const std::string& e : eventsStartingWith("associators:"))
        {
            calls.push_back(e.substr(std::string("associators:").size()));
        }
        EXPECT_EQ(calls, c.expectedCalls) << c.description;

        resetProviderEvents();
        Array<CIMObjectPath> names =
            om->associatorNames(ctx, NS, object, nameOrNull(c.assocClass),
                                nameOrNull(c.resultClass), String(c.role), String());
        EXPECT_EQ(ids(names), c.expectedIds) << c.description;
        EXPECT_EQ(eventsStartingWith("associatorNames:").size(), c.expectedCalls.size())
            << c.description;
        for (Uint32 i = 0; i < names.size(); i++)
        {
            EXPECT_EQ(str(names[i].getHost()), "omhost") << c.description;
            EXPECT_EQ(names[i].getNameSpace(), NS) << c.description;
        }
    }
}

TEST_F(AssociationTest, ReferencesTellEachProviderItsOwnClass)
{
    const CIMObjectPath w1 = elementPath("OMT_Widget", "W1");
    const CIMObjectPath w2 = elementPath("OMT_Widget", "W2");
    const CIMObjectPath g1 = elementPath("OMT_Gadget", "G1");

    Array<CIMObject> refs = om->references(ctx, NS, w1, CIMName(), String(), false, false,
                                           CIMPropertyList());
    EXPECT_EQ(ids(refs), (Strings{"W1-G1", "W1-W2"}));
    EXPECT_EQ(eventsStartingWith("references:"),
              (Strings{"references:OMT_LinkProvider:OMT_Link",
                       "references:OMT_OwnershipProvider:OMT_Ownership"}));

    resetProviderEvents();
    refs = om->references(ctx, NS, w2, CIMName("OMT_Ownership"), String(), false, false,
                          CIMPropertyList());
    EXPECT_EQ(ids(refs), (Strings{"W2-G1"}));
    ASSERT_EQ(refs.size(), 1u);
    EXPECT_EQ(str(refs[0].getPath().getHost()), "omhost");
    EXPECT_EQ(eventsStartingWith("references:"),
              (Strings{"references:OMT_OwnershipProvider:OMT_Ownership"}));

    resetProviderEvents();
    Array<CIMObjectPath> names = om->referenceNames(ctx, NS, g1, CIMName(), String("Right"));
    EXPECT_EQ(ids(names), (Strings{"W1-G1"}));
    EXPECT_EQ(eventsStartingWith("referenceNames:"),
              (Strings{"referenceNames:OMT_LinkProvider:OMT_Link",
                       "referenceNames:OMT_OwnershipProvider:OMT_Ownership"}));
}

TEST_F(AssociationTest, ResultInstancesFollowThePropertyList)
{
    Array<CIMName> names;
    names.append(CIMName("left"));
    names.append(CIMName("Color"));
    const CIMPropertyList list(names);
    const CIMObjectPath w1 = elementPath("OMT_Widget", "W1");

    Array<CIMObject> refs =
        om->references(ctx, NS, w1, CIMName("OMT_Link"), String(), false, false, list);
    Array<CIMObject> ends = om->associators(ctx, NS, w1, CIMName("OMT_Link"), CIMName(), String(),
                                            String(), false, false, list);
    ASSERT_EQ(refs.size(), 2u);
    ASSERT_EQ(ends.size(), 2u);
    for (Uint32 i = 0; i < 2; i++)
    {
        EXPECT_EQ(propertyNames(CIMInstance(refs[i])), (Strings{"left"}));
        // The path keeps both keys whatever the list.
        EXPECT_EQ(refs[i].getPath().getKeyBindings().size(), 2u);
        EXPECT_EQ(propertyNames(CIMInstance(ends[i])), (Strings{"color"}));
    }
}

TEST_F(AssociationTest, ClassLevelRequestsAreAnsweredFromClassDefinitions)
{
    // OMT_Widget is an OMT_Base: OMT_Link and OMT_BrokenLink reach it by
    // Left (and OMT_Link by Right), OMT_Ownership by Owner.
    const CIMObjectPath classOnly(String(), CIMNamespaceName(), CIMName("OMT_Widget"));
    auto classNames = [](const Array<CIMObjectPath>& paths) {
        std::set<std::string> out;
        for (Uint32 i = 0; i < paths.size(); i++)
        {
            EXPECT_EQ(paths[i].getKeyBindings().size(), 0u);
            EXPECT_EQ(str(paths[i].getHost()), "omhost");
            out.insert(str(paths[i].getClassName().getString()));
        }
        return out;
    };
    struct Case
    {
        const char* description;
        const char* assocClass;
        const char* resultClass;
        const char* role;
        const char* resultRole;
        std::set<std::string> associators;
        std::set<std::string> references;
    } cases[] = {
        {"everything", "", "", "", "", {"OMT_Base", "OMT_Broken", "OMT_Gadget"},
         {"OMT_BrokenLink", "OMT_Link", "OMT_Ownership"}},
        {"association class", "OMT_Link", "", "", "", {"OMT_Base"}, {"OMT_Link"}},
        {"role", "", "", "owner", "", {"OMT_Gadget"}, {"OMT_Ownership"}},
        {"result role", "", "", "", "Right", {"OMT_Base", "OMT_Broken"},
         {"OMT_BrokenLink", "OMT_Link", "OMT_Ownership"}},
        {"result class", "", "OMT_Widget", "", "", {"OMT_Gadget"},
         {"OMT_BrokenLink", "OMT_Link", "OMT_Ownership"}},
        {"role that no reference has", "", "", "Nope", "", {}, {}},
    };
    for (const Case& c : cases)
    {
        Array<CIMObjectPath> names =
            om->associatorNames(ctx, NS, classOnly, nameOrNull(c.assocClass),
                                nameOrNull(c.resultClass), String(c.role), String(c.resultRole));
        EXPECT_EQ(classNames(names), c.associators) << c.description;
        Array<CIMObject> classes = om->associators(
            ctx, NS, classOnly, nameOrNull(c.assocClass), nameOrNull(c.resultClass),
            String(c.role), String(c.resultRole), false, false, CIMPropertyList());
        ASSERT_EQ(classes.size(), names.size()) << c.description;
        for (Uint32 i = 0; i < classes.size(); i++)
        {
            EXPECT_TRUE(classes[i].isClass()) << c.description;
        }
        // References filter by association class through the result class.
        EXPECT_EQ(classNames(om->referenceNames(ctx, NS, classOnly, nameOrNull(c.assocClass),
                                                String(c.role))),
                  c.references)
            << c.description;
    }
    EXPECT_TRUE(eventsStartingWith("associators:").empty());
    EXPECT_TRUE(eventsStartingWith("associatorNames:").empty());
    EXPECT_TRUE(eventsStartingWith("referenceNames:").empty());
}

TEST_F(AssociationTest, AssociationClassInstancesAreServedByTheAssociationProvider)
{
    Array<CIMInstance> links = om->enumerateInstances(ctx, NS, CIMName("OMT_Link"), true, false,
                                                      false, false, CIMPropertyList());
    EXPECT_EQ(ids(links), (Strings{"W1-G1", "W1-W2"}));
}

} // namespace
