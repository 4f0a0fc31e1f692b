#ifndef CIMOM_RESPONSECOLLECTORS_H
#define CIMOM_RESPONSECOLLECTORS_H

#include <Pegasus/Common/ResponseHandler.h>

#include <functional>
#include <string>

namespace cimom
{

/**
    State shared by the handlers handed to providers: whether processing()
    and complete() were called, and a note on stderr when a provider breaks
    the order (deliver before processing, deliver or processing after
    complete). Such results are still kept: real providers do this and
    OpenPegasus accepts it.
*/
class CallOrderTracker
{
public:
    CallOrderTracker(const std::string& provider, const char* operation);

    void onProcessing();
    void onComplete();
    void onDeliver();

    bool processingCalled() const
    {
        return _processing;
    }
    bool completeCalled() const
    {
        return _complete;
    }

private:
    void _warn(const char* what) const;

    std::string _provider;
    const char* _operation;
    bool _processing = false;
    bool _complete = false;
};

class InstanceCollector : public Pegasus::InstanceResponseHandler
{
public:
    InstanceCollector(const std::string& provider, const char* operation);

    void processing() override;
    void complete() override;
    void deliver(const Pegasus::CIMInstance& instance) override;
    void deliver(const Pegasus::Array<Pegasus::CIMInstance>& instances) override;

    Pegasus::Array<Pegasus::CIMInstance> results;
    /// When set, each delivered instance goes here instead of into results.
    std::function<void(const Pegasus::CIMInstance&)> forward;
    /// Forwarded arrays are let go after the answer (ReleaseAfterAnswer).
    bool releaseAfterAnswer = false;

private:
    CallOrderTracker _order;
};

class ObjectPathCollector : public Pegasus::ObjectPathResponseHandler
{
public:
    ObjectPathCollector(const std::string& provider, const char* operation);

    void processing() override;
    void complete() override;
    void deliver(const Pegasus::CIMObjectPath& path) override;
    void deliver(const Pegasus::Array<Pegasus::CIMObjectPath>& paths) override;

    Pegasus::Array<Pegasus::CIMObjectPath> results;
    /// When set, each delivered path goes here instead of into results.
    std::function<void(const Pegasus::CIMObjectPath&)> forward;

private:
    CallOrderTracker _order;
};

class ObjectCollector : public Pegasus::ObjectResponseHandler
{
public:
    ObjectCollector(const std::string& provider, const char* operation);

    void processing() override;
    void complete() override;
    void deliver(const Pegasus::CIMObject& object) override;
    void deliver(const Pegasus::Array<Pegasus::CIMObject>& objects) override;

    Pegasus::Array<Pegasus::CIMObject> results;

private:
    CallOrderTracker _order;
};

/** For operations that deliver nothing (modifyInstance, deleteInstance). */
class CompletionCollector : public Pegasus::ResponseHandler
{
public:
    CompletionCollector(const std::string& provider, const char* operation);

    void processing() override;
    void complete() override;

private:
    CallOrderTracker _order;
};

class MethodResultCollector : public Pegasus::MethodResultResponseHandler
{
public:
    MethodResultCollector(const std::string& provider, const char* operation);

    void processing() override;
    void complete() override;
    void deliverParamValue(const Pegasus::CIMParamValue& outParamValue) override;
    void deliverParamValue(const Pegasus::Array<Pegasus::CIMParamValue>& outParamValues) override;
    void deliver(const Pegasus::CIMValue& returnValue) override;

    Pegasus::Array<Pegasus::CIMParamValue> outParameters;
    Pegasus::CIMValue returnValue;
    bool returnValueDelivered = false;

private:
    CallOrderTracker _order;
};

} // namespace cimom

#endif
