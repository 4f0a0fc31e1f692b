#ifndef ORV_HOST_HTTPSERVER_H
#define ORV_HOST_HTTPSERVER_H

#include "AccessLog.h"
#include "HttpTypes.h"
#include "TlsCredentials.h"
#include "UserStore.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
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
    /// Connections from one address; more are answered 503 once their
    /// request head is in, and a few past that are refused at once.
    unsigned maxConnectionsPerPeer = 64;
    /// Idle timeout of a connection that has logged in; before that it is
    /// headTimeoutSeconds at most.
    unsigned idleTimeoutSeconds = 60;
    /// A connection's first request head must be in within this, and the
    /// head and body of any request within requestTimeoutSeconds; past either
    /// the connection is cut (slow-loris, slow uploads).
    unsigned headTimeoutSeconds = 20;
    unsigned requestTimeoutSeconds = 120;
    unsigned workerThreads = 8;
    /// Requests of one user served at once; the rest wait their turn, so one
    /// account cannot occupy every worker. 0: half the workers (at least 1).
    unsigned maxRequestsPerUser = 0;
    /// Threads that check passwords (slow by design), apart from the workers.
    unsigned loginThreads = 2;
    /// Logins waiting for a check; past this a login is answered 503.
    unsigned maxPendingLogins = 64;
    /// After `loginFreeFailures` failed logins in a row from one address or
    /// for one user name, logins from it or for it are refused (503 with
    /// Retry-After, no password check) for a delay that starts at
    /// loginBackoffBaseMs and doubles per further failure up to the cap. A
    /// successful login ends both.
    unsigned loginFreeFailures = 5;
    unsigned loginBackoffBaseMs = 1000;
    unsigned loginBackoffCapSeconds = 30;
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
    struct ConnectionWatch;

private:
    friend struct HttpServerCallbacks;
    MHD_Daemon* _startDaemon(unsigned short port, bool secure);
    void _workerLoop();
    void _loginLoop();
    void _watchLoop();
    /// The 503 for a connection past a connection limit, else null.
    bool _overLimit(ConnectionWatch* watch);
    /// Seconds before a login from this address for this user may be
    /// checked; 0: now.
    unsigned _loginWait(const std::string& peer, const std::string& user);
    void _loginResult(const std::string& peer, const std::string& user, bool ok);
    bool _loginQueueFull();
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
    std::deque<RequestState*> _logins; ///< waiting for their password check
    std::condition_variable _loginCv;
    std::vector<std::thread> _loginWorkers;
    int _liveLogins = 0;
    std::map<std::string, unsigned> _activeByUser;
    unsigned _perUserCap = 1;

    // Every open connection, for the deadlines and the soft limits.
    std::mutex _watchMutex;
    std::condition_variable _watchCv;
    std::vector<ConnectionWatch*> _watches;
    std::map<std::string, unsigned> _connectionsByPeer;
    std::thread _watcher;
    bool _watching = false;

    struct LoginFailures
    {
        unsigned count = 0;
        std::chrono::steady_clock::time_point until;
    };
    std::mutex _failuresMutex;
    /// "a " + address and "u " + user name
    std::map<std::string, LoginFailures> _failures;
};

} // namespace orvhost

#endif
