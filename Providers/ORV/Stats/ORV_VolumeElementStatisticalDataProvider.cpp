#include "ORV_VolumeElementStatisticalDataProvider.h"

#include <cstdio>
#include <cstring>

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ORV_Common.h"
#include "ORV_StorageVolumeProvider.h"
#include "ORV_VolumeStatisticalDataProvider.h"
#include "orvapi.h"

PEGASUS_USING_PEGASUS;

static const String ClassName("ORV_VolumeElementStatisticalDataProvider");

namespace
{
typedef ORV_VolumeStatisticalDataProvider Family;

const CIMName ASSOC_CLASS("ORV_VolumeElementStatisticalData");
const CIMName STATS_CLASS("ORV_VolumeStatisticalData");
const CIMName VOLUME_CLASS("ORV_StorageVolume");
const String ELEMENT_ROLE("ManagedElement");
const String STATS_ROLE("Stats");
const String INSTANCE_ID_KEY("InstanceID");
const String DEVICE_ID_KEY("DeviceID");
const int LOG_ERROR = 2;

// A failed management call ends the building and is reported in the volume
// statistics' own words; the caller's collect step logs the count so far and
// passes the exception on.
void apiFailed(Sint32 status)
{
    log_message(LOG_ERROR,
                "ORV_VolumeStatisticalDataProvider::_buildVVInstances  getVVs_chunk() "
                "failed, status = %d \n",
                (int)status);
    throw CIMOperationFailedException("Internal error.");
}
} // namespace

PEGASUS_NAMESPACE_BEGIN

void ORV_VolumeElementStatisticalDataProvider::initialize(CIMOMHandle& cimom)
{
    auto setMembers = [&]()
    {
        _cimom = cimom;
        _assoClassName = ASSOC_CLASS;
        _statsClassName = STATS_CLASS;
        _volumeClassName = VOLUME_CLASS;
    };
    ORV_AssociationFrame::initialize(ClassName, ClassName, cimom, _hostAddr, _systemName,
                                     setMembers);
}

ORV_AssociationShape ORV_VolumeElementStatisticalDataProvider::_shape() const
{
    ORV_AssociationEnd volume;
    volume.role = ELEMENT_ROLE;
    volume.classes.append(_volumeClassName);
    volume.superClasses.append("CIM_StorageVolume");

    ORV_AssociationEnd stats;
    stats.role = STATS_ROLE;
    stats.classes.append(_statsClassName);
    stats.superClasses.append("CIM_BlockStorageStatisticalData");

    Array<CIMName> referenceClasses;
    referenceClasses.append("CIM_ElementStatisticalData");
    referenceClasses.append(_assoClassName);
    return ORV_AssociationShape(_assoClassName, volume, stats, referenceClasses);
}

ORV_VolumeElementStatisticalDataProvider::ORV_VolumeElementStatisticalDataProvider() {}

ORV_VolumeElementStatisticalDataProvider::ORV_VolumeElementStatisticalDataProvider(
    const CIMObjectPath&)
{
    throw CIMNotSupportedException(ClassName + " does not support constructor with object path.");
}

ORV_VolumeElementStatisticalDataProvider::~ORV_VolumeElementStatisticalDataProvider() {}

void ORV_VolumeElementStatisticalDataProvider::terminate()
{
    delete this;
}

ORV_AssociationFrame ORV_VolumeElementStatisticalDataProvider::_frame()
{
    typedef ORV_VolumeElementStatisticalDataProvider P;
    ORV_AssociationHooks hooks = ORV_AssociationHooks::bind(
        this, &P::_invalidParms, &P::_getRelatedInstances, &P::_getRelatedInstanceNames,
        &P::_getInstances, &P::_getInstanceNames, &P::_buildAssociationInstance,
        &P::_buildAssociationName);
    return ORV_AssociationFrame(ClassName, _shape(), hooks, __FILE__, __LINE__);
}

void ORV_VolumeElementStatisticalDataProvider::associators(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    _frame().associators(context, objectName, associationClass, resultClass, role, resultRole,
                         includeQualifiers, includeClassOrigin, propertyList, handler);
}

void ORV_VolumeElementStatisticalDataProvider::associatorNames(
    const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role,
    const String& resultRole, ObjectPathResponseHandler& handler)
{
    _frame().associatorNames(context, objectName, associationClass, resultClass, role, resultRole,
                             handler);
}

void ORV_VolumeElementStatisticalDataProvider::references(
    const OperationContext& context, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    _frame().references(context, objectName, resultClass, role, includeQualifiers,
                        includeClassOrigin, propertyList, handler);
}

void ORV_VolumeElementStatisticalDataProvider::referenceNames(const OperationContext& context,
                                                              const CIMObjectPath& objectName,
                                                              const CIMName& resultClass,
                                                              const String& role,
                                                              ObjectPathResponseHandler& handler)
{
    _frame().referenceNames(context, objectName, resultClass, role, handler);
}

void ORV_VolumeElementStatisticalDataProvider::getInstance(const OperationContext& context,
                                                           const CIMObjectPath& instanceReference,
                                                           const Boolean includeQualifiers,
                                                           const Boolean includeClassOrigin,
                                                           const CIMPropertyList& propertyList,
                                                           InstanceResponseHandler& handler)
{
    _frame().getInstance(context, instanceReference, includeQualifiers, includeClassOrigin,
                         propertyList, handler);
}

void ORV_VolumeElementStatisticalDataProvider::enumerateInstances(
    const OperationContext& context, const CIMObjectPath&, const Boolean includeQualifiers,
    const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    InstanceResponseHandler& handler)
{
    _frame().enumerateInstances(context, includeQualifiers, includeClassOrigin, propertyList,
                                handler);
}

void ORV_VolumeElementStatisticalDataProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath&, ObjectPathResponseHandler& handler)
{
    _frame().enumerateInstanceNames(context, handler);
}

void ORV_VolumeElementStatisticalDataProvider::modifyInstance(const OperationContext&,
                                                              const CIMObjectPath&,
                                                              const CIMInstance&, const Boolean,
                                                              const CIMPropertyList&,
                                                              ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support modifyInstance.");
}

void ORV_VolumeElementStatisticalDataProvider::createInstance(const OperationContext&,
                                                              const CIMObjectPath&,
                                                              const CIMInstance&,
                                                              ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support createInstance.");
}

void ORV_VolumeElementStatisticalDataProvider::deleteInstance(const OperationContext&,
                                                              const CIMObjectPath&,
                                                              ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support deleteInstance.");
}

CIMInstance ORV_VolumeElementStatisticalDataProvider::_buildAssociationInstance(
    const CIMObjectPath& elementPath, const CIMObjectPath& statsPath, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return _shape().buildInstance(_cimom, elementPath, statsPath, _hostAddr, includeQualifiers,
                                  includeClassOrigin, propertyList);
}

CIMObjectPath
ORV_VolumeElementStatisticalDataProvider::_buildAssociationName(const CIMObjectPath& elementPath,
                                                                const CIMObjectPath& statsPath)
{
    return _shape().buildName(elementPath, statsPath, _hostAddr);
}

Array<CIMObjectPath>
ORV_VolumeElementStatisticalDataProvider::_getRelatedInstanceNames(const CIMObjectPath& objectName,
                                                                   const OperationContext& context)
{
    return _frame().relatedInstanceNames(objectName, context);
}

Boolean ORV_VolumeElementStatisticalDataProvider::_invalidParms(const CIMObjectPath& objectName,
                                                                String role, String resultRole,
                                                                CIMName resultClass,
                                                                String operation)
{
    return _shape().invalidParms(objectName, role, resultRole, resultClass, operation);
}

Array<CIMInstance> ORV_VolumeElementStatisticalDataProvider::_getRelatedInstances(
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
            if (fromStats)
            {
                // The statistics name their volume by its WWN; the volume
                // itself belongs to the sibling module.
                uint64_t wwn_re = 0;
                uint64_t wwn = API_WWN_ALL_VOLUMES;
                Family::parseWWN(key, &wwn_re, &wwn);
                char wwnText[API_WWN_TEXT_LEN];
                memset(wwnText, 0, sizeof(wwnText));
                api_wwnIntToString(wwn_re, wwn, wwnText);
                const CIMObjectPath volumePath = ORV_StorageVolumeProvider::createObjectPath(
                    String(wwnText), _systemName, _hostAddr);
                result.append(_cimom.getInstance(context, ORV_Common::NAMESPACE, volumePath, false,
                                                 includeQualifiers, includeClassOrigin,
                                                 propertyList));
                return;
            }
            if (!objectName.getClassName().equal(_volumeClassName))
            {
                return;
            }

            uint64_t wwn_re = 0;
            uint64_t wwn = 0;
            api_wwn_scratch_t scratch;
            memset(&scratch, 0, sizeof(scratch));
            // A DeviceID that is no WWN names no volume; neither may it widen
            // the query to every volume through the wildcard value.
            if (api_wwnStringToInt(&scratch, key.getCString(), &wwn_re, &wwn) != 0 ||
                wwn == API_WWN_ALL_VOLUMES)
            {
                return;
            }
            api_VolumesStats_t allstats;
            memset(&allstats, 0, sizeof(allstats));
            Family::FreeOnExit<api_VolumeStats_t> release(allstats.stats);
            Uint32 cursor_id = 0;
            const Sint32 status = Family::callLocked(
                [&]() { return api_getVolumeStats_chunk(&allstats, wwn, wwn_re, &cursor_id, 0); });
            if (status != 0)
            {
                apiFailed(status);
            }
            if (allstats.count == 0)
            {
                return;
            }
            CIMClass statsClass = ORV_Common::getStoredCIMClass(
                _cimom, OperationContext(), ORV_Common::NAMESPACE, _statsClassName, false,
                includeQualifiers, includeClassOrigin, propertyList);
            for (Uint32 i = 0; i < allstats.count; i++)
            {
                result.append(Family::buildInstance(statsClass, allstats.stats[i], _hostAddr));
            }
        });
    return result;
}

Array<CIMInstance> ORV_VolumeElementStatisticalDataProvider::_getInstances(
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    Array<CIMInstance> result;
    ORV_AssociationFrame::collect(
        ClassName, "_getInstances", result,
        [&]()
        {
            // The volume list is read a chunk at a time, the semaphore held
            // for one call only; the statistics paths are built, not fetched.
            Uint32 cursor_id = 0;
            Boolean more = true;
            while (more)
            {
                api_VVsInfo_t vvs;
                memset(&vvs, 0, sizeof(vvs));
                Family::FreeOnExit<api_VVInfo_t> release(vvs.vvs);
                const Sint32 status = Family::callLocked(
                    [&]() { return api_getVVs_chunk(&vvs, &cursor_id, Family::CHUNK_SIZE); });
                if (status != 0)
                {
                    apiFailed(status);
                }
                for (Uint32 i = 0; i < vvs.count; i++)
                {
                    const String wwnText =
                        Family::fieldText(vvs.vvs[i].vvWWN, sizeof(vvs.vvs[i].vvWWN));
                    const CIMObjectPath statsPath =
                        Family::buildObjectPath(_hostAddr, Family::makeInstanceID(wwnText));
                    const CIMObjectPath volumePath = ORV_StorageVolumeProvider::createObjectPath(
                        wwnText, _systemName, _hostAddr);
                    result.append(_buildAssociationInstance(volumePath, statsPath,
                                                            includeQualifiers, includeClassOrigin,
                                                            propertyList));
                }
                more = cursor_id != 0 && vvs.count != 0;
            }
        });
    return result;
}

Array<CIMObjectPath> ORV_VolumeElementStatisticalDataProvider::_getInstanceNames()
{
    return _frame().instanceNames();
}

PEGASUS_NAMESPACE_END
