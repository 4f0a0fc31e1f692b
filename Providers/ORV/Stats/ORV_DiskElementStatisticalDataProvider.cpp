#include "ORV_DiskElementStatisticalDataProvider.h"

#include <cstdio>
#include <cstring>

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ORV_Common.h"
#include "ORV_DiskStatisticalDataProvider.h"
#include "ORV_DiskStorageExtentProvider.h"
#include "ORV_VolumeStatisticalDataProvider.h"
#include "orvapi.h"

PEGASUS_USING_PEGASUS;

static const String ClassName("ORV_DiskElementStatisticalDataProvider");

namespace
{
typedef ORV_VolumeStatisticalDataProvider Family;
typedef ORV_DiskStatisticalDataProvider DiskStats;

const CIMName ASSOC_CLASS("ORV_DiskElementStatisticalData");
const CIMName STATS_CLASS("ORV_DiskStatisticalData");
const CIMName DISK_CLASS("ORV_DiskStorageExtent");
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

// Every drive, under the process-wide semaphore, as the disk statistics
// provider asks for them.
void fetchDisks(api_DisksStats_t& disks)
{
    const Sint32 status = Family::callLocked(
        [&]()
        {
            return api_getDiskStats(API_DISK_ALL, API_WWN_ALL_VOLUMES, API_SEL_ANY, API_SEL_ANY,
                                    API_SEL_ANY, &disks);
        });
    if (status != 0)
    {
        apiFailed();
    }
}

String diskDeviceID(const api_DiskStats_t& record)
{
    return Family::fieldText(record.diskDeviceID, sizeof(record.diskDeviceID));
}
} // namespace

PEGASUS_NAMESPACE_BEGIN

void ORV_DiskElementStatisticalDataProvider::initialize(CIMOMHandle& cimom)
{
    auto setMembers = [&]()
    {
        _cimom = cimom;
        _assoClassName = ASSOC_CLASS;
        _statsClassName = STATS_CLASS;
        _diskClassNames.clear();
        _diskClassNames.append(DISK_CLASS);
    };
    ORV_AssociationFrame::initialize(ClassName, ClassName, cimom, _hostAddr, _systemName,
                                     setMembers);
}

ORV_AssociationShape ORV_DiskElementStatisticalDataProvider::_shape() const
{
    ORV_AssociationEnd disk;
    disk.role = ELEMENT_ROLE;
    disk.classes = _diskClassNames;
    disk.superClasses.append("CIM_StorageExtent");

    ORV_AssociationEnd stats;
    stats.role = STATS_ROLE;
    stats.classes.append(_statsClassName);
    stats.superClasses.append("CIM_BlockStorageStatisticalData");

    Array<CIMName> referenceClasses;
    referenceClasses.append("CIM_ElementStatisticalData");
    referenceClasses.append(_assoClassName);
    return ORV_AssociationShape(_assoClassName, disk, stats, referenceClasses);
}

ORV_DiskElementStatisticalDataProvider::ORV_DiskElementStatisticalDataProvider() {}

ORV_DiskElementStatisticalDataProvider::ORV_DiskElementStatisticalDataProvider(const CIMObjectPath&)
{
    throw CIMNotSupportedException(ClassName + " does not support constructor with object path.");
}

ORV_DiskElementStatisticalDataProvider::~ORV_DiskElementStatisticalDataProvider() {}

void ORV_DiskElementStatisticalDataProvider::terminate()
{
    delete this;
}

ORV_AssociationFrame ORV_DiskElementStatisticalDataProvider::_frame()
{
    typedef ORV_DiskElementStatisticalDataProvider P;
    ORV_AssociationHooks hooks = ORV_AssociationHooks::bind(
        this, &P::_invalidParms, &P::_getRelatedInstances, &P::_getRelatedInstanceNames,
        &P::_getInstances, &P::_getInstanceNames, &P::_buildAssociationInstance,
        &P::_buildAssociationName);
    return ORV_AssociationFrame(ClassName, _shape(), hooks, __FILE__, __LINE__);
}

void ORV_DiskElementStatisticalDataProvider::associators(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    _frame().associators(context, objectName, associationClass, resultClass, role, resultRole,
                         includeQualifiers, includeClassOrigin, propertyList, handler);
}

void ORV_DiskElementStatisticalDataProvider::associatorNames(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, ObjectPathResponseHandler& handler)
{
    _frame().associatorNames(context, objectName, associationClass, resultClass, role, resultRole,
                             handler);
}

void ORV_DiskElementStatisticalDataProvider::references(
    const OperationContext& context, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    _frame().references(context, objectName, resultClass, role, includeQualifiers,
                        includeClassOrigin, propertyList, handler);
}

void ORV_DiskElementStatisticalDataProvider::referenceNames(const OperationContext& context,
                                                            const CIMObjectPath& objectName,
                                                            const CIMName& resultClass,
                                                            const String& role,
                                                            ObjectPathResponseHandler& handler)
{
    _frame().referenceNames(context, objectName, resultClass, role, handler);
}

void ORV_DiskElementStatisticalDataProvider::getInstance(const OperationContext& context,
                                                         const CIMObjectPath& instanceReference,
                                                         const Boolean includeQualifiers,
                                                         const Boolean includeClassOrigin,
                                                         const CIMPropertyList& propertyList,
                                                         InstanceResponseHandler& handler)
{
    _frame().getInstance(context, instanceReference, includeQualifiers, includeClassOrigin,
                         propertyList, handler);
}

void ORV_DiskElementStatisticalDataProvider::enumerateInstances(const OperationContext& context,
                                                                const CIMObjectPath&,
                                                                const Boolean includeQualifiers,
                                                                const Boolean includeClassOrigin,
                                                                const CIMPropertyList& propertyList,
                                                                InstanceResponseHandler& handler)
{
    _frame().enumerateInstances(context, includeQualifiers, includeClassOrigin, propertyList,
                                handler);
}

void ORV_DiskElementStatisticalDataProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath&, ObjectPathResponseHandler& handler)
{
    _frame().enumerateInstanceNames(context, handler);
}

void ORV_DiskElementStatisticalDataProvider::modifyInstance(const OperationContext&,
                                                            const CIMObjectPath&,
                                                            const CIMInstance&, const Boolean,
                                                            const CIMPropertyList&,
                                                            ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support modifyInstance.");
}

void ORV_DiskElementStatisticalDataProvider::createInstance(const OperationContext&,
                                                            const CIMObjectPath&,
                                                            const CIMInstance&,
                                                            ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support createInstance.");
}

void ORV_DiskElementStatisticalDataProvider::deleteInstance(const OperationContext&,
                                                            const CIMObjectPath&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support deleteInstance.");
}

CIMInstance ORV_DiskElementStatisticalDataProvider::_buildAssociationInstance(
    const CIMObjectPath& elementPath, const CIMObjectPath& statsPath, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return _shape().buildInstance(_cimom, elementPath, statsPath, _hostAddr, includeQualifiers,
                                  includeClassOrigin, propertyList);
}

CIMObjectPath
ORV_DiskElementStatisticalDataProvider::_buildAssociationName(const CIMObjectPath& elementPath,
                                                              const CIMObjectPath& statsPath)
{
    return _shape().buildName(elementPath, statsPath, _hostAddr);
}

Array<CIMObjectPath>
ORV_DiskElementStatisticalDataProvider::_getRelatedInstanceNames(const CIMObjectPath& objectName,
                                                                 const OperationContext& context)
{
    return _frame().relatedInstanceNames(objectName, context);
}

Boolean ORV_DiskElementStatisticalDataProvider::_invalidParms(const CIMObjectPath& objectName,
                                                              String role, String resultRole,
                                                              CIMName resultClass, String operation)
{
    return _shape().invalidParms(objectName, role, resultRole, resultClass, operation);
}

Array<CIMInstance> ORV_DiskElementStatisticalDataProvider::_getRelatedInstances(
    const CIMObjectPath& objectName, const OperationContext& context, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    ORV_AssociationFrame::logRelatedEntry(ClassName, objectName);
    const Boolean fromStats = objectName.getClassName().equal(_statsClassName);
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
            api_DisksStats_t disks;
            memset(&disks, 0, sizeof(disks));
            Family::FreeOnExit<api_DiskStats_t> release(disks.stats);
            fetchDisks(disks);

            if (fromStats)
            {
                // Every drive whose statistics carry this ID; the extent
                // itself belongs to the sibling module.
                for (Uint32 i = 0; i < disks.count; i++)
                {
                    if (DiskStats::makeInstanceID(disks.stats[i]) == key)
                    {
                        const CIMObjectPath diskPath =
                            ORV_DiskStorageExtentProvider::buildObjectPath(
                                _hostAddr, diskDeviceID(disks.stats[i]), _systemName);
                        result.append(_cimom.getInstance(context, ORV_Common::NAMESPACE, diskPath,
                                                         false, includeQualifiers,
                                                         includeClassOrigin, propertyList));
                    }
                }
                return;
            }
            if (!ORV_Common::isPartOfArray(objectName.getClassName(), _diskClassNames))
            {
                return;
            }
            CIMClass statsClass = ORV_Common::getStoredCIMClass(
                _cimom, OperationContext(), ORV_Common::NAMESPACE, _statsClassName, false,
                includeQualifiers, includeClassOrigin, propertyList);
            for (Uint32 i = 0; i < disks.count; i++)
            {
                if (diskDeviceID(disks.stats[i]) == key)
                {
                    result.append(DiskStats::buildInstance(statsClass, disks.stats[i], _hostAddr));
                }
            }
        });
    return result;
}

Array<CIMInstance> ORV_DiskElementStatisticalDataProvider::_getInstances(
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    Array<CIMInstance> result;
    ORV_AssociationFrame::collect(
        ClassName, "_getInstances", result,
        [&]()
        {
            api_DisksStats_t disks;
            memset(&disks, 0, sizeof(disks));
            Family::FreeOnExit<api_DiskStats_t> release(disks.stats);
            fetchDisks(disks);
            for (Uint32 i = 0; i < disks.count; i++)
            {
                const CIMObjectPath diskPath = ORV_DiskStorageExtentProvider::buildObjectPath(
                    _hostAddr, diskDeviceID(disks.stats[i]), _systemName);
                const CIMObjectPath statsPath = DiskStats::buildObjectPath(
                    _hostAddr, DiskStats::makeInstanceID(disks.stats[i]));
                result.append(_buildAssociationInstance(diskPath, statsPath, includeQualifiers,
                                                        includeClassOrigin, propertyList));
            }
        });
    return result;
}

Array<CIMObjectPath> ORV_DiskElementStatisticalDataProvider::_getInstanceNames()
{
    return _frame().instanceNames();
}

PEGASUS_NAMESPACE_END
