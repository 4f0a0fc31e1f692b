#ifndef ORV_HOST_ENUMERATIONCONTEXTS_H
#define ORV_HOST_ENUMERATIONCONTEXTS_H

#include <Pegasus/Common/Config.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace orvhost
{

/// Open pull enumerations (OpenEnumerateInstances and the rest), bound to
/// the user who opened them. Each runs its enumeration on a thread of its
/// own that encodes objects ahead of the client only as far as the client's
/// page size, so an open context holds little more than the next pages,
/// whatever the size of the enumeration. Context names are 128 random bits;
/// a context ends when its last object is pulled, when it is closed, or when
/// no request used it for its operation timeout. Safe for concurrent use.
class EnumerationContexts
{
public:
    struct Limits
    {
        Pegasus::Uint32 maxPerUser = 8;
        Pegasus::Uint32 maxTotal = 64;
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

    /// Runs the enumeration, passing each encoded object to emit. emit
    /// blocks while enough objects wait and throws once the context is gone,
    /// which ends the enumeration.
    typedef std::function<void(const std::function<void(std::string)>& emit)> Producer;

    EnumerationContexts() = default;
    explicit EnumerationContexts(const Limits& limits) : _limits(limits)
    {
    }
    /// Ends every context and waits for their enumerations to stop.
    ~EnumerationContexts();

    const Limits& limits() const
    {
        return _limits;
    }

    /// Starts an enumeration and takes its first maxObjects objects. When it
    /// is already done, no context is kept and the name returned is empty.
    /// A failure before the first objects is thrown here. Throws
    /// CIMException(CIM_ERR_SERVER_LIMITS_EXCEEDED) past the caps.
    std::string open(const std::string& user, Kind kind, Producer producer,
                     Pegasus::Uint32 timeoutSeconds, Pegasus::Uint32 maxObjects,
                     std::vector<std::string>& first, bool& endOfSequence);

    /// Takes up to maxObjects objects (fewer only at the end); endOfSequence
    /// tells whether the context is done (and so gone). Throws
    /// CIMException(CIM_ERR_INVALID_ENUMERATION_CONTEXT) for a context that
    /// does not exist, timed out or belongs to another user, CIM_ERR_FAILED
    /// when the pull does not match the open, CIM_ERR_PULL_CANNOT_BE_ABANDONED
    /// while another request uses the context, and the enumeration's own
    /// failure when it failed.
    std::vector<std::string> pull(const std::string& user, const std::string& name, Kind kind,
                                  Pegasus::Uint32 maxObjects, bool& endOfSequence);

    /// Ends a context; errors as for pull.
    void close(const std::string& user, const std::string& name);

    /// Contexts open now.
    size_t size() const;

private:
    struct Context;
    typedef std::chrono::steady_clock Clock;

    void _expire(Clock::time_point now);
    std::shared_ptr<Context> _find(const std::string& user, const std::string& name);
    std::vector<std::string> _take(const std::shared_ptr<Context>& context,
                                   Pegasus::Uint32 maxObjects, bool& endOfSequence);

    Limits _limits;
    mutable std::mutex _mutex;
    std::map<std::string, std::shared_ptr<Context>> _contexts;
    // Enumeration threads still running, so that the destructor can wait.
    std::condition_variable _producersDone;
    int _producers = 0;
};

} // namespace orvhost

#endif
