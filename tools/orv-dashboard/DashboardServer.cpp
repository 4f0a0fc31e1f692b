#include "DashboardServer.h"

#include "Assets.h"
#include "ElementTypes.h"

#include <microhttpd.h>

#include <arpa/inet.h>
#include <netinet/in.h>

#include <cstdlib>
#include <cstring>

namespace orvdash
{

namespace
{

// Rankings hold every element; a page never needs more than a screenful.
const size_t MAX_TOP = 500;

Reply _json(unsigned status, std::string body)
{
    Reply r;
    r.status = status;
    r.contentType = "application/json";
    r.body = std::move(body);
    return r;
}

Reply _error(unsigned status, const std::string& text)
{
    return _json(status, "{\"error\":" + orvstat::jsonQuote(text) + "}");
}

int _base64Value(char c)
{
    if (c >= 'A' && c <= 'Z')
        return c - 'A';
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 26;
    if (c >= '0' && c <= '9')
        return c - '0' + 52;
    if (c == '+')
        return 62;
    if (c == '/')
        return 63;
    return -1;
}

bool _base64Decode(const std::string& text, std::string& out)
{
    unsigned bits = 0;
    int held = 0;
    size_t end = text.find_last_not_of('=');
    if (end == std::string::npos || text.size() % 4 != 0 || text.size() - end - 1 > 2)
    {
        return false;
    }
    for (size_t i = 0; i <= end; ++i)
    {
        int v = _base64Value(text[i]);
        if (v < 0)
        {
            return false;
        }
        bits = (bits << 6) | static_cast<unsigned>(v);
        held += 6;
        if (held >= 8)
        {
            held -= 8;
            out += static_cast<char>((bits >> held) & 0xFF);
        }
    }
    return true;
}

// Compares without stopping at the first difference, so the time taken does
// not tell how much of a guess was right.
bool _sameText(const std::string& a, const std::string& b)
{
    unsigned char diff = a.size() == b.size() ? 0 : 1;
    for (size_t i = 0; i < a.size(); ++i)
    {
        const char other = b.empty() ? '\0' : b[i % b.size()];
        diff |= static_cast<unsigned char>(a[i] ^ other);
    }
    return diff == 0;
}

MHD_Result _send(MHD_Connection* connection, const Reply& reply)
{
    MHD_Response* response =
        reply.data
            ? MHD_create_response_from_buffer(reply.size, const_cast<unsigned char*>(reply.data),
                                              MHD_RESPMEM_PERSISTENT)
            : MHD_create_response_from_buffer(
                  reply.body.size(), const_cast<char*>(reply.body.data()), MHD_RESPMEM_MUST_COPY);
    if (!response)
    {
        return MHD_NO;
    }
    MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, reply.contentType.c_str());
    MHD_add_response_header(response, MHD_HTTP_HEADER_CACHE_CONTROL, "no-store");
    MHD_add_response_header(response, "X-Content-Type-Options", "nosniff");
    // The page runs only its own files: no inline script, nothing from
    // elsewhere.
    MHD_add_response_header(response, "Content-Security-Policy",
                            "default-src 'self'; script-src 'self'; style-src 'self'; "
                            "img-src 'self' data:; frame-ancestors 'none'");
    MHD_Result result = MHD_queue_response(connection, reply.status, response);
    MHD_destroy_response(response);
    return result;
}

MHD_Result _answer(void* cls, MHD_Connection* connection, const char* url, const char* method,
                   const char* /*version*/, const char* /*uploadData*/, size_t* uploadSize,
                   void** state)
{
    const DashboardServer& server = *static_cast<const DashboardServer*>(cls);
    if (*state == nullptr)
    {
        // Headers only so far; answer once the (empty) body has come.
        static int seen;
        *state = &seen;
        return MHD_YES;
    }
    if (*uploadSize != 0)
    {
        *uploadSize = 0; // bodies are not read, only discarded
        return MHD_YES;
    }
    if (!server.config().pageUser.empty() &&
        !basicAuthMatches(
            MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_AUTHORIZATION),
            server.config().pageUser, server.config().pagePassword))
    {
        Reply denied = _error(401, "credentials needed");
        MHD_Response* response = MHD_create_response_from_buffer(
            denied.body.size(), const_cast<char*>(denied.body.data()), MHD_RESPMEM_MUST_COPY);
        MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, "application/json");
        MHD_add_response_header(response, MHD_HTTP_HEADER_WWW_AUTHENTICATE,
                                "Basic realm=\"orv-dashboard\", charset=\"UTF-8\"");
        MHD_Result result = MHD_queue_response(connection, 401, response);
        MHD_destroy_response(response);
        return result;
    }
    if (strcmp(method, "GET") != 0 && strcmp(method, "HEAD") != 0)
    {
        return _send(connection, _error(405, "only GET"));
    }
    auto arg = [&](const char* name)
    { return MHD_lookup_connection_value(connection, MHD_GET_ARGUMENT_KIND, name); };
    return _send(connection, route(server.window(), url, arg("type"), arg("sort"), arg("top")));
}

} // namespace

Reply route(const RateWindow& window, const std::string& path, const char* type, const char* sort,
            const char* top)
{
    if (path == "/api/totals")
    {
        return _json(200, window.totalsJson());
    }
    if (path == "/api/rates")
    {
        Kind kind;
        if (!type || !kindNamed(type, kind))
        {
            return _error(400, "type must be one of array, node, port, volume, disk, lun");
        }
        const std::string order = sort ? sort : "iops";
        if (order != "iops" && order != "latency")
        {
            return _error(400, "sort must be iops or latency");
        }
        size_t count = 10;
        if (top)
        {
            char* end = nullptr;
            long n = strtol(top, &end, 10);
            if (*top == '\0' || *end != '\0' || n < 1 || n > static_cast<long>(MAX_TOP))
            {
                return _error(400, "top must be 1 to " + std::to_string(MAX_TOP));
            }
            count = static_cast<size_t>(n);
        }
        return _json(200, window.ratesJson(kind, order, count));
    }
    const std::string file = path == "/" ? "/index.html" : path;
    for (size_t i = 0; i < ASSET_COUNT; ++i)
    {
        if (file == ASSETS[i].path)
        {
            Reply r;
            r.contentType = ASSETS[i].contentType;
            r.data = ASSETS[i].data;
            r.size = ASSETS[i].size;
            return r;
        }
    }
    return _error(404, "no such page");
}

bool basicAuthMatches(const char* header, const std::string& user, const std::string& password)
{
    if (!header || strncasecmp(header, "Basic ", 6) != 0)
    {
        return false;
    }
    std::string token = header + 6;
    token.erase(0, token.find_first_not_of(' '));
    token.erase(token.find_last_not_of(' ') + 1);
    std::string decoded;
    if (!_base64Decode(token, decoded))
    {
        return false;
    }
    const size_t colon = decoded.find(':');
    if (colon == std::string::npos)
    {
        return false;
    }
    // Both halves are always compared, so a wrong user name takes as long
    // as a wrong password.
    const bool userOk = _sameText(decoded.substr(0, colon), user);
    const bool passwordOk = _sameText(decoded.substr(colon + 1), password);
    return userOk && passwordOk;
}

bool parseListen(const std::string& text, sockaddr_storage& out)
{
    memset(&out, 0, sizeof(out));
    const size_t colon = text.rfind(':');
    if (colon == std::string::npos || colon + 1 == text.size())
    {
        return false;
    }
    char* end = nullptr;
    const long port = strtol(text.c_str() + colon + 1, &end, 10);
    if (*end != '\0' || port < 0 || port > 65535)
    {
        return false;
    }
    std::string host = text.substr(0, colon);
    if (host.size() >= 2 && host.front() == '[' && host.back() == ']')
    {
        sockaddr_in6* six = reinterpret_cast<sockaddr_in6*>(&out);
        six->sin6_family = AF_INET6;
        six->sin6_port = htons(static_cast<uint16_t>(port));
        return inet_pton(AF_INET6, host.substr(1, host.size() - 2).c_str(), &six->sin6_addr) == 1;
    }
    if (host == "localhost")
    {
        host = "127.0.0.1";
    }
    sockaddr_in* four = reinterpret_cast<sockaddr_in*>(&out);
    four->sin_family = AF_INET;
    four->sin_port = htons(static_cast<uint16_t>(port));
    return inet_pton(AF_INET, host.c_str(), &four->sin_addr) == 1;
}

DashboardServer::DashboardServer(const RateWindow& window, ServerConfig config)
    : _window(window), _config(std::move(config))
{
}

DashboardServer::~DashboardServer()
{
    stop();
}

bool DashboardServer::start(std::string& error)
{
    sockaddr_storage address;
    if (!parseListen(_config.listen, address))
    {
        error = "cannot read the address " + _config.listen + " (host:port or [v6]:port)";
        return false;
    }
    unsigned flags = MHD_USE_AUTO_INTERNAL_THREAD | MHD_USE_ERROR_LOG;
    if (address.ss_family == AF_INET6)
    {
        flags |= MHD_USE_IPv6;
    }
    _daemon = MHD_start_daemon(flags, 0, nullptr, nullptr, &_answer, this, MHD_OPTION_SOCK_ADDR,
                               reinterpret_cast<sockaddr*>(&address), MHD_OPTION_THREAD_POOL_SIZE,
                               2u, MHD_OPTION_CONNECTION_TIMEOUT, 30u, MHD_OPTION_CONNECTION_LIMIT,
                               64u, MHD_OPTION_END);
    if (!_daemon)
    {
        error = "cannot listen on " + _config.listen;
        return false;
    }
    return true;
}

void DashboardServer::stop()
{
    if (_daemon)
    {
        MHD_stop_daemon(_daemon);
        _daemon = nullptr;
    }
}

unsigned DashboardServer::port() const
{
    const MHD_DaemonInfo* info =
        _daemon ? MHD_get_daemon_info(_daemon, MHD_DAEMON_INFO_BIND_PORT) : nullptr;
    return info ? info->port : 0;
}

} // namespace orvdash
