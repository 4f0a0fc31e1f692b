#ifndef ORV_HOST_CIMOPERATIONPROCESSOR_H
#define ORV_HOST_CIMOPERATIONPROCESSOR_H

#include "CimXmlReader.h"
#include "EnumerationContexts.h"
#include "HttpTypes.h"

#include <Pegasus/Common/String.h>
#include <Pegasus/Sdk/CIMOMDispatcher.h>

namespace orvhost
{

class ResponseOutput;

/// CIM operations over HTTP: checks the DSP0200 headers, decodes the CIM-XML
/// request, calls the object manager with the caller's identity and address
/// in the context, and encodes the answer (or the CIM error).
class CimOperationProcessor : public RequestHandler
{
public:
    /// hostName fills the HOST of returned paths that lack one.
    CimOperationProcessor(Pegasus::CIMOMDispatcher& dispatcher, const Pegasus::String& hostName,
                          const EnumerationContexts::Limits& pullLimits = {});

    HttpResponse handle(const HttpRequest& request) override;

    /// The largest answer body; past it the answer is a CIM error, or a
    /// failed stream once part of it was sent.
    void setMaxAnswerBytes(size_t bytes)
    {
        _maxAnswerBytes = bytes;
    }
    static const size_t defaultMaxAnswerBytes = size_t(1) << 30;

private:
    std::string _dispatchIntrinsic(const CimRequest& request,
                                   const Pegasus::OperationContext& context,
                                   const std::string& user, RequestSummary& summary,
                                   ResponseOutput& output);
    /// Open* and Pull* operations and CloseEnumeration; false for other names.
    bool _dispatchPull(const CimRequest& request, const Pegasus::OperationContext& context,
                       const std::string& user, RequestSummary& summary, std::string& out);
    std::string _dispatchExtrinsic(const CimRequest& request,
                                   const Pegasus::OperationContext& context,
                                   RequestSummary& summary);

    Pegasus::CIMOMDispatcher& _dispatcher;
    Pegasus::String _hostName;
    EnumerationContexts _contexts;
    size_t _maxAnswerBytes = defaultMaxAnswerBytes;
};

} // namespace orvhost

#endif
