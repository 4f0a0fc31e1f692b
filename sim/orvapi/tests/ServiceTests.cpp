// The semaphore, the logger, the panic path and concurrent callers.
#include "SimFixture.h"

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace
{

TEST_F(SimTest, SemaphoreCountsBracketsAndRefusesNesting)
{
    orvsim_reset_sem_counters();
    ASSERT_EQ(0, cim_sem_wait());
    EXPECT_EQ(1, orvsim_sem_depth());
    api_NodeList_t nodes{};
    EXPECT_EQ(0, api_getNodes(&nodes));
    std::free(nodes.nodes);
    EXPECT_EQ(API_ERR_DEADLOCK, cim_sem_wait()) << "a nested wait must not block";
    EXPECT_EQ(2, orvsim_sem_max_depth());
    EXPECT_EQ(0, cim_sem_post());
    EXPECT_EQ(0, orvsim_sem_depth());
    EXPECT_EQ(0u, orvsim_unbracketed_calls());

    nodes = api_NodeList_t{};
    EXPECT_EQ(0, api_getNodes(&nodes)); // outside the semaphore
    std::free(nodes.nodes);
    cpustats cpu{};
    EXPECT_EQ(0, api_getNodeCPUStats(0, &cpu, nullptr)); // exempt by contract
    EXPECT_EQ(0, api_orvOpenForCimserver(nullptr));       // not a query
    EXPECT_EQ(1u, orvsim_unbracketed_calls());

    EXPECT_NE(0, cim_sem_post()) << "posting without holding is an error";
    EXPECT_EQ(1u, orvsim_sem_bad_posts());
    EXPECT_EQ(1u, orvsim_sem_waits());
    EXPECT_EQ(1u, orvsim_sem_posts());
}

// The CPU query is the one made without the semaphore: made while it is
// held, it counts as a query outside its rule, like an unbracketed list.
TEST_F(SimTest, CpuQueryUnderTheSemaphoreCounts)
{
    orvsim_reset_sem_counters();
    cpustats cpu{};
    EXPECT_EQ(0, api_getNodeCPUStats(0, &cpu, nullptr));
    EXPECT_EQ(0u, orvsim_unbracketed_calls());
    ASSERT_EQ(0, cim_sem_wait());
    EXPECT_EQ(0, api_getNodeCPUStats(0, &cpu, nullptr));
    EXPECT_EQ(0, cim_sem_post());
    EXPECT_EQ(1u, orvsim_unbracketed_calls());
}

TEST_F(SimTest, InjectedSemaphoreFailures)
{
    ASSERT_EQ(0, orvsim_set_faults_spec("cim_sem_wait=16@1*1"));
    ASSERT_EQ(0, cim_sem_wait());
    EXPECT_EQ(0, cim_sem_post());
    EXPECT_EQ(16, cim_sem_wait());
    EXPECT_EQ(0, orvsim_sem_depth()) << "a failed wait takes nothing";
    EXPECT_EQ(0, cim_sem_wait());
    EXPECT_EQ(0, cim_sem_post());

    ASSERT_EQ(0, orvsim_set_fault("cim_sem_post", 3, 0, 0));
    ASSERT_EQ(0, cim_sem_wait());
    EXPECT_EQ(3, cim_sem_post());
    EXPECT_EQ(0, orvsim_sem_depth()) << "a failing post still releases";
    orvsim_clear_faults();
    ASSERT_EQ(0, cim_sem_wait());
    EXPECT_EQ(0, cim_sem_post());
}

TEST_F(SimTest, FaultSettingsParse)
{
    EXPECT_EQ(0, orvsim_set_faults_spec("api_getDiskStats=5, api_getPortStats=0x10@2:alloc"));
    api_DisksStats_t d{};
    EXPECT_EQ(5, api_getDiskStats(API_DISK_ALL, API_WWN_ALL_VOLUMES, API_SEL_ANY, API_SEL_ANY, API_SEL_ANY, &d));
    for (int i = 0; i < 2; ++i)
    {
        api_PortsStats_t p{};
        EXPECT_EQ(0, api_getPortStats(API_PORT_TYPE_ALL, API_SEL_ANY, API_SEL_ANY, API_SEL_ANY, &p));
        std::free(p.stats);
    }
    api_PortsStats_t p{};
    EXPECT_EQ(16, api_getPortStats(API_PORT_TYPE_ALL, API_SEL_ANY, API_SEL_ANY, API_SEL_ANY, &p));
    EXPECT_NE(nullptr, p.stats);
    std::free(p.stats);

    for (const char* bad : {"api_getDiskStats", "=5", "api_getDiskStats=x", "api_getDiskStats=5@",
                            "api_getDiskStats=5:keep", "api_unknown=5", "api_getDiskStats=0"})
    {
        EXPECT_NE(0, orvsim_set_faults_spec(bad)) << bad;
    }
}

TEST_F(SimTest, CallAccountingKeepsTheLatestArguments)
{
    api_VLunsStats_t out{};
    EXPECT_EQ(nullptr, orvsim_last_call("api_getVLunStats"));
    ASSERT_EQ(0, api_getVLunStats(0, "vol1", 7, static_cast<int8_t>(253), -7, static_cast<int8_t>(-8), &out));
    std::free(out.stats);
    EXPECT_EQ("api_getVLunStats(0,\"vol1\",7,-3,-7,-8)", take(orvsim_last_call("api_getVLunStats")));
    ASSERT_EQ(0, api_getVLunStats(0, nullptr, -5, -1, -1, -1, &out));
    std::free(out.stats);
    EXPECT_EQ("api_getVLunStats(0,null,-5,-1,-1,-1)", take(orvsim_last_call("api_getVLunStats")));
    EXPECT_EQ(2u, orvsim_call_count("api_getVLunStats"));
    orvsim_reset_call_counts();
    EXPECT_EQ(0u, orvsim_call_count("api_getVLunStats"));
}

TEST_F(SimTest, LogCaptureKeepsExactTextAtEveryLevel)
{
    orvsim_set_log_level(1); // keep stderr quiet
    log_message(4, "ignored before capture\n");
    orvsim_log_capture_begin();
    log_message(4, "--> %s::getInstance\n", "ORV_VolumeStatisticalDataProvider");
    log_message(2, "status = %d \n", -3);
    log_message(9, "no newline");
    EXPECT_EQ("--> ORV_VolumeStatisticalDataProvider::getInstance\nstatus = -3 \nno newline",
              take(orvsim_log_capture_take()));
    EXPECT_EQ("", take(orvsim_log_capture_take())) << "take empties the buffer";
    std::string longLine(2000, 'x');
    log_message(3, "%s\n", longLine.c_str());
    EXPECT_EQ(longLine + "\n", take(orvsim_log_capture_take()));
    orvsim_log_capture_end();
    log_message(2, "after\n");
    EXPECT_EQ("", take(orvsim_log_capture_take()));
}

TEST_F(SimTest, LogThresholdFiltersOutputOnly)
{
    orvsim_set_log_level(3);
    EXPECT_EQ(3, orvsim_get_log_level());
    ::testing::internal::CaptureStderr();
    log_message(3, "shown %d\n", 3);
    log_message(4, "hidden\n");
    const std::string err = ::testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos, err.find("shown 3\n"));
    EXPECT_EQ(std::string::npos, err.find("hidden"));
    orvsim_reset();
    EXPECT_EQ(2, orvsim_get_log_level());
}

TEST(SimDeathTest, PanicPrintsAndAborts)
{
    EXPECT_DEATH(orv_panic("Assertion point: file: %s, line: %d\n", "x.cpp", 7), "Assertion point: file: x.cpp, line: 7");
}

TEST_F(SimTest, ConcurrentCallersSeeConsistentRecords)
{
    load(R"({"volumes": {"count": 1000}, "vluns": {"count": 500}})");
    orvsim_reset_sem_counters();
    constexpr int kThreads = 8;
    constexpr int kRounds = 20;
    std::atomic<int> problems{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
    {
        threads.emplace_back([&problems, t] {
            for (int r = 0; r < kRounds; ++r)
            {
                uint32_t cursor = 0;
                uint32_t seen = 0;
                do
                {
                    if (cim_sem_wait() != 0)
                    {
                        ++problems;
                        return;
                    }
                    api_VolumesStats_t out{};
                    const int rc = api_getVolumeStats_chunk(&out, API_WWN_ALL_VOLUMES, API_WWN_ALL_VOLUMES,
                                                            &cursor, 200);
                    cim_sem_post();
                    if (rc != 0)
                    {
                        ++problems;
                    }
                    for (uint32_t i = 0; i < out.count; ++i)
                    {
                        // Every record is whole: hits and misses add up to the reads.
                        const api_VolumeStats_t& v = out.stats[i];
                        if (v.cacheRead.hit + v.cacheRead.miss != v.stats.read.count || v.volDeviceID[32] != '\0')
                        {
                            ++problems;
                        }
                    }
                    seen += out.count;
                    std::free(out.stats);
                } while (cursor != 0);
                if (seen != 1000)
                {
                    ++problems;
                }
                if (t % 2 == 0)
                {
                    cpustats cpu{};
                    if (api_getNodeCPUStats(static_cast<uint32_t>(r % 4), &cpu, nullptr) != 0)
                    {
                        ++problems;
                    }
                }
            }
        });
    }
    for (std::thread& th : threads)
    {
        th.join();
    }
    EXPECT_EQ(0, problems.load());
    EXPECT_EQ(1, orvsim_sem_max_depth());
    EXPECT_EQ(orvsim_sem_waits(), orvsim_sem_posts());
    EXPECT_EQ(0u, orvsim_unbracketed_calls());
    EXPECT_EQ(0, orvsim_sem_depth());
}

TEST_F(SimTest, ModelSwapsDuringQueriesAreSafe)
{
    std::atomic<bool> stop{false};
    std::thread reader([&stop] {
        while (!stop.load())
        {
            api_VLunsStats_t out{};
            api_getVLunStats(0, "", -5, -1, -1, -1, &out);
            std::free(out.stats);
        }
    });
    for (int i = 0; i < 20; ++i)
    {
        load(i % 2 ? R"({"vluns": {"count": 50}})" : R"({"vluns": {"count": 700}})");
    }
    stop = true;
    reader.join();
    EXPECT_EQ(50u, orvsim_vlun_count());
}

} // namespace
