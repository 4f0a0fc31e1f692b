#include "ORV_AssociatedBlockStatisticsManifestCollectionProvider.h"

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ORV_BlockStatisticsManifestCollectionProvider.h"
#include "ORV_Common.h"
#include "ORV_StatisticsCollectionProvider.h"

PEGASUS_USING_PEGASUS;

static const String ClassName("ORV_AssociatedBlockStatisticsManifestCollectionProvider");

namespace
{
const CIMName ASSOC_CLASS("ORV_AssociatedBlockStatisticsManifestCollection");
const CIMName STATISTICS_COLLECTION_CLASS("ORV_StatisticsCollection");
const CIMName MANIFEST_COLLECTION_CLASS("ORV_BlockStatisticsManifestCollection");
const String STATISTICS_ROLE("Statistics");
const String MANIFEST_COLLECTION_ROLE("ManifestCollection");
} // namespace

PEGASUS_NAMESPACE_BEGIN

ORV_AssociatedBlockStatisticsManifestCollectionProvider::
    ORV_AssociatedBlockStatisticsManifestCollectionProvider()
{
}

ORV_AssociatedBlockStatisticsManifestCollectionProvider::
    ORV_AssociatedBlockStatisticsManifestCollectionProvider(const CIMObjectPath&)
{
    throw CIMNotSupportedException(ClassName + " does not support constructor with object path.");
}

ORV_AssociatedBlockStatisticsManifestCollectionProvider::
    ~ORV_AssociatedBlockStatisticsManifestCollectionProvider()
{
}

void ORV_AssociatedBlockStatisticsManifestCollectionProvider::initialize(CIMOMHandle& cimom)
{
    auto setMembers = [&]()
    {
        _cimom = cimom;
        _assoClassName = ASSOC_CLASS;
        _manifClassName = MANIFEST_COLLECTION_CLASS;
        _collClassName = STATISTICS_COLLECTION_CLASS;
    };
    ORV_AssociationFrame::initialize(ClassName, ClassName, cimom, _hostAddr, _systemName,
                                     setMembers);
}

void ORV_AssociatedBlockStatisticsManifestCollectionProvider::terminate()
{
    delete this;
}

ORV_AssociationShape ORV_AssociatedBlockStatisticsManifestCollectionProvider::_shape() const
{
    ORV_AssociationEnd statistics;
    statistics.role = STATISTICS_ROLE;
    statistics.classes.append(_collClassName);
    statistics.superClasses.append("CIM_StatisticsCollection");

    ORV_AssociationEnd manifests;
    manifests.role = MANIFEST_COLLECTION_ROLE;
    manifests.classes.append(_manifClassName);
    manifests.superClasses.append("CIM_BlockStatisticsManifestCollection");

    Array<CIMName> referenceClasses;
    referenceClasses.append("CIM_AssociatedBlockStatisticsManifestCollection");
    referenceClasses.append(_assoClassName);
    return ORV_AssociationShape(_assoClassName, statistics, manifests, referenceClasses);
}

ORV_AssociationFrame ORV_AssociatedBlockStatisticsManifestCollectionProvider::_frame()
{
    typedef ORV_AssociatedBlockStatisticsManifestCollectionProvider P;
    return ORV_AssociationFrame(
        ClassName, _shape(),
        ORV_AssociationHooks::bind(this, &P::_invalidParms, &P::_getRelatedInstances,
                                   &P::_getRelatedInstanceNames, &P::_getInstances,
                                   &P::_getInstanceNames, &P::_buildAssociationInstance,
                                   &P::_buildAssociationName),
        __FILE__, __LINE__);
}

void ORV_AssociatedBlockStatisticsManifestCollectionProvider::associators(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    _frame().associators(context, objectName, associationClass, resultClass, role, resultRole,
                         includeQualifiers, includeClassOrigin, propertyList, handler);
}

void ORV_AssociatedBlockStatisticsManifestCollectionProvider::associatorNames(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, ObjectPathResponseHandler& handler)
{
    _frame().associatorNames(context, objectName, associationClass, resultClass, role, resultRole,
                             handler);
}

void ORV_AssociatedBlockStatisticsManifestCollectionProvider::references(
    const OperationContext& context, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    _frame().references(context, objectName, resultClass, role, includeQualifiers,
                        includeClassOrigin, propertyList, handler);
}

void ORV_AssociatedBlockStatisticsManifestCollectionProvider::referenceNames(
    const OperationContext& context, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, ObjectPathResponseHandler& handler)
{
    _frame().referenceNames(context, objectName, resultClass, role, handler);
}

void ORV_AssociatedBlockStatisticsManifestCollectionProvider::getInstance(
    const OperationContext& context, const CIMObjectPath& instanceReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    _frame().getInstance(context, instanceReference, includeQualifiers, includeClassOrigin,
                         propertyList, handler);
}

void ORV_AssociatedBlockStatisticsManifestCollectionProvider::enumerateInstances(
    const OperationContext& context, const CIMObjectPath&, const Boolean includeQualifiers,
    const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    InstanceResponseHandler& handler)
{
    _frame().enumerateInstances(context, includeQualifiers, includeClassOrigin, propertyList,
                                handler);
}

void ORV_AssociatedBlockStatisticsManifestCollectionProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath&, ObjectPathResponseHandler& handler)
{
    _frame().enumerateInstanceNames(context, handler);
}

void ORV_AssociatedBlockStatisticsManifestCollectionProvider::modifyInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, const Boolean,
    const CIMPropertyList&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support modifyInstance.");
}

void ORV_AssociatedBlockStatisticsManifestCollectionProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support createInstance.");
}

void ORV_AssociatedBlockStatisticsManifestCollectionProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support deleteInstance.");
}

CIMInstance ORV_AssociatedBlockStatisticsManifestCollectionProvider::_buildAssociationInstance(
    const CIMObjectPath& statisticsPath, const CIMObjectPath& manifestCollectionPath,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return _shape().buildInstance(_cimom, statisticsPath, manifestCollectionPath, _hostAddr,
                                  includeQualifiers, includeClassOrigin, propertyList);
}

CIMObjectPath ORV_AssociatedBlockStatisticsManifestCollectionProvider::_buildAssociationName(
    const CIMObjectPath& statisticsPath, const CIMObjectPath& manifestCollectionPath)
{
    return _shape().buildName(statisticsPath, manifestCollectionPath, _hostAddr);
}

Array<CIMInstance> ORV_AssociatedBlockStatisticsManifestCollectionProvider::_getRelatedInstances(
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
                                      if (objectName.getClassName().equal(_collClassName))
                                      {
                                          otherClass = _manifClassName;
                                      }
                                      else if (objectName.getClassName().equal(_manifClassName))
                                      {
                                          otherClass = _collClassName;
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
ORV_AssociatedBlockStatisticsManifestCollectionProvider::_getRelatedInstanceNames(
    const CIMObjectPath& objectName, const OperationContext& context)
{
    return _frame().relatedInstanceNames(objectName, context);
}

Array<CIMInstance> ORV_AssociatedBlockStatisticsManifestCollectionProvider::_getInstances(
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    Array<CIMInstance> result;
    ORV_AssociationFrame::collect(
        ClassName, "_getInstances", result,
        [&]()
        {
            // One pair, built from the two collections' own identifiers; nothing
            // is enumerated.
            const CIMObjectPath statisticsPath = ORV_StatisticsCollectionProvider::buildObjectPath(
                _hostAddr, ORV_StatisticsCollectionProvider::makeInstanceID(_systemName));
            const CIMObjectPath manifestCollectionPath =
                ORV_BlockStatisticsManifestCollectionProvider::buildObjectPath(
                    _hostAddr,
                    ORV_BlockStatisticsManifestCollectionProvider::makeInstanceID(_systemName));
            result.append(_buildAssociationInstance(statisticsPath, manifestCollectionPath,
                                                    includeQualifiers, includeClassOrigin,
                                                    propertyList));
        });
    return result;
}

Array<CIMObjectPath> ORV_AssociatedBlockStatisticsManifestCollectionProvider::_getInstanceNames()
{
    return _frame().instanceNames();
}

Boolean ORV_AssociatedBlockStatisticsManifestCollectionProvider::_invalidParms(
    const CIMObjectPath& objectName, String role, String resultRole, CIMName resultClass,
    String operation)
{
    return _shape().invalidParms(objectName, role, resultRole, resultClass, operation);
}

PEGASUS_NAMESPACE_END
