#include <Pegasus/Common/Formatter.h>

#include <cstdarg>
#include <cstdio>

PEGASUS_NAMESPACE_BEGIN

namespace
{

String _print(const char* format, ...) __attribute__((format(printf, 1, 2)));

String _print(const char* format, ...)
{
    char buffer[64];
    va_list args;
    va_start(args, format);
    vsnprintf(buffer, sizeof(buffer), format, args);
    va_end(args);
    return String(buffer);
}

} // namespace

const Formatter::Arg Formatter::DEFAULT_ARG;

Formatter::Arg::Arg() : _null(true) {}

Formatter::Arg::Arg(const String& x) : _null(false), _text(x) {}

Formatter::Arg::Arg(const char* x) : _null(false), _text(x ? x : "") {}

Formatter::Arg::Arg(Boolean x) : _null(false), _text(x ? "true" : "false") {}

Formatter::Arg::Arg(Sint32 x) : _null(false), _text(_print("%d", x)) {}

Formatter::Arg::Arg(Uint32 x) : _null(false), _text(_print("%u", x)) {}

Formatter::Arg::Arg(Sint64 x) : _null(false), _text(_print("%lld", x)) {}

Formatter::Arg::Arg(Uint64 x) : _null(false), _text(_print("%llu", x)) {}

Formatter::Arg::Arg(Real64 x) : _null(false), _text(_print("%g", x)) {}

Boolean Formatter::Arg::isNull() const
{
    return _null;
}

String Formatter::Arg::toString() const
{
    return _text;
}

String Formatter::format(const String& formatString, const Arg& arg0, const Arg& arg1,
                         const Arg& arg2, const Arg& arg3, const Arg& arg4, const Arg& arg5,
                         const Arg& arg6, const Arg& arg7, const Arg& arg8, const Arg& arg9)
{
    const Arg* args[] = {&arg0, &arg1, &arg2, &arg3, &arg4, &arg5, &arg6, &arg7, &arg8, &arg9};
    String result;
    Uint32 n = formatString.size();
    for (Uint32 i = 0; i < n; i++)
    {
        Uint16 c = formatString[i];
        if (c == '\\' && i + 1 < n && formatString[i + 1] == '$')
        {
            result.append(Char16('$'));
            i++;
        }
        else if (c == '$' && i + 1 < n && formatString[i + 1] >= '0' && formatString[i + 1] <= '9')
        {
            result.append(args[formatString[i + 1] - '0']->toString());
            i++;
        }
        else
        {
            result.append(Char16(c));
        }
    }
    return result;
}

PEGASUS_NAMESPACE_END
