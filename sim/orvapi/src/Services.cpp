// Process services of the library: the semaphore that serialises queries,
// the logger and the panic path.
#include "Runtime.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <semaphore.h>
#include <string>

namespace orvsim
{
namespace sem
{
namespace
{

sem_t& theSemaphore()
{
    static sem_t* s = [] {
        auto* p = new sem_t;
        sem_init(p, 0, 1);
        return p;
    }();
    return *s;
}

thread_local int tHeld = 0;
std::atomic<int> gHolders{0};
std::atomic<int> gMaxDepth{0};
std::atomic<unsigned long> gWaits{0};
std::atomic<unsigned long> gPosts{0};
std::atomic<unsigned long> gBadPosts{0};
std::atomic<unsigned long> gUnbracketed{0};

void noteDepth(int d)
{
    int cur = gMaxDepth.load();
    while (d > cur && !gMaxDepth.compare_exchange_weak(cur, d))
    {
    }
}

} // namespace

bool heldByThisThread()
{
    return tHeld > 0;
}
int depth()
{
    return gHolders.load();
}
int maxDepth()
{
    return gMaxDepth.load();
}
unsigned long waits()
{
    return gWaits.load();
}
unsigned long posts()
{
    return gPosts.load();
}
unsigned long badPosts()
{
    return gBadPosts.load();
}
unsigned long unbracketed()
{
    return gUnbracketed.load();
}
void noteUnbracketed()
{
    ++gUnbracketed;
}
void resetCounters()
{
    // Holders are real state, not a statistic: they survive a reset.
    gMaxDepth = gHolders.load();
    gWaits = 0;
    gPosts = 0;
    gBadPosts = 0;
    gUnbracketed = 0;
}

int wait()
{
    if (tHeld > 0)
    {
        // A real semaphore would deadlock here; report it instead.
        noteDepth(tHeld + 1);
        return API_ERR_DEADLOCK;
    }
    while (sem_wait(&theSemaphore()) != 0)
    {
        if (errno != EINTR)
        {
            return API_ERR_BUSY;
        }
    }
    tHeld = 1;
    noteDepth(++gHolders);
    ++gWaits;
    return 0;
}

int post()
{
    if (tHeld == 0)
    {
        ++gBadPosts;
        return API_ERR_INVALID_ARG;
    }
    tHeld = 0;
    --gHolders;
    ++gPosts;
    sem_post(&theSemaphore());
    return 0;
}

} // namespace sem

namespace log
{
namespace
{

constexpr int kDefaultLevel = 2;

std::mutex gMutex;
std::atomic<int> gLevel{kDefaultLevel};
// Read without the lock by write(), to skip the formatting of lines nobody
// takes (trace lines, thousands per enumeration); changed under it.
std::atomic<bool> gCapturing{false};
std::string gCaptured;
FILE* gFile = nullptr;
bool gFileTried = false;

FILE* sink()
{
    if (!gFileTried)
    {
        gFileTried = true;
        if (const char* path = std::getenv("ORV_LOG_FILE"))
        {
            if (*path)
            {
                gFile = std::fopen(path, "a");
            }
        }
    }
    return gFile ? gFile : stderr;
}

} // namespace

void setLevel(int level)
{
    gLevel = level;
}
int level()
{
    return gLevel.load();
}
void resetLevel()
{
    int l = kDefaultLevel;
    if (const char* env = std::getenv("ORV_LOG_LEVEL"))
    {
        char* end = nullptr;
        const long v = std::strtol(env, &end, 10);
        if (end != env && *end == '\0')
        {
            l = static_cast<int>(v);
        }
    }
    gLevel = l;
}
void captureBegin()
{
    std::lock_guard<std::mutex> lock(gMutex);
    gCapturing = true;
    gCaptured.clear();
}
std::string captureTake()
{
    std::lock_guard<std::mutex> lock(gMutex);
    std::string out;
    out.swap(gCaptured);
    return out;
}
void captureEnd()
{
    std::lock_guard<std::mutex> lock(gMutex);
    gCapturing = false;
    gCaptured.clear();
}

void write(int level, const char* format, va_list ap)
{
    if (level > gLevel.load() && !gCapturing.load())
    {
        return;
    }
    std::string text;
    va_list copy;
    va_copy(copy, ap);
    char buf[512];
    const int n = std::vsnprintf(buf, sizeof buf, format, copy);
    va_end(copy);
    if (n < 0)
    {
        return;
    }
    if (static_cast<size_t>(n) < sizeof buf)
    {
        text.assign(buf, static_cast<size_t>(n));
    }
    else
    {
        text.resize(static_cast<size_t>(n) + 1);
        std::vsnprintf(&text[0], text.size(), format, ap);
        text.resize(static_cast<size_t>(n));
    }
    std::lock_guard<std::mutex> lock(gMutex);
    if (gCapturing)
    {
        gCaptured += text;
    }
    if (level <= gLevel.load())
    {
        FILE* f = sink();
        const std::time_t t = std::time(nullptr);
        std::tm tm{};
        localtime_r(&t, &tm);
        char stamp[32];
        std::strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%S", &tm);
        std::fprintf(f, "%s orv[%d]: %s", stamp, level, text.c_str());
        if (text.empty() || text.back() != '\n')
        {
            std::fputc('\n', f);
        }
        std::fflush(f);
    }
}

} // namespace log
} // namespace orvsim

using namespace orvsim;

extern "C" int cim_sem_wait(void)
{
    const Gate g = Runtime::get().enter(CallId::SemWait, false, "cim_sem_wait()");
    if (g.status != 0)
    {
        return g.status; // not taken
    }
    return sem::wait();
}

extern "C" int cim_sem_post(void)
{
    const Gate g = Runtime::get().enter(CallId::SemPost, false, "cim_sem_post()");
    const int rc = sem::post();
    // An injected failure still releases the semaphore, so callers that
    // ignore the status do not deadlock the next request.
    return g.status != 0 ? g.status : rc;
}

extern "C" void log_message(int level, const char* format, ...)
{
    if (!format)
    {
        return;
    }
    Runtime::get();
    va_list ap;
    va_start(ap, format);
    log::write(level, format, ap);
    va_end(ap);
}

extern "C" void orv_print_no_evt(const char* format, ...)
{
    if (!format)
    {
        return;
    }
    va_list ap;
    va_start(ap, format);
    std::vfprintf(stderr, format, ap);
    va_end(ap);
    std::fflush(stderr);
}

extern "C" void orv_panic(const char* format, ...)
{
    if (format)
    {
        va_list ap;
        va_start(ap, format);
        std::vfprintf(stderr, format, ap);
        va_end(ap);
    }
    std::fflush(stderr);
    std::abort();
}
