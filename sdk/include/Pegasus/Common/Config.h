#ifndef Pegasus_Config_h
#define Pegasus_Config_h

// Build configuration shared by every SDK header: namespace macros, the
// fixed-width CIM integer types and the symbol-visibility macros.

#include <cstddef>
#include <cstdint>

#define PEGASUS_NAMESPACE_BEGIN                                                                    \
    namespace Pegasus                                                                              \
    {
#define PEGASUS_NAMESPACE_END }
#define PEGASUS_USING_PEGASUS using namespace Pegasus
#define PEGASUS_USING_STD using namespace std
#define PEGASUS_STD(X) std::X

#define PEGASUS_PLATFORM_LINUX_X86_64_GNU 1
#define PEGASUS_OS_LINUX 1
#define PEGASUS_OS_TYPE_UNIX 1
#define PEGASUS_POINTER_64BIT 1
#define PEGASUS_HAVE_BOOLEAN 1

#define PEGASUS_EXPORT __attribute__((visibility("default")))
#define PEGASUS_IMPORT

// Every library of the SDK exports its public classes the same way, so one
// set of linkage macros serves them all.
#ifndef PEGASUS_COMMON_LINKAGE
#define PEGASUS_COMMON_LINKAGE PEGASUS_EXPORT
#endif
#ifndef PEGASUS_PROVIDER_LINKAGE
#define PEGASUS_PROVIDER_LINKAGE PEGASUS_EXPORT
#endif
#ifndef PEGASUS_CLIENT_LINKAGE
#define PEGASUS_CLIENT_LINKAGE PEGASUS_EXPORT
#endif
#ifndef PEGASUS_SERVER_LINKAGE
#define PEGASUS_SERVER_LINKAGE PEGASUS_EXPORT
#endif
#ifndef PEGASUS_REPOSITORY_LINKAGE
#define PEGASUS_REPOSITORY_LINKAGE PEGASUS_EXPORT
#endif
#ifndef PEGASUS_PROVIDERMANAGER_LINKAGE
#define PEGASUS_PROVIDERMANAGER_LINKAGE PEGASUS_EXPORT
#endif
#ifndef PEGASUS_SDK_LINKAGE
#define PEGASUS_SDK_LINKAGE PEGASUS_EXPORT
#endif

#define PEGASUS_UINT64_LITERAL(X) (X##ULL)
#define PEGASUS_SINT64_LITERAL(X) (X##LL)
#define PEGASUS_64BIT_CONVERSION_WIDTH "ll"

#define PEGASUS_ARRAY_SIZE(X) (sizeof(X) / sizeof(X[0]))

PEGASUS_NAMESPACE_BEGIN

typedef bool Boolean;
typedef unsigned char Uint8;
typedef signed char Sint8;
typedef unsigned short Uint16;
typedef signed short Sint16;
typedef unsigned int Uint32;
typedef signed int Sint32;
typedef unsigned long long Uint64;
typedef signed long long Sint64;
typedef float Real32;
typedef double Real64;

// Lets the compiler check printf-style arguments against their format.
#define PEGASUS_FORMAT(fmtIndex, argIndex) __attribute__((format(printf, fmtIndex, argIndex)))

// Returned by the find operations when nothing matched.
const Uint32 PEG_NOT_FOUND = Uint32(-1);

PEGASUS_NAMESPACE_END

#endif
