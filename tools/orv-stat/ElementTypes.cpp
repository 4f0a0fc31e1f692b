#include "ElementTypes.h"

#include <cstdio>
#include <cstdlib>

namespace orvstat
{

std::vector<uint16_t> elementTypesNamed(const std::string& word)
{
    if (word == "volume")
        return {8};
    if (word == "disk")
        return {10};
    if (word == "port")
        return {6, 7};
    if (word == "node")
        return {4};
    if (word == "array")
        return {2};
    if (word == "lun")
        return {11};
    if (word == "all")
        return {2, 4, 6, 7, 8, 10, 11};
    return {};
}

const char* elementTypeName(uint16_t type)
{
    switch (type)
    {
    case 2:
        return "array";
    case 4:
        return "node";
    case 6:
        return "fe-port";
    case 7:
        return "be-port";
    case 8:
        return "volume";
    case 10:
        return "disk";
    case 11:
        return "lun";
    default:
        return "other";
    }
}

std::string jsonQuote(const std::string& text)
{
    std::string out = "\"";
    for (char c : text)
    {
        if (c == '"' || c == '\\')
        {
            out += '\\';
        }
        if (static_cast<unsigned char>(c) < 0x20)
        {
            char esc[8];
            snprintf(esc, sizeof(esc), "\\u%04x", c);
            out += esc;
            continue;
        }
        out += c;
    }
    return out + "\"";
}

bool parseServerUrl(const std::string& url, ServerAddress& o)
{
    std::string rest = url;
    size_t scheme = rest.find("://");
    if (scheme != std::string::npos)
    {
        o.scheme = rest.substr(0, scheme);
        rest = rest.substr(scheme + 3);
    }
    if (o.scheme != "http" && o.scheme != "https")
    {
        return false;
    }
    o.port = o.scheme == "https" ? 5989 : 5988;
    rest = rest.substr(0, rest.find('/'));
    size_t colon = rest.rfind(':');
    if (colon != std::string::npos && rest.find(']', colon) == std::string::npos)
    {
        o.port = static_cast<unsigned>(std::atoi(rest.substr(colon + 1).c_str()));
        rest = rest.substr(0, colon);
    }
    if (!rest.empty() && rest.front() == '[' && rest.back() == ']')
    {
        rest = rest.substr(1, rest.size() - 2);
    }
    o.host = rest;
    return !o.host.empty() && o.port != 0;
}

} // namespace orvstat
