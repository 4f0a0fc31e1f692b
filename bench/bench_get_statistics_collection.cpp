// Time of GetStatisticsCollection for every element type, through the
// in-process object manager, on the simulator's default array and on a large
// one (10,000 volumes, 40,000 LUN paths). Clients time out after 30 s, so the
// large run must stay well under that.
//
// Run: bench_get_statistics_collection [--benchmark_filter=...]
// Counters: records (per call) and bytes (of all record text per call).

#include <cstdio>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>

#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/OperationContext.h>

#include <cimom/ObjectManager.h>

#include "orvsim.h"

using namespace Pegasus;

namespace
{

const CIMNamespaceName ORV_NS("root/orv");

const char* const LARGE_MODEL_JSON =
    "{\"comment\": \"benchmark array\", \"volumes\": {\"count\": 10000},"
    " \"vluns\": {\"count\": 40000}}";

cimom::ObjectManager& objectManager()
{
    static std::unique_ptr<cimom::ObjectManager> om;
    if (!om)
    {
        om.reset(new cimom::ObjectManager());
        om->loadManifest(std::string(ORV_SOURCE_ROOT) + "/schema/load-order.txt", ORV_SOURCE_ROOT);
        om->makeLocal();
        for (const std::string& e : om->loadErrors())
        {
            fprintf(stderr, "load error: %s\n", e.c_str());
        }
    }
    return *om;
}

bool useModel(bool large)
{
    if (!large)
    {
        orvsim_reset();
    }
    else if (orvsim_load_model_json(LARGE_MODEL_JSON) != 0)
    {
        fprintf(stderr, "model: %s\n", orvsim_last_error());
        return false;
    }
    // The library's own log would skew the timings.
    orvsim_set_log_level(1);
    return true;
}

CIMObjectPath servicePath()
{
    Array<CIMObjectPath> names = objectManager().enumerateInstanceNames(
        [] {
            OperationContext c;
            c.insert(IdentityContainer("demo"));
            return c;
        }(),
        ORV_NS, CIMName("ORV_BlockStatisticsService"));
    return names[0];
}

void getStatisticsCollection(benchmark::State& state, bool large)
{
    if (!useModel(large))
    {
        state.SkipWithError("model not loaded");
        return;
    }
    OperationContext context;
    context.insert(IdentityContainer("demo"));
    const CIMObjectPath service = servicePath();
    size_t records = 0;
    size_t bytes = 0;
    for (auto _ : state)
    {
        Array<CIMParamValue> out;
        objectManager().invokeMethod(context, ORV_NS, service, CIMName("GetStatisticsCollection"),
                                     Array<CIMParamValue>(), out);
        records = 0;
        bytes = 0;
        for (Uint32 i = 0; i < out.size(); i++)
        {
            if (out[i].getParameterName() != "Statistics")
            {
                continue;
            }
            Array<String> stats;
            out[i].getValue().get(stats);
            for (Uint32 k = 0; k < stats.size(); k++)
            {
                bytes += stats[k].size();
                for (Uint32 c = 0; c < stats[k].size(); c++)
                {
                    records += stats[k][c] == '\n';
                }
            }
        }
    }
    state.counters["records"] = static_cast<double>(records);
    state.counters["bytes"] = static_cast<double>(bytes);
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::RegisterBenchmark("GetStatisticsCollection/default", getStatisticsCollection, false)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("GetStatisticsCollection/large", getStatisticsCollection, true)
        ->Unit(benchmark::kMillisecond)
        ->Iterations(3);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
    {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
