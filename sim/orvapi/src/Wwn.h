// Volume WWNs: 128-bit numbers written as 32 hexadecimal digits, carried as
// two words (wwn = upper 64 bits, wwn_re = lower 64 bits).
#ifndef ORV_SIM_WWN_H
#define ORV_SIM_WWN_H

#include <cstdint>

namespace orvsim
{

// 1 to 32 hexadecimal digits, either case, nothing else. False on anything else.
bool wwnFromText(const char* text, uint64_t& lo, uint64_t& hi);

// 32 upper-case digits and a NUL into text[33].
void wwnToText(uint64_t lo, uint64_t hi, char* text);

} // namespace orvsim

#endif
