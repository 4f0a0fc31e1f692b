#ifndef ORV_HOST_ENUMERATIONCONTEXTS_H
#define ORV_HOST_ENUMERATIONCONTEXTS_H

#include <Pegasus/Common/Config.h>

#include <chrono>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace orvhost
{

/// Open pull enumerations (OpenEnumerateInstances and the rest): what each
/// has not delivered yet, already encoded, bound to the user who opened it.
/// Context names are 128 random bits, so they cannot be guessed; a context
/// ends when its last object is pulled, when it is closed, or when no
/// request used it for its operation timeout. Safe for concurrent use.
class EnumerationContexts
{
public:
    struct Limits
    {
        Pegasus::Uint32 maxPerUser = 16;
        Pegasus::Uint32 maxTotal = 256;
        Pegasus::Uint32 defaultTimeout = 30; ///< seconds, when the client names none
        Pegasus::Uint32 maxTimeout = 90;     ///< seconds
        Pegasus::Uint32 maxObjectCount = 10000;
    };

    /// What an enumeration delivers: instances with their paths, or paths.
    enum Kind
    {
        INSTANCES,
        PATHS
    };

    EnumerationContexts() = default;
    explicit EnumerationContexts(const Limits& limits) : _limits(limits)
    {
    }

    const Limits& limits() const
    {
        return _limits;
    }

    /// Keeps what is left of an enumeration; returns the context's name.
    /// Throws CIMException(CIM_ERR_SERVER_LIMITS_EXCEEDED) past the caps.
    std::string open(const std::string& user, Kind kind, std::deque<std::string> rest,
                     Pegasus::Uint32 timeoutSeconds);

    /// Takes up to maxObjects of the context's objects; endOfSequence tells
    /// whether the context is done (and so gone). Throws
    /// CIMException(CIM_ERR_INVALID_ENUMERATION_CONTEXT) for a context that
    /// does not exist, timed out or belongs to another user, and
    /// CIM_ERR_FAILED when the pull does not match the open.
    std::vector<std::string> pull(const std::string& user, const std::string& name, Kind kind,
                                  Pegasus::Uint32 maxObjects, bool& endOfSequence);

    /// Ends a context; errors as for pull.
    void close(const std::string& user, const std::string& name);

    /// Contexts open now (for tests and the access log).
    size_t size() const;

private:
    typedef std::chrono::steady_clock Clock;
    struct Context
    {
        std::string user;
        Kind kind;
        std::deque<std::string> rest;
        std::chrono::seconds timeout;
        Clock::time_point expires;
    };

    void _expire(Clock::time_point now);
    std::map<std::string, Context>::iterator _find(const std::string& user,
                                                   const std::string& name);

    Limits _limits;
    mutable std::mutex _mutex;
    std::map<std::string, Context> _contexts;
};

} // namespace orvhost

#endif
