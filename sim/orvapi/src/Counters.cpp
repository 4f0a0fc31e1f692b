// Counters as a function of time: every cumulative counter is the integral
// of a rate that swings periodically around the element's mean workload, so
// it only ever grows and two samples give the configured rate on average.
#include "Model.h"
#include "Wwn.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace orvsim
{
namespace
{

constexpr double kTwoPi = 6.283185307179586;

struct Elapsed
{
    double seconds; // integrated, rate-weighted seconds since boot
    double factor;  // current rate relative to the mean
};

// phaseSine: the sine of the workload's angle at boot, where the integral
// starts.
Elapsed elapsed(const Workload& w, const Clock& c, double phaseSine)
{
    if (c.nowUs <= c.bootUs)
    {
        return {0.0, 1.0};
    }
    const double e = static_cast<double>(c.nowUs - c.bootUs) / 1e6;
    const double a = std::clamp(static_cast<double>(w.burst), 0.0, 0.9);
    const double period = c.periodSec ? c.periodSec : 600;
    const double x = kTwoPi * std::fmod(e + w.phase, period) / period;
    const double integrated = e + a * period / kTwoPi * (std::sin(x) - phaseSine);
    return {std::max(integrated, 0.0), 1.0 + a * std::cos(x)};
}

Elapsed elapsed(const Workload& w, const Clock& c)
{
    return elapsed(w, c, workloadPhaseSine(w, c.periodSec));
}

uint64_t floorU64(double v)
{
    if (!(v > 0))
    {
        return 0;
    }
    if (v >= 1.8e19)
    {
        return UINT64_MAX;
    }
    return static_cast<uint64_t>(v);
}

// Start of the busy-accounting interval: it restarts every window, and
// now - begin always lies between one and two windows once the array has
// been up that long, which keeps the 32-bit difference positive.
uint64_t intervalBegin(const Clock& c)
{
    if (c.nowUs <= c.bootUs)
    {
        return c.nowUs;
    }
    const uint64_t e = c.nowUs - c.bootUs;
    if (c.windowUs == 0 || e < c.windowUs)
    {
        return c.bootUs;
    }
    return c.bootUs + (e / c.windowUs - 1) * c.windowUs;
}

void fillStats(const Workload& w, double phaseSine, const Clock& c, api_stats_t& s,
               api_cache_stats_t* cacheRead, api_cache_stats_t* cacheWrite)
{
    const Elapsed el = elapsed(w, c, phaseSine);
    const double iops = std::max(0.0, static_cast<double>(w.iops));
    const double readFrac = std::clamp(static_cast<double>(w.readFrac), 0.0, 1.0);
    const uint64_t reads = floorU64(iops * readFrac * el.seconds);
    const uint64_t writes = floorU64(iops * (1.0 - readFrac) * el.seconds);
    s.read.count = reads;
    s.read.bytes = reads * w.readBlock;
    s.read.ticks = floorU64(static_cast<double>(reads) * w.readSvcUs);
    s.write.count = writes;
    s.write.bytes = writes * w.writeBlock;
    s.write.ticks = floorU64(static_cast<double>(writes) * w.writeSvcUs);
    s.now = c.nowUs;
    s.begin = intervalBegin(c);
    const double busy = std::clamp(static_cast<double>(w.busyFrac) * el.factor, 0.0, 1.0);
    s.busyticks = floorU64(busy * static_cast<double>(s.now - s.begin));
    s.qlen = static_cast<uint32_t>(std::lround(std::max(0.0, w.qlen * el.factor)));
    if (cacheRead)
    {
        cacheRead->hit = floorU64(static_cast<double>(reads) *
                                  std::clamp(static_cast<double>(w.readHitFrac), 0.0, 1.0));
        cacheRead->miss = reads - std::min(reads, cacheRead->hit);
    }
    if (cacheWrite)
    {
        cacheWrite->hit = floorU64(static_cast<double>(writes) *
                                   std::clamp(static_cast<double>(w.writeHitFrac), 0.0, 1.0));
        cacheWrite->miss = writes - std::min(writes, cacheWrite->hit);
    }
}

time_t sampleSeconds(const Clock& c)
{
    return static_cast<time_t>(c.nowUs / 1000000ULL);
}

// Clears a whole record, padding included, with straight-line stores: a
// memset (or a loop the compiler turns into one) of these sizes becomes
// `rep stos`, which costs more than all the rest of a volume's identity.
template <size_t... I> void storeZeros(char* p, std::index_sequence<I...>)
{
    const uint64_t zero = 0;
    (std::memcpy(p + 8 * I, &zero, 8), ...);
}

template <class Rec> void clearRecord(Rec& r)
{
    static_assert(sizeof(Rec) % 8 == 0, "records are 8-byte aligned");
    storeZeros(reinterpret_cast<char*>(&r), std::make_index_sequence<sizeof(Rec) / 8>());
}

int32_t pages(double v)
{
    return static_cast<int32_t>(std::clamp(v, 0.0, 2.0e9));
}

} // namespace

double workloadPhaseSine(const Workload& w, uint32_t periodSec)
{
    const double period = periodSec ? periodSec : 600;
    return std::sin(kTwoPi * std::fmod(static_cast<double>(w.phase), period) / period);
}

Clock Model::clockAt(uint64_t nowUs) const
{
    Clock c;
    c.nowUs = nowUs;
    c.bootUs = bootTime * 1000000ULL;
    c.windowUs = static_cast<uint64_t>(busyWindowSec) * 1000000ULL;
    c.periodSec = periodSec;
    return c;
}

void fillVolume(const Model& m, const Volume& v, const Clock& c, api_VolumeStats_t& out)
{
    clearRecord(out);
    wwnToText(v.wwnLo, v.wwnHi, out.volDeviceID);
    out.vvID = v.vvID;
    m.text.copyTo(v.name, out.vvName);
    out.vvStarted = v.started;
    out.stats_gen = v.statsGen;
    const FixedSample* f = v.fixed == kNoFixed ? nullptr : &m.fixedSamples[v.fixed];
    out.time = f && f->hasTime ? f->time : sampleSeconds(c);
    if (f && f->hasStats)
    {
        out.stats = f->stats;
        out.cacheRead = f->cacheRead;
        out.cacheWrite = f->cacheWrite;
    }
    else
    {
        fillStats(v.load, v.phaseSine, c, out.stats, &out.cacheRead, &out.cacheWrite);
    }
}

void fillVVInfo(const Model& m, const Volume& v, api_VVInfo_t& out)
{
    clearRecord(out);
    // This copy of the name always ended at its first NUL.
    const char* name = m.text.str(v.name);
    std::memcpy(out.vvName, name, strnlen(name, sizeof out.vvName - 1));
    wwnToText(v.wwnLo, v.wwnHi, out.vvWWN);
    out.vvID = v.vvID;
    out.started = v.started;
    out.thin = v.thin;
    out.blockSize = v.blockSize;
    out.sizeMiB = v.sizeMiB;
    out.usedMiB = v.usedMiB;
}

void fillDisk(const Disk& d, const Clock& c, api_DiskStats_t& out)
{
    out = d.rec;
    if (!d.fixedTime)
    {
        out.time = sampleSeconds(c);
    }
    if (!d.fixedStats)
    {
        fillStats(d.load, workloadPhaseSine(d.load, c.periodSec), c, out.stats, nullptr, nullptr);
    }
}

void fillPort(const Port& p, const Clock& c, api_PortStats_t& out)
{
    out = p.rec;
    if (!p.fixedTime)
    {
        out.time = sampleSeconds(c);
    }
    if (!p.fixedStats)
    {
        fillStats(p.data, workloadPhaseSine(p.data, c.periodSec), c, out.dataStats, nullptr,
                  nullptr);
        fillStats(p.ctl, workloadPhaseSine(p.ctl, c.periodSec), c, out.ctlStats, nullptr, nullptr);
    }
}

void fillVLun(const Model& m, const VLun& l, const Clock& c, api_VLunStats_t& out)
{
    clearRecord(out);
    out.lunID = l.lunID;
    m.text.copyTo(l.vvName, out.vvName);
    out.portID = l.portID;
    out.vlunType = l.vlunType;
    out.portType = l.portType;
    m.text.copyTo(l.hostHwid, out.host_hwid);
    const FixedSample* f = l.fixed == kNoFixed ? nullptr : &m.fixedSamples[l.fixed];
    out.time = f && f->hasTime ? f->time : sampleSeconds(c);
    if (f && f->hasStats)
    {
        out.stats = f->stats;
    }
    else
    {
        fillStats(l.load, l.phaseSine, c, out.stats, nullptr, nullptr);
    }
}

void fillNodeStats(const Model& m, const Clock& c, api_NodeStats_t& out)
{
    std::memset(&out, 0, sizeof out);
    // Cache flush limits scale with the drives of each class behind a node.
    uint32_t perClass[API_CMP_DEV_CLASSES] = {};
    for (const Disk& d : m.disks)
    {
        static const char* const kClasses[] = {"", "FC10K", "NL", "FC15K", "SSD"};
        for (int k = 1; k <= 4; ++k)
        {
            if (std::strcmp(d.info.deviceClass, kClasses[k]) == 0)
            {
                ++perClass[k];
            }
        }
    }
    const uint32_t nodeCount = m.nodes.empty() ? 1 : static_cast<uint32_t>(m.nodes.size());
    for (const Node& n : m.nodes)
    {
        const uint32_t i = n.info.nodeID;
        if (i >= API_MAX_NODES || !n.info.online)
        {
            continue;
        }
        out.cmp_online |= 1U << i;
        out.cmp_time[i] = static_cast<uint32_t>(c.nowUs / 1000000ULL);
        if (n.fixedCache)
        {
            out.cmp_cst[i] = n.cst;
            out.cmp_lru[i] = n.lru;
            std::memcpy(out.cmp_cdev[i], n.cdev, sizeof n.cdev);
            continue;
        }
        api_stats_t s{};
        api_cache_stats_t rd{}, wr{};
        fillStats(n.cache, workloadPhaseSine(n.cache, c.periodSec), c, s, &rd, &wr);
        cmp_stats& cst = out.cmp_cst[i];
        cst.cmp_total_ios[0] = s.read.count;
        cst.cmp_total_ios[1] = s.write.count;
        cst.cmp_hits[0] = rd.hit;
        cst.cmp_hits[1] = wr.hit;
        cst.cmp_blklck[0] = s.read.count / 50;
        cst.cmp_blklck[1] = s.write.count / 20;

        const double g = elapsed(n.cache, c).factor; // dirty lists swell with load
        const double b = n.lruBase;
        cmp_lru_lens& l = out.cmp_lru[i];
        l.lru_free_anon_len = pages(b * 0.30 / g);
        l.lru_tmp_anon_len = pages(b * 0.01);
        l.lru_clean_len = pages(b * 0.45);
        l.lru_w1_len = pages(b * 0.05 * g);
        l.lru_wn_len = pages(b * 0.03 * g);
        l.lru_ws_len = pages(b * 0.01 * g);
        l.lru_ldwrt_len = pages(b * 0.005 * g);
        l.lru_dcow_pend_len = pages(b * 0.001 * g);
        l.lru_dcow_proc_len = pages(b * 0.0005 * g);
        for (int k = 0; k < API_LRU_SUBLISTS; ++k)
        {
            l.lru_cr_len[k] = pages(b * 0.002);
            l.lru_ddd_dirty_len[k] = pages(b * 0.0005 * g);
            l.lru_ddd_clean_len[k] = pages(b * 0.001);
            l.lru_ddd_proc_len[k] = pages(b * 0.0001 * g);
        }
        l.lru_crc_dirty_len = pages(b * 0.002 * g);
        l.lru_crc_clean_len = pages(b * 0.004);
        l.lru_dedup_dirty_len = pages(b * 0.001 * g);
        l.lru_dedup_clean_len = pages(b * 0.003);
        l.lru_dedup_proc_len = pages(b * 0.0002 * g);
        l.lru_rcpy_primary_len = pages(b * 0.0003);
        l.lru_rcpy_secondary_len = pages(b * 0.0003);
        l.lru_rcpy_reserve_len = pages(b * 0.001);

        for (int k = 1; k <= 4; ++k)
        {
            cmp_dev_stat& d = out.cmp_cdev[i][k];
            if (perClass[k] == 0)
            {
                continue;
            }
            d.cdev_cfc_max = pages(2048.0 * perClass[k] / nodeCount + 1024);
            d.cdev_cfc_dirty = pages(d.cdev_cfc_max * std::clamp(0.2 * g, 0.0, 1.0));
            d.cdev_dack = pages(g > 1.15 ? (g - 1.15) * 100.0 * perClass[k] / nodeCount : 0.0);
        }
    }
}

void fillCpu(const Node& n, const Clock& c, cpustats& out)
{
    if (n.fixedCpu)
    {
        out = n.cpu;
        return;
    }
    std::memset(&out, 0, sizeof out);
    out.cpustat_now = static_cast<uint32_t>(c.nowUs / 1000000ULL);
    out.cpustat_ns = static_cast<uint32_t>(c.nowUs % 1000000ULL) * 1000U;
    out.cpustat_ncpus = std::min<uint32_t>(n.info.ncpus, API_MAX_CPUS);
    const double up = c.nowUs > c.bootUs ? (c.nowUs - c.bootUs) / 1e6 : 0.0;
    const double jiffies = up * 100.0;
    for (uint32_t i = 0; i < out.cpustat_ncpus; ++i)
    {
        // CPU 0 takes the interrupts, so it is a little busier.
        const double skew = i == 0 ? 1.2 : 1.0 - 0.01 * (i % 8);
        const double user = std::min(0.9, n.cpuUser * skew);
        const double nice = n.cpuNice;
        const double sys = std::min(0.5, n.cpuSys * skew);
        out.cpustat_user[i] = floorU64(jiffies * user);
        out.cpustat_nice[i] = floorU64(jiffies * nice);
        out.cpustat_sys[i] = floorU64(jiffies * sys);
        out.cpustat_idle[i] = floorU64(jiffies * std::max(0.0, 1.0 - user - nice - sys));
    }
    out.cpustat_intr = floorU64(up * n.intrPerSec);
    out.cpustat_ctxt = floorU64(up * n.ctxtPerSec);
    out.cpustat_btime = c.bootUs / 1000000ULL;
    out.cpustat_procs = floorU64(up / 3.0);
}

} // namespace orvsim
