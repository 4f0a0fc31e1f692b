#include "ORV_BlockStatisticsManifestProvider.h"

#include <Pegasus/Common/Exception.h>

#include "ORV_Common.h"
#include "ORV_InstanceFrame.h"
#include "orvapi.h"

PEGASUS_USING_PEGASUS;

static const String ClassName("ORV_BlockStatisticsManifestProvider");

namespace
{
const CIMName SERVED_CLASS("ORV_BlockStatisticsManifest");
// The shared request flow, under this provider's name and source file.
const ORV_InstanceFrame FRAME(ClassName, SERVED_CLASS, __FILE__, __LINE__);

// Element types in the order the manifests are enumerated; the supported
// list handed to the service and the capabilities uses another order.
const Uint16 ENUMERATION_ORDER[] = {2, 4, 10, 6, 7, 8, 11};
const Uint16 SUPPORTED_TYPES[] = {2, 4, 6, 7, 8, 10, 11};
const Uint32 TYPE_COUNT = sizeof(SUPPORTED_TYPES) / sizeof(SUPPORTED_TYPES[0]);

// Only volume statistics carry cache hits, so only the volume manifest
// includes the two hit counters.
const Uint16 VOLUME_TYPE = 8;
const String READ_HITS_SWITCH("IncludeReadHitIOs");
const String WRITE_HITS_SWITCH("IncludeWriteHitIOs");
} // namespace

const String ORV_BlockStatisticsManifestProvider::_schemaProps[12][2] = {
    {"IncludeTotalIOs", "TotalIOs"},           {"IncludeKBytesTransferred", "KBytesTransferred"},
    {"IncludeIOTimeCounter", "IOTimeCounter"}, {"IncludeReadIOs", "ReadIOs"},
    {"IncludeReadHitIOs", "ReadHitIOs"},       {"IncludeReadIOTimeCounter", "ReadIOTimeCounter"},
    {"IncludeKBytesRead", "KBytesRead"},       {"IncludeWriteIOs", "WriteIOs"},
    {"IncludeWriteHitIOs", "WriteHitIOs"},     {"IncludeWriteIOTimeCounter", "WriteIOTimeCounter"},
    {"IncludeKBytesWritten", "KBytesWritten"}, {"", ""},
};

ORV_BlockStatisticsManifestProvider::ORV_BlockStatisticsManifestProvider() {}

ORV_BlockStatisticsManifestProvider::ORV_BlockStatisticsManifestProvider(const CIMObjectPath&)
{
    FRAME.refuse("constructor with object path");
}

ORV_BlockStatisticsManifestProvider::~ORV_BlockStatisticsManifestProvider() {}

void ORV_BlockStatisticsManifestProvider::initialize(CIMOMHandle& cimom)
{
    // Written out rather than left to the frame: this provider's open-failure
    // line carries its name with a lower-case "b", which log readers match.
    _cimom = cimom;
    if (api_orvOpenForCimserver(NULL) != 0)
    {
        log_message(2, "ORV_blockStatisticsManifestProvider::initialize(): "
                       "api_orvOpenForCimserver failed\n");
    }
    _hostAddr = ORV_Common::getSystemHostName(cimom);
    _systemName = ORV_Common::getSystemName(cimom);
    log_message(4, "-->ORV_BlockStatisticsManifestProvider::initialize()\n");
}

void ORV_BlockStatisticsManifestProvider::terminate()
{
    delete this;
}

void ORV_BlockStatisticsManifestProvider::getInstance(const OperationContext& context,
                                                      const CIMObjectPath& instanceReference,
                                                      const Boolean includeQualifiers,
                                                      const Boolean includeClassOrigin,
                                                      const CIMPropertyList& propertyList,
                                                      InstanceResponseHandler& handler)
{
    FRAME.getInstance(
        context, instanceReference,
        [&](const CIMName& className, const String&) {
            return _build_instances(className, includeQualifiers, includeClassOrigin, propertyList);
        },
        handler);
}

void ORV_BlockStatisticsManifestProvider::enumerateInstances(const OperationContext& context,
                                                             const CIMObjectPath& classReference,
                                                             const Boolean includeQualifiers,
                                                             const Boolean includeClassOrigin,
                                                             const CIMPropertyList& propertyList,
                                                             InstanceResponseHandler& handler)
{
    FRAME.enumerateInstances(
        context, classReference,
        [&](const CIMName& className) {
            return _build_instances(className, includeQualifiers, includeClassOrigin, propertyList);
        },
        handler);
}

void ORV_BlockStatisticsManifestProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference,
    ObjectPathResponseHandler& handler)
{
    FRAME.enumerateInstanceNames(
        context, classReference, [this]() { return _build_ref(); }, handler);
}

void ORV_BlockStatisticsManifestProvider::modifyInstance(const OperationContext&,
                                                         const CIMObjectPath&, const CIMInstance&,
                                                         const Boolean, const CIMPropertyList&,
                                                         ResponseHandler&)
{
    FRAME.refuse("modifyInstance");
}

void ORV_BlockStatisticsManifestProvider::createInstance(const OperationContext&,
                                                         const CIMObjectPath&, const CIMInstance&,
                                                         ObjectPathResponseHandler&)
{
    FRAME.refuse("createInstance");
}

void ORV_BlockStatisticsManifestProvider::deleteInstance(const OperationContext&,
                                                         const CIMObjectPath&, ResponseHandler&)
{
    FRAME.refuse("deleteInstance");
}

// ---- element-type tables ----------------------------------------------------

Array<Uint16> ORV_BlockStatisticsManifestProvider::getElementTypes()
{
    return Array<Uint16>(SUPPORTED_TYPES, TYPE_COUNT);
}

CIMName ORV_BlockStatisticsManifestProvider::getClassName(Uint16 elementType)
{
    switch (elementType)
    {
    case 2:
        return CIMName("ORV_ArrayStatisticalData");
    case 4:
        // Controller nodes are reported as peer computer systems.
        return CIMName("ORV_NodeStatisticalData");
    case 6:
    case 7:
        // Front-end and back-end ports share one statistics class.
        return CIMName("ORV_PortStatisticalData");
    case 8:
        return CIMName("ORV_VolumeStatisticalData");
    case 10:
        return CIMName("ORV_DiskStatisticalData");
    case 11:
        return CIMName("ORV_LUNStatisticalData");
    default:
        return CIMName();
    }
}

String ORV_BlockStatisticsManifestProvider::getElementTypeName(const Uint16& elementType)
{
    switch (elementType)
    {
    case 2:
        return "ComputerSystem-BlockStatisticsManifest";
    case 3:
        return "FrontEndComputerSystem-BlockStatisticsManifest";
    case 4:
        return "PeerComputerSystem-BlockStatisticsManifest";
    case 5:
        return "BackEndComputerSystem-BlockStatisticsManifest";
    case 6:
        return "FrontEndPort-BlockStatisticsManifest";
    case 7:
        return "BackEndPort-BlockStatisticsManifest";
    case 8:
        return "Volume-BlockStatisticsManifest";
    case 9:
        return "Extent-BlockStatisticsManifest";
    case 10:
        return "DiskDrive-BlockStatisticsManifest";
    case 11:
        return "ArbitraryLUs-BlockStatisticsManifest";
    case 12:
        return "RemoteReplicaGroup-BlockStatisticsManifest";
    default:
        return "Unknown-BlockStatisticsManifest";
    }
}

String ORV_BlockStatisticsManifestProvider::getElementTypeFullName(const Uint16& elementType)
{
    switch (elementType)
    {
    case 2:
        return "Computer System Manifest";
    case 3:
        return "Front-end Computer System Manifest";
    case 4:
        return "Peer Computer System Manifest";
    case 5:
        return "Back-end Computer System Manifest";
    case 6:
        return "Front-end Port Manifest";
    case 7:
        return "Back-end Port Manifest";
    case 8:
        return "Volume Manifest";
    case 9:
        return "Extent Manifest";
    case 10:
        return "Disk Drive Manifest";
    case 11:
        return "Arbitrary LUs Manifest";
    case 12:
        return "Remote Replica Group Manifest";
    default:
        return "Unknown Manifest";
    }
}

// ---- building ----------------------------------------------------------------

String ORV_BlockStatisticsManifestProvider::makeInstanceID(const Uint16& elementType,
                                                           const String& systemName)
{
    return ORV_Common::INSTANCE_ID_PREFIX + ":" + systemName + "-" +
           getElementTypeName(elementType);
}

CIMObjectPath ORV_BlockStatisticsManifestProvider::buildObjectPath(const String& hostAddr,
                                                                   const String& instanceID)
{
    return ORV_Common::buildInstanceIDPath(hostAddr, SERVED_CLASS, instanceID);
}

CIMInstance ORV_BlockStatisticsManifestProvider::buildInstance(CIMClass cls,
                                                               const Uint16& elementType,
                                                               const String& hostAddr,
                                                               const String& systemName)
{
    CIMInstance instance = ORV_Common::buildInstanceSkeleton(cls);
    const String instanceID = makeInstanceID(elementType, systemName);

    Array<String> sequence;
    sequence.append("InstanceID");
    sequence.append("ElementType");
    sequence.append("StatisticTime");

    ORV_Common::setPropertyValue(instance, CIMName("InstanceID"), instanceID);
    ORV_Common::setPropertyValue(instance, CIMName("ElementName"),
                                 getElementTypeFullName(elementType));
    ORV_Common::setPropertyValue(instance, CIMName("ElementType"), elementType);
    ORV_Common::setPropertyValue(instance, CIMName("IncludeStatisticTime"), true);

    for (Uint32 row = 0; _schemaProps[row][0].size() != 0; row++)
    {
        const String& includeName = _schemaProps[row][0];
        if (elementType != VOLUME_TYPE &&
            (includeName == READ_HITS_SWITCH || includeName == WRITE_HITS_SWITCH))
        {
            // An excluded counter's switch is left as the class gives it.
            continue;
        }
        ORV_Common::setPropertyValue(instance, CIMName(includeName), true);
        sequence.append(_schemaProps[row][1]);
    }

    ORV_Common::setPropertyValue(instance, CIMName("CSVSequence"), sequence);
    instance.setPath(buildObjectPath(hostAddr, instanceID));
    return instance;
}

Array<CIMInstance> ORV_BlockStatisticsManifestProvider::_build_instances(
    CIMName, bool includeQualifiers, bool includeClassOrigin, const CIMPropertyList& propertyList)
{
    log_message(4, "--> ORV_BlockStatisticsManifestProvider::_build_instances\n");
    // The served class is fetched whatever class the request named.
    CIMClass cimClass = ORV_Common::getStoredCIMClass(
        _cimom, OperationContext(), ORV_Common::NAMESPACE, SERVED_CLASS, false, includeQualifiers,
        includeClassOrigin, propertyList);
    Array<CIMInstance> instances;
    for (Uint16 elementType : ENUMERATION_ORDER)
    {
        instances.append(buildInstance(cimClass.clone(), elementType, _hostAddr, _systemName));
    }
    log_message(4, "<-- ORV_BlockStatisticsManifestProvider::_build_instances\n");
    return instances;
}

Array<CIMObjectPath> ORV_BlockStatisticsManifestProvider::_build_ref()
{
    log_message(4, "--> ORV_BlockStatisticsManifestProvider::_build_ref\n");
    Array<CIMObjectPath> paths;
    for (Uint16 elementType : ENUMERATION_ORDER)
    {
        paths.append(buildObjectPath(_hostAddr, makeInstanceID(elementType, _systemName)));
    }
    log_message(4, "<-- ORV_BlockStatisticsManifestProvider::_build_ref\n");
    return paths;
}
