// The class-definition cache: one object-manager call per distinct request,
// private copies, failures not kept, one fetch for concurrent first callers.

#include "ClassDefinitionCache.h"
#include "SiblingsFixture.h"

#include <ORV_InternalCacheService.h>
#include <Pegasus/Sdk/CIMOMDispatcher.h>

#include <thread>

PEGASUS_USING_PEGASUS;
using namespace orvsib_test;

namespace
{

struct Request
{
    const char* nameSpace;
    const char* className;
    bool localOnly, includeQualifiers, includeClassOrigin;
    std::vector<const char*> properties;
    bool nullList;
};

const Request VOLUME = {"root/orv", "ORV_StorageVolume", false, true, true, {}, true};

CIMClass fetch(orvsib::ClassDefinitionCache& cache, CIMOMHandle& handle, const Request& r)
{
    Array<CIMName> names;
    for (const char* name : r.properties)
    {
        names.append(CIMName(name));
    }
    return cache.get(handle, OperationContext(), CIMNamespaceName(r.nameSpace),
                     CIMName(r.className), r.localOnly, r.includeQualifiers, r.includeClassOrigin,
                     r.nullList ? CIMPropertyList() : CIMPropertyList(names));
}

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
        {"failures are not kept: the class is not in root/orv, then twice where it is",
         {{"root/orv", "ORV_InternalCache", false, true, true, {}, true},
          {"root/orv", "ORV_InternalCache", false, true, true, {}, true},
          {"root/PG_Internal", "ORV_InternalCache", false, true, true, {}, true},
          {"root/PG_Internal", "ORV_InternalCache", false, true, true, {}, true}},
         3},
    };
    for (const Case& c : cases)
    {
        CountingObjectManager om;
        CIMOMHandle handle = Sdk::makeCIMOMHandle(&om);
        orvsib::ClassDefinitionCache cache;
        for (const Request& request : c.requests)
        {
            statusOf([&] { fetch(cache, handle, request); });
        }
        EXPECT_EQ(c.expectedCalls, om.getClassCalls.load()) << c.description;
    }
}

TEST(ClassCache, ServesTheAnswerAsAPrivateCopy)
{
    CountingObjectManager om;
    CIMOMHandle handle = Sdk::makeCIMOMHandle(&om);
    orvsib::ClassDefinitionCache cache;
    const Request filtered = {"root/orv", "ORV_StorageVolume",         false, false,
                              false,      {"DeviceID", "ElementName"}, false};

    CIMClass first = fetch(cache, handle, filtered);
    EXPECT_EQ(2u, first.getPropertyCount());
    first.removeProperty(first.findProperty(CIMName("DeviceID")));

    const CIMClass second = fetch(cache, handle, filtered);
    EXPECT_EQ(2u, second.getPropertyCount());
    EXPECT_NE(PEG_NOT_FOUND, second.findProperty(CIMName("DeviceID")));
    EXPECT_EQ(1, om.getClassCalls.load());
    EXPECT_EQ(CIM_ERR_INVALID_NAMESPACE,
              statusOf(
                  [&] {
                      fetch(cache, handle, {"root/none", "X", false, false, false, {}, true});
                  }));
}

TEST(ClassCache, ConcurrentCallersShareOneFetchPerRequest)
{
    CountingObjectManager om;
    om.delay = std::chrono::milliseconds(20);
    CIMOMHandle handle = Sdk::makeCIMOMHandle(&om);
    orvsib::ClassDefinitionCache cache;
    const std::vector<Request> requests = {
        VOLUME,
        {"root/orv", "ORV_FCPort", false, true, true, {}, true},
        {"root/orv", "ORV_NodeSystem", false, false, false, {"Name"}, false},
        {"root/PG_Internal", "ORV_InternalCache", false, true, true, {}, true},
    };
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (size_t t = 0; t < 8; t++)
    {
        threads.emplace_back(
            [&, t]
            {
                for (size_t i = 0; i < 50; i++)
                {
                    const Request& request = requests[(t + i) % requests.size()];
                    if (!fetch(cache, handle, request).getClassName().equal(request.className))
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
    EXPECT_EQ(static_cast<int>(requests.size()), om.getClassCalls.load());
    EXPECT_EQ(requests.size(), cache.size());
}

TEST(ClassCache, TheServiceIsOneProcessWideCache)
{
    ASSERT_EQ(ORV_InternalCacheService::getInstance(), ORV_InternalCacheService::getInstance());
    CountingObjectManager om;
    CIMOMHandle handle = Sdk::makeCIMOMHandle(&om);
    Array<CIMName> names; // a request no other test makes
    names.append(CIMName("SystemID"));
    for (int i = 0; i < 3; i++)
    {
        const CIMClass got = ORV_InternalCacheService::getInstance()->getStoredCIMClass(
            handle, OperationContext(), CIMNamespaceName("root/orv"), CIMName("ORV_StorageSystem"),
            true, false, true, CIMPropertyList(names));
        EXPECT_EQ(1u, got.getPropertyCount());
    }
    EXPECT_EQ(1, om.getClassCalls.load());
}
