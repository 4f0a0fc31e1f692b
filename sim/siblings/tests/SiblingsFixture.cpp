#include "SiblingsFixture.h"

#include <orvsim.h>

#include <thread>

PEGASUS_USING_PEGASUS;

namespace orvsib_test
{

namespace
{

void loadClasses(cimom::ObjectManager& om)
{
    const std::string root = ORV_SOURCE_ROOT;
    const CIMNamespaceName orv("root/orv");
    const CIMNamespaceName internal("root/PG_Internal");
    for (const char* file : {"/schema/qualifiers.mof", "/schema/CIM_Core.mof",
                             "/schema/CIM_Devices.mof", "/sim/siblings/mof/ORV_Siblings.mof"})
    {
        om.loadMofFile(root + file, orv);
    }
    om.loadMofFile(root + "/schema/qualifiers.mof", internal);
    om.loadMofFile(root + "/sim/siblings/mof/ORV_InternalCache.mof", internal);
}

} // namespace

// Two nodes, three disks, one port of each protocol the providers sort (FC,
// FCoE, iSCSI, SAS) and three volumes, with identities written out so that
// tests can state expected keys and values by hand.
const char* const SMALL_MODEL = R"({
  "system": {"name": "ORV-TEST-7", "hostName": "orv-test-7.example.net", "id": 424242,
             "type": -3, "address": "192.0.2.17", "quadPort": false},
  "nodes": {"count": 2},
  "disks": {"items": [
    {"deviceID": "5000C500A1B2C3D0", "name": "0:0:0", "class": "SSD"},
    {"deviceID": "5000C500A1B2C3D1", "name": "0:1:0", "capacityMiB": 1000},
    {"deviceID": "5000C500A1B2C3D2", "name": "0:2:0", "failed": true}]},
  "ports": {"items": [
    {"node": 0, "slot": 1, "port": 1, "protocol": "fc", "type": "target",
     "deviceID": "20010002AC000A01"},
    {"node": 1, "slot": 1, "port": 2, "protocol": "fcoe", "type": "target",
     "deviceID": "20020002AC000A02"},
    {"node": 1, "slot": 2, "port": 1, "protocol": "iscsi", "type": "target",
     "deviceID": "00:02:ac:00:0a:03"},
    {"node": 0, "slot": 0, "port": 1, "protocol": "sas", "type": "init",
     "deviceID": "50002AC000000A04"}]},
  "volumes": {"items": [
    {"name": "vol-a", "wwn": "60002AC000000000000000000000A001", "sizeMiB": 2048},
    {"name": "vol-b", "wwn": "60002AC000000000000000000000A002", "sizeMiB": 10240,
     "blockSize": 512},
    {"name": "vol-c", "wwn": "60002AC000000000000000000000A003"}]}
})";

cimom::ObjectManager& objectManager()
{
    static cimom::ObjectManager* manager = []
    {
        auto* om = new cimom::ObjectManager();
        loadClasses(*om);
        om->loadRegistrationFile(std::string(ORV_SOURCE_ROOT) +
                                 "/sim/siblings/mof/ORV_SiblingsR.mof");
        om->makeLocal();
        return om;
    }();
    return *manager;
}

CountingObjectManager::CountingObjectManager()
{
    loadClasses(*this);
}

CIMClass CountingObjectManager::getClass(const OperationContext& context,
                                         const CIMNamespaceName& nameSpace,
                                         const CIMName& className, Boolean localOnly,
                                         Boolean includeQualifiers, Boolean includeClassOrigin,
                                         const CIMPropertyList& propertyList)
{
    getClassCalls++;
    std::this_thread::sleep_for(delay);
    return cimom::ObjectManager::getClass(context, nameSpace, className, localOnly,
                                          includeQualifiers, includeClassOrigin, propertyList);
}

OperationContext contextFor(const char* user)
{
    OperationContext context;
    context.insert(IdentityContainer(user));
    return context;
}

void loadModel(const std::string& json)
{
    orvsim_reset();
    ASSERT_EQ(0, orvsim_load_model_json(json.c_str())) << orvsim_last_error();
}

String keyOf(const CIMObjectPath& path, const char* name)
{
    for (const CIMKeyBinding& key : toVector(path.getKeyBindings()))
    {
        if (key.getName().equal(CIMName(name)))
        {
            return key.getValue();
        }
    }
    return String("<none>");
}

CIMObjectPath withKey(const CIMObjectPath& path, const char* name, const char* value)
{
    Array<CIMKeyBinding> keys;
    for (const CIMKeyBinding& key : toVector(path.getKeyBindings()))
    {
        if (!key.getName().equal(CIMName(name)))
        {
            keys.append(key);
        }
        else if (value)
        {
            keys.append(CIMKeyBinding(key.getName(), value, key.getType()));
        }
    }
    CIMObjectPath changed = path;
    changed.setKeyBindings(keys);
    return changed;
}

void SmallModelTest::SetUp()
{
    objectManager();
    loadModel(SMALL_MODEL);
}

void SmallModelTest::TearDown()
{
    orvsim_reset();
}

} // namespace orvsib_test
