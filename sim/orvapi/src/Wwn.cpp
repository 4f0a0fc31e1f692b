#include "Wwn.h"

#include <cstring>

namespace orvsim
{

bool wwnFromText(const char* text, uint64_t& lo, uint64_t& hi)
{
    if (!text)
    {
        return false;
    }
    uint64_t h = 0, l = 0;
    int digits = 0;
    for (const char* p = text; *p; ++p)
    {
        const char c = *p;
        unsigned v;
        if (c >= '0' && c <= '9')
        {
            v = static_cast<unsigned>(c - '0');
        }
        else if (c >= 'a' && c <= 'f')
        {
            v = static_cast<unsigned>(c - 'a' + 10);
        }
        else if (c >= 'A' && c <= 'F')
        {
            v = static_cast<unsigned>(c - 'A' + 10);
        }
        else
        {
            return false;
        }
        if (++digits > 32)
        {
            return false;
        }
        h = (h << 4) | (l >> 60);
        l = (l << 4) | v;
    }
    if (digits == 0)
    {
        return false;
    }
    lo = l;
    hi = h;
    return true;
}

namespace
{

// Sixteen upper-case hexadecimal digits of v, most significant first,
// computed eight at a time: volume records write their WWN text on every
// query, so this is on the path of every bulk volume answer.
void hex16(uint64_t v, char* out)
{
    for (int half = 0; half < 2; ++half)
    {
        uint64_t x = (v >> (half ? 0 : 32)) & 0xFFFFFFFFULL;
        // One nibble per byte, lowest nibble in the lowest byte.
        x = (x | (x << 16)) & 0x0000FFFF0000FFFFULL;
        x = (x | (x << 8)) & 0x00FF00FF00FF00FFULL;
        x = (x | (x << 4)) & 0x0F0F0F0F0F0F0F0FULL;
        // Digits above 9 skip from '9' + 1 to 'A'.
        const uint64_t letters = ((x + 0x0606060606060606ULL) >> 4) & 0x0101010101010101ULL;
        x += 0x3030303030303030ULL + letters * 7;
        x = __builtin_bswap64(x); // most significant digit first
        std::memcpy(out + 8 * half, &x, 8);
    }
}

} // namespace

void wwnToText(uint64_t lo, uint64_t hi, char* text)
{
    hex16(hi, text);
    hex16(lo, text + 16);
    text[32] = '\0';
}

} // namespace orvsim
