// The simulated array: configuration records built once per model load, and
// per-element workloads from which the counters are computed at query time.
#ifndef ORV_SIM_MODEL_H
#define ORV_SIM_MODEL_H

#include "orvapi.h"
#include "orvsim.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace orvsim
{

class ModelError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// How busy an element is. Rates vary periodically around their mean by
// `burst` (0 = steady), so cumulative counters stay monotonic.
struct Workload
{
    float iops = 0;
    float readFrac = 0.6f;
    uint32_t readBlock = 8192; // bytes per read
    uint32_t writeBlock = 8192;
    float readSvcUs = 500;
    float writeSvcUs = 800;
    float busyFrac = 0.3f;
    float qlen = 2;
    float readHitFrac = 0.7f;
    float writeHitFrac = 0.95f;
    float burst = 0.2f;
    float phase = 0; // seconds
};

// The time base shared by all records of one query.
struct Clock
{
    uint64_t nowUs = 0;
    uint64_t bootUs = 0;
    uint64_t windowUs = 300000000ULL;
    uint32_t periodSec = 600;
};

// Text fields kept once per model: each entry is the image of a fixed-size
// record field (its bytes up to the last non-NUL one), so copying it back
// into a zeroed field reproduces the field exactly. Entry 0 is empty.
class TextTable
{
public:
    TextTable();
    uint32_t add(const char* bytes, size_t size); // image of a field: trailing NULs dropped
    template <size_t N> uint32_t addField(const char (&field)[N])
    {
        static_assert(N <= 256, "the length of an entry is kept in one byte");
        return add(field, N);
    }
    // The entry as a C string: what strcmp on the original field saw.
    const char* str(uint32_t ref) const
    {
        return data_.data() + ref + 1;
    }
    template <size_t N> void copyTo(uint32_t ref, char (&field)[N]) const // field already zeroed
    {
        std::memcpy(field, str(ref),
                    std::min<size_t>(static_cast<unsigned char>(data_[ref]), N - 1));
    }
    bool equalsField(uint32_t ref, const char* bytes, size_t size) const;
    void shrink()
    {
        data_.shrink_to_fit();
    }

private:
    std::string data_; // per entry: length byte, bytes, NUL
};

// Model-given counters and sample time of the few elements that have them.
struct FixedSample
{
    bool hasTime = false;
    bool hasStats = false;
    time_t time = 0;
    api_stats_t stats{};
    api_cache_stats_t cacheRead{};
    api_cache_stats_t cacheWrite{};
};

constexpr uint32_t kNoFixed = UINT32_MAX;

// A volume keeps only what varies; fillVolume and fillVVInfo write the
// records from it (name and WWN text included) at query time.
struct Volume
{
    uint64_t wwnHi = 0;
    uint64_t wwnLo = 0;
    uint64_t sizeMiB = 0;
    uint64_t usedMiB = 0;
    double phaseSine = 0; // workloadPhaseSine(load, periodSec), kept to save a sine per query
    Workload load;
    uint32_t name = 0; // TextTable entry
    uint32_t vvID = 0;
    uint32_t statsGen = 0;
    uint32_t blockSize = 0;
    uint32_t fixed = kNoFixed; // index into Model::fixedSamples
    uint8_t started = 0;
    uint8_t thin = 0;
};

struct Disk
{
    api_DiskStats_t rec{};
    orvsim_disk_info_t info{};
    Workload load;
    bool fixedStats = false;
    bool fixedTime = false;
};

struct Port
{
    api_PortStats_t rec{};
    orvsim_port_info_t info{};
    Workload data;
    Workload ctl;
    bool fixedStats = false;
    bool fixedTime = false;
};

struct VLun
{
    double phaseSine = 0; // workloadPhaseSine(load, periodSec), kept to save a sine per query
    Workload load;
    uint32_t lunID = 0;
    uint32_t vvName = 0;   // TextTable entry, shared with the volume's name where they match
    uint32_t hostHwid = 0; // TextTable entry; hosts are few, so entries are shared
    uint32_t vlunType = 0;
    port_type_t portType{};
    uint32_t fixed = kNoFixed; // index into Model::fixedSamples
    lpid_t portID = 0;
};

struct Node
{
    api_NodeInfo_t info{};
    Workload cache;      // cache lookups per second and hit shares
    uint32_t lruBase = 0; // scale of the page list lengths
    float cpuUser = 0.2f;
    float cpuNice = 0.01f;
    float cpuSys = 0.1f;
    float intrPerSec = 20000;
    float ctxtPerSec = 40000;
    bool fixedCache = false; // cmp_cst/cmp_lru/cmp_cdev given in the model
    cmp_stats cst{};
    cmp_lru_lens lru{};
    cmp_dev_stat cdev[API_CMP_DEV_CLASSES]{};
    bool fixedCpu = false;
    cpustats cpu{};
};

struct User
{
    std::string name;
    std::string role;
    bool enabled = true;
    bool hasAuthorize = false;
    int32_t authorize = 0;
    std::vector<std::string> addresses;
};

struct FaultSpec
{
    std::string call;
    int status = 0;
    int afterN = 0;
    int times = 0;
    bool leaveAlloc = false;
    // A chunked call answers success with no records and a cursor that is
    // not 0 (status stays 0).
    bool emptyChunk = false;
};

struct Model
{
    orvsim_identity_t identity{};
    uint64_t bootTime = 1700000000; // seconds since the epoch
    uint32_t busyWindowSec = 300;
    uint32_t periodSec = 600;
    std::vector<Node> nodes;     // in node-number order
    std::vector<Port> ports;
    std::vector<Disk> disks;
    std::vector<Volume> volumes;
    std::vector<VLun> vluns;
    std::vector<User> users;
    std::vector<FaultSpec> faults;
    TextTable text;                        // volume names, VLUN names and host IDs
    std::vector<FixedSample> fixedSamples; // of volumes and VLUNs
    // Volume indexes ordered by (wwnHi, wwnLo, index), for findVolume.
    std::vector<uint32_t> volumesByWwn;

    Clock clockAt(uint64_t nowUs) const;
    const Node* findNode(uint32_t number) const;
    const User* findUser(const std::string& name) const;
    // The first volume with that WWN, or null.
    const Volume* findVolume(uint64_t wwnHi, uint64_t wwnLo) const;
};

// Builds a model from JSON text; "{}" is the embedded default.
std::shared_ptr<const Model> buildModel(const std::string& jsonText);
std::shared_ptr<const Model> buildDefaultModel();

// Where a workload's swing starts: the sine of its phase angle.
double workloadPhaseSine(const Workload& w, uint32_t periodSec);

// Record producers: write the element's identity and the counters for the
// clock's sample time into a record (all of it, padding included).
void fillVolume(const Model& m, const Volume& v, const Clock& c, api_VolumeStats_t& out);
void fillVVInfo(const Model& m, const Volume& v, api_VVInfo_t& out);
void fillDisk(const Disk& d, const Clock& c, api_DiskStats_t& out);
void fillPort(const Port& p, const Clock& c, api_PortStats_t& out);
void fillVLun(const Model& m, const VLun& l, const Clock& c, api_VLunStats_t& out);
void fillNodeStats(const Model& m, const Clock& c, api_NodeStats_t& out);
void fillCpu(const Node& n, const Clock& c, cpustats& out);

// Parses "call=status[@after][*times][:alloc],..."; throws ModelError.
std::vector<FaultSpec> parseFaultSpec(const std::string& text);

} // namespace orvsim

#endif
