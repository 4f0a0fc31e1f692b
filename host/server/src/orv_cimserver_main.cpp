// orv-cimserver: serves the object manager and its provider modules to WBEM
// clients as CIM-XML over HTTP and HTTPS.

#include "AccessLog.h"
#include "CimOperationProcessor.h"
#include "HttpServer.h"
#include "StatePaths.h"
#include "TlsCredentials.h"
#include "UserStore.h"

#include <cimom/InteropProvider.h>
#include <cimom/ObjectManager.h>
#include <orvsim.h>

#include <gnutls/gnutls.h>
#include <malloc.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

using namespace orvhost;

namespace
{
// Seconds after the shutdown grace period before the process ends anyway.
const unsigned forcedStopMargin = 3;

const char usage[] =
    "usage: orv-cimserver [options]\n"
    "  --http-port N         plain HTTP port (default 5988; 0 turns it off)\n"
    "  --https-port N        HTTPS port (default 5989; 0 turns it off)\n"
    "  --bind ADDR           numeric address to listen on (default 127.0.0.1)\n"
    "  --array FILE          array model (JSON) for the simulated array (default: embedded)\n"
    "  --users FILE          users file (default: STATE/users; manage with orv-cimuser)\n"
    "  --log-level N         management library log threshold, 0-4 (default 2)\n"
    "  --cert FILE --key FILE  TLS certificate and key in PEM (default: a self-signed\n"
    "                        pair made at first start in STATE)\n"
    "  --state-dir DIR       STATE directory (default $ORV_CIMSERVER_STATE_DIR, else\n"
    "                        <program dir>/../var/orv-cimserver)\n"
    "  --manifest FILE       MOF load order (default: the installed or source tree's\n"
    "                        schema/load-order.txt)\n"
    "  --base-dir DIR        directory the manifest's paths are relative to\n"
    "  --provider-dir DIR    extra directory searched for provider modules\n"
    "  --access-log FILE     access log (default '-' = standard error)\n"
    "  --workers N           worker threads (default 8)\n"
    "  --max-body BYTES      largest request body (default 8388608)\n"
    "  --max-answer BYTES    largest answer body (default 1073741824); past it the\n"
    "                        answer is a CIM error, or a cut stream once part was sent\n"
    "  --max-connections N   open connections at most (default 256)\n"
    "  --idle-timeout S      idle connection timeout in seconds after a login (default 60)\n"
    "  --head-timeout S      a connection's first request head must be in within S seconds,\n"
    "                        and it may idle that long at most before it logs in (default 20)\n"
    "  --request-timeout S   head and body of one request within S seconds (default 120)\n"
    "  --max-connections-per-address N  connections from one address (default 64);\n"
    "                        past this or --max-connections a client is answered 503 with\n"
    "                        Retry-After, and 8 past either it is refused at once\n"
    "  --max-requests-per-user N  requests of one user served at once; the rest wait\n"
    "                        their turn (default: half the workers)\n"
    "  --login-threads N     threads that check passwords, apart from the workers\n"
    "                        (default 2); after 5 failed logins in a row from one\n"
    "                        address or for one name, logins from it or for it are\n"
    "                        answered 503 with Retry-After for 1 s, doubling per\n"
    "                        further failure up to 30 s, until one succeeds\n"
    "  --shutdown-grace S    on SIGTERM or SIGINT, requests in flight get S seconds to\n"
    "                        finish (default 30); 3 s later the process ends whatever\n"
    "                        still runs, exit status 1. A second signal ends it at once\n"
    "  --tls-priorities P    GnuTLS priority string for HTTPS (default: TLS 1.3, and\n"
    "                        TLS 1.2 with ECDHE and AES-GCM or ChaCha20-Poly1305)\n"
    "  --help                this text\n";

struct Options
{
    HttpServerConfig http;
    std::string array;
    std::string users;
    std::string cert;
    std::string key;
    std::string stateDir;
    std::string manifest;
    std::string baseDir;
    std::string providerDir;
    std::string accessLog = "-";
    int logLevel = -1;
    size_t maxAnswer = CimOperationProcessor::defaultMaxAnswerBytes;
    unsigned shutdownGrace = 30;
};

bool _number(const char* text, unsigned long max, unsigned long& out)
{
    char* end = nullptr;
    errno = 0;
    out = strtoul(text, &end, 10);
    return errno == 0 && end != text && *end == '\0' && out <= max && text[0] != '-';
}

bool _fileExists(const std::string& path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0;
}

int _parse(int argc, char** argv, Options& o)
{
    for (int i = 1; i < argc; ++i)
    {
        std::string arg = argv[i];
        if (arg == "--help" || arg == "-h")
        {
            fputs(usage, stdout);
            exit(0);
        }
        if (i + 1 >= argc)
        {
            fprintf(stderr, "orv-cimserver: %s needs a value (see --help)\n", arg.c_str());
            return 2;
        }
        const char* v = argv[++i];
        unsigned long n = 0;
        auto needNumber = [&](unsigned long max) {
            if (!_number(v, max, n))
            {
                fprintf(stderr, "orv-cimserver: %s needs a number up to %lu, not \"%s\"\n",
                        arg.c_str(), max, v);
                return false;
            }
            return true;
        };
        if (arg == "--http-port" || arg == "--https-port" || arg == "--max-connections")
        {
            if (!needNumber(65535))
                return 2;
            if (arg == "--http-port")
                o.http.httpPort = static_cast<unsigned short>(n);
            else if (arg == "--https-port")
                o.http.httpsPort = static_cast<unsigned short>(n);
            else
                o.http.maxConnections = static_cast<unsigned>(n);
        }
        else if (arg == "--log-level")
        {
            if (!needNumber(4))
                return 2;
            o.logLevel = static_cast<int>(n);
        }
        else if (arg == "--workers")
        {
            if (!needNumber(256))
                return 2;
            o.http.workerThreads = n == 0 ? 1 : static_cast<unsigned>(n);
        }
        else if (arg == "--max-requests-per-user" || arg == "--login-threads")
        {
            if (!needNumber(256))
                return 2;
            if (arg == "--login-threads")
                o.http.loginThreads = n == 0 ? 1 : static_cast<unsigned>(n);
            else
                o.http.maxRequestsPerUser = static_cast<unsigned>(n);
        }
        else if (arg == "--max-answer")
        {
            if (!needNumber(ULONG_MAX - 1))
                return 2;
            o.maxAnswer = n;
        }
        else if (arg == "--max-body")
        {
            if (!needNumber(1UL << 30))
                return 2;
            o.http.maxBodyBytes = n;
        }
        else if (arg == "--head-timeout" || arg == "--request-timeout")
        {
            if (!needNumber(86400))
                return 2;
            (arg == "--head-timeout" ? o.http.headTimeoutSeconds : o.http.requestTimeoutSeconds) =
                n == 0 ? 1 : static_cast<unsigned>(n);
        }
        else if (arg == "--max-connections-per-address")
        {
            if (!needNumber(65535))
                return 2;
            o.http.maxConnectionsPerPeer = n == 0 ? 1 : static_cast<unsigned>(n);
        }
        else if (arg == "--idle-timeout")
        {
            if (!needNumber(86400))
                return 2;
            o.http.idleTimeoutSeconds = static_cast<unsigned>(n);
        }
        else if (arg == "--shutdown-grace")
        {
            if (!needNumber(3600))
                return 2;
            o.shutdownGrace = static_cast<unsigned>(n);
        }
        else if (arg == "--tls-priorities")
            o.http.tlsPriorities = v;
        else if (arg == "--bind")
            o.http.bindAddress = v;
        else if (arg == "--array")
            o.array = v;
        else if (arg == "--users")
            o.users = v;
        else if (arg == "--cert")
            o.cert = v;
        else if (arg == "--key")
            o.key = v;
        else if (arg == "--state-dir")
            o.stateDir = v;
        else if (arg == "--manifest")
            o.manifest = v;
        else if (arg == "--base-dir")
            o.baseDir = v;
        else if (arg == "--provider-dir")
            o.providerDir = v;
        else if (arg == "--access-log")
            o.accessLog = v;
        else
        {
            fprintf(stderr, "orv-cimserver: unknown option %s (see --help)\n", arg.c_str());
            return 2;
        }
    }
    if (o.http.httpPort == 0 && o.http.httpsPort == 0)
    {
        fprintf(stderr, "orv-cimserver: both ports are off; nothing to serve\n");
        return 2;
    }
    if (o.cert.empty() != o.key.empty())
    {
        fprintf(stderr, "orv-cimserver: --cert and --key go together\n");
        return 2;
    }
    gnutls_priority_t priorities;
    const char* at = nullptr;
    if (gnutls_priority_init(&priorities, o.http.tlsPriorities.c_str(), &at) < 0)
    {
        fprintf(stderr,
                "orv-cimserver: --tls-priorities: not a GnuTLS priority string (at \"%s\")\n",
                at == nullptr ? "" : at);
        return 2;
    }
    gnutls_priority_deinit(priorities);
    return 0;
}

void _defaultManifest(Options& o)
{
    if (!o.manifest.empty())
    {
        if (o.baseDir.empty())
        {
            std::string dir = o.manifest.substr(0, o.manifest.rfind('/') + 1);
            o.baseDir = dir.empty() ? "." : dir + "..";
        }
        return;
    }
    std::string installed = executableDir() + "/../share/orv-cimserver";
    if (_fileExists(installed + "/schema/load-order.txt"))
    {
        o.manifest = installed + "/schema/load-order.txt";
        o.baseDir = installed;
        return;
    }
    o.baseDir = ORV_SOURCE_ROOT;
    o.manifest = o.baseDir + "/schema/load-order.txt";
}
} // namespace

int main(int argc, char** argv)
{
    Options o;
    if (int rc = _parse(argc, argv, o))
    {
        return rc;
    }
    // Signals are taken by sigwait below; every thread started from here on
    // inherits the mask, so none of them is interrupted.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    signal(SIGPIPE, SIG_IGN);
    // A large answer makes and drops millions of small objects. One heap,
    // grown and trimmed in large steps, serves that better than a heap per
    // thread, which grows a page at a time after every trim and keeps what
    // its thread last used.
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_TOP_PAD, 4 << 20);

    try
    {
        if (o.stateDir.empty())
        {
            o.stateDir = defaultStateDir();
        }
        ensureDirectory(o.stateDir);
        if (o.logLevel >= 0)
        {
            setenv("ORV_LOG_LEVEL", std::to_string(o.logLevel).c_str(), 1);
            orvsim_set_log_level(o.logLevel);
        }
        if (!o.array.empty() && orvsim_load_model_file(o.array.c_str()) != 0)
        {
            fprintf(stderr, "orv-cimserver: cannot load the array model %s\n", o.array.c_str());
            return 1;
        }

        UserStore users(o.users.empty() ? o.stateDir + "/users" : o.users);
        users.load();
        if (users.userNames().empty())
        {
            fprintf(stderr,
                    "orv-cimserver: warning: %s has no users, every request will be refused; "
                    "add one with: orv-cimuser --users %s add NAME\n",
                    users.path().c_str(), users.path().c_str());
        }

        if (o.http.httpsPort != 0)
        {
            if (!o.cert.empty())
            {
                o.http.tls = loadTlsCredentials(o.cert, o.key);
            }
            else
            {
                bool created = false;
                o.http.tls = loadOrCreateTlsCredentials(o.stateDir + "/server.pem",
                                                        o.stateDir + "/server.key", "localhost",
                                                        &created);
                if (created)
                {
                    fprintf(stderr, "orv-cimserver: made a self-signed certificate %s\n",
                            (o.stateDir + "/server.pem").c_str());
                }
            }
        }

        _defaultManifest(o);
        cimom::ObjectManager om;
        if (!o.providerDir.empty())
        {
            om.addModuleSearchPath(o.providerDir);
        }
        om.loadManifest(o.manifest, o.baseDir);
        cimom::InteropSettings interop;
        interop.hostName = om.getHostName();
        interop.httpPort = o.http.httpPort;
        interop.httpsPort = o.http.httpsPort;
        cimom::InteropProvider::install(om, interop);
        for (const std::string& error : om.loadErrors())
        {
            fprintf(stderr, "orv-cimserver: load error: %s\n", error.c_str());
        }
        om.makeLocal();

        initXmlLibrary();
        AccessLog log(o.accessLog);
        CimOperationProcessor processor(om, om.getHostName());
        processor.setMaxAnswerBytes(o.maxAnswer);
        HttpServer server(o.http, processor, users, log);
        server.start();

        std::string host = o.http.bindAddress.find(':') != std::string::npos
                               ? "[" + o.http.bindAddress + "]"
                               : o.http.bindAddress;
        if (o.http.httpPort != 0)
        {
            printf("orv-cimserver: serving http://%s:%u/cimom\n", host.c_str(), o.http.httpPort);
        }
        if (o.http.httpsPort != 0)
        {
            printf("orv-cimserver: serving https://%s:%u/cimom\n", host.c_str(),
                   o.http.httpsPort);
        }
        fflush(stdout);

        int sig = 0;
        sigwait(&stopSignals, &sig);
        fprintf(stderr, "orv-cimserver: %s: finishing requests in flight (%u s at most)\n",
                strsignal(sig), o.shutdownGrace);
        // A request may run (or a client may stall its answer) for longer
        // than anyone waits for a stop: past the grace period, and a little
        // for the answers finished within it to go out, the process ends.
        std::thread deadline(
            [stopSignals, grace = o.shutdownGrace]
            {
                const auto end = std::chrono::steady_clock::now() +
                                 std::chrono::seconds(grace + forcedStopMargin);
                siginfo_t info;
                int again = -1;
                // Other signals (a sanitizer's, a debugger's) interrupt the
                // wait: only a second stop signal or the deadline end it.
                for (auto now = std::chrono::steady_clock::now(); now < end;
                     now = std::chrono::steady_clock::now())
                {
                    const auto left =
                        std::chrono::duration_cast<std::chrono::nanoseconds>(end - now).count();
                    timespec wait{static_cast<time_t>(left / 1000000000),
                                  static_cast<long>(left % 1000000000)};
                    again = sigtimedwait(&stopSignals, &info, &wait);
                    if (again > 0 || errno != EINTR)
                    {
                        break;
                    }
                }
                fprintf(stderr, "orv-cimserver: %s; stopping without the requests still running\n",
                        again > 0 ? "signalled again" : "the shutdown grace period is over");
                _exit(1);
            });
        deadline.detach();
        server.stop(o.shutdownGrace);
        om.shutdown();
        fprintf(stderr, "orv-cimserver: stopped\n");
        return 0;
    }
    catch (const std::exception& e)
    {
        fprintf(stderr, "orv-cimserver: %s\n", e.what());
        return 1;
    }
    catch (const Pegasus::Exception& e)
    {
        fprintf(stderr, "orv-cimserver: %s\n", (const char*)e.getMessage().getCString());
        return 1;
    }
}
