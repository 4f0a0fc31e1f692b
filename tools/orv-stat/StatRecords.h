#ifndef ORV_STAT_STATRECORDS_H
#define ORV_STAT_STATRECORDS_H

#include "RateEngine.h"

#include <map>
#include <string>
#include <vector>

namespace orvstat
{

/// The field order of GetStatisticsCollection records per element type, as
/// the manifests' CSVSequence gives it.
using ManifestOrder = std::map<uint16_t, std::vector<std::string>>;

/// Seconds since the epoch, in microseconds, of a CIM datetime time stamp
/// (yyyymmddhhmmss.mmmmmmsutc); 0 for an interval or unreadable text.
int64_t parseCimDateTime(const std::string& text);

struct DecodeResult
{
    std::vector<ElementSample> elements;
    /// Records that could not be read by their manifest: a record whose
    /// field count differs from its manifest's cannot say which counter is
    /// missing, so none of its counters is trusted.
    size_t rejected = 0;
};

/// Decodes the records of one "Statistics" string: "ID;type;time;v;...;\n".
DecodeResult decodeRecords(const std::string& text, const ManifestOrder& order);

} // namespace orvstat

#endif
