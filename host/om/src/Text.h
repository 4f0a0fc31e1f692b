#ifndef CIMOM_TEXT_H
#define CIMOM_TEXT_H

#include <Pegasus/Common/String.h>

#include <cctype>
#include <string>

namespace cimom
{

inline std::string toStd(const Pegasus::String& text)
{
    return std::string((const char*)text.getCString());
}

/** Lower-case key for case-insensitive CIM names (ASCII folding, as CIM names are). */
inline std::string lower(const Pegasus::String& text)
{
    std::string s = toStd(text);
    for (char& c : s)
    {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return s;
}

} // namespace cimom

#endif
