// GetStatisticsCollection called directly, as the server calls it, over a
// handle that passes each request on to the object manager, notes what was
// asked, and lets a test spoil what the statistics providers answer.

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Sdk/CIMOMDispatcher.h>
#include <Pegasus/Sdk/CollectingResponseHandlers.h>

#include "ModuleFixture.h"
#include "ORV_ClientAddressContainer.h"
#include "ORV_Common.h"
#include "../stats/StatsTestSupport.h"
#include "orvsim.h"

using namespace orvtest;
using namespace orvstats;

namespace
{

const CIMNamespaceName ORV_NS("root/orv");
const CIMName SERVICE("ORV_BlockStatisticsService");
const std::string PROVIDER = "ORV_BlockStatisticsServiceProvider";
const std::string VOL01 = "QZ_KYRO:0123456789ABCDEF0123456789ABCDEF-Stats";

std::string flag(Boolean b)
{
    return b ? "t" : "f";
}

class SpyDispatcher : public CIMOMDispatcher
{
public:
    explicit SpyDispatcher(CIMOMDispatcher& inner) : _inner(inner)
    {
    }

    // One line per request that shapes the answer, with its arguments.
    std::vector<std::string> asked;
    std::function<void(Array<CIMInstance>&)> spoilStatistics;
    bool hideManifestCollection = false;

    CIMClass getClass(const OperationContext& c, const CIMNamespaceName& ns, const CIMName& cn,
                      Boolean lo, Boolean iq, Boolean ico, const CIMPropertyList& pl) override
    {
        return _inner.getClass(c, ns, cn, lo, iq, ico, pl);
    }
    Array<CIMClass> enumerateClasses(const OperationContext& c, const CIMNamespaceName& ns,
                                     const CIMName& cn, Boolean di, Boolean lo, Boolean iq,
                                     Boolean ico) override
    {
        return _inner.enumerateClasses(c, ns, cn, di, lo, iq, ico);
    }
    Array<CIMName> enumerateClassNames(const OperationContext& c, const CIMNamespaceName& ns,
                                       const CIMName& cn, Boolean di) override
    {
        return _inner.enumerateClassNames(c, ns, cn, di);
    }
    CIMInstance getInstance(const OperationContext& c, const CIMNamespaceName& ns,
                            const CIMObjectPath& p, Boolean lo, Boolean iq, Boolean ico,
                            const CIMPropertyList& pl) override
    {
        return _inner.getInstance(c, ns, p, lo, iq, ico, pl);
    }
    Array<CIMInstance> enumerateInstances(const OperationContext& c, const CIMNamespaceName& ns,
                                          const CIMName& cn, Boolean di, Boolean lo, Boolean iq,
                                          Boolean ico, const CIMPropertyList& pl) override
    {
        asked.push_back("enumerateInstances " + str(cn.getString()) + " " + flag(di) + flag(lo) +
                        flag(iq) + flag(ico) + (pl.isNull() ? " all" : " some"));
        Array<CIMInstance> result = _inner.enumerateInstances(c, ns, cn, di, lo, iq, ico, pl);
        if (spoilStatistics)
        {
            spoilStatistics(result);
        }
        return result;
    }
    Array<CIMObjectPath> enumerateInstanceNames(const OperationContext& c,
                                                const CIMNamespaceName& ns,
                                                const CIMName& cn) override
    {
        asked.push_back("enumerateInstanceNames " + str(cn.getString()));
        if (hideManifestCollection)
        {
            return Array<CIMObjectPath>();
        }
        return _inner.enumerateInstanceNames(c, ns, cn);
    }
    Array<CIMObject> associators(const OperationContext& c, const CIMNamespaceName& ns,
                                 const CIMObjectPath& p, const CIMName& ac, const CIMName& rc,
                                 const String& r, const String& rr, Boolean iq, Boolean ico,
                                 const CIMPropertyList& pl) override
    {
        asked.push_back("associators " + instanceIdOf(p) + " " + str(ac.getString()) + " " +
                        str(rc.getString()) + " [" + str(r) + "][" + str(rr) + "] " + flag(iq) +
                        flag(ico) + (pl.isNull() ? " all" : " some"));
        return _inner.associators(c, ns, p, ac, rc, r, rr, iq, ico, pl);
    }
    Array<CIMObjectPath> associatorNames(const OperationContext& c, const CIMNamespaceName& ns,
                                         const CIMObjectPath& p, const CIMName& ac,
                                         const CIMName& rc, const String& r,
                                         const String& rr) override
    {
        return _inner.associatorNames(c, ns, p, ac, rc, r, rr);
    }
    Array<CIMObject> references(const OperationContext& c, const CIMNamespaceName& ns,
                                const CIMObjectPath& p, const CIMName& rc, const String& r,
                                Boolean iq, Boolean ico, const CIMPropertyList& pl) override
    {
        return _inner.references(c, ns, p, rc, r, iq, ico, pl);
    }
    Array<CIMObjectPath> referenceNames(const OperationContext& c, const CIMNamespaceName& ns,
                                        const CIMObjectPath& p, const CIMName& rc,
                                        const String& r) override
    {
        return _inner.referenceNames(c, ns, p, rc, r);
    }
    CIMValue invokeMethod(const OperationContext& c, const CIMNamespaceName& ns,
                          const CIMObjectPath& p, const CIMName& m, const Array<CIMParamValue>& in,
                          Array<CIMParamValue>& out) override
    {
        return _inner.invokeMethod(c, ns, p, m, in, out);
    }

private:
    CIMOMDispatcher& _inner;
};

class DirectServiceTest : public ModuleFixture
{
protected:
    void SetUp() override
    {
        ModuleFixture::SetUp();
        loadModelFile("exact.json");
        _spy.reset(new SpyDispatcher(om()));
        CIMOMHandle handle = Sdk::makeCIMOMHandle(_spy.get());
        _provider = createProvider(PROVIDER.c_str());
        ASSERT_NE(nullptr, _provider);
        _provider->initialize(handle);
        _spy->asked.clear();
    }

    void TearDown() override
    {
        if (_provider)
        {
            _provider->terminate();
        }
        ModuleFixture::TearDown();
    }

    CIMMethodProvider& method()
    {
        return *dynamic_cast<CIMMethodProvider*>(_provider);
    }

    CIMObjectPath service(const CIMName& className = SERVICE)
    {
        Array<CIMObjectPath> names = om().enumerateInstanceNames(contextFor(READER_USER), ORV_NS,
                                                                 SERVICE);
        CIMObjectPath path = names[0];
        path.setClassName(className);
        return path;
    }

    Array<CIMParamValue> volumesOnly()
    {
        Array<Uint16> types;
        types.append(8);
        Array<CIMParamValue> in;
        in.append(CIMParamValue("ElementTypes", CIMValue(types)));
        return in;
    }

    // The volume records, each without its newline.
    std::vector<std::string> volumeRecords(Sdk::CollectingMethodResultResponseHandler& handler)
    {
        std::vector<std::string> out;
        Array<CIMParamValue> params = handler.getParamValues();
        EXPECT_EQ(2u, params.size());
        if (params.size() != 2)
        {
            return out;
        }
        Array<String> stats;
        params[1].getValue().get(stats);
        EXPECT_EQ(1u, stats.size());
        std::string all = stats.size() ? str(stats[0]) : "";
        for (size_t start = 0, end; (end = all.find('\n', start)) != std::string::npos;
             start = end + 1)
        {
            out.push_back(all.substr(start, end - start));
        }
        return out;
    }

    std::unique_ptr<SpyDispatcher> _spy;
    CIMProvider* _provider = nullptr;
};

TEST_F(DirectServiceTest, CallerChecksComeBeforeTheMethodName)
{
    struct Case
    {
        const char* user;
        const char* method;
        CIMName className;
        CIMStatusCode code;
        std::string message;
        const char* operation; // as the rights check was asked
    } cases[] = {
        // admin may run anything, so only the name refuses it.
        {"admin", "ResetStatistics", SERVICE, Pegasus::CIM_ERR_NOT_SUPPORTED,
         PROVIDER + " does not support method ResetStatistics",
         "orv_blockstatisticsservice.resetstatistics"},
        {"noaccess", "ResetStatistics", SERVICE, Pegasus::CIM_ERR_ACCESS_DENIED,
         "Insufficient generic privilege", "orv_blockstatisticsservice.resetstatistics"},
        {REFUSED_USER, "ResetStatistics", SERVICE, Pegasus::CIM_ERR_ACCESS_DENIED,
         "Insufficient privilege for the user", nullptr},
        // The reference's class only names the operation; it is not checked.
        {"demo", "GetStatisticsCollection", CIMName("CIM_BlockStatisticsService"),
         Pegasus::CIM_ERR_SUCCESS, "", "cim_blockstatisticsservice.getstatisticscollection"},
    };
    for (const Case& c : cases)
    {
        orvsim_reset_call_counts();
        Sdk::CollectingMethodResultResponseHandler handler;
        CimOutcome o = runCatching([&]() {
            method().invokeMethod(contextFor(c.user), service(c.className), CIMName(c.method),
                                  volumesOnly(), handler);
        });
        EXPECT_EQ(c.code, o.code) << c.user << " " << c.method;
        EXPECT_NE(std::string::npos, o.message.find(c.message)) << o.message;
        char* call = orvsim_last_call("api_authorizeCIMUser");
        const std::string asked = call ? call : "";
        free(call);
        if (c.operation)
        {
            EXPECT_NE(std::string::npos, asked.find(std::string("\"") + c.operation + "\")"))
                << asked;
        }
        else
        {
            EXPECT_EQ("", asked);
        }
        if (c.code != Pegasus::CIM_ERR_SUCCESS)
        {
            EXPECT_TRUE(handler.calls().empty()) << c.user;
        }
    }
}

TEST_F(DirectServiceTest, AnswerShapeRequestsAndTrace)
{
    Array<CIMParamValue> in = volumesOnly();
    // Whatever collection the client names, the system's own one is used.
    in.append(CIMParamValue("ManifestCollection",
                            CIMValue(instancePath("ORV_BlockStatisticsManifestCollection",
                                                  "QZ_KYRO:elsewhere"))));
    Sdk::CollectingMethodResultResponseHandler handler;
    OperationContext context = contextFor(READER_USER);
    const CIMObjectPath path = service();
    std::string log = captureLog([&]() {
        method().invokeMethod(context, path, CIMName("getstatisticscollection"), in, handler);
    });

    EXPECT_EQ("processing,deliver,deliver,deliver,complete", handler.callSequence());
    EXPECT_EQ(CIMValue(Sint32(0)), handler.getReturnValue());
    Array<CIMParamValue> out = handler.getParamValues();
    ASSERT_EQ(2u, out.size());
    EXPECT_EQ("Job", str(out[0].getParameterName()));
    EXPECT_TRUE(out[0].getValue().isNull());
    EXPECT_EQ("Statistics", str(out[1].getParameterName()));

    const std::string collection = "QZ_KYRO:" + simSystemName() + "-BlockStatisticsManifestCollection";
    const std::vector<std::string> expected = {
        "enumerateInstanceNames ORV_BlockStatisticsManifestCollection",
        "associators " + collection +
            " ORV_MemberOfBlockStatisticsManifestCollection ORV_BlockStatisticsManifest [][] ff all",
        "enumerateInstances ORV_VolumeStatisticalData fftf all",
    };
    EXPECT_EQ(expected, _spy->asked);

    const std::string entry = "-->ORV_BlockStatisticsServiceProvider::invokeMethod()\n\t className "
                              "= ORV_BlockStatisticsService, methodName = getstatisticscollection\n";
    const std::string exit = "<--ORV_BlockStatisticsServiceProvider::invokeMethod()\n";
    EXPECT_EQ(0u, log.find(entry)) << log.substr(0, 200);
    EXPECT_EQ(log.size() - exit.size(), log.rfind(exit));
}

TEST_F(DirectServiceTest, UnreadableFieldsAreLeftOutAndTimeFallsBack)
{
    _spy->spoilStatistics = [](Array<CIMInstance>& stats) {
        for (Uint32 i = 0; i < stats.size(); i++)
        {
            CIMInstance& s = stats[i];
            const std::string id = str(ORV_Common::getStringProperty(s, "InstanceID"));
            if (id == VOL01)
            {
                // A null counter and a missing time.
                ORV_Common::setPropertyValueToNull(s, "ReadHitIOs", CIMTYPE_UINT64);
                s.removeProperty(s.findProperty("StatisticTime"));
            }
            else if (i == 1)
            {
                // No readable type: not a record of the requested one.
                ORV_Common::setPropertyValueToNull(s, "ElementType", CIMTYPE_UINT16);
            }
        }
    };
    Sdk::CollectingMethodResultResponseHandler handler;
    method().invokeMethod(contextFor(READER_USER), service(), CIMName("GetStatisticsCollection"),
                          volumesOnly(), handler);
    std::vector<std::string> records = volumeRecords(handler);
    // Four volumes in the model, one lost its type.
    ASSERT_EQ(3u, records.size());
    // vol01's hand-computed counters with ReadHitIOs (1) gone, separator too.
    EXPECT_EQ(VOL01 + ";8;00000000000000.000000:000;8;3;71;3;30;0;5;4;41;2;", records[0]);

    // A counter of another type is no counter: the whole call fails.
    _spy->spoilStatistics = [](Array<CIMInstance>& stats) {
        stats[0].getProperty(stats[0].findProperty("TotalIOs")).setValue(CIMValue(Uint32(8)));
    };
    Sdk::CollectingMethodResultResponseHandler failing;
    CimOutcome o = runCatching([&]() {
        method().invokeMethod(contextFor(READER_USER), service(),
                              CIMName("GetStatisticsCollection"), volumesOnly(), failing);
    });
    EXPECT_TRUE(o.thrown);
    EXPECT_TRUE(failing.calls().empty());
}

TEST_F(DirectServiceTest, WithoutAManifestCollectionNothingIsDelivered)
{
    _spy->hideManifestCollection = true;
    Sdk::CollectingMethodResultResponseHandler handler;
    EXPECT_THROW(method().invokeMethod(contextFor(READER_USER), service(),
                                       CIMName("GetStatisticsCollection"), volumesOnly(), handler),
                 IndexOutOfBoundsException);
    EXPECT_TRUE(handler.calls().empty());
}

} // namespace
