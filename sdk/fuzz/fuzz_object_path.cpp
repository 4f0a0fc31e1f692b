// libFuzzer harness: an object path from its string form.
//
// Beyond "no crash, no leak", a path that parses must survive its own
// string form: toString() parses again, to an identical path with the same
// string and hash, and set() on a used path gives the same result as a
// fresh parse (and leaves the path as it was when the text is refused).

#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Exception.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

using namespace Pegasus;

namespace
{

// UTF-8 when the bytes are; otherwise one code unit per byte, so that NUL,
// lone surrogates' neighbours and other odd units reach the parser too.
String _text(const uint8_t* data, size_t size)
{
    try
    {
        return String(reinterpret_cast<const char*>(data), static_cast<Uint32>(size));
    }
    catch (const Exception&)
    {
        String out;
        for (size_t i = 0; i < size; ++i)
        {
            out.append(Char16(data[i]));
        }
        return out;
    }
}

std::string _utf8(const String& s)
{
    std::string out;
    for (Uint32 i = 0; i < s.size(); ++i)
    {
        Uint16 c = s[i];
        if (c >= 0x20 && c < 0x7F)
        {
            out += char(c);
        }
        else
        {
            char hex[8];
            snprintf(hex, sizeof(hex), "\\u%04x", c);
            out += hex;
        }
    }
    return out;
}

[[noreturn]] void _fail(const char* what, const String& input, const String& detail)
{
    fprintf(stderr, "object path property broken: %s\ninput:  %s\ndetail: %s\n", what,
            _utf8(input).c_str(), _utf8(detail).c_str());
    abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    String input = _text(data, size);
    CIMObjectPath path;
    try
    {
        path.set(input);
    }
    catch (const MalformedObjectNameException&)
    {
        // Refused: set() on a used path must leave it whole.
        CIMObjectPath used(String("//h:5988/root/x:C.k=\"v\",n=1"));
        String before = used.toString();
        try
        {
            used.set(input);
            _fail("refused text accepted by set() on a used path", input, used.toString());
        }
        catch (const MalformedObjectNameException&)
        {
        }
        if (used.toString() != before)
        {
            _fail("refused set() changed the path", input, used.toString());
        }
        return 0;
    }

    if (!path.identical(path))
    {
        _fail("path not identical to itself", input, path.toString());
    }
    String text = path.toString();
    CIMObjectPath again;
    try
    {
        again.set(text);
    }
    catch (const Exception&)
    {
        _fail("toString() does not parse", input, text);
    }
    if (!again.identical(path) || !path.identical(again))
    {
        _fail("toString() parses to another path", input, text + " -> " + again.toString());
    }
    if (again.toString() != text)
    {
        _fail("string form not stable", input, text + " -> " + again.toString());
    }
    if (again.makeHashCode() != path.makeHashCode())
    {
        _fail("identical paths hash differently", input, text);
    }
    const Array<CIMKeyBinding>& keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); ++i)
    {
        if (keys[i].getType() == CIMKeyBinding::REFERENCE)
        {
            try
            {
                CIMObjectPath target(keys[i].getValue());
            }
            catch (const Exception&)
            {
                _fail("reference key that is no path", input, keys[i].getValue());
            }
        }
    }

    // set() on a used path: the same as a fresh parse.
    CIMObjectPath reused(String("//h:5988/root/x:C.k=\"v\",n=1"));
    reused.set(input);
    if (!reused.identical(path) || reused.toString() != text)
    {
        _fail("set() on a used path differs from a fresh parse", input, reused.toString());
    }
    return 0;
}
