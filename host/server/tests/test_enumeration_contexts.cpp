// Pull enumeration contexts: ownership, paging, laziness, expiry and failures.

#include "EnumerationContexts.h"

#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

using namespace orvhost;
using namespace Pegasus;

namespace
{

typedef EnumerationContexts::Kind Kind;

// A producer of n objects "0".."n-1", counting what it has emitted; it fails
// with failure after failAfter objects when failAfter is set.
struct Source
{
    explicit Source(int n, int failAfter = -1) : n(n), failAfter(failAfter)
    {
    }
    EnumerationContexts::Producer producer()
    {
        return [this](const std::function<void(std::string)>& emit) {
            for (int i = 0; i < n; i++)
            {
                if (i == failAfter)
                {
                    throw CIMException(CIM_ERR_ACCESS_DENIED, "refused");
                }
                emit(std::to_string(i));
                ++emitted;
            }
        };
    }
    int n;
    int failAfter;
    std::atomic<int> emitted{0};
};

CIMStatusCode codeOf(const std::function<void()>& call)
{
    try
    {
        call();
    }
    catch (const CIMException& e)
    {
        return e.getCode();
    }
    return CIM_ERR_SUCCESS;
}

} // namespace

TEST(EnumerationContexts, PagesDeliverEveryObjectOnceInOrder)
{
    struct Case
    {
        const char* description;
        int objects;
        Uint32 firstPage;
        Uint32 page;
    } cases[] = {
        {"all in the open", 5, 10, 3},   {"exact page", 6, 3, 3},
        {"ragged last page", 7, 3, 3},   {"open takes nothing", 4, 0, 2},
        {"empty enumeration", 0, 5, 5},
    };
    for (const Case& c : cases)
    {
        EnumerationContexts contexts;
        Source source(c.objects);
        std::vector<std::string> got;
        bool end = false;
        std::string name =
            contexts.open("ann", Kind::INSTANCES, source.producer(), 30, c.firstPage, got, end);
        EXPECT_EQ(end, name.empty()) << c.description;
        while (!end)
        {
            std::vector<std::string> page = contexts.pull("ann", name, Kind::INSTANCES, c.page, end);
            EXPECT_TRUE(end || page.size() == c.page) << c.description;
            got.insert(got.end(), page.begin(), page.end());
        }
        ASSERT_EQ(got.size(), size_t(c.objects)) << c.description;
        for (int i = 0; i < c.objects; i++)
        {
            EXPECT_EQ(got[i], std::to_string(i)) << c.description;
        }
        EXPECT_EQ(contexts.size(), 0u) << c.description;
        if (!name.empty())
        {
            EXPECT_EQ(codeOf([&] { contexts.pull("ann", name, Kind::INSTANCES, 1, end); }),
                      CIM_ERR_INVALID_ENUMERATION_CONTEXT)
                << c.description << ": a drained context is gone";
        }
    }
}

TEST(EnumerationContexts, TheEnumerationRunsAheadByOnePageAtMost)
{
    EnumerationContexts contexts;
    Source source(100000);
    std::vector<std::string> first;
    bool end = false;
    std::string name = contexts.open("ann", Kind::PATHS, source.producer(), 30, 10, first, end);
    ASSERT_FALSE(end);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_LE(source.emitted.load(), 21);
    contexts.pull("ann", name, Kind::PATHS, 50, end);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_LE(source.emitted.load(), 111);
    contexts.close("ann", name);
}

TEST(EnumerationContexts, ContextsAreTheirOpenersAndEndWhenClosedOrIdle)
{
    EnumerationContexts::Limits limits;
    limits.maxPerUser = 2;
    limits.maxTotal = 3;
    EnumerationContexts contexts(limits);
    Source a(100), b(100), c(100), d(100);
    std::vector<std::string> first;
    bool end = false;
    std::string mine = contexts.open("ann", Kind::INSTANCES, a.producer(), 30, 1, first, end);
    std::string idle = contexts.open("ann", Kind::INSTANCES, b.producer(), 1, 1, first, end);

    struct Case
    {
        const char* description;
        std::function<void()> call;
        CIMStatusCode expected;
    } cases[] = {
        {"another user's context is unknown",
         [&] { contexts.pull("bob", mine, Kind::INSTANCES, 1, end); },
         CIM_ERR_INVALID_ENUMERATION_CONTEXT},
        {"another user cannot close it", [&] { contexts.close("bob", mine); },
         CIM_ERR_INVALID_ENUMERATION_CONTEXT},
        {"a guessed name is unknown", [&] { contexts.pull("ann", "0123", Kind::INSTANCES, 1, end); },
         CIM_ERR_INVALID_ENUMERATION_CONTEXT},
        {"paths from an instance enumeration",
         [&] { contexts.pull("ann", mine, Kind::PATHS, 1, end); }, CIM_ERR_FAILED},
        {"a third context of one user",
         [&] { contexts.open("ann", Kind::PATHS, c.producer(), 30, 1, first, end); },
         CIM_ERR_SERVER_LIMITS_EXCEEDED},
        {"the owner pulls", [&] { contexts.pull("ann", mine, Kind::INSTANCES, 1, end); },
         CIM_ERR_SUCCESS},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(codeOf(c.call), c.expected) << c.description;
    }

    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    EXPECT_EQ(codeOf([&] { contexts.pull("ann", idle, Kind::INSTANCES, 1, end); }),
              CIM_ERR_INVALID_ENUMERATION_CONTEXT)
        << "an idle context expires";
    // Its slot is free again.
    EXPECT_EQ(codeOf([&] { contexts.open("ann", Kind::PATHS, d.producer(), 30, 1, first, end); }),
              CIM_ERR_SUCCESS);
    contexts.close("ann", mine);
    EXPECT_EQ(codeOf([&] { contexts.close("ann", mine); }), CIM_ERR_INVALID_ENUMERATION_CONTEXT);
}

TEST(EnumerationContexts, FailuresReachTheRequestThatMeetsThem)
{
    EnumerationContexts contexts;
    std::vector<std::string> first;
    bool end = false;

    Source early(10, 0);
    EXPECT_EQ(codeOf([&] {
                  contexts.open("ann", Kind::INSTANCES, early.producer(), 30, 5, first, end);
              }),
              CIM_ERR_ACCESS_DENIED);
    EXPECT_EQ(contexts.size(), 0u);

    Source late(10, 7);
    std::string name = contexts.open("ann", Kind::INSTANCES, late.producer(), 30, 5, first, end);
    EXPECT_EQ(first.size(), 5u);
    std::vector<std::string> rest = contexts.pull("ann", name, Kind::INSTANCES, 2, end);
    EXPECT_EQ(rest.size(), 2u);
    EXPECT_EQ(codeOf([&] { contexts.pull("ann", name, Kind::INSTANCES, 5, end); }),
              CIM_ERR_ACCESS_DENIED);
    EXPECT_EQ(contexts.size(), 0u);
}

TEST(EnumerationContexts, ConcurrentPullsOnOneContextAreRefusedNotMixed)
{
    EnumerationContexts contexts;
    std::atomic<bool> release{false};
    EnumerationContexts::Producer slow = [&](const std::function<void(std::string)>& emit) {
        emit("0");
        while (!release)
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        emit("1");
    };
    std::vector<std::string> first;
    bool end = false;
    std::string name = contexts.open("ann", Kind::INSTANCES, slow, 30, 1, first, end);
    std::thread waiting([&] {
        bool done = false;
        EXPECT_EQ(contexts.pull("ann", name, Kind::INSTANCES, 1, done).size(), 1u);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(codeOf([&] { contexts.pull("ann", name, Kind::INSTANCES, 1, end); }),
              CIM_ERR_PULL_CANNOT_BE_ABANDONED);
    release = true;
    waiting.join();
}

TEST(EnumerationContexts, EndingTheTableStopsRunningEnumerations)
{
    Source endless(1 << 30);
    {
        EnumerationContexts contexts;
        std::vector<std::string> first;
        bool end = false;
        contexts.open("ann", Kind::PATHS, endless.producer(), 30, 3, first, end);
    }
    int stopped = endless.emitted.load();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(endless.emitted.load(), stopped);
}
