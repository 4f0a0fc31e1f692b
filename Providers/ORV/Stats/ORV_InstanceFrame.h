#ifndef ORV_InstanceFrame_h
#define ORV_InstanceFrame_h

// The request flow that the module's instance providers share: lifecycle,
// refused operations, the user and class checks, the InstanceID lookup, the
// order of the handler calls and the trace lines around them. A provider
// keeps its own class, members and private builders and hands the frame
// small callables for them; the frame never knows how instances are made.

#include <functional>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/ResponseHandler.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMOMHandle.h>

PEGASUS_USING_PEGASUS;

class ORV_InstanceFrame
{
public:
    // Every instance the provider can serve for the requested class; for
    // getInstance the requested InstanceID comes along so that a provider
    // may narrow its query (the path match still decides).
    typedef std::function<Array<CIMInstance>(const CIMName& className, const String& instanceID)>
        CandidateSource;
    typedef std::function<Array<CIMInstance>(const CIMName& className)> InstanceSource;
    typedef std::function<Array<CIMObjectPath>()> PathSource;

    // One chunk of an enumeration; more is left true when another may follow.
    typedef std::function<Array<CIMInstance>(const CIMName& className, Boolean& more)>
        InstanceChunks;
    typedef std::function<Array<CIMObjectPath>(Boolean& more)> PathChunks;

    // providerName begins every trace line and exception text; sourceFile
    // and sourceLine name the provider's own source, which a refused
    // caller's exception carries for the server's trace.
    ORV_InstanceFrame(const String& providerName, const CIMName& servedClass,
                      const char* sourceFile, Uint32 sourceLine);

    // Keeps the server's handle, opens the management API for the server (a
    // failure is only logged), reads the system's host and, where the
    // provider keeps one, its name. The entry line comes last, with no exit
    // line.
    void initialize(CIMOMHandle& cimom, CIMOMHandle& handle, String& hostAddr) const;
    void initialize(CIMOMHandle& cimom, CIMOMHandle& handle, String& hostAddr,
                    String& systemName) const;

    // Throws CIMNotSupportedException "<provider> does not support <what>.";
    // what is an operation name or "constructor with object path".
    [[noreturn]] void refuse(const char* what) const;

    // The plain flows: checks, one build, processing / deliver / complete.
    void getInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
                     const CandidateSource& candidates, InstanceResponseHandler& handler) const;
    void enumerateInstances(const OperationContext& context, const CIMObjectPath& classReference,
                            const InstanceSource& build, InstanceResponseHandler& handler) const;
    void enumerateInstanceNames(const OperationContext& context,
                                const CIMObjectPath& classReference, const PathSource& build,
                                ObjectPathResponseHandler& handler) const;

    // Chunked flows: processing comes before the first fetch, each chunk is
    // delivered before the next is fetched, and the loop ends on an empty
    // chunk or when no more is announced. Anything thrown after the checks
    // is reported as a failed operation, so a client never mistakes a
    // partial answer for a whole one.
    void enumerateInstanceChunks(const OperationContext& context,
                                 const CIMObjectPath& classReference, const InstanceChunks& next,
                                 InstanceResponseHandler& handler) const;
    void enumerateInstanceNameChunks(const OperationContext& context,
                                     const CIMObjectPath& classReference, const PathChunks& next,
                                     ObjectPathResponseHandler& handler) const;

    // The steps of getInstance, for a provider that puts something of its
    // own between them.
    void traceEntry(const char* operation) const;
    void traceExit(const char* operation) const;
    void checkUser(const OperationContext& context) const;
    void checkClass(const CIMName& requested) const;
    String requireInstanceID(const CIMObjectPath& instanceReference) const;
    void deliverMatch(const CIMObjectPath& instanceReference, const Array<CIMInstance>& candidates,
                      const String& instanceID, InstanceResponseHandler& handler) const;

private:
    void _initialize(CIMOMHandle& cimom, CIMOMHandle& handle, String& hostAddr,
                     String* systemName) const;
    void _trace(const char* arrow, const char* operation) const;
    String _failedText(const char* operation, const CIMException& e) const;

    String _providerName;
    CIMName _servedClass;
    const char* _sourceFile;
    Uint32 _sourceLine;
};

#endif
