#include "ORV_StatisticsCollectionProvider.h"

#include <ctime>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/Exception.h>

#include "ORV_Common.h"
#include "ORV_InstanceFrame.h"
#include "orvapi.h"

PEGASUS_USING_PEGASUS;

static const String ClassName("ORV_StatisticsCollectionProvider");

namespace
{
const CIMName SERVED_CLASS("ORV_StatisticsCollection");
// The shared request flow, under this provider's name and source file.
const ORV_InstanceFrame FRAME(ClassName, SERVED_CLASS, __FILE__, __LINE__);
const String ID_SUFFIX("-StatisticsCollection");
const String ELEMENT_NAME("Statistics Collection");
} // namespace

ORV_StatisticsCollectionProvider::ORV_StatisticsCollectionProvider()
{
}

ORV_StatisticsCollectionProvider::ORV_StatisticsCollectionProvider(const CIMObjectPath&)
{
    FRAME.refuse("constructor with object path");
}

ORV_StatisticsCollectionProvider::~ORV_StatisticsCollectionProvider()
{
}

void ORV_StatisticsCollectionProvider::initialize(CIMOMHandle& cimom)
{
    FRAME.initialize(cimom, _cimom, _hostAddr, _systemName);
}

void ORV_StatisticsCollectionProvider::terminate()
{
    delete this;
}

void ORV_StatisticsCollectionProvider::getInstance(const OperationContext& context,
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

void ORV_StatisticsCollectionProvider::enumerateInstances(const OperationContext& context,
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

void ORV_StatisticsCollectionProvider::enumerateInstanceNames(const OperationContext& context,
                                                              const CIMObjectPath& classReference,
                                                              ObjectPathResponseHandler& handler)
{
    FRAME.enumerateInstanceNames(
        context, classReference, [this]() { return _build_ref(); }, handler);
}

void ORV_StatisticsCollectionProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
                                                      const CIMInstance&, const Boolean,
                                                      const CIMPropertyList&, ResponseHandler&)
{
    FRAME.refuse("modifyInstance");
}

void ORV_StatisticsCollectionProvider::createInstance(const OperationContext&, const CIMObjectPath&,
                                                      const CIMInstance&,
                                                      ObjectPathResponseHandler&)
{
    FRAME.refuse("createInstance");
}

void ORV_StatisticsCollectionProvider::deleteInstance(const OperationContext&, const CIMObjectPath&,
                                                      ResponseHandler&)
{
    FRAME.refuse("deleteInstance");
}

String ORV_StatisticsCollectionProvider::makeInstanceID(const String& systemName)
{
    return ORV_Common::INSTANCE_ID_PREFIX + ":" + systemName + ID_SUFFIX;
}

CIMObjectPath ORV_StatisticsCollectionProvider::buildObjectPath(const String& host,
                                                                const String& instanceID)
{
    return ORV_Common::buildInstanceIDPath(host, SERVED_CLASS, instanceID);
}

CIMInstance ORV_StatisticsCollectionProvider::buildInstance(CIMClass cimClass, const String& host,
                                                            const String& systemName)
{
    CIMInstance instance = ORV_Common::buildInstanceSkeleton(cimClass);
    ORV_Common::setPropertyValue(instance, CIMName("InstanceID"), makeInstanceID(systemName));
    ORV_Common::setPropertyValue(instance, CIMName("ElementName"), ELEMENT_NAME);
    ORV_Common::setPropertyValue(instance, CIMName("TimeLastSampled"),
                                 ORV_Common::getCIMDateTime(time(0)));
    instance.setPath(buildObjectPath(host, makeInstanceID(systemName)));
    return instance;
}

Array<CIMInstance> ORV_StatisticsCollectionProvider::_build_instances(
    CIMName, bool includeQualifiers, bool includeClassOrigin, const CIMPropertyList& propertyList)
{
    log_message(4, "--> ORV_StatisticsCollectionProvider::_build_instances\n");
    Array<CIMInstance> instances;
    // The served class is fetched whatever class the request named.
    CIMClass cimClass = ORV_Common::getStoredCIMClass(
        _cimom, OperationContext(), ORV_Common::NAMESPACE, SERVED_CLASS, false, includeQualifiers,
        includeClassOrigin, propertyList);
    instances.append(buildInstance(cimClass.clone(), _hostAddr, _systemName));
    log_message(4, "<-- ORV_StatisticsCollectionProvider::_build_instances\n");
    return instances;
}

Array<CIMObjectPath> ORV_StatisticsCollectionProvider::_build_ref()
{
    log_message(4, "--> ORV_StatisticsCollectionProvider::_build_ref\n");
    Array<CIMObjectPath> paths;
    paths.append(buildObjectPath(_hostAddr, makeInstanceID(_systemName)));
    log_message(4, "<-- ORV_StatisticsCollectionProvider::_build_ref\n");
    return paths;
}
