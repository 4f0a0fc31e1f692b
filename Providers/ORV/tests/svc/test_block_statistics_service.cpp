// The block statistics service: its one instance and GetStatisticsCollection,
// through the object manager over the hand-written model.

#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMParamValue.h>

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

// The records of one Statistics entry, each without its newline.
std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> out;
    for (size_t start = 0, end; start < text.size(); start = end + 1)
    {
        end = text.find('\n', start);
        EXPECT_NE(std::string::npos, end) << "record without its newline";
        if (end == std::string::npos)
        {
            break;
        }
        out.push_back(text.substr(start, end - start));
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

    // The Statistics entries; checks the answer's shape on the way: return
    // value 0 as sint32, then exactly a null Job and Statistics, in that order.
    std::vector<std::string> invoke(const Array<CIMParamValue>& in,
                                    const OperationContext& context,
                                    const CIMName& method = METHOD)
    {
        Array<CIMParamValue> out;
        CIMValue rc = om().invokeMethod(context, CIMNamespaceName("root/orv"), servicePath(name),
                                        method, in, out);
        EXPECT_EQ(CIMValue(Sint32(0)), rc);
        std::vector<std::string> result;
        EXPECT_EQ(2u, out.size());
        if (out.size() == 2)
        {
            EXPECT_EQ("Job", str(out[0].getParameterName()));
            EXPECT_TRUE(out[0].getValue().isNull());
            EXPECT_EQ("Statistics", str(out[1].getParameterName()));
            Array<String> s;
            out[1].getValue().get(s);
            for (Uint32 k = 0; k < s.size(); k++)
            {
                result.push_back(str(s[k]));
            }
        }
        return result;
    }

    std::vector<std::string> invokeTypes(const Array<Uint16>& elementTypes)
    {
        Array<CIMParamValue> in;
        in.append(CIMParamValue("ElementTypes", CIMValue(elementTypes)));
        return invoke(in, contextFor(READER_USER));
    }

    std::string name;
};

TEST_F(ServiceTest, OneInstanceFoundOnlyByItsFullPath)
{
    Array<CIMInstance> all = enumerateInstances(READER_USER, SERVICE);
    Array<CIMObjectPath> names = enumerateInstanceNames(READER_USER, SERVICE);
    ASSERT_EQ(1u, all.size());
    ASSERT_EQ(1u, names.size());
    EXPECT_EQ("Block Statistics Service", text(all[0], "ElementName"));
    EXPECT_EQ(name, text(getInstance(READER_USER, servicePath(name)), "Name"));
    const char* order[] = {"SystemCreationClassName", "SystemName", "CreationClassName", "Name"};
    Array<CIMKeyBinding> keys = names[0].getKeyBindings();
    ASSERT_EQ(4u, keys.size());
    for (Uint32 i = 0; i < 4; i++)
    {
        EXPECT_EQ(order[i], str(keys[i].getName().getString()));
    }
    EXPECT_EQ("ORV_StorageSystem", str(keys[0].getValue()));
    EXPECT_EQ(simHostName(), str(names[0].getHost()));

    const std::string prefix = "ORV_BlockStatisticsServiceProvider";
    CIMObjectPath wrongClass = servicePath(name);
    wrongClass.setClassName("ORV_StatisticsCollection");
    struct Case
    {
        const char* user;
        CIMObjectPath path;
        CIMStatusCode code;
        std::string message;
    } cases[] = {
        {READER_USER, servicePath(name + "X"), Pegasus::CIM_ERR_NOT_FOUND,
         prefix + " CIM Object not found." + name + "X"},
        {READER_USER, servicePath(name, false), Pegasus::CIM_ERR_INVALID_PARAMETER,
         prefix + " Name key not found."},
        {REFUSED_USER, wrongClass, Pegasus::CIM_ERR_ACCESS_DENIED,
         "Insufficient privilege for the user"},
    };
    for (const Case& c : cases)
    {
        CimOutcome o = runCatching([&]() { getInstance(c.user, c.path); });
        EXPECT_EQ(c.code, o.code) << c.message;
        EXPECT_NE(std::string::npos, o.message.find(c.message)) << o.message;
    }
}

// ---- GetStatisticsCollection -----------------------------------------------------

TEST_F(ServiceTest, RecordsFollowTheManifestOrder)
{
    std::vector<std::string> stats = invokeTypes(types({8, 10}));
    ASSERT_EQ(2u, stats.size());
    const std::string when = dateOf(1700003600);

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
}

TEST_F(ServiceTest, ElementTypeListsDecideTheEntries)
{
    // Absent: every supported type in the supported order, each entry holding
    // only records of its own type (ports share a class: 3 front-end, 2 back-end).
    std::vector<std::string> all = invoke(Array<CIMParamValue>(), contextFor(READER_USER));
    const int order[] = {2, 4, 6, 7, 8, 10, 11};
    const size_t counts[] = {1, 3, 3, 2, 4, 4, 5};
    ASSERT_EQ(7u, all.size());
    for (size_t i = 0; i < all.size(); i++)
    {
        std::vector<std::string> records = lines(all[i]);
        EXPECT_EQ(counts[i], records.size()) << order[i];
        for (const std::string& r : records)
        {
            EXPECT_EQ(";" + std::to_string(order[i]) + ";", r.substr(r.find(';'), 3 + (order[i] > 9)));
            EXPECT_EQ(order[i] == 8 ? 14u : 12u, fieldCount(r)) << r;
        }
    }

    EXPECT_TRUE(invokeTypes(types({})).empty());
    EXPECT_TRUE(invokeTypes(types({3})).empty());
    EXPECT_EQ(1u, invokeTypes(types({12, 2, 1000})).size());
    std::vector<std::string> twice = invokeTypes(types({8, 8}));
    ASSERT_EQ(2u, twice.size());
    EXPECT_EQ(twice[0], twice[1]);

    // A supported type without elements still has its (empty) entry.
    loadModelJson(R"({"vluns": {"count": 0}})");
    EXPECT_EQ(std::vector<std::string>({""}), invokeTypes(types({11})));
}

TEST_F(ServiceTest, StatisticsFormatOtherThanCsvIsRefusedAfterTheManifests)
{
    Array<CIMParamValue> in;
    in.append(CIMParamValue("StatisticsFormat", CIMValue(Uint16(1))));
    orvsim_log_capture_begin();
    CimOutcome o = runCatching([&]() { invoke(in, contextFor(READER_USER)); });
    char* taken = orvsim_log_capture_take();
    const std::string log = taken ? taken : "";
    free(taken);
    orvsim_log_capture_end();
    EXPECT_EQ(Pegasus::CIM_ERR_INVALID_PARAMETER, o.code);
    EXPECT_NE(std::string::npos,
              o.message.find("ORV_BlockStatisticsServiceProvider invalid value for parameter "
                             "StatisticsFormat"))
        << o.message;
    EXPECT_NE(std::string::npos,
              log.find("--> ORV_BlockStatisticsManifestProvider::enumerateInstances"));
    EXPECT_EQ(std::string::npos, log.find("ORV_VolumeStatisticalDataProvider"));

    // Format 2 given explicitly, and a manifest collection that names
    // nothing real, serve as usual: the system's own collection is used.
    in[0] = CIMParamValue("StatisticsFormat", CIMValue(Uint16(2)));
    in.append(CIMParamValue("ElementTypes", CIMValue(types({2}))));
    in.append(CIMParamValue(
        "ManifestCollection",
        CIMValue(instancePath("ORV_BlockStatisticsManifestCollection", "QZ_KYRO:nowhere"))));
    EXPECT_EQ(1u, invoke(in, contextFor(READER_USER)).size());

    // A null format before another spelling of it reads as no format at all,
    // as any unreadable parameter does, so CSV is served.
    in[0] = CIMParamValue("StatisticsFormat", CIMValue(CIMTYPE_UINT16, false));
    in.append(CIMParamValue("statisticsformat", CIMValue(Uint16(1))));
    EXPECT_EQ(1u, invoke(in, contextFor(READER_USER)).size());
}

TEST_F(ServiceTest, RightsAreAskedWithAddressAndLowerCaseOperation)
{
    struct Case
    {
        const char* user;
        const char* method;
        CIMStatusCode code;
        const char* message;
    } cases[] = {
        {"demo", "getstatisticscollection", Pegasus::CIM_ERR_SUCCESS, ""},
        {"noaccess", "GetStatisticsCollection", Pegasus::CIM_ERR_ACCESS_DENIED,
         "Insufficient generic privilege"},
        {"auditor", "GetStatisticsCollection", Pegasus::CIM_ERR_ACCESS_DENIED,
         "Insufficient generic privilege"},
        {"legacy", "GetStatisticsCollection", Pegasus::CIM_ERR_NOT_SUPPORTED,
         "Does not support in generic!"},
        {"locked", "GetStatisticsCollection", Pegasus::CIM_ERR_ACCESS_DENIED,
         "Insufficient privilege for the user"},
    };
    Array<CIMParamValue> in;
    in.append(CIMParamValue("ElementTypes", CIMValue(types({2}))));
    for (const Case& c : cases)
    {
        OperationContext context = contextFor(c.user);
        context.insert(ORV_ClientAddressContainer("192.0.2.7"));
        CimOutcome o = runCatching([&]() { invoke(in, context, CIMName(c.method)); });
        EXPECT_EQ(c.code, o.code) << c.user;
        EXPECT_NE(std::string::npos, o.message.find(c.message)) << c.user << ": " << o.message;
    }
    char* call = orvsim_last_call("api_authorizeCIMUser");
    ASSERT_NE(nullptr, call);
    EXPECT_EQ("api_authorizeCIMUser(\"legacy\",\"192.0.2.7\","
              "\"orv_blockstatisticsservice.getstatisticscollection\")",
              std::string(call));
    free(call);
}

} // namespace
