#include <Pegasus/Common/CIMType.h>

PEGASUS_NAMESPACE_BEGIN

const char* cimTypeToString(const CIMType type)
{
    static const char* const names[] = {"boolean", "uint8",   "sint8",  "uint16",   "sint16",
                                        "uint32",  "sint32",  "uint64", "sint64",   "real32",
                                        "real64",  "char16",  "string", "datetime", "reference",
                                        "object",  "instance"};
    unsigned index = static_cast<unsigned>(type);
    return index < sizeof(names) / sizeof(names[0]) ? names[index] : "unknown";
}

PEGASUS_NAMESPACE_END
