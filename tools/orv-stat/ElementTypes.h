#ifndef ORV_STAT_ELEMENTTYPES_H
#define ORV_STAT_ELEMENTTYPES_H

#include <cstdint>
#include <string>
#include <vector>

namespace orvstat
{

/// The ElementType values a user's word stands for: volume, disk, port (front
/// and back end), node, array, lun or all; empty for an unknown word.
std::vector<uint16_t> elementTypesNamed(const std::string& word);

/// A short name of an ElementType for tables and JSON ("fe-port", "volume").
const char* elementTypeName(uint16_t type);

/// `text` as a JSON string literal, quotes included.
std::string jsonQuote(const std::string& text);

/// The parts of a WBEM server URL that a CIMClient connects with.
struct ServerAddress
{
    std::string scheme = "http";
    std::string host = "localhost";
    unsigned port = 5988;
};

/// Reads http[s]://host[:port][/...]; the port defaults by scheme. False for
/// another scheme, an empty host or port 0.
bool parseServerUrl(const std::string& url, ServerAddress& out);

} // namespace orvstat

#endif
