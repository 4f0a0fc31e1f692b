#include "ORV_PortElementStatisticalDataProvider.h"

#include <cstdio>
#include <cstring>

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ORV_Common.h"
#include "ORV_EthernetPortProvider.h"
#include "ORV_FCPortProvider.h"
#include "ORV_PortStatisticalDataProvider.h"
#include "ORV_VolumeStatisticalDataProvider.h"
#include "orvapi.h"

PEGASUS_USING_PEGASUS;

static const String ClassName("ORV_PortElementStatisticalDataProvider");

namespace
{
typedef ORV_VolumeStatisticalDataProvider Family;
typedef ORV_PortStatisticalDataProvider PortStats;

const CIMName ASSOC_CLASS("ORV_PortElementStatisticalData");
const CIMName STATS_CLASS("ORV_PortStatisticalData");
const CIMName FC_PORT_CLASS("ORV_FCPort");
const CIMName ETH_PORT_CLASS("ORV_EthernetPort");
const String ELEMENT_ROLE("ManagedElement");
const String STATS_ROLE("Stats");
const String INSTANCE_ID_KEY("InstanceID");
const String DEVICE_ID_KEY("DeviceID");

// A failed management call ends the building. The statistics providers
// report such a failure without a line or a status, so the client gets only
// the family's "Internal error." and the log only the collect step's count.
void apiFailed()
{
    throw CIMOperationFailedException("Internal error.");
}

// Every port of every type, under the process-wide semaphore, as the port
// statistics provider asks for them.
void fetchPorts(api_PortsStats_t& ports)
{
    const Sint32 status = Family::callLocked(
        [&]() {
            return api_getPortStats(API_PORT_TYPE_ALL, API_SEL_ANY, API_SEL_ANY, API_SEL_ANY,
                                    &ports);
        });
    if (status != 0)
    {
        apiFailed();
    }
}

String portDeviceID(const api_PortStats_t& record)
{
    return Family::fieldText(record.portDeviceID, sizeof(record.portDeviceID));
}

// The element path of a port: FCoE ports are presented as Fibre Channel
// ports, every protocol other than FC and FCoE as an Ethernet port. Each
// builder takes the node and the port in its own order.
CIMObjectPath portPath(const api_PortStats_t& record, const CIMName& fcClassName,
                       const String& hostAddr)
{
    const String nodeID = Family::fieldText(record.nodeDeviceID, sizeof(record.nodeDeviceID));
    const String portID = portDeviceID(record);
    if (record.portProtocol == PORT_PROTOCOL_FC || record.portProtocol == PORT_PROTOCOL_FCOE)
    {
        return ORV_FCPortProvider::buildObjectPath(fcClassName, hostAddr, nodeID, portID);
    }
    return ORV_EthernetPortProvider::buildObjectPath(hostAddr, portID, nodeID);
}
} // namespace

PEGASUS_NAMESPACE_BEGIN

void ORV_PortElementStatisticalDataProvider::initialize(CIMOMHandle& cimom)
{
    auto setMembers = [&]()
    {
        _cimom = cimom;
        _assoClassName = ASSOC_CLASS;
        _statsClassName = STATS_CLASS;
        _fcPortClassName = FC_PORT_CLASS;
        _ethPortClassName = ETH_PORT_CLASS;
    };
    ORV_AssociationFrame::initialize(ClassName, ClassName, cimom, _hostAddr, _systemName,
                                     setMembers);
}

ORV_AssociationShape ORV_PortElementStatisticalDataProvider::_shape() const
{
    // Two classes make up the element end.
    ORV_AssociationEnd port;
    port.role = ELEMENT_ROLE;
    port.classes.append(_fcPortClassName);
    port.classes.append(_ethPortClassName);
    port.superClasses.append("CIM_LogicalPort");
    port.superClasses.append("CIM_NetworkPort");
    port.superClasses.append("CIM_FCPort");
    port.superClasses.append("CIM_EthernetPort");

    ORV_AssociationEnd stats;
    stats.role = STATS_ROLE;
    stats.classes.append(_statsClassName);
    stats.superClasses.append("CIM_BlockStorageStatisticalData");

    Array<CIMName> referenceClasses;
    referenceClasses.append("CIM_ElementStatisticalData");
    referenceClasses.append(_assoClassName);
    return ORV_AssociationShape(_assoClassName, port, stats, referenceClasses);
}

ORV_PortElementStatisticalDataProvider::ORV_PortElementStatisticalDataProvider() {}

ORV_PortElementStatisticalDataProvider::ORV_PortElementStatisticalDataProvider(const CIMObjectPath&)
{
    throw CIMNotSupportedException(ClassName + " does not support constructor with object path.");
}

ORV_PortElementStatisticalDataProvider::~ORV_PortElementStatisticalDataProvider() {}

void ORV_PortElementStatisticalDataProvider::terminate()
{
    delete this;
}

ORV_AssociationFrame ORV_PortElementStatisticalDataProvider::_frame()
{
    typedef ORV_PortElementStatisticalDataProvider P;
    ORV_AssociationHooks hooks = ORV_AssociationHooks::bind(
        this, &P::_invalidParms, &P::_getRelatedInstances, &P::_getRelatedInstanceNames,
        &P::_getInstances, &P::_getInstanceNames, &P::_buildAssociationInstance,
        &P::_buildAssociationName);
    return ORV_AssociationFrame(ClassName, _shape(), hooks, __FILE__, __LINE__);
}

void ORV_PortElementStatisticalDataProvider::associators(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    _frame().associators(context, objectName, associationClass, resultClass, role, resultRole,
                         includeQualifiers, includeClassOrigin, propertyList, handler);
}

void ORV_PortElementStatisticalDataProvider::associatorNames(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, ObjectPathResponseHandler& handler)
{
    _frame().associatorNames(context, objectName, associationClass, resultClass, role, resultRole,
                             handler);
}

void ORV_PortElementStatisticalDataProvider::references(
    const OperationContext& context, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    _frame().references(context, objectName, resultClass, role, includeQualifiers,
                        includeClassOrigin, propertyList, handler);
}

void ORV_PortElementStatisticalDataProvider::referenceNames(const OperationContext& context,
                                                            const CIMObjectPath& objectName,
                                                            const CIMName& resultClass,
                                                            const String& role,
                                                            ObjectPathResponseHandler& handler)
{
    _frame().referenceNames(context, objectName, resultClass, role, handler);
}

void ORV_PortElementStatisticalDataProvider::getInstance(const OperationContext& context,
                                                         const CIMObjectPath& instanceReference,
                                                         const Boolean includeQualifiers,
                                                         const Boolean includeClassOrigin,
                                                         const CIMPropertyList& propertyList,
                                                         InstanceResponseHandler& handler)
{
    _frame().getInstance(context, instanceReference, includeQualifiers, includeClassOrigin,
                         propertyList, handler);
}

void ORV_PortElementStatisticalDataProvider::enumerateInstances(const OperationContext& context,
                                                                const CIMObjectPath&,
                                                                const Boolean includeQualifiers,
                                                                const Boolean includeClassOrigin,
                                                                const CIMPropertyList& propertyList,
                                                                InstanceResponseHandler& handler)
{
    _frame().enumerateInstances(context, includeQualifiers, includeClassOrigin, propertyList,
                                handler);
}

void ORV_PortElementStatisticalDataProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath&, ObjectPathResponseHandler& handler)
{
    _frame().enumerateInstanceNames(context, handler);
}

void ORV_PortElementStatisticalDataProvider::modifyInstance(const OperationContext&,
                                                            const CIMObjectPath&,
                                                            const CIMInstance&, const Boolean,
                                                            const CIMPropertyList&,
                                                            ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support modifyInstance.");
}

void ORV_PortElementStatisticalDataProvider::createInstance(const OperationContext&,
                                                            const CIMObjectPath&,
                                                            const CIMInstance&,
                                                            ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support createInstance.");
}

void ORV_PortElementStatisticalDataProvider::deleteInstance(const OperationContext&,
                                                            const CIMObjectPath&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support deleteInstance.");
}

CIMInstance ORV_PortElementStatisticalDataProvider::_buildAssociationInstance(
    const CIMObjectPath& elementPath, const CIMObjectPath& statsPath, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return _shape().buildInstance(_cimom, elementPath, statsPath, _hostAddr, includeQualifiers,
                                  includeClassOrigin, propertyList);
}

CIMObjectPath
ORV_PortElementStatisticalDataProvider::_buildAssociationName(const CIMObjectPath& elementPath,
                                                              const CIMObjectPath& statsPath)
{
    return _shape().buildName(elementPath, statsPath, _hostAddr);
}

Array<CIMObjectPath>
ORV_PortElementStatisticalDataProvider::_getRelatedInstanceNames(const CIMObjectPath& objectName,
                                                                 const OperationContext& context)
{
    return _frame().relatedInstanceNames(objectName, context);
}

Boolean ORV_PortElementStatisticalDataProvider::_invalidParms(const CIMObjectPath& objectName,
                                                              String role, String resultRole,
                                                              CIMName resultClass, String operation)
{
    return _shape().invalidParms(objectName, role, resultRole, resultClass, operation);
}

Array<CIMInstance> ORV_PortElementStatisticalDataProvider::_getRelatedInstances(
    const CIMObjectPath& objectName, const OperationContext& context, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    ORV_AssociationFrame::logRelatedEntry(ClassName, objectName);
    const CIMName objectClass = objectName.getClassName();
    const Boolean fromStats = objectClass.equal(_statsClassName);
    const String key =
        ORV_Common::getStringProperty(objectName, fromStats ? INSTANCE_ID_KEY : DEVICE_ID_KEY);
    if (key.size() == 0)
    {
        throw CIMInvalidParameterException(
            ClassName + (fromStats ? " InstanceID key not found." : " DeviceID key not found."));
    }

    Array<CIMInstance> result;
    ORV_AssociationFrame::collect(
        ClassName, "_getRelatedInstances", result,
        [&]()
        {
            api_PortsStats_t ports;
            memset(&ports, 0, sizeof(ports));
            Family::FreeOnExit<api_PortStats_t> release(ports.stats);
            fetchPorts(ports);

            if (fromStats)
            {
                for (Uint32 i = 0; i < ports.count; i++)
                {
                    if (PortStats::makeInstanceID(ports.stats[i]) == key)
                    {
                        result.append(_cimom.getInstance(
                            context, ORV_Common::NAMESPACE,
                            portPath(ports.stats[i], _fcPortClassName, _hostAddr), false,
                            includeQualifiers, includeClassOrigin, propertyList));
                    }
                }
                return;
            }
            if (!objectClass.equal(_fcPortClassName) && !objectClass.equal(_ethPortClassName))
            {
                return;
            }
            CIMClass statsClass = ORV_Common::getStoredCIMClass(
                _cimom, OperationContext(), ORV_Common::NAMESPACE, _statsClassName, false,
                includeQualifiers, includeClassOrigin, propertyList);
            for (Uint32 i = 0; i < ports.count; i++)
            {
                if (portDeviceID(ports.stats[i]) == key)
                {
                    result.append(PortStats::buildInstance(statsClass, ports.stats[i], _hostAddr));
                }
            }
        });
    return result;
}

Array<CIMInstance> ORV_PortElementStatisticalDataProvider::_getInstances(
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    Array<CIMInstance> result;
    ORV_AssociationFrame::collect(
        ClassName, "_getInstances", result,
        [&]()
        {
            api_PortsStats_t ports;
            memset(&ports, 0, sizeof(ports));
            Family::FreeOnExit<api_PortStats_t> release(ports.stats);
            fetchPorts(ports);
            for (Uint32 i = 0; i < ports.count; i++)
            {
                const CIMObjectPath statsPath = PortStats::buildObjectPath(
                    _hostAddr, PortStats::makeInstanceID(ports.stats[i]));
                result.append(_buildAssociationInstance(
                    portPath(ports.stats[i], _fcPortClassName, _hostAddr), statsPath,
                    includeQualifiers, includeClassOrigin, propertyList));
            }
        });
    return result;
}

Array<CIMObjectPath> ORV_PortElementStatisticalDataProvider::_getInstanceNames()
{
    return _frame().instanceNames();
}

PEGASUS_NAMESPACE_END
