#ifndef Pegasus_StringRep_h
#define Pegasus_StringRep_h

// The representation behind String, for the implementation files that read
// text in place (name comparisons in element lists). Not installed.

#include <atomic>

#include <Pegasus/Common/Char16.h>
#include <Pegasus/Common/Config.h>

PEGASUS_NAMESPACE_BEGIN

// Text shared by copies: the code units and a terminating 0, in one block.
struct StringRep
{
    std::atomic<Uint32> refs;
    Uint32 size;
    Uint32 capacity;
    Char16 data[1];
};

PEGASUS_NAMESPACE_END

#endif
