#include "HttpServer.h"

#include <arpa/inet.h>
#include <malloc.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <cstdio>
#include <cstring>

namespace orvhost
{

const char defaultTlsPriorities[] =
    "NORMAL:-VERS-ALL:+VERS-TLS1.3:+VERS-TLS1.2:-KX-ALL:+ECDHE-ECDSA:+ECDHE-RSA:-CIPHER-ALL:"
    "+AES-256-GCM:+AES-128-GCM:+CHACHA20-POLY1305:-MAC-ALL:+AEAD";

namespace
{
const unsigned pollingThreads = 2;
const unsigned hardLimitMargin = 8;
// Free heap from this size on is given back after a large answer.
const size_t trimAfterBytes = 32u << 20;

std::string _peerAddress(MHD_Connection* conn)
{
    const MHD_ConnectionInfo* info =
        MHD_get_connection_info(conn, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
    if (info == nullptr || info->client_addr == nullptr)
    {
        return "";
    }
    char text[INET6_ADDRSTRLEN] = "";
    const sockaddr* addr = info->client_addr;
    if (addr->sa_family == AF_INET)
    {
        inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(addr)->sin_addr, text,
                  sizeof(text));
    }
    else if (addr->sa_family == AF_INET6)
    {
        inet_ntop(AF_INET6, &reinterpret_cast<const sockaddr_in6*>(addr)->sin6_addr, text,
                  sizeof(text));
    }
    return text;
}

struct HeaderCollector
{
    HeaderMap& headers;
    std::string fault; ///< why the head is refused, if it is
};

MHD_Result _collectHeader(void* cls, MHD_ValueKind, const char* key, size_t keySize,
                          const char* value, size_t valueSize)
{
    auto* c = static_cast<HeaderCollector*>(cls);
    if (key == nullptr)
    {
        return MHD_YES;
    }
    std::string name(key, keySize);
    std::string text = value == nullptr ? "" : std::string(value, valueSize);
    if (text.find('\0') != std::string::npos || text.find('\r') != std::string::npos)
    {
        c->fault = "the " + name + " header holds a NUL or a bare CR";
    }
    auto added = c->headers.emplace(name, text);
    // Two framings of one body would let us and a proxy in front disagree
    // on where the next request starts.
    if (!added.second && added.first->second != text &&
        (strcasecmp(name.c_str(), "Content-Length") == 0 ||
         strcasecmp(name.c_str(), "Transfer-Encoding") == 0))
    {
        c->fault = "conflicting " + name + " headers";
    }
    return MHD_YES;
}

int _base64Digit(char c)
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

// Strict base64: whole quads, padding at the end only.
bool _base64Decode(const std::string& in, std::string& out)
{
    if (in.empty() || in.size() % 4 != 0)
    {
        return false;
    }
    out.clear();
    for (size_t i = 0; i < in.size(); i += 4)
    {
        const bool last = i + 4 == in.size();
        int d[4];
        int pad = 0;
        for (int k = 0; k < 4; ++k)
        {
            d[k] = _base64Digit(in[i + k]);
            if (d[k] < 0)
            {
                if (!last || in[i + k] != '=' || k < 2 || (k == 2 && in[i + 3] != '='))
                {
                    return false;
                }
                d[k] = 0;
                ++pad;
            }
        }
        const unsigned v = (unsigned(d[0]) << 18) | (unsigned(d[1]) << 12) | (unsigned(d[2]) << 6) |
                           unsigned(d[3]);
        out += static_cast<char>(v >> 16);
        if (pad < 2)
            out += static_cast<char>((v >> 8) & 0xff);
        if (pad < 1)
            out += static_cast<char>(v & 0xff);
    }
    return true;
}

// "Basic <user:password in base64>", the scheme in any case and nothing
// after the token. A NUL would let a prefix of the password pass.
bool _basicCredentials(const HeaderMap& headers, std::string& user, std::string& password)
{
    auto auth = headers.find("Authorization");
    if (auth == headers.end())
    {
        return false;
    }
    const std::string& value = auth->second;
    size_t space = value.find(' ');
    if (space != 5 || strncasecmp(value.c_str(), "Basic", 5) != 0)
    {
        return false;
    }
    size_t start = value.find_first_not_of(' ', space);
    size_t end = value.find_last_not_of(" \t");
    if (start == std::string::npos)
    {
        return false;
    }
    std::string pair;
    if (!_base64Decode(value.substr(start, end + 1 - start), pair) ||
        pair.find('\0') != std::string::npos)
    {
        return false;
    }
    size_t colon = pair.find(':');
    if (colon == std::string::npos)
    {
        return false;
    }
    user = pair.substr(0, colon);
    password = pair.substr(colon + 1);
    pair.assign(pair.size(), '\0');
    return true;
}

// Digits only: strtoull would take signs and blanks.
bool _contentLength(const std::string& text, unsigned long long& n)
{
    if (text.empty() || text.size() > 19 ||
        !std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }))
    {
        return false;
    }
    n = strtoull(text.c_str(), nullptr, 10);
    return true;
}

// libmicrohttpd reports client misbehaviour (bad TLS handshakes, broken
// requests) here: not server faults, and any client can cause them at will.
// Each goes out as one whole line, and at most a burst of them per second
// across both listeners, so that a client cannot flood or garble stderr.
class LibraryLog
{
public:
    static const int burst = 20;

    void write(const char* listener, const char* fmt, va_list ap)
    {
        char text[1024];
        int n = vsnprintf(text, sizeof(text), fmt, ap);
        std::string line = n < 0 ? std::string("(unprintable message)") : std::string(text);
        while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
        {
            line.pop_back();
        }
        std::replace_if(
            line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
        std::lock_guard<std::mutex> lock(_mutex);
        const auto now = std::chrono::steady_clock::now();
        if (now - _windowStart >= std::chrono::seconds(1))
        {
            if (_suppressed != 0)
            {
                fprintf(stderr, "orv-cimserver: %d more library messages were not shown\n",
                        _suppressed);
            }
            _windowStart = now;
            _shown = 0;
            _suppressed = 0;
        }
        if (_shown >= burst)
        {
            ++_suppressed;
            return;
        }
        ++_shown;
        fprintf(stderr, "orv-cimserver: %s: %s\n", listener, line.c_str());
    }

private:
    std::mutex _mutex;
    std::chrono::steady_clock::time_point _windowStart;
    int _shown = 0;
    int _suppressed = 0;
};

LibraryLog libraryLog;

void _mhdLog(void* cls, const char* fmt, va_list ap)
{
    libraryLog.write(static_cast<const char*>(cls), fmt, ap);
}

double _millisSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}
} // namespace

// The body of a streamed answer: the worker writes chunks, libmicrohttpd's
// thread reads them as the socket takes them. At most maxQueued bytes wait,
// so a slow client slows the worker instead of growing the server.
class ChunkStream : public StreamingBody
{
public:
    ChunkStream(bool trailersAllowed, unsigned idleSeconds)
        : _trailersAllowed(trailersAllowed), _idle(std::chrono::seconds(idleSeconds ? idleSeconds : 60))
    {
    }

    void write(std::string bytes) override
    {
        if (bytes.empty())
        {
            return;
        }
        std::unique_lock<std::mutex> lock(_mutex);
        if (!_cv.wait_for(lock, _idle, [this] { return _closed || _queued < maxQueued; }))
        {
            _closed = true; // the client stopped reading
        }
        if (_closed)
        {
            throw StreamClosed("the client is gone");
        }
        _queued += bytes.size();
        _chunks.push_back(std::move(bytes));
        _cv.notify_all();
    }

    void finish() override
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _finished = true;
        _cv.notify_all();
    }

    void fail(const std::string& cimStatusCode, const std::string& description) override
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _failed = true;
        _status = cimStatusCode;
        _description = description;
        _finished = true;
        _cv.notify_all();
    }

    // libmicrohttpd's content reader.
    ssize_t read(MHD_Response* response, char* buf, size_t max)
    {
        std::unique_lock<std::mutex> lock(_mutex);
        // A short wait, then 0 ("nothing yet"): the polling thread serves
        // other connections meanwhile.
        _cv.wait_for(lock, std::chrono::milliseconds(50),
                     [this] { return !_chunks.empty() || _finished; });
        if (_chunks.empty())
        {
            if (!_finished)
            {
                return 0;
            }
            if (!_failed)
            {
                return MHD_CONTENT_READER_END_OF_STREAM;
            }
            if (!_trailersAllowed)
            {
                return MHD_CONTENT_READER_END_WITH_ERROR;
            }
            MHD_add_response_footer(response, "CIMStatusCode", _status.c_str());
            MHD_add_response_footer(response, "CIMStatusCodeDescription", _description.c_str());
            return MHD_CONTENT_READER_END_OF_STREAM;
        }
        size_t n = 0;
        while (n < max && !_chunks.empty())
        {
            std::string& front = _chunks.front();
            size_t take = std::min(max - n, front.size() - _offset);
            memcpy(buf + n, front.data() + _offset, take);
            n += take;
            _offset += take;
            if (_offset == front.size())
            {
                _queued -= front.size();
                _chunks.pop_front();
                _offset = 0;
            }
        }
        _cv.notify_all();
        return static_cast<ssize_t>(n);
    }

    void close()
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _closed = true;
        _cv.notify_all();
    }

    static const size_t maxQueued = 4 << 20;

private:
    std::mutex _mutex;
    std::condition_variable _cv;
    std::deque<std::string> _chunks;
    size_t _offset = 0;
    size_t _queued = 0;
    bool _finished = false;
    bool _failed = false;
    bool _closed = false;
    bool _trailersAllowed;
    std::chrono::seconds _idle;
    std::string _status;
    std::string _description;
};

// What libmicrohttpd holds of a streamed answer: the stream and the response
// object (for trailers).
struct StreamHandle
{
    std::shared_ptr<ChunkStream> stream;
    MHD_Response* response = nullptr;
};

ssize_t _readStream(void* cls, uint64_t, char* buf, size_t max)
{
    auto* handle = static_cast<StreamHandle*>(cls);
    return handle->stream->read(handle->response, buf, max);
}

void _freeStream(void* cls)
{
    auto* handle = static_cast<StreamHandle*>(cls);
    handle->stream->close();
    delete handle;
}

struct HttpServer::ConnectionWatch
{
    enum Phase
    {
        HEAD, ///< the first request's head is on its way
        BODY, ///< a request's body is on its way
        BUSY, ///< parked, served or answered: no deadline of ours
        IDLE  ///< between requests after a login: the idle timeout governs
    };
    int fd = -1;
    std::string peer;
    Phase phase = HEAD;
    std::chrono::steady_clock::time_point since = std::chrono::steady_clock::now();
    bool cut = false;
    bool loggedIn = false;
};

struct HttpServer::RequestState
{
    HttpServer* server = nullptr;
    MHD_Connection* connection = nullptr;
    HttpRequest request;
    std::string password;
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
    bool bodyTooLarge = false;
    size_t discarded = 0; ///< body bytes read past the limit and dropped
    // Credentials are checked (slowly, on a worker) before any body is read,
    // so unauthenticated clients cannot make the server hold uploads.
    bool authenticated = false;
    bool submitted = false;
    bool loginNoted = false;
    // libmicrohttpd repeats the headers-only call after a resume.
    bool sawRepeatedFirstCall = false;
    bool responseReady = false;
    HttpResponse response;
    std::shared_ptr<ChunkStream> stream; ///< set when the answer is streamed
    // A streamed answer resumes the connection while the worker still
    // writes; the state then lives until both are done with it.
    std::mutex lifeMutex;
    bool resumedEarly = false;
    bool workerDone = true;
    bool connectionDone = false;
};

struct HttpServerCallbacks
{
    static MHD_Result queue(HttpServer::RequestState* state, const HttpResponse& response)
    {
        MHD_Response* r = nullptr;
        if (state->stream)
        {
            auto* handle = new StreamHandle{state->stream, nullptr};
            // Large reads: fewer callbacks and sends for answers of many megabytes.
            r = MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, 256 * 1024, &_readStream,
                                                  handle, &_freeStream);
            if (r == nullptr)
            {
                state->stream->close();
                delete handle;
                return MHD_NO;
            }
            handle->response = r;
        }
        else
        {
            r = MHD_create_response_from_buffer(response.body.size(),
                                                const_cast<char*>(response.body.data()),
                                                MHD_RESPMEM_MUST_COPY);
        }
        if (r == nullptr)
        {
            return MHD_NO;
        }
        for (const auto& header : response.headers)
        {
            MHD_add_response_header(r, header.first.c_str(), header.second.c_str());
        }
        MHD_Result rc = MHD_queue_response(state->connection, response.status, r);
        MHD_destroy_response(r);
        HttpServer* server = state->server;
        server->_log.record(state->request.user.empty() ? "-" : state->request.user,
                            state->request.peer, response.summary.operation,
                            response.summary.className, response.status,
                            response.summary.cimStatus, _millisSince(state->start));
        return rc;
    }

    static HttpResponse plain(int status, const std::string& text)
    {
        HttpResponse response;
        response.status = status;
        response.body = text + "\n";
        response.headers.emplace_back("Content-Type", "text/plain; charset=utf-8");
        return response;
    }

    // The connection ends after this answer: what else the client sent is
    // not read as a next request.
    static HttpResponse closing(HttpResponse response)
    {
        response.headers.emplace_back("Connection", "close");
        return response;
    }

    static MHD_Result onRequest(void* cls, MHD_Connection* conn, const char* url,
                                const char* method, const char*, const char* uploadData,
                                size_t* uploadSize, void** conCls)
    {
        auto* server = static_cast<HttpServer*>(cls);
        auto* state = static_cast<HttpServer::RequestState*>(*conCls);
        if (state == nullptr)
        {
            state = new HttpServer::RequestState;
            state->server = server;
            state->connection = conn;
            state->request.method = method;
            state->request.url = url;
            state->request.peer = _peerAddress(conn);
            HeaderCollector collector{state->request.headers, ""};
            MHD_get_connection_values_n(conn, MHD_HEADER_KIND, _collectHeader, &collector);
            *conCls = state;
            ++server->_inFlight;
            if (!collector.fault.empty())
            {
                return queue(state, closing(plain(400, collector.fault)));
            }
            if (server->_overLimit(watchOf(conn)))
            {
                HttpResponse response = closing(plain(503, "too many connections"));
                response.headers.emplace_back("Retry-After", "1");
                response.summary.cimStatus = "connection-limit";
                return queue(state, response);
            }
            setPhase(server, conn, HttpServer::ConnectionWatch::BODY);
            return _screen(server, state);
        }
        if (state->responseReady)
        {
            return queue(state, state->response);
        }
        if (!state->authenticated)
        {
            return MHD_YES; // still parked for the login check
        }
        if (!state->loginNoted)
        {
            // Logged in: the body may come, and the connection earns the
            // full idle timeout.
            state->loginNoted = true;
            if (HttpServer::ConnectionWatch* watch = watchOf(conn))
            {
                std::lock_guard<std::mutex> lock(server->_watchMutex);
                watch->loggedIn = true;
                watch->phase = HttpServer::ConnectionWatch::BODY;
            }
            MHD_set_connection_option(conn, MHD_CONNECTION_OPTION_TIMEOUT,
                                      server->_config.idleTimeoutSeconds);
        }
        if (*uploadSize == 0 && state->bodyTooLarge)
        {
            HttpResponse response = closing(plain(413, "request body too large"));
            response.summary.cimStatus = "body-too-large";
            state->response = response;
            state->responseReady = true;
            return queue(state, state->response);
        }
        if (*uploadSize == 0 && !state->sawRepeatedFirstCall && state->request.body.empty())
        {
            state->sawRepeatedFirstCall = true;
            return MHD_YES;
        }
        if (*uploadSize != 0)
        {
            if (state->bodyTooLarge ||
                state->request.body.size() + *uploadSize > server->_config.maxBodyBytes)
            {
                // A chunked body without a length ran past the limit. The
                // rest is read and dropped so that the client gets its 413;
                // one that keeps sending past twice the limit is cut off.
                if (!state->bodyTooLarge)
                {
                    state->bodyTooLarge = true;
                    state->discarded = state->request.body.size();
                    std::string().swap(state->request.body);
                }
                state->discarded += *uploadSize;
                *uploadSize = 0;
                if (state->discarded > 2 * server->_config.maxBodyBytes)
                {
                    server->_log.record(state->request.user, state->request.peer, "-", "-", 413,
                                        "body-too-large", _millisSince(state->start));
                    return MHD_NO;
                }
                return MHD_YES;
            }
            state->request.body.append(uploadData, *uploadSize);
            *uploadSize = 0;
            return MHD_YES;
        }

        if (!state->submitted)
        {
            state->submitted = true;
            setPhase(server, conn, HttpServer::ConnectionWatch::BUSY);
            MHD_suspend_connection(conn);
            server->_enqueue(state);
            return MHD_YES;
        }
        return MHD_YES;
    }

    // Checks that need no body and no slow work, done before reading on.
    static MHD_Result _screen(HttpServer* server, HttpServer::RequestState* state)
    {
        HttpRequest& request = state->request;
        if (request.method != "POST" && request.method != "M-POST")
        {
            HttpResponse response = plain(405, "only POST and M-POST are served");
            response.headers.emplace_back("Allow", "POST, M-POST");
            return queue(state, response);
        }
        auto length = request.headers.find("Content-Length");
        auto coding = request.headers.find("Transfer-Encoding");
        if (coding != request.headers.end())
        {
            if (length != request.headers.end())
            {
                return queue(state,
                             closing(plain(400, "Content-Length and Transfer-Encoding together")));
            }
            if (strcasecmp(coding->second.c_str(), "chunked") != 0)
            {
                return queue(state, closing(plain(501, "only the chunked transfer coding is "
                                                       "accepted")));
            }
        }
        if (length != request.headers.end())
        {
            unsigned long long n = 0;
            if (!_contentLength(length->second, n))
            {
                return queue(state, closing(plain(400, "malformed Content-Length")));
            }
            if (n > server->_config.maxBodyBytes)
            {
                return queue(state, plain(413, "request body too large"));
            }
        }
        std::string user;
        const bool parsed = _basicCredentials(request.headers, user, state->password);
        if (parsed)
        {
            // Refused without a password check: a guesser gets nothing for
            // its attempts and costs us nothing.
            unsigned wait = server->_loginWait(request.peer, user);
            if (wait != 0 || server->_loginQueueFull())
            {
                state->password.assign(state->password.size(), '\0');
                request.user = user;
                HttpResponse response =
                    plain(503, wait != 0 ? "too many failed logins" : "too many logins at once");
                response.headers.emplace_back("Retry-After", std::to_string(wait ? wait : 1));
                response.summary.cimStatus = wait != 0 ? "login-backoff" : "login-queue-full";
                return queue(state, response);
            }
        }
        if (!parsed)
        {
            HttpResponse response = plain(401, "authentication required");
            response.headers.emplace_back("WWW-Authenticate",
                                          "Basic realm=\"" + server->_config.realm + "\"");
            response.summary.cimStatus = "no-credentials";
            return queue(state, response);
        }
        state->request.user = user;
        setPhase(server, state->connection, HttpServer::ConnectionWatch::BUSY);
        MHD_suspend_connection(state->connection);
        server->_enqueue(state);
        return MHD_YES;
    }

    static HttpServer::ConnectionWatch* watchOf(MHD_Connection* conn)
    {
        const MHD_ConnectionInfo* info =
            MHD_get_connection_info(conn, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
        return info == nullptr ? nullptr
                               : static_cast<HttpServer::ConnectionWatch*>(info->socket_context);
    }

    static void setPhase(HttpServer* server, MHD_Connection* conn,
                         HttpServer::ConnectionWatch::Phase phase, bool restart = false)
    {
        HttpServer::ConnectionWatch* watch = watchOf(conn);
        if (watch != nullptr)
        {
            std::lock_guard<std::mutex> lock(server->_watchMutex);
            // A request after an idle spell: its deadline starts now.
            if (restart || watch->phase == HttpServer::ConnectionWatch::IDLE)
            {
                watch->since = std::chrono::steady_clock::now();
            }
            watch->phase = phase;
        }
    }

    static void onConnection(void* cls, MHD_Connection* conn, void** socketContext,
                             MHD_ConnectionNotificationCode code)
    {
        auto* server = static_cast<HttpServer*>(cls);
        std::lock_guard<std::mutex> lock(server->_watchMutex);
        if (code == MHD_CONNECTION_NOTIFY_STARTED)
        {
            auto* watch = new HttpServer::ConnectionWatch;
            const MHD_ConnectionInfo* info =
                MHD_get_connection_info(conn, MHD_CONNECTION_INFO_CONNECTION_FD);
            watch->fd = info == nullptr ? -1 : info->connect_fd;
            watch->peer = _peerAddress(conn);
            ++server->_connectionsByPeer[watch->peer];
            server->_watches.push_back(watch);
            *socketContext = watch;
            return;
        }
        // libmicrohttpd closes the socket only after this: the watcher
        // never touches a descriptor that may belong to someone else.
        auto* watch = static_cast<HttpServer::ConnectionWatch*>(*socketContext);
        if (watch == nullptr)
        {
            return;
        }
        *socketContext = nullptr;
        auto& watches = server->_watches;
        watches.erase(std::remove(watches.begin(), watches.end(), watch), watches.end());
        auto peer = server->_connectionsByPeer.find(watch->peer);
        if (peer != server->_connectionsByPeer.end() && --peer->second == 0)
        {
            server->_connectionsByPeer.erase(peer);
        }
        delete watch;
    }

    static void onCompleted(void* cls, MHD_Connection* conn, void** conCls,
                            MHD_RequestTerminationCode)
    {
        auto* server = static_cast<HttpServer*>(cls);
        auto* state = static_cast<HttpServer::RequestState*>(*conCls);
        if (HttpServer::ConnectionWatch* watch = watchOf(conn))
        {
            std::lock_guard<std::mutex> lock(server->_watchMutex);
            watch->phase = watch->loggedIn ? HttpServer::ConnectionWatch::IDLE
                                           : HttpServer::ConnectionWatch::HEAD;
            watch->since = std::chrono::steady_clock::now();
        }
        if (state != nullptr)
        {
            *conCls = nullptr;
            if (state->stream)
            {
                state->stream->close();
            }
            {
                std::lock_guard<std::mutex> lock(state->lifeMutex);
                state->connectionDone = true;
                if (!state->workerDone)
                {
                    return; // the worker still writes; it frees the state
                }
            }
            server->_release(state);
        }
    }
};

HttpServer::HttpServer(HttpServerConfig config, RequestHandler& handler, UserStore& users,
                       AccessLog& log)
    : _config(std::move(config)), _handler(handler), _users(users), _log(log)
{
}

HttpServer::~HttpServer()
{
    stop(0);
}

MHD_Daemon* HttpServer::_startDaemon(unsigned short port, bool secure)
{
    sockaddr_storage addr;
    memset(&addr, 0, sizeof(addr));
    unsigned flags = MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_AUTO | MHD_ALLOW_SUSPEND_RESUME |
                     MHD_USE_ITC | MHD_USE_ERROR_LOG;
    auto* v4 = reinterpret_cast<sockaddr_in*>(&addr);
    auto* v6 = reinterpret_cast<sockaddr_in6*>(&addr);
    if (inet_pton(AF_INET, _config.bindAddress.c_str(), &v4->sin_addr) == 1)
    {
        v4->sin_family = AF_INET;
        v4->sin_port = htons(port);
    }
    else if (inet_pton(AF_INET6, _config.bindAddress.c_str(), &v6->sin6_addr) == 1)
    {
        v6->sin6_family = AF_INET6;
        v6->sin6_port = htons(port);
        flags |= MHD_USE_IPv6;
    }
    else
    {
        throw HttpServerError("--bind needs a numeric IPv4 or IPv6 address, not \"" +
                              _config.bindAddress + "\"");
    }
    if (secure)
    {
        flags |= MHD_USE_TLS;
    }
    MHD_Daemon* daemon = MHD_start_daemon(
        flags, port, nullptr, nullptr, &HttpServerCallbacks::onRequest, this,
        MHD_OPTION_EXTERNAL_LOGGER, &_mhdLog, const_cast<char*>(secure ? "https" : "http"),
        MHD_OPTION_SOCK_ADDR, reinterpret_cast<sockaddr*>(&addr), MHD_OPTION_THREAD_POOL_SIZE,
        pollingThreads, MHD_OPTION_NOTIFY_COMPLETED, &HttpServerCallbacks::onCompleted, this,
        MHD_OPTION_NOTIFY_CONNECTION, &HttpServerCallbacks::onConnection, this,
        MHD_OPTION_CONNECTION_MEMORY_LIMIT, _config.maxHeaderBytes,
        // Past our own limits a client is answered 503 once its head is in;
        // libmicrohttpd's, a little higher, refuse at once what comes after.
        MHD_OPTION_CONNECTION_LIMIT, _config.maxConnections + hardLimitMargin,
        MHD_OPTION_PER_IP_CONNECTION_LIMIT, _config.maxConnectionsPerPeer + hardLimitMargin,
        // Until a login, the idle timeout is the head's deadline at most.
        MHD_OPTION_CONNECTION_TIMEOUT,
        std::min(_config.idleTimeoutSeconds, _config.headTimeoutSeconds),
        // No SO_REUSEPORT: a second server on a busy port must fail to start
        // rather than have the kernel split the clients between the two.
        secure ? MHD_OPTION_HTTPS_MEM_CERT : MHD_OPTION_END, _config.tls.certPem.c_str(),
        MHD_OPTION_HTTPS_MEM_KEY, _config.tls.keyPem.c_str(), MHD_OPTION_HTTPS_PRIORITIES,
        _config.tlsPriorities.c_str(), MHD_OPTION_END);
    if (daemon == nullptr)
    {
        throw HttpServerError(std::string("cannot listen on ") + _config.bindAddress + " port " +
                              std::to_string(port) + (secure ? " (HTTPS)" : " (HTTP)") +
                              ": " + strerror(errno));
    }
    return daemon;
}

void HttpServer::start()
{
    {
        std::lock_guard<std::mutex> lock(_queueMutex);
        _stopping = false;
        _liveWorkers = static_cast<int>(_config.workerThreads);
        _liveLogins = static_cast<int>(std::max(1u, _config.loginThreads));
        _perUserCap = _config.maxRequestsPerUser != 0 ? _config.maxRequestsPerUser
                                                      : std::max(1u, _config.workerThreads / 2);
    }
    for (unsigned i = 0; i < _config.workerThreads; ++i)
    {
        _workers.emplace_back(&HttpServer::_workerLoop, this);
    }
    for (int i = 0; i < _liveLogins; ++i)
    {
        _loginWorkers.emplace_back(&HttpServer::_loginLoop, this);
    }
    {
        std::lock_guard<std::mutex> lock(_watchMutex);
        _watching = true;
    }
    _watcher = std::thread(&HttpServer::_watchLoop, this);
    try
    {
        if (_config.httpPort != 0)
        {
            _http = _startDaemon(_config.httpPort, false);
        }
        if (_config.httpsPort != 0)
        {
            _https = _startDaemon(_config.httpsPort, true);
        }
    }
    catch (const HttpServerError&)
    {
        stop(0);
        throw;
    }
}

void HttpServer::stop(unsigned graceSeconds)
{
    for (MHD_Daemon* daemon : {_http, _https})
    {
        if (daemon != nullptr)
        {
            MHD_socket fd = MHD_quiesce_daemon(daemon);
            if (fd != MHD_INVALID_SOCKET)
            {
                close(fd);
            }
        }
    }
    {
        // Requests already parked or running finish; idle keep-alive
        // connections are simply closed by the daemon stop below.
        std::unique_lock<std::mutex> lock(_queueMutex);
        _idleCv.wait_for(lock, std::chrono::seconds(graceSeconds),
                         [this] { return _queue.empty() && _logins.empty() && _processing == 0; });
        _stopping = true;
    }
    // Workers drain everything parked before they leave: stopping a daemon
    // frees its connections, and a worker must never touch one afterwards.
    // Logins go first: a login that passes parks its request for a worker,
    // or serves it in place once the workers are gone.
    _loginCv.notify_all();
    for (std::thread& worker : _loginWorkers)
    {
        worker.join();
    }
    _loginWorkers.clear();
    _queueCv.notify_all();
    for (std::thread& worker : _workers)
    {
        worker.join();
    }
    _workers.clear();
    {
        // Let the answers just handed back reach their clients before the
        // daemons close the connections.
        std::unique_lock<std::mutex> lock(_queueMutex);
        _idleCv.wait_for(lock, std::chrono::seconds(10), [this] { return _inFlight == 0; });
    }
    for (MHD_Daemon** daemon : {&_http, &_https})
    {
        if (*daemon != nullptr)
        {
            MHD_stop_daemon(*daemon);
            *daemon = nullptr;
        }
    }
    {
        std::lock_guard<std::mutex> lock(_watchMutex);
        _watching = false;
        _watchCv.notify_all();
    }
    if (_watcher.joinable())
    {
        _watcher.join();
    }
}

bool HttpServer::_overLimit(ConnectionWatch* watch)
{
    if (watch == nullptr)
    {
        return false;
    }
    std::lock_guard<std::mutex> lock(_watchMutex);
    auto peer = _connectionsByPeer.find(watch->peer);
    return _watches.size() > _config.maxConnections ||
           (peer != _connectionsByPeer.end() && peer->second > _config.maxConnectionsPerPeer);
}

// Cuts connections past their deadlines. libmicrohttpd has no call to close
// a connection from outside; shutting its socket down makes its own thread
// see the end and close it.
void HttpServer::_watchLoop()
{
    std::unique_lock<std::mutex> lock(_watchMutex);
    while (_watching)
    {
        _watchCv.wait_for(lock, std::chrono::milliseconds(250));
        const auto now = std::chrono::steady_clock::now();
        for (ConnectionWatch* watch : _watches)
        {
            const char* reason = nullptr;
            if (watch->phase == ConnectionWatch::HEAD &&
                now - watch->since > std::chrono::seconds(_config.headTimeoutSeconds))
            {
                reason = "head-timeout";
            }
            else if (watch->phase == ConnectionWatch::BODY &&
                     now - watch->since > std::chrono::seconds(_config.requestTimeoutSeconds))
            {
                reason = "request-timeout";
            }
            if (reason != nullptr && !watch->cut && watch->fd >= 0)
            {
                watch->cut = true;
                shutdown(watch->fd, SHUT_RDWR);
                _log.record("-", watch->peer, "-", "-", 408, reason, _millisSince(watch->since));
            }
        }
    }
}

void HttpServer::_release(RequestState* state)
{
    delete state;
    if (--_inFlight == 0)
    {
        std::lock_guard<std::mutex> lock(_queueMutex);
        _idleCv.notify_all();
    }
}

void HttpServer::_finishProcessing(RequestState* state)
{
    bool release = false;
    {
        std::lock_guard<std::mutex> lock(state->lifeMutex);
        state->workerDone = true;
        if (!state->resumedEarly)
        {
            MHD_resume_connection(state->connection);
            return;
        }
        release = state->connectionDone;
    }
    if (release)
    {
        _release(state);
    }
}

void HttpServer::_enqueue(RequestState* state)
{
    {
        std::lock_guard<std::mutex> lock(_queueMutex);
        if (!state->authenticated && _liveLogins > 0)
        {
            _logins.push_back(state);
            _loginCv.notify_one();
            return;
        }
        if (state->authenticated && _liveWorkers > 0)
        {
            _queue.push_back(state);
            // Some workers may pass this one by for its user's cap.
            _queueCv.notify_all();
            return;
        }
    }
    _process(state);
    _finishProcessing(state);
}

bool HttpServer::_loginQueueFull()
{
    std::lock_guard<std::mutex> lock(_queueMutex);
    return _logins.size() >= _config.maxPendingLogins;
}

void HttpServer::_loginLoop()
{
    for (;;)
    {
        RequestState* state = nullptr;
        {
            std::unique_lock<std::mutex> lock(_queueMutex);
            _loginCv.wait(lock, [this] { return _stopping || !_logins.empty(); });
            if (_logins.empty())
            {
                --_liveLogins;
                return;
            }
            state = _logins.front();
            _logins.pop_front();
            ++_processing;
        }
        _process(state);
        _finishProcessing(state);
        std::lock_guard<std::mutex> lock(_queueMutex);
        --_processing;
        _idleCv.notify_all();
    }
}

unsigned HttpServer::_loginWait(const std::string& peer, const std::string& user)
{
    std::lock_guard<std::mutex> lock(_failuresMutex);
    const auto now = std::chrono::steady_clock::now();
    unsigned wait = 0;
    for (const std::string& key : {"a " + peer, "u " + user})
    {
        auto it = _failures.find(key);
        if (it != _failures.end() && it->second.until > now)
        {
            auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(it->second.until - now);
            wait = std::max(wait, static_cast<unsigned>((ms.count() + 999) / 1000));
        }
    }
    return wait;
}

void HttpServer::_loginResult(const std::string& peer, const std::string& user, bool ok)
{
    std::lock_guard<std::mutex> lock(_failuresMutex);
    const std::string keys[] = {"a " + peer, "u " + user};
    if (ok)
    {
        for (const std::string& key : keys)
        {
            _failures.erase(key);
        }
        return;
    }
    const auto now = std::chrono::steady_clock::now();
    const auto cap = std::chrono::milliseconds(_config.loginBackoffCapSeconds * 1000ull);
    if (_failures.size() > 10000)
    {
        // Guessers with many names or addresses: forget those whose last
        // delay is long over.
        for (auto it = _failures.begin(); it != _failures.end();)
        {
            it = it->second.until + cap < now ? _failures.erase(it) : std::next(it);
        }
    }
    for (const std::string& key : keys)
    {
        LoginFailures& f = _failures[key];
        ++f.count;
        if (f.count >= _config.loginFreeFailures)
        {
            const unsigned doublings = std::min(f.count - _config.loginFreeFailures, 20u);
            const auto delay = std::min<std::chrono::milliseconds>(
                cap, std::chrono::milliseconds(uint64_t(_config.loginBackoffBaseMs) << doublings));
            f.until = now + delay;
        }
    }
}

void HttpServer::_workerLoop()
{
    for (;;)
    {
        RequestState* state = nullptr;
        std::string user;
        {
            std::unique_lock<std::mutex> lock(_queueMutex);
            // The oldest request whose user is under the cap; when stopping,
            // the oldest of all.
            auto next = _queue.end();
            _queueCv.wait(lock,
                          [&]
                          {
                              for (next = _queue.begin(); next != _queue.end(); ++next)
                              {
                                  auto active = _activeByUser.find((*next)->request.user);
                                  if (_stopping || active == _activeByUser.end() ||
                                      active->second < _perUserCap)
                                  {
                                      return true;
                                  }
                              }
                              return _stopping;
                          });
            if (next == _queue.end())
            {
                --_liveWorkers;
                return;
            }
            state = *next;
            _queue.erase(next);
            user = state->request.user;
            ++_activeByUser[user];
            ++_processing;
        }
        _process(state);
        _finishProcessing(state);
        std::lock_guard<std::mutex> lock(_queueMutex);
        if (--_activeByUser[user] == 0)
        {
            _activeByUser.erase(user);
        }
        --_processing;
        _idleCv.notify_all();
        _queueCv.notify_all();
    }
}

void HttpServer::_process(RequestState* state)
{
    HttpRequest& request = state->request;
    if (state->authenticated)
    {
        _serve(state);
        return;
    }
    const bool ok = _users.authenticate(request.user, state->password);
    _loginResult(request.peer, request.user, ok);
    if (!ok)
    {
        state->password.assign(state->password.size(), '\0');
        HttpResponse response = HttpServerCallbacks::plain(401, "authentication failed");
        response.headers.emplace_back("WWW-Authenticate", "Basic realm=\"" + _config.realm + "\"");
        response.summary.cimStatus = "bad-credentials";
        state->response = std::move(response);
        state->responseReady = true;
        return;
    }
    state->password.assign(state->password.size(), '\0');
    state->authenticated = true;
}

void HttpServer::_serve(RequestState* state)
{
    HttpRequest& request = state->request;
    {
        std::lock_guard<std::mutex> lock(state->lifeMutex);
        state->workerDone = false;
    }
    auto te = request.headers.find("TE");
    const bool trailers =
        te != request.headers.end() && strcasestr(te->second.c_str(), "trailers") != nullptr;
    request.startStreaming = [this, state, trailers](const HttpResponse& head) {
        auto stream = std::make_shared<ChunkStream>(trailers, _config.idleTimeoutSeconds);
        std::lock_guard<std::mutex> lock(state->lifeMutex);
        state->stream = stream;
        state->response = head;
        state->responseReady = true;
        state->resumedEarly = true;
        MHD_resume_connection(state->connection);
        return std::shared_ptr<StreamingBody>(stream);
    };
    try
    {
        HttpResponse response = _handler.handle(request);
        if (response.streamed)
        {
            // A large answer: what it left free goes back to the system
            // rather than stay with the process. Only when that is much: a
            // client paging through pulls would otherwise have every page's
            // memory given back and faulted in again.
            if (mallinfo2().fordblks >= trimAfterBytes)
            {
                malloc_trim(0);
            }
            return;
        }
        state->response = std::move(response);
    }
    catch (const std::exception& e)
    {
        if (state->stream)
        {
            state->stream->fail("1", e.what());
            return;
        }
        state->response = HttpServerCallbacks::plain(500, std::string("internal error: ") + e.what());
    }
    catch (...)
    {
        if (state->stream)
        {
            state->stream->fail("1", "internal error");
            return;
        }
        state->response = HttpServerCallbacks::plain(500, "internal error");
    }
    state->responseReady = true;
}

} // namespace orvhost
