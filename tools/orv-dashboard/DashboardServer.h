#ifndef ORV_DASHBOARD_DASHBOARDSERVER_H
#define ORV_DASHBOARD_DASHBOARDSERVER_H

#include "RateWindow.h"

#include <sys/socket.h>

#include <string>

struct MHD_Daemon;

namespace orvdash
{

/// What the dashboard answers to one GET, before it goes on the wire.
struct Reply
{
    unsigned status = 200;
    std::string contentType;
    std::string body;
    /// A built-in file: served from here instead of `body`.
    const unsigned char* data = nullptr;
    size_t size = 0;
};

/// Answers a GET of `path` with the query parameters `type`, `sort` and
/// `top` (null when absent): the page's files and the JSON API.
Reply route(const RateWindow& window, const std::string& path, const char* type, const char* sort,
            const char* top);

/// True when an Authorization header carries Basic credentials equal to
/// `user` and `password`.
bool basicAuthMatches(const char* header, const std::string& user, const std::string& password);

/// "host:port" or "[v6]:port" as a socket address; false when unreadable.
bool parseListen(const std::string& text, sockaddr_storage& out);

struct ServerConfig
{
    std::string listen = "127.0.0.1:8080";
    /// When set, every request needs these Basic credentials.
    std::string pageUser;
    std::string pagePassword;
};

/// The page and the API over HTTP, on libmicrohttpd's own threads.
class DashboardServer
{
public:
    DashboardServer(const RateWindow& window, ServerConfig config);
    ~DashboardServer();
    DashboardServer(const DashboardServer&) = delete;
    DashboardServer& operator=(const DashboardServer&) = delete;

    bool start(std::string& error);
    void stop();
    /// The port listened on (the one chosen when asked for port 0).
    unsigned port() const;

    const RateWindow& window() const
    {
        return _window;
    }
    const ServerConfig& config() const
    {
        return _config;
    }

private:
    const RateWindow& _window;
    ServerConfig _config;
    MHD_Daemon* _daemon = nullptr;
};

} // namespace orvdash

#endif
