#include "ORV_StatisticsCollectionProvider.h"

#include <ctime>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/Exception.h>

#include "ORV_Common.h"
#include "orvapi.h"

PEGASUS_USING_PEGASUS;

static const String ClassName("ORV_StatisticsCollectionProvider");

namespace
{
const CIMName SERVED_CLASS("ORV_StatisticsCollection");
const String ID_SUFFIX("-StatisticsCollection");
const String ELEMENT_NAME("Statistics Collection");
} // namespace

ORV_StatisticsCollectionProvider::ORV_StatisticsCollectionProvider()
{
}

ORV_StatisticsCollectionProvider::ORV_StatisticsCollectionProvider(const CIMObjectPath&)
{
    throw CIMNotSupportedException(ClassName + " does not support constructor with object path.");
}

ORV_StatisticsCollectionProvider::~ORV_StatisticsCollectionProvider()
{
}

void ORV_StatisticsCollectionProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    if (api_orvOpenForCimserver(NULL) != 0)
    {
        log_message(2, "ORV_StatisticsCollectionProvider::initialize(): "
                       "api_orvOpenForCimserver failed\n");
    }
    _hostAddr = ORV_Common::getSystemHostName(cimom);
    _systemName = ORV_Common::getSystemName(cimom);
    // The entry line is written last, with no exit line.
    log_message(4, "-->ORV_StatisticsCollectionProvider::initialize()\n");
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
    log_message(4, "--> ORV_StatisticsCollectionProvider::getInstance\n");
    ORV_Common::authorizeUser(context, __FILE__, __LINE__);
    CIMName className = instanceReference.getClassName();
    ORV_Common::checkClassName(className, SERVED_CLASS, ClassName);

    String instanceID;
    if (!ORV_Common::findFirstKey(instanceReference, CIMName("InstanceID"), instanceID))
    {
        throw CIMInvalidParameterException(ClassName + " InstanceID key not found.");
    }

    Array<CIMInstance> instances =
        _build_instances(className, includeQualifiers, includeClassOrigin, propertyList);
    for (Uint32 i = 0; i < instances.size(); i++)
    {
        if (ORV_Common::matchObjectPath(instanceReference, instances[i].getPath()))
        {
            handler.processing();
            handler.deliver(instances[i]);
            handler.complete();
            log_message(4, "<-- ORV_StatisticsCollectionProvider::getInstance\n");
            return;
        }
    }
    throw CIMObjectNotFoundException(ClassName + " CIM Object not found." + instanceID);
}

void ORV_StatisticsCollectionProvider::enumerateInstances(const OperationContext& context,
                                                          const CIMObjectPath& classReference,
                                                          const Boolean includeQualifiers,
                                                          const Boolean includeClassOrigin,
                                                          const CIMPropertyList& propertyList,
                                                          InstanceResponseHandler& handler)
{
    log_message(4, "--> ORV_StatisticsCollectionProvider::enumerateInstances\n");
    ORV_Common::authorizeUser(context, __FILE__, __LINE__);
    CIMName className = classReference.getClassName();
    ORV_Common::checkClassName(className, SERVED_CLASS, ClassName);

    Array<CIMInstance> instances =
        _build_instances(className, includeQualifiers, includeClassOrigin, propertyList);
    handler.processing();
    handler.deliver(instances);
    handler.complete();
    log_message(4, "<-- ORV_StatisticsCollectionProvider::enumerateInstances\n");
}

void ORV_StatisticsCollectionProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference,
    ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ORV_StatisticsCollectionProvider::enumerateInstanceNames\n");
    ORV_Common::authorizeUser(context, __FILE__, __LINE__);
    ORV_Common::checkClassName(classReference.getClassName(), SERVED_CLASS, ClassName);

    Array<CIMObjectPath> paths = _build_ref();
    handler.processing();
    handler.deliver(paths);
    handler.complete();
    log_message(4, "<-- ORV_StatisticsCollectionProvider::enumerateInstanceNames\n");
}

void ORV_StatisticsCollectionProvider::modifyInstance(const OperationContext&,
                                                      const CIMObjectPath&, const CIMInstance&,
                                                      const Boolean, const CIMPropertyList&,
                                                      ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support modifyInstance.");
}

void ORV_StatisticsCollectionProvider::createInstance(const OperationContext&,
                                                      const CIMObjectPath&, const CIMInstance&,
                                                      ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support createInstance.");
}

void ORV_StatisticsCollectionProvider::deleteInstance(const OperationContext&,
                                                      const CIMObjectPath&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support deleteInstance.");
}

String ORV_StatisticsCollectionProvider::makeInstanceID(const String& systemName)
{
    return ORV_Common::INSTANCE_ID_PREFIX + ":" + systemName + ID_SUFFIX;
}

CIMObjectPath ORV_StatisticsCollectionProvider::buildObjectPath(const String& host,
                                                                const String& instanceID)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), instanceID, CIMKeyBinding::STRING));
    return CIMObjectPath(host, ORV_Common::NAMESPACE, SERVED_CLASS, keys);
}

CIMInstance ORV_StatisticsCollectionProvider::buildInstance(CIMClass cimClass,
                                                            const String& host,
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
    CIMName, bool includeQualifiers, bool includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    log_message(4, "--> ORV_StatisticsCollectionProvider::_build_instances\n");
    Array<CIMInstance> instances;
    // The served class is fetched whatever class the request named.
    CIMClass cimClass = ORV_Common::getStoredCIMClass(_cimom, OperationContext(),
                                                      ORV_Common::NAMESPACE, SERVED_CLASS, false,
                                                      includeQualifiers, includeClassOrigin,
                                                      propertyList);
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
