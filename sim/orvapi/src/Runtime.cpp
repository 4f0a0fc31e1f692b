#include "Runtime.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mutex>
#include <sstream>
#include <vector>

namespace orvsim
{
namespace
{

const char* const kCallNames[] = {
    "api_orvOpenForCimserver", "api_authorizeCIMUser", "api_getVolumeStats_chunk", "api_wwnStringToInt",
    "api_wwnIntToString",      "api_getDiskStats",     "api_getPortStats",         "api_getNodes",
    "api_getNodeStats",        "api_getNodeCPUStats",  "api_getVLunStats",         "api_getVVs_chunk",
    "api_getSystemDualIP",     "cim_sem_wait",         "cim_sem_post",
};
static_assert(sizeof kCallNames / sizeof kCallNames[0] == static_cast<size_t>(CallId::Count),
              "one name per call");

constexpr size_t kCalls = static_cast<size_t>(CallId::Count);

struct FaultState
{
    FaultSpec spec;
    int seen = 0;
    int fired = 0;
};

std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
    {
        throw ModelError("cannot open " + path);
    }
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

} // namespace

const char* callName(CallId id)
{
    return kCallNames[static_cast<size_t>(id)];
}

bool callFromName(const char* name, CallId& id)
{
    if (!name)
    {
        return false;
    }
    for (size_t i = 0; i < kCalls; ++i)
    {
        if (std::strcmp(name, kCallNames[i]) == 0)
        {
            id = static_cast<CallId>(i);
            return true;
        }
    }
    return false;
}

struct Runtime::Impl
{
    mutable std::mutex modelMutex;
    std::shared_ptr<const Model> model;
    std::atomic<int64_t> fixedUs{0};

    std::mutex faultMutex;
    std::array<std::vector<FaultState>, kCalls> faults;
    std::atomic<bool> anyFault{false};

    std::array<std::atomic<unsigned long>, kCalls> counts{};
    mutable std::mutex lastMutex;
    std::array<std::string, kCalls> last;
    std::array<bool, kCalls> called{};
};

Runtime::Runtime() : _impl(new Impl)
{
    _impl->model = buildDefaultModel();
    log::resetLevel();
    if (const char* path = std::getenv("ORV_SIM_MODEL"))
    {
        if (*path)
        {
            try
            {
                setModel(buildModel(readFile(path)));
            }
            catch (const ModelError& e)
            {
                std::fprintf(stderr, "orvapi: ORV_SIM_MODEL %s: %s; using the default model\n", path, e.what());
            }
        }
    }
    if (const char* spec = std::getenv("ORV_SIM_FAULTS"))
    {
        try
        {
            for (const FaultSpec& f : parseFaultSpec(spec))
            {
                armFault(f);
            }
        }
        catch (const ModelError& e)
        {
            std::fprintf(stderr, "orvapi: ORV_SIM_FAULTS: %s\n", e.what());
        }
    }
}

Runtime& Runtime::get()
{
    static Runtime* instance = new Runtime; // never destroyed: calls may come during exit
    return *instance;
}

std::shared_ptr<const Model> Runtime::model() const
{
    std::lock_guard<std::mutex> lock(_impl->modelMutex);
    return _impl->model;
}

void Runtime::setModel(std::shared_ptr<const Model> m)
{
    const std::vector<FaultSpec> faults = m->faults;
    for (const FaultSpec& f : faults)
    {
        checkFault(f);
    }
    {
        std::lock_guard<std::mutex> lock(_impl->modelMutex);
        _impl->model = std::move(m);
    }
    if (!faults.empty())
    {
        clearFaults();
        for (const FaultSpec& f : faults)
        {
            armFault(f);
        }
    }
}

uint64_t Runtime::nowUs() const
{
    const int64_t fixed = _impl->fixedUs.load();
    if (fixed > 0)
    {
        return static_cast<uint64_t>(fixed);
    }
    return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(
                                     std::chrono::system_clock::now().time_since_epoch())
                                     .count());
}

void Runtime::setFixedTimeUs(int64_t us)
{
    _impl->fixedUs.store(us > 0 ? us : 0);
}

Gate Runtime::enter(CallId id, bool bracketed, std::string args)
{
    const size_t i = static_cast<size_t>(id);
    ++_impl->counts[i];
    {
        std::lock_guard<std::mutex> lock(_impl->lastMutex);
        _impl->last[i] = std::move(args);
        _impl->called[i] = true;
    }
    if (bracketed && !sem::heldByThisThread())
    {
        sem::noteUnbracketed();
    }
    // The CPU query is the one made without the semaphore; made under it,
    // it breaks its rule just as an unbracketed list query does.
    if (id == CallId::GetNodeCPUStats && sem::heldByThisThread())
    {
        sem::noteUnbracketed();
    }
    Gate g;
    if (!_impl->anyFault.load())
    {
        return g;
    }
    std::lock_guard<std::mutex> lock(_impl->faultMutex);
    for (FaultState& f : _impl->faults[i])
    {
        ++f.seen;
        if (g.status == 0 && !g.emptyChunk && f.seen > f.spec.afterN &&
            (f.spec.times == 0 || f.fired < f.spec.times))
        {
            ++f.fired;
            g.status = f.spec.status;
            g.leaveAlloc = f.spec.leaveAlloc;
            g.emptyChunk = f.spec.emptyChunk;
        }
    }
    return g;
}

void checkFault(const FaultSpec& f)
{
    CallId id;
    if (!callFromName(f.call.c_str(), id))
    {
        throw ModelError("no call named \"" + f.call + "\" can fail");
    }
    if (f.emptyChunk)
    {
        if (id != CallId::GetVolumeStatsChunk && id != CallId::GetVVsChunk)
        {
            throw ModelError("only a chunked call can answer empty, not " + f.call);
        }
        return;
    }
    if (f.status == 0)
    {
        throw ModelError("a fault of " + f.call + " needs a non-zero status");
    }
}

void Runtime::armFault(const FaultSpec& f)
{
    checkFault(f);
    CallId id{}; // set by callFromName, which checkFault has vetted
    callFromName(f.call.c_str(), id);
    std::lock_guard<std::mutex> lock(_impl->faultMutex);
    _impl->faults[static_cast<size_t>(id)].push_back(FaultState{f, 0, 0});
    _impl->anyFault.store(true);
}

void Runtime::clearFaults()
{
    std::lock_guard<std::mutex> lock(_impl->faultMutex);
    for (auto& v : _impl->faults)
    {
        v.clear();
    }
    _impl->anyFault.store(false);
}

unsigned long Runtime::callCount(CallId id) const
{
    return _impl->counts[static_cast<size_t>(id)].load();
}

bool Runtime::lastCall(CallId id, std::string& out) const
{
    std::lock_guard<std::mutex> lock(_impl->lastMutex);
    const size_t i = static_cast<size_t>(id);
    if (!_impl->called[i])
    {
        return false;
    }
    out = _impl->last[i];
    return true;
}

void Runtime::resetCallCounts()
{
    std::lock_guard<std::mutex> lock(_impl->lastMutex);
    for (size_t i = 0; i < kCalls; ++i)
    {
        _impl->counts[i] = 0;
        _impl->called[i] = false;
        _impl->last[i].clear();
    }
}

void Runtime::reset()
{
    {
        std::lock_guard<std::mutex> lock(_impl->modelMutex);
        _impl->model = buildDefaultModel();
    }
    clearFaults();
    resetCallCounts();
    sem::resetCounters();
    setFixedTimeUs(0);
    log::captureEnd();
    log::resetLevel();
}

} // namespace orvsim
