// The three collection-membership associations, through the object manager
// as a client reaches them and called directly as the server calls them.

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/InternalException.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Sdk/CollectingResponseHandlers.h>

#include "ModuleFixture.h"
#include "orvapi.h"
#include "orvsim.h"

using namespace orvtest;
using namespace Pegasus;

namespace
{

const CIMNamespaceName NS("root/orv");
const CIMName MEMBER_OF("ORV_MemberOfStatisticsCollection");
const CIMName MANIFEST_MEMBER_OF("ORV_MemberOfBlockStatisticsManifestCollection");
const CIMName ASSOCIATED("ORV_AssociatedBlockStatisticsManifestCollection");
const CIMName STATS_COLL("ORV_StatisticsCollection");
const CIMName MANIF_COLL("ORV_BlockStatisticsManifestCollection");
const char* const MEMBER_OF_PROVIDER = "ORV_MemberOfStatisticsCollectionProvider";

// One node with one port, two disks, two volumes and no LUN paths: seven
// statistics instances (the array, the node, the port, two disks, two volumes).
const char* const SMALL_MODEL = R"({
  "nodes": {"count": 1},
  "ports": {"items": [{"node": 0, "slot": 1, "port": 1, "type": "target", "protocol": "fc"}]},
  "disks": {"items": [{"deviceID": "5000C50000A00001"}, {"deviceID": "5000C50000A00002"}]},
  "volumes": {"items": [
    {"name": "va", "wwn": "60002AC0000000000000000000A0000A", "started": true},
    {"name": "vb", "wwn": "60002AC0000000000000000000A0000B", "started": true}]},
  "vluns": {"count": 0}
})";

const std::multiset<std::string> SMALL_MODEL_MEMBER_CLASSES = {
    "ORV_ArrayStatisticalData", "ORV_NodeStatisticalData", "ORV_PortStatisticalData",
    "ORV_DiskStatisticalData",  "ORV_DiskStatisticalData", "ORV_VolumeStatisticalData",
    "ORV_VolumeStatisticalData"};

String statsCollID()
{
    return String("QZ_KYRO:") + simSystemName().c_str() + "-StatisticsCollection";
}

String manifCollID()
{
    return String("QZ_KYRO:") + simSystemName().c_str() + "-BlockStatisticsManifestCollection";
}

std::string className(const CIMObjectPath& path)
{
    return str(path.getClassName().getString());
}

// The referenced path held by the named key of an association path.
CIMObjectPath keyRef(const CIMObjectPath& assoc, const char* role)
{
    Array<CIMKeyBinding> keys = assoc.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        if (keys[i].getName().equal(role))
        {
            return CIMObjectPath(keys[i].getValue());
        }
    }
    ADD_FAILURE() << "no key " << role << " in " << str(assoc.toString());
    return CIMObjectPath();
}

CIMObjectPath refProperty(const CIMInstance& instance, const char* role)
{
    Uint32 pos = instance.findProperty(role);
    if (pos == PEG_NOT_FOUND)
    {
        ADD_FAILURE() << "no property " << role;
        return CIMObjectPath();
    }
    CIMObjectPath value;
    instance.getProperty(pos).getValue().get(value);
    return value;
}

std::string instanceID(const CIMObjectPath& path)
{
    Array<CIMKeyBinding> keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        if (keys[i].getName().equal("InstanceID"))
        {
            return str(keys[i].getValue());
        }
    }
    return std::string();
}

// Runs fn, keeping both what it logged and what it threw.
CimOutcome runLogged(const std::function<void()>& fn, std::string& log)
{
    orvsim_log_capture_begin();
    CimOutcome outcome = runCatching(fn);
    char* lines = orvsim_log_capture_take();
    log = lines ? lines : "";
    free(lines);
    orvsim_log_capture_end();
    return outcome;
}

class MembershipTest : public ModuleFixture
{
protected:
    void SetUp() override
    {
        ModuleFixture::SetUp();
        loadModelJson(SMALL_MODEL);
        _handle = om().handle();
    }

    void TearDown() override
    {
        for (CIMProvider* p : _providers)
        {
            p->terminate();
        }
        ModuleFixture::TearDown();
    }

    // A provider of the module created and initialized as the server does.
    CIMProvider* make(const char* name)
    {
        CIMProvider* p = createProvider(name);
        EXPECT_NE(nullptr, p) << name;
        if (p)
        {
            p->initialize(_handle);
            _providers.push_back(p);
        }
        return p;
    }

    CIMAssociationProvider* assoc(const char* name)
    {
        return dynamic_cast<CIMAssociationProvider*>(make(name));
    }

    CIMObjectPath statsCollPath()
    {
        return instancePath(STATS_COLL, statsCollID());
    }

    // A path of each statistics class of the small model, as the object
    // manager lists them.
    std::map<std::string, CIMObjectPath> statisticsByClass()
    {
        std::map<std::string, CIMObjectPath> byClass;
        Array<CIMObjectPath> all =
            enumerateInstanceNames(READER_USER, "CIM_BlockStorageStatisticalData");
        for (Uint32 i = 0; i < all.size(); i++)
        {
            byClass[className(all[i])] = all[i];
        }
        return byClass;
    }

    Array<CIMObjectPath> associatorNames(const CIMObjectPath& object, const CIMName& assocClass,
                                         const CIMName& resultClass = CIMName())
    {
        return om().associatorNames(contextFor(READER_USER), NS, object, assocClass, resultClass,
                                    String(), String());
    }

    CIMOMHandle _handle;
    std::vector<CIMProvider*> _providers;
};

TEST_F(MembershipTest, EveryStatisticsInstanceIsAMemberOfTheOneCollection)
{
    Array<CIMObjectPath> names = enumerateInstanceNames(READER_USER, MEMBER_OF);
    std::multiset<std::string> memberClasses;
    std::set<std::string> memberIDs;
    for (Uint32 i = 0; i < names.size(); i++)
    {
        ASSERT_EQ(2u, names[i].getKeyBindings().size());
        EXPECT_EQ(simHostName(), str(names[i].getHost()));
        CIMObjectPath collection = keyRef(names[i], "Collection");
        CIMObjectPath member = keyRef(names[i], "Member");
        EXPECT_EQ(className(collection), "ORV_StatisticsCollection");
        EXPECT_EQ(str(statsCollID()), instanceID(collection));
        EXPECT_EQ(simHostName(), str(collection.getHost()));
        EXPECT_EQ(simHostName(), str(member.getHost()));
        memberClasses.insert(className(member));
        memberIDs.insert(instanceID(member));
    }
    EXPECT_EQ(SMALL_MODEL_MEMBER_CLASSES, memberClasses);
    EXPECT_EQ(SMALL_MODEL_MEMBER_CLASSES.size(), memberIDs.size()) << "a member is listed twice";

    // The instances carry the same pairs in their reference properties.
    Array<CIMInstance> instances = enumerateInstances(READER_USER, MEMBER_OF);
    ASSERT_EQ(names.size(), instances.size());
    for (Uint32 i = 0; i < instances.size(); i++)
    {
        CIMObjectPath path = instances[i].getPath();
        EXPECT_TRUE(refProperty(instances[i], "Member").identical(keyRef(path, "Member")));
        EXPECT_TRUE(refProperty(instances[i], "Collection").identical(keyRef(path, "Collection")));
    }
}

TEST_F(MembershipTest, StatisticsCollectionIsAssociatedWithTheManifestCollection)
{
    Array<CIMInstance> instances = enumerateInstances(READER_USER, ASSOCIATED);
    ASSERT_EQ(1u, instances.size());
    CIMObjectPath statistics = refProperty(instances[0], "Statistics");
    CIMObjectPath manifests = refProperty(instances[0], "ManifestCollection");
    EXPECT_EQ(str(statsCollID()), instanceID(statistics));
    EXPECT_EQ(str(manifCollID()), instanceID(manifests));
    EXPECT_EQ(simHostName(), str(manifests.getHost()));

    Array<CIMObjectPath> names = enumerateInstanceNames(READER_USER, ASSOCIATED);
    ASSERT_EQ(1u, names.size());
    EXPECT_TRUE(names[0].identical(instances[0].getPath()));

    // Each collection leads to the other.
    Array<CIMObject> fromStats =
        om().associators(contextFor(READER_USER), NS, statsCollPath(), ASSOCIATED, CIMName(),
                         String(), String(), false, false, CIMPropertyList());
    ASSERT_EQ(1u, fromStats.size());
    EXPECT_EQ(str(manifCollID()), instanceID(fromStats[0].getPath()));
    Array<CIMObjectPath> fromManifests =
        associatorNames(instancePath(MANIF_COLL, manifCollID()), ASSOCIATED);
    ASSERT_EQ(1u, fromManifests.size());
    EXPECT_EQ(str(statsCollID()), instanceID(fromManifests[0]));
}

TEST_F(MembershipTest, AssociatorsLeadFromTheCollectionToItsMembersAndBack)
{
    Array<CIMObjectPath> members = associatorNames(statsCollPath(), MEMBER_OF);
    std::multiset<std::string> classes;
    for (Uint32 i = 0; i < members.size(); i++)
    {
        classes.insert(className(members[i]));
    }
    EXPECT_EQ(SMALL_MODEL_MEMBER_CLASSES, classes);

    // Without an association filter the manifest collection joins them.
    EXPECT_EQ(members.size() + 1, associatorNames(statsCollPath(), CIMName()).size());

    std::map<std::string, CIMObjectPath> stats = statisticsByClass();
    ASSERT_EQ(1u, stats.count("ORV_DiskStatisticalData"));
    CIMObjectPath disk = stats["ORV_DiskStatisticalData"];
    Array<CIMObject> collections =
        om().associators(contextFor(READER_USER), NS, disk, MEMBER_OF, CIMName(), String(),
                         String(), false, false, CIMPropertyList());
    ASSERT_EQ(1u, collections.size());
    EXPECT_EQ(str(statsCollID()), instanceID(collections[0].getPath()));

    // A statistics instance may be named by its superclass.
    CIMObjectPath bySuperclass = disk;
    bySuperclass.setClassName("CIM_BlockStorageStatisticalData");
    Array<CIMObjectPath> fromSuper = associatorNames(bySuperclass, MEMBER_OF);
    ASSERT_EQ(1u, fromSuper.size());
    EXPECT_EQ(str(statsCollID()), instanceID(fromSuper[0]));
}


TEST_F(MembershipTest, ResultClassFilterIsAcceptedButNotAppliedByTheProvider)
{
    CIMAssociationProvider* p = assoc(MEMBER_OF_PROVIDER);
    ASSERT_NE(nullptr, p);
    Sdk::CollectingObjectResponseHandler objects;
    p->associators(contextFor(READER_USER), statsCollPath(), MEMBER_OF, "ORV_VolumeStatisticalData",
                   String(), String(), false, false, CIMPropertyList(), objects);
    // Every member, one deliver each; narrowing to volumes is the server's job.
    EXPECT_EQ(SMALL_MODEL_MEMBER_CLASSES.size(), objects.getObjects().size());
    EXPECT_EQ(SMALL_MODEL_MEMBER_CLASSES.size(), objects.deliverCallCount());
    EXPECT_EQ("", objects.protocolError());

    Sdk::CollectingObjectPathResponseHandler names;
    p->associatorNames(contextFor(READER_USER), statsCollPath(), MEMBER_OF,
                       "ORV_VolumeStatisticalData", String(), String(), names);
    EXPECT_EQ("processing,deliver[7],complete", names.callSequence());

    Array<CIMObjectPath> volumes =
        associatorNames(statsCollPath(), MEMBER_OF, "ORV_VolumeStatisticalData");
    ASSERT_EQ(2u, volumes.size());
    EXPECT_EQ("ORV_VolumeStatisticalData", className(volumes[0]));
}

// A filtered-out request makes no handler call at all; an accepted one always
// says processing and complete, even when it finds nothing.
struct FilterCase
{
    const char* what;
    const char* provider;
    const char* operation; // "associatorNames" or "referenceNames"
    int object;            // index into the objects of the test
    const char* role;
    const char* resultRole;
    const char* resultClass;
    int expected; // -1: refused without a handler call; else the count delivered
};

TEST_F(MembershipTest, RoleAndClassFiltersOfEachAssociation)
{
    std::map<std::string, CIMObjectPath> stats = statisticsByClass();
    const CIMObjectPath objects[] = {statsCollPath(), stats["ORV_VolumeStatisticalData"],
                                     instancePath(MANIF_COLL, manifCollID()),
                                     instancePath("ORV_BlockStatisticsManifest", "QZ_KYRO:m")};
    enum
    {
        COLL,
        VOL_STATS,
        MANIF,
        MANIFEST
    };
    const char* const MO = MEMBER_OF_PROVIDER;
    const char* const AS = "ORV_AssociatedBlockStatisticsManifestCollectionProvider";
    const char* const MM = "ORV_MemberOfBlockStatisticsManifestCollectionProvider";
    const FilterCase cases[] = {
        {"collection, both roles", MO, "associatorNames", COLL, "Collection", "Member", "", 7},
        {"roles in any case", MO, "associatorNames", COLL, "cOLLECTION", "member", "", 7},
        {"collection in the member role", MO, "associatorNames", COLL, "Member", "", "", -1},
        {"member, both roles", MO, "associatorNames", VOL_STATS, "Member", "Collection", "", 1},
        {"statistics by the top superclass", MO, "associatorNames", COLL, "", "",
         "CIM_StatisticalData", 7},
        {"collection asking for its superclass", MO, "associatorNames", COLL, "", "",
         "CIM_StatisticsCollection", -1},
        {"class of neither end", MO, "associatorNames", COLL, "", "", "CIM_ManagedElement", -1},
        {"collection wanted by superclass", MO, "associatorNames", VOL_STATS, "", "",
         "CIM_StatisticsCollection", 1},
        {"statistics asking for statistics", MO, "associatorNames", VOL_STATS, "", "",
         "CIM_BlockStorageStatisticalData", -1},
        {"statistics asking for the top superclass", MO, "associatorNames", VOL_STATS, "", "",
         "CIM_StatisticalData", -1},
        {"another statistics class is left to the server", MO, "associatorNames", VOL_STATS, "",
         "", "ORV_DiskStatisticalData", 1},
        {"generic membership class", MO, "referenceNames", COLL, "", "", "CIM_MemberOfCollection",
         7},
        {"own association class", MO, "referenceNames", VOL_STATS, "Member", "",
         "ORV_MemberOfStatisticsCollection", 1},
        {"another association class", MO, "referenceNames", COLL, "", "",
         "CIM_ElementStatisticalData", -1},
        {"collection wanted from a manifest", MM, "associatorNames", MANIFEST, "Member",
         "Collection", "CIM_BlockStatisticsManifestCollection", 1},
        {"manifest collection asking for itself", MM, "associatorNames", MANIF, "", "",
         "CIM_BlockStatisticsManifestCollection", -1},
        {"manifest asking for manifests", MM, "associatorNames", MANIFEST, "", "",
         "ORV_BlockStatisticsManifest", -1},
        {"manifest in the collection role", MM, "referenceNames", MANIFEST, "Collection", "", "",
         -1},
        {"manifest membership class", MM, "referenceNames", MANIFEST, "", "",
         "CIM_MemberOfCollection", 1},
        {"manifests wanted from the statistics collection", AS, "associatorNames", COLL,
         "Statistics", "ManifestCollection", "CIM_BlockStatisticsManifestCollection", 1},
        {"statistics collection wanted from the manifest collection", AS, "associatorNames", MANIF,
         "ManifestCollection", "Statistics", "ORV_StatisticsCollection", 1},
        {"statistics collection asking for itself", AS, "associatorNames", COLL, "", "",
         "CIM_StatisticsCollection", -1},
        {"membership is not this association", AS, "referenceNames", COLL, "", "",
         "CIM_MemberOfCollection", -1},
        {"its own generic class", AS, "referenceNames", MANIF, "", "",
         "CIM_AssociatedBlockStatisticsManifestCollection", 1},
    };
    for (const FilterCase& c : cases)
    {
        CIMAssociationProvider* p = assoc(c.provider);
        ASSERT_NE(nullptr, p);
        Sdk::CollectingObjectPathResponseHandler h;
        const CIMName resultClass = *c.resultClass ? CIMName(c.resultClass) : CIMName();
        std::string log;
        CimOutcome o = runLogged(
            [&]()
            {
                if (std::string(c.operation) == "associatorNames")
                {
                    p->associatorNames(contextFor(READER_USER), objects[c.object], CIMName(),
                                       resultClass, c.role, c.resultRole, h);
                }
                else
                {
                    p->referenceNames(contextFor(READER_USER), objects[c.object], resultClass,
                                      c.role, h);
                }
            },
            log);
        EXPECT_FALSE(o.thrown) << c.what << ": " << o.message;
        if (c.expected < 0)
        {
            EXPECT_EQ(0u, h.calls().size()) << c.what;
            EXPECT_NE(std::string::npos,
                      log.find(std::string(c.provider) + "::" + c.operation + ": invalid params: "))
                << c.what;
        }
        else
        {
            EXPECT_EQ("", h.protocolError()) << c.what;
            EXPECT_EQ((Uint32)c.expected, h.getObjects().size()) << c.what;
        }
    }
}

TEST_F(MembershipTest, ReferencesPutTheCollectionFirstWithThisSystemsHost)
{
    std::map<std::string, CIMObjectPath> stats = statisticsByClass();
    CIMObjectPath volume = stats["ORV_VolumeStatisticalData"];
    CIMObjectPath clientPath = volume;
    clientPath.setHost("client.example.com");

    Array<CIMObject> refs = om().references(contextFor(READER_USER), NS, clientPath, MEMBER_OF,
                                            String(), false, false, CIMPropertyList());
    ASSERT_EQ(1u, refs.size());
    CIMInstance membership(refs[0]);
    EXPECT_TRUE(membership.getClassName().equal(MEMBER_OF));
    CIMObjectPath collection = refProperty(membership, "Collection");
    CIMObjectPath member = refProperty(membership, "Member");
    EXPECT_EQ(str(statsCollID()), instanceID(collection));
    EXPECT_EQ(instanceID(volume), instanceID(member));
    EXPECT_EQ(simHostName(), str(member.getHost()));
    EXPECT_EQ(simHostName(), str(collection.getHost()));

    // From the collection: the same pairs, still collection first, plus the
    // association with the manifest collection.
    Array<CIMObjectPath> names =
        om().referenceNames(contextFor(READER_USER), NS, statsCollPath(), CIMName(), String());
    std::multiset<std::string> assocClasses;
    for (Uint32 i = 0; i < names.size(); i++)
    {
        assocClasses.insert(className(names[i]));
        const char* firstRole =
            names[i].getClassName().equal(MEMBER_OF) ? "Collection" : "Statistics";
        EXPECT_TRUE(names[i].getKeyBindings()[0].getName().equal(firstRole));
        EXPECT_EQ(str(statsCollID()), instanceID(keyRef(names[i], firstRole)));
    }
    EXPECT_EQ(7u, assocClasses.count(str(MEMBER_OF.getString())));
    EXPECT_EQ(1u, assocClasses.count(str(ASSOCIATED.getString())));

    // A path of neither end has no references, and that is no error.
    CIMAssociationProvider* p = assoc(MEMBER_OF_PROVIDER);
    Sdk::CollectingObjectResponseHandler none;
    p->references(contextFor(READER_USER), instancePath(MANIF_COLL, manifCollID()), CIMName(),
                  String(), false, false, CIMPropertyList(), none);
    EXPECT_EQ("processing,complete", none.callSequence());
}

TEST_F(MembershipTest, AssociationOperationsTraceEntryArgumentsAndExit)
{
    CIMAssociationProvider* p = assoc(MEMBER_OF_PROVIDER);
    ASSERT_NE(nullptr, p);
    const CIMObjectPath coll = statsCollPath();
    const std::string n = MEMBER_OF_PROVIDER;
    const std::string obj = str(coll.toString());
    Sdk::CollectingObjectResponseHandler objects;
    Sdk::CollectingObjectPathResponseHandler paths;
    struct Case
    {
        std::function<void()> call;
        std::vector<std::string> lines; // in the order they must appear
    } cases[] = {
        {[&]()
         {
             p->associators(contextFor(READER_USER), coll, MEMBER_OF, CIMName(), String(),
                            String(), false, false, CIMPropertyList(), objects);
         },
         {"-->" + n + "::associators\n",
          n + "::associators: objectName = " + obj +
              "; associationClass=ORV_MemberOfStatisticsCollection; resultClass= \n",
          "<--" + n + "::associators\n"}},
        {[&]()
         {
             p->associatorNames(contextFor(READER_USER), coll, CIMName(), STATS_COLL, String(),
                                String(), paths);
         },
         {"-->" + n + "::associatorNames\n",
          n + "::associatorNames: objectName = " + obj +
              "; associationClass = ; resultClass=ORV_StatisticsCollection \n",
          n + "::associatorNames: invalid params: associationClass=, "
              "resultClass=ORV_StatisticsCollection\n"}},
        {[&]()
         {
             p->references(contextFor(READER_USER), coll, CIMName(), "Member", false, false,
                           CIMPropertyList(), objects);
         },
         {"-->" + n + "::references\n",
          n + "::references: objectName = " + obj + "; resultClass =  \n",
          n + "::references: invalid params: role = Member, resultClass =  \n"}},
        // Names references and ends without a line break.
        {[&]() { p->referenceNames(contextFor(READER_USER), coll, MEMBER_OF, String(), paths); },
         {"-->" + n + "::referenceNames\n",
          n + "::references: objectName = " + obj +
              "; resultClass = ORV_MemberOfStatisticsCollection-->" + n +
              "::_getRelatedInstanceNames: className = ORV_StatisticsCollection \n",
          "<--" + n + "::referenceNames\n"}},
    };
    for (size_t i = 0; i < sizeof(cases) / sizeof(cases[0]); i++)
    {
        std::string log;
        CimOutcome o = runLogged(cases[i].call, log);
        EXPECT_FALSE(o.thrown) << "case " << i << ": " << o.message;
        size_t at = 0;
        for (const std::string& line : cases[i].lines)
        {
            size_t found = log.find(line, at);
            EXPECT_NE(std::string::npos, found) << "case " << i << ": " << line << "\nin:\n" << log;
            at = found == std::string::npos ? at : found + line.size();
        }
    }
}

TEST_F(MembershipTest, GetInstanceFindsAPairByItsTwoKeysWhateverTheHosts)
{
    Array<CIMObjectPath> names = enumerateInstanceNames(READER_USER, MEMBER_OF);
    ASSERT_FALSE(names.size() == 0);
    // As a client may send it back: no host outside, hosts of its own inside.
    CIMObjectPath collection = keyRef(names[3], "Collection");
    CIMObjectPath member = keyRef(names[3], "Member");
    collection.setHost("");
    member.setHost("client.example.com");
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("member", member.toString(), CIMKeyBinding::REFERENCE));
    keys.append(CIMKeyBinding("Collection", collection.toString(), CIMKeyBinding::REFERENCE));
    CIMObjectPath request(String(), NS, MEMBER_OF, keys);

    CIMInstance found = getInstance(READER_USER, request);
    EXPECT_TRUE(found.getPath().identical(names[3]));
}

TEST_F(MembershipTest, GetInstanceRefusals)
{
    Array<CIMObjectPath> names = enumerateInstanceNames(READER_USER, MEMBER_OF);
    ASSERT_FALSE(names.size() == 0);
    Array<CIMKeyBinding> two = names[0].getKeyBindings();
    Array<CIMKeyBinding> one;
    one.append(two[0]);
    Array<CIMKeyBinding> three = two;
    three.append(CIMKeyBinding("Extra", "x", CIMKeyBinding::STRING));
    Array<CIMKeyBinding> unknownMember;
    unknownMember.append(two[0]);
    unknownMember.append(CIMKeyBinding(
        "Member", instancePath("ORV_VolumeStatisticalData", "QZ_KYRO:nothing").toString(),
        CIMKeyBinding::REFERENCE));

    const std::string name = MEMBER_OF_PROVIDER;
    struct Case
    {
        const char* what;
        const char* user;
        Array<CIMKeyBinding> keys;
        CIMStatusCode code;
        std::string message;
        const char* logLine;
    } cases[] = {
        {"one key", READER_USER, one, CIM_ERR_INVALID_PARAMETER, name + " Expect two keys.",
         "::getInstance(): Invalid number of keys (1)\n"},
        {"three keys", READER_USER, three, CIM_ERR_INVALID_PARAMETER, name + " Expect two keys.",
         "::getInstance(): Invalid number of keys (3)\n"},
        {"no such pair", READER_USER, unknownMember, CIM_ERR_NOT_FOUND,
         name + " CIM Object not found.", ""},
        {"refused user before the key count", REFUSED_USER, one, CIM_ERR_ACCESS_DENIED,
         "Insufficient privilege for the user", ""},
    };
    for (const Case& c : cases)
    {
        CIMObjectPath path(String(), NS, MEMBER_OF, c.keys);
        std::string log;
        CimOutcome o = runLogged([&]() { getInstance(c.user, path); }, log);
        EXPECT_EQ(c.code, o.code) << c.what;
        EXPECT_EQ(c.message, o.message) << c.what;
        if (*c.logLine)
        {
            EXPECT_NE(std::string::npos, log.find(name + c.logLine)) << c.what;
        }
    }
}

TEST_F(MembershipTest, RefusedUserIsCheckedBeforeTheFilters)
{
    CIMAssociationProvider* p = assoc(MEMBER_OF_PROVIDER);
    ASSERT_NE(nullptr, p);
    Sdk::CollectingObjectResponseHandler objects;
    Sdk::CollectingObjectPathResponseHandler paths;
    const std::vector<std::function<void()>> calls = {
        [&]()
        {
            p->associators(contextFor(REFUSED_USER), statsCollPath(), CIMName(),
                           "CIM_ManagedElement", "Bogus", String(), false, false, CIMPropertyList(),
                           objects);
        },
        [&]()
        {
            p->associatorNames(contextFor(REFUSED_USER), statsCollPath(), CIMName(), CIMName(),
                               "Bogus", String(), paths);
        },
        [&]()
        {
            p->references(contextFor(REFUSED_USER), statsCollPath(), CIMName(), "Bogus", false,
                          false, CIMPropertyList(), objects);
        },
        [&]() {
            p->referenceNames(contextFor(REFUSED_USER), statsCollPath(), CIMName(), "Bogus", paths);
        },
        [&]()
        {
            dynamic_cast<CIMInstanceProvider*>(p)->enumerateInstanceNames(
                contextFor(REFUSED_USER), classPath(MEMBER_OF), paths);
        },
    };
    for (size_t i = 0; i < calls.size(); i++)
    {
        CimOutcome o = runCatching(calls[i]);
        EXPECT_EQ(CIM_ERR_ACCESS_DENIED, o.code) << "call " << i;
        EXPECT_EQ("Insufficient privilege for the user", o.message) << "call " << i;

        // The trace names the provider's own source, not shared code.
        std::string file;
        try
        {
            calls[i]();
        }
        catch (const TraceableCIMException& e)
        {
            file = str(e.getFile());
        }
        const std::string expected = std::string(MEMBER_OF_PROVIDER) + ".cpp";
        ASSERT_GE(file.size(), expected.size()) << "call " << i << ": " << file;
        EXPECT_EQ(expected, file.substr(file.size() - expected.size())) << "call " << i;
    }
    EXPECT_EQ(0u, objects.calls().size());
    EXPECT_EQ(0u, paths.calls().size());
}

TEST_F(MembershipTest, FailingStatisticsEnumerationPassesThrough)
{
    // Volume counters that cannot be read fail the volume provider's
    // enumeration, and with it the members of the collection.
    injectFault("api_getVolumeStats_chunk", API_ERR_IO);
    CimOutcome direct =
        runCatching([&]() { enumerateInstances(READER_USER, "ORV_VolumeStatisticalData"); });
    ASSERT_TRUE(direct.thrown);

    CimOutcome viaServer = runCatching(
        [&]()
        {
            om().associators(contextFor(READER_USER), NS, statsCollPath(), MEMBER_OF, CIMName(),
                             String(), String(), false, false, CIMPropertyList());
        });
    EXPECT_EQ(direct.code, viaServer.code);
    EXPECT_EQ(direct.message, viaServer.message);

    CIMAssociationProvider* p = assoc(MEMBER_OF_PROVIDER);
    ASSERT_NE(nullptr, p);
    Sdk::CollectingObjectResponseHandler objects;
    std::string log;
    CimOutcome related = runLogged(
        [&]()
        {
            p->associators(contextFor(READER_USER), statsCollPath(), CIMName(), CIMName(), String(),
                           String(), false, false, CIMPropertyList(), objects);
        },
        log);
    EXPECT_EQ(direct.code, related.code);
    EXPECT_EQ(direct.message, related.message);
    EXPECT_NE(std::string::npos,
              log.find(std::string("<--") + MEMBER_OF_PROVIDER +
                       "::_getRelatedInstances: exception thrown while building instances, # of "
                       "instances assembled so far = 0\n"));
    EXPECT_EQ(0u, objects.calls().size());
}

TEST_F(MembershipTest, LifecycleTraceAndRefusedWrites)
{
    struct Case
    {
        const char* provider;
        const char* openFailureName;
    } cases[] = {
        {"ORV_MemberOfStatisticsCollectionProvider", "ORV_MemoberOfStatisticsCollectionProvider"},
        {"ORV_MemberOfBlockStatisticsManifestCollectionProvider",
         "ORV_MemberOfBlockStatisticsManifestCollectionProvider"},
        {"ORV_AssociatedBlockStatisticsManifestCollectionProvider",
         "ORV_AssociatedBlockStatisticsManifestCollectionProvider"},
    };
    for (const Case& c : cases)
    {
        const std::string name = c.provider;
        // The provider's own open is the last one that initialize makes.
        orvsim_reset_call_counts();
        CIMProvider* probe = createProvider(c.provider);
        ASSERT_NE(nullptr, probe);
        probe->initialize(_handle);
        probe->terminate();
        unsigned long opens = orvsim_call_count("api_orvOpenForCimserver");
        ASSERT_GT(opens, 0ul);
        ASSERT_EQ(0, orvsim_set_fault_times("api_orvOpenForCimserver", 5, (int)opens - 1, 1, 0));

        CIMProvider* p = createProvider(c.provider);
        std::string log = captureLog([&]() { p->initialize(_handle); });
        orvsim_clear_faults();
        size_t entry = log.find("--> " + name + "::initialize(cimom)\n)");
        size_t failed = log.find(std::string(c.openFailureName) +
                                 "::initialize(): api_orvOpenForCimserver failed\n");
        size_t exit = log.find("<-- " + name + "::initialize(cimom)\n)");
        EXPECT_LT(entry, failed) << name;
        EXPECT_LT(failed, exit) << name;
        EXPECT_NE(std::string::npos, exit) << name;

        CIMInstanceProvider* ip = dynamic_cast<CIMInstanceProvider*>(p);

        Sdk::CollectingResponseHandler plain;
        Sdk::CollectingObjectPathResponseHandler paths;
        CIMObjectPath path = classPath(ASSOCIATED);
        CIMInstance instance(ASSOCIATED);
        CimOutcome modify = runCatching(
            [&]() {
                ip->modifyInstance(contextFor(READER_USER), path, instance, false,
                                   CIMPropertyList(), plain);
            });
        CimOutcome create = runCatching(
            [&]() { ip->createInstance(contextFor(READER_USER), path, instance, paths); });
        CimOutcome remove =
            runCatching([&]() { ip->deleteInstance(contextFor(READER_USER), path, plain); });
        EXPECT_EQ(name + " does not support modifyInstance.", modify.message);
        EXPECT_EQ(name + " does not support createInstance.", create.message);
        EXPECT_EQ(name + " does not support deleteInstance.", remove.message);
        EXPECT_EQ(CIM_ERR_NOT_SUPPORTED, remove.code);
        p->terminate();
    }
}

} // namespace
