#include "ORV_ArrayElementStatisticalDataProvider.h"

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ORV_ArrayStatisticalDataProvider.h"
#include "ORV_Common.h"
#include "orvapi.h"

PEGASUS_USING_PEGASUS;

static const String ClassName("ORV_ArrayElementStatisticalDataProvider");

namespace
{
typedef ORV_ArrayStatisticalDataProvider ArrayStats;

const CIMName ASSOC_CLASS("ORV_ArrayElementStatisticalData");
const CIMName STATS_CLASS("ORV_ArrayStatisticalData");
const CIMName SYSTEM_CLASS("ORV_StorageSystem");
const String ELEMENT_ROLE("ManagedElement");
const String STATS_ROLE("Stats");
} // namespace

PEGASUS_NAMESPACE_BEGIN

void ORV_ArrayElementStatisticalDataProvider::initialize(CIMOMHandle& cimom)
{
    auto setMembers = [&]()
    {
        _cimom = cimom;
        _assoClassName = ASSOC_CLASS;
        _statsClassName = STATS_CLASS;
        _systemClassName = SYSTEM_CLASS;
    };
    // One system, one pair: both ends and the association's path follow from
    // the system's identity and stay fixed.
    auto keepPaths = [&]()
    {
        _systemPath = ORV_Common::getSystemObjectPath(_cimom);
        _systemStatsPath =
            ArrayStats::buildObjectPath(_hostAddr, ArrayStats::makeInstanceID(_systemName));
        _assocPath = _buildAssociationName(_systemPath, _systemStatsPath);
    };
    ORV_AssociationFrame::initialize(ClassName, ClassName, cimom, _hostAddr, _systemName,
                                     setMembers, keepPaths);
}

ORV_AssociationShape ORV_ArrayElementStatisticalDataProvider::_shape() const
{
    ORV_AssociationEnd system;
    system.role = ELEMENT_ROLE;
    system.classes.append(_systemClassName);
    system.superClasses.append("CIM_ManagedElement");
    system.superClasses.append("CIM_ManagedSystemElement");
    system.superClasses.append("CIM_LogicalElement");
    system.superClasses.append("CIM_EnabledLogicalElement");
    system.superClasses.append("CIM_System");
    system.superClasses.append("CIM_ComputerSystem");

    ORV_AssociationEnd stats;
    stats.role = STATS_ROLE;
    stats.classes.append(_statsClassName);
    stats.superClasses.append("CIM_BlockStorageStatisticalData");

    Array<CIMName> referenceClasses;
    referenceClasses.append("CIM_ElementStatisticalData");
    referenceClasses.append(_assoClassName);
    return ORV_AssociationShape(_assoClassName, system, stats, referenceClasses);
}

ORV_ArrayElementStatisticalDataProvider::ORV_ArrayElementStatisticalDataProvider() {}

ORV_ArrayElementStatisticalDataProvider::ORV_ArrayElementStatisticalDataProvider(
    const CIMObjectPath&)
{
    throw CIMNotSupportedException(ClassName + " does not support constructor with object path.");
}

ORV_ArrayElementStatisticalDataProvider::~ORV_ArrayElementStatisticalDataProvider() {}

void ORV_ArrayElementStatisticalDataProvider::terminate()
{
    delete this;
}

ORV_AssociationFrame ORV_ArrayElementStatisticalDataProvider::_frame()
{
    typedef ORV_ArrayElementStatisticalDataProvider P;
    ORV_AssociationHooks hooks = ORV_AssociationHooks::bind(
        this, &P::_invalidParms, &P::_getRelatedInstances, &P::_getRelatedInstanceNames,
        &P::_getInstances, &P::_getInstanceNames, &P::_buildAssociationInstance,
        &P::_buildAssociationName);
    // The ends are told apart by the paths kept at initialize, not by class.
    hooks.sideOf = [this](const CIMObjectPath& objectName)
    {
        if (ORV_Common::matchObjectPath(objectName, _systemStatsPath))
        {
            return ORV_ASSOC_RIGHT;
        }
        if (ORV_Common::matchObjectPath(objectName, _systemPath))
        {
            return ORV_ASSOC_LEFT;
        }
        return ORV_ASSOC_NO_SIDE;
    };
    return ORV_AssociationFrame(ClassName, _shape(), hooks, __FILE__, __LINE__);
}

void ORV_ArrayElementStatisticalDataProvider::associators(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    _frame().associators(context, objectName, associationClass, resultClass, role, resultRole,
                         includeQualifiers, includeClassOrigin, propertyList, handler);
}

void ORV_ArrayElementStatisticalDataProvider::associatorNames(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, ObjectPathResponseHandler& handler)
{
    _frame().associatorNames(context, objectName, associationClass, resultClass, role, resultRole,
                             handler);
}

void ORV_ArrayElementStatisticalDataProvider::references(
    const OperationContext& context, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    _frame().references(context, objectName, resultClass, role, includeQualifiers,
                        includeClassOrigin, propertyList, handler);
}

void ORV_ArrayElementStatisticalDataProvider::referenceNames(const OperationContext& context,
                                                             const CIMObjectPath& objectName,
                                                             const CIMName& resultClass,
                                                             const String& role,
                                                             ObjectPathResponseHandler& handler)
{
    _frame().referenceNames(context, objectName, resultClass, role, handler);
}

void ORV_ArrayElementStatisticalDataProvider::getInstance(const OperationContext& context,
                                                          const CIMObjectPath& instanceReference,
                                                          const Boolean includeQualifiers,
                                                          const Boolean includeClassOrigin,
                                                          const CIMPropertyList& propertyList,
                                                          InstanceResponseHandler& handler)
{
    _frame().getInstance(context, instanceReference, includeQualifiers, includeClassOrigin,
                         propertyList, handler);
}

void ORV_ArrayElementStatisticalDataProvider::enumerateInstances(
    const OperationContext& context, const CIMObjectPath&, const Boolean includeQualifiers,
    const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    InstanceResponseHandler& handler)
{
    _frame().enumerateInstances(context, includeQualifiers, includeClassOrigin, propertyList,
                                handler);
}

void ORV_ArrayElementStatisticalDataProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath&, ObjectPathResponseHandler& handler)
{
    _frame().enumerateInstanceNames(context, handler);
}

void ORV_ArrayElementStatisticalDataProvider::modifyInstance(const OperationContext&,
                                                             const CIMObjectPath&,
                                                             const CIMInstance&, const Boolean,
                                                             const CIMPropertyList&,
                                                             ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support modifyInstance.");
}

void ORV_ArrayElementStatisticalDataProvider::createInstance(const OperationContext&,
                                                             const CIMObjectPath&,
                                                             const CIMInstance&,
                                                             ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support createInstance.");
}

void ORV_ArrayElementStatisticalDataProvider::deleteInstance(const OperationContext&,
                                                             const CIMObjectPath&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support deleteInstance.");
}

CIMInstance ORV_ArrayElementStatisticalDataProvider::_buildAssociationInstance(
    const CIMObjectPath& elementPath, const CIMObjectPath& statsPath, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return _shape().buildInstance(_cimom, elementPath, statsPath, _hostAddr, includeQualifiers,
                                  includeClassOrigin, propertyList);
}

CIMObjectPath
ORV_ArrayElementStatisticalDataProvider::_buildAssociationName(const CIMObjectPath& elementPath,
                                                               const CIMObjectPath& statsPath)
{
    return _shape().buildName(elementPath, statsPath, _hostAddr);
}

Array<CIMObjectPath>
ORV_ArrayElementStatisticalDataProvider::_getRelatedInstanceNames(const CIMObjectPath& objectName,
                                                                  const OperationContext& context)
{
    return _frame().relatedInstanceNames(objectName, context);
}

Boolean ORV_ArrayElementStatisticalDataProvider::_invalidParms(const CIMObjectPath& objectName,
                                                               String role, String resultRole,
                                                               CIMName resultClass,
                                                               String operation)
{
    return _shape().invalidParms(objectName, role, resultRole, resultClass, operation);
}

Array<CIMInstance> ORV_ArrayElementStatisticalDataProvider::_getRelatedInstances(
    const CIMObjectPath& objectName, const OperationContext& context, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    ORV_AssociationFrame::logRelatedEntry(ClassName, objectName);
    Array<CIMInstance> result;
    ORV_AssociationFrame::collect(
        ClassName, "_getRelatedInstances", result,
        [&]()
        {
            CIMObjectPath otherPath;
            if (ORV_Common::matchObjectPath(objectName, _systemPath))
            {
                otherPath = _systemStatsPath;
            }
            else if (ORV_Common::matchObjectPath(objectName, _systemStatsPath))
            {
                otherPath = _systemPath;
            }
            else
            {
                throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");
            }
            result.append(_cimom.getInstance(context, ORV_Common::NAMESPACE, otherPath, false,
                                             includeQualifiers, includeClassOrigin, propertyList));
        });
    return result;
}

Array<CIMInstance> ORV_ArrayElementStatisticalDataProvider::_getInstances(
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    Array<CIMInstance> result;
    ORV_AssociationFrame::collect(ClassName, "_getInstances", result,
                                  [&]()
                                  {
                                      result.append(_buildAssociationInstance(
                                          _systemPath, _systemStatsPath, includeQualifiers,
                                          includeClassOrigin, propertyList));
                                  });
    return result;
}

Array<CIMObjectPath> ORV_ArrayElementStatisticalDataProvider::_getInstanceNames()
{
    // The one pair's path was kept at initialize; nothing to build.
    Array<CIMObjectPath> names;
    names.append(_assocPath);
    return names;
}

PEGASUS_NAMESPACE_END
