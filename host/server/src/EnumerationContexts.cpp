#include "EnumerationContexts.h"

#include <Pegasus/Common/Exception.h>

#include <malloc.h>

#include <deque>
#include <random>
#include <thread>

using namespace Pegasus;

namespace orvhost
{

namespace
{
std::string _randomName()
{
    static std::mutex mutex;
    static std::random_device device;
    std::lock_guard<std::mutex> lock(mutex);
    static const char hex[] = "0123456789abcdef";
    std::string name;
    for (int i = 0; i < 4; ++i)
    {
        unsigned int word = device();
        for (int k = 0; k < 8; ++k)
        {
            name += hex[(word >> (4 * k)) & 0xF];
        }
    }
    return name;
}

// Thrown at the enumeration when its context is gone.
struct Abandoned
{
};
} // namespace

struct EnumerationContexts::Context
{
    std::string user;
    Kind kind;
    std::chrono::seconds timeout{30};
    Clock::time_point expires;
    bool busy = false; ///< a request is using the context

    std::mutex mutex;
    std::condition_variable cv;
    std::deque<std::string> ready;
    size_t wanted = 1; ///< how many objects the enumeration may keep ready
    bool done = false;
    bool abandoned = false;
    bool failed = false;
    CIMException failure;
};

EnumerationContexts::~EnumerationContexts()
{
    std::unique_lock<std::mutex> lock(_mutex);
    for (auto& entry : _contexts)
    {
        std::lock_guard<std::mutex> contextLock(entry.second->mutex);
        entry.second->abandoned = true;
        entry.second->cv.notify_all();
    }
    _contexts.clear();
    _producersDone.wait(lock, [this] { return _producers == 0; });
}

void EnumerationContexts::_expire(Clock::time_point now)
{
    for (auto it = _contexts.begin(); it != _contexts.end();)
    {
        if (!it->second->busy && it->second->expires <= now)
        {
            std::lock_guard<std::mutex> contextLock(it->second->mutex);
            it->second->abandoned = true;
            it->second->cv.notify_all();
            it = _contexts.erase(it);
        }
        else
        {
            ++it;
        }
    }
}

std::string EnumerationContexts::open(const std::string& user, Kind kind, Producer producer,
                                      Uint32 timeoutSeconds, Uint32 maxObjects,
                                      std::vector<std::string>& first, bool& endOfSequence)
{
    auto context = std::make_shared<Context>();
    context->user = user;
    context->kind = kind;
    context->timeout = std::chrono::seconds(timeoutSeconds);
    context->wanted = std::max<size_t>(maxObjects, 1);
    std::string name;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _expire(Clock::now());
        Uint32 mine = 0;
        for (const auto& entry : _contexts)
        {
            mine += entry.second->user == user ? 1 : 0;
        }
        if (_contexts.size() >= _limits.maxTotal || mine >= _limits.maxPerUser)
        {
            throw CIMException(CIM_ERR_SERVER_LIMITS_EXCEEDED,
                               "Exceeded maximum number of simultaneous open Enumerations.");
        }
        do
        {
            name = _randomName();
        } while (_contexts.count(name) != 0);
        context->busy = true;
        _contexts.emplace(name, context);
        ++_producers;
    }

    std::thread([this, context, producer]() {
        auto emit = [&context](std::string item) {
            std::unique_lock<std::mutex> lock(context->mutex);
            context->cv.wait(lock, [&] {
                return context->abandoned || context->ready.size() < context->wanted;
            });
            if (context->abandoned)
            {
                throw Abandoned();
            }
            context->ready.push_back(std::move(item));
            context->cv.notify_all();
        };
        CIMException failure;
        bool failed = false;
        try
        {
            producer(emit);
        }
        catch (const Abandoned&)
        {
        }
        catch (const CIMException& e)
        {
            failure = e;
            failed = true;
        }
        catch (const Exception& e)
        {
            failure = CIMException(CIM_ERR_FAILED, e.getMessage());
            failed = true;
        }
        catch (const std::exception& e)
        {
            failure = CIMException(CIM_ERR_FAILED, String(e.what()));
            failed = true;
        }
        // What the enumeration used lies in this thread's arena: give it back.
        malloc_trim(0);
        {
            std::lock_guard<std::mutex> lock(context->mutex);
            context->done = true;
            context->failed = failed && !context->abandoned;
            context->failure = failure;
            context->cv.notify_all();
        }
        std::lock_guard<std::mutex> lock(_mutex);
        if (--_producers == 0)
        {
            _producersDone.notify_all();
        }
    }).detach();

    try
    {
        first = _take(context, maxObjects, endOfSequence);
    }
    catch (...)
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _contexts.erase(name);
        throw;
    }
    std::lock_guard<std::mutex> lock(_mutex);
    if (endOfSequence)
    {
        _contexts.erase(name);
        return std::string();
    }
    context->busy = false;
    context->expires = Clock::now() + context->timeout;
    return name;
}

std::vector<std::string> EnumerationContexts::_take(const std::shared_ptr<Context>& context,
                                                    Uint32 maxObjects, bool& endOfSequence)
{
    std::unique_lock<std::mutex> lock(context->mutex);
    // The enumeration may run ahead by one page.
    context->wanted = std::max<size_t>(maxObjects, 1);
    context->cv.notify_all();
    context->cv.wait(lock, [&] { return context->done || context->ready.size() >= maxObjects; });
    if (context->failed && context->ready.empty())
    {
        context->abandoned = true;
        throw context->failure;
    }
    std::vector<std::string> taken;
    while (taken.size() < maxObjects && !context->ready.empty())
    {
        taken.push_back(std::move(context->ready.front()));
        context->ready.pop_front();
    }
    context->cv.notify_all();
    endOfSequence = context->done && context->ready.empty() && !context->failed;
    return taken;
}

std::shared_ptr<EnumerationContexts::Context> EnumerationContexts::_find(const std::string& user,
                                                                         const std::string& name)
{
    auto it = _contexts.find(name);
    // Another user's context answers as one that does not exist.
    if (it == _contexts.end() || it->second->user != user)
    {
        throw CIMException(CIM_ERR_INVALID_ENUMERATION_CONTEXT, "Context undefined.");
    }
    std::shared_ptr<Context> context = it->second;
    if (context->busy)
    {
        throw CIMException(CIM_ERR_PULL_CANNOT_BE_ABANDONED,
                           "Server processing another request for this Enumeration Context.");
    }
    if (context->expires <= Clock::now())
    {
        std::lock_guard<std::mutex> contextLock(context->mutex);
        context->abandoned = true;
        context->cv.notify_all();
        _contexts.erase(it);
        throw CIMException(CIM_ERR_INVALID_ENUMERATION_CONTEXT,
                           "Enumeration Context timed out before request received.");
    }
    return context;
}

std::vector<std::string> EnumerationContexts::pull(const std::string& user,
                                                   const std::string& name, Kind kind,
                                                   Uint32 maxObjects, bool& endOfSequence)
{
    std::shared_ptr<Context> context;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        context = _find(user, name);
        if (context->kind != kind)
        {
            throw CIMException(CIM_ERR_FAILED, "Open and Pull Message types do not match.");
        }
        context->busy = true;
    }
    std::vector<std::string> taken;
    try
    {
        taken = _take(context, maxObjects, endOfSequence);
    }
    catch (...)
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _contexts.erase(name);
        throw;
    }
    std::lock_guard<std::mutex> lock(_mutex);
    context->busy = false;
    if (endOfSequence)
    {
        _contexts.erase(name);
    }
    else
    {
        context->expires = Clock::now() + context->timeout;
    }
    return taken;
}

void EnumerationContexts::close(const std::string& user, const std::string& name)
{
    std::lock_guard<std::mutex> lock(_mutex);
    std::shared_ptr<Context> context = _find(user, name);
    {
        std::lock_guard<std::mutex> contextLock(context->mutex);
        context->abandoned = true;
        context->cv.notify_all();
    }
    _contexts.erase(name);
}

size_t EnumerationContexts::size() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _contexts.size();
}

} // namespace orvhost
