#include "ORV_NodeElementStatisticalDataProvider.h"

#include <cstdio>
#include <cstring>

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ORV_Common.h"
#include "ORV_NodeStatisticalDataProvider.h"
#include "ORV_NodeSystemProvider.h"
#include "ORV_VolumeStatisticalDataProvider.h"
#include "orvapi.h"

PEGASUS_USING_PEGASUS;

static const String ClassName("ORV_NodeElementStatisticalDataProvider");

namespace
{
typedef ORV_VolumeStatisticalDataProvider Family;
typedef ORV_NodeStatisticalDataProvider NodeStats;

const CIMName ASSOC_CLASS("ORV_NodeElementStatisticalData");
const CIMName STATS_CLASS("ORV_NodeStatisticalData");
const CIMName NODE_CLASS("ORV_NodeSystem");
const String ELEMENT_ROLE("ManagedElement");
const String STATS_ROLE("Stats");
const String INSTANCE_ID_KEY("InstanceID");
const String NAME_KEY("Name");

// A failed management call ends the building. The statistics providers
// report such a failure without a line or a status, so the client gets only
// the family's "Internal error." and the log only the collect step's count.
void apiFailed()
{
    throw CIMOperationFailedException("Internal error.");
}
} // namespace

PEGASUS_NAMESPACE_BEGIN

void ORV_NodeElementStatisticalDataProvider::initialize(CIMOMHandle& cimom)
{
    auto setMembers = [&]()
    {
        _cimom = cimom;
        _assoClassName = ASSOC_CLASS;
        _statsClassName = STATS_CLASS;
        _nodeClassName = NODE_CLASS;
    };
    ORV_AssociationFrame::initialize(ClassName, ClassName, cimom, _hostAddr, _systemName,
                                     setMembers);
}

ORV_AssociationShape ORV_NodeElementStatisticalDataProvider::_shape() const
{
    ORV_AssociationEnd node;
    node.role = ELEMENT_ROLE;
    node.classes.append(_nodeClassName);
    node.superClasses.append("CIM_ManagedElement");
    node.superClasses.append("CIM_ManagedSystemElement");
    node.superClasses.append("CIM_LogicalElement");
    node.superClasses.append("CIM_EnabledLogicalElement");
    node.superClasses.append("CIM_System");
    node.superClasses.append("CIM_ComputerSystem");

    ORV_AssociationEnd stats;
    stats.role = STATS_ROLE;
    stats.classes.append(_statsClassName);
    stats.superClasses.append("CIM_BlockStorageStatisticalData");

    Array<CIMName> referenceClasses;
    referenceClasses.append("CIM_ElementStatisticalData");
    referenceClasses.append(_assoClassName);
    return ORV_AssociationShape(_assoClassName, node, stats, referenceClasses);
}

ORV_NodeElementStatisticalDataProvider::ORV_NodeElementStatisticalDataProvider() {}

ORV_NodeElementStatisticalDataProvider::ORV_NodeElementStatisticalDataProvider(const CIMObjectPath&)
{
    throw CIMNotSupportedException(ClassName + " does not support constructor with object path.");
}

ORV_NodeElementStatisticalDataProvider::~ORV_NodeElementStatisticalDataProvider() {}

void ORV_NodeElementStatisticalDataProvider::terminate()
{
    delete this;
}

ORV_AssociationFrame ORV_NodeElementStatisticalDataProvider::_frame()
{
    typedef ORV_NodeElementStatisticalDataProvider P;
    ORV_AssociationHooks hooks = ORV_AssociationHooks::bind(
        this, &P::_invalidParms, &P::_getRelatedInstances, &P::_getRelatedInstanceNames,
        &P::_getInstances, &P::_getInstanceNames, &P::_buildAssociationInstance,
        &P::_buildAssociationName);
    return ORV_AssociationFrame(ClassName, _shape(), hooks, __FILE__, __LINE__);
}

void ORV_NodeElementStatisticalDataProvider::associators(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    _frame().associators(context, objectName, associationClass, resultClass, role, resultRole,
                         includeQualifiers, includeClassOrigin, propertyList, handler);
}

void ORV_NodeElementStatisticalDataProvider::associatorNames(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, ObjectPathResponseHandler& handler)
{
    _frame().associatorNames(context, objectName, associationClass, resultClass, role, resultRole,
                             handler);
}

void ORV_NodeElementStatisticalDataProvider::references(
    const OperationContext& context, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    _frame().references(context, objectName, resultClass, role, includeQualifiers,
                        includeClassOrigin, propertyList, handler);
}

void ORV_NodeElementStatisticalDataProvider::referenceNames(const OperationContext& context,
                                                            const CIMObjectPath& objectName,
                                                            const CIMName& resultClass,
                                                            const String& role,
                                                            ObjectPathResponseHandler& handler)
{
    _frame().referenceNames(context, objectName, resultClass, role, handler);
}

void ORV_NodeElementStatisticalDataProvider::getInstance(const OperationContext& context,
                                                         const CIMObjectPath& instanceReference,
                                                         const Boolean includeQualifiers,
                                                         const Boolean includeClassOrigin,
                                                         const CIMPropertyList& propertyList,
                                                         InstanceResponseHandler& handler)
{
    _frame().getInstance(context, instanceReference, includeQualifiers, includeClassOrigin,
                         propertyList, handler);
}

void ORV_NodeElementStatisticalDataProvider::enumerateInstances(const OperationContext& context,
                                                                const CIMObjectPath&,
                                                                const Boolean includeQualifiers,
                                                                const Boolean includeClassOrigin,
                                                                const CIMPropertyList& propertyList,
                                                                InstanceResponseHandler& handler)
{
    _frame().enumerateInstances(context, includeQualifiers, includeClassOrigin, propertyList,
                                handler);
}

void ORV_NodeElementStatisticalDataProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath&, ObjectPathResponseHandler& handler)
{
    _frame().enumerateInstanceNames(context, handler);
}

void ORV_NodeElementStatisticalDataProvider::modifyInstance(const OperationContext&,
                                                            const CIMObjectPath&,
                                                            const CIMInstance&, const Boolean,
                                                            const CIMPropertyList&,
                                                            ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support modifyInstance.");
}

void ORV_NodeElementStatisticalDataProvider::createInstance(const OperationContext&,
                                                            const CIMObjectPath&,
                                                            const CIMInstance&,
                                                            ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support createInstance.");
}

void ORV_NodeElementStatisticalDataProvider::deleteInstance(const OperationContext&,
                                                            const CIMObjectPath&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support deleteInstance.");
}

CIMInstance ORV_NodeElementStatisticalDataProvider::_buildAssociationInstance(
    const CIMObjectPath& elementPath, const CIMObjectPath& statsPath, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return _shape().buildInstance(_cimom, elementPath, statsPath, _hostAddr, includeQualifiers,
                                  includeClassOrigin, propertyList);
}

CIMObjectPath
ORV_NodeElementStatisticalDataProvider::_buildAssociationName(const CIMObjectPath& elementPath,
                                                              const CIMObjectPath& statsPath)
{
    return _shape().buildName(elementPath, statsPath, _hostAddr);
}

Array<CIMObjectPath>
ORV_NodeElementStatisticalDataProvider::_getRelatedInstanceNames(const CIMObjectPath& objectName,
                                                                 const OperationContext& context)
{
    return _frame().relatedInstanceNames(objectName, context);
}

Boolean ORV_NodeElementStatisticalDataProvider::_invalidParms(const CIMObjectPath& objectName,
                                                              String role, String resultRole,
                                                              CIMName resultClass, String operation)
{
    return _shape().invalidParms(objectName, role, resultRole, resultClass, operation);
}

Array<CIMInstance> ORV_NodeElementStatisticalDataProvider::_getRelatedInstances(
    const CIMObjectPath& objectName, const OperationContext& context, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    ORV_AssociationFrame::logRelatedEntry(ClassName, objectName);
    const Boolean fromStats = objectName.getClassName().equal(_statsClassName);
    const String key =
        ORV_Common::getStringProperty(objectName, fromStats ? INSTANCE_ID_KEY : NAME_KEY);
    if (key.size() == 0)
    {
        // The node message has no closing full stop.
        throw CIMInvalidParameterException(
            ClassName + (fromStats ? " InstanceID key not found." : " Name key not found"));
    }

    Array<CIMInstance> result;
    ORV_AssociationFrame::collect(
        ClassName, "_getRelatedInstances", result,
        [&]()
        {
            // Both ends are fetched through the object manager: the node
            // from its sibling module, the statistics from this module's
            // node provider, which sums the node's ports.
            CIMObjectPath otherPath;
            if (fromStats)
            {
                otherPath = ORV_NodeSystemProvider::buildObjectPath(
                    _hostAddr, NodeStats::extractNodeIDFromInstID(key));
            }
            else if (objectName.getClassName().equal(_nodeClassName))
            {
                // A node's Name is its number as text, as the node list gives it.
                otherPath = NodeStats::buildObjectPath(_hostAddr, NodeStats::makeInstanceID(key));
            }
            else
            {
                return;
            }
            result.append(_cimom.getInstance(context, ORV_Common::NAMESPACE, otherPath, false,
                                             includeQualifiers, includeClassOrigin, propertyList));
        });
    return result;
}

Array<CIMInstance> ORV_NodeElementStatisticalDataProvider::_getInstances(
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    Array<CIMInstance> result;
    ORV_AssociationFrame::collect(
        ClassName, "_getInstances", result,
        [&]()
        {
            api_NodeList_t nodes;
            memset(&nodes, 0, sizeof(nodes));
            Family::FreeOnExit<api_NodeInfo_t> release(nodes.nodes);
            const Sint32 status = Family::callLocked([&]() { return api_getNodes(&nodes); });
            if (status != 0)
            {
                apiFailed();
            }
            for (Uint32 i = 0; i < nodes.count; i++)
            {
                const String nodeName =
                    Family::fieldText(nodes.nodes[i].nodeName, sizeof(nodes.nodes[i].nodeName));
                const CIMObjectPath nodePath =
                    ORV_NodeSystemProvider::buildObjectPath(_hostAddr, nodeName);
                const CIMObjectPath statsPath =
                    NodeStats::buildObjectPath(_hostAddr, NodeStats::makeInstanceID(nodeName));
                result.append(_buildAssociationInstance(nodePath, statsPath, includeQualifiers,
                                                        includeClassOrigin, propertyList));
            }
        });
    return result;
}

Array<CIMObjectPath> ORV_NodeElementStatisticalDataProvider::_getInstanceNames()
{
    return _frame().instanceNames();
}

PEGASUS_NAMESPACE_END
