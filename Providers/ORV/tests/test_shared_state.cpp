// The process-wide state of ORV_Common (random-string generator, cached
// management addresses) under concurrent first callers.

#include <dlfcn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "ORV_Common.h"
#include "orvapi.h"
#include "orvsim.h"

namespace
{

// While set, the first-use steps of the helpers below are slowed down so
// that a second caller arrives in the middle of them.
std::atomic<int> g_slowMs(0);
std::atomic<int> g_seedings(0);
std::atomic<int> g_addressQueries(0);

void slowDown()
{
    const int ms = g_slowMs.load();
    if (ms > 0)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(ms));
    }
}

} // namespace

// Interposed for the module's calls: count, stall, then do the real work.
extern "C" int initstate_r(unsigned int seed, char* statebuf, size_t statelen,
                           struct random_data* buf)
{
    typedef int (*Real)(unsigned int, char*, size_t, struct random_data*);
    static Real real = (Real)dlsym(RTLD_NEXT, "initstate_r");
    g_seedings++;
    slowDown();
    return real(seed, statebuf, statelen, buf);
}

extern "C" int32_t api_getSystemDualIP(api_ipaddr_t* out)
{
    typedef int32_t (*Real)(api_ipaddr_t*);
    static Real real = (Real)dlsym(RTLD_NEXT, "api_getSystemDualIP");
    g_addressQueries++;
    slowDown();
    return real(out);
}

namespace
{

const char ALPHABET[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";

enum TrialResult
{
    TRIAL_OK = 0,
    TRIAL_BAD_TEXT = 1,
    TRIAL_TWO_SEEDINGS = 2,
    TRIAL_TWO_ADDRESS_QUERIES = 3,
};

// Both helpers keep what their first call sets up for the life of the
// process, so the trial runs in a fresh child where two threads make the
// first calls at once.
int runTrial(const std::string& ipv4)
{
    g_slowMs = 50;
    std::atomic<int> bad(0);
    std::vector<std::thread> workers;
    for (int t = 0; t < 2; t++)
    {
        workers.emplace_back(
            [&]()
            {
                char buf[64];
                ORV_Common::generate_random_string(buf, sizeof(buf));
                if (strlen(buf) != sizeof(buf) - 1 || strspn(buf, ALPHABET) != sizeof(buf) - 1)
                {
                    bad++;
                }
                String addr = ORV_Common::getSystemIPAddr(IP_TYPE_V4);
                if (std::string((const char*)addr.getCString()) != ipv4)
                {
                    bad++;
                }
            });
    }
    for (std::thread& w : workers)
    {
        w.join();
    }
    if (bad.load() != 0)
    {
        return TRIAL_BAD_TEXT;
    }
    // None when an earlier test of this process already set things up.
    if (g_seedings.load() > 1)
    {
        return TRIAL_TWO_SEEDINGS;
    }
    return g_addressQueries.load() <= 1 ? TRIAL_OK : TRIAL_TWO_ADDRESS_QUERIES;
}

TEST(SharedState, ConcurrentFirstCallersSetUpOnce)
{
    orvsim_identity_t id;
    ASSERT_EQ(0, orvsim_get_identity(&id));
    const std::string ipv4 = id.ipv4;
    const pid_t pid = fork();
    ASSERT_NE(-1, pid);
    if (pid == 0)
    {
        _exit(runTrial(ipv4));
    }
    int status = 0;
    ASSERT_EQ(pid, waitpid(pid, &status, 0));
    ASSERT_TRUE(WIFEXITED(status))
        << "died by signal " << (WIFSIGNALED(status) ? WTERMSIG(status) : 0);
    EXPECT_EQ(TRIAL_OK, WEXITSTATUS(status))
        << "1: wrong text, 2: seeded twice, 3: addresses asked twice";
}

} // namespace
