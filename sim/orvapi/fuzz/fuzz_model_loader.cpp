// libFuzzer harness: JSON array models through the simulator's loader.
//
// Beyond "no crash, no leak": a refused model leaves the previous one in
// place and says why; an accepted one clears the error and loads again to
// the same element counts.

#include <orvsim.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace
{

struct Counts
{
    uint32_t volumes, vluns, disks, ports, nodes;
    bool operator!=(const Counts& o) const
    {
        return volumes != o.volumes || vluns != o.vluns || disks != o.disks || ports != o.ports ||
               nodes != o.nodes;
    }
};

Counts _counts()
{
    return {orvsim_volume_count(), orvsim_vlun_count(), orvsim_disk_count(), orvsim_port_count(),
            orvsim_node_count()};
}

[[noreturn]] void _fail(const char* what)
{
    fprintf(stderr, "model loader property broken: %s (last error: '%s')\n", what,
            orvsim_last_error());
    abort();
}

// A small model every run starts from, so a refusal can be told from a
// load that kept nothing.
const char* const BASE = R"({"system": {"name": "FUZZ"}, "nodes": {"count": 2},
    "disks": {"count": 3}, "volumes": {"count": 5}, "vluns": {"count": 7}})";

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    // The loader's refusals are its answer; their log lines are noise here.
    orvsim_set_log_level(0);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (orvsim_load_model_json(BASE) != 0)
    {
        _fail("base model refused");
    }
    const Counts base = _counts();
    std::string text(reinterpret_cast<const char*>(data), size);
    if (orvsim_load_model_json(text.c_str()) != 0)
    {
        if (orvsim_last_error()[0] == '\0')
        {
            _fail("refused without a reason");
        }
        if (_counts() != base)
        {
            _fail("a refused model replaced the previous one");
        }
        return 0;
    }
    if (orvsim_last_error()[0] != '\0')
    {
        _fail("accepted with an error left standing");
    }
    const Counts loaded = _counts();
    if (orvsim_load_model_json(BASE) != 0 || orvsim_load_model_json(text.c_str()) != 0)
    {
        _fail("an accepted model refused the second time");
    }
    if (_counts() != loaded)
    {
        _fail("two loads of one model differ");
    }
    return 0;
}
