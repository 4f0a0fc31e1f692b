// Path matching and association building of the shared helpers.

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMObjectPath.h>

#include "ModuleFixture.h"
#include "ORV_Common.h"

namespace
{

CIMObjectPath parse(const char* text)
{
    CIMObjectPath path;
    path.set(String(text));
    return path;
}

struct MatchCase
{
    const char* what;
    const char* left;
    const char* right;
    bool match;
};

// Reference key values are quoted paths, as the framework writes them.
const MatchCase MATCH_CASES[] = {
    {"same path", "root/orv:ORV_StatisticsCollection.InstanceID=\"QZ_KYRO:S1-X\"",
     "root/orv:ORV_StatisticsCollection.InstanceID=\"QZ_KYRO:S1-X\"", true},
    {"hosts of the paths differ", "//h1/root/orv:ORV_StatisticsCollection.InstanceID=\"A\"",
     "root/orv:ORV_StatisticsCollection.InstanceID=\"A\"", true},
    {"class name case differs", "root/orv:orv_statisticscollection.InstanceID=\"A\"",
     "root/orv:ORV_StatisticsCollection.InstanceID=\"A\"", true},
    {"key name case differs", "root/orv:ORV_X.instanceid=\"A\"", "root/orv:ORV_X.InstanceID=\"A\"",
     true},
    {"key order differs", "root/orv:ORV_X.A=\"1\",B=\"2\"", "root/orv:ORV_X.B=\"2\",A=\"1\"", true},
    {"string values differ", "root/orv:ORV_X.InstanceID=\"A-1\"",
     "root/orv:ORV_X.InstanceID=\"A-2\"", false},
    {"string values differ in case", "root/orv:ORV_X.InstanceID=\"QZ_KYRO:a-1\"",
     "root/orv:ORV_X.InstanceID=\"QZ_KYRO:A-1\"", false},
    {"empty string keys", "root/orv:ORV_X.InstanceID=\"\"", "root/orv:ORV_X.InstanceID=\"\"",
     true},
    {"empty against non-empty", "root/orv:ORV_X.InstanceID=\"\"",
     "root/orv:ORV_X.InstanceID=\"A\"", false},
    {"namespaces differ", "root/orv:ORV_X.InstanceID=\"A\"",
     "root/other:ORV_X.InstanceID=\"A\"", false},
    {"subclass against superclass", "root/orv:ORV_StatisticsCollection.InstanceID=\"A\"",
     "root/orv:CIM_StatisticsCollection.InstanceID=\"A\"", false},
    {"extra key", "root/orv:ORV_X.InstanceID=\"A\"", "root/orv:ORV_X.InstanceID=\"A\",B=\"1\"",
     false},
    {"numeric keys", "root/orv:ORV_X.N=5", "root/orv:ORV_X.N=5", true},
    {"numeric keys differ", "root/orv:ORV_X.N=5", "root/orv:ORV_X.N=6", false},
};

class MatchObjectPathTest : public ::testing::TestWithParam<MatchCase>
{
};

TEST_P(MatchObjectPathTest, AnswersLikeTheTable)
{
    const MatchCase& c = GetParam();
    EXPECT_EQ(c.match, ORV_Common::matchObjectPath(parse(c.left), parse(c.right))) << c.what;
    EXPECT_EQ(c.match, ORV_Common::matchObjectPath(parse(c.right), parse(c.left)))
        << c.what << " (swapped)";
}

INSTANTIATE_TEST_SUITE_P(Table, MatchObjectPathTest, ::testing::ValuesIn(MATCH_CASES));

CIMObjectPath volumePath(const String& host)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("DeviceID"), "0123ABCD", CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("SystemName"), "S1", CIMKeyBinding::STRING));
    return CIMObjectPath(host, CIMNamespaceName("root/orv"), CIMName("ORV_StorageVolume"), keys);
}

CIMObjectPath withReferenceKey(const CIMName& name, const CIMObjectPath& ref,
                               CIMKeyBinding::Type type)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(name, ref.toString(), type));
    return CIMObjectPath(String(), CIMNamespaceName("root/orv"),
                         CIMName("ORV_VolumeElementStatisticalData"), keys);
}

TEST(MatchObjectPath, ReferenceKeysIgnoreTheReferencedHost)
{
    CIMObjectPath a =
        withReferenceKey(CIMName("ManagedElement"), volumePath("h1"), CIMKeyBinding::REFERENCE);
    CIMObjectPath b =
        withReferenceKey(CIMName("ManagedElement"), volumePath(""), CIMKeyBinding::REFERENCE);
    CIMObjectPath c = withReferenceKey(CIMName("ManagedElement"), volumePath("other.example"),
                                       CIMKeyBinding::REFERENCE);
    EXPECT_TRUE(ORV_Common::matchObjectPath(a, b));
    EXPECT_TRUE(ORV_Common::matchObjectPath(a, c));
}

TEST(MatchObjectPath, StringKeyHoldingAPathMatchesAReference)
{
    CIMObjectPath asString =
        withReferenceKey(CIMName("ManagedElement"), volumePath("h1"), CIMKeyBinding::STRING);
    CIMObjectPath asRef =
        withReferenceKey(CIMName("ManagedElement"), volumePath(""), CIMKeyBinding::REFERENCE);
    EXPECT_TRUE(ORV_Common::matchObjectPath(asString, asRef));
    EXPECT_TRUE(ORV_Common::matchObjectPath(asRef, asString));
}

TEST(MatchObjectPath, ReferencesToDifferentInstancesDoNotMatch)
{
    CIMObjectPath other = volumePath("");
    Array<CIMKeyBinding> keys = other.getKeyBindings();
    keys[0].setValue("FFFF0000");
    other.setKeyBindings(keys);
    EXPECT_FALSE(ORV_Common::matchObjectPath(
        withReferenceKey(CIMName("ManagedElement"), volumePath(""), CIMKeyBinding::REFERENCE),
        withReferenceKey(CIMName("ManagedElement"), other, CIMKeyBinding::REFERENCE)));
}

TEST(MatchObjectPath, OnlyOneLevelOfReferencesLosesItsHost)
{
    // An association path referenced from a key: its own reference keeps
    // its host, so a different inner host makes the paths differ.
    CIMObjectPath innerA = withReferenceKey(CIMName("ManagedElement"), volumePath("h1"),
                                            CIMKeyBinding::REFERENCE);
    CIMObjectPath innerB = withReferenceKey(CIMName("ManagedElement"), volumePath("h2"),
                                            CIMKeyBinding::REFERENCE);
    CIMObjectPath outerA = withReferenceKey(CIMName("Ref"), innerA, CIMKeyBinding::REFERENCE);
    CIMObjectPath outerB = withReferenceKey(CIMName("Ref"), innerB, CIMKeyBinding::REFERENCE);
    EXPECT_FALSE(ORV_Common::matchObjectPath(outerA, outerB));
    EXPECT_TRUE(ORV_Common::matchObjectPath(outerA, outerA));
}

TEST(AssocBuilding, PathHasOneReferenceKeyPerRoleWithTheGivenHost)
{
    CIMObjectPath stats = orvtest::instancePath(CIMName("ORV_VolumeStatisticalData"),
                                                "QZ_KYRO:0123ABCD-Stats");
    stats.setHost("client.example");
    CIMObjectPath path =
        ORV_Common::buildAssocPath(CIMName("ORV_VolumeElementStatisticalData"), "ManagedElement",
                                   "Stats", volumePath("elsewhere"), stats, "array1", "root/orv");

    EXPECT_EQ("array1", orvtest::str(path.getHost()));
    EXPECT_EQ("root/orv", orvtest::str(path.getNameSpace().getString()));
    EXPECT_TRUE(path.getClassName().equal(CIMName("ORV_VolumeElementStatisticalData")));
    Array<CIMKeyBinding> keys = path.getKeyBindings();
    ASSERT_EQ(2u, keys.size());
    const char* roles[] = {"ManagedElement", "Stats"};
    for (Uint32 i = 0; i < 2; i++)
    {
        EXPECT_TRUE(keys[i].getName().equal(CIMName(roles[i])));
        EXPECT_EQ(CIMKeyBinding::REFERENCE, keys[i].getType());
        CIMObjectPath ref;
        ref.set(keys[i].getValue());
        EXPECT_EQ("array1", orvtest::str(ref.getHost())) << roles[i];
    }
    // The referenced instances are still the given ones.
    CIMObjectPath ref;
    ref.set(keys[1].getValue());
    EXPECT_TRUE(ORV_Common::matchObjectPath(ref, stats));
}

TEST(AssocBuilding, IsPartOfArrayComparesClassNamesWithoutCase)
{
    Array<CIMName> names;
    EXPECT_FALSE(ORV_Common::isPartOfArray(CIMName("ORV_DiskStorageExtent"), names));
    names.append(CIMName("CIM_StatisticalData"));
    names.append(CIMName("ORV_DiskStorageExtent"));
    EXPECT_TRUE(ORV_Common::isPartOfArray(CIMName("orv_diskstorageextent"), names));
    EXPECT_FALSE(ORV_Common::isPartOfArray(CIMName("ORV_DiskStatisticalData"), names));
}

} // namespace
