#ifndef ORV_HOST_CIMXMLREADER_H
#define ORV_HOST_CIMXMLREADER_H

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMStatusCode.h>

#include <CimXml/CimXmlDecoder.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace orvhost
{

/// A request that cannot be served at the CIM level at all: the HTTP answer
/// carries the CIMError header value and status (400 or 501).
class CimProtocolError : public std::runtime_error
{
public:
    CimProtocolError(int httpStatus, std::string cimError, const std::string& detail)
        : std::runtime_error(detail), _httpStatus(httpStatus), _cimError(std::move(cimError))
    {
    }
    int httpStatus() const
    {
        return _httpStatus;
    }
    const std::string& cimError() const
    {
        return _cimError;
    }

private:
    int _httpStatus;
    std::string _cimError;
};

/// One IPARAMVALUE of an intrinsic call, decoded by the shape of its content;
/// the operation decides which shapes it accepts.
struct IParam
{
    enum Kind
    {
        NULL_VALUE, ///< no content
        VALUE,
        VALUE_ARRAY,
        CLASS_NAME,
        INSTANCE_NAME,
        INSTANCE,       ///< INSTANCE (a new instance)
        NAMED_INSTANCE, ///< VALUE.NAMEDINSTANCE (a path and an instance)
        OTHER
    };
    std::string name;
    Kind kind = NULL_VALUE;
    std::string text;
    std::vector<std::string> texts;
    Pegasus::CIMName className;
    Pegasus::CIMObjectPath path;
    Pegasus::CIMInstance instance;
    std::string element; ///< element name, for error texts
};

struct CimRequest
{
    std::string messageId;
    std::string protocolVersion;
    bool intrinsic = true;
    std::string methodName;
    Pegasus::CIMNamespaceName nameSpace;
    std::string nameSpaceText;
    std::vector<IParam> iparams;                     ///< intrinsic calls
    Pegasus::CIMObjectPath objectPath;               ///< extrinsic calls
    Pegasus::Array<Pegasus::CIMParamValue> inParams; ///< extrinsic calls
    /// A fault in the request's parameters or paths, answered as a CIM ERROR
    /// once the method name is known (code 0 = none).
    Pegasus::CIMStatusCode errorCode = Pegasus::CIM_ERR_SUCCESS;
    std::string errorText;
};

/// Bounds on one request, so that decoding it costs time and memory linear in
/// its size. Each is far above what WBEM clients send; a request past one is
/// refused with an answer that names the limit.
struct RequestLimits
{
    /// Attributes on one element (libxml2 compares them pairwise). The
    /// widest CIM-XML element has six.
    static const size_t maxAttributesPerElement = 64;
    /// Elements in one request, tags of every kind counted.
    static const size_t maxElements = 100000;
    /// Values in one array parameter. A repeated value is served once per
    /// repeat (GetStatisticsCollection's ElementTypes), so without a cap a
    /// small request buys work in proportion to the elements limit. The
    /// widest array a client sends, a property list, stays far below it.
    static const size_t maxArrayValues = 1024;
    /// The path limits, which the shared decoder applies to every message.
    static const size_t maxKeyValueBytes = ::orv::cimxml::PathLimits::maxKeyValueBytes;
    static const unsigned maxReferenceDepth = ::orv::cimxml::PathLimits::maxReferenceDepth;
};

/// Decodes one CIM-XML request message (DSP0201 SIMPLEREQ). Throws
/// CimProtocolError for what HTTP must refuse; faults in parameters and
/// object paths are left in errorCode/errorText.
CimRequest parseCimRequest(const std::string& body);

/// Call once in the main thread before requests are decoded in threads.
void initXmlLibrary();

} // namespace orvhost

#endif
