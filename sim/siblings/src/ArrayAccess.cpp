#include "ArrayAccess.h"

#include <cstdlib>
#include <cstring>

namespace orvsib
{

namespace
{

// One library call under the semaphore. A failed wait counts as the call's
// status, and then the library is not called and nothing is posted.
template <typename Call> int _underSemaphore(Call call)
{
    const int waited = cim_sem_wait();
    if (waited != 0)
    {
        return waited;
    }
    const int status = call();
    cim_sem_post();
    return status;
}

// Takes ownership of a malloc'd record array, also after a failed call.
template <typename Record> struct _Owned
{
    Record* records = nullptr;
    ~_Owned()
    {
        std::free(records);
    }
};

} // namespace

ArrayAccessError::ArrayAccessError(const std::string& call, int status)
    : _call(call), _status(status), _text(call + " failed, status = " + std::to_string(status))
{
}

const char* ArrayAccessError::what() const noexcept
{
    return _text.c_str();
}

const std::string& ArrayAccessError::call() const
{
    return _call;
}

int ArrayAccessError::status() const
{
    return _status;
}

orvsim_identity_t readIdentity()
{
    orvsim_identity_t identity;
    std::memset(&identity, 0, sizeof(identity));
    const int status = orvsim_get_identity(&identity);
    if (status != 0)
    {
        throw ArrayAccessError("orvsim_get_identity", status);
    }
    return identity;
}

std::vector<api_NodeInfo_t> readNodes()
{
    api_NodeList_t list;
    std::memset(&list, 0, sizeof(list));
    const int status = _underSemaphore([&] { return api_getNodes(&list); });
    _Owned<api_NodeInfo_t> owned;
    owned.records = list.nodes;
    if (status != 0)
    {
        throw ArrayAccessError("api_getNodes", status);
    }
    return std::vector<api_NodeInfo_t>(list.nodes, list.nodes + (list.nodes ? list.count : 0));
}

std::vector<api_DiskStats_t> readDisks()
{
    api_DisksStats_t disks;
    std::memset(&disks, 0, sizeof(disks));
    const int status = _underSemaphore(
        [&]
        {
            return api_getDiskStats(API_DISK_ALL, API_WWN_ALL_VOLUMES, API_SEL_ANY, API_SEL_ANY,
                                    API_SEL_ANY, &disks);
        });
    _Owned<api_DiskStats_t> owned;
    owned.records = disks.stats;
    if (status != 0)
    {
        throw ArrayAccessError("api_getDiskStats", status);
    }
    return std::vector<api_DiskStats_t>(disks.stats, disks.stats + (disks.stats ? disks.count : 0));
}

std::vector<api_PortStats_t> readPorts()
{
    api_PortsStats_t ports;
    std::memset(&ports, 0, sizeof(ports));
    const int status = _underSemaphore(
        [&] {
            return api_getPortStats(API_PORT_TYPE_ALL, API_SEL_ANY, API_SEL_ANY, API_SEL_ANY,
                                    &ports);
        });
    _Owned<api_PortStats_t> owned;
    owned.records = ports.stats;
    if (status != 0)
    {
        throw ArrayAccessError("api_getPortStats", status);
    }
    return std::vector<api_PortStats_t>(ports.stats, ports.stats + (ports.stats ? ports.count : 0));
}

void visitVolumes(const std::function<bool(const api_VVInfo_t&)>& visit, uint32_t chunkSize)
{
    uint32_t cursor = 0;
    do
    {
        api_VVsInfo_t chunk;
        std::memset(&chunk, 0, sizeof(chunk));
        const int status =
            _underSemaphore([&] { return api_getVVs_chunk(&chunk, &cursor, chunkSize); });
        _Owned<api_VVInfo_t> owned;
        owned.records = chunk.vvs;
        if (status != 0)
        {
            throw ArrayAccessError("api_getVVs_chunk", status);
        }
        const uint32_t count = chunk.vvs ? chunk.count : 0;
        for (uint32_t i = 0; i < count; i++)
        {
            if (!visit(chunk.vvs[i]))
            {
                return;
            }
        }
        // An empty chunk ends the walk even if the cursor says otherwise.
        if (count == 0)
        {
            return;
        }
    } while (cursor != 0);
}

bool readDiskInfo(const char* diskDeviceID, orvsim_disk_info_t& out)
{
    std::memset(&out, 0, sizeof(out));
    return orvsim_get_disk_info(diskDeviceID, &out) == 0;
}

bool readPortInfo(const char* portDeviceID, orvsim_port_info_t& out)
{
    std::memset(&out, 0, sizeof(out));
    return orvsim_get_port_info(portDeviceID, &out) == 0;
}

} // namespace orvsib
