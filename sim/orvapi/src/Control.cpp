// The test-control interface (orvsim.h).
#include "Runtime.h"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mutex>
#include <sstream>

using namespace orvsim;

namespace
{

std::mutex gErrorMutex;
std::string gLastError;

void setError(const std::string& e)
{
    std::lock_guard<std::mutex> lock(gErrorMutex);
    gLastError = e;
}

char* dupString(const std::string& s)
{
    char* p = static_cast<char*>(std::malloc(s.size() + 1));
    if (p)
    {
        std::memcpy(p, s.c_str(), s.size() + 1);
    }
    return p;
}

int loadText(const std::string& text, const std::string& source)
{
    try
    {
        Runtime::get().setModel(buildModel(text));
        setError("");
        return 0;
    }
    catch (const ModelError& e)
    {
        setError(source + e.what());
        return API_ERR_INVALID_ARG;
    }
    catch (const std::bad_alloc&)
    {
        setError(source + "out of memory");
        return API_ERR_NO_MEMORY;
    }
}

} // namespace

extern "C" {

int orvsim_load_model_file(const char* path)
{
    if (!path)
    {
        setError("no model file given");
        return API_ERR_INVALID_ARG;
    }
    std::ifstream in(path, std::ios::binary);
    if (!in)
    {
        setError(std::string(path) + ": cannot open");
        return API_ERR_NOT_FOUND;
    }
    std::ostringstream s;
    s << in.rdbuf();
    return loadText(s.str(), std::string(path) + ": ");
}

int orvsim_load_model_json(const char* jsonText)
{
    if (!jsonText)
    {
        setError("no model text given");
        return API_ERR_INVALID_ARG;
    }
    return loadText(jsonText, "");
}

const char* orvsim_last_error(void)
{
    std::lock_guard<std::mutex> lock(gErrorMutex);
    return gLastError.c_str();
}

void orvsim_reset(void)
{
    Runtime::get().reset();
    setError("");
}

uint32_t orvsim_volume_count(void)
{
    return static_cast<uint32_t>(Runtime::get().model()->volumes.size());
}
uint32_t orvsim_vlun_count(void)
{
    return static_cast<uint32_t>(Runtime::get().model()->vluns.size());
}
uint32_t orvsim_disk_count(void)
{
    return static_cast<uint32_t>(Runtime::get().model()->disks.size());
}
uint32_t orvsim_port_count(void)
{
    return static_cast<uint32_t>(Runtime::get().model()->ports.size());
}
uint32_t orvsim_node_count(void)
{
    return static_cast<uint32_t>(Runtime::get().model()->nodes.size());
}

int orvsim_get_identity(orvsim_identity_t* out)
{
    if (!out)
    {
        return API_ERR_INVALID_ARG;
    }
    *out = Runtime::get().model()->identity;
    return 0;
}

int orvsim_get_disk_info(const char* diskDeviceID, orvsim_disk_info_t* out)
{
    if (!diskDeviceID || !out)
    {
        return API_ERR_INVALID_ARG;
    }
    const auto m = Runtime::get().model();
    for (const Disk& d : m->disks)
    {
        if (std::strcmp(d.rec.diskDeviceID, diskDeviceID) == 0)
        {
            *out = d.info;
            return 0;
        }
    }
    return API_ERR_NOT_FOUND;
}

int orvsim_get_port_info(const char* portDeviceID, orvsim_port_info_t* out)
{
    if (!portDeviceID || !out)
    {
        return API_ERR_INVALID_ARG;
    }
    const auto m = Runtime::get().model();
    for (const Port& p : m->ports)
    {
        if (std::strcmp(p.rec.portDeviceID, portDeviceID) == 0)
        {
            *out = p.info;
            return 0;
        }
    }
    return API_ERR_NOT_FOUND;
}

void orvsim_set_time(int64_t seconds)
{
    Runtime::get().setFixedTimeUs(seconds > 0 ? seconds * 1000000LL : 0);
}

void orvsim_set_time_us(int64_t microseconds)
{
    Runtime::get().setFixedTimeUs(microseconds);
}

int orvsim_set_fault_times(const char* call, int status, int after_n, int times, int leave_alloc)
{
    if (!call || after_n < 0 || times < 0)
    {
        return API_ERR_INVALID_ARG;
    }
    FaultSpec f;
    f.call = call;
    f.status = status;
    f.afterN = after_n;
    f.times = times;
    f.leaveAlloc = leave_alloc != 0;
    try
    {
        Runtime::get().armFault(f);
        return 0;
    }
    catch (const ModelError& e)
    {
        setError(e.what());
        return API_ERR_INVALID_ARG;
    }
}

int orvsim_set_fault(const char* call, int status, int after_n, int leave_alloc)
{
    return orvsim_set_fault_times(call, status, after_n, 0, leave_alloc);
}

int orvsim_set_faults_spec(const char* spec)
{
    if (!spec)
    {
        return API_ERR_INVALID_ARG;
    }
    try
    {
        const std::vector<FaultSpec> faults = parseFaultSpec(spec);
        for (const FaultSpec& f : faults)
        {
            checkFault(f);
        }
        for (const FaultSpec& f : faults)
        {
            Runtime::get().armFault(f);
        }
        return 0;
    }
    catch (const ModelError& e)
    {
        setError(e.what());
        return API_ERR_INVALID_ARG;
    }
}

void orvsim_clear_faults(void)
{
    Runtime::get().clearFaults();
}

unsigned long orvsim_call_count(const char* call)
{
    CallId id;
    return callFromName(call, id) ? Runtime::get().callCount(id) : 0;
}

char* orvsim_last_call(const char* call)
{
    CallId id;
    std::string text;
    if (!callFromName(call, id) || !Runtime::get().lastCall(id, text))
    {
        return nullptr;
    }
    return dupString(text);
}

void orvsim_reset_call_counts(void)
{
    Runtime::get().resetCallCounts();
}

int orvsim_sem_depth(void)
{
    return sem::depth();
}
int orvsim_sem_max_depth(void)
{
    return sem::maxDepth();
}
unsigned long orvsim_sem_waits(void)
{
    return sem::waits();
}
unsigned long orvsim_sem_posts(void)
{
    return sem::posts();
}
unsigned long orvsim_sem_bad_posts(void)
{
    return sem::badPosts();
}
unsigned long orvsim_unbracketed_calls(void)
{
    return sem::unbracketed();
}
void orvsim_reset_sem_counters(void)
{
    sem::resetCounters();
}

void orvsim_set_log_level(int level)
{
    Runtime::get();
    log::setLevel(level);
}
int orvsim_get_log_level(void)
{
    Runtime::get();
    return log::level();
}
void orvsim_log_capture_begin(void)
{
    log::captureBegin();
}
char* orvsim_log_capture_take(void)
{
    return dupString(log::captureTake());
}
void orvsim_log_capture_end(void)
{
    log::captureEnd();
}

} // extern "C"
