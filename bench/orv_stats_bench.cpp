// Time and peak memory of enumerateInstances for each statistical-data class,
// through the in-process object manager, on the simulator's default array
// and on a large one (10,000 volumes, 40,000 LUN paths).
//
// Run: orv_stats_bench [--benchmark_min_time=0.2] [--benchmark_filter=...]
// Counters per run: instances (per enumeration), peak_rss_MiB (the process's
// peak resident set during the run), peak_growth_MiB (that peak less the
// resident set just before the run's first enumeration) and
// heap_B_per_instance (heap bytes that the answer of the first enumeration
// holds, per instance: the cost of the objects themselves, which the
// resident set hides when freed heap is reused).

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/OperationContext.h>

#include <cimom/ObjectManager.h>

#include "orvsim.h"

using namespace Pegasus;

namespace
{

const CIMNamespaceName ORV_NS("root/orv");
const char* const READER = "demo";

enum Model
{
    DEFAULT_MODEL,
    LARGE_MODEL
};

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

bool useModel(Model model)
{
    static int current = -1;
    if (current == model)
    {
        return true;
    }
    if (model == DEFAULT_MODEL)
    {
        orvsim_reset();
    }
    else if (orvsim_load_model_json(LARGE_MODEL_JSON) != 0)
    {
        fprintf(stderr, "model: %s\n", orvsim_last_error());
        return false;
    }
    // Keep the library's own log quiet so that it does not skew timings
    // (a reset restores the default threshold).
    orvsim_set_log_level(1);
    current = model;
    return true;
}

// A field of /proc/self/status in KiB ("VmRSS", "VmHWM"); -1 when unknown.
long statusKiB(const char* field)
{
    FILE* f = fopen("/proc/self/status", "r");
    if (!f)
    {
        return -1;
    }
    char line[256];
    long value = -1;
    size_t n = strlen(field);
    while (fgets(line, sizeof(line), f))
    {
        if (strncmp(line, field, n) == 0 && line[n] == ':')
        {
            value = strtol(line + n + 1, NULL, 10);
            break;
        }
    }
    fclose(f);
    return value;
}

// Starts a new peak: the kernel resets VmHWM to the current resident set.
bool resetPeak()
{
    FILE* f = fopen("/proc/self/clear_refs", "w");
    if (!f)
    {
        return false;
    }
    bool ok = fputs("5", f) >= 0;
    return fclose(f) == 0 && ok;
}

Array<CIMInstance> enumerate(const CIMName& cls)
{
    OperationContext context;
    context.insert(IdentityContainer(READER));
    return objectManager().enumerateInstances(context, ORV_NS, cls, true, false, false, false,
                                              CIMPropertyList());
}

void enumerateInstances(benchmark::State& state, Model model, const char* className)
{
    if (!useModel(model))
    {
        state.SkipWithError("model not loaded");
        return;
    }
    const CIMName cls(className);
    // The peak is taken from just before a first, untimed request (which
    // also creates the provider): freed heap is kept by the allocator, so
    // later runs would hide what one enumeration needs.
    long before = statusKiB("VmRSS");
    bool peakReset = resetPeak();
    size_t heapBefore = mallinfo2().uordblks;
    Array<CIMInstance> first = enumerate(cls);
    double held = double(mallinfo2().uordblks) - double(heapBefore);
    size_t firstCount = first.size();
    first.clear();
    size_t count = 0;
    for (auto _ : state)
    {
        Array<CIMInstance> instances = enumerate(cls);
        count = instances.size();
        benchmark::DoNotOptimize(instances);
    }
    long peak = statusKiB("VmHWM");
    state.counters["instances"] = static_cast<double>(count);
    if (firstCount)
    {
        state.counters["heap_B_per_instance"] = held / double(firstCount);
    }
    state.counters["peak_rss_MiB"] = peak / 1024.0;
    if (peakReset && before >= 0)
    {
        state.counters["peak_growth_MiB"] = (peak - before) / 1024.0;
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * count));
}

const char* const CLASSES[] = {"ORV_VolumeStatisticalData", "ORV_DiskStatisticalData",
                               "ORV_PortStatisticalData",   "ORV_NodeStatisticalData",
                               "ORV_ArrayStatisticalData",  "ORV_LUNStatisticalData"};

void registerAll()
{
    const struct
    {
        Model model;
        const char* name;
    } models[] = {{DEFAULT_MODEL, "default"}, {LARGE_MODEL, "large"}};
    for (const auto& m : models)
    {
        for (const char* cls : CLASSES)
        {
            std::string name = std::string("enumerateInstances/") + m.name + "/" + cls;
            benchmark::RegisterBenchmark(name.c_str(), enumerateInstances, m.model, cls)
                ->Unit(benchmark::kMillisecond);
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    registerAll();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
    {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
