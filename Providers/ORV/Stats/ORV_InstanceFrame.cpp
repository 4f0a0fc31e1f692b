#include "ORV_InstanceFrame.h"

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ORV_Common.h"
#include "orvapi.h"

PEGASUS_USING_PEGASUS;

namespace
{
const int LOG_ERROR = 2;
const int LOG_TRACE = 4;
const CIMName INSTANCE_ID("InstanceID");
} // namespace

ORV_InstanceFrame::ORV_InstanceFrame(const String& providerName, const CIMName& servedClass,
                                     const char* sourceFile, Uint32 sourceLine)
    : _providerName(providerName), _servedClass(servedClass), _sourceFile(sourceFile),
      _sourceLine(sourceLine)
{
}

// ---- lifecycle ---------------------------------------------------------------

void ORV_InstanceFrame::initialize(CIMOMHandle& cimom, CIMOMHandle& handle, String& hostAddr) const
{
    _initialize(cimom, handle, hostAddr, 0);
}

void ORV_InstanceFrame::initialize(CIMOMHandle& cimom, CIMOMHandle& handle, String& hostAddr,
                                   String& systemName) const
{
    _initialize(cimom, handle, hostAddr, &systemName);
}

void ORV_InstanceFrame::_initialize(CIMOMHandle& cimom, CIMOMHandle& handle, String& hostAddr,
                                    String* systemName) const
{
    handle = cimom;
    const CString name = _providerName.getCString();
    if (api_orvOpenForCimserver(NULL) != 0)
    {
        log_message(LOG_ERROR, "%s::initialize(): api_orvOpenForCimserver failed\n",
                    (const char*)name);
    }
    hostAddr = ORV_Common::getSystemHostName(cimom);
    if (systemName)
    {
        *systemName = ORV_Common::getSystemName(cimom);
    }
    log_message(LOG_TRACE, "-->%s::initialize()\n", (const char*)name);
}

void ORV_InstanceFrame::refuse(const char* what) const
{
    throw CIMNotSupportedException(_providerName + " does not support " + what + ".");
}

// ---- steps -------------------------------------------------------------------

void ORV_InstanceFrame::_trace(const char* arrow, const char* operation) const
{
    log_message(LOG_TRACE, "%s %s::%s\n", arrow, (const char*)_providerName.getCString(),
                operation);
}

void ORV_InstanceFrame::traceEntry(const char* operation) const
{
    _trace("-->", operation);
}

void ORV_InstanceFrame::traceExit(const char* operation) const
{
    _trace("<--", operation);
}

void ORV_InstanceFrame::checkUser(const OperationContext& context) const
{
    ORV_Common::authorizeUser(context, _sourceFile, _sourceLine);
}

void ORV_InstanceFrame::checkClass(const CIMName& requested) const
{
    ORV_Common::checkClassName(requested, _servedClass, _providerName);
}

String ORV_InstanceFrame::requireInstanceID(const CIMObjectPath& instanceReference) const
{
    String instanceID;
    if (!ORV_Common::findFirstKey(instanceReference, INSTANCE_ID, instanceID))
    {
        throw CIMInvalidParameterException(_providerName + " InstanceID key not found.");
    }
    return instanceID;
}

void ORV_InstanceFrame::deliverMatch(const CIMObjectPath& instanceReference,
                                     const Array<CIMInstance>& candidates, const String& instanceID,
                                     InstanceResponseHandler& handler) const
{
    for (Uint32 i = 0; i < candidates.size(); i++)
    {
        if (ORV_Common::matchObjectPath(instanceReference, candidates[i].getPath()))
        {
            handler.processing();
            handler.deliver(candidates[i]);
            handler.complete();
            traceExit("getInstance");
            return;
        }
    }
    throw CIMObjectNotFoundException(_providerName + " CIM Object not found." + instanceID);
}

String ORV_InstanceFrame::_failedText(const char* operation, const CIMException& e) const
{
    return _providerName + "::" + operation + " - Operation failed: " + e.getMessage();
}

// ---- plain flows -------------------------------------------------------------

void ORV_InstanceFrame::getInstance(const OperationContext& context,
                                    const CIMObjectPath& instanceReference,
                                    const CandidateSource& candidates,
                                    InstanceResponseHandler& handler) const
{
    traceEntry("getInstance");
    checkUser(context);
    const CIMName className = instanceReference.getClassName();
    checkClass(className);
    const String instanceID = requireInstanceID(instanceReference);
    deliverMatch(instanceReference, candidates(className, instanceID), instanceID, handler);
}

void ORV_InstanceFrame::enumerateInstances(const OperationContext& context,
                                           const CIMObjectPath& classReference,
                                           const InstanceSource& build,
                                           InstanceResponseHandler& handler) const
{
    traceEntry("enumerateInstances");
    checkUser(context);
    const CIMName className = classReference.getClassName();
    checkClass(className);

    Array<CIMInstance> instances = build(className);
    handler.processing();
    handler.deliver(instances);
    handler.complete();
    traceExit("enumerateInstances");
}

void ORV_InstanceFrame::enumerateInstanceNames(const OperationContext& context,
                                               const CIMObjectPath& classReference,
                                               const PathSource& build,
                                               ObjectPathResponseHandler& handler) const
{
    traceEntry("enumerateInstanceNames");
    checkUser(context);
    checkClass(classReference.getClassName());

    Array<CIMObjectPath> paths = build();
    handler.processing();
    handler.deliver(paths);
    handler.complete();
    traceExit("enumerateInstanceNames");
}

// ---- chunked flows -----------------------------------------------------------

void ORV_InstanceFrame::enumerateInstanceChunks(const OperationContext& context,
                                                const CIMObjectPath& classReference,
                                                const InstanceChunks& next,
                                                InstanceResponseHandler& handler) const
{
    traceEntry("enumerateInstances");
    checkUser(context);
    const CIMName className = classReference.getClassName();
    checkClass(className);

    try
    {
        handler.processing();
        Boolean more = false;
        Uint32 count = 0;
        do
        {
            more = false;
            Array<CIMInstance> instances = next(className, more);
            count = instances.size();
            handler.deliver(instances);
        } while (more && count != 0);
        handler.complete();
        traceExit("enumerateInstances");
    }
    catch (CIMException& e)
    {
        throw CIMOperationFailedException(_failedText("enumerateInstances", e));
    }
    catch (...)
    {
        throw CIMOperationFailedException("Unknown error");
    }
}

void ORV_InstanceFrame::enumerateInstanceNameChunks(const OperationContext& context,
                                                    const CIMObjectPath& classReference,
                                                    const PathChunks& next,
                                                    ObjectPathResponseHandler& handler) const
{
    traceEntry("enumerateInstanceNames");
    checkUser(context);
    checkClass(classReference.getClassName());

    try
    {
        handler.processing();
        Boolean more = false;
        Uint32 count = 0;
        do
        {
            more = false;
            Array<CIMObjectPath> paths = next(more);
            count = paths.size();
            handler.deliver(paths);
        } while (more && count != 0);
        handler.complete();
        traceExit("enumerateInstanceNames");
    }
    catch (CIMException& e)
    {
        throw CIMOperationFailedException(_failedText("enumerateInstanceNames", e));
    }
    catch (...)
    {
        throw CIMOperationFailedException("Operation error");
    }
}
