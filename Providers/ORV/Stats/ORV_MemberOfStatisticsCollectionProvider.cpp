#include "ORV_MemberOfStatisticsCollectionProvider.h"

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ORV_Common.h"
#include "ORV_StatisticsCollectionProvider.h"

PEGASUS_USING_PEGASUS;

static const String ClassName("ORV_MemberOfStatisticsCollectionProvider");

namespace
{
const CIMName ASSOC_CLASS("ORV_MemberOfStatisticsCollection");
const CIMName COLLECTION_CLASS("ORV_StatisticsCollection");
// Every statistical-data instance of the namespace is enumerated under this
// class, whichever provider serves it.
const CIMName MEMBERS_CLASS("CIM_BlockStorageStatisticalData");
const String COLLECTION_ROLE("Collection");
const String MEMBER_ROLE("Member");
// The initialize failure line spells the provider's name this way.
const String OPEN_FAILURE_NAME("ORV_MemoberOfStatisticsCollectionProvider");
} // namespace

PEGASUS_NAMESPACE_BEGIN

ORV_MemberOfStatisticsCollectionProvider::ORV_MemberOfStatisticsCollectionProvider() {}

ORV_MemberOfStatisticsCollectionProvider::ORV_MemberOfStatisticsCollectionProvider(
    const CIMObjectPath&)
{
    throw CIMNotSupportedException(ClassName + " does not support constructor with object path.");
}

ORV_MemberOfStatisticsCollectionProvider::~ORV_MemberOfStatisticsCollectionProvider() {}

void ORV_MemberOfStatisticsCollectionProvider::initialize(CIMOMHandle& cimom)
{
    auto setMembers = [&]()
    {
        _cimom = cimom;
        _assoClassName = ASSOC_CLASS;
        // The two superclasses are listed so that a client may name a
        // statistics instance by either.
        _dataClassNames.clear();
        _dataClassNames.append("CIM_StatisticalData");
        _dataClassNames.append("CIM_BlockStorageStatisticalData");
        _dataClassNames.append("ORV_DiskStatisticalData");
        _dataClassNames.append("ORV_PortStatisticalData");
        _dataClassNames.append("ORV_VolumeStatisticalData");
        _dataClassNames.append("ORV_LUNStatisticalData");
        _dataClassNames.append("ORV_ArrayStatisticalData");
        _dataClassNames.append("ORV_NodeStatisticalData");
        _collClassName = COLLECTION_CLASS;
    };
    ORV_AssociationFrame::initialize(ClassName, OPEN_FAILURE_NAME, cimom, _hostAddr, _systemName,
                                     setMembers);
}

void ORV_MemberOfStatisticsCollectionProvider::terminate()
{
    delete this;
}

ORV_AssociationShape ORV_MemberOfStatisticsCollectionProvider::_shape() const
{
    ORV_AssociationEnd collection;
    collection.role = COLLECTION_ROLE;
    collection.classes.append(_collClassName);
    collection.superClasses.append("CIM_StatisticsCollection");

    ORV_AssociationEnd member;
    member.role = MEMBER_ROLE;
    member.classes = _dataClassNames;
    // Naming a statistics instance by either superclass is allowed, but a
    // statistics instance asking for them finds nothing.
    member.superClasses.append("CIM_StatisticalData");
    member.superClasses.append("CIM_BlockStorageStatisticalData");

    Array<CIMName> referenceClasses;
    referenceClasses.append("CIM_MemberOfCollection");
    referenceClasses.append(_assoClassName);
    return ORV_AssociationShape(_assoClassName, collection, member, referenceClasses);
}

ORV_AssociationFrame ORV_MemberOfStatisticsCollectionProvider::_frame()
{
    typedef ORV_MemberOfStatisticsCollectionProvider P;
    return ORV_AssociationFrame(
        ClassName, _shape(),
        ORV_AssociationHooks::bind(this, &P::_invalidParms, &P::_getRelatedInstances,
                                   &P::_getRelatedInstanceNames, &P::_getInstances,
                                   &P::_getInstanceNames, &P::_buildAssociationInstance,
                                   &P::_buildAssociationName),
        __FILE__, __LINE__);
}

void ORV_MemberOfStatisticsCollectionProvider::associators(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    _frame().associators(context, objectName, associationClass, resultClass, role, resultRole,
                         includeQualifiers, includeClassOrigin, propertyList, handler);
}

void ORV_MemberOfStatisticsCollectionProvider::associatorNames(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, ObjectPathResponseHandler& handler)
{
    _frame().associatorNames(context, objectName, associationClass, resultClass, role, resultRole,
                             handler);
}

void ORV_MemberOfStatisticsCollectionProvider::references(
    const OperationContext& context, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    _frame().references(context, objectName, resultClass, role, includeQualifiers,
                        includeClassOrigin, propertyList, handler);
}

void ORV_MemberOfStatisticsCollectionProvider::referenceNames(const OperationContext& context,
                                                              const CIMObjectPath& objectName,
                                                              const CIMName& resultClass,
                                                              const String& role,
                                                              ObjectPathResponseHandler& handler)
{
    _frame().referenceNames(context, objectName, resultClass, role, handler);
}

void ORV_MemberOfStatisticsCollectionProvider::getInstance(const OperationContext& context,
                                                           const CIMObjectPath& instanceReference,
                                                           const Boolean includeQualifiers,
                                                           const Boolean includeClassOrigin,
                                                           const CIMPropertyList& propertyList,
                                                           InstanceResponseHandler& handler)
{
    _frame().getInstance(context, instanceReference, includeQualifiers, includeClassOrigin,
                         propertyList, handler);
}

void ORV_MemberOfStatisticsCollectionProvider::enumerateInstances(
    const OperationContext& context, const CIMObjectPath&, const Boolean includeQualifiers,
    const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    InstanceResponseHandler& handler)
{
    _frame().enumerateInstances(context, includeQualifiers, includeClassOrigin, propertyList,
                                handler);
}

void ORV_MemberOfStatisticsCollectionProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath&, ObjectPathResponseHandler& handler)
{
    _frame().enumerateInstanceNames(context, handler);
}

void ORV_MemberOfStatisticsCollectionProvider::modifyInstance(const OperationContext&,
                                                              const CIMObjectPath&,
                                                              const CIMInstance&, const Boolean,
                                                              const CIMPropertyList&,
                                                              ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support modifyInstance.");
}

void ORV_MemberOfStatisticsCollectionProvider::createInstance(const OperationContext&,
                                                              const CIMObjectPath&,
                                                              const CIMInstance&,
                                                              ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support createInstance.");
}

void ORV_MemberOfStatisticsCollectionProvider::deleteInstance(const OperationContext&,
                                                              const CIMObjectPath&,
                                                              ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support deleteInstance.");
}

CIMInstance ORV_MemberOfStatisticsCollectionProvider::_buildAssociationInstance(
    const CIMObjectPath& collectionPath, const CIMObjectPath& memberPath, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return _shape().buildInstance(_cimom, collectionPath, memberPath, _hostAddr, includeQualifiers,
                                  includeClassOrigin, propertyList);
}

CIMObjectPath
ORV_MemberOfStatisticsCollectionProvider::_buildAssociationName(const CIMObjectPath& collectionPath,
                                                                const CIMObjectPath& memberPath)
{
    return _shape().buildName(collectionPath, memberPath, _hostAddr);
}

Array<CIMInstance> ORV_MemberOfStatisticsCollectionProvider::_getRelatedInstances(
    const CIMObjectPath& objectName, const OperationContext& context, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    ORV_AssociationFrame::logRelatedEntry(ClassName, objectName);
    Array<CIMInstance> result;
    ORV_AssociationFrame::collect(
        ClassName, "_getRelatedInstances", result,
        [&]()
        {
            // The collection is a singleton, so the whole other class is the
            // answer; the given path is not matched against it.
            CIMName otherClass;
            if (objectName.getClassName().equal(_collClassName))
            {
                otherClass = MEMBERS_CLASS;
            }
            else if (ORV_Common::isPartOfArray(objectName.getClassName(), _dataClassNames))
            {
                otherClass = _collClassName;
            }
            if (!otherClass.isNull())
            {
                result.appendArray(_cimom.enumerateInstances(
                    context, ORV_Common::NAMESPACE, otherClass, false, false, includeQualifiers,
                    includeClassOrigin, propertyList));
            }
        });
    return result;
}

Array<CIMObjectPath>
ORV_MemberOfStatisticsCollectionProvider::_getRelatedInstanceNames(const CIMObjectPath& objectName,
                                                                   const OperationContext& context)
{
    return _frame().relatedInstanceNames(objectName, context);
}

Array<CIMInstance> ORV_MemberOfStatisticsCollectionProvider::_getInstances(
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    Array<CIMInstance> result;
    ORV_AssociationFrame::collect(
        ClassName, "_getInstances", result,
        [&]()
        {
            const CIMObjectPath collectionPath = ORV_StatisticsCollectionProvider::buildObjectPath(
                _hostAddr, ORV_StatisticsCollectionProvider::makeInstanceID(_systemName));
            Array<CIMObjectPath> members = _cimom.enumerateInstanceNames(
                OperationContext(), ORV_Common::NAMESPACE, MEMBERS_CLASS);
            for (Uint32 i = 0; i < members.size(); i++)
            {
                result.append(_buildAssociationInstance(collectionPath, members[i],
                                                        includeQualifiers, includeClassOrigin,
                                                        propertyList));
            }
        });
    return result;
}

Array<CIMObjectPath> ORV_MemberOfStatisticsCollectionProvider::_getInstanceNames()
{
    return _frame().instanceNames();
}

Boolean ORV_MemberOfStatisticsCollectionProvider::_invalidParms(const CIMObjectPath& objectName,
                                                                String role, String resultRole,
                                                                CIMName resultClass,
                                                                String operation)
{
    return _shape().invalidParms(objectName, role, resultRole, resultClass, operation);
}

PEGASUS_NAMESPACE_END
