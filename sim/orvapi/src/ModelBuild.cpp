// Building a model: generate every section from its count, then let the
// JSON items overwrite the generated element at the same position.
#include "Model.h"
#include "Wwn.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <arpa/inet.h>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <strings.h>
#include <tuple>
#include <unordered_map>

namespace orvsim
{
namespace
{

using json = nlohmann::json;

// Upper bounds that keep a mistyped count from exhausting memory.
constexpr uint64_t kMaxVolumes = 262144;
constexpr uint64_t kMaxVLuns = 1048576;
constexpr uint64_t kMaxDisks = 65536;
constexpr uint64_t kMaxPorts = API_MAX_NODES * 16 * 8;

// ---- deterministic pseudo-random numbers --------------------------------

uint64_t mix(uint64_t x)
{
    x += 0x9E3779B97F4A7C15ULL;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ULL;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBULL;
    return x ^ (x >> 31);
}

double unit(uint64_t kind, uint64_t index, uint64_t salt = 0)
{
    return static_cast<double>(mix(kind * 0x100000001B3ULL ^ mix(index) ^ (salt << 48)) >> 11) /
           9007199254740992.0;
}

enum Kind : uint64_t
{
    kVolume = 1,
    kDisk,
    kPort,
    kVLun,
    kNode
};

// ---- JSON access with paths in the messages -----------------------------

[[noreturn]] void fail(const std::string& path, const std::string& what)
{
    throw ModelError(path + ": " + what);
}

void checkKeys(const json& j, const std::string& path, std::initializer_list<const char*> allowed)
{
    if (!j.is_object())
    {
        fail(path, "expected an object");
    }
    for (auto it = j.begin(); it != j.end(); ++it)
    {
        bool known = false;
        for (const char* a : allowed)
        {
            known = known || it.key() == a;
        }
        if (!known)
        {
            fail(path, "unknown key \"" + it.key() + "\"");
        }
    }
}

// Integers may be JSON numbers or strings ("0xFFFC", "-5").
uint64_t asU64(const json& j, const std::string& path)
{
    if (j.is_number_unsigned())
    {
        return j.get<uint64_t>();
    }
    if (j.is_number_integer())
    {
        const int64_t v = j.get<int64_t>();
        if (v < 0)
        {
            fail(path, "must not be negative");
        }
        return static_cast<uint64_t>(v);
    }
    if (j.is_string())
    {
        const std::string s = j.get<std::string>();
        char* end = nullptr;
        errno = 0;
        const unsigned long long v = std::strtoull(s.c_str(), &end, 0);
        if (s.empty() || *end != '\0' || errno != 0 || s[0] == '-')
        {
            fail(path, "not an unsigned integer: \"" + s + "\"");
        }
        return v;
    }
    fail(path, "expected an unsigned integer");
}

int64_t asI64(const json& j, const std::string& path)
{
    if (j.is_number_integer())
    {
        return j.get<int64_t>();
    }
    if (j.is_string())
    {
        const std::string s = j.get<std::string>();
        char* end = nullptr;
        errno = 0;
        const long long v = std::strtoll(s.c_str(), &end, 0);
        if (s.empty() || *end != '\0' || errno != 0)
        {
            fail(path, "not an integer: \"" + s + "\"");
        }
        return v;
    }
    fail(path, "expected an integer");
}

uint64_t asU64Max(const json& j, const std::string& path, uint64_t max)
{
    const uint64_t v = asU64(j, path);
    if (v > max)
    {
        fail(path, "larger than " + std::to_string(max));
    }
    return v;
}

double asNumber(const json& j, const std::string& path)
{
    if (!j.is_number())
    {
        fail(path, "expected a number");
    }
    return j.get<double>();
}

bool asBool(const json& j, const std::string& path)
{
    if (j.is_boolean())
    {
        return j.get<bool>();
    }
    if (j.is_number_integer())
    {
        return j.get<int64_t>() != 0;
    }
    fail(path, "expected true or false");
}

std::string asString(const json& j, const std::string& path)
{
    if (!j.is_string())
    {
        fail(path, "expected a string");
    }
    return j.get<std::string>();
}

void copyText(char* dst, size_t size, const std::string& s, const std::string& path)
{
    if (s.size() >= size)
    {
        fail(path, "longer than " + std::to_string(size - 1) + " characters");
    }
    std::memset(dst, 0, size);
    std::memcpy(dst, s.data(), s.size());
}

template <size_t N>
void setText(char (&dst)[N], const std::string& s)
{
    std::memset(dst, 0, N);
    std::memcpy(dst, s.data(), std::min(s.size(), N - 1));
}

std::string format(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
std::string format(const char* fmt, ...)
{
    char buf[256];
    va_list ap;
    va_start(ap, fmt);
    std::vsnprintf(buf, sizeof buf, fmt, ap);
    va_end(ap);
    return buf;
}

// Reads an enum given as a number or as one of the names.
int64_t asEnum(const json& j, const std::string& path,
               std::initializer_list<std::pair<const char*, int64_t>> names)
{
    if (j.is_string())
    {
        const std::string s = j.get<std::string>();
        for (const auto& n : names)
        {
            if (strcasecmp(s.c_str(), n.first) == 0)
            {
                return n.second;
            }
        }
    }
    return asI64(j, path);
}

void readStatsData(const json& j, const std::string& path, api_stats_data_t& d)
{
    checkKeys(j, path, {"count", "bytes", "ticks"});
    d.count = j.contains("count") ? asU64(j["count"], path + ".count") : 0;
    d.bytes = j.contains("bytes") ? asU64(j["bytes"], path + ".bytes") : 0;
    d.ticks = j.contains("ticks") ? asU64(j["ticks"], path + ".ticks") : 0;
}

void readStats(const json& j, const std::string& path, api_stats_t& s)
{
    checkKeys(j, path, {"read", "write", "begin", "now", "busyticks", "qlen"});
    s = api_stats_t{};
    if (j.contains("read"))
    {
        readStatsData(j["read"], path + ".read", s.read);
    }
    if (j.contains("write"))
    {
        readStatsData(j["write"], path + ".write", s.write);
    }
    s.begin = j.contains("begin") ? asU64(j["begin"], path + ".begin") : 0;
    s.now = j.contains("now") ? asU64(j["now"], path + ".now") : 0;
    s.busyticks = j.contains("busyticks") ? asU64(j["busyticks"], path + ".busyticks") : 0;
    s.qlen = j.contains("qlen") ? static_cast<uint32_t>(asU64Max(j["qlen"], path + ".qlen", UINT32_MAX))
                                : 0;
}

void readCache(const json& j, const std::string& path, api_cache_stats_t& c)
{
    checkKeys(j, path, {"hit", "miss"});
    c.hit = j.contains("hit") ? asU64(j["hit"], path + ".hit") : 0;
    c.miss = j.contains("miss") ? asU64(j["miss"], path + ".miss") : 0;
}

void readWorkload(const json& j, const std::string& path, Workload& w)
{
    checkKeys(j, path,
              {"iops", "readPct", "readBlock", "writeBlock", "readSvcUs", "writeSvcUs", "busyPct",
               "qlen", "readHitPct", "writeHitPct", "burst", "phase"});
    auto num = [&](const char* key, float& dst, double scale = 1.0) {
        if (j.contains(key))
        {
            const double v = asNumber(j[key], path + "." + key);
            if (v < 0)
            {
                fail(path + "." + key, "must not be negative");
            }
            dst = static_cast<float>(v * scale);
        }
    };
    num("iops", w.iops);
    num("readPct", w.readFrac, 0.01);
    num("readSvcUs", w.readSvcUs);
    num("writeSvcUs", w.writeSvcUs);
    num("busyPct", w.busyFrac, 0.01);
    num("qlen", w.qlen);
    num("readHitPct", w.readHitFrac, 0.01);
    num("writeHitPct", w.writeHitFrac, 0.01);
    num("burst", w.burst);
    num("phase", w.phase);
    if (j.contains("readBlock"))
    {
        w.readBlock = static_cast<uint32_t>(asU64Max(j["readBlock"], path + ".readBlock", 1 << 24));
    }
    if (j.contains("writeBlock"))
    {
        w.writeBlock = static_cast<uint32_t>(asU64Max(j["writeBlock"], path + ".writeBlock", 1 << 24));
    }
    if (w.readFrac > 1 || w.busyFrac > 1 || w.readHitFrac > 1 || w.writeHitFrac > 1)
    {
        fail(path, "percentages must lie between 0 and 100");
    }
    if (w.burst > 0.9f)
    {
        fail(path + ".burst", "must lie between 0 and 0.9");
    }
}

time_t readTime(const json& j, const std::string& path)
{
    return static_cast<time_t>(asI64(j, path));
}

// A section is {"count": n, "items": [...]}; items alone set the count.
size_t sectionCount(const json& root, const char* name, size_t dflt, uint64_t max)
{
    if (!root.contains(name))
    {
        return dflt;
    }
    const json& s = root[name];
    const std::string path = name;
    checkKeys(s, path, {"count", "items"});
    size_t count = dflt;
    if (s.contains("items"))
    {
        if (!s["items"].is_array())
        {
            fail(path + ".items", "expected an array");
        }
        count = s["items"].size();
    }
    if (s.contains("count"))
    {
        count = static_cast<size_t>(asU64Max(s["count"], path + ".count", max));
        if (s.contains("items") && s["items"].size() > count)
        {
            fail(path, "more items than count");
        }
    }
    if (count > max)
    {
        fail(path, "more than " + std::to_string(max) + " elements");
    }
    return count;
}

const json* sectionItem(const json& root, const char* name, size_t i)
{
    if (!root.contains(name) || !root[name].contains("items"))
    {
        return nullptr;
    }
    const json& items = root[name]["items"];
    return i < items.size() ? &items[i] : nullptr;
}

// ---- identity -----------------------------------------------------------

void buildIdentity(const json& root, Model& m)
{
    orvsim_identity_t& id = m.identity;
    setText(id.systemName, "ARRAY1");
    setText(id.hostName, "array1.example.com");
    id.systemID = 1234567;
    id.systemType = 2;
    setText(id.address, "192.0.2.10");
    setText(id.ipv4, "192.0.2.10");
    setText(id.ipv6, "2001:db8::10");
    setText(id.vendor, "ORV");
    setText(id.model, "ORV StoreArray 8400");
    setText(id.serialNumber, "1234567");
    setText(id.firmwareVersion, "3.3.1.648");
    id.quadPort = 2; // decided from the node count unless given
    if (!root.contains("system"))
    {
        return;
    }
    const json& s = root["system"];
    checkKeys(s, "system",
              {"name", "hostName", "id", "type", "address", "quadPort", "ipv4", "ipv6", "vendor",
               "model", "serialNumber", "firmwareVersion"});
    auto text = [&](const char* key, char* dst, size_t size) {
        if (s.contains(key))
        {
            copyText(dst, size, asString(s[key], std::string("system.") + key),
                     std::string("system.") + key);
        }
    };
    text("name", id.systemName, sizeof id.systemName);
    text("hostName", id.hostName, sizeof id.hostName);
    text("address", id.address, sizeof id.address);
    text("ipv4", id.ipv4, sizeof id.ipv4);
    text("ipv6", id.ipv6, sizeof id.ipv6);
    text("vendor", id.vendor, sizeof id.vendor);
    text("model", id.model, sizeof id.model);
    text("serialNumber", id.serialNumber, sizeof id.serialNumber);
    text("firmwareVersion", id.firmwareVersion, sizeof id.firmwareVersion);
    if (s.contains("id"))
    {
        id.systemID = static_cast<uint32_t>(asU64Max(s["id"], "system.id", UINT32_MAX));
    }
    if (s.contains("type"))
    {
        id.systemType = static_cast<int32_t>(asI64(s["type"], "system.type"));
    }
    if (s.contains("quadPort"))
    {
        id.quadPort = asBool(s["quadPort"], "system.quadPort") ? 1 : 0;
    }
    in_addr a4{};
    if (id.ipv4[0] && inet_pton(AF_INET, id.ipv4, &a4) != 1)
    {
        fail("system.ipv4", "not an IPv4 address");
    }
    in6_addr a6{};
    if (id.ipv6[0] && inet_pton(AF_INET6, id.ipv6, &a6) != 1)
    {
        fail("system.ipv6", "not an IPv6 address");
    }
}

// ---- nodes --------------------------------------------------------------

struct LruField
{
    const char* name;
    int32_t cmp_lru_lens::*field;
};

const LruField kLruFields[] = {
    {"lru_free_anon_len", &cmp_lru_lens::lru_free_anon_len},
    {"lru_tmp_anon_len", &cmp_lru_lens::lru_tmp_anon_len},
    {"lru_clean_len", &cmp_lru_lens::lru_clean_len},
    {"lru_w1_len", &cmp_lru_lens::lru_w1_len},
    {"lru_wn_len", &cmp_lru_lens::lru_wn_len},
    {"lru_ws_len", &cmp_lru_lens::lru_ws_len},
    {"lru_ldwrt_len", &cmp_lru_lens::lru_ldwrt_len},
    {"lru_dcow_pend_len", &cmp_lru_lens::lru_dcow_pend_len},
    {"lru_dcow_proc_len", &cmp_lru_lens::lru_dcow_proc_len},
    {"lru_crc_dirty_len", &cmp_lru_lens::lru_crc_dirty_len},
    {"lru_crc_clean_len", &cmp_lru_lens::lru_crc_clean_len},
    {"lru_dedup_dirty_len", &cmp_lru_lens::lru_dedup_dirty_len},
    {"lru_dedup_clean_len", &cmp_lru_lens::lru_dedup_clean_len},
    {"lru_dedup_proc_len", &cmp_lru_lens::lru_dedup_proc_len},
    {"lru_rcpy_primary_len", &cmp_lru_lens::lru_rcpy_primary_len},
    {"lru_rcpy_secondary_len", &cmp_lru_lens::lru_rcpy_secondary_len},
    {"lru_rcpy_reserve_len", &cmp_lru_lens::lru_rcpy_reserve_len},
};

template <size_t N>
void readU64Pair(const json& j, const std::string& path, uint64_t (&dst)[N])
{
    if (!j.is_array() || j.size() != N)
    {
        fail(path, "expected an array of " + std::to_string(N) + " numbers");
    }
    for (size_t i = 0; i < N; ++i)
    {
        dst[i] = asU64(j[i], path + "[" + std::to_string(i) + "]");
    }
}

void readNodeCache(const json& item, const std::string& path, Node& n)
{
    n.fixedCache = true;
    if (item.contains("cache"))
    {
        const json& c = item["cache"];
        const std::string p = path + ".cache";
        checkKeys(c, p, {"totalIos", "hits", "blklck"});
        if (c.contains("totalIos"))
        {
            readU64Pair(c["totalIos"], p + ".totalIos", n.cst.cmp_total_ios);
        }
        if (c.contains("hits"))
        {
            readU64Pair(c["hits"], p + ".hits", n.cst.cmp_hits);
        }
        if (c.contains("blklck"))
        {
            readU64Pair(c["blklck"], p + ".blklck", n.cst.cmp_blklck);
        }
    }
    if (item.contains("lru"))
    {
        const json& l = item["lru"];
        const std::string p = path + ".lru";
        if (!l.is_object())
        {
            fail(p, "expected an object");
        }
        for (auto it = l.begin(); it != l.end(); ++it)
        {
            bool known = false;
            for (const LruField& f : kLruFields)
            {
                if (it.key() == f.name)
                {
                    n.lru.*(f.field) = static_cast<int32_t>(asI64(it.value(), p + "." + f.name));
                    known = true;
                }
            }
            if (!known)
            {
                fail(p, "unknown key \"" + it.key() + "\"");
            }
        }
    }
    if (item.contains("cdev"))
    {
        const json& d = item["cdev"];
        const std::string p = path + ".cdev";
        if (!d.is_object())
        {
            fail(p, "expected an object keyed by device class 0..6");
        }
        for (auto it = d.begin(); it != d.end(); ++it)
        {
            char* end = nullptr;
            const long k = std::strtol(it.key().c_str(), &end, 10);
            if (it.key().empty() || *end || k < 0 || k >= API_CMP_DEV_CLASSES)
            {
                fail(p, "device class \"" + it.key() + "\" is not 0..6");
            }
            const std::string q = p + "." + it.key();
            checkKeys(it.value(), q, {"dirty", "max", "dack"});
            cmp_dev_stat& s = n.cdev[k];
            const json& v = it.value();
            s.cdev_cfc_dirty = v.contains("dirty") ? static_cast<int32_t>(asI64(v["dirty"], q + ".dirty")) : 0;
            s.cdev_cfc_max = v.contains("max") ? static_cast<int32_t>(asI64(v["max"], q + ".max")) : 0;
            s.cdev_dack = v.contains("dack") ? static_cast<int32_t>(asI64(v["dack"], q + ".dack")) : 0;
        }
    }
}

void readNodeCpu(const json& c, const std::string& p, Node& n)
{
    checkKeys(c, p, {"now", "ns", "ncpus", "user", "nice", "sys", "idle", "intr", "ctxt", "btime", "procs"});
    n.fixedCpu = true;
    cpustats& s = n.cpu;
    s = cpustats{};
    s.cpustat_now = c.contains("now") ? static_cast<uint32_t>(asU64Max(c["now"], p + ".now", UINT32_MAX)) : 0;
    s.cpustat_ns = c.contains("ns") ? static_cast<uint32_t>(asU64Max(c["ns"], p + ".ns", UINT32_MAX)) : 0;
    // The record holds 32 CPUs; a larger count would make readers overrun it.
    s.cpustat_ncpus = c.contains("ncpus") ? static_cast<uint32_t>(asU64Max(c["ncpus"], p + ".ncpus", API_MAX_CPUS)) : 0;
    auto arr = [&](const char* key, uint64_t* dst) {
        if (!c.contains(key))
        {
            return;
        }
        const json& a = c[key];
        if (!a.is_array() || a.size() > API_MAX_CPUS)
        {
            fail(p + "." + key, "expected an array of at most 32 numbers");
        }
        for (size_t i = 0; i < a.size(); ++i)
        {
            dst[i] = asU64(a[i], p + "." + key + "[" + std::to_string(i) + "]");
        }
    };
    arr("user", s.cpustat_user);
    arr("nice", s.cpustat_nice);
    arr("sys", s.cpustat_sys);
    arr("idle", s.cpustat_idle);
    s.cpustat_intr = c.contains("intr") ? asU64(c["intr"], p + ".intr") : 0;
    s.cpustat_ctxt = c.contains("ctxt") ? asU64(c["ctxt"], p + ".ctxt") : 0;
    s.cpustat_btime = c.contains("btime") ? asU64(c["btime"], p + ".btime") : 0;
    s.cpustat_procs = c.contains("procs") ? asU64(c["procs"], p + ".procs") : 0;
}

void buildNodes(const json& root, Model& m)
{
    const size_t count = sectionCount(root, "nodes", 4, API_MAX_NODES);
    std::set<uint32_t> numbers;
    for (size_t i = 0; i < count; ++i)
    {
        Node n;
        n.info.nodeID = static_cast<uint16_t>(i);
        n.info.online = 1;
        n.info.master = i == 0;
        n.info.ncpus = 8;
        n.info.memoryMiB = 65536;
        n.info.cacheMiB = 32768;
        n.cache.iops = static_cast<float>(40000 + 20000 * unit(kNode, i));
        n.cache.readFrac = 0.65f;
        n.cache.readHitFrac = static_cast<float>(0.6 + 0.3 * unit(kNode, i, 1));
        n.cache.writeHitFrac = 0.97f;
        n.cache.phase = static_cast<float>(97 * i);
        n.lruBase = 2000000;
        n.cpuUser = static_cast<float>(0.15 + 0.2 * unit(kNode, i, 2));
        n.cpuSys = static_cast<float>(0.05 + 0.1 * unit(kNode, i, 3));
        const std::string path = "nodes.items[" + std::to_string(i) + "]";
        if (const json* item = sectionItem(root, "nodes", i))
        {
            checkKeys(*item, path,
                      {"number", "name", "online", "master", "ncpus", "memoryMiB", "cacheMiB", "serial",
                       "workload", "cache", "lru", "cdev", "cpu"});
            if (item->contains("number"))
            {
                n.info.nodeID = static_cast<uint16_t>(
                    asU64Max((*item)["number"], path + ".number", API_MAX_NODES - 1));
            }
            if (item->contains("online"))
            {
                n.info.online = asBool((*item)["online"], path + ".online");
            }
            if (item->contains("master"))
            {
                n.info.master = asBool((*item)["master"], path + ".master");
            }
            if (item->contains("ncpus"))
            {
                n.info.ncpus = static_cast<uint32_t>(asU64Max((*item)["ncpus"], path + ".ncpus", API_MAX_CPUS));
            }
            if (item->contains("memoryMiB"))
            {
                n.info.memoryMiB = asU64((*item)["memoryMiB"], path + ".memoryMiB");
            }
            if (item->contains("cacheMiB"))
            {
                n.info.cacheMiB = asU64((*item)["cacheMiB"], path + ".cacheMiB");
            }
            if (item->contains("workload"))
            {
                readWorkload((*item)["workload"], path + ".workload", n.cache);
            }
            if (item->contains("cache") || item->contains("lru") || item->contains("cdev"))
            {
                readNodeCache(*item, path, n);
            }
            if (item->contains("cpu"))
            {
                readNodeCpu((*item)["cpu"], path + ".cpu", n);
            }
        }
        // The node's name is its number unless the model says otherwise, so
        // node system paths and node statistics IDs agree.
        setText(n.info.nodeName, std::to_string(n.info.nodeID));
        setText(n.info.serial, format("%07u-%u", m.identity.systemID % 10000000U, n.info.nodeID));
        if (const json* item = sectionItem(root, "nodes", i))
        {
            if (item->contains("name"))
            {
                copyText(n.info.nodeName, sizeof n.info.nodeName, asString((*item)["name"], path + ".name"),
                         path + ".name");
            }
            if (item->contains("serial"))
            {
                copyText(n.info.serial, sizeof n.info.serial, asString((*item)["serial"], path + ".serial"),
                         path + ".serial");
            }
        }
        if (!numbers.insert(n.info.nodeID).second)
        {
            fail(path, "node number " + std::to_string(n.info.nodeID) + " used twice");
        }
        m.nodes.push_back(n);
    }
    std::sort(m.nodes.begin(), m.nodes.end(),
              [](const Node& a, const Node& b) { return a.info.nodeID < b.info.nodeID; });
    if (m.identity.quadPort == 2)
    {
        m.identity.quadPort = m.nodes.size() >= 4 ? 1 : 0;
    }
}

// ---- ports --------------------------------------------------------------

struct PortSlot
{
    uint32_t slot;
    uint32_t port;
    api_port_type_e type;
    port_prot_e protocol;
};

// What each node carries, in order; further ports are FC targets in the
// higher slots.
const PortSlot kNodeLayout[] = {
    {0, 1, API_PORT_TYPE_INIT, PORT_PROTOCOL_SAS},    {0, 2, API_PORT_TYPE_INIT, PORT_PROTOCOL_SAS},
    {1, 1, API_PORT_TYPE_TARGET, PORT_PROTOCOL_FC},   {1, 2, API_PORT_TYPE_TARGET, PORT_PROTOCOL_FC},
    {1, 3, API_PORT_TYPE_TARGET, PORT_PROTOCOL_FC},   {1, 4, API_PORT_TYPE_TARGET, PORT_PROTOCOL_FC},
    {2, 1, API_PORT_TYPE_TARGET, PORT_PROTOCOL_ISCSI}, {2, 2, API_PORT_TYPE_TARGET, PORT_PROTOCOL_ISCSI},
    {3, 1, API_PORT_TYPE_TARGET, PORT_PROTOCOL_FCOE}, {3, 2, API_PORT_TYPE_INIT, PORT_PROTOCOL_IP},
};
constexpr size_t kLayoutSize = sizeof kNodeLayout / sizeof kNodeLayout[0];

void describePort(Port& p, const Model& m)
{
    api_PortStats_t& r = p.rec;
    orvsim_port_info_t& info = p.info;
    const lpid_t id = r.portID;
    const uint32_t node = (id >> 7) & 7, slot = (id >> 3) & 15, port = id & 7;
    setText(r.portName, format("%u:%u:%u", node, slot, port));
    const Node* n = m.findNode(node);
    setText(r.nodeDeviceID, n ? n->info.nodeName : std::to_string(node));
    const uint32_t serial = m.identity.systemID & 0xFFFFFF;
    switch (r.portProtocol)
    {
    case PORT_PROTOCOL_FC:
    case PORT_PROTOCOL_FCOE:
    case PORT_PROTOCOL_SAS:
    {
        const char lead = r.portProtocol == PORT_PROTOCOL_SAS ? '5' : '2';
        const std::string wwn = format("%c%03X00ABCD%06X", lead, id & 0xFFF, serial);
        setText(r.portDeviceID, wwn);
        setText(info.wwn, wwn);
        info.mac[0] = '\0';
        break;
    }
    default:
    {
        const unsigned b[6] = {0x00, 0xAB, 0xCD, serial & 0xFF, (id >> 8) & 0xFFu, id & 0xFFu};
        setText(r.portDeviceID, format("%02X%02X%02X%02X%02X%02X", b[0], b[1], b[2], b[3], b[4], b[5]));
        setText(info.mac, format("%02x:%02x:%02x:%02x:%02x:%02x", b[0], b[1], b[2], b[3], b[4], b[5]));
        info.wwn[0] = '\0';
        break;
    }
    }
    switch (r.portProtocol)
    {
    case PORT_PROTOCOL_FC: info.speedBps = 16000000000ULL; break;
    case PORT_PROTOCOL_SAS: info.speedBps = 12000000000ULL; break;
    case PORT_PROTOCOL_IP: info.speedBps = 1000000000ULL; break;
    default: info.speedBps = 10000000000ULL; break;
    }
}

void syncPortInfo(Port& p)
{
    setText(p.info.portDeviceID, p.rec.portDeviceID);
    setText(p.info.nodeDeviceID, p.rec.nodeDeviceID);
    setText(p.info.portName, p.rec.portName);
    p.info.portID = p.rec.portID;
    p.info.type = p.rec.type;
    p.info.protocol = p.rec.portProtocol;
}

void buildPorts(const json& root, Model& m)
{
    const size_t perNode = kLayoutSize;
    const size_t nodes = m.nodes.size();
    const size_t count = sectionCount(root, "ports", nodes * perNode, kMaxPorts);
    for (size_t i = 0; i < count; ++i)
    {
        Port p;
        const uint32_t nodeNo = nodes ? m.nodes[i % nodes].info.nodeID : 0;
        const size_t k = nodes ? i / nodes : i; // k-th port of that node
        PortSlot ps;
        if (k < perNode)
        {
            ps = kNodeLayout[k];
        }
        else
        {
            const size_t extra = k - perNode;
            ps = {static_cast<uint32_t>(4 + (extra / 4) % 12), static_cast<uint32_t>(1 + extra % 4),
                  API_PORT_TYPE_TARGET, PORT_PROTOCOL_FC};
        }
        p.rec.portID = static_cast<lpid_t>((nodeNo << 7) | (ps.slot << 3) | ps.port);
        p.rec.type = ps.type;
        p.rec.portProtocol = ps.protocol;
        p.info.linkUp = 1;
        const double u = unit(kPort, i);
        if (ps.type == API_PORT_TYPE_TARGET)
        {
            p.data.iops = static_cast<float>(2000 + 6000 * u);
            p.data.readSvcUs = 400;
            p.data.writeSvcUs = 600;
        }
        else
        {
            p.data.iops = static_cast<float>(1000 + 3000 * u);
            p.data.readSvcUs = 3000;
            p.data.writeSvcUs = 4000;
        }
        p.data.readBlock = 16384;
        p.data.writeBlock = 16384;
        p.data.busyFrac = static_cast<float>(0.1 + 0.5 * u);
        p.data.phase = static_cast<float>(37 * i);
        p.ctl.iops = 10;
        p.ctl.readBlock = 512;
        p.ctl.writeBlock = 512;
        p.ctl.burst = 0;
        describePort(p, m);

        const std::string path = "ports.items[" + std::to_string(i) + "]";
        if (const json* item = sectionItem(root, "ports", i))
        {
            checkKeys(*item, path,
                      {"deviceID", "nodeDeviceID", "name", "type", "protocol", "portID", "node", "slot",
                       "port", "time", "dataStats", "ctlStats", "workload", "linkUp", "speedBps"});
            const json& it = *item;
            bool moved = false;
            if (it.contains("protocol"))
            {
                p.rec.portProtocol = static_cast<port_prot_e>(
                    asEnum(it["protocol"], path + ".protocol",
                           {{"unknown", 0}, {"fc", 1}, {"iscsi", 2}, {"fcoe", 3}, {"ip", 4}, {"sas", 5}}));
                moved = true;
            }
            if (it.contains("type"))
            {
                p.rec.type = static_cast<api_port_type_e>(
                    asEnum(it["type"], path + ".type", {{"all", 0}, {"target", 1}, {"init", 2}, {"initiator", 2}}));
            }
            if (it.contains("portID"))
            {
                p.rec.portID = static_cast<lpid_t>(asU64Max(it["portID"], path + ".portID", 0xFFFF));
                moved = true;
            }
            if (it.contains("node") || it.contains("slot") || it.contains("port"))
            {
                const uint32_t n = it.contains("node") ? static_cast<uint32_t>(asU64Max(it["node"], path + ".node", 7))
                                                       : (p.rec.portID >> 7) & 7;
                const uint32_t s = it.contains("slot") ? static_cast<uint32_t>(asU64Max(it["slot"], path + ".slot", 15))
                                                       : (p.rec.portID >> 3) & 15;
                const uint32_t q = it.contains("port") ? static_cast<uint32_t>(asU64Max(it["port"], path + ".port", 7))
                                                       : p.rec.portID & 7;
                p.rec.portID = static_cast<lpid_t>((n << 7) | (s << 3) | q);
                moved = true;
            }
            if (moved)
            {
                describePort(p, m);
            }
            if (it.contains("deviceID"))
            {
                copyText(p.rec.portDeviceID, sizeof p.rec.portDeviceID, asString(it["deviceID"], path + ".deviceID"),
                         path + ".deviceID");
            }
            if (it.contains("nodeDeviceID"))
            {
                copyText(p.rec.nodeDeviceID, sizeof p.rec.nodeDeviceID,
                         asString(it["nodeDeviceID"], path + ".nodeDeviceID"), path + ".nodeDeviceID");
            }
            if (it.contains("name"))
            {
                copyText(p.rec.portName, sizeof p.rec.portName, asString(it["name"], path + ".name"), path + ".name");
            }
            if (it.contains("time"))
            {
                p.rec.time = readTime(it["time"], path + ".time");
                p.fixedTime = true;
            }
            if (it.contains("dataStats") || it.contains("ctlStats"))
            {
                p.fixedStats = true;
                if (it.contains("dataStats"))
                {
                    readStats(it["dataStats"], path + ".dataStats", p.rec.dataStats);
                }
                if (it.contains("ctlStats"))
                {
                    readStats(it["ctlStats"], path + ".ctlStats", p.rec.ctlStats);
                }
            }
            if (it.contains("workload"))
            {
                readWorkload(it["workload"], path + ".workload", p.data);
            }
            if (it.contains("linkUp"))
            {
                p.info.linkUp = asBool(it["linkUp"], path + ".linkUp");
            }
            if (it.contains("speedBps"))
            {
                p.info.speedBps = asU64(it["speedBps"], path + ".speedBps");
            }
        }
        syncPortInfo(p);
        m.ports.push_back(p);
    }
}

// ---- disks --------------------------------------------------------------

struct DiskClass
{
    const char* name;
    uint32_t rpm;
    double iopsLow, iopsHigh;
    float readSvcUs, writeSvcUs;
    uint64_t capacityMiB;
};

// One cage per class, 24 drives a cage.
const DiskClass kDiskClasses[] = {
    {"SSD", 0, 3000, 6000, 200, 300, 1831420},
    {"FC10K", 10000, 120, 180, 6000, 7000, 1144641},
    {"FC15K", 15000, 160, 220, 4000, 5000, 572320},
    {"NL", 7200, 60, 90, 10000, 12000, 7630885},
};
constexpr uint32_t kDrivesPerCage = 24;

void buildDisks(const json& root, Model& m)
{
    const size_t count = sectionCount(root, "disks", 96, kMaxDisks);
    for (size_t i = 0; i < count; ++i)
    {
        Disk d;
        const uint32_t cage = static_cast<uint32_t>(i / kDrivesPerCage);
        const DiskClass& cls = kDiskClasses[cage % 4];
        d.rec.cageType = static_cast<jb_type_e>(JB_TYPE_SAS_2U24 + cage % 3);
        setText(d.rec.diskDeviceID,
                format("%016llX", static_cast<unsigned long long>(0x5000C50000000000ULL +
                                                                  (static_cast<uint64_t>(m.identity.systemID) << 16) +
                                                                  i)));
        setText(d.rec.diskName, format("%u:%u:0", cage, static_cast<uint32_t>(i % kDrivesPerCage)));
        d.rec.diskID = static_cast<uint32_t>(i);
        d.rec.loopID = cage % 2;
        const double u = unit(kDisk, i);
        d.load.iops = static_cast<float>(cls.iopsLow + (cls.iopsHigh - cls.iopsLow) * u);
        d.load.readFrac = static_cast<float>(0.5 + 0.3 * unit(kDisk, i, 1));
        d.load.readBlock = 32768;
        d.load.writeBlock = 32768;
        d.load.readSvcUs = cls.readSvcUs;
        d.load.writeSvcUs = cls.writeSvcUs;
        d.load.busyFrac = static_cast<float>(
            std::min(0.95, d.load.iops * (d.load.readFrac * cls.readSvcUs + (1 - d.load.readFrac) * cls.writeSvcUs) / 1e6));
        d.load.qlen = static_cast<float>(1 + 6 * u);
        d.load.phase = static_cast<float>(13 * i);
        setText(d.info.deviceClass, cls.name);
        d.info.rpm = cls.rpm;
        d.info.blockSize = 512;
        d.info.capacityMiB = cls.capacityMiB;

        const std::string path = "disks.items[" + std::to_string(i) + "]";
        if (const json* item = sectionItem(root, "disks", i))
        {
            const json& it = *item;
            checkKeys(it, path,
                      {"deviceID", "name", "diskID", "loopID", "cageType", "class", "time", "stats", "workload",
                       "capacityMiB", "failed"});
            if (it.contains("deviceID"))
            {
                copyText(d.rec.diskDeviceID, sizeof d.rec.diskDeviceID, asString(it["deviceID"], path + ".deviceID"),
                         path + ".deviceID");
            }
            if (it.contains("name"))
            {
                copyText(d.rec.diskName, sizeof d.rec.diskName, asString(it["name"], path + ".name"), path + ".name");
            }
            if (it.contains("diskID"))
            {
                d.rec.diskID = static_cast<uint32_t>(asU64Max(it["diskID"], path + ".diskID", UINT32_MAX));
            }
            if (it.contains("loopID"))
            {
                d.rec.loopID = static_cast<uint32_t>(asU64Max(it["loopID"], path + ".loopID", UINT32_MAX));
            }
            if (it.contains("cageType"))
            {
                d.rec.cageType = static_cast<jb_type_e>(asI64(it["cageType"], path + ".cageType"));
            }
            if (it.contains("class"))
            {
                const std::string c = asString(it["class"], path + ".class");
                bool known = false;
                for (const DiskClass& k : kDiskClasses)
                {
                    if (c == k.name)
                    {
                        setText(d.info.deviceClass, k.name);
                        d.info.rpm = k.rpm;
                        d.info.capacityMiB = k.capacityMiB;
                        known = true;
                    }
                }
                if (!known)
                {
                    fail(path + ".class", "expected SSD, FC10K, FC15K or NL");
                }
            }
            if (it.contains("time"))
            {
                d.rec.time = readTime(it["time"], path + ".time");
                d.fixedTime = true;
            }
            if (it.contains("stats"))
            {
                readStats(it["stats"], path + ".stats", d.rec.stats);
                d.fixedStats = true;
            }
            if (it.contains("workload"))
            {
                readWorkload(it["workload"], path + ".workload", d.load);
            }
            if (it.contains("capacityMiB"))
            {
                d.info.capacityMiB = asU64(it["capacityMiB"], path + ".capacityMiB");
            }
            if (it.contains("failed"))
            {
                d.info.failed = asBool(it["failed"], path + ".failed");
            }
        }
        setText(d.info.diskDeviceID, d.rec.diskDeviceID);
        setText(d.info.diskName, d.rec.diskName);
        d.info.diskID = d.rec.diskID;
        m.disks.push_back(d);
    }
}

// ---- volumes ------------------------------------------------------------

// A volume as the model describes it, full records and all; only its
// varying parts are kept (see addVolume).
struct VolumeDraft
{
    api_VolumeStats_t rec{};
    api_VVInfo_t info{};
    uint64_t wwnHi = 0;
    uint64_t wwnLo = 0;
    Workload load;
    bool fixedStats = false;
    bool fixedTime = false;
};

uint32_t addFixedSample(Model& m, bool hasTime, bool hasStats, time_t time,
                        const api_stats_t& stats, const api_cache_stats_t* cacheRead,
                        const api_cache_stats_t* cacheWrite)
{
    if (!hasTime && !hasStats)
    {
        return kNoFixed;
    }
    FixedSample f;
    f.hasTime = hasTime;
    f.hasStats = hasStats;
    f.time = time;
    f.stats = stats;
    if (cacheRead)
    {
        f.cacheRead = *cacheRead;
    }
    if (cacheWrite)
    {
        f.cacheWrite = *cacheWrite;
    }
    m.fixedSamples.push_back(f);
    return static_cast<uint32_t>(m.fixedSamples.size() - 1);
}

void addVolume(Model& m, const VolumeDraft& d)
{
    Volume v;
    v.wwnHi = d.wwnHi;
    v.wwnLo = d.wwnLo;
    v.sizeMiB = d.info.sizeMiB;
    v.usedMiB = d.info.usedMiB;
    v.load = d.load;
    v.phaseSine = workloadPhaseSine(v.load, m.periodSec);
    v.name = m.text.addField(d.rec.vvName);
    v.vvID = d.rec.vvID;
    v.statsGen = d.rec.stats_gen;
    v.blockSize = d.info.blockSize;
    v.started = d.rec.vvStarted;
    v.thin = d.info.thin;
    v.fixed = addFixedSample(m, d.fixedTime, d.fixedStats, d.rec.time, d.rec.stats,
                             &d.rec.cacheRead, &d.rec.cacheWrite);
    m.volumes.push_back(v);
}

// Sorted by WWN, and among equal WWNs by position, so the first match of a
// lookup is the first such volume of the model.
void indexVolumes(Model& m)
{
    m.volumesByWwn.resize(m.volumes.size());
    for (uint32_t i = 0; i < m.volumesByWwn.size(); ++i)
    {
        m.volumesByWwn[i] = i;
    }
    const std::vector<Volume>& vols = m.volumes;
    std::stable_sort(m.volumesByWwn.begin(), m.volumesByWwn.end(),
                     [&vols](uint32_t a, uint32_t b) {
                         return std::tie(vols[a].wwnHi, vols[a].wwnLo) <
                                std::tie(vols[b].wwnHi, vols[b].wwnLo);
                     });
}

void setVolumeWwn(VolumeDraft& v, uint64_t hi, uint64_t lo)
{
    v.wwnHi = hi; // the records' WWN text is written from these at query time
    v.wwnLo = lo;
}

void buildVolumes(const json& root, Model& m)
{
    const size_t count = sectionCount(root, "volumes", 300, kMaxVolumes);
    m.volumes.reserve(count);
    static const uint32_t kBlocks[] = {4096, 8192, 16384, 65536};
    for (size_t i = 0; i < count; ++i)
    {
        VolumeDraft v;
        const std::string name = i == 0 ? ".srdata" : i == 1 ? "admin" : format("vol%04u", static_cast<uint32_t>(i));
        setText(v.rec.vvName, name);
        v.rec.vvID = static_cast<uint32_t>(i);
        v.rec.vvStarted = (i % 50 == 49) ? 0 : 1;
        v.rec.stats_gen = 1;
        setVolumeWwn(v, 0x6000ABCD00000000ULL | m.identity.systemID,
                     (static_cast<uint64_t>(i + 1) << 32) | (mix(i) & 0xFFFFFFFFULL));
        const double u = unit(kVolume, i);
        if (v.rec.vvStarted)
        {
            v.load.iops = static_cast<float>(5 + 2000 * u * u * u * u);
        }
        else
        {
            v.load.iops = 0;
        }
        v.load.readFrac = static_cast<float>(0.4 + 0.4 * unit(kVolume, i, 1));
        v.load.readBlock = kBlocks[mix(i) % 4];
        v.load.writeBlock = kBlocks[mix(i + 7) % 4];
        v.load.readSvcUs = static_cast<float>(300 + 1700 * unit(kVolume, i, 2));
        v.load.writeSvcUs = static_cast<float>(200 + 800 * unit(kVolume, i, 3));
        v.load.busyFrac = static_cast<float>(std::min(0.95, v.load.iops * 600.0 / 1e6 + 0.01));
        v.load.qlen = static_cast<float>(8 * u);
        v.load.readHitFrac = static_cast<float>(0.3 + 0.6 * unit(kVolume, i, 4));
        v.load.writeHitFrac = 0.98f;
        v.load.phase = static_cast<float>(7 * i);
        v.info.vvID = v.rec.vvID;
        v.info.started = v.rec.vvStarted;
        v.info.thin = i % 3 != 0;
        v.info.blockSize = 512;
        v.info.sizeMiB = 1024ULL * (1 + static_cast<uint64_t>(2047 * unit(kVolume, i, 5)));
        v.info.usedMiB = v.info.thin ? v.info.sizeMiB / 3 : v.info.sizeMiB;

        const std::string path = "volumes.items[" + std::to_string(i) + "]";
        if (const json* item = sectionItem(root, "volumes", i))
        {
            const json& it = *item;
            checkKeys(it, path,
                      {"name", "wwn", "vvID", "started", "statsGen", "time", "stats", "cacheRead", "cacheWrite",
                       "workload", "sizeMiB", "usedMiB", "blockSize", "thin"});
            if (it.contains("name"))
            {
                copyText(v.rec.vvName, sizeof v.rec.vvName, asString(it["name"], path + ".name"), path + ".name");
            }
            if (it.contains("wwn"))
            {
                uint64_t hi = 0, lo = 0;
                const std::string w = asString(it["wwn"], path + ".wwn");
                if (!wwnFromText(w.c_str(), lo, hi))
                {
                    fail(path + ".wwn", "expected 1 to 32 hexadecimal digits");
                }
                setVolumeWwn(v, hi, lo);
            }
            if (it.contains("vvID"))
            {
                v.rec.vvID = static_cast<uint32_t>(asU64Max(it["vvID"], path + ".vvID", UINT32_MAX));
            }
            if (it.contains("started"))
            {
                v.rec.vvStarted = asBool(it["started"], path + ".started");
            }
            if (it.contains("statsGen"))
            {
                v.rec.stats_gen = static_cast<uint32_t>(asU64Max(it["statsGen"], path + ".statsGen", UINT32_MAX));
            }
            if (it.contains("time"))
            {
                v.rec.time = readTime(it["time"], path + ".time");
                v.fixedTime = true;
            }
            if (it.contains("stats") || it.contains("cacheRead") || it.contains("cacheWrite"))
            {
                v.fixedStats = true;
                if (it.contains("stats"))
                {
                    readStats(it["stats"], path + ".stats", v.rec.stats);
                }
                if (it.contains("cacheRead"))
                {
                    readCache(it["cacheRead"], path + ".cacheRead", v.rec.cacheRead);
                }
                if (it.contains("cacheWrite"))
                {
                    readCache(it["cacheWrite"], path + ".cacheWrite", v.rec.cacheWrite);
                }
            }
            if (it.contains("workload"))
            {
                readWorkload(it["workload"], path + ".workload", v.load);
            }
            if (it.contains("sizeMiB"))
            {
                v.info.sizeMiB = asU64(it["sizeMiB"], path + ".sizeMiB");
                v.info.usedMiB = std::min(v.info.usedMiB, v.info.sizeMiB);
            }
            if (it.contains("usedMiB"))
            {
                v.info.usedMiB = asU64(it["usedMiB"], path + ".usedMiB");
            }
            if (it.contains("blockSize"))
            {
                v.info.blockSize = static_cast<uint32_t>(asU64Max(it["blockSize"], path + ".blockSize", 1 << 20));
            }
            if (it.contains("thin"))
            {
                v.info.thin = asBool(it["thin"], path + ".thin");
            }
        }
        setText(v.info.vvName, v.rec.vvName);
        v.info.vvID = v.rec.vvID;
        v.info.started = v.rec.vvStarted;
        addVolume(m, v);
    }
    indexVolumes(m);
}

// ---- VLUNs --------------------------------------------------------------

constexpr uint32_t kHosts = 16;

struct VLunDraft
{
    api_VLunStats_t rec{};
    Workload load;
    bool fixedStats = false;
    bool fixedTime = false;
};

// Text entries of the VLUN names that are not their volume's, and of the
// host IDs, each kept once.
class TextInterner
{
public:
    explicit TextInterner(TextTable& table) : table_(table) {}
    template <size_t N> uint32_t field(const char (&f)[N])
    {
        const std::string key(f, N);
        const auto it = known_.find(key);
        if (it != known_.end())
        {
            return it->second;
        }
        const uint32_t ref = table_.addField(f);
        known_.emplace(key, ref);
        return ref;
    }

private:
    TextTable& table_;
    std::unordered_map<std::string, uint32_t> known_;
};

void addVLun(Model& m, const VLunDraft& d, size_t volume, TextInterner& interner)
{
    VLun l;
    l.load = d.load;
    l.phaseSine = workloadPhaseSine(l.load, m.periodSec);
    l.lunID = d.rec.lunID;
    const bool volumeName =
        volume < m.volumes.size() &&
        m.text.equalsField(m.volumes[volume].name, d.rec.vvName, sizeof d.rec.vvName);
    l.vvName = volumeName ? m.volumes[volume].name : interner.field(d.rec.vvName);
    l.hostHwid = interner.field(d.rec.host_hwid);
    l.vlunType = d.rec.vlunType;
    l.portType = d.rec.portType;
    l.portID = d.rec.portID;
    l.fixed =
        addFixedSample(m, d.fixedTime, d.fixedStats, d.rec.time, d.rec.stats, nullptr, nullptr);
    m.vluns.push_back(l);
}

void buildVLuns(const json& root, Model& m)
{
    const size_t count = sectionCount(root, "vluns", 400, kMaxVLuns);
    m.vluns.reserve(count);
    std::vector<const Port*> targets;
    for (const Port& p : m.ports)
    {
        if (p.rec.type == API_PORT_TYPE_TARGET)
        {
            targets.push_back(&p);
        }
    }
    const size_t nvol = std::max<size_t>(m.volumes.size(), 1);
    TextInterner interner(m.text);
    for (size_t j = 0; j < count; ++j)
    {
        VLunDraft l;
        const size_t v = j % nvol;
        const size_t path_ = j / nvol; // how many earlier paths this volume has
        setText(l.rec.vvName, v < m.volumes.size() ? std::string(m.text.str(m.volumes[v].name))
                                                   : format("vol%04u", static_cast<uint32_t>(v)));
        l.rec.lunID = static_cast<uint32_t>(v % 16384);
        const uint32_t host = static_cast<uint32_t>((v + path_ * 5) % kHosts);
        const Port* port = targets.empty() ? nullptr : targets[(v * 3 + path_) % targets.size()];
        // Mostly active paths; a sprinkling of the other kinds, the templates
        // with short IDs among them.
        static const uint32_t kKinds[20] = {0, 5, 3, 3, 2, 4, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
        l.rec.vlunType = kKinds[j % 20];
        const bool bound = port && l.rec.vlunType != API_VLUN_TYPE_TEMPLATE && j % 20 != 2;
        l.rec.portID = bound ? port->rec.portID : API_PORTID_NONE;
        const bool iscsi = port && port->rec.portProtocol == PORT_PROTOCOL_ISCSI;
        l.rec.portType = !port ? PORT_TYPE_UNKNOWN : iscsi ? PORT_TYPE_ISCSI : PORT_TYPE_FC;
        if (l.rec.vlunType >= 1 && l.rec.vlunType <= 4)
        {
            setText(l.rec.host_hwid, iscsi ? format("iqn.1994-05.com.example:host%02u", host)
                                           : format("10000090FA%06X", 0x1A0000 + host));
        }
        const double u = unit(kVLun, j);
        l.load.iops = l.rec.vlunType == API_VLUN_TYPE_TEMPLATE ? 0 : static_cast<float>(2 + 500 * u * u * u);
        l.load.readFrac = static_cast<float>(0.4 + 0.4 * unit(kVLun, j, 1));
        l.load.readBlock = 8192;
        l.load.writeBlock = 16384;
        l.load.readSvcUs = static_cast<float>(400 + 1000 * unit(kVLun, j, 2));
        l.load.writeSvcUs = static_cast<float>(300 + 500 * unit(kVLun, j, 3));
        l.load.phase = static_cast<float>(11 * j);

        const std::string path = "vluns.items[" + std::to_string(j) + "]";
        if (const json* item = sectionItem(root, "vluns", j))
        {
            const json& it = *item;
            checkKeys(it, path,
                      {"lunID", "vvName", "portID", "node", "slot", "port", "vlunType", "portType", "hostHwid", "time",
                       "stats", "workload"});
            if (it.contains("lunID"))
            {
                l.rec.lunID = static_cast<uint32_t>(asU64Max(it["lunID"], path + ".lunID", UINT32_MAX));
            }
            if (it.contains("vvName"))
            {
                copyText(l.rec.vvName, sizeof l.rec.vvName, asString(it["vvName"], path + ".vvName"),
                         path + ".vvName");
            }
            if (it.contains("portID"))
            {
                l.rec.portID = static_cast<lpid_t>(asU64Max(it["portID"], path + ".portID", 0xFFFF));
            }
            if (it.contains("node") || it.contains("slot") || it.contains("port"))
            {
                const uint32_t n = it.contains("node") ? static_cast<uint32_t>(asU64Max(it["node"], path + ".node", 7)) : 0;
                const uint32_t s = it.contains("slot") ? static_cast<uint32_t>(asU64Max(it["slot"], path + ".slot", 15)) : 0;
                const uint32_t q = it.contains("port") ? static_cast<uint32_t>(asU64Max(it["port"], path + ".port", 7)) : 0;
                l.rec.portID = static_cast<lpid_t>((n << 7) | (s << 3) | q);
            }
            if (it.contains("vlunType"))
            {
                l.rec.vlunType = static_cast<uint32_t>(asU64Max(it["vlunType"], path + ".vlunType", UINT32_MAX));
                if (!(l.rec.vlunType >= 1 && l.rec.vlunType <= 4))
                {
                    l.rec.host_hwid[0] = '\0';
                }
            }
            if (it.contains("portType"))
            {
                l.rec.portType = static_cast<port_type_t>(
                    asEnum(it["portType"], path + ".portType", {{"unknown", 0}, {"fc", 1}, {"iscsi", 2}, {"sas", 3}}));
            }
            if (it.contains("hostHwid"))
            {
                copyText(l.rec.host_hwid, sizeof l.rec.host_hwid, asString(it["hostHwid"], path + ".hostHwid"),
                         path + ".hostHwid");
            }
            if (it.contains("time"))
            {
                l.rec.time = readTime(it["time"], path + ".time");
                l.fixedTime = true;
            }
            if (it.contains("stats"))
            {
                readStats(it["stats"], path + ".stats", l.rec.stats);
                l.fixedStats = true;
            }
            if (it.contains("workload"))
            {
                readWorkload(it["workload"], path + ".workload", l.load);
            }
        }
        addVLun(m, l, v, interner);
    }
}

// ---- users and faults ---------------------------------------------------

void buildUsers(const json& root, Model& m)
{
    if (!root.contains("users"))
    {
        const struct
        {
            const char* name;
            const char* role;
            bool enabled;
        } kUsers[] = {
            {"admin", "super", true},    {"demo", "browse", true},    {"operator", "edit", true},
            {"monitor", "browse", true}, {"noaccess", "none", true},  {"auditor", "audit", true},
            {"legacy", "service", true}, {"locked", "super", false},
        };
        for (const auto& u : kUsers)
        {
            User user;
            user.name = u.name;
            user.role = u.role;
            user.enabled = u.enabled;
            m.users.push_back(user);
        }
        return;
    }
    const json& users = root["users"];
    if (!users.is_array())
    {
        fail("users", "expected an array");
    }
    for (size_t i = 0; i < users.size(); ++i)
    {
        const std::string path = "users[" + std::to_string(i) + "]";
        const json& u = users[i];
        checkKeys(u, path, {"name", "role", "enabled", "authorize", "addresses"});
        if (!u.contains("name"))
        {
            fail(path, "a user needs a name");
        }
        User user;
        user.name = asString(u["name"], path + ".name");
        if (user.name.empty())
        {
            fail(path + ".name", "must not be empty");
        }
        user.role = u.contains("role") ? asString(u["role"], path + ".role") : "browse";
        user.enabled = u.contains("enabled") ? asBool(u["enabled"], path + ".enabled") : true;
        if (u.contains("authorize"))
        {
            user.hasAuthorize = true;
            user.authorize = static_cast<int32_t>(asI64(u["authorize"], path + ".authorize"));
        }
        if (u.contains("addresses"))
        {
            const json& a = u["addresses"];
            if (!a.is_array())
            {
                fail(path + ".addresses", "expected an array of strings");
            }
            for (size_t k = 0; k < a.size(); ++k)
            {
                user.addresses.push_back(asString(a[k], path + ".addresses[" + std::to_string(k) + "]"));
            }
        }
        m.users.push_back(user);
    }
}

void buildFaults(const json& root, Model& m)
{
    if (!root.contains("faults"))
    {
        return;
    }
    const json& faults = root["faults"];
    if (faults.is_string())
    {
        m.faults = parseFaultSpec(faults.get<std::string>());
        return;
    }
    if (!faults.is_array())
    {
        fail("faults", "expected an array or a fault string");
    }
    for (size_t i = 0; i < faults.size(); ++i)
    {
        const std::string path = "faults[" + std::to_string(i) + "]";
        const json& f = faults[i];
        checkKeys(f, path, {"call", "status", "empty", "after", "times", "leaveAlloc"});
        FaultSpec s;
        s.emptyChunk = f.contains("empty") && asBool(f["empty"], path + ".empty");
        if (!f.contains("call") || (!f.contains("status") && !s.emptyChunk))
        {
            fail(path, "a fault needs a call and a status");
        }
        s.call = asString(f["call"], path + ".call");
        s.status = f.contains("status") ? static_cast<int>(asI64(f["status"], path + ".status")) : 0;
        s.afterN = f.contains("after") ? static_cast<int>(asU64Max(f["after"], path + ".after", INT32_MAX)) : 0;
        s.times = f.contains("times") ? static_cast<int>(asU64Max(f["times"], path + ".times", INT32_MAX)) : 0;
        s.leaveAlloc = f.contains("leaveAlloc") && asBool(f["leaveAlloc"], path + ".leaveAlloc");
        m.faults.push_back(s);
    }
}

} // namespace

TextTable::TextTable() : data_(2, '\0') {}

uint32_t TextTable::add(const char* bytes, size_t size)
{
    while (size > 0 && bytes[size - 1] == '\0')
    {
        --size;
    }
    if (size > 255 || data_.size() + size + 2 > UINT32_MAX)
    {
        throw ModelError("text table full");
    }
    if (size == 0)
    {
        return 0;
    }
    const auto ref = static_cast<uint32_t>(data_.size());
    data_.push_back(static_cast<char>(size));
    data_.append(bytes, size);
    data_.push_back('\0');
    return ref;
}

bool TextTable::equalsField(uint32_t ref, const char* bytes, size_t size) const
{
    while (size > 0 && bytes[size - 1] == '\0')
    {
        --size;
    }
    return static_cast<unsigned char>(data_[ref]) == size &&
           std::memcmp(str(ref), bytes, size) == 0;
}

const Volume* Model::findVolume(uint64_t wwnHi, uint64_t wwnLo) const
{
    const auto key = std::make_pair(wwnHi, wwnLo);
    const auto it =
        std::lower_bound(volumesByWwn.begin(), volumesByWwn.end(), key,
                         [this](uint32_t i, const std::pair<uint64_t, uint64_t>& k)
                         { return std::make_pair(volumes[i].wwnHi, volumes[i].wwnLo) < k; });
    if (it == volumesByWwn.end() || volumes[*it].wwnHi != wwnHi || volumes[*it].wwnLo != wwnLo)
    {
        return nullptr;
    }
    return &volumes[*it];
}

const Node* Model::findNode(uint32_t number) const
{
    for (const Node& n : nodes)
    {
        if (n.info.nodeID == number)
        {
            return &n;
        }
    }
    return nullptr;
}

const User* Model::findUser(const std::string& name) const
{
    for (const User& u : users)
    {
        if (u.name == name)
        {
            return &u;
        }
    }
    return nullptr;
}

std::shared_ptr<const Model> buildModel(const std::string& jsonText)
{
    json root;
    try
    {
        root = json::parse(jsonText);
    }
    catch (const json::exception& e)
    {
        throw ModelError(std::string("not valid JSON: ") + e.what());
    }
    if (!root.is_object())
    {
        throw ModelError("the model must be a JSON object");
    }
    checkKeys(root, "model",
              {"system", "bootTime", "busyWindowSec", "periodSec", "nodes", "ports", "disks", "volumes", "vluns",
               "users", "faults", "comment"});
    auto m = std::make_shared<Model>();
    if (root.contains("bootTime"))
    {
        m->bootTime = asU64(root["bootTime"], "bootTime");
    }
    if (root.contains("busyWindowSec"))
    {
        // now - begin spans up to two windows and callers take its low 32
        // bits as a signed microsecond count, so two windows must fit there.
        constexpr uint64_t kMaxBusyWindowSec = INT32_MAX / 1000000 / 2;
        m->busyWindowSec =
            static_cast<uint32_t>(asU64Max(root["busyWindowSec"], "busyWindowSec", kMaxBusyWindowSec));
        if (m->busyWindowSec == 0)
        {
            fail("busyWindowSec", "must be positive");
        }
    }
    if (root.contains("periodSec"))
    {
        m->periodSec = static_cast<uint32_t>(asU64Max(root["periodSec"], "periodSec", 86400));
        if (m->periodSec == 0)
        {
            fail("periodSec", "must be positive");
        }
    }
    buildIdentity(root, *m);
    buildNodes(root, *m);
    buildPorts(root, *m);
    buildDisks(root, *m);
    buildVolumes(root, *m);
    buildVLuns(root, *m);
    buildUsers(root, *m);
    buildFaults(root, *m);
    m->text.shrink();
    return m;
}

std::shared_ptr<const Model> buildDefaultModel()
{
    return buildModel("{}");
}

std::vector<FaultSpec> parseFaultSpec(const std::string& text)
{
    std::vector<FaultSpec> out;
    size_t pos = 0;
    while (pos <= text.size())
    {
        size_t end = text.find(',', pos);
        if (end == std::string::npos)
        {
            end = text.size();
        }
        std::string entry = text.substr(pos, end - pos);
        entry.erase(std::remove_if(entry.begin(), entry.end(), ::isspace), entry.end());
        pos = end + 1;
        if (entry.empty())
        {
            continue;
        }
        FaultSpec f;
        const size_t eq = entry.find('=');
        if (eq == std::string::npos || eq == 0)
        {
            throw ModelError("fault \"" + entry + "\": expected call=status");
        }
        f.call = entry.substr(0, eq);
        std::string rest = entry.substr(eq + 1);
        const size_t colon = rest.find(':');
        if (colon != std::string::npos)
        {
            if (rest.substr(colon + 1) != "alloc")
            {
                throw ModelError("fault \"" + entry + "\": only \":alloc\" may follow");
            }
            f.leaveAlloc = true;
            rest.erase(colon);
        }
        char* p = nullptr;
        const char* s = rest.c_str();
        static const char kEmpty[] = "empty";
        if (rest.compare(0, sizeof(kEmpty) - 1, kEmpty) == 0)
        {
            f.emptyChunk = true;
            p = const_cast<char*>(s) + sizeof(kEmpty) - 1;
        }
        else
        {
            f.status = static_cast<int>(std::strtol(s, &p, 0));
        }
        if (p == s)
        {
            throw ModelError("fault \"" + entry + "\": missing status");
        }
        while (*p == '@' || *p == '*')
        {
            const char op = *p++;
            char* q = nullptr;
            const long v = std::strtol(p, &q, 10);
            if (q == p || v < 0)
            {
                throw ModelError("fault \"" + entry + "\": expected a count after '" + op + "'");
            }
            (op == '@' ? f.afterN : f.times) = static_cast<int>(v);
            p = q;
        }
        if (*p != '\0')
        {
            throw ModelError("fault \"" + entry + "\": unexpected \"" + std::string(p) + "\"");
        }
        out.push_back(f);
    }
    return out;
}

} // namespace orvsim
