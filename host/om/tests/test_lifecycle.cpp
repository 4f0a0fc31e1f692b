// Provider life: load failures, one initialize per provider whatever the
// concurrency, one terminate at shutdown, calls back through the handle and
// the local client, and many requests at once.

#include "TestSupport.h"

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Sdk/CIMOMDispatcher.h>

#include <atomic>
#include <cstdio>
#include <fstream>
#include <thread>

PEGASUS_USING_PEGASUS;
using namespace omtest;

namespace
{

typedef std::vector<std::string> Strings;

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

bool anyContains(const Strings& lines, const std::string& part)
{
    for (const std::string& line : lines)
    {
        if (contains(line, part))
        {
            return true;
        }
    }
    return false;
}

class LifecycleTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        resetProviderEvents();
        om = makeObjectManager();
    }

    Array<CIMInstance> enumerate(const char* className, const OperationContext& context)
    {
        return om->enumerateInstances(context, NS, CIMName(className), true, false, false, false,
                                      CIMPropertyList());
    }

    String callString(const OperationContext& context, const char* method,
                      const Array<CIMParamValue>& in = Array<CIMParamValue>())
    {
        Array<CIMParamValue> out;
        om->invokeMethod(context, NS, elementPath("OMT_Widget", "W1"), CIMName(method), in, out);
        for (Uint32 i = 0; i < out.size(); i++)
        {
            if (out[i].getParameterName() == "User")
            {
                String user;
                out[i].getValue().get(user);
                return user;
            }
        }
        return String("<no User>");
    }

    std::unique_ptr<cimom::ObjectManager> om;
    OperationContext ctx = contextFor("alice", "10.1.2.3");
};

TEST_F(LifecycleTest, UnusableProvidersFailTheirClassesOnlyAndAreReported)
{
    // Library problems are known as soon as the registration is read.
    Strings atLoad = om->loadErrors();
    EXPECT_TRUE(anyContains(atLoad, "libOMNoSuchLibrary.so not found")) << atLoad.size();
    EXPECT_TRUE(anyContains(atLoad, "has no PegasusCreateProvider"));

    struct Case
    {
        const char* className;
        const char* reason;
    } cases[] = {
        {"OMT_MissingLibrary", "libOMNoSuchLibrary.so not found"},
        {"OMT_MissingSymbol", "has no PegasusCreateProvider"},
        {"OMT_NullProvider", "returned no provider"},
        {"OMT_InitFails", "OMT init refused"},
    };
    for (int round = 0; round < 2; round++) // failures stick: same answer twice
    {
        for (const Case& c : cases)
        {
            CimError e = cimError([&] { enumerate(c.className, ctx); });
            EXPECT_EQ(e.code, CIM_ERR_FAILED) << c.className;
            EXPECT_TRUE(contains(e.message, c.reason)) << c.className << ": " << e.message;
            EXPECT_TRUE(anyContains(om->loadErrors(), c.reason)) << c.className;
        }
    }
    EXPECT_EQ(countEvents("initialize:OMT_InitFailsProvider"), 1);
    EXPECT_EQ(countEvents("create:OMT_UnknownToTheModule:null"), 1);
    EXPECT_TRUE(eventsStartingWith("enumerateInstances:OMT_InitFailsProvider").empty());

    // Everything else still works.
    EXPECT_EQ(enumerate("OMT_Widget", ctx).size(), 3u);
}

TEST_F(LifecycleTest, RequestsReachingSeveralProvidersSkipThoseThatFailedToLoad)
{
    // OMT_Unreachable (under OMT_Base) and OMT_BrokenLink (referencing
    // OMT_Base) are served by providers that cannot be loaded.
    EXPECT_EQ(ids(enumerate("OMT_Base", ctx)), (Strings{"G1", "W1", "W2"}));
    EXPECT_EQ(ids(om->enumerateInstanceNames(ctx, NS, CIMName("OMT_Base"))),
              (Strings{"G1", "W1", "W2"}));

    const CIMObjectPath w1 = elementPath("OMT_Widget", "W1");
    EXPECT_EQ(ids(om->associatorNames(ctx, NS, w1, CIMName(), CIMName(), String(), String())),
              (Strings{"G1", "W2"}));
    EXPECT_EQ(om->associators(ctx, NS, w1, CIMName(), CIMName(), String(), String(), false,
                              false, CIMPropertyList())
                  .size(),
              2u);
    EXPECT_EQ(om->referenceNames(ctx, NS, w1, CIMName(), String()).size(), 2u);
    EXPECT_EQ(om->references(ctx, NS, w1, CIMName(), String(), false, false, CIMPropertyList())
                  .size(),
              2u);

    // Each failure is reported once, however many requests skip it.
    int reported = 0;
    for (const std::string& line : om->loadErrors())
    {
        reported += contains(line, "OMT_UnknownToTheModule") ? 1 : 0;
    }
    EXPECT_EQ(reported, 1);
    EXPECT_EQ(countEvents("create:OMT_UnknownToTheModule:null"), 1);
}

TEST_F(LifecycleTest, RequestsWhoseProvidersAllFailedToLoadFailWithTheReasons)
{
    // Several providers, none loadable: every reason is named.
    CimError all = cimError([&] { enumerate("OMT_Broken", ctx); });
    EXPECT_EQ(all.code, CIM_ERR_FAILED);
    for (const char* reason : {"libOMNoSuchLibrary.so not found", "has no PegasusCreateProvider",
                               "returned no provider", "OMT init refused"})
    {
        EXPECT_TRUE(contains(all.message, reason)) << all.message;
    }

    // The only association reaching an OMT_Broken object cannot be loaded.
    const CIMObjectPath broken = elementPath("OMT_InitFails", "B1");
    CimError single = cimError([&] {
        om->associatorNames(ctx, NS, broken, CIMName(), CIMName(), String(), String());
    });
    EXPECT_EQ(single.code, CIM_ERR_FAILED);
    EXPECT_TRUE(contains(single.message, "returned no provider")) << single.message;
    EXPECT_EQ(cimError([&] { om->referenceNames(ctx, NS, broken, CIMName(), String()); }).code,
              CIM_ERR_FAILED);

    // A filter that leaves no provider at all is no failure.
    EXPECT_EQ(om->associatorNames(ctx, NS, broken, CIMName("OMT_Link"), CIMName(), String(),
                                  String())
                  .size(),
              0u);
}

TEST_F(LifecycleTest, ALoadedProvidersErrorStillFailsTheRequestUnchanged)
{
    // OMT_Sloppy's provider refuses name enumerations; its subclass
    // OMT_LostSloppy's provider is missing and must not mask that.
    CimError e = cimError([&] { om->enumerateInstanceNames(ctx, NS, CIMName("OMT_Sloppy")); });
    EXPECT_EQ(e.code, CIM_ERR_NOT_SUPPORTED);
    EXPECT_TRUE(contains(e.message, "enumerateInstanceNames")) << e.message;
    EXPECT_FALSE(contains(e.message, "not available")) << e.message;
}

TEST_F(LifecycleTest, ConcurrentFirstRequestsInitializeOnce)
{
    const int threads = 8;
    std::atomic<int> ready(0), wrong(0);
    std::vector<std::thread> pool;
    for (int t = 0; t < threads; t++)
    {
        pool.emplace_back([&] {
            ready++;
            while (ready.load() < threads)
            {
                std::this_thread::yield();
            }
            if (enumerate("OMT_Widget", ctx).size() != 3u)
            {
                wrong++;
            }
        });
    }
    for (std::thread& t : pool)
    {
        t.join();
    }
    EXPECT_EQ(wrong.load(), 0);
    EXPECT_EQ(countEvents("create:OMT_WidgetProvider"), 1);
    EXPECT_EQ(countEvents("initialize:OMT_WidgetProvider"), 1);
}

TEST_F(LifecycleTest, ShutdownTerminatesEveryCreatedProviderOnce)
{
    enumerate("OMT_Widget", ctx);
    om->associatorNames(ctx, NS, elementPath("OMT_Widget", "W1"), CIMName("OMT_Link"), CIMName(),
                        String(), String());
    cimError([&] { enumerate("OMT_InitFails", ctx); });

    om->shutdown();
    EXPECT_EQ(countEvents("terminate:OMT_WidgetProvider"), 1);
    EXPECT_EQ(countEvents("terminate:OMT_LinkProvider"), 1);
    // Handed back even though its initialize failed.
    EXPECT_EQ(countEvents("terminate:OMT_InitFailsProvider"), 1);
    // Never used, never created.
    EXPECT_EQ(countEvents("create:OMT_OwnershipProvider"), 0);
    EXPECT_EQ(countEvents("terminate:OMT_OwnershipProvider"), 0);

    CimError after = cimError([&] { enumerate("OMT_Widget", ctx); });
    EXPECT_EQ(after.code, CIM_ERR_FAILED);
    EXPECT_TRUE(contains(after.message, "shut down")) << after.message;

    om->shutdown();
    om.reset();
    EXPECT_EQ(countEvents("terminate:OMT_WidgetProvider"), 1);
    EXPECT_EQ(countEvents("terminate:OMT_LinkProvider"), 1);
}

TEST_F(LifecycleTest, DestructorTerminatesToo)
{
    enumerate("OMT_Widget", ctx);
    om.reset();
    EXPECT_EQ(countEvents("terminate:OMT_WidgetProvider"), 1);
}

TEST_F(LifecycleTest, CallerIdentityReachesProvidersAndCallbacks)
{
    Array<CIMParamValue> out;
    om->invokeMethod(ctx, NS, elementPath("OMT_Widget", "W1"), CIMName("WhoAmI"),
                     Array<CIMParamValue>(), out);
    ASSERT_EQ(out.size(), 2u);
    String user, address;
    out[0].getValue().get(user);
    out[1].getValue().get(address);
    EXPECT_EQ(str(user), "alice");
    EXPECT_EQ(str(address), "10.1.2.3");

    // A request without identity is the server's own.
    EXPECT_EQ(str(callString(OperationContext(), "WhoAmI")), "");

    // Through the provider's CIMOMHandle: with the request's context the
    // nested call sees the caller, with an empty context the server.
    Array<CIMParamValue> useContext;
    useContext.append(CIMParamValue("UseContext", CIMValue(Boolean(true))));
    EXPECT_EQ(str(callString(ctx, "CallBack", useContext)), "alice");
    Array<CIMParamValue> noContext;
    noContext.append(CIMParamValue("UseContext", CIMValue(Boolean(false))));
    EXPECT_EQ(str(callString(ctx, "CallBack", noContext)), "");
}

TEST_F(LifecycleTest, HandleAndLocalClientReachTheSameProviders)
{
    CIMOMHandle handle = om->handle();
    Array<CIMObjectPath> viaHandle =
        handle.enumerateInstanceNames(OperationContext(), NS, CIMName("OMT_Base"));
    EXPECT_EQ(ids(viaHandle), (Strings{"G1", "W1", "W2"}));

    om->makeLocal();
    {
        CIMClient client;
        client.connectLocal();
        EXPECT_EQ(ids(client.enumerateInstanceNames(NS, CIMName("OMT_Widget"))),
                  (Strings{"G1", "W1", "W2"}));
        Array<CIMParamValue> out;
        client.invokeMethod(NS, elementPath("OMT_Widget", "W2"), CIMName("WhoAmI"),
                            Array<CIMParamValue>(), out);
        ASSERT_GE(out.size(), 1u);
        String user;
        out[0].getValue().get(user);
        EXPECT_EQ(str(user), "");
        client.disconnect();
    }
    om.reset();
    // The object manager withdrew itself as the local server.
    EXPECT_EQ(Sdk::getLocalDispatcher(), nullptr);
    CIMClient late;
    EXPECT_THROW(late.connectLocal(), CannotConnectException);
}

TEST_F(LifecycleTest, ManyThreadsAtOnce)
{
    const int threads = 8;
    const int rounds = 40;
    std::atomic<int> failures(0);
    std::vector<std::thread> pool;
    for (int t = 0; t < threads; t++)
    {
        pool.emplace_back([&, t] {
            std::string me = "user" + std::to_string(t);
            OperationContext mine = contextFor(me.c_str());
            for (int r = 0; r < rounds; r++)
            {
                try
                {
                    bool ok = ids(enumerate("OMT_Base", mine)) == Strings{"G1", "W1", "W2"};
                    ok = ok && ids(om->associators(mine, NS, elementPath("OMT_Widget", "W1"),
                                                   CIMName(), CIMName(), String(), String(),
                                                   false, false, CIMPropertyList())) ==
                                   Strings{"G1", "W2"};
                    ok = ok && str(callString(mine, "WhoAmI")) == me;
                    if (!ok)
                    {
                        failures++;
                    }
                }
                catch (...)
                {
                    failures++;
                }
            }
        });
    }
    for (std::thread& t : pool)
    {
        t.join();
    }
    EXPECT_EQ(failures.load(), 0);
}

TEST_F(LifecycleTest, OutOfOrderDeliveriesAreKeptAndLogged)
{
    ::testing::internal::CaptureStderr();
    Array<CIMInstance> result = enumerate("OMT_Sloppy", ctx);
    std::string log = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(ids(result), (Strings{"early", "late"}));
    EXPECT_TRUE(contains(log, "OMT_SloppyProvider delivered before processing()")) << log;
    EXPECT_TRUE(contains(log, "OMT_SloppyProvider delivered after complete()")) << log;
}

TEST(ManifestTest, LoadsGoodLinesAndReportsBadOnes)
{
    const std::string manifest = ::testing::TempDir() + "om_manifest.txt";
    {
        std::ofstream out(manifest);
        out << "# comment line\n"
            << "\n"
            << "test/one   OMTest.mof   # trailing comment\n"
            << "just-one-field\n"
            << "test/two   NoSuchFile.mof\n"
            << "registration OMTestR.mof\n";
    }
    resetProviderEvents();
    cimom::ObjectManager om;
    om.loadManifest(manifest, OM_TEST_DATA_DIR);
    std::remove(manifest.c_str());

    Strings errors = om.loadErrors();
    EXPECT_TRUE(anyContains(errors, "om_manifest.txt:4")) << errors.size();
    EXPECT_TRUE(anyContains(errors, "NoSuchFile.mof"));
    EXPECT_TRUE(om.repository().classExists(CIMNamespaceName("test/one"), CIMName("OMT_Widget")));
    // Registration named test/om, where no classes were loaded this time.
    CimError e = cimError([&] {
        om.enumerateInstances(OperationContext(), NS, CIMName("OMT_Widget"), true, false, false,
                              false, CIMPropertyList());
    });
    EXPECT_EQ(e.code, CIM_ERR_INVALID_NAMESPACE);

    EXPECT_THROW(om.loadManifest("/no/such/manifest", "/"), CIMException);
}

} // namespace
