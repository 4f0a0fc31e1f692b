#include "ORV_StatisticsElementCapabilitiesProvider.h"

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ORV_BlockStatisticsCapabilitiesProvider.h"
#include "ORV_BlockStatisticsServiceProvider.h"
#include "ORV_Common.h"

PEGASUS_USING_PEGASUS;

static const String ClassName("ORV_StatisticsElementCapabilitiesProvider");

namespace
{
const CIMName ASSOC_CLASS("ORV_StatisticsElementCapabilities");
const CIMName SERVICE_CLASS("ORV_BlockStatisticsService");
const CIMName CAPABILITIES_CLASS("ORV_BlockStatisticsCapabilities");
const String SERVICE_ROLE("ManagedElement");
const String CAPABILITIES_ROLE("Capabilities");
} // namespace

PEGASUS_NAMESPACE_BEGIN

ORV_StatisticsElementCapabilitiesProvider::ORV_StatisticsElementCapabilitiesProvider() {}

ORV_StatisticsElementCapabilitiesProvider::ORV_StatisticsElementCapabilitiesProvider(
    const CIMObjectPath&)
{
    throw CIMNotSupportedException(ClassName + " does not support constructor with object path.");
}

ORV_StatisticsElementCapabilitiesProvider::~ORV_StatisticsElementCapabilitiesProvider() {}

void ORV_StatisticsElementCapabilitiesProvider::initialize(CIMOMHandle& cimom)
{
    auto setMembers = [&]()
    {
        _cimom = cimom;
        _assoClassName = ASSOC_CLASS;
        _capabClassName = CAPABILITIES_CLASS;
        _serviceClassName = SERVICE_CLASS;
    };
    ORV_AssociationFrame::initialize(ClassName, ClassName, cimom, _hostAddr, _systemName,
                                     setMembers);
}

void ORV_StatisticsElementCapabilitiesProvider::terminate()
{
    delete this;
}

ORV_AssociationShape ORV_StatisticsElementCapabilitiesProvider::_shape() const
{
    ORV_AssociationEnd service;
    service.role = SERVICE_ROLE;
    service.classes.append(_serviceClassName);
    service.superClasses.append("CIM_BlockStatisticsService");

    ORV_AssociationEnd capabilities;
    capabilities.role = CAPABILITIES_ROLE;
    capabilities.classes.append(_capabClassName);
    capabilities.superClasses.append("CIM_BlockStatisticsCapabilities");

    Array<CIMName> referenceClasses;
    referenceClasses.append("CIM_ElementCapabilities");
    referenceClasses.append(_assoClassName);
    return ORV_AssociationShape(_assoClassName, service, capabilities, referenceClasses);
}

ORV_AssociationFrame ORV_StatisticsElementCapabilitiesProvider::_frame()
{
    typedef ORV_StatisticsElementCapabilitiesProvider P;
    return ORV_AssociationFrame(
        ClassName, _shape(),
        ORV_AssociationHooks::bind(this, &P::_invalidParms, &P::_getRelatedInstances,
                                   &P::_getRelatedInstanceNames, &P::_getInstances,
                                   &P::_getInstanceNames, &P::_buildAssociationInstance,
                                   &P::_buildAssociationName),
        __FILE__, __LINE__);
}

void ORV_StatisticsElementCapabilitiesProvider::associators(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    _frame().associators(context, objectName, associationClass, resultClass, role, resultRole,
                         includeQualifiers, includeClassOrigin, propertyList, handler);
}

void ORV_StatisticsElementCapabilitiesProvider::associatorNames(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, ObjectPathResponseHandler& handler)
{
    _frame().associatorNames(context, objectName, associationClass, resultClass, role, resultRole,
                             handler);
}

void ORV_StatisticsElementCapabilitiesProvider::references(
    const OperationContext& context, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    _frame().references(context, objectName, resultClass, role, includeQualifiers,
                        includeClassOrigin, propertyList, handler);
}

void ORV_StatisticsElementCapabilitiesProvider::referenceNames(const OperationContext& context,
                                                               const CIMObjectPath& objectName,
                                                               const CIMName& resultClass,
                                                               const String& role,
                                                               ObjectPathResponseHandler& handler)
{
    _frame().referenceNames(context, objectName, resultClass, role, handler);
}

void ORV_StatisticsElementCapabilitiesProvider::getInstance(const OperationContext& context,
                                                            const CIMObjectPath& instanceReference,
                                                            const Boolean includeQualifiers,
                                                            const Boolean includeClassOrigin,
                                                            const CIMPropertyList& propertyList,
                                                            InstanceResponseHandler& handler)
{
    _frame().getInstance(context, instanceReference, includeQualifiers, includeClassOrigin,
                         propertyList, handler);
}

void ORV_StatisticsElementCapabilitiesProvider::enumerateInstances(
    const OperationContext& context, const CIMObjectPath&, const Boolean includeQualifiers,
    const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    InstanceResponseHandler& handler)
{
    _frame().enumerateInstances(context, includeQualifiers, includeClassOrigin, propertyList,
                                handler);
}

void ORV_StatisticsElementCapabilitiesProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath&, ObjectPathResponseHandler& handler)
{
    _frame().enumerateInstanceNames(context, handler);
}

void ORV_StatisticsElementCapabilitiesProvider::modifyInstance(const OperationContext&,
                                                               const CIMObjectPath&,
                                                               const CIMInstance&, const Boolean,
                                                               const CIMPropertyList&,
                                                               ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support modifyInstance.");
}

void ORV_StatisticsElementCapabilitiesProvider::createInstance(const OperationContext&,
                                                               const CIMObjectPath&,
                                                               const CIMInstance&,
                                                               ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support createInstance.");
}

void ORV_StatisticsElementCapabilitiesProvider::deleteInstance(const OperationContext&,
                                                               const CIMObjectPath&,
                                                               ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support deleteInstance.");
}

CIMInstance ORV_StatisticsElementCapabilitiesProvider::_buildAssociationInstance(
    const CIMObjectPath& servicePath, const CIMObjectPath& capabilitiesPath,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return _shape().buildInstance(_cimom, servicePath, capabilitiesPath, _hostAddr,
                                  includeQualifiers, includeClassOrigin, propertyList);
}

CIMObjectPath ORV_StatisticsElementCapabilitiesProvider::_buildAssociationName(
    const CIMObjectPath& servicePath, const CIMObjectPath& capabilitiesPath)
{
    return _shape().buildName(servicePath, capabilitiesPath, _hostAddr);
}

Array<CIMInstance> ORV_StatisticsElementCapabilitiesProvider::_getRelatedInstances(
    const CIMObjectPath& objectName, const OperationContext& context, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    ORV_AssociationFrame::logRelatedEntry(ClassName, objectName);
    Array<CIMInstance> result;
    ORV_AssociationFrame::collect(ClassName, "_getRelatedInstances", result,
                                  [&]()
                                  {
                                      // Both ends are singletons: the whole other class is the
                                      // answer.
                                      CIMName otherClass;
                                      if (objectName.getClassName().equal(_serviceClassName))
                                      {
                                          otherClass = _capabClassName;
                                      }
                                      else if (objectName.getClassName().equal(_capabClassName))
                                      {
                                          otherClass = _serviceClassName;
                                      }
                                      if (!otherClass.isNull())
                                      {
                                          result.appendArray(_cimom.enumerateInstances(
                                              context, ORV_Common::NAMESPACE, otherClass, false,
                                              false, includeQualifiers, includeClassOrigin,
                                              propertyList));
                                      }
                                  });
    return result;
}

Array<CIMObjectPath>
ORV_StatisticsElementCapabilitiesProvider::_getRelatedInstanceNames(const CIMObjectPath& objectName,
                                                                    const OperationContext& context)
{
    return _frame().relatedInstanceNames(objectName, context);
}

Array<CIMInstance> ORV_StatisticsElementCapabilitiesProvider::_getInstances(
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    Array<CIMInstance> result;
    ORV_AssociationFrame::collect(
        ClassName, "_getInstances", result,
        [&]()
        {
            // One pair, built from the two ends' own identifiers; nothing is
            // enumerated and the management API is not asked.
            const CIMObjectPath servicePath = ORV_BlockStatisticsServiceProvider::buildObjectPath(
                _hostAddr, _systemName, ORV_BlockStatisticsServiceProvider::makeName(_systemName));
            const CIMObjectPath capabilitiesPath =
                ORV_BlockStatisticsCapabilitiesProvider::buildObjectPath(
                    _hostAddr,
                    ORV_BlockStatisticsCapabilitiesProvider::makeInstanceID(_systemName));
            result.append(_buildAssociationInstance(servicePath, capabilitiesPath,
                                                    includeQualifiers, includeClassOrigin,
                                                    propertyList));
        });
    return result;
}

Array<CIMObjectPath> ORV_StatisticsElementCapabilitiesProvider::_getInstanceNames()
{
    return _frame().instanceNames();
}

Boolean ORV_StatisticsElementCapabilitiesProvider::_invalidParms(const CIMObjectPath& objectName,
                                                                 String role, String resultRole,
                                                                 CIMName resultClass,
                                                                 String operation)
{
    return _shape().invalidParms(objectName, role, resultRole, resultClass, operation);
}

PEGASUS_NAMESPACE_END
