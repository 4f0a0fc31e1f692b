// Times the simulated array's bulk queries on the full-size model: every
// VLUN in one call and every volume in chunks, as the providers ask for them.
// The clock is fixed so each iteration computes the same counters.
#include "orvapi.h"
#include "orvsim.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

namespace
{

void loadLarge()
{
    static const bool loaded = []
    {
        if (orvsim_load_model_file(ORV_SOURCE_ROOT "/sim/orvapi/models/large.json") != 0)
        {
            std::fprintf(stderr, "large.json: %s\n", orvsim_last_error());
            std::exit(1);
        }
        orvsim_set_time(1700100000);
        return true;
    }();
    (void)loaded;
}

void BM_AllVLuns(benchmark::State& state)
{
    loadLarge();
    for (auto _ : state)
    {
        cim_sem_wait();
        api_VLunsStats_t out{};
        if (api_getVLunStats(0, nullptr, API_LUN_ALL, API_NSP_ALL, API_NSP_ALL, API_NSP_ALL,
                             &out) != 0)
        {
            state.SkipWithError("api_getVLunStats failed");
        }
        benchmark::DoNotOptimize(out.stats);
        std::free(out.stats);
        cim_sem_post();
    }
    state.SetItemsProcessed(state.iterations() * orvsim_vlun_count());
}
BENCHMARK(BM_AllVLuns)->Unit(benchmark::kMillisecond);

// One volume's paths by name: a scan over every VLUN comparing names.
void BM_VLunsOfOneVolume(benchmark::State& state)
{
    loadLarge();
    for (auto _ : state)
    {
        cim_sem_wait();
        api_VLunsStats_t out{};
        api_getVLunStats(0, "vol4711", API_LUN_ALL, API_NSP_ALL, API_NSP_ALL, API_NSP_ALL, &out);
        benchmark::DoNotOptimize(out.stats);
        std::free(out.stats);
        cim_sem_post();
    }
}
BENCHMARK(BM_VLunsOfOneVolume)->Unit(benchmark::kMillisecond);

void BM_AllVolumesChunked(benchmark::State& state)
{
    loadLarge();
    const auto chunk = static_cast<uint32_t>(state.range(0));
    for (auto _ : state)
    {
        uint32_t cursor = 0;
        do
        {
            cim_sem_wait();
            api_VolumesStats_t out{};
            if (api_getVolumeStats_chunk(&out, API_WWN_ALL_VOLUMES, 0, &cursor, chunk) != 0)
            {
                state.SkipWithError("api_getVolumeStats_chunk failed");
                cursor = 0;
            }
            benchmark::DoNotOptimize(out.stats);
            std::free(out.stats);
            cim_sem_post();
        } while (cursor != 0);
    }
    state.SetItemsProcessed(state.iterations() * orvsim_volume_count());
}
BENCHMARK(BM_AllVolumesChunked)->Arg(0)->Arg(1000)->Unit(benchmark::kMillisecond);

// Volumes looked up one by one by WWN, as a GetInstance does.
void BM_VolumeByWwn(benchmark::State& state)
{
    loadLarge();
    api_VolumesStats_t all{};
    cim_sem_wait();
    api_getVolumeStats_chunk(&all, API_WWN_ALL_VOLUMES, 0, nullptr, 0);
    cim_sem_post();
    uint32_t k = 0;
    for (auto _ : state)
    {
        uint64_t hi = 0, lo = 0;
        api_wwnStringToInt(nullptr, all.stats[k].volDeviceID, &lo, &hi);
        cim_sem_wait();
        api_VolumesStats_t out{};
        api_getVolumeStats_chunk(&out, hi, lo, nullptr, 0);
        benchmark::DoNotOptimize(out.stats);
        std::free(out.stats);
        cim_sem_post();
        k = (k + 7919) % all.count;
    }
    std::free(all.stats);
}
BENCHMARK(BM_VolumeByWwn);

void BM_AllVVs(benchmark::State& state)
{
    loadLarge();
    for (auto _ : state)
    {
        cim_sem_wait();
        api_VVsInfo_t out{};
        api_getVVs_chunk(&out, nullptr, 0);
        benchmark::DoNotOptimize(out.vvs);
        std::free(out.vvs);
        cim_sem_post();
    }
}
BENCHMARK(BM_AllVVs)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
