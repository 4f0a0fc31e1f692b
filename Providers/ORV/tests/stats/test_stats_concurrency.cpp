// Several threads enumerating statistics at once through the object manager:
// each sees the complete, consistent answer and the semaphore stays sound.

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "StatsTestSupport.h"

using namespace orvtest;
using namespace orvstats;

namespace
{

// What a thread saw of one class: the IDs in order and a counter sum.
struct Snapshot
{
    std::vector<std::string> ids;
    Uint64 totalIOs = 0;

    bool operator==(const Snapshot& o) const
    {
        return ids == o.ids && totalIOs == o.totalIOs;
    }
};

class StatsConcurrencyTest : public ModuleFixture
{
protected:
    Snapshot take(const CIMName& cls)
    {
        Snapshot s;
        Array<CIMInstance> all = enumerateInstances(READER_USER, cls);
        for (Uint32 i = 0; i < all.size(); i++)
        {
            s.ids.push_back(instanceIdOf(all[i].getPath()));
            s.totalIOs += get<Uint64>(all[i], "TotalIOs");
        }
        return s;
    }
};

TEST_F(StatsConcurrencyTest, ParallelEnumerationsAgree)
{
    // Generated counters follow the simulated clock; fixing it makes every
    // answer comparable. 450 volumes span three chunks.
    loadModelJson("{\"volumes\": {\"count\": 450}, \"vluns\": {\"count\": 900}}");
    orvsim_set_time(1700000000);
    const CIMName classes[] = {CIMName("ORV_VolumeStatisticalData"),
                               CIMName("ORV_LUNStatisticalData"),
                               CIMName("ORV_NodeStatisticalData"),
                               CIMName("ORV_DiskStatisticalData")};
    const size_t kinds = sizeof(classes) / sizeof(classes[0]);
    std::vector<Snapshot> baseline;
    for (const CIMName& cls : classes)
    {
        baseline.push_back(take(cls));
    }
    ASSERT_EQ(450u, baseline[0].ids.size());
    ASSERT_EQ(900u, baseline[1].ids.size());

    orvsim_reset_sem_counters();
    const int kThreads = 4;
    const int kRounds = 3;
    std::atomic<int> mismatches(0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; t++)
    {
        // Each thread walks the classes in its own order so that different
        // providers overlap. An exception ends the test run, as it should.
        threads.emplace_back([&, t]() {
            for (int r = 0; r < kRounds; r++)
            {
                size_t k = (t + r) % kinds;
                mismatches += take(classes[k]) == baseline[k] ? 0 : 1;
            }
        });
    }
    for (std::thread& th : threads)
    {
        th.join();
    }
    EXPECT_EQ(0, mismatches.load());
    expectSemaphoreBalanced();
    EXPECT_GT(orvsim_sem_waits(), 0ul);
}

} // namespace
