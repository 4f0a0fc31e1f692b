// The block statistics service: its one instance and GetStatisticsCollection,
// through the object manager over the hand-written model, and called directly
// where the handler protocol itself is checked.

#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
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

const CIMName SERVICE("ORV_BlockStatisticsService");
const CIMName METHOD("GetStatisticsCollection");

// Sample time of every element of the hand-written model.
const long SAMPLE = 1700003600;

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> out;
    size_t start = 0;
    while (start < text.size())
    {
        size_t end = text.find('\n', start);
        EXPECT_NE(std::string::npos, end) << "record without its newline: " << text.substr(start);
        if (end == std::string::npos)
        {
            break;
        }
        out.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return out;
}

size_t fieldCount(const std::string& record)
{
    size_t n = 0;
    for (char c : record)
    {
        n += c == ';';
    }
    return n;
}

struct MethodAnswer
{
    CIMValue returnValue;
    Array<CIMParamValue> out;

    std::vector<std::string> statistics() const
    {
        std::vector<std::string> result;
        for (Uint32 i = 0; i < out.size(); i++)
        {
            if (out[i].getParameterName() == "Statistics")
            {
                Array<String> s;
                out[i].getValue().get(s);
                for (Uint32 k = 0; k < s.size(); k++)
                {
                    result.push_back(str(s[k]));
                }
            }
        }
        return result;
    }
};

Array<Uint16> types(std::initializer_list<Uint16> list)
{
    Array<Uint16> a;
    for (Uint16 t : list)
    {
        a.append(t);
    }
    return a;
}

class ServiceTest : public ModuleFixture
{
protected:
    void SetUp() override
    {
        ModuleFixture::SetUp();
        loadModelFile("exact.json");
        name = simSystemName() + "-BlockStatisticsService";
    }

    CIMObjectPath servicePath(const std::string& serviceName, bool withName = true)
    {
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding("SystemCreationClassName", "ORV_StorageSystem",
                                  CIMKeyBinding::STRING));
        keys.append(CIMKeyBinding("SystemName", simSystemName().c_str(), CIMKeyBinding::STRING));
        keys.append(CIMKeyBinding("CreationClassName", "ORV_BlockStatisticsService",
                                  CIMKeyBinding::STRING));
        if (withName)
        {
            keys.append(CIMKeyBinding("Name", serviceName.c_str(), CIMKeyBinding::STRING));
        }
        return CIMObjectPath(String(), CIMNamespaceName("root/orv"), SERVICE, keys);
    }

    MethodAnswer invoke(const Array<CIMParamValue>& in, const char* user = READER_USER,
                        const CIMName& method = METHOD,
                        const OperationContext* context = nullptr)
    {
        MethodAnswer a;
        a.returnValue = om().invokeMethod(context ? *context : contextFor(user),
                                          CIMNamespaceName("root/orv"), servicePath(name),
                                          method, in, a.out);
        return a;
    }

    MethodAnswer invokeTypes(const Array<Uint16>& elementTypes)
    {
        Array<CIMParamValue> in;
        in.append(CIMParamValue("ElementTypes", CIMValue(elementTypes)));
        return invoke(in);
    }

    std::string name;
};

// ---- the instance ----------------------------------------------------------------

TEST_F(ServiceTest, OneInstanceWithItsKeysInOrder)
{
    Array<CIMInstance> all = enumerateInstances(READER_USER, SERVICE);
    ASSERT_EQ(1u, all.size());
    const CIMInstance& s = all[0];
    EXPECT_EQ("ORV_StorageSystem", text(s, "SystemCreationClassName"));
    EXPECT_EQ(simSystemName(), text(s, "SystemName"));
    EXPECT_EQ("ORV_BlockStatisticsService", text(s, "CreationClassName"));
    EXPECT_EQ(name, text(s, "Name"));
    EXPECT_EQ("Block Statistics Service", text(s, "ElementName"));

    Array<CIMObjectPath> names = enumerateInstanceNames(READER_USER, SERVICE);
    ASSERT_EQ(1u, names.size());
    const char* order[] = {"SystemCreationClassName", "SystemName", "CreationClassName", "Name"};
    for (const CIMObjectPath& p : {s.getPath(), names[0]})
    {
        EXPECT_EQ(simHostName(), str(p.getHost()));
        EXPECT_EQ("root/orv", str(p.getNameSpace().getString()));
        Array<CIMKeyBinding> keys = p.getKeyBindings();
        ASSERT_EQ(4u, keys.size());
        for (Uint32 i = 0; i < 4; i++)
        {
            EXPECT_EQ(order[i], str(keys[i].getName().getString()));
            EXPECT_EQ(CIMKeyBinding::STRING, keys[i].getType());
        }
    }
    EXPECT_TRUE(ORV_Common::matchObjectPath(s.getPath(), names[0]));

    CIMInstance got = getInstance(READER_USER, servicePath(name));
    EXPECT_EQ(name, text(got, "Name"));
}

TEST_F(ServiceTest, GetInstanceRefusals)
{
    const std::string prefix = "ORV_BlockStatisticsServiceProvider";
    CIMObjectPath wrongClass = servicePath(name);
    wrongClass.setClassName("ORV_StatisticsCollection");
    struct Case
    {
        const char* what;
        const char* user;
        CIMObjectPath path;
        CIMStatusCode code;
        std::string message;
    } cases[] = {
        {"other Name", READER_USER, servicePath(name + "X"), Pegasus::CIM_ERR_NOT_FOUND,
         prefix + " CIM Object not found." + name + "X"},
        {"no Name key", READER_USER, servicePath(name, false),
         Pegasus::CIM_ERR_INVALID_PARAMETER, prefix + " Name key not found."},
        {"refused user first", REFUSED_USER, wrongClass, Pegasus::CIM_ERR_ACCESS_DENIED,
         "Insufficient privilege for the user"},
    };
    for (const Case& c : cases)
    {
        CimOutcome o = runCatching([&]() { getInstance(c.user, c.path); });
        ASSERT_TRUE(o.thrown) << c.what;
        EXPECT_EQ(c.code, o.code) << c.what;
        EXPECT_NE(std::string::npos, o.message.find(c.message)) << c.what << ": " << o.message;
    }
}

// ---- GetStatisticsCollection -----------------------------------------------------

TEST_F(ServiceTest, RecordsFollowTheManifestOrder)
{
    MethodAnswer a = invokeTypes(types({8, 10}));
    EXPECT_EQ(CIMTYPE_SINT32, a.returnValue.getType());
    Sint32 rc = -1;
    a.returnValue.get(rc);
    EXPECT_EQ(0, rc);

    std::vector<std::string> stats = a.statistics();
    ASSERT_EQ(2u, stats.size());
    const std::string when = dateOf(SAMPLE);

    // Volume: TotalIOs, KBytesTransferred, IOTimeCounter, ReadIOs, ReadHitIOs,
    // ReadIOTimeCounter, KBytesRead, WriteIOs, WriteHitIOs, WriteIOTimeCounter,
    // KBytesWritten; vol01 did 3 reads (1023 B, 30 ticks, 1 hit) and 5 writes
    // (2049 B, 41 ticks, 4 hits).
    std::vector<std::string> volumes = lines(stats[0]);
    ASSERT_EQ(4u, volumes.size());
    EXPECT_EQ("QZ_KYRO:0123456789ABCDEF0123456789ABCDEF-Stats;8;" + when +
                  ";8;3;71;3;1;30;0;5;4;41;2;",
              volumes[0]);
    // Disk: no hit counters; drive 0:0:0 did 10 reads of 10240 B in 55 ticks.
    std::vector<std::string> disks = lines(stats[1]);
    ASSERT_EQ(4u, disks.size());
    EXPECT_EQ("QZ_KYRO:5000C50000001000-Stats;10;" + when + ";10;10;55;10;55;10;0;0;0;",
              disks[0]);
    for (const std::string& v : volumes)
    {
        EXPECT_EQ(14u, fieldCount(v)) << v;
    }
    for (const std::string& d : disks)
    {
        EXPECT_EQ(12u, fieldCount(d)) << d;
    }
}

TEST_F(ServiceTest, ElementTypeListsDecideTheEntries)
{
    // Absent: every supported type, in the supported order, each entry
    // holding only records of its own type.
    std::vector<std::string> all = invoke(Array<CIMParamValue>()).statistics();
    const int order[] = {2, 4, 6, 7, 8, 10, 11};
    ASSERT_EQ(7u, all.size());
    for (size_t i = 0; i < all.size(); i++)
    {
        std::vector<std::string> records = lines(all[i]);
        EXPECT_FALSE(records.empty()) << order[i];
        for (const std::string& r : records)
        {
            const std::string typeField = r.substr(r.find(';') + 1);
            EXPECT_EQ(std::to_string(order[i]) + ";", typeField.substr(0, typeField.find(';') + 1))
                << r;
            EXPECT_EQ(order[i] == 8 ? 14u : 12u, fieldCount(r)) << r;
        }
    }
    // Ports share a class; front-end and back-end are split by type.
    EXPECT_EQ(3u, lines(all[2]).size());
    EXPECT_EQ(2u, lines(all[3]).size());

    struct Case
    {
        const char* what;
        Array<Uint16> given;
        size_t entries;
    } cases[] = {
        {"empty list", types({}), 0},
        {"unsupported type", types({3}), 0},
        {"unsupported among supported", types({12, 2, 1000}), 1},
        {"duplicates kept", types({8, 8}), 2},
    };
    for (const Case& c : cases)
    {
        MethodAnswer a = invokeTypes(c.given);
        Sint32 rc = -1;
        a.returnValue.get(rc);
        EXPECT_EQ(0, rc) << c.what;
        ASSERT_EQ(2u, a.out.size()) << c.what;
        EXPECT_EQ(c.entries, a.statistics().size()) << c.what;
    }
    std::vector<std::string> twice = invokeTypes(types({8, 8})).statistics();
    EXPECT_EQ(twice[0], twice[1]);
}

TEST_F(ServiceTest, TypeWithoutElementsGivesAnEmptyEntry)
{
    loadModelJson(R"({"vluns": {"count": 0}})");
    std::vector<std::string> stats = invokeTypes(types({11, 2})).statistics();
    ASSERT_EQ(2u, stats.size());
    EXPECT_EQ("", stats[0]);
    EXPECT_EQ(1u, lines(stats[1]).size());
}

TEST_F(ServiceTest, StatisticsFormatOtherThanCsvIsRefusedAfterTheManifests)
{
    Array<CIMParamValue> in;
    in.append(CIMParamValue("StatisticsFormat", CIMValue(Uint16(1))));
    orvsim_log_capture_begin();
    CimOutcome o = runCatching([&]() { invoke(in); });
    char* taken = orvsim_log_capture_take();
    const std::string log = taken ? taken : "";
    free(taken);
    orvsim_log_capture_end();
    ASSERT_TRUE(o.thrown);
    EXPECT_EQ(Pegasus::CIM_ERR_INVALID_PARAMETER, o.code);
    EXPECT_NE(std::string::npos,
              o.message.find("ORV_BlockStatisticsServiceProvider invalid value for parameter "
                             "StatisticsFormat"))
        << o.message;
    EXPECT_NE(std::string::npos,
              log.find("--> ORV_BlockStatisticsManifestProvider::enumerateInstances"))
        << log;
    EXPECT_EQ(std::string::npos, log.find("ORV_VolumeStatisticalDataProvider")) << log;

    // Format 2 given explicitly, and a client's manifest collection that
    // names nothing real, both serve as usual.
    Array<CIMParamValue> csv;
    csv.append(CIMParamValue("StatisticsFormat", CIMValue(Uint16(2))));
    csv.append(CIMParamValue("ElementTypes", CIMValue(types({2}))));
    csv.append(CIMParamValue(
        "ManifestCollection",
        CIMValue(instancePath("ORV_BlockStatisticsManifestCollection", "QZ_KYRO:nowhere"))));
    EXPECT_EQ(1u, invoke(csv).statistics().size());
}

TEST_F(ServiceTest, RightsDecideBeforeTheMethodName)
{
    struct Case
    {
        const char* user;
        const char* method;
        bool thrown;
        CIMStatusCode code;
        const char* message;
    } cases[] = {
        {"admin", "GetStatisticsCollection", false, Pegasus::CIM_ERR_SUCCESS, ""},
        {"demo", "getstatisticscollection", false, Pegasus::CIM_ERR_SUCCESS, ""},
        {"noaccess", "GetStatisticsCollection", true, Pegasus::CIM_ERR_ACCESS_DENIED,
         "Insufficient generic privilege"},
        {"auditor", "GetStatisticsCollection", true, Pegasus::CIM_ERR_ACCESS_DENIED,
         "Insufficient generic privilege"},
        {"legacy", "GetStatisticsCollection", true, Pegasus::CIM_ERR_NOT_SUPPORTED,
         "Does not support in generic!"},
        {"locked", "GetStatisticsCollection", true, Pegasus::CIM_ERR_ACCESS_DENIED,
         "Insufficient privilege for the user"},
    };
    Array<CIMParamValue> in;
    in.append(CIMParamValue("ElementTypes", CIMValue(types({2}))));
    for (const Case& c : cases)
    {
        CimOutcome o = runCatching([&]() { invoke(in, c.user, CIMName(c.method)); });
        EXPECT_EQ(c.thrown, o.thrown) << c.user << ": " << o.message;
        if (c.thrown)
        {
            EXPECT_EQ(c.code, o.code) << c.user;
            EXPECT_NE(std::string::npos, o.message.find(c.message)) << c.user << ": "
                                                                      << o.message;
        }
    }
}

TEST_F(ServiceTest, RightsAreAskedWithTheCallersAddressAndLowerCaseOperation)
{
    OperationContext context = contextFor("demo");
    context.insert(ORV_ClientAddressContainer("192.0.2.7"));
    Array<CIMParamValue> in;
    in.append(CIMParamValue("ElementTypes", CIMValue(types({}))));
    invoke(in, "demo", METHOD, &context);
    char* call = orvsim_last_call("api_authorizeCIMUser");
    ASSERT_NE(nullptr, call);
    EXPECT_EQ("api_authorizeCIMUser(\"demo\",\"192.0.2.7\","
              "\"orv_blockstatisticsservice.getstatisticscollection\")",
              std::string(call));
    free(call);
}

// ---- called directly, as the server calls it -----------------------------------

class DirectService : public ServiceTest
{
protected:
    void SetUp() override
    {
        ServiceTest::SetUp();
        provider = createProvider("ORV_BlockStatisticsServiceProvider");
        ASSERT_NE(nullptr, provider);
        CIMOMHandle handle = om().handle();
        provider->initialize(handle);
    }
    void TearDown() override
    {
        if (provider)
        {
            provider->terminate();
        }
        ServiceTest::TearDown();
    }

    CIMMethodProvider& methods()
    {
        return *dynamic_cast<CIMMethodProvider*>(provider);
    }

    CIMProvider* provider = nullptr;
};

TEST_F(DirectService, JobThenStatisticsThenTheReturnValue)
{
    for (const Array<Uint16>& given : {types({}), types({4})})
    {
        Array<CIMParamValue> in;
        in.append(CIMParamValue("ElementTypes", CIMValue(given)));
        Sdk::CollectingMethodResultResponseHandler handler;
        methods().invokeMethod(contextFor(READER_USER), servicePath(name), METHOD, in, handler);
        EXPECT_EQ("", handler.protocolError());
        EXPECT_EQ("processing,deliver,deliver,deliver,complete", handler.callSequence());
        EXPECT_EQ(1u, handler.returnValueCount());
        Array<CIMParamValue> out = handler.getParamValues();
        ASSERT_EQ(2u, out.size());
        EXPECT_EQ("Job", str(out[0].getParameterName()));
        EXPECT_TRUE(out[0].getValue().isNull());
        EXPECT_EQ("Statistics", str(out[1].getParameterName()));
        Array<String> stats;
        out[1].getValue().get(stats);
        EXPECT_EQ(given.size(), stats.size());
    }
}

TEST_F(DirectService, UnknownMethodIsRefusedAfterTheRights)
{
    Sdk::CollectingMethodResultResponseHandler handler;
    CimOutcome o = runCatching([&]() {
        methods().invokeMethod(contextFor(READER_USER), servicePath(name),
                               CIMName("GetStatistics"), Array<CIMParamValue>(), handler);
    });
    EXPECT_EQ(Pegasus::CIM_ERR_NOT_SUPPORTED, o.code);
    EXPECT_EQ("ORV_BlockStatisticsServiceProvider does not support method GetStatistics",
              o.message);
    EXPECT_EQ(0u, handler.calls().size());

    // A browsing user is refused that other method by its rights first.
    CimOutcome denied = runCatching([&]() {
        methods().invokeMethod(contextFor("monitor"), servicePath(name), CIMName("CreateVolume"),
                               Array<CIMParamValue>(), handler);
    });
    EXPECT_EQ(Pegasus::CIM_ERR_ACCESS_DENIED, denied.code);
}

} // namespace
