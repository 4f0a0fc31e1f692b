// Process-wide state of the simulated library: the current model, the
// clock, armed faults, call accounting, the semaphore and the logger.
#ifndef ORV_SIM_RUNTIME_H
#define ORV_SIM_RUNTIME_H

#include "Model.h"

#include <cstdint>
#include <memory>
#include <string>

namespace orvsim
{

enum class CallId
{
    OpenForCimserver,
    AuthorizeCIMUser,
    GetVolumeStatsChunk,
    WwnStringToInt,
    WwnIntToString,
    GetDiskStats,
    GetPortStats,
    GetNodes,
    GetNodeStats,
    GetNodeCPUStats,
    GetVLunStats,
    GetVVsChunk,
    GetSystemDualIP,
    SemWait,
    SemPost,
    Count
};

const char* callName(CallId id);
bool callFromName(const char* name, CallId& id);

// What an armed fault asks of the current call.
struct Gate
{
    int status = 0; // 0: proceed normally
    bool leaveAlloc = false;
    bool emptyChunk = false; // answer with no records, cursor not 0
};

// Throws ModelError when the fault names no call that can fail that way.
void checkFault(const FaultSpec& f);

class Runtime
{
public:
    static Runtime& get(); // initialises from the environment on first use

    std::shared_ptr<const Model> model() const;
    void setModel(std::shared_ptr<const Model> m); // also arms the model's faults
    uint64_t nowUs() const;
    void setFixedTimeUs(int64_t us);

    // Accounts the call and answers whether an armed fault fires. `bracketed`
    // calls must be made by the thread holding the semaphore; the CPU query
    // must be made by a thread not holding it.
    Gate enter(CallId id, bool bracketed, std::string args);

    void armFault(const FaultSpec& f); // throws ModelError for unknown names
    void clearFaults();
    unsigned long callCount(CallId id) const;
    bool lastCall(CallId id, std::string& out) const;
    void resetCallCounts();

    void reset();

private:
    Runtime();
    struct Impl;
    std::unique_ptr<Impl> _impl;
};

// Semaphore bookkeeping shared with the control interface.
namespace sem
{
bool heldByThisThread();
int depth();
int maxDepth();
unsigned long waits();
unsigned long posts();
unsigned long badPosts();
unsigned long unbracketed();
void noteUnbracketed();
void resetCounters();
} // namespace sem

namespace log
{
void setLevel(int level);
int level();
void resetLevel(); // back to ORV_LOG_LEVEL or 2
void captureBegin();
std::string captureTake();
void captureEnd();
} // namespace log

} // namespace orvsim

#endif
