// The filter rules and path building of the association frame, on the shape
// of the volume-to-statistics association, without a server; and its
// lifecycle against the object manager.

#include <string>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMObjectPath.h>

#include "ModuleFixture.h"
#include "ORV_AssociationFrame.h"
#include "orvapi.h"

namespace
{

PEGASUS_USING_PEGASUS;

const CIMName VOLUME("ORV_StorageVolume");
const CIMName VOLUME_STATS("ORV_VolumeStatisticalData");

ORV_AssociationShape volumeShape()
{
    ORV_AssociationEnd volume;
    volume.role = "ManagedElement";
    volume.classes.append(VOLUME);
    volume.superClasses.append("CIM_StorageVolume");
    ORV_AssociationEnd stats;
    stats.role = "Stats";
    stats.classes.append(VOLUME_STATS);
    stats.superClasses.append("CIM_BlockStorageStatisticalData");
    Array<CIMName> references;
    references.append("CIM_ElementStatisticalData");
    references.append("ORV_VolumeElementStatisticalData");
    return ORV_AssociationShape("ORV_VolumeElementStatisticalData", volume, stats, references);
}

CIMObjectPath pathOf(const CIMName& className, const char* key, const char* value)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName(key), value, CIMKeyBinding::STRING));
    return CIMObjectPath("elsewhere", CIMNamespaceName("root/orv"), className, keys);
}

TEST(AssociationFrameRules, FiltersThatCannotMatchAreInvalid)
{
    const ORV_AssociationShape shape = volumeShape();
    const CIMObjectPath volume = pathOf(VOLUME, "DeviceID", "60002AC0");
    const CIMObjectPath stats = pathOf(VOLUME_STATS, "InstanceID", "QZ_KYRO:60002AC0");
    const CIMObjectPath other = pathOf("ORV_DiskStorageExtent", "DeviceID", "d1");

    struct Case
    {
        const char* what;
        const CIMObjectPath& object;
        const char* role;
        const char* resultRole;
        const char* resultClass; // "" = no filter
        const char* operation;
        bool invalid;
    } cases[] = {
        {"no filters", volume, "", "", "", "associators", false},
        {"matching roles", volume, "ManagedElement", "Stats", "", "associators", false},
        {"unknown role", volume, "Antecedent", "", "", "associators", true},
        {"volume in the statistics role", volume, "Stats", "", "", "associators", true},
        {"unknown result role", stats, "", "Member", "", "associators", true},
        {"volume asking for volumes by role", volume, "", "ManagedElement", "", "associators",
         true},
        {"roles judged only by name for other classes", other, "Stats", "ManagedElement", "",
         "associators", false},
        {"statistics wanted from the volume", volume, "", "", "ORV_VolumeStatisticalData",
         "associators", false},
        {"statistics wanted by superclass", volume, "", "", "CIM_BlockStorageStatisticalData",
         "associatorNames", false},
        {"volume wanted from the statistics", stats, "", "", "CIM_StorageVolume", "associators",
         false},
        {"class of neither end", volume, "", "", "CIM_ManagedElement", "associators", true},
        {"volume asking for its own class", volume, "", "", "orv_storagevolume", "associators",
         true},
        {"volume asking for its superclass", volume, "", "", "CIM_StorageVolume", "associatorNames",
         true},
        {"statistics asking for their superclass", stats, "", "", "CIM_BlockStorageStatisticalData",
         "associators", true},
        {"association class on references", volume, "", "", "ORV_VolumeElementStatisticalData",
         "references", false},
        {"other association on references", volume, "", "", "CIM_MemberOfCollection", "references",
         true},
        {"end class is no association class", volume, "", "", "ORV_VolumeStatisticalData",
         "references", true},
        {"association class filter on associators", volume, "", "",
         "ORV_VolumeElementStatisticalData", "associators", true},
        {"unknown operation", volume, "", "", "CIM_ManagedElement", "getInstance", false},
        {"operation name in any case", volume, "", "", "CIM_ManagedElement", "ASSOCIATORS", true},
    };
    for (const Case& c : cases)
    {
        const CIMName resultClass = *c.resultClass ? CIMName(c.resultClass) : CIMName();
        EXPECT_EQ(c.invalid, (bool)shape.invalidParms(c.object, c.role, c.resultRole, resultClass,
                                                      c.operation))
            << c.what;
    }
}

TEST(AssociationFrameRules, AnotherClassOfTheSameEndIsNotRefused)
{
    // An end served by two classes, as the port association's is.
    ORV_AssociationEnd port;
    port.role = "ManagedElement";
    port.classes.append("ORV_FCPort");
    port.classes.append("ORV_EthernetPort");
    port.superClasses.append("CIM_NetworkPort");
    ORV_AssociationEnd stats;
    stats.role = "Stats";
    stats.classes.append("ORV_PortStatisticalData");
    stats.superClasses.append("CIM_BlockStorageStatisticalData");
    const ORV_AssociationShape shape("ORV_PortElementStatisticalData", port, stats,
                                     Array<CIMName>());
    const CIMObjectPath fc = pathOf("ORV_FCPort", "DeviceID", "0:1:1");

    // Only the object's own class and its end's superclasses are refused.
    EXPECT_FALSE(shape.invalidParms(fc, "", "", "ORV_EthernetPort", "associatorNames"));
    EXPECT_TRUE(shape.invalidParms(fc, "", "", "ORV_FCPort", "associatorNames"));
    EXPECT_TRUE(shape.invalidParms(fc, "", "", "CIM_NetworkPort", "associators"));
    // The other end's superclass is still wanted.
    EXPECT_FALSE(
        shape.invalidParms(fc, "", "", "CIM_BlockStorageStatisticalData", "associators"));
}

TEST(AssociationFrameRules, SideIsFoundByClassRightEndFirst)
{
    ORV_AssociationEnd left;
    left.role = "A";
    left.classes.append("X_Shared");
    left.classes.append("X_Left");
    ORV_AssociationEnd right;
    right.role = "B";
    right.classes.append("x_shared");
    const ORV_AssociationShape shape("X_Assoc", left, right, Array<CIMName>());
    EXPECT_EQ(ORV_ASSOC_RIGHT, shape.sideOf("X_SHARED"));
    EXPECT_EQ(ORV_ASSOC_LEFT, shape.sideOf("x_left"));
    EXPECT_EQ(ORV_ASSOC_NO_SIDE, shape.sideOf("X_Other"));
}

TEST(AssociationFrameRules, NamesCarryBothRolesAndTheGivenHost)
{
    const ORV_AssociationShape shape = volumeShape();
    const CIMObjectPath volume = pathOf(VOLUME, "DeviceID", "60002AC0");
    const CIMObjectPath stats = pathOf(VOLUME_STATS, "InstanceID", "QZ_KYRO:60002AC0");
    const CIMObjectPath name = shape.buildName(volume, stats, "array1");

    EXPECT_EQ(String("array1"), name.getHost());
    EXPECT_EQ(String("root/orv"), name.getNameSpace().getString());
    EXPECT_TRUE(name.getClassName().equal("ORV_VolumeElementStatisticalData"));
    Array<CIMKeyBinding> keys = name.getKeyBindings();
    ASSERT_EQ(2u, keys.size());
    EXPECT_TRUE(keys[0].getName().equal("ManagedElement"));
    EXPECT_TRUE(keys[1].getName().equal("Stats"));
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        EXPECT_EQ(CIMKeyBinding::REFERENCE, keys[i].getType());
        // The client's host on the references is replaced by this system's.
        EXPECT_EQ(String("array1"), CIMObjectPath(keys[i].getValue()).getHost());
    }
    CIMObjectPath volumeRef(keys[0].getValue());
    EXPECT_TRUE(volumeRef.getClassName().equal(VOLUME));
    EXPECT_EQ(volume.getKeyBindings()[0].getValue(), volumeRef.getKeyBindings()[0].getValue());
}

class AssociationFrameLifecycle : public orvtest::ModuleFixture
{
};

TEST_F(AssociationFrameLifecycle, ProviderDerivesFromTheIdentityBeforeTheExitLine)
{
    CIMOMHandle cimom = om().handle();
    String host;
    String system;
    std::string seenHost;
    std::string seenSystem;
    std::string log = orvtest::captureLog(
        [&]()
        {
            ORV_AssociationFrame::initialize(
                "X_Provider", "X_Provider", cimom, host, system, []() {},
                [&]()
                {
                    seenHost = orvtest::str(host);
                    seenSystem = orvtest::str(system);
                    log_message(4, "derived\n");
                });
        });
    EXPECT_EQ(orvtest::simHostName(), seenHost);
    EXPECT_EQ(orvtest::simSystemName(), seenSystem);
    const size_t derived = log.find("derived\n");
    ASSERT_NE(std::string::npos, derived);
    EXPECT_LT(log.find("--> X_Provider::initialize(cimom)\n)"), derived);
    EXPECT_LT(derived, log.find("<-- X_Provider::initialize(cimom)\n)"));
}

} // namespace
