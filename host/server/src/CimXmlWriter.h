#ifndef ORV_HOST_CIMXMLWRITER_H
#define ORV_HOST_CIMXMLWRITER_H

// The encoder lives with the SDK, which the client shares with the host.
#include <CimXml/CimXmlWriter.h>

namespace orvhost
{
namespace cimxml = ::orv::cimxml;
} // namespace orvhost

#endif
