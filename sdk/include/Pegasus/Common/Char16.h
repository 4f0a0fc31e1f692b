#ifndef Pegasus_Char16_h
#define Pegasus_Char16_h

#include <Pegasus/Common/Config.h>

PEGASUS_NAMESPACE_BEGIN

// One UTF-16 code unit. A distinct type rather than Uint16 so that CIMValue
// can tell a char16 value from a uint16 one.
class PEGASUS_COMMON_LINKAGE Char16
{
public:
    Char16() : _code(0) {}

    Char16(Uint16 x) : _code(x) {}

    Char16& operator=(Uint16 x)
    {
        _code = x;
        return *this;
    }

    operator Uint16() const
    {
        return _code;
    }

private:
    Uint16 _code;
};

PEGASUS_NAMESPACE_END

#endif
