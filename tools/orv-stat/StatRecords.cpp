#include "StatRecords.h"

#include <cstdlib>
#include <ctime>

namespace orvstat
{

namespace
{

bool _digits(const std::string& text, size_t pos, size_t count, long& out)
{
    if (pos + count > text.size())
    {
        return false;
    }
    out = 0;
    for (size_t i = pos; i < pos + count; ++i)
    {
        if (text[i] < '0' || text[i] > '9')
        {
            return false;
        }
        out = out * 10 + (text[i] - '0');
    }
    return true;
}

bool _unsigned(const std::string& text, uint64_t& out)
{
    if (text.empty() || text[0] < '0' || text[0] > '9')
    {
        return false;
    }
    char* end = nullptr;
    out = std::strtoull(text.c_str(), &end, 10);
    return end != nullptr && *end == '\0';
}

// The fields of one record; every field ends with ';'.
std::vector<std::string> _fields(const std::string& record)
{
    std::vector<std::string> out;
    size_t start = 0;
    for (size_t semi; (semi = record.find(';', start)) != std::string::npos; start = semi + 1)
    {
        out.push_back(record.substr(start, semi - start));
    }
    return out;
}

} // namespace

int64_t parseCimDateTime(const std::string& text)
{
    long year, month, day, hour, minute, second, micro, offset;
    if (text.size() != 25 || text[14] != '.' || (text[21] != '+' && text[21] != '-') ||
        !_digits(text, 0, 4, year) || !_digits(text, 4, 2, month) || !_digits(text, 6, 2, day) ||
        !_digits(text, 8, 2, hour) || !_digits(text, 10, 2, minute) ||
        !_digits(text, 12, 2, second) || !_digits(text, 15, 6, micro) ||
        !_digits(text, 22, 3, offset))
    {
        return 0;
    }
    struct tm t = {};
    t.tm_year = static_cast<int>(year - 1900);
    t.tm_mon = static_cast<int>(month - 1);
    t.tm_mday = static_cast<int>(day);
    t.tm_hour = static_cast<int>(hour);
    t.tm_min = static_cast<int>(minute);
    t.tm_sec = static_cast<int>(second);
    const int64_t utcOffsetMinutes = text[21] == '-' ? -offset : offset;
    const int64_t seconds = static_cast<int64_t>(timegm(&t)) - utcOffsetMinutes * 60;
    return seconds * 1000000 + micro;
}

DecodeResult decodeRecords(const std::string& text, const ManifestOrder& order)
{
    DecodeResult result;
    size_t start = 0;
    while (start < text.size())
    {
        size_t end = text.find('\n', start);
        if (end == std::string::npos)
        {
            end = text.size();
        }
        const std::string record = text.substr(start, end - start);
        start = end + 1;
        if (record.empty())
        {
            continue;
        }
        std::vector<std::string> fields = _fields(record);
        uint64_t type = 0;
        if (fields.size() < 3 || !_unsigned(fields[1], type) || order.count(type) == 0)
        {
            ++result.rejected;
            continue;
        }
        // Names of the counters in record order: the manifest's sequence
        // without the three leading identity fields.
        std::vector<std::string> names;
        for (const std::string& name : order.at(static_cast<uint16_t>(type)))
        {
            if (name != "InstanceID" && name != "ElementType" && name != "StatisticTime")
            {
                names.push_back(name);
            }
        }
        ElementSample element;
        element.id = fields[0];
        element.elementType = static_cast<uint16_t>(type);
        element.statisticTimeUs = parseCimDateTime(fields[2]);
        bool readable = fields.size() - 3 == names.size();
        for (size_t i = 0; readable && i < names.size(); ++i)
        {
            uint64_t value = 0;
            readable = _unsigned(fields[3 + i], value);
            element.counters[names[i]] = value;
        }
        if (!readable)
        {
            ++result.rejected;
            continue;
        }
        result.elements.push_back(element);
    }
    return result;
}

} // namespace orvstat
