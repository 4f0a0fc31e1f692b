#include "ORV_MemberOfBlockStatisticsManifestCollectionProvider.h"

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ORV_BlockStatisticsManifestCollectionProvider.h"
#include "ORV_Common.h"

PEGASUS_USING_PEGASUS;

static const String ClassName("ORV_MemberOfBlockStatisticsManifestCollectionProvider");

namespace
{
const CIMName ASSOC_CLASS("ORV_MemberOfBlockStatisticsManifestCollection");
const CIMName COLLECTION_CLASS("ORV_BlockStatisticsManifestCollection");
const CIMName MANIFEST_CLASS("ORV_BlockStatisticsManifest");
const String COLLECTION_ROLE("Collection");
const String MEMBER_ROLE("Member");
} // namespace

PEGASUS_NAMESPACE_BEGIN

ORV_MemberOfBlockStatisticsManifestCollectionProvider::
    ORV_MemberOfBlockStatisticsManifestCollectionProvider()
{
}

ORV_MemberOfBlockStatisticsManifestCollectionProvider::
    ORV_MemberOfBlockStatisticsManifestCollectionProvider(const CIMObjectPath&)
{
    throw CIMNotSupportedException(ClassName + " does not support constructor with object path.");
}

ORV_MemberOfBlockStatisticsManifestCollectionProvider::
    ~ORV_MemberOfBlockStatisticsManifestCollectionProvider()
{
}

void ORV_MemberOfBlockStatisticsManifestCollectionProvider::initialize(CIMOMHandle& cimom)
{
    auto setMembers = [&]()
    {
        _cimom = cimom;
        _assoClassName = ASSOC_CLASS;
        _collClassName = COLLECTION_CLASS;
        _manifClassName = MANIFEST_CLASS;
    };
    ORV_AssociationFrame::initialize(ClassName, ClassName, cimom, _hostAddr, _systemName,
                                     setMembers);
}

void ORV_MemberOfBlockStatisticsManifestCollectionProvider::terminate()
{
    delete this;
}

ORV_AssociationShape ORV_MemberOfBlockStatisticsManifestCollectionProvider::_shape() const
{
    ORV_AssociationEnd collection;
    collection.role = COLLECTION_ROLE;
    collection.classes.append(_collClassName);
    collection.superClasses.append("CIM_BlockStatisticsManifestCollection");

    ORV_AssociationEnd manifest;
    manifest.role = MEMBER_ROLE;
    manifest.classes.append(_manifClassName);
    manifest.superClasses.append("CIM_BlockStatisticsManifest");

    Array<CIMName> referenceClasses;
    referenceClasses.append("CIM_MemberOfCollection");
    referenceClasses.append(_assoClassName);
    return ORV_AssociationShape(_assoClassName, collection, manifest, referenceClasses);
}

ORV_AssociationFrame ORV_MemberOfBlockStatisticsManifestCollectionProvider::_frame()
{
    typedef ORV_MemberOfBlockStatisticsManifestCollectionProvider P;
    return ORV_AssociationFrame(
        ClassName, _shape(),
        ORV_AssociationHooks::bind(this, &P::_invalidParms, &P::_getRelatedInstances,
                                   &P::_getRelatedInstanceNames, &P::_getInstances,
                                   &P::_getInstanceNames, &P::_buildAssociationInstance,
                                   &P::_buildAssociationName),
        __FILE__, __LINE__);
}

void ORV_MemberOfBlockStatisticsManifestCollectionProvider::associators(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    _frame().associators(context, objectName, associationClass, resultClass, role, resultRole,
                         includeQualifiers, includeClassOrigin, propertyList, handler);
}

void ORV_MemberOfBlockStatisticsManifestCollectionProvider::associatorNames(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, ObjectPathResponseHandler& handler)
{
    _frame().associatorNames(context, objectName, associationClass, resultClass, role, resultRole,
                             handler);
}

void ORV_MemberOfBlockStatisticsManifestCollectionProvider::references(
    const OperationContext& context, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    _frame().references(context, objectName, resultClass, role, includeQualifiers,
                        includeClassOrigin, propertyList, handler);
}

void ORV_MemberOfBlockStatisticsManifestCollectionProvider::referenceNames(
    const OperationContext& context, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, ObjectPathResponseHandler& handler)
{
    _frame().referenceNames(context, objectName, resultClass, role, handler);
}

void ORV_MemberOfBlockStatisticsManifestCollectionProvider::getInstance(
    const OperationContext& context, const CIMObjectPath& instanceReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    _frame().getInstance(context, instanceReference, includeQualifiers, includeClassOrigin,
                         propertyList, handler);
}

void ORV_MemberOfBlockStatisticsManifestCollectionProvider::enumerateInstances(
    const OperationContext& context, const CIMObjectPath&, const Boolean includeQualifiers,
    const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    InstanceResponseHandler& handler)
{
    _frame().enumerateInstances(context, includeQualifiers, includeClassOrigin, propertyList,
                                handler);
}

void ORV_MemberOfBlockStatisticsManifestCollectionProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath&, ObjectPathResponseHandler& handler)
{
    _frame().enumerateInstanceNames(context, handler);
}

void ORV_MemberOfBlockStatisticsManifestCollectionProvider::modifyInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, const Boolean,
    const CIMPropertyList&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support modifyInstance.");
}

void ORV_MemberOfBlockStatisticsManifestCollectionProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support createInstance.");
}

void ORV_MemberOfBlockStatisticsManifestCollectionProvider::deleteInstance(const OperationContext&,
                                                                           const CIMObjectPath&,
                                                                           ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support deleteInstance.");
}

CIMInstance ORV_MemberOfBlockStatisticsManifestCollectionProvider::_buildAssociationInstance(
    const CIMObjectPath& collectionPath, const CIMObjectPath& manifestPath,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return _shape().buildInstance(_cimom, collectionPath, manifestPath, _hostAddr,
                                  includeQualifiers, includeClassOrigin, propertyList);
}

CIMObjectPath ORV_MemberOfBlockStatisticsManifestCollectionProvider::_buildAssociationName(
    const CIMObjectPath& collectionPath, const CIMObjectPath& manifestPath)
{
    return _shape().buildName(collectionPath, manifestPath, _hostAddr);
}

Array<CIMInstance> ORV_MemberOfBlockStatisticsManifestCollectionProvider::_getRelatedInstances(
    const CIMObjectPath& objectName, const OperationContext& context, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    ORV_AssociationFrame::logRelatedEntry(ClassName, objectName);
    Array<CIMInstance> result;
    ORV_AssociationFrame::collect(ClassName, "_getRelatedInstances", result,
                                  [&]()
                                  {
                                      // The collection is a singleton, so the whole other class is
                                      // the answer; the given path is not matched against it.
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
ORV_MemberOfBlockStatisticsManifestCollectionProvider::_getRelatedInstanceNames(
    const CIMObjectPath& objectName, const OperationContext& context)
{
    return _frame().relatedInstanceNames(objectName, context);
}

Array<CIMInstance> ORV_MemberOfBlockStatisticsManifestCollectionProvider::_getInstances(
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    Array<CIMInstance> result;
    ORV_AssociationFrame::collect(
        ClassName, "_getInstances", result,
        [&]()
        {
            const CIMObjectPath collectionPath =
                ORV_BlockStatisticsManifestCollectionProvider::buildObjectPath(
                    _hostAddr,
                    ORV_BlockStatisticsManifestCollectionProvider::makeInstanceID(_systemName));
            Array<CIMObjectPath> manifests = _cimom.enumerateInstanceNames(
                OperationContext(), ORV_Common::NAMESPACE, _manifClassName);
            for (Uint32 i = 0; i < manifests.size(); i++)
            {
                result.append(_buildAssociationInstance(collectionPath, manifests[i],
                                                        includeQualifiers, includeClassOrigin,
                                                        propertyList));
            }
        });
    return result;
}

Array<CIMObjectPath> ORV_MemberOfBlockStatisticsManifestCollectionProvider::_getInstanceNames()
{
    return _frame().instanceNames();
}

Boolean ORV_MemberOfBlockStatisticsManifestCollectionProvider::_invalidParms(
    const CIMObjectPath& objectName, String role, String resultRole, CIMName resultClass,
    String operation)
{
    return _shape().invalidParms(objectName, role, resultRole, resultClass, operation);
}

PEGASUS_NAMESPACE_END
