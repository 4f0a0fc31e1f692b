#include "EnumerationContexts.h"

#include <Pegasus/Common/Exception.h>

#include <random>

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
} // namespace

void EnumerationContexts::_expire(Clock::time_point now)
{
    for (auto it = _contexts.begin(); it != _contexts.end();)
    {
        it = it->second.expires <= now ? _contexts.erase(it) : std::next(it);
    }
}

std::string EnumerationContexts::open(const std::string& user, Kind kind,
                                      std::deque<std::string> rest, Uint32 timeoutSeconds)
{
    std::lock_guard<std::mutex> lock(_mutex);
    const Clock::time_point now = Clock::now();
    _expire(now);
    Uint32 mine = 0;
    for (const auto& entry : _contexts)
    {
        mine += entry.second.user == user ? 1 : 0;
    }
    if (_contexts.size() >= _limits.maxTotal || mine >= _limits.maxPerUser)
    {
        throw CIMException(CIM_ERR_SERVER_LIMITS_EXCEEDED,
                           "Exceeded maximum number of simultaneous open Enumerations.");
    }
    std::string name;
    do
    {
        name = _randomName();
    } while (_contexts.count(name) != 0);
    Context context;
    context.user = user;
    context.kind = kind;
    context.rest = std::move(rest);
    context.timeout = std::chrono::seconds(timeoutSeconds);
    context.expires = now + context.timeout;
    _contexts.emplace(name, std::move(context));
    return name;
}

std::map<std::string, EnumerationContexts::Context>::iterator
EnumerationContexts::_find(const std::string& user, const std::string& name)
{
    auto it = _contexts.find(name);
    // Another user's context answers as one that does not exist.
    if (it == _contexts.end() || it->second.user != user)
    {
        throw CIMException(CIM_ERR_INVALID_ENUMERATION_CONTEXT, "Context undefined.");
    }
    if (it->second.expires <= Clock::now())
    {
        _contexts.erase(it);
        throw CIMException(CIM_ERR_INVALID_ENUMERATION_CONTEXT,
                           "Enumeration Context timed out before request received.");
    }
    return it;
}

std::vector<std::string> EnumerationContexts::pull(const std::string& user,
                                                   const std::string& name, Kind kind,
                                                   Uint32 maxObjects, bool& endOfSequence)
{
    std::lock_guard<std::mutex> lock(_mutex);
    auto it = _find(user, name);
    Context& context = it->second;
    if (context.kind != kind)
    {
        throw CIMException(CIM_ERR_FAILED, "Open and Pull Message types do not match.");
    }
    std::vector<std::string> taken;
    while (taken.size() < maxObjects && !context.rest.empty())
    {
        taken.push_back(std::move(context.rest.front()));
        context.rest.pop_front();
    }
    endOfSequence = context.rest.empty();
    if (endOfSequence)
    {
        _contexts.erase(it);
    }
    else
    {
        context.expires = Clock::now() + context.timeout;
    }
    return taken;
}

void EnumerationContexts::close(const std::string& user, const std::string& name)
{
    std::lock_guard<std::mutex> lock(_mutex);
    _contexts.erase(_find(user, name));
}

size_t EnumerationContexts::size() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _contexts.size();
}

} // namespace orvhost
