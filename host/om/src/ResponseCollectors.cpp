#include "ResponseCollectors.h"

#include <cimom/ObjectManager.h>

#include <cstdio>

PEGASUS_USING_PEGASUS;

namespace cimom
{

CallOrderTracker::CallOrderTracker(const std::string& provider, const char* operation)
    : _provider(provider), _operation(operation)
{
}

void CallOrderTracker::_warn(const char* what) const
{
    std::fprintf(stderr, "cimom: provider %s %s in %s\n", _provider.c_str(), what, _operation);
}

void CallOrderTracker::onProcessing()
{
    if (_complete)
    {
        _warn("called processing() after complete()");
    }
    else if (_processing)
    {
        _warn("called processing() twice");
    }
    _processing = true;
}

void CallOrderTracker::onComplete()
{
    if (_complete)
    {
        _warn("called complete() twice");
    }
    else if (!_processing)
    {
        _warn("called complete() without processing()");
    }
    _complete = true;
}

void CallOrderTracker::onDeliver()
{
    if (_complete)
    {
        _warn("delivered after complete()");
    }
    else if (!_processing)
    {
        _warn("delivered before processing()");
    }
}

CompletionCollector::CompletionCollector(const std::string& provider, const char* operation)
    : _order(provider, operation)
{
}

void CompletionCollector::processing()
{
    _order.onProcessing();
}

void CompletionCollector::complete()
{
    _order.onComplete();
}

InstanceCollector::InstanceCollector(const std::string& provider, const char* operation)
    : _order(provider, operation)
{
}

void InstanceCollector::processing()
{
    _order.onProcessing();
}

void InstanceCollector::complete()
{
    _order.onComplete();
}

void InstanceCollector::deliver(const CIMInstance& instance)
{
    _order.onDeliver();
    if (forward)
    {
        forward(instance);
        return;
    }
    results.append(instance);
}

void InstanceCollector::deliver(const Array<CIMInstance>& instances)
{
    _order.onDeliver();
    if (forward)
    {
        for (Uint32 i = 0; i < instances.size(); i++)
        {
            forward(instances[i]);
        }
        if (releaseAfterAnswer)
        {
            ReleaseAfterAnswer::keep(instances);
        }
        return;
    }
    results.appendArray(instances);
}

namespace
{
thread_local ReleaseAfterAnswer* t_innermost = nullptr;
}

ReleaseAfterAnswer::ReleaseAfterAnswer() : _outer(t_innermost)
{
    t_innermost = this;
}

ReleaseAfterAnswer::~ReleaseAfterAnswer()
{
    t_innermost = _outer;
}

void ReleaseAfterAnswer::keep(const Array<CIMInstance>& delivered)
{
    if (t_innermost)
    {
        t_innermost->_latest = delivered;
    }
}

ObjectPathCollector::ObjectPathCollector(const std::string& provider, const char* operation)
    : _order(provider, operation)
{
}

void ObjectPathCollector::processing()
{
    _order.onProcessing();
}

void ObjectPathCollector::complete()
{
    _order.onComplete();
}

void ObjectPathCollector::deliver(const CIMObjectPath& path)
{
    _order.onDeliver();
    if (forward)
    {
        forward(path);
        return;
    }
    results.append(path);
}

void ObjectPathCollector::deliver(const Array<CIMObjectPath>& paths)
{
    _order.onDeliver();
    if (forward)
    {
        for (Uint32 i = 0; i < paths.size(); i++)
        {
            forward(paths[i]);
        }
        return;
    }
    results.appendArray(paths);
}

ObjectCollector::ObjectCollector(const std::string& provider, const char* operation)
    : _order(provider, operation)
{
}

void ObjectCollector::processing()
{
    _order.onProcessing();
}

void ObjectCollector::complete()
{
    _order.onComplete();
}

void ObjectCollector::deliver(const CIMObject& object)
{
    _order.onDeliver();
    results.append(object);
}

void ObjectCollector::deliver(const Array<CIMObject>& objects)
{
    _order.onDeliver();
    results.appendArray(objects);
}

MethodResultCollector::MethodResultCollector(const std::string& provider, const char* operation)
    : _order(provider, operation)
{
}

void MethodResultCollector::processing()
{
    _order.onProcessing();
}

void MethodResultCollector::complete()
{
    _order.onComplete();
}

void MethodResultCollector::deliverParamValue(const CIMParamValue& outParamValue)
{
    _order.onDeliver();
    outParameters.append(outParamValue);
}

void MethodResultCollector::deliverParamValue(const Array<CIMParamValue>& outParamValues)
{
    _order.onDeliver();
    outParameters.appendArray(outParamValues);
}

void MethodResultCollector::deliver(const CIMValue& value)
{
    _order.onDeliver();
    returnValue = value;
    returnValueDelivered = true;
}

} // namespace cimom
