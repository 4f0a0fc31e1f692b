#ifndef ORV_HOST_HTTPTYPES_H
#define ORV_HOST_HTTPTYPES_H

#include <map>
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

/// One complete HTTP request as the CIM layer sees it.
struct HttpRequest
{
    std::string method;
    std::string url;
    HeaderMap headers;
    std::string body;
    std::string user; ///< authenticated user name
    std::string peer; ///< peer's IP address
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
