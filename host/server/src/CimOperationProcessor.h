#ifndef ORV_HOST_CIMOPERATIONPROCESSOR_H
#define ORV_HOST_CIMOPERATIONPROCESSOR_H

#include "CimXmlReader.h"
#include "HttpTypes.h"

#include <Pegasus/Common/String.h>
#include <Pegasus/Sdk/CIMOMDispatcher.h>

namespace orvhost
{

/// CIM operations over HTTP: checks the DSP0200 headers, decodes the CIM-XML
/// request, calls the object manager with the caller's identity and address
/// in the context, and encodes the answer (or the CIM error).
class CimOperationProcessor : public RequestHandler
{
public:
    /// hostName fills the HOST of returned paths that lack one.
    CimOperationProcessor(Pegasus::CIMOMDispatcher& dispatcher, const Pegasus::String& hostName);

    HttpResponse handle(const HttpRequest& request) override;

private:
    std::string _dispatchIntrinsic(const CimRequest& request,
                                   const Pegasus::OperationContext& context,
                                   RequestSummary& summary);
    std::string _dispatchExtrinsic(const CimRequest& request,
                                   const Pegasus::OperationContext& context,
                                   RequestSummary& summary);

    Pegasus::CIMOMDispatcher& _dispatcher;
    Pegasus::String _hostName;
};

} // namespace orvhost

#endif
