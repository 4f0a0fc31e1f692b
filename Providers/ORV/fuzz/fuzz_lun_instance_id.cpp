// libFuzzer harness: the LUN statistics InstanceID, taken apart by parseID
// and built by makeInstanceID.
//
// Input: a first byte choosing the mode. Odd: the rest is a client's
// InstanceID; parseID must leave the outputs terminated inside their
// buffers and, when it refuses, as the caller set them. Even: the rest is a
// LUN path record (LUN, port position, kind, volume name, NUL, host id);
// the ID built from it must parse back to the record's LUN, port position,
// volume and host wherever the format can carry them.

#include "ORV_LUNStatisticalDataProvider.h"

#include <orvsim.h>

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace
{

typedef ORV_LUNStatisticalDataProvider Lun;

struct Fields
{
    Sint32 status = 0;
    Sint32 lun = -5, node = -1, slot = -1, port = -1;
    char name[Lun::VV_NAME_SIZE];
    char host[Lun::HOST_HWID_SIZE];
    Fields()
    {
        memset(name, 'N', sizeof(name));
        memset(host, 'H', sizeof(host));
        name[sizeof(name) - 1] = host[sizeof(host) - 1] = '\0';
    }
};

[[noreturn]] void _fail(const char* what, const std::string& id)
{
    fprintf(stderr, "LUN InstanceID property broken: %s\nid: %s\n", what, id.c_str());
    abort();
}

Fields _parse(const std::string& id)
{
    Fields f;
    f.status = Lun::parseID(String(id.c_str()), &f.lun, f.name, &f.node, &f.slot, &f.port, f.host);
    if (memchr(f.name, '\0', sizeof(f.name)) == nullptr ||
        memchr(f.host, '\0', sizeof(f.host)) == nullptr)
    {
        _fail("output not terminated inside its buffer", id);
    }
    return f;
}

void _clientId(const uint8_t* data, size_t size)
{
    std::string id(reinterpret_cast<const char*>(data), size);
    id = id.c_str(); // as a key value reaches the provider: up to a NUL
    String text;
    try
    {
        text = String(id.c_str());
    }
    catch (const Exception&)
    {
        return; // not UTF-8: no key value carries it
    }
    Fields f = _parse(id);
    if (f.status != 0)
    {
        Fields preset;
        if (f.status != Lun::PARSE_FAILED || f.lun != preset.lun || f.node != preset.node ||
            f.slot != preset.slot || f.port != preset.port || strcmp(f.name, preset.name) != 0 ||
            strcmp(f.host, preset.host) != 0)
        {
            _fail("a refused ID changed the outputs", id);
        }
    }
}

bool _printable(const char* s, bool spaces)
{
    for (; *s; ++s)
    {
        unsigned char c = static_cast<unsigned char>(*s);
        if (c < 0x20 || c > 0x7E || (!spaces && c == ' '))
        {
            return false;
        }
    }
    return true;
}

void _record(const uint8_t* data, size_t size)
{
    if (size < 7)
    {
        return;
    }
    api_VLunStats_t r;
    memset(&r, 0, sizeof(r));
    memcpy(&r.lunID, data, 4);
    memcpy(&r.portID, data + 4, 2);
    r.vlunType = data[6] % 6;
    data += 7;
    size -= 7;
    const uint8_t* nul = static_cast<const uint8_t*>(memchr(data, '\0', size));
    size_t nameLength = nul ? size_t(nul - data) : size;
    memcpy(r.vvName, data, std::min(nameLength, sizeof(r.vvName) - 1));
    if (nul)
    {
        size_t hostLength = size - nameLength - 1;
        memcpy(r.host_hwid, nul + 1, std::min(hostLength, sizeof(r.host_hwid) - 1));
    }
    // The array's names and host ids are printable ASCII.
    if (!_printable(r.vvName, true) || !_printable(r.host_hwid, false))
    {
        return;
    }

    std::string id = static_cast<const char*>(Lun::makeInstanceID(r).getCString());
    Fields f = _parse(id);
    if (f.status != 0)
    {
        _fail("built ID refused", id);
    }
    if (f.lun != static_cast<Sint32>(r.lunID))
    {
        _fail("LUN differs", id);
    }
    if (r.vlunType < 1 || r.vlunType > 4)
    {
        return; // the short form carries the LUN only
    }
    int node, slot, port;
    Lun::splitPortID(r.portID, node, slot, port);
    // A name with ':' or an empty one ends the scan early: the format cannot
    // carry it, and the array allows neither.
    if (r.vvName[0] == '\0' || strchr(r.vvName, ':') != nullptr)
    {
        return;
    }
    if (strcmp(f.name, r.vvName) != 0 || f.node != node || f.slot != slot || f.port != port)
    {
        _fail("volume or port position differs", id);
    }
    if (r.host_hwid[0] != '\0' && strcmp(f.host, r.host_hwid) != 0)
    {
        _fail("host id differs", id);
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    // Refused IDs are logged; here that is noise.
    orvsim_set_log_level(0);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
    {
        return 0;
    }
    if (data[0] & 1)
    {
        _clientId(data + 1, size - 1);
    }
    else
    {
        _record(data + 1, size - 1);
    }
    return 0;
}
