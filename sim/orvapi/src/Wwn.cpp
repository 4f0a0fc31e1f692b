#include "Wwn.h"

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

// Volume records write their WWN text on every query, so no printf here.
void wwnToText(uint64_t lo, uint64_t hi, char* text)
{
    static const char kDigits[] = "0123456789ABCDEF";
    for (int i = 0; i < 16; ++i)
    {
        text[15 - i] = kDigits[(hi >> (4 * i)) & 15];
        text[31 - i] = kDigits[(lo >> (4 * i)) & 15];
    }
    text[32] = '\0';
}

} // namespace orvsim
