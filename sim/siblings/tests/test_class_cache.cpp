// The class-definition cache: one object-manager call per distinct request,
// copies that cannot spoil the cache, failures not remembered, thread safety.

#include "ClassDefinitionCache.h"
#include "SiblingsFixture.h"

#include <ORV_InternalCacheService.h>

#include <Pegasus/Sdk/CIMOMDispatcher.h>

#include <thread>
#include <vector>

PEGASUS_USING_PEGASUS;
using namespace orvsib_test;

namespace
{

struct Request
{
    const char* nameSpace;
    const char* className;
    bool localOnly;
    bool includeQualifiers;
    bool includeClassOrigin;
    std::vector<const char*> properties; // empty with nullList = a null list
    bool nullList;
};

CIMPropertyList listOf(const Request& request)
{
    if (request.nullList)
    {
        return CIMPropertyList();
    }
    Array<CIMName> names;
    for (const char* name : request.properties)
    {
        names.append(CIMName(name));
    }
    return CIMPropertyList(names);
}

CIMClass fetch(orvsib::ClassDefinitionCache& cache, CIMOMHandle& handle, const Request& r)
{
    return cache.get(handle, OperationContext(), CIMNamespaceName(r.nameSpace),
                     CIMName(r.className), r.localOnly, r.includeQualifiers,
                     r.includeClassOrigin, listOf(r));
}

const Request VOLUME = {"root/orv", "ORV_StorageVolume", false, true, true, {}, true};

} // namespace

TEST(ClassCache, AsksTheObjectManagerOncePerDistinctRequest)
{
    struct Case
    {
        const char* description;
        std::vector<Request> requests;
        int expectedCalls;
    };
    const std::vector<Case> cases = {
        {"same request twice", {VOLUME, VOLUME}, 1},
        {"names in other letter case",
         {VOLUME, {"ROOT/ORV", "orv_storagevolume", false, true, true, {}, true}},
         1},
        {"each flag makes its own request",
         {VOLUME,
          {"root/orv", "ORV_StorageVolume", true, true, true, {}, true},
          {"root/orv", "ORV_StorageVolume", false, false, true, {}, true},
          {"root/orv", "ORV_StorageVolume", false, true, false, {}, true}},
         4},
        {"null and empty property lists differ",
         {VOLUME, {"root/orv", "ORV_StorageVolume", false, true, true, {}, false}},
         2},
        {"property list order does not matter",
         {{"root/orv", "ORV_StorageVolume", false, true, true, {"DeviceID", "BlockSize"}, false},
          {"root/orv", "ORV_StorageVolume", false, true, true, {"BlockSize", "DeviceID"}, false}},
         1},
        {"other namespace, same class name",
         {{"root/orv", "ORV_InternalCache", false, true, true, {}, true},
          {"root/PG_Internal", "ORV_InternalCache", false, true, true, {}, true},
          {"root/PG_Internal", "ORV_InternalCache", false, true, true, {}, true}},
         // the first fails (no such class in root/orv) and is not kept
         2},
    };
    for (const Case& c : cases)
    {
        CountingDispatcher counter(objectManager());
        CIMOMHandle handle = Sdk::makeCIMOMHandle(&counter);
        orvsib::ClassDefinitionCache cache;
        for (const Request& request : c.requests)
        {
            statusOf([&] { fetch(cache, handle, request); });
        }
        EXPECT_EQ(c.expectedCalls, counter.getClassCalls.load()) << c.description;
    }
}

TEST(ClassCache, ServesWhatTheObjectManagerAnswered)
{
    CountingDispatcher counter(objectManager());
    CIMOMHandle handle = Sdk::makeCIMOMHandle(&counter);
    orvsib::ClassDefinitionCache cache;
    const Request filtered = {"root/orv", "ORV_StorageVolume", false, false, false,
                              {"DeviceID"}, false};

    const CIMClass first = fetch(cache, handle, filtered);
    const CIMClass second = fetch(cache, handle, filtered);
    const CIMClass direct =
        objectManager().getClass(OperationContext(), CIMNamespaceName("root/orv"),
                                 CIMName("ORV_StorageVolume"), false, false, false,
                                 listOf(filtered));
    EXPECT_TRUE(second.identical(direct));
    EXPECT_EQ(direct.getPropertyCount(), second.getPropertyCount());
    EXPECT_NE(PEG_NOT_FOUND, second.findProperty(CIMName("DeviceID")));
    EXPECT_EQ(PEG_NOT_FOUND, second.findProperty(CIMName("BlockSize")));
    EXPECT_EQ(1, counter.getClassCalls.load());
}

TEST(ClassCache, ACallerChangingItsCopyDoesNotChangeTheCache)
{
    CountingDispatcher counter(objectManager());
    CIMOMHandle handle = Sdk::makeCIMOMHandle(&counter);
    orvsib::ClassDefinitionCache cache;

    CIMClass mine = fetch(cache, handle, VOLUME);
    const Uint32 count = mine.getPropertyCount();
    mine.removeProperty(mine.findProperty(CIMName("DeviceID")));

    const CIMClass again = fetch(cache, handle, VOLUME);
    EXPECT_EQ(count, again.getPropertyCount());
    EXPECT_EQ(1, counter.getClassCalls.load());
}

TEST(ClassCache, FailuresReachTheCallerAndAreNotKept)
{
    CountingDispatcher counter(objectManager());
    CIMOMHandle handle = Sdk::makeCIMOMHandle(&counter);
    orvsib::ClassDefinitionCache cache;
    const Request missing = {"root/orv", "ORV_NoSuchClass", false, true, true, {}, true};
    const Request badNamespace = {"root/none", "ORV_StorageVolume", false, true, true, {}, true};

    EXPECT_EQ(CIM_ERR_NOT_FOUND, statusOf([&] { fetch(cache, handle, missing); }));
    EXPECT_EQ(CIM_ERR_NOT_FOUND, statusOf([&] { fetch(cache, handle, missing); }));
    EXPECT_EQ(CIM_ERR_INVALID_NAMESPACE, statusOf([&] { fetch(cache, handle, badNamespace); }));
    EXPECT_EQ(3, counter.getClassCalls.load());
    EXPECT_EQ(0u, cache.size());
}

TEST(ClassCache, ConcurrentCallersShareOneFetchPerRequest)
{
    CountingDispatcher counter(objectManager());
    // Slow answers make the first requests of all threads overlap.
    counter.getClassDelay = std::chrono::milliseconds(20);
    CIMOMHandle handle = Sdk::makeCIMOMHandle(&counter);
    orvsib::ClassDefinitionCache cache;
    const std::vector<Request> requests = {
        VOLUME,
        {"root/orv", "ORV_FCPort", false, true, true, {}, true},
        {"root/orv", "ORV_NodeSystem", false, false, false, {"Name"}, false},
        {"root/PG_Internal", "ORV_InternalCache", false, true, true, {}, true},
    };

    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; t++)
    {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 50; i++)
            {
                const Request& request = requests[(t + i) % requests.size()];
                const CIMClass got = fetch(cache, handle, request);
                if (!got.getClassName().equal(CIMName(request.className)))
                {
                    wrong++;
                }
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(0, wrong.load());
    EXPECT_EQ(static_cast<int>(requests.size()), counter.getClassCalls.load());
    EXPECT_EQ(requests.size(), cache.size());
}

TEST(ClassCache, TheServiceIsOneProcessWideCache)
{
    ASSERT_EQ(ORV_InternalCacheService::getInstance(), ORV_InternalCacheService::getInstance());

    CountingDispatcher counter(objectManager());
    CIMOMHandle handle = Sdk::makeCIMOMHandle(&counter);
    // A request no other test makes, so the count starts from nothing.
    Array<CIMName> names;
    names.append(CIMName("SystemID"));
    names.append(CIMName("ManagementAddress"));
    for (int i = 0; i < 3; i++)
    {
        const CIMClass got = ORV_InternalCacheService::getInstance()->getStoredCIMClass(
            handle, OperationContext(), CIMNamespaceName("root/orv"),
            CIMName("ORV_StorageSystem"), true, false, true, CIMPropertyList(names));
        EXPECT_NE(PEG_NOT_FOUND, got.findProperty(CIMName("SystemID")));
    }
    EXPECT_EQ(1, counter.getClassCalls.load());
}
