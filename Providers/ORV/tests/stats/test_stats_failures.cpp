// Refused requests, management API and semaphore failures, chunk
// boundaries and the trace of the statistical-data providers.

#include <chrono>
#include <functional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Sdk/CollectingResponseHandlers.h>

#include "StatsTestSupport.h"

using namespace orvtest;
using namespace orvstats;

namespace
{

const CIMName VOLUME("ORV_VolumeStatisticalData");
const CIMName DISK("ORV_DiskStatisticalData");
const CIMName PORT("ORV_PortStatisticalData");
const CIMName NODE("ORV_NodeStatisticalData");
const CIMName ARRAY("ORV_ArrayStatisticalData");
const CIMName LUN("ORV_LUNStatisticalData");

struct Served
{
    const char* provider;
    CIMName cls;
};

const Served SERVED[] = {
    {"ORV_VolumeStatisticalDataProvider", VOLUME}, {"ORV_DiskStatisticalDataProvider", DISK},
    {"ORV_PortStatisticalDataProvider", PORT},     {"ORV_NodeStatisticalDataProvider", NODE},
    {"ORV_ArrayStatisticalDataProvider", ARRAY},   {"ORV_LUNStatisticalDataProvider", LUN},
};

std::string volumesModel(Uint32 count)
{
    return "{\"volumes\": {\"count\": " + std::to_string(count) + "}}";
}

class StatsFailureTest : public ModuleFixture
{
protected:
    void SetUp() override
    {
        ModuleFixture::SetUp();
        loadModelFile("exact.json");
        orvsim_reset_sem_counters();
        orvsim_reset_call_counts();
    }

    void TearDown() override
    {
        expectSemaphoreBalanced();
        ModuleFixture::TearDown();
    }

    // A fault on the named call, leaving an allocated array behind so that
    // the free on the failure path is exercised.
    void failCall(const char* call, int status)
    {
        ASSERT_EQ(0, orvsim_set_fault(call, status, 0, 1)) << call;
    }
};

TEST_F(StatsFailureTest, RequestsAreRefusedBeforeAnyLibraryCall)
{
    for (const Served& s : SERVED)
    {
        SCOPED_TRACE(s.provider);
        DirectProvider dp(s.provider);
        CIMInstanceProvider& p = dp.instances();
        const std::string name = s.provider;
        const CIMObjectPath wrong = instancePath(CIMName("FOO"), "QZ_KYRO:x-Stats");
        Array<CIMKeyBinding> otherKeys;
        otherKeys.append(CIMKeyBinding(CIMName("Name"), "x", CIMKeyBinding::STRING));
        const CIMObjectPath noKey(String(), CIMNamespaceName("root/orv"), s.cls, otherKeys);
        const unsigned long waitsBefore = orvsim_sem_waits();
        Sdk::CollectingInstanceResponseHandler ih;
        Sdk::CollectingObjectPathResponseHandler ph;
        Sdk::CollectingResponseHandler rh;
        auto get = [&](const char* user, const CIMObjectPath& path)
        { p.getInstance(contextFor(user), path, false, false, CIMPropertyList(), ih); };
        struct Case
        {
            std::function<void()> call;
            CIMStatusCode code;
            std::string message;
        } cases[] = {
            // The user is checked before the class.
            {[&]() { get(REFUSED_USER, wrong); }, CIM_ERR_ACCESS_DENIED,
             "Insufficient privilege for the user"},
            // Not wrapped, even where enumeration errors are.
            {[&]() {
                 p.enumerateInstances(contextFor(READER_USER), wrong, false, false,
                                      CIMPropertyList(), ih);
             },
             CIM_ERR_NOT_SUPPORTED, name + " Invalid class nameFOO"},
            {[&]() { p.enumerateInstanceNames(contextFor(READER_USER), wrong, ph); },
             CIM_ERR_NOT_SUPPORTED, name + " Invalid class nameFOO"},
            {[&]() { get(READER_USER, noKey); }, CIM_ERR_INVALID_PARAMETER,
             name + " InstanceID key not found."},
            {[&]() { p.deleteInstance(contextFor(READER_USER), noKey, rh); }, CIM_ERR_NOT_SUPPORTED,
             name + " does not support deleteInstance."},
        };
        for (const Case& c : cases)
        {
            CimOutcome o = runCatching(c.call);
            EXPECT_EQ(c.code, o.code) << c.message;
            EXPECT_EQ(c.message, o.message);
        }
        EXPECT_EQ(waitsBefore, orvsim_sem_waits());
        EXPECT_EQ(0u, ih.processingCount() + ph.processingCount() + rh.processingCount());
    }
}

TEST_F(StatsFailureTest, LibraryFailuresAreSilent)
{
    struct Case
    {
        CIMName cls;
        const char* call;
        int status;
        Uint32 instances, names;
        const char* getId;
    } cases[] = {
        {DISK, "api_getDiskStats", API_ERR_IO, 0, 0, "QZ_KYRO:5000C50000001000-Stats"},
        {DISK, "cim_sem_wait", API_ERR_BUSY, 0, 0, "QZ_KYRO:5000C50000001000-Stats"},
        {PORT, "api_getPortStats", API_ERR_IO, 0, 0, "QZ_KYRO:P-0-1-1-Stats"},
        {PORT, "cim_sem_wait", API_ERR_DEADLOCK, 0, 0, "QZ_KYRO:P-0-1-1-Stats"},
        {LUN, "api_getVLunStats", API_ERR_NO_MEMORY, 0, 0, "QZ_KYRO:VLUN_7-Stats"},
        {LUN, "cim_sem_wait", API_ERR_BUSY, 0, 0, "QZ_KYRO:VLUN_7-Stats"},
        {NODE, "api_getNodes", API_ERR_IO, 0, 0, "QZ_KYRO:n0-Stats"},
        {NODE, "cim_sem_wait", API_ERR_BUSY, 0, 0, "QZ_KYRO:n0-Stats"},
        // Names of the array need no library call.
        {ARRAY, "api_getPortStats", API_ERR_IO, 0, 1, nullptr},
        {ARRAY, "cim_sem_wait", API_ERR_BUSY, 0, 1, nullptr},
        {VOLUME, "api_getVolumeStats_chunk", API_ERR_IO, 0, 0,
         "QZ_KYRO:0123456789ABCDEF0123456789ABCDEF-Stats"},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(std::string(str(c.cls.getString())) + " " + c.call);
        failCall(c.call, c.status);
        if (!c.cls.equal(VOLUME))
        {
            EXPECT_EQ(c.instances, enumerateInstances(READER_USER, c.cls).size());
        }
        EXPECT_EQ(c.names, enumerateInstanceNames(READER_USER, c.cls).size());
        std::string id = c.getId ? c.getId : "QZ_KYRO:" + simSystemName() + "-Stats";
        CimOutcome o =
            runCatching([&]() { getInstance(READER_USER, instancePath(c.cls, id.c_str())); });
        EXPECT_EQ(CIM_ERR_NOT_FOUND, o.code);
        orvsim_clear_faults();
        expectSemaphoreBalanced();
    }
    // The semaphore failing means the query is not made at all.
    orvsim_reset_call_counts();
    failCall("cim_sem_wait", API_ERR_BUSY);
    enumerateInstances(READER_USER, DISK);
    EXPECT_EQ(0ul, orvsim_call_count("api_getDiskStats"));
}

// Handlers whose delivery fails, with a CIM error or with anything else.
void failDelivery(bool cim)
{
    if (cim)
    {
        throw CIMException(CIM_ERR_NOT_FOUND, "boom");
    }
    throw std::runtime_error("boom");
}

class FailingHandler : public InstanceResponseHandler, public ObjectPathResponseHandler
{
public:
    explicit FailingHandler(bool cim) : _cim(cim) {}
    void processing() override {}
    void complete() override {}
    void deliver(const CIMInstance&) override
    {
        failDelivery(_cim);
    }
    void deliver(const Array<CIMInstance>&) override
    {
        failDelivery(_cim);
    }
    void deliver(const CIMObjectPath&) override
    {
        failDelivery(_cim);
    }
    void deliver(const Array<CIMObjectPath>&) override
    {
        failDelivery(_cim);
    }

private:
    bool _cim;
};

TEST_F(StatsFailureTest, OnlyVolumeNodeAndArrayWrapEnumerationErrors)
{
    for (const Served& s : SERVED)
    {
        const std::string name = s.provider;
        const bool wraps = s.cls.equal(VOLUME) || s.cls.equal(NODE) || s.cls.equal(ARRAY);
        DirectProvider dp(s.provider);
        for (bool cim : {true, false})
        {
            SCOPED_TRACE(name + (cim ? " CIM error" : " other error"));
            FailingHandler h(cim);
            CimOutcome inst = runCatching(
                [&]()
                {
                    dp.instances().enumerateInstances(contextFor(READER_USER), classPath(s.cls),
                                                      false, false, CIMPropertyList(), h);
                });
            CimOutcome names = runCatching(
                [&]() {
                    dp.instances().enumerateInstanceNames(contextFor(READER_USER), classPath(s.cls),
                                                          h);
                });
            if (!wraps)
            {
                for (const CimOutcome& o : {inst, names})
                {
                    EXPECT_EQ(cim, o.isCimException);
                    EXPECT_EQ(cim ? CIM_ERR_NOT_FOUND : CIM_ERR_SUCCESS, o.code);
                    EXPECT_EQ("boom", o.message);
                }
                continue;
            }
            EXPECT_EQ(CIM_ERR_FAILED, inst.code);
            EXPECT_EQ(CIM_ERR_FAILED, names.code);
            EXPECT_EQ(cim ? name + "::enumerateInstances - Operation failed: boom"
                          : "Unknown error",
                      inst.message);
            EXPECT_EQ(cim ? name + "::enumerateInstanceNames - Operation failed: boom"
                          : "Operation error",
                      names.message);
        }
    }
}

TEST_F(StatsFailureTest, NodePartialFailuresDegradeTheFigures)
{
    failCall("api_getPortStats", API_ERR_IO);
    Array<CIMInstance> nodes = enumerateInstances(READER_USER, NODE);
    ASSERT_EQ(3u, nodes.size());
    EXPECT_EQ(0u, get<Uint64>(nodes[0], "TotalIOs"));
    EXPECT_EQ(dateOf(0), date(nodes[0], "StatisticTime"));
    EXPECT_EQ(700u, get<Uint64>(nodes[0], "ReadHitIOs"));
    orvsim_clear_faults();

    failCall("api_getNodeStats", API_ERR_IO);
    nodes = enumerateInstances(READER_USER, NODE);
    ASSERT_EQ(3u, nodes.size());
    EXPECT_EQ(150u, get<Uint64>(nodes[0], "TotalIOs"));
    EXPECT_EQ(0u, get<Uint64>(nodes[0], "ReadHitIOs"));
    EXPECT_EQ(0u, get<Uint32>(nodes[0], "SSDCfcMax"));
    orvsim_clear_faults();

    failCall("api_getNodeCPUStats", API_ERR_NOT_FOUND);
    nodes = enumerateInstances(READER_USER, NODE);
    ASSERT_EQ(3u, nodes.size());
    EXPECT_EQ(150u, get<Uint64>(nodes[0], "TotalIOs"));
    EXPECT_TRUE(valueOf(nodes[0], "Interrupts").isNull());
    EXPECT_TRUE(valueOf(nodes[0], "TotalCPUUserTimeCounter").isNull());
    orvsim_clear_faults();

    // The CPU query is the one made outside the semaphore; the others are
    // each bracketed on their own.
    orvsim_reset_sem_counters();
    enumerateInstances(READER_USER, NODE);
    EXPECT_EQ(3ul, orvsim_sem_waits());
    // Neither a list query outside it nor a CPU query inside it.
    EXPECT_EQ(0ul, orvsim_unbracketed_calls());
}

TEST_F(StatsFailureTest, ChunkFailureEndsEnumerationAfterDeliveredChunks)
{
    loadModelJson(volumesModel(450));
    struct Case
    {
        const char* call;
        int status;
    } cases[] = {{"api_getVolumeStats_chunk", API_ERR_IO}, {"cim_sem_wait", API_ERR_BUSY}};
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.call);
        // The second chunk fails.
        ASSERT_EQ(0, orvsim_set_fault(c.call, c.status, 1, 1));
        DirectProvider dp("ORV_VolumeStatisticalDataProvider");
        Sdk::CollectingInstanceResponseHandler handler;
        CimOutcome o;
        std::string log = captureLog(
            [&]()
            {
                o = runCatching(
                    [&]()
                    {
                        dp.instances().enumerateInstances(contextFor(READER_USER),
                                                          classPath(VOLUME), false, false,
                                                          CIMPropertyList(), handler);
                    });
            });
        EXPECT_EQ(CIM_ERR_FAILED, o.code);
        EXPECT_EQ("ORV_VolumeStatisticalDataProvider::enumerateInstances - Operation failed: "
                  "Internal error.",
                  o.message);
        EXPECT_EQ("processing,deliver[200]", handler.callSequence());
        EXPECT_NE(std::string::npos,
                  log.find("ORV_VolumeStatisticalDataProvider::_buildVVInstances  getVVs_chunk() "
                           "failed, status = " +
                           std::to_string(c.status) + " \n"))
            << log;

        // Listing names just stops at the failed chunk.
        orvsim_clear_faults();
        ASSERT_EQ(0, orvsim_set_fault(c.call, c.status, 1, 1));
        Sdk::CollectingObjectPathResponseHandler names;
        dp.instances().enumerateInstanceNames(contextFor(READER_USER), classPath(VOLUME), names);
        EXPECT_EQ("processing,deliver[200],deliver[0],complete", names.callSequence());
        orvsim_clear_faults();
        expectSemaphoreBalanced();
    }
}

TEST_F(StatsFailureTest, ChunkBoundaries)
{
    struct Case
    {
        Uint32 volumes;
        const char* sequence;
    } cases[] = {
        {0, "processing,deliver[0],complete"},
        {1, "processing,deliver[1],complete"},
        {200, "processing,deliver[200],complete"},
        {201, "processing,deliver[200],deliver[1],complete"},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.volumes);
        loadModelJson(volumesModel(c.volumes));
        DirectProvider dp("ORV_VolumeStatisticalDataProvider");
        Sdk::CollectingInstanceResponseHandler instances;
        Sdk::CollectingObjectPathResponseHandler names;
        orvsim_reset_call_counts();
        dp.instances().enumerateInstances(contextFor(READER_USER), classPath(VOLUME), false, false,
                                          CIMPropertyList(), instances);
        EXPECT_EQ(c.sequence, instances.callSequence());
        // One library call per delivered chunk.
        EXPECT_EQ(instances.deliverCallCount(), orvsim_call_count("api_getVolumeStats_chunk"));
        dp.instances().enumerateInstanceNames(contextFor(READER_USER), classPath(VOLUME), names);
        EXPECT_EQ(c.sequence, names.callSequence());

        // Every volume once, in the same order in both listings.
        Array<CIMInstance> got = instances.getObjects();
        Array<CIMObjectPath> paths = names.getObjects();
        ASSERT_EQ(c.volumes, got.size());
        ASSERT_EQ(c.volumes, paths.size());
        std::set<std::string> seen;
        for (Uint32 i = 0; i < got.size(); i++)
        {
            seen.insert(instanceIdOf(got[i].getPath()));
            EXPECT_TRUE(ORV_Common::matchObjectPath(got[i].getPath(), paths[i]));
        }
        EXPECT_EQ(c.volumes, seen.size());
    }
}

TEST_F(StatsFailureTest, EveryRequestIsTracedUnderItsProviderName)
{
    for (const Served& s : SERVED)
    {
        SCOPED_TRACE(s.provider);
        const std::string name = s.provider;
        // The first request of a process also initializes the provider, whose
        // lines would come first; start it outside the capture.
        enumerateInstanceNames(READER_USER, s.cls);
        std::string log = captureLog([&]() { enumerateInstances(READER_USER, s.cls); });
        // Entry first, exit last, the build in between.
        EXPECT_EQ(0u, log.find("--> " + name + "::enumerateInstances\n")) << log.substr(0, 200);
        size_t build = log.find("--> " + name + "::_build_instances\n");
        size_t built = log.find("<-- " + name + "::_build_instances\n");
        EXPECT_NE(std::string::npos, build);
        EXPECT_LT(build, built);
        const std::string exit = "<-- " + name + "::enumerateInstances\n";
        ASSERT_GE(log.size(), exit.size());
        EXPECT_EQ(exit, log.substr(log.size() - exit.size()));

        log = captureLog([&]() { enumerateInstanceNames(READER_USER, s.cls); });
        EXPECT_EQ(0u, log.find("--> " + name + "::enumerateInstanceNames\n"));
        EXPECT_NE(std::string::npos, log.find("<-- " + name + "::_build_ref\n"));
    }
}

TEST_F(StatsFailureTest, LunGetInstanceOpensTheApiASecondTime)
{
    orvsim_reset_call_counts();
    getInstance(READER_USER, instancePath(LUN, "QZ_KYRO:VLUN_7-Stats"));
    // Once for the caller, once for the server itself.
    char* last = orvsim_last_call("api_orvOpenForCimserver");
    ASSERT_NE(nullptr, last);
    EXPECT_STREQ("api_orvOpenForCimserver(null)", last);
    free(last);

    // A refusal of the second open is only logged.
    ASSERT_EQ(0, orvsim_set_fault("api_orvOpenForCimserver", API_ERR_ACCESS, 1, 0));
    CIMInstance got;
    std::string log = captureLog(
        [&]() { got = getInstance(READER_USER, instancePath(LUN, "QZ_KYRO:VLUN_7-Stats")); });
    EXPECT_EQ("VLUN 7 Statistical Data", text(got, "ElementName"));
    EXPECT_NE(std::string::npos, log.find("ORV_LUNStatisticalDataProvider::initialize(): "
                                          "api_orvOpenForCimserver failed\n"));
}

} // namespace

namespace
{
// Sanitizers slow the instrumented code several times over; time bounds
// stretch with them (the build says by how much).
const double SANITIZER_SLOWDOWN = ORV_SANITIZER_SLOWDOWN;
} // namespace

TEST_F(StatsFailureTest, MegabyteKeysCostLinearTime)
{
    // A 1 MB InstanceID once took seconds on its way through the providers.
    // Each shape below reaches a different parser; each must be refused as
    // unknown, and a key sixteen times longer may cost about sixteen times
    // as much, no more (with room for timer noise on a loaded machine).
    const std::string bulk(1 << 20, 'k');
    const std::string hex(1 << 20, 'A');
    struct Case
    {
        CIMName cls;
        std::string prefix, fill, suffix;
    } cases[] = {
        {LUN, "QZ_KYRO:VLUN_1_", bulk, ":1:2:3_h"},
        {LUN, "QZ_KYRO:VLUN_1_v:1:2:3_", bulk, ""},
        {LUN, "", bulk, ""},
        {VOLUME, "QZ_KYRO:", hex, "-Stats"},
        {DISK, "QZ_KYRO:", hex, "-Stats"},
        {PORT, "QZ_KYRO:P-0-1-", bulk, "-Stats"},
        {NODE, "QZ_KYRO:n", bulk, "-Stats"},
        {ARRAY, "QZ_KYRO:", bulk, "-Stats"},
        {VOLUME, "QZ_KYRO:", std::string(1 << 20, '"'), "-Stats"},
    };
    auto seconds = [&](const Case& c, size_t length)
    {
        const std::string id = c.prefix + c.fill.substr(0, length) + c.suffix;
        const auto start = std::chrono::steady_clock::now();
        CimOutcome o;
        // The refusals are logged with the whole ID; kept out of the test log.
        captureLog(
            [&]() {
                o = runCatching([&]()
                                { getInstance(READER_USER, instancePath(c.cls, id.c_str())); });
            });
        EXPECT_EQ(CIM_ERR_NOT_FOUND, o.code) << o.message.substr(0, 200);
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(str(c.cls.getString()) + " " + c.prefix + "..." + c.suffix);
        const double small = seconds(c, c.fill.size() / 16);
        const double large = seconds(c, c.fill.size());
        EXPECT_LT(large, 2.0 * SANITIZER_SLOWDOWN);
        EXPECT_LT(large, 16 * 4 * small + 0.25) << small << " s for 64 KiB";
    }
}
