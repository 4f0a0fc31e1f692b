#include "ORV_BlockStatisticsCapabilitiesProvider.h"

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/Exception.h>

#include "ORV_BlockStatisticsManifestProvider.h"
#include "ORV_Common.h"
#include "ORV_InstanceFrame.h"
#include "orvapi.h"

PEGASUS_USING_PEGASUS;

static const String ClassName("ORV_BlockStatisticsCapabilitiesProvider");

namespace
{
const CIMName SERVED_CLASS("ORV_BlockStatisticsCapabilities");
// The shared request flow, under this provider's name and source file.
const ORV_InstanceFrame FRAME(ClassName, SERVED_CLASS, __FILE__, __LINE__);
const String ID_SUFFIX("-BlockStatisticsCapabilities");
const String ELEMENT_NAME("Block Statistics Capabilities");
// The SMI-S value of GetStatisticsCollection among the service's methods.
const Uint16 GET_STATISTICS_COLLECTION = 4;
// The statistical-data time counters count in microseconds.
const Uint64 CLOCK_TICK_MICROSECONDS = 1;
} // namespace

ORV_BlockStatisticsCapabilitiesProvider::ORV_BlockStatisticsCapabilitiesProvider() {}

ORV_BlockStatisticsCapabilitiesProvider::ORV_BlockStatisticsCapabilitiesProvider(
    const CIMObjectPath&)
{
    FRAME.refuse("constructor with object path");
}

ORV_BlockStatisticsCapabilitiesProvider::~ORV_BlockStatisticsCapabilitiesProvider() {}

void ORV_BlockStatisticsCapabilitiesProvider::initialize(CIMOMHandle& cimom)
{
    FRAME.initialize(cimom, _cimom, _hostAddr, _systemName);
}

void ORV_BlockStatisticsCapabilitiesProvider::terminate()
{
    delete this;
}

void ORV_BlockStatisticsCapabilitiesProvider::getInstance(const OperationContext& context,
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

void ORV_BlockStatisticsCapabilitiesProvider::enumerateInstances(
    const OperationContext& context, const CIMObjectPath& classReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    FRAME.enumerateInstances(
        context, classReference,
        [&](const CIMName& className) {
            return _build_instances(className, includeQualifiers, includeClassOrigin, propertyList);
        },
        handler);
}

void ORV_BlockStatisticsCapabilitiesProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference,
    ObjectPathResponseHandler& handler)
{
    FRAME.enumerateInstanceNames(
        context, classReference, [this]() { return _build_ref(); }, handler);
}

void ORV_BlockStatisticsCapabilitiesProvider::modifyInstance(const OperationContext&,
                                                             const CIMObjectPath&,
                                                             const CIMInstance&, const Boolean,
                                                             const CIMPropertyList&,
                                                             ResponseHandler&)
{
    FRAME.refuse("modifyInstance");
}

void ORV_BlockStatisticsCapabilitiesProvider::createInstance(const OperationContext&,
                                                             const CIMObjectPath&,
                                                             const CIMInstance&,
                                                             ObjectPathResponseHandler&)
{
    FRAME.refuse("createInstance");
}

void ORV_BlockStatisticsCapabilitiesProvider::deleteInstance(const OperationContext&,
                                                             const CIMObjectPath&, ResponseHandler&)
{
    FRAME.refuse("deleteInstance");
}

String ORV_BlockStatisticsCapabilitiesProvider::makeInstanceID(const String& systemName)
{
    // Unlike the module's other identifiers, this one has no prefix.
    return systemName + ID_SUFFIX;
}

CIMObjectPath ORV_BlockStatisticsCapabilitiesProvider::buildObjectPath(const String& hostAddr,
                                                                       const String& instanceID)
{
    return ORV_Common::buildInstanceIDPath(hostAddr, SERVED_CLASS, instanceID);
}

CIMInstance ORV_BlockStatisticsCapabilitiesProvider::buildInstance(CIMClass cls,
                                                                   const String& hostAddr,
                                                                   const String& systemName)
{
    CIMInstance instance = ORV_Common::buildInstanceSkeleton(cls);
    const String instanceID = makeInstanceID(systemName);
    Array<Uint16> synchronous;
    synchronous.append(GET_STATISTICS_COLLECTION);

    ORV_Common::setPropertyValue(instance, CIMName("InstanceID"), instanceID);
    ORV_Common::setPropertyValue(instance, CIMName("ElementName"), ELEMENT_NAME);
    ORV_Common::setPropertyValue(instance, CIMName("ElementTypesSupported"),
                                 ORV_BlockStatisticsManifestProvider::getElementTypes());
    ORV_Common::setPropertyValue(instance, CIMName("SynchronousMethodsSupported"), synchronous);
    ORV_Common::setPropertyValue(instance, CIMName("ClockTickInterval"), CLOCK_TICK_MICROSECONDS);
    instance.setPath(buildObjectPath(hostAddr, instanceID));
    return instance;
}

Array<CIMInstance> ORV_BlockStatisticsCapabilitiesProvider::_build_instances(
    CIMName, bool includeQualifiers, bool includeClassOrigin, const CIMPropertyList& propertyList)
{
    log_message(4, "--> ORV_BlockStatisticsCapabilitiesProvider::_build_instances\n");
    Array<CIMInstance> instances;
    // The served class is fetched whatever class the request named.
    CIMClass cimClass = ORV_Common::getStoredCIMClass(
        _cimom, OperationContext(), ORV_Common::NAMESPACE, SERVED_CLASS, false, includeQualifiers,
        includeClassOrigin, propertyList);
    instances.append(buildInstance(cimClass.clone(), _hostAddr, _systemName));
    log_message(4, "<-- ORV_BlockStatisticsCapabilitiesProvider::_build_instances\n");
    return instances;
}

Array<CIMObjectPath> ORV_BlockStatisticsCapabilitiesProvider::_build_ref()
{
    log_message(4, "--> ORV_BlockStatisticsCapabilitiesProvider::_build_ref\n");
    Array<CIMObjectPath> paths;
    paths.append(buildObjectPath(_hostAddr, makeInstanceID(_systemName)));
    log_message(4, "<-- ORV_BlockStatisticsCapabilitiesProvider::_build_ref\n");
    return paths;
}
