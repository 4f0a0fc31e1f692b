#ifndef ORV_HOST_HTTPSERVER_H
#define ORV_HOST_HTTPSERVER_H

#include "AccessLog.h"
#include "HttpTypes.h"
#include "TlsCredentials.h"
#include "UserStore.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

struct MHD_Daemon;
struct MHD_Connection;

namespace orvhost
{

/// TLS 1.3, and for TLS 1.2 only ECDHE key exchange with AEAD ciphers:
/// forward secrecy, no CBC, no SHA-1 MACs.
extern const char defaultTlsPriorities[];

struct HttpServerConfig
{
    std::string bindAddress = "127.0.0.1";
    unsigned short httpPort = 5988;  ///< 0: no plain HTTP listener
    unsigned short httpsPort = 5989; ///< 0: no HTTPS listener
    TlsCredentials tls;
    std::string tlsPriorities = defaultTlsPriorities; ///< a GnuTLS priority string
    size_t maxBodyBytes = 8 * 1024 * 1024;
    size_t maxHeaderBytes = 32 * 1024;
    unsigned maxConnections = 256;
    unsigned maxConnectionsPerPeer = 64;
    unsigned idleTimeoutSeconds = 60;
    unsigned workerThreads = 8;
    std::string realm = "orv-cimserver";
};

class HttpServerError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// HTTP(S) front end on libmicrohttpd. Its own threads only read requests and
/// write responses; each complete request is parked (suspended) and handed to
/// a pool of worker threads, which authenticate it and run the handler, so a
/// slow CIM operation never holds up other connections.
class HttpServer
{
public:
    HttpServer(HttpServerConfig config, RequestHandler& handler, UserStore& users,
               AccessLog& log);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /// Opens the listeners. Throws HttpServerError.
    void start();
    /// Stops accepting, lets requests in flight finish (up to the grace
    /// period), then closes every connection and stops the workers.
    void stop(unsigned graceSeconds = 30);

    struct RequestState;

private:
    friend struct HttpServerCallbacks;
    MHD_Daemon* _startDaemon(unsigned short port, bool secure);
    void _workerLoop();
    void _enqueue(RequestState* state);
    void _process(RequestState* state);
    void _serve(RequestState* state);
    void _finishProcessing(RequestState* state);
    void _release(RequestState* state);

    HttpServerConfig _config;
    RequestHandler& _handler;
    UserStore& _users;
    AccessLog& _log;
    MHD_Daemon* _http = nullptr;
    MHD_Daemon* _https = nullptr;

    std::mutex _queueMutex;
    std::condition_variable _queueCv;
    std::condition_variable _idleCv;
    std::deque<RequestState*> _queue;
    bool _stopping = false;
    std::vector<std::thread> _workers;
    std::atomic<int> _inFlight{0};
    int _processing = 0;
    // Workers still taking requests; once none is left, a request parked
    // during shutdown is served on the daemon's own thread instead.
    int _liveWorkers = 0;
};

} // namespace orvhost

#endif
