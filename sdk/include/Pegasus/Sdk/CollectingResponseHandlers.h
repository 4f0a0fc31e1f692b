#ifndef Pegasus_Sdk_CollectingResponseHandlers_h
#define Pegasus_Sdk_CollectingResponseHandlers_h

#include <mutex>
#include <string>
#include <vector>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/ResponseHandler.h>

PEGASUS_NAMESPACE_BEGIN

namespace Sdk
{

// One call a provider made on a handler. count is the number of objects in a
// deliver call; isArray tells the Array overload from the single-object one.
struct HandlerCall
{
    enum Kind
    {
        PROCESSING,
        DELIVER,
        COMPLETE
    };
    Kind kind;
    Uint32 count;
    bool isArray;
};

// Records the calls made on a handler, so that a server or a test can check that a
// provider said processing(), delivered, then complete(), in that order and once each.
class PEGASUS_COMMON_LINKAGE HandlerCallLog
{
public:
    HandlerCallLog();
    HandlerCallLog(const HandlerCallLog&) = delete;
    HandlerCallLog& operator=(const HandlerCallLog&) = delete;

    std::vector<HandlerCall> calls() const;
    // The calls as text, for example "processing,deliver[3],complete"; a single-object
    // deliver reads "deliver", an Array deliver "deliver[n]".
    std::string callSequence() const;
    Uint32 processingCount() const;
    Uint32 completeCount() const;
    Uint32 deliverCallCount() const;
    bool isComplete() const;
    // Empty when the calls follow the protocol (processing once, delivers, complete once,
    // nothing after complete); otherwise a description of the first breach.
    std::string protocolError() const;

protected:
    void _record(HandlerCall::Kind kind, Uint32 count, bool isArray);

    mutable std::mutex _mutex;

private:
    std::vector<HandlerCall> _calls;
};

// For operations without results (modifyInstance, deleteInstance).
class PEGASUS_COMMON_LINKAGE CollectingResponseHandler : public ResponseHandler,
                                                         public HandlerCallLog
{
public:
    CollectingResponseHandler();
    virtual void processing();
    virtual void complete();
    OperationContext getResponseContext() const;
};

class PEGASUS_COMMON_LINKAGE CollectingInstanceResponseHandler : public InstanceResponseHandler,
                                                                 public HandlerCallLog
{
public:
    CollectingInstanceResponseHandler();
    virtual void processing();
    virtual void complete();
    virtual void deliver(const CIMInstance& instance);
    virtual void deliver(const Array<CIMInstance>& instances);
    Array<CIMInstance> getObjects() const;
    OperationContext getResponseContext() const;

private:
    Array<CIMInstance> _objects;
};

class PEGASUS_COMMON_LINKAGE CollectingObjectPathResponseHandler
    : public ObjectPathResponseHandler,
      public HandlerCallLog
{
public:
    CollectingObjectPathResponseHandler();
    virtual void processing();
    virtual void complete();
    virtual void deliver(const CIMObjectPath& objectPath);
    virtual void deliver(const Array<CIMObjectPath>& objectPaths);
    Array<CIMObjectPath> getObjects() const;
    OperationContext getResponseContext() const;

private:
    Array<CIMObjectPath> _objects;
};

class PEGASUS_COMMON_LINKAGE CollectingObjectResponseHandler : public ObjectResponseHandler,
                                                               public HandlerCallLog
{
public:
    CollectingObjectResponseHandler();
    virtual void processing();
    virtual void complete();
    virtual void deliver(const CIMObject& object);
    virtual void deliver(const Array<CIMObject>& objects);
    Array<CIMObject> getObjects() const;
    OperationContext getResponseContext() const;

private:
    Array<CIMObject> _objects;
};

class PEGASUS_COMMON_LINKAGE CollectingClassResponseHandler : public ClassResponseHandler,
                                                              public HandlerCallLog
{
public:
    CollectingClassResponseHandler();
    virtual void processing();
    virtual void complete();
    virtual void deliver(const CIMClass& classObj);
    virtual void deliver(const Array<CIMClass>& classObjs);
    Array<CIMClass> getObjects() const;

private:
    Array<CIMClass> _objects;
};

class PEGASUS_COMMON_LINKAGE CollectingValueResponseHandler : public ValueResponseHandler,
                                                              public HandlerCallLog
{
public:
    CollectingValueResponseHandler();
    virtual void processing();
    virtual void complete();
    virtual void deliver(const CIMValue& value);
    virtual void deliver(const Array<CIMValue>& values);
    Array<CIMValue> getObjects() const;

private:
    Array<CIMValue> _objects;
};

// Keeps the output parameters in delivery order and the last return value delivered.
// Every deliverParamValue and deliver call counts as a DELIVER in the call log.
class PEGASUS_COMMON_LINKAGE CollectingMethodResultResponseHandler
    : public MethodResultResponseHandler,
      public HandlerCallLog
{
public:
    CollectingMethodResultResponseHandler();
    virtual void processing();
    virtual void complete();
    virtual void deliverParamValue(const CIMParamValue& outParamValue);
    virtual void deliverParamValue(const Array<CIMParamValue>& outParamValues);
    virtual void deliver(const CIMValue& returnValue);
    Array<CIMParamValue> getParamValues() const;
    CIMValue getReturnValue() const;
    bool hasReturnValue() const;
    Uint32 returnValueCount() const;
    OperationContext getResponseContext() const;

private:
    Array<CIMParamValue> _params;
    CIMValue _returnValue;
    Uint32 _returnValueCount;
};

} // namespace Sdk

PEGASUS_NAMESPACE_END

#endif
