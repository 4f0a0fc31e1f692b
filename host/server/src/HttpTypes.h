#ifndef ORV_HOST_HTTPTYPES_H
#define ORV_HOST_HTTPTYPES_H

#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <strings.h>
#include <utility>
#include <vector>

namespace orvhost
{

struct CaseInsensitiveLess
{
    bool operator()(const std::string& a, const std::string& b) const
    {
        return strcasecmp(a.c_str(), b.c_str()) < 0;
    }
};

using HeaderMap = std::map<std::string, std::string, CaseInsensitiveLess>;

struct HttpResponse;

/// The client went away (or stopped reading) while its answer was streamed.
struct StreamClosed : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// A response body sent while it is still being written, in chunks: the
/// answer is never held whole. write() blocks while the client is behind
/// and throws StreamClosed once it is gone.
class StreamingBody
{
public:
    virtual ~StreamingBody() = default;
    virtual void write(std::string bytes) = 0;
    /// The body is complete.
    virtual void finish() = 0;
    /// The answer failed after part of it was sent: the CIM status goes
    /// into trailers where the client accepts them (TE: trailers), else the
    /// connection is cut so that the client cannot take a partial answer
    /// for a whole one.
    virtual void fail(const std::string& cimStatusCode, const std::string& description) = 0;
};

/// One complete HTTP request as the CIM layer sees it.
struct HttpRequest
{
    std::string method;
    std::string url;
    HeaderMap headers;
    std::string body;
    std::string user; ///< authenticated user name
    std::string peer; ///< peer's IP address
    /// Sends the status and headers of `head` now and returns the body to
    /// write the rest into; null where the connection cannot stream.
    std::function<std::shared_ptr<StreamingBody>(const HttpResponse& head)> startStreaming;
};

/// What the access log records of the CIM side of a request.
struct RequestSummary
{
    std::string operation = "-";
    std::string className = "-";
    std::string cimStatus = "-"; ///< CIM status code or CIMError text
};

struct HttpResponse
{
    int status = 200;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
    RequestSummary summary;
    /// The answer went out through HttpRequest::startStreaming; nothing is
    /// left to send.
    bool streamed = false;
};

/// Serves authenticated requests; called on worker threads, concurrently.
class RequestHandler
{
public:
    virtual ~RequestHandler() = default;
    virtual HttpResponse handle(const HttpRequest& request) = 0;
};

} // namespace orvhost

#endif
