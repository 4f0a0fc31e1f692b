#include <Pegasus/Sdk/CollectingResponseHandlers.h>

PEGASUS_NAMESPACE_BEGIN

namespace Sdk
{

HandlerCallLog::HandlerCallLog()
{
}

void HandlerCallLog::_record(HandlerCall::Kind kind, Uint32 count, bool isArray)
{
    HandlerCall call;
    call.kind = kind;
    call.count = count;
    call.isArray = isArray;
    _calls.push_back(call);
}

std::vector<HandlerCall> HandlerCallLog::calls() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _calls;
}

std::string HandlerCallLog::callSequence() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    std::string text;
    for (const HandlerCall& c : _calls)
    {
        if (!text.empty())
        {
            text += ",";
        }
        switch (c.kind)
        {
        case HandlerCall::PROCESSING:
            text += "processing";
            break;
        case HandlerCall::COMPLETE:
            text += "complete";
            break;
        case HandlerCall::DELIVER:
            text += "deliver";
            if (c.isArray)
            {
                text += "[" + std::to_string(c.count) + "]";
            }
            break;
        }
    }
    return text;
}

namespace
{
Uint32 countKind(const std::vector<HandlerCall>& calls, HandlerCall::Kind kind)
{
    Uint32 n = 0;
    for (const HandlerCall& c : calls)
    {
        if (c.kind == kind)
        {
            n++;
        }
    }
    return n;
}
} // namespace

Uint32 HandlerCallLog::processingCount() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return countKind(_calls, HandlerCall::PROCESSING);
}

Uint32 HandlerCallLog::completeCount() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return countKind(_calls, HandlerCall::COMPLETE);
}

Uint32 HandlerCallLog::deliverCallCount() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return countKind(_calls, HandlerCall::DELIVER);
}

bool HandlerCallLog::isComplete() const
{
    return completeCount() > 0;
}

std::string HandlerCallLog::protocolError() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    bool processing = false;
    bool complete = false;
    for (const HandlerCall& c : _calls)
    {
        switch (c.kind)
        {
        case HandlerCall::PROCESSING:
            if (processing)
            {
                return "processing() called more than once";
            }
            processing = true;
            break;
        case HandlerCall::DELIVER:
            if (!processing)
            {
                return "deliver() called before processing()";
            }
            if (complete)
            {
                return "deliver() called after complete()";
            }
            break;
        case HandlerCall::COMPLETE:
            if (!processing)
            {
                return "complete() called before processing()";
            }
            if (complete)
            {
                return "complete() called more than once";
            }
            complete = true;
            break;
        }
    }
    if (!complete)
    {
        return "complete() never called";
    }
    return std::string();
}

// Plain handler

CollectingResponseHandler::CollectingResponseHandler()
{
}

void CollectingResponseHandler::processing()
{
    std::lock_guard<std::mutex> lock(_mutex);
    _record(HandlerCall::PROCESSING, 0, false);
}

void CollectingResponseHandler::complete()
{
    std::lock_guard<std::mutex> lock(_mutex);
    _record(HandlerCall::COMPLETE, 0, false);
}

OperationContext CollectingResponseHandler::getResponseContext() const
{
    return getContext();
}

// The typed handlers differ only in what they keep.
#define SDK_COLLECTING_COMMON(Handler)                                                            \
    Handler::Handler()                                                                            \
    {                                                                                             \
    }                                                                                             \
    void Handler::processing()                                                                    \
    {                                                                                             \
        std::lock_guard<std::mutex> lock(_mutex);                                                 \
        _record(HandlerCall::PROCESSING, 0, false);                                               \
    }                                                                                             \
    void Handler::complete()                                                                      \
    {                                                                                             \
        std::lock_guard<std::mutex> lock(_mutex);                                                 \
        _record(HandlerCall::COMPLETE, 0, false);                                                 \
    }

#define SDK_COLLECTING_DELIVER(Handler, T)                                                        \
    void Handler::deliver(const T& x)                                                             \
    {                                                                                             \
        std::lock_guard<std::mutex> lock(_mutex);                                                 \
        _objects.append(x);                                                                       \
        _record(HandlerCall::DELIVER, 1, false);                                                  \
    }                                                                                             \
    void Handler::deliver(const Array<T>& xs)                                                     \
    {                                                                                             \
        std::lock_guard<std::mutex> lock(_mutex);                                                 \
        _objects.appendArray(xs);                                                                 \
        _record(HandlerCall::DELIVER, xs.size(), true);                                           \
    }                                                                                             \
    Array<T> Handler::getObjects() const                                                          \
    {                                                                                             \
        std::lock_guard<std::mutex> lock(_mutex);                                                 \
        return _objects;                                                                          \
    }

SDK_COLLECTING_COMMON(CollectingInstanceResponseHandler)
SDK_COLLECTING_DELIVER(CollectingInstanceResponseHandler, CIMInstance)
SDK_COLLECTING_COMMON(CollectingObjectPathResponseHandler)
SDK_COLLECTING_DELIVER(CollectingObjectPathResponseHandler, CIMObjectPath)
SDK_COLLECTING_COMMON(CollectingObjectResponseHandler)
SDK_COLLECTING_DELIVER(CollectingObjectResponseHandler, CIMObject)
SDK_COLLECTING_COMMON(CollectingClassResponseHandler)
SDK_COLLECTING_DELIVER(CollectingClassResponseHandler, CIMClass)
SDK_COLLECTING_COMMON(CollectingValueResponseHandler)
SDK_COLLECTING_DELIVER(CollectingValueResponseHandler, CIMValue)

#undef SDK_COLLECTING_COMMON
#undef SDK_COLLECTING_DELIVER

OperationContext CollectingInstanceResponseHandler::getResponseContext() const
{
    return getContext();
}

OperationContext CollectingObjectPathResponseHandler::getResponseContext() const
{
    return getContext();
}

OperationContext CollectingObjectResponseHandler::getResponseContext() const
{
    return getContext();
}

// Method results

CollectingMethodResultResponseHandler::CollectingMethodResultResponseHandler()
    : _returnValueCount(0)
{
}

void CollectingMethodResultResponseHandler::processing()
{
    std::lock_guard<std::mutex> lock(_mutex);
    _record(HandlerCall::PROCESSING, 0, false);
}

void CollectingMethodResultResponseHandler::complete()
{
    std::lock_guard<std::mutex> lock(_mutex);
    _record(HandlerCall::COMPLETE, 0, false);
}

void CollectingMethodResultResponseHandler::deliverParamValue(const CIMParamValue& outParamValue)
{
    std::lock_guard<std::mutex> lock(_mutex);
    _params.append(outParamValue);
    _record(HandlerCall::DELIVER, 1, false);
}

void CollectingMethodResultResponseHandler::deliverParamValue(
    const Array<CIMParamValue>& outParamValues)
{
    std::lock_guard<std::mutex> lock(_mutex);
    _params.appendArray(outParamValues);
    _record(HandlerCall::DELIVER, outParamValues.size(), true);
}

void CollectingMethodResultResponseHandler::deliver(const CIMValue& returnValue)
{
    std::lock_guard<std::mutex> lock(_mutex);
    _returnValue = returnValue;
    _returnValueCount++;
    _record(HandlerCall::DELIVER, 1, false);
}

Array<CIMParamValue> CollectingMethodResultResponseHandler::getParamValues() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _params;
}

CIMValue CollectingMethodResultResponseHandler::getReturnValue() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _returnValue;
}

bool CollectingMethodResultResponseHandler::hasReturnValue() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _returnValueCount > 0;
}

Uint32 CollectingMethodResultResponseHandler::returnValueCount() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _returnValueCount;
}

OperationContext CollectingMethodResultResponseHandler::getResponseContext() const
{
    return getContext();
}

} // namespace Sdk

PEGASUS_NAMESPACE_END
