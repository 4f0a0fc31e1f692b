// The simulated array: configuration records built once per model load, and
// per-element workloads from which the counters are computed at query time.
#ifndef ORV_SIM_MODEL_H
#define ORV_SIM_MODEL_H

#include "orvapi.h"
#include "orvsim.h"

#include <cstdint>
#include <map>
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

struct Volume
{
    api_VolumeStats_t rec{}; // identity fields; counters only when fixed
    api_VVInfo_t info{};
    uint64_t wwnHi = 0;
    uint64_t wwnLo = 0;
    Workload load;
    bool fixedStats = false;
    bool fixedTime = false;
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
    api_VLunStats_t rec{};
    Workload load;
    bool fixedStats = false;
    bool fixedTime = false;
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
    // (wwnHi, wwnLo) -> index into volumes, first occurrence
    std::map<std::pair<uint64_t, uint64_t>, uint32_t> volumeByWwn;

    Clock clockAt(uint64_t nowUs) const;
    const Node* findNode(uint32_t number) const;
    const User* findUser(const std::string& name) const;
};

// Builds a model from JSON text; "{}" is the embedded default.
std::shared_ptr<const Model> buildModel(const std::string& jsonText);
std::shared_ptr<const Model> buildDefaultModel();

// Record producers: copy the element's identity and fill in the counters
// for the clock's sample time.
void fillVolume(const Volume& v, const Clock& c, api_VolumeStats_t& out);
void fillDisk(const Disk& d, const Clock& c, api_DiskStats_t& out);
void fillPort(const Port& p, const Clock& c, api_PortStats_t& out);
void fillVLun(const VLun& l, const Clock& c, api_VLunStats_t& out);
void fillNodeStats(const Model& m, const Clock& c, api_NodeStats_t& out);
void fillCpu(const Node& n, const Clock& c, cpustats& out);

// Parses "call=status[@after][*times][:alloc],..."; throws ModelError.
std::vector<FaultSpec> parseFaultSpec(const std::string& text);

} // namespace orvsim

#endif
