#ifndef Pegasus_Formatter_h
#define Pegasus_Formatter_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

// Substitutes "$0".."$9" in a format with the text of the arguments;
// "\\$" stands for a literal dollar sign.
class PEGASUS_COMMON_LINKAGE Formatter
{
public:
    class PEGASUS_COMMON_LINKAGE Arg
    {
    public:
        Arg();
        Arg(const String& x);
        Arg(const char* x);
        Arg(Boolean x);
        Arg(Sint32 x);
        Arg(Uint32 x);
        Arg(Sint64 x);
        Arg(Uint64 x);
        Arg(Real64 x);

        Boolean isNull() const;
        String toString() const;

    private:
        Boolean _null;
        String _text;
    };

    static const Arg DEFAULT_ARG;

    static String format(const String& formatString, const Arg& arg0 = DEFAULT_ARG,
                         const Arg& arg1 = DEFAULT_ARG, const Arg& arg2 = DEFAULT_ARG,
                         const Arg& arg3 = DEFAULT_ARG, const Arg& arg4 = DEFAULT_ARG,
                         const Arg& arg5 = DEFAULT_ARG, const Arg& arg6 = DEFAULT_ARG,
                         const Arg& arg7 = DEFAULT_ARG, const Arg& arg8 = DEFAULT_ARG,
                         const Arg& arg9 = DEFAULT_ARG);
};

PEGASUS_NAMESPACE_END

#endif
