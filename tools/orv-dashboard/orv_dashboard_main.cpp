// orv-dashboard: a live web page of an array's performance, from the
// statistics of any WBEM server hosting the module.

#include "DashboardServer.h"
#include "RateWindow.h"
#include "StatSampler.h"

#include <Pegasus/Client/CIMClient.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <mutex>
#include <string>
#include <thread>

using namespace Pegasus;
using namespace orvdash;
using namespace orvstat;

namespace
{

const char USAGE[] =
    "usage: orv-dashboard --url URL --user U --password-stdin [--cacert FILE]\n"
    "                     [--namespace NS] [--listen HOST:PORT] [--interval S] [--window S]\n"
    "                     [--page-user U [--page-password-file FILE]]\n"
    "The page's password comes from --page-password-file (its first line) or\n"
    "the environment variable ORV_DASHBOARD_PAGE_PASSWORD.\n";

struct Options
{
    ServerAddress server;
    std::string user;
    std::string password;
    std::string caCert;
    std::string nameSpace = "root/orv";
    double interval = 2;
    double window = 3600;
    ServerConfig http;
};

// The polling thread and the main thread meet here: the main thread waits
// for a signal or for the poller giving up.
struct Shared
{
    std::mutex lock;
    std::condition_variable wake;
    bool stop = false;
    std::atomic<int> exitStatus{-1};
};

std::string _text(const Exception& e)
{
    return std::string((const char*)e.getMessage().getCString());
}

void _poll(const Options& o, RateWindow& window, Shared& shared)
{
    const std::string where =
        o.server.scheme + "://" + o.server.host + ":" + std::to_string(o.server.port);
    CIMClient client;
    // A large array's collection takes seconds per element type.
    client.setTimeout(static_cast<Uint32>(std::max(30.0, o.interval * 5) * 1000));
    StatSampler sampler(client, CIMNamespaceName(o.nameSpace.c_str()), elementTypesNamed("all"));
    bool connected = false;
    bool first = true;
    bool havePrevious = false;
    Sample previous;
    for (;;)
    {
        const auto started = std::chrono::steady_clock::now();
        try
        {
            if (!connected)
            {
                connectClient(client, o.server, o.user, o.password, o.caCert);
                connected = true;
            }
            const bool chatty = first;
            Sample sample = sampler.take(
                [&](const std::string& step)
                {
                    if (chatty)
                    {
                        fprintf(stderr, "orv-dashboard: %s: %s\n", where.c_str(), step.c_str());
                    }
                });
            first = false;
            const double now =
                std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
                    .count();
            if (havePrevious)
            {
                window.add(now, computeRates(previous, sample));
            }
            else
            {
                window.setProblem(""); // connected: the first rates come next
            }
            previous = std::move(sample);
            havePrevious = true;
        }
        catch (const CIMClientHTTPErrorException& e)
        {
            const std::string text = where + " refused the request: " + _text(e);
            fprintf(stderr, "orv-dashboard: %s\n", text.c_str());
            if (e.getCode() == 401 || e.getCode() == 403)
            {
                // Waiting will not change the credentials.
                std::lock_guard<std::mutex> guard(shared.lock);
                shared.exitStatus = 3;
                shared.stop = true;
                shared.wake.notify_all();
                return;
            }
            window.setProblem(text);
        }
        catch (const CIMException& e)
        {
            const std::string text =
                where + ": CIM error " + std::to_string(int(e.getCode())) + ": " + _text(e);
            fprintf(stderr, "orv-dashboard: %s\n", text.c_str());
            window.setProblem(text);
        }
        catch (const Exception& e)
        {
            const std::string text = where + " is not answering: " + _text(e);
            fprintf(stderr, "orv-dashboard: %s\n", text.c_str());
            window.setProblem(text);
            client.disconnect();
            connected = false;
        }
        std::unique_lock<std::mutex> guard(shared.lock);
        if (shared.wake.wait_until(guard, started + std::chrono::duration<double>(o.interval),
                                   [&] { return shared.stop; }))
        {
            return;
        }
    }
}

bool _readFirstLine(const std::string& path, std::string& out)
{
    std::ifstream in(path);
    return in && std::getline(in, out) && !out.empty();
}

} // namespace

int main(int argc, char** argv)
{
    Options o;
    bool passwordStdin = false;
    std::string pagePasswordFile;
    for (int i = 1; i < argc; ++i)
    {
        const std::string arg = argv[i];
        auto value = [&]() -> std::string
        {
            if (i + 1 >= argc)
            {
                fprintf(stderr, "orv-dashboard: %s needs a value\n%s", arg.c_str(), USAGE);
                exit(2);
            }
            return argv[++i];
        };
        if (arg == "--url")
        {
            if (!parseServerUrl(value(), o.server))
            {
                fprintf(stderr, "orv-dashboard: unusable URL %s\n", argv[i]);
                return 2;
            }
        }
        else if (arg == "--user")
            o.user = value();
        else if (arg == "--password-stdin")
            passwordStdin = true;
        else if (arg == "--cacert")
            o.caCert = value();
        else if (arg == "--namespace")
            o.nameSpace = value();
        else if (arg == "--listen")
            o.http.listen = value();
        else if (arg == "--interval")
            o.interval = std::atof(value().c_str());
        else if (arg == "--window")
            o.window = std::atof(value().c_str());
        else if (arg == "--page-user")
            o.http.pageUser = value();
        else if (arg == "--page-password-file")
            pagePasswordFile = value();
        else if (arg == "--help" || arg == "-h")
        {
            printf("%s", USAGE);
            return 0;
        }
        else
        {
            fprintf(stderr, "orv-dashboard: unknown option %s\n%s", arg.c_str(), USAGE);
            return 2;
        }
    }
    if (o.interval <= 0 || o.window < o.interval)
    {
        fprintf(stderr,
                "orv-dashboard: --interval must be positive and --window at least as long\n");
        return 2;
    }
    if (passwordStdin && !std::getline(std::cin, o.password))
    {
        fprintf(stderr, "orv-dashboard: no password on stdin\n");
        return 2;
    }
    if (!o.http.pageUser.empty())
    {
        const char* env = getenv("ORV_DASHBOARD_PAGE_PASSWORD");
        bool have = false;
        if (!pagePasswordFile.empty())
        {
            have = _readFirstLine(pagePasswordFile, o.http.pagePassword);
        }
        else if (env && *env)
        {
            o.http.pagePassword = env;
            have = true;
        }
        if (!have)
        {
            fprintf(stderr, "orv-dashboard: --page-user needs a password: --page-password-file "
                            "or ORV_DASHBOARD_PAGE_PASSWORD\n");
            return 2;
        }
    }
    if (o.server.scheme == "https" && o.caCert.empty())
    {
        fprintf(stderr, "orv-dashboard: no --cacert: the server's certificate is not verified\n");
    }

    // Signals are taken by the main thread alone, with sigtimedwait.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    signal(SIGPIPE, SIG_IGN);

    RateWindow window(o.window, o.interval);
    DashboardServer http(window, o.http);
    std::string error;
    if (!http.start(error))
    {
        fprintf(stderr, "orv-dashboard: %s\n", error.c_str());
        return 1;
    }
    const std::string host = o.http.listen.substr(0, o.http.listen.rfind(':'));
    if (host != "127.0.0.1" && host != "localhost" && host != "[::1]" && o.http.pageUser.empty())
    {
        fprintf(stderr, "orv-dashboard: listening beyond this machine without --page-user\n");
    }
    printf("orv-dashboard: serving http://%s:%u/\n", host.c_str(), http.port());
    fflush(stdout);

    Shared shared;
    std::thread poller(_poll, std::cref(o), std::ref(window), std::ref(shared));
    for (;;)
    {
        const timespec tick = {0, 200 * 1000 * 1000};
        const int got = sigtimedwait(&signals, nullptr, &tick);
        std::lock_guard<std::mutex> guard(shared.lock);
        if (got == SIGINT || got == SIGTERM)
        {
            shared.stop = true;
            shared.wake.notify_all();
        }
        if (shared.stop)
        {
            break;
        }
    }
    // The page goes at once; the poller may be inside a request to a large
    // array for a few seconds more.
    http.stop();
    poller.join();
    return shared.exitStatus >= 0 ? shared.exitStatus.load() : 0;
}
