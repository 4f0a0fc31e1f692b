#include "ORV_BlockStatisticsServiceProvider.h"

#include <cstdio>
#include <string>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/MessageLoader.h> // InternalException.h needs it first
#include <Pegasus/Common/InternalException.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ORV_BlockStatisticsManifestProvider.h"
#include "ORV_ClientAddressContainer.h"
#include "ORV_Common.h"
#include "ORV_InstanceFrame.h"
#include "orvapi.h"

PEGASUS_USING_PEGASUS;

static const String ClassName("ORV_BlockStatisticsServiceProvider");

namespace
{
const int LOG_TRACE = 4;

const CIMName SERVED_CLASS("ORV_BlockStatisticsService");
// The shared request flow, under this provider's name and source file.
const ORV_InstanceFrame FRAME(ClassName, SERVED_CLASS, __FILE__, __LINE__);

const String SYSTEM_CREATION_CLASS_NAME("ORV_StorageSystem");
const String NAME_SUFFIX("-BlockStatisticsService");
const String ELEMENT_NAME("Block Statistics Service");
const CIMName NAME_KEY("Name");

const CIMName METHOD_NAME("GetStatisticsCollection");
const CIMName MANIFEST_COLLECTION_CLASS("ORV_BlockStatisticsManifestCollection");
const CIMName MANIFEST_CLASS("ORV_BlockStatisticsManifest");
const CIMName MEMBERSHIP_CLASS("ORV_MemberOfBlockStatisticsManifestCollection");

const String PARAM_ELEMENT_TYPES("ElementTypes");
const String PARAM_MANIFEST_COLLECTION("ManifestCollection");
const String PARAM_STATISTICS_FORMAT("StatisticsFormat");
const Uint16 FORMAT_CSV = 2;

// Sequence entries that lead every record and are not counters.
const String FIELD_INSTANCE_ID("InstanceID");
const String FIELD_ELEMENT_TYPE("ElementType");
const String FIELD_STATISTIC_TIME("StatisticTime");

void appendText(std::string& out, const String& text)
{
    out += (const char*)text.getCString();
}

// The null Job is typed as the parameter is declared, so a client that
// types output parameters from the class reads it without complaint.
void deliverResult(MethodResultResponseHandler& handler, const Array<String>& statistics)
{
    handler.processing();
    handler.deliverParamValue(CIMParamValue("Job", CIMValue(CIMTYPE_REFERENCE, false)));
    handler.deliverParamValue(CIMParamValue("Statistics", CIMValue(statistics)));
    handler.deliver(CIMValue(Sint32(0)));
    handler.complete();
}
} // namespace

ORV_BlockStatisticsServiceProvider::ORV_BlockStatisticsServiceProvider()
{
}

ORV_BlockStatisticsServiceProvider::ORV_BlockStatisticsServiceProvider(const CIMObjectPath&)
{
    FRAME.refuse("constructor with object path");
}

ORV_BlockStatisticsServiceProvider::~ORV_BlockStatisticsServiceProvider()
{
}

void ORV_BlockStatisticsServiceProvider::initialize(CIMOMHandle& cimom)
{
    FRAME.initialize(cimom, _cimom, _hostAddr, _systemName);
}

void ORV_BlockStatisticsServiceProvider::terminate()
{
    delete this;
}

// ---- instance side -----------------------------------------------------------

void ORV_BlockStatisticsServiceProvider::getInstance(const OperationContext& context,
                                                     const CIMObjectPath& instanceReference,
                                                     const Boolean includeQualifiers,
                                                     const Boolean includeClassOrigin,
                                                     const CIMPropertyList& propertyList,
                                                     InstanceResponseHandler& handler)
{
    // The service is keyed by Name, not InstanceID, so the frame's steps are
    // used one by one around a lookup of its own.
    FRAME.traceEntry("getInstance");
    FRAME.checkUser(context);
    const CIMName className = instanceReference.getClassName();
    FRAME.checkClass(className);
    String name;
    if (!ORV_Common::findFirstKey(instanceReference, NAME_KEY, name))
    {
        throw CIMInvalidParameterException(ClassName + " Name key not found.");
    }
    FRAME.deliverMatch(
        instanceReference,
        _build_instances(className, includeQualifiers, includeClassOrigin, propertyList), name,
        handler);
}

void ORV_BlockStatisticsServiceProvider::enumerateInstances(const OperationContext& context,
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

void ORV_BlockStatisticsServiceProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference,
    ObjectPathResponseHandler& handler)
{
    FRAME.enumerateInstanceNames(
        context, classReference, [this]() { return _build_ref(); }, handler);
}

void ORV_BlockStatisticsServiceProvider::modifyInstance(const OperationContext&,
                                                        const CIMObjectPath&, const CIMInstance&,
                                                        const Boolean, const CIMPropertyList&,
                                                        ResponseHandler&)
{
    FRAME.refuse("modifyInstance");
}

void ORV_BlockStatisticsServiceProvider::createInstance(const OperationContext&,
                                                        const CIMObjectPath&, const CIMInstance&,
                                                        ObjectPathResponseHandler&)
{
    FRAME.refuse("createInstance");
}

void ORV_BlockStatisticsServiceProvider::deleteInstance(const OperationContext&,
                                                        const CIMObjectPath&, ResponseHandler&)
{
    FRAME.refuse("deleteInstance");
}

String ORV_BlockStatisticsServiceProvider::makeName(const String& systemName)
{
    return systemName + NAME_SUFFIX;
}

CIMObjectPath ORV_BlockStatisticsServiceProvider::buildObjectPath(const String& hostAddr,
                                                                  const String& systemName,
                                                                  const String& name)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("SystemCreationClassName"), SYSTEM_CREATION_CLASS_NAME,
                              CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("SystemName"), systemName, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("CreationClassName"), SERVED_CLASS.getString(),
                              CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(NAME_KEY, name, CIMKeyBinding::STRING));
    return CIMObjectPath(hostAddr, ORV_Common::NAMESPACE, SERVED_CLASS, keys);
}

CIMInstance ORV_BlockStatisticsServiceProvider::buildInstance(CIMClass cls, const String& hostAddr,
                                                              const String& systemName)
{
    CIMInstance instance = ORV_Common::buildInstanceSkeleton(cls);
    const String name = makeName(systemName);
    ORV_Common::setPropertyValue(instance, CIMName("SystemCreationClassName"),
                                 SYSTEM_CREATION_CLASS_NAME);
    ORV_Common::setPropertyValue(instance, CIMName("SystemName"), systemName);
    ORV_Common::setPropertyValue(instance, CIMName("CreationClassName"),
                                 SERVED_CLASS.getString());
    ORV_Common::setPropertyValue(instance, NAME_KEY, name);
    ORV_Common::setPropertyValue(instance, CIMName("ElementName"), ELEMENT_NAME);
    instance.setPath(buildObjectPath(hostAddr, systemName, name));
    return instance;
}

Array<CIMInstance> ORV_BlockStatisticsServiceProvider::_build_instances(
    CIMName, bool includeQualifiers, bool includeClassOrigin, const CIMPropertyList& propertyList)
{
    log_message(LOG_TRACE, "--> ORV_BlockStatisticsServiceProvider::_build_instances\n");
    Array<CIMInstance> instances;
    // The served class is fetched whatever class the request named.
    CIMClass cimClass = ORV_Common::getStoredCIMClass(
        _cimom, OperationContext(), ORV_Common::NAMESPACE, SERVED_CLASS, false, includeQualifiers,
        includeClassOrigin, propertyList);
    instances.append(buildInstance(cimClass.clone(), _hostAddr, _systemName));
    log_message(LOG_TRACE, "<-- ORV_BlockStatisticsServiceProvider::_build_instances\n");
    return instances;
}

Array<CIMObjectPath> ORV_BlockStatisticsServiceProvider::_build_ref()
{
    log_message(LOG_TRACE, "--> ORV_BlockStatisticsServiceProvider::_build_ref\n");
    Array<CIMObjectPath> paths;
    paths.append(buildObjectPath(_hostAddr, _systemName, makeName(_systemName)));
    log_message(LOG_TRACE, "<-- ORV_BlockStatisticsServiceProvider::_build_ref\n");
    return paths;
}

// ---- GetStatisticsCollection ---------------------------------------------------

void ORV_BlockStatisticsServiceProvider::invokeMethod(const OperationContext& context,
                                                      const CIMObjectPath& objectReference,
                                                      const CIMName& methodName,
                                                      const Array<CIMParamValue>& inParameters,
                                                      MethodResultResponseHandler& handler)
{
    const String className = objectReference.getClassName().getString();
    log_message(LOG_TRACE,
                "-->ORV_BlockStatisticsServiceProvider::invokeMethod()\n\t className = %s, "
                "methodName = %s\n",
                (const char*)className.getCString(),
                (const char*)methodName.getString().getCString());

    FRAME.checkUser(context);

    // The array grants generic operations by "<class>.<method>" in lower case.
    const String userName = ORV_Common::getUserName(context);
    const String address = ORV_getClientAddress(context);
    String operation = className + "." + methodName.getString();
    operation.toLower();
    const int granted = api_authorizeCIMUser(userName.getCString(), address.getCString(),
                                             operation.getCString());
    if (granted == API_AUTH_NO_RIGHTS || granted == API_AUTH_DENIED)
    {
        throw TraceableCIMException(CIM_ERR_ACCESS_DENIED, "Insufficient generic privilege",
                                    String(__FILE__), __LINE__);
    }
    if (granted != API_AUTH_GRANTED)
    {
        throw TraceableCIMException(CIM_ERR_NOT_SUPPORTED, "Does not support in generic!",
                                    String(__FILE__), __LINE__);
    }

    if (!methodName.equal(METHOD_NAME))
    {
        throw CIMNotSupportedException(ClassName + " does not support method " +
                                       methodName.getString());
    }

    Array<Uint16> elementTypes;
    if (ORV_Common::getParameter(inParameters, PARAM_ELEMENT_TYPES, elementTypes) == 0)
    {
        if (elementTypes.size() == 0)
        {
            deliverResult(handler, Array<String>());
            return;
        }
    }
    else
    {
        elementTypes = ORV_BlockStatisticsManifestProvider::getElementTypes();
    }

    // The system has exactly one manifest collection, so whatever the client
    // named is replaced by it.
    CIMObjectPath manifestCollection;
    ORV_Common::getParameter(inParameters, PARAM_MANIFEST_COLLECTION, manifestCollection);
    manifestCollection = _cimom.enumerateInstanceNames(context, ORV_Common::NAMESPACE,
                                                       MANIFEST_COLLECTION_CLASS)[0];

    Array<CIMObject> manifests = _cimom.associators(
        context, ORV_Common::NAMESPACE, manifestCollection, MEMBERSHIP_CLASS, MANIFEST_CLASS,
        String(), String(), false, false, CIMPropertyList());

    // Any status but found means no format was given; the reader may have
    // stored a value behind a null one, which does not count.
    Uint16 format = FORMAT_CSV;
    if (ORV_Common::getParameter(inParameters, PARAM_STATISTICS_FORMAT, format) != 0)
    {
        format = FORMAT_CSV;
    }
    if (format != FORMAT_CSV)
    {
        throw CIMInvalidParameterException(ClassName + " invalid value for parameter " +
                                           PARAM_STATISTICS_FORMAT);
    }

    Array<String> statistics;
    for (Uint32 i = 0; i < elementTypes.size(); i++)
    {
        for (Uint32 m = 0; m < manifests.size(); m++)
        {
            CIMInstance manifest(manifests[m]);
            Uint16 manifestType = 0;
            if (ORV_Common::getProperty(manifest, FIELD_ELEMENT_TYPE, manifestType) == 0 &&
                manifestType == elementTypes[i])
            {
                statistics.append(_buildStatsRecord(context, elementTypes[i], manifest));
                break;
            }
        }
    }

    deliverResult(handler, statistics);
    log_message(LOG_TRACE, "<--ORV_BlockStatisticsServiceProvider::invokeMethod()\n");
}

String ORV_BlockStatisticsServiceProvider::_buildStatsRecord(const OperationContext& context,
                                                             const Uint16& elementType,
                                                             CIMInstance&)
{
    Array<CIMInstance> stats = _cimom.enumerateInstances(
        context, ORV_Common::NAMESPACE, ORV_BlockStatisticsManifestProvider::getClassName(elementType),
        false, false, true, false, CIMPropertyList());

    CIMClass manifestClass =
        ORV_Common::getStoredCIMClass(_cimom, OperationContext(), ORV_Common::NAMESPACE,
                                      MANIFEST_CLASS, false, false, false, CIMPropertyList());

    // The field order comes from this provider's own manifest for the type,
    // which is the one clients see; the passed one only proved the type is
    // published. Built once: it is the same for every record.
    Array<String> sequence;
    CIMInstance ownManifest = ORV_BlockStatisticsManifestProvider::buildInstance(
        manifestClass.clone(), elementType, _hostAddr, _systemName);
    ORV_Common::getProperty(ownManifest, "CSVSequence", sequence);
    Array<String> counters;
    for (Uint32 i = 0; i < sequence.size(); i++)
    {
        if (sequence[i] != FIELD_INSTANCE_ID && sequence[i] != FIELD_ELEMENT_TYPE &&
            sequence[i] != FIELD_STATISTIC_TIME)
        {
            counters.append(sequence[i]);
        }
    }

    std::string result;
    char number[32];
    for (Uint32 i = 0; i < stats.size(); i++)
    {
        CIMInstance& instance = stats[i];
        Uint16 type = 0;
        ORV_Common::getProperty(instance, FIELD_ELEMENT_TYPE, type);
        // Front-end and back-end ports share one class; each type keeps its own.
        if (type != elementType)
        {
            continue;
        }

        appendText(result, ORV_Common::getStringProperty(instance, FIELD_INSTANCE_ID));
        result += ';';
        snprintf(number, sizeof(number), "%d;", int(elementType));
        result += number;
        CIMDateTime statisticTime;
        ORV_Common::getProperty(instance, FIELD_STATISTIC_TIME, statisticTime);
        appendText(result, statisticTime.toString());
        result += ';';
        for (Uint32 c = 0; c < counters.size(); c++)
        {
            // An unreadable counter is left out, separator included.
            unsigned long long value = 0;
            if (ORV_Common::getProperty(instance, counters[c], value) == 0)
            {
                snprintf(number, sizeof(number), "%llu;", value);
                result += number;
            }
        }
        result += '\n';
    }
    return String(result.c_str());
}
