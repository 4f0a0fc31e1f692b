#include "SiblingsFixture.h"

#include <orvsim.h>

#include <thread>

PEGASUS_USING_PEGASUS;

namespace orvsib_test
{

cimom::ObjectManager& objectManager()
{
    static cimom::ObjectManager* manager = [] {
        auto* om = new cimom::ObjectManager();
        const std::string root = ORV_SOURCE_ROOT;
        const CIMNamespaceName orv("root/orv");
        const CIMNamespaceName internal("root/PG_Internal");
        om->loadMofFile(root + "/schema/qualifiers.mof", orv);
        om->loadMofFile(root + "/schema/CIM_Core.mof", orv);
        om->loadMofFile(root + "/schema/CIM_Devices.mof", orv);
        om->loadMofFile(root + "/sim/siblings/mof/ORV_Siblings.mof", orv);
        om->loadMofFile(root + "/schema/qualifiers.mof", internal);
        om->loadMofFile(root + "/sim/siblings/mof/ORV_InternalCache.mof", internal);
        om->loadRegistrationFile(root + "/sim/siblings/mof/ORV_SiblingsR.mof");
        om->makeLocal();
        return om;
    }();
    return *manager;
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

// Two nodes, three disks, one port of each kind the element providers sort
// (FC, FCoE, iSCSI, SAS) and three volumes, with identities written out so
// that the tests can state expected keys and values by hand.
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

CountingDispatcher::CountingDispatcher(CIMOMDispatcher& target) : _target(target)
{
}

CIMClass CountingDispatcher::getClass(const OperationContext& context,
                                      const CIMNamespaceName& nameSpace,
                                      const CIMName& className, Boolean localOnly,
                                      Boolean includeQualifiers, Boolean includeClassOrigin,
                                      const CIMPropertyList& propertyList)
{
    getClassCalls++;
    if (getClassDelay.count() > 0)
    {
        std::this_thread::sleep_for(getClassDelay);
    }
    return _target.getClass(context, nameSpace, className, localOnly, includeQualifiers,
                            includeClassOrigin, propertyList);
}

Array<CIMClass> CountingDispatcher::enumerateClasses(const OperationContext& context,
                                                     const CIMNamespaceName& nameSpace,
                                                     const CIMName& className,
                                                     Boolean deepInheritance, Boolean localOnly,
                                                     Boolean includeQualifiers,
                                                     Boolean includeClassOrigin)
{
    return _target.enumerateClasses(context, nameSpace, className, deepInheritance, localOnly,
                                    includeQualifiers, includeClassOrigin);
}

Array<CIMName> CountingDispatcher::enumerateClassNames(const OperationContext& context,
                                                       const CIMNamespaceName& nameSpace,
                                                       const CIMName& className,
                                                       Boolean deepInheritance)
{
    return _target.enumerateClassNames(context, nameSpace, className, deepInheritance);
}

CIMInstance CountingDispatcher::getInstance(const OperationContext& context,
                                            const CIMNamespaceName& nameSpace,
                                            const CIMObjectPath& instanceName, Boolean localOnly,
                                            Boolean includeQualifiers, Boolean includeClassOrigin,
                                            const CIMPropertyList& propertyList)
{
    return _target.getInstance(context, nameSpace, instanceName, localOnly, includeQualifiers,
                               includeClassOrigin, propertyList);
}

Array<CIMInstance> CountingDispatcher::enumerateInstances(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMName& className,
    Boolean deepInheritance, Boolean localOnly, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return _target.enumerateInstances(context, nameSpace, className, deepInheritance, localOnly,
                                      includeQualifiers, includeClassOrigin, propertyList);
}

Array<CIMObjectPath> CountingDispatcher::enumerateInstanceNames(const OperationContext& context,
                                                                const CIMNamespaceName& nameSpace,
                                                                const CIMName& className)
{
    return _target.enumerateInstanceNames(context, nameSpace, className);
}

Array<CIMObject> CountingDispatcher::associators(
    const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
    const String& role, const String& resultRole, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return _target.associators(context, nameSpace, objectName, assocClass, resultClass, role,
                               resultRole, includeQualifiers, includeClassOrigin, propertyList);
}

Array<CIMObjectPath> CountingDispatcher::associatorNames(
    const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
    const String& role, const String& resultRole)
{
    return _target.associatorNames(context, nameSpace, objectName, assocClass, resultClass, role,
                                   resultRole);
}

Array<CIMObject> CountingDispatcher::references(const OperationContext& context,
                                                const CIMNamespaceName& nameSpace,
                                                const CIMObjectPath& objectName,
                                                const CIMName& resultClass, const String& role,
                                                Boolean includeQualifiers,
                                                Boolean includeClassOrigin,
                                                const CIMPropertyList& propertyList)
{
    return _target.references(context, nameSpace, objectName, resultClass, role,
                              includeQualifiers, includeClassOrigin, propertyList);
}

Array<CIMObjectPath> CountingDispatcher::referenceNames(const OperationContext& context,
                                                        const CIMNamespaceName& nameSpace,
                                                        const CIMObjectPath& objectName,
                                                        const CIMName& resultClass,
                                                        const String& role)
{
    return _target.referenceNames(context, nameSpace, objectName, resultClass, role);
}

CIMValue CountingDispatcher::invokeMethod(const OperationContext& context,
                                          const CIMNamespaceName& nameSpace,
                                          const CIMObjectPath& instanceName,
                                          const CIMName& methodName,
                                          const Array<CIMParamValue>& inParameters,
                                          Array<CIMParamValue>& outParameters)
{
    return _target.invokeMethod(context, nameSpace, instanceName, methodName, inParameters,
                                outParameters);
}

} // namespace orvsib_test
