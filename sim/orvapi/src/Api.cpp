// The management API calls, answered from the current model.
#include "Runtime.h"
#include "Wwn.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>
#include <string>
#include <vector>

using namespace orvsim;

namespace
{

std::string fmt(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string fmt(const char* format, ...)
{
    char buf[512];
    va_list ap;
    va_start(ap, format);
    std::vsnprintf(buf, sizeof buf, format, ap);
    va_end(ap);
    return buf;
}

std::string quoted(const char* s)
{
    return s ? "\"" + std::string(s) + "\"" : std::string("null");
}

// Result arrays come from malloc because callers release them with free.
// A failing call that must leave memory behind gets at least one element.
template <class Rec>
Rec* allocRecords(size_t n, bool forceNonNull)
{
    if (n == 0 && !forceNonNull)
    {
        return nullptr;
    }
    auto* p = static_cast<Rec*>(std::malloc((n ? n : 1) * sizeof(Rec)));
    if (p && n == 0)
    {
        std::memset(p, 0, sizeof(Rec));
    }
    return p;
}

struct Query
{
    Runtime& rt;
    Gate gate;
    std::shared_ptr<const Model> model;
    Clock clock;

    Query(CallId id, bool bracketed, std::string args)
        : rt(Runtime::get()), gate(rt.enter(id, bracketed, std::move(args))), model(rt.model()),
          clock(model->clockAt(rt.nowUs()))
    {
    }
    // A fault without a left-behind array fails before any work.
    bool failsEarly() const
    {
        return gate.status != 0 && !gate.leaveAlloc;
    }
};

// The same port position rule callers use: 0xFFFC is node 253, slot -7,
// port -8; everything else is packed bits.
void splitPortID(lpid_t id, int& node, int& slot, int& port)
{
    if (id == API_PORTID_NONE)
    {
        node = 253;
        slot = -7;
        port = -8;
        return;
    }
    node = (id >> 7) & 7;
    slot = (id >> 3) & 15;
    port = id & 7;
}

// Chunked walk over `total` matching records: [start, start + n).
struct Window
{
    size_t start;
    size_t n;
    uint32_t nextCursor;
};

Window chunkWindow(size_t total, const uint32_t* cursor, uint32_t chunkSize)
{
    if (chunkSize == 0)
    {
        return {0, total, 0};
    }
    size_t start = cursor ? *cursor : 0;
    if (start > total)
    {
        start = total;
    }
    const size_t n = std::min<size_t>(chunkSize, total - start);
    const size_t next = start + n;
    return {start, n, next < total ? static_cast<uint32_t>(next) : 0U};
}

// An armed empty chunk: success, no records, and a cursor moved past the
// withheld records but never to 0, as a library may answer mid-walk.
template <class Rec>
int32_t answerEmptyChunk(const Window& w, uint32_t* cursor_id, uint32_t& count, Rec*& records)
{
    count = 0;
    records = nullptr;
    if (cursor_id)
    {
        const size_t next = w.start + w.n;
        *cursor_id = next == 0 ? 1U : static_cast<uint32_t>(next);
    }
    return API_SUCCESS;
}

} // namespace

extern "C" {

int32_t api_orvOpenForCimserver(const char* userName)
{
    Query q(CallId::OpenForCimserver, false, "api_orvOpenForCimserver(" + quoted(userName) + ")");
    if (q.gate.status != 0)
    {
        return q.gate.status;
    }
    if (!userName || !*userName)
    {
        return API_SUCCESS; // the CIM server itself
    }
    const User* u = q.model->findUser(userName);
    return u && u->enabled ? API_SUCCESS : API_ERR_ACCESS;
}

int32_t api_authorizeCIMUser(const char* userName, const char* address, const char* operation)
{
    Query q(CallId::AuthorizeCIMUser, false,
            "api_authorizeCIMUser(" + quoted(userName) + "," + quoted(address) + "," + quoted(operation) + ")");
    if (q.gate.status != 0)
    {
        return q.gate.status;
    }
    if (!operation)
    {
        return API_ERR_INVALID_ARG;
    }
    if (!userName || !*userName)
    {
        return API_AUTH_GRANTED;
    }
    const User* u = q.model->findUser(userName);
    if (!u || !u->enabled)
    {
        return API_AUTH_NO_RIGHTS;
    }
    if (!u->addresses.empty())
    {
        bool allowed = false;
        for (const std::string& a : u->addresses)
        {
            allowed = allowed || (address && a == address);
        }
        if (!allowed)
        {
            return API_AUTH_DENIED;
        }
    }
    if (u->hasAuthorize)
    {
        return u->authorize;
    }
    const std::string& role = u->role;
    if (role == "super" || role == "edit")
    {
        return API_AUTH_GRANTED;
    }
    if (role == "browse")
    {
        // Reading roles may run the operations that only look.
        const char* dot = std::strrchr(operation, '.');
        const char* method = dot ? dot + 1 : operation;
        static const char* const kReads[] = {"get", "enumerate", "associator", "reference"};
        for (const char* r : kReads)
        {
            if (strncasecmp(method, r, std::strlen(r)) == 0)
            {
                return API_AUTH_GRANTED;
            }
        }
        return API_AUTH_DENIED;
    }
    if (role == "none")
    {
        return API_AUTH_NO_RIGHTS;
    }
    if (role == "audit")
    {
        return API_AUTH_DENIED;
    }
    return API_AUTH_UNSUPPORTED;
}

int32_t api_getVolumeStats_chunk(api_VolumesStats_t* out, uint64_t wwn, uint64_t wwn_re, uint32_t* cursor_id,
                                 uint32_t chunkSize)
{
    Query q(CallId::GetVolumeStatsChunk, true,
            fmt("api_getVolumeStats_chunk(0x%016llX,0x%016llX,%s,%u)", static_cast<unsigned long long>(wwn),
                static_cast<unsigned long long>(wwn_re), cursor_id ? std::to_string(*cursor_id).c_str() : "null",
                chunkSize));
    if (!out || (!cursor_id && chunkSize > 0))
    {
        return API_ERR_INVALID_ARG;
    }
    if (q.failsEarly())
    {
        return q.gate.status;
    }
    const std::vector<Volume>& vols = q.model->volumes;
    const bool all = wwn == API_WWN_ALL_VOLUMES;
    const Volume* single = all ? nullptr : q.model->findVolume(wwn, wwn_re);
    const size_t total = all ? vols.size() : single ? 1 : 0;
    const Window w = chunkWindow(total, cursor_id, chunkSize);
    if (q.gate.emptyChunk)
    {
        return answerEmptyChunk(w, cursor_id, out->count, out->stats);
    }
    api_VolumeStats_t* recs = allocRecords<api_VolumeStats_t>(w.n, q.gate.leaveAlloc);
    if (!recs && (w.n || q.gate.leaveAlloc))
    {
        return API_ERR_NO_MEMORY;
    }
    for (size_t k = 0; k < w.n; ++k)
    {
        fillVolume(*q.model, all ? vols[w.start + k] : *single, q.clock, recs[k]);
    }
    out->count = static_cast<uint32_t>(w.n);
    out->stats = recs;
    if (q.gate.status != 0)
    {
        return q.gate.status; // cursor not advanced
    }
    if (cursor_id)
    {
        *cursor_id = w.nextCursor;
    }
    return API_SUCCESS;
}

int32_t api_getVVs_chunk(api_VVsInfo_t* out, uint32_t* cursor_id, uint32_t chunkSize)
{
    Query q(CallId::GetVVsChunk, true,
            fmt("api_getVVs_chunk(%s,%u)", cursor_id ? std::to_string(*cursor_id).c_str() : "null", chunkSize));
    if (!out || (!cursor_id && chunkSize > 0))
    {
        return API_ERR_INVALID_ARG;
    }
    if (q.failsEarly())
    {
        return q.gate.status;
    }
    const std::vector<Volume>& vols = q.model->volumes;
    const Window w = chunkWindow(vols.size(), cursor_id, chunkSize);
    if (q.gate.emptyChunk)
    {
        return answerEmptyChunk(w, cursor_id, out->count, out->vvs);
    }
    api_VVInfo_t* recs = allocRecords<api_VVInfo_t>(w.n, q.gate.leaveAlloc);
    if (!recs && (w.n || q.gate.leaveAlloc))
    {
        return API_ERR_NO_MEMORY;
    }
    for (size_t k = 0; k < w.n; ++k)
    {
        fillVVInfo(*q.model, vols[w.start + k], recs[k]);
    }
    out->count = static_cast<uint32_t>(w.n);
    out->vvs = recs;
    if (q.gate.status != 0)
    {
        return q.gate.status;
    }
    if (cursor_id)
    {
        *cursor_id = w.nextCursor;
    }
    return API_SUCCESS;
}

int32_t api_wwnStringToInt(api_wwn_scratch_t* scratch, const char* text, uint64_t* wwn_re, uint64_t* wwn)
{
    Query q(CallId::WwnStringToInt, false, "api_wwnStringToInt(" + quoted(text) + ")");
    if (q.gate.status != 0)
    {
        return q.gate.status;
    }
    if (!text)
    {
        return API_ERR_INVALID_ARG;
    }
    if (scratch)
    {
        std::snprintf(scratch->text, sizeof scratch->text, "%s", text);
    }
    uint64_t hi = 0, lo = 0;
    if (!wwnFromText(text, lo, hi))
    {
        return API_ERR_INVALID_ARG;
    }
    if (wwn_re)
    {
        *wwn_re = lo;
    }
    if (wwn)
    {
        *wwn = hi;
    }
    return API_SUCCESS;
}

int32_t api_wwnIntToString(uint64_t wwn_re, uint64_t wwn, char text[API_WWN_TEXT_LEN])
{
    Query q(CallId::WwnIntToString, false,
            fmt("api_wwnIntToString(0x%016llX,0x%016llX)", static_cast<unsigned long long>(wwn_re),
                static_cast<unsigned long long>(wwn)));
    if (q.gate.status != 0)
    {
        return q.gate.status;
    }
    if (!text)
    {
        return API_ERR_INVALID_ARG;
    }
    wwnToText(wwn_re, wwn, text);
    return API_SUCCESS;
}

int32_t api_getDiskStats(uint32_t sel1, uint64_t sel2, uint32_t sel3, uint32_t sel4, uint32_t sel5,
                         api_DisksStats_t* out)
{
    Query q(CallId::GetDiskStats, true,
            fmt("api_getDiskStats(0x%X,0x%llX,0x%X,0x%X,0x%X)", sel1, static_cast<unsigned long long>(sel2), sel3,
                sel4, sel5));
    if (!out)
    {
        return API_ERR_INVALID_ARG;
    }
    if (q.failsEarly())
    {
        return q.gate.status;
    }
    const bool anyDisk = sel1 == API_DISK_ALL || sel1 == API_SEL_ANY;
    const bool anyLoop = sel3 == API_SEL_ANY;
    std::vector<const Disk*> hits;
    hits.reserve(q.model->disks.size());
    for (const Disk& d : q.model->disks)
    {
        if ((anyDisk || d.rec.diskID == sel1) && (anyLoop || d.rec.loopID == sel3))
        {
            hits.push_back(&d);
        }
    }
    api_DiskStats_t* recs = allocRecords<api_DiskStats_t>(hits.size(), q.gate.leaveAlloc);
    if (!recs && (!hits.empty() || q.gate.leaveAlloc))
    {
        return API_ERR_NO_MEMORY;
    }
    for (size_t k = 0; k < hits.size(); ++k)
    {
        fillDisk(*hits[k], q.clock, recs[k]);
    }
    out->count = static_cast<uint32_t>(hits.size());
    out->stats = recs;
    return q.gate.status;
}

int32_t api_getPortStats(api_port_type_e portType, uint32_t node, uint32_t slot, uint32_t port,
                         api_PortsStats_t* out)
{
    Query q(CallId::GetPortStats, true,
            fmt("api_getPortStats(%d,0x%X,0x%X,0x%X)", static_cast<int>(portType), node, slot, port));
    if (!out)
    {
        return API_ERR_INVALID_ARG;
    }
    if (q.failsEarly())
    {
        return q.gate.status;
    }
    std::vector<const Port*> hits;
    hits.reserve(q.model->ports.size());
    for (const Port& p : q.model->ports)
    {
        if (portType != API_PORT_TYPE_ALL && p.rec.type != portType)
        {
            continue;
        }
        const bool anyPosition = node == API_SEL_ANY && slot == API_SEL_ANY && port == API_SEL_ANY;
        if (p.rec.portID == API_PORTID_NONE && !anyPosition)
        {
            continue; // not at any position, so no position selects it
        }
        int n, s, pp;
        splitPortID(p.rec.portID, n, s, pp);
        if ((node != API_SEL_ANY && static_cast<uint32_t>(n) != node) ||
            (slot != API_SEL_ANY && static_cast<uint32_t>(s) != slot) ||
            (port != API_SEL_ANY && static_cast<uint32_t>(pp) != port))
        {
            continue;
        }
        hits.push_back(&p);
    }
    api_PortStats_t* recs = allocRecords<api_PortStats_t>(hits.size(), q.gate.leaveAlloc);
    if (!recs && (!hits.empty() || q.gate.leaveAlloc))
    {
        return API_ERR_NO_MEMORY;
    }
    for (size_t k = 0; k < hits.size(); ++k)
    {
        fillPort(*hits[k], q.clock, recs[k]);
    }
    out->count = static_cast<uint32_t>(hits.size());
    out->stats = recs;
    return q.gate.status;
}

int32_t api_getNodes(api_NodeList_t* out)
{
    Query q(CallId::GetNodes, true, "api_getNodes()");
    if (!out)
    {
        return API_ERR_INVALID_ARG;
    }
    if (q.failsEarly())
    {
        return q.gate.status;
    }
    const std::vector<Node>& nodes = q.model->nodes;
    api_NodeInfo_t* recs = allocRecords<api_NodeInfo_t>(nodes.size(), q.gate.leaveAlloc);
    if (!recs && (!nodes.empty() || q.gate.leaveAlloc))
    {
        return API_ERR_NO_MEMORY;
    }
    for (size_t k = 0; k < nodes.size(); ++k)
    {
        recs[k] = nodes[k].info;
    }
    out->count = static_cast<uint32_t>(nodes.size());
    out->nodes = recs;
    return q.gate.status;
}

int32_t api_getNodeStats(api_NodeStats_t* out)
{
    Query q(CallId::GetNodeStats, true, "api_getNodeStats()");
    if (!out)
    {
        return API_ERR_INVALID_ARG;
    }
    if (q.gate.status != 0)
    {
        return q.gate.status;
    }
    fillNodeStats(*q.model, q.clock, *out);
    return API_SUCCESS;
}

int32_t api_getNodeCPUStats(uint32_t node, cpustats* out, api_error_t* err)
{
    Query q(CallId::GetNodeCPUStats, false, fmt("api_getNodeCPUStats(%u)", node));
    auto failWith = [err](int32_t status, const std::string& text) {
        if (err)
        {
            err->code = status;
            std::snprintf(err->text, sizeof err->text, "%s", text.c_str());
        }
        return status;
    };
    if (q.gate.status != 0)
    {
        return failWith(q.gate.status, fmt("node %u: CPU statistics unavailable", node));
    }
    if (!out)
    {
        return failWith(API_ERR_INVALID_ARG, "no output record");
    }
    const Node* n = q.model->findNode(node);
    if (!n)
    {
        return failWith(API_ERR_NOT_FOUND, fmt("node %u not found", node));
    }
    if (!n->info.online)
    {
        return failWith(API_ERR_IO, fmt("node %u is offline", node));
    }
    fillCpu(*n, q.clock, *out);
    return API_SUCCESS;
}

int32_t api_getVLunStats(uint32_t sel1, const char* vvName, int32_t lunid, int8_t nsp_n, int16_t nsp_s,
                         int8_t nsp_p, api_VLunsStats_t* out)
{
    Query q(CallId::GetVLunStats, true,
            fmt("api_getVLunStats(%u,%s,%d,%d,%d,%d)", sel1, quoted(vvName).c_str(), lunid, nsp_n, nsp_s, nsp_p));
    if (!out)
    {
        return API_ERR_INVALID_ARG;
    }
    if (q.failsEarly())
    {
        return q.gate.status;
    }
    const bool anyName = !vvName || !*vvName;
    const std::vector<VLun>& vluns = q.model->vluns;
    std::vector<uint32_t> hits;
    const TextTable& text = q.model->text;
    for (size_t k = 0; k < vluns.size(); ++k)
    {
        const VLun& r = vluns[k];
        if (!anyName && std::strcmp(text.str(r.vvName), vvName) != 0)
        {
            continue;
        }
        // The selector is the caller's unsigned LUN number passed as signed
        // 32 bits: compare the bits, not the widened values.
        if (lunid != API_LUN_ALL && r.lunID != static_cast<uint32_t>(lunid))
        {
            continue;
        }
        int n, s, p;
        splitPortID(r.portID, n, s, p);
        // Selectors arrive narrowed (node and port to 8 bits, slot to 16),
        // so the record's position is narrowed the same way.
        if ((nsp_n != API_NSP_ALL && static_cast<int8_t>(n) != nsp_n) ||
            (nsp_s != API_NSP_ALL && static_cast<int16_t>(s) != nsp_s) ||
            (nsp_p != API_NSP_ALL && static_cast<int8_t>(p) != nsp_p))
        {
            continue;
        }
        hits.push_back(static_cast<uint32_t>(k));
    }
    api_VLunStats_t* recs = allocRecords<api_VLunStats_t>(hits.size(), q.gate.leaveAlloc);
    if (!recs && (!hits.empty() || q.gate.leaveAlloc))
    {
        return API_ERR_NO_MEMORY;
    }
    for (size_t k = 0; k < hits.size(); ++k)
    {
        fillVLun(*q.model, vluns[hits[k]], q.clock, recs[k]);
    }
    out->count = static_cast<uint32_t>(hits.size());
    out->stats = recs;
    return q.gate.status;
}

int32_t api_getSystemDualIP(api_ipaddr_t* out)
{
    Query q(CallId::GetSystemDualIP, false, "api_getSystemDualIP()");
    if (q.gate.status != 0)
    {
        return q.gate.status;
    }
    if (!out)
    {
        return API_ERR_INVALID_ARG;
    }
    std::memset(out, 0, sizeof *out);
    const orvsim_identity_t& id = q.model->identity;
    in_addr a4{};
    if (!id.ipv4[0] || inet_pton(AF_INET, id.ipv4, &a4) != 1)
    {
        return API_ERR_NOT_FOUND;
    }
    out->ipv4_addr = a4.s_addr;
    out->dual_flag = API_DUAL_IP_V4;
    in6_addr a6{};
    if (id.ipv6[0] && inet_pton(AF_INET6, id.ipv6, &a6) == 1)
    {
        std::memcpy(out->ipv6_addr, &a6, sizeof out->ipv6_addr);
        out->dual_flag = API_DUAL_IP_V4_V6;
    }
    return API_SUCCESS;
}

} // extern "C"
