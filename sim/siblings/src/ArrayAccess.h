#ifndef ORV_SIBLINGS_ArrayAccess_h
#define ORV_SIBLINGS_ArrayAccess_h

#include <orvapi.h>
#include <orvsim.h>

#include <functional>
#include <string>
#include <vector>

// Reads the array's configuration through the management API: plain records
// in, no CIM types. Every list query is made while holding the process-wide
// semaphore, one call per hold. A failed call throws ArrayAccessError.
namespace orvsib
{

class ArrayAccessError : public std::exception
{
public:
    ArrayAccessError(const std::string& call, int status);
    const char* what() const noexcept override;
    const std::string& call() const;
    int status() const;

private:
    std::string _call;
    int _status;
    std::string _text;
};

// Identity of the storage system (name, host name, addresses, ...).
orvsim_identity_t readIdentity();

std::vector<api_NodeInfo_t> readNodes();

// Every drive, as the statistics query lists them.
std::vector<api_DiskStats_t> readDisks();

// Every port of every node, front-end and back-end.
std::vector<api_PortStats_t> readPorts();

// Walks the volume list chunk by chunk (chunkSize volumes a call) and hands
// each volume to visit; stops early when visit answers false.
void visitVolumes(const std::function<bool(const api_VVInfo_t&)>& visit, uint32_t chunkSize = 200);

// Descriptive data that the statistics queries do not carry; false when the
// model has none for that device.
bool readDiskInfo(const char* diskDeviceID, orvsim_disk_info_t& out);
bool readPortInfo(const char* portDeviceID, orvsim_port_info_t& out);

} // namespace orvsib

#endif
