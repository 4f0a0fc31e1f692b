// orv-stat: live IOPS, throughput, latency and busy figures per statistics
// element of a WBEM server, refreshed every interval.

#include "ElementTypes.h"
#include "RateEngine.h"
#include "StatSampler.h"

#include <Pegasus/Client/CIMClient.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <iostream>
#include <string>
#include <thread>

using namespace Pegasus;
using namespace orvstat;

namespace
{

const char USAGE[] =
    "usage: orv-stat [--url URL] [--user U --password-stdin] [--cacert FILE]\n"
    "                [--namespace NS] [--type volume|disk|port|node|array|lun|all]\n"
    "                [--interval S] [--count N] [--top N] [--sort iops|mbps|latency|busy]\n"
    "                [--json|--csv]\n";

struct Options
{
    ServerAddress server;
    std::string user;
    std::string password;
    std::string caCert;
    std::string nameSpace = "root/orv";
    std::string type = "volume";
    double interval = 2;
    long count = -1; // forever
    size_t top = 0;  // all
    std::string sort = "iops";
    std::string format = "table";
};

double _sortKey(const ElementRates& r, const std::string& sort)
{
    if (sort == "mbps")
        return r.totalMBps;
    if (sort == "latency")
        return r.serviceMs;
    if (sort == "busy")
        return r.busyPercent;
    return r.totalIops;
}

std::string _fixed(double value, int decimals)
{
    if (value < 0)
    {
        return "-";
    }
    char text[64];
    snprintf(text, sizeof(text), "%.*f", decimals, value);
    return text;
}

std::string _jsonNumber(double value)
{
    return value < 0 ? "null" : _fixed(value, 3);
}

std::string _timeText()
{
    char text[32];
    time_t now = time(nullptr);
    struct tm local;
    localtime_r(&now, &local);
    strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &local);
    return text;
}

const char* _status(RateStatus status)
{
    return status == RateStatus::RESET         ? "reset"
           : status == RateStatus::NO_INTERVAL ? "no-interval"
                                               : "ok";
}

void _print(const Options& o, RateResult& result, bool& csvHeader)
{
    std::stable_sort(result.rates.begin(), result.rates.end(),
                     [&](const ElementRates& a, const ElementRates& b)
                     { return _sortKey(a, o.sort) > _sortKey(b, o.sort); });
    const size_t total = result.rates.size();
    if (o.top != 0 && result.rates.size() > o.top)
    {
        result.rates.resize(o.top);
    }
    const std::string now = _timeText();
    if (o.format == "json")
    {
        std::string out = "{\"time\":" + jsonQuote(now) + ",\"elements\":[";
        for (size_t i = 0; i < result.rates.size(); ++i)
        {
            const ElementRates& r = result.rates[i];
            out += std::string(i ? "," : "") + "{\"id\":" + jsonQuote(r.id) +
                   ",\"type\":" + jsonQuote(elementTypeName(r.elementType)) +
                   ",\"status\":" + jsonQuote(_status(r.status)) +
                   ",\"interval_s\":" + _jsonNumber(r.intervalSeconds) +
                   ",\"read_iops\":" + _jsonNumber(r.readIops) +
                   ",\"write_iops\":" + _jsonNumber(r.writeIops) +
                   ",\"total_iops\":" + _jsonNumber(r.totalIops) +
                   ",\"read_mbps\":" + _jsonNumber(r.readMBps) +
                   ",\"write_mbps\":" + _jsonNumber(r.writeMBps) +
                   ",\"total_mbps\":" + _jsonNumber(r.totalMBps) +
                   ",\"service_ms\":" + _jsonNumber(r.serviceMs) +
                   ",\"read_service_ms\":" + _jsonNumber(r.readServiceMs) +
                   ",\"write_service_ms\":" + _jsonNumber(r.writeServiceMs) +
                   ",\"busy_pct\":" + _jsonNumber(r.busyPercent) +
                   ",\"cache_hit_pct\":" + _jsonNumber(r.cacheHitPercent) + "}";
        }
        out += "],\"elements_total\":" + std::to_string(total) + ",\"new\":[";
        for (size_t i = 0; i < result.added.size(); ++i)
        {
            out += (i ? "," : "") + jsonQuote(result.added[i]);
        }
        out += "],\"vanished\":[";
        for (size_t i = 0; i < result.vanished.size(); ++i)
        {
            out += (i ? "," : "") + jsonQuote(result.vanished[i]);
        }
        std::cout << out << "]}" << std::endl;
        return;
    }
    if (o.format == "csv")
    {
        if (!csvHeader)
        {
            std::cout << "time,id,type,status,interval_s,read_iops,write_iops,total_iops,"
                         "read_mbps,write_mbps,total_mbps,service_ms,busy_pct,cache_hit_pct\n";
            csvHeader = true;
        }
        for (const ElementRates& r : result.rates)
        {
            std::cout << now << "," << r.id << "," << elementTypeName(r.elementType) << ","
                      << _status(r.status) << "," << _fixed(r.intervalSeconds, 3) << ","
                      << _fixed(r.readIops, 2) << "," << _fixed(r.writeIops, 2) << ","
                      << _fixed(r.totalIops, 2) << "," << _fixed(r.readMBps, 3) << ","
                      << _fixed(r.writeMBps, 3) << "," << _fixed(r.totalMBps, 3) << ","
                      << _fixed(r.serviceMs, 3) << "," << _fixed(r.busyPercent, 1) << ","
                      << _fixed(r.cacheHitPercent, 1) << "\n";
        }
        std::cout.flush();
        return;
    }
    printf("%s  %zu elements", now.c_str(), total);
    if (o.top != 0 && total > o.top)
    {
        printf(", top %zu by %s", o.top, o.sort.c_str());
    }
    if (!result.added.empty())
    {
        printf(", %zu new", result.added.size());
    }
    if (!result.vanished.empty())
    {
        printf(", %zu vanished", result.vanished.size());
    }
    printf("\n%-44s %-7s %9s %9s %9s %8s %8s %8s %7s %6s %5s\n", "element", "type", "r/s", "w/s",
           "io/s", "rMB/s", "wMB/s", "MB/s", "svc_ms", "%busy", "hit%");
    for (const ElementRates& r : result.rates)
    {
        if (r.status != RateStatus::OK)
        {
            printf("%-44s %-7s %s\n", r.id.c_str(), elementTypeName(r.elementType),
                   _status(r.status));
            continue;
        }
        printf("%-44s %-7s %9s %9s %9s %8s %8s %8s %7s %6s %5s\n", r.id.c_str(),
               elementTypeName(r.elementType), _fixed(r.readIops, 1).c_str(),
               _fixed(r.writeIops, 1).c_str(), _fixed(r.totalIops, 1).c_str(),
               _fixed(r.readMBps, 2).c_str(), _fixed(r.writeMBps, 2).c_str(),
               _fixed(r.totalMBps, 2).c_str(), _fixed(r.serviceMs, 2).c_str(),
               _fixed(r.busyPercent, 1).c_str(), _fixed(r.cacheHitPercent, 1).c_str());
    }
    printf("\n");
    fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    Options o;
    bool passwordStdin = false;
    for (int i = 1; i < argc; ++i)
    {
        std::string arg = argv[i];
        auto value = [&]() -> std::string
        {
            if (i + 1 >= argc)
            {
                fprintf(stderr, "orv-stat: %s needs a value\n%s", arg.c_str(), USAGE);
                exit(2);
            }
            return argv[++i];
        };
        if (arg == "--url")
        {
            if (!parseServerUrl(value(), o.server))
            {
                fprintf(stderr, "orv-stat: unusable URL %s\n", argv[i]);
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
        else if (arg == "--type")
            o.type = value();
        else if (arg == "--interval")
            o.interval = std::atof(value().c_str());
        else if (arg == "--count")
            o.count = std::atol(value().c_str());
        else if (arg == "--top")
            o.top = static_cast<size_t>(std::atol(value().c_str()));
        else if (arg == "--sort")
            o.sort = value();
        else if (arg == "--json")
            o.format = "json";
        else if (arg == "--csv")
            o.format = "csv";
        else if (arg == "--help" || arg == "-h")
        {
            printf("%s", USAGE);
            return 0;
        }
        else
        {
            fprintf(stderr, "orv-stat: unknown option %s\n%s", arg.c_str(), USAGE);
            return 2;
        }
    }
    const std::vector<uint16_t> types = elementTypesNamed(o.type);
    if (types.empty() || o.interval <= 0 || o.count == 0 ||
        (o.sort != "iops" && o.sort != "mbps" && o.sort != "latency" && o.sort != "busy"))
    {
        fprintf(stderr, "%s", USAGE);
        return 2;
    }
    if (passwordStdin && !std::getline(std::cin, o.password))
    {
        fprintf(stderr, "orv-stat: no password on stdin\n");
        return 2;
    }

    const std::string where =
        o.server.scheme + "://" + o.server.host + ":" + std::to_string(o.server.port);
    CIMClient client;
    client.setTimeout(static_cast<Uint32>(std::max(10.0, o.interval * 5) * 1000));
    StatSampler sampler(client, CIMNamespaceName(o.nameSpace.c_str()), types);
    bool connected = false;
    auto connect = [&]()
    {
        if (connected)
        {
            return;
        }
        if (o.server.scheme == "https" && o.caCert.empty())
        {
            fprintf(stderr, "orv-stat: no --cacert: the server's certificate is not verified\n");
        }
        connectClient(client, o.server, o.user, o.password, o.caCert);
        connected = true;
    };

    bool first = true;
    bool failed = false;
    bool havePrevious = false;
    bool csvHeader = false;
    Sample previous;
    long reports = 0;
    while (o.count < 0 || reports < o.count)
    {
        auto started = std::chrono::steady_clock::now();
        try
        {
            connect();
            const bool chatty = first;
            Sample sample = sampler.take(
                [&](const std::string& step)
                {
                    if (chatty)
                    {
                        fprintf(stderr, "orv-stat: %s: %s\n", where.c_str(), step.c_str());
                    }
                });
            first = false;
            if (sampler.rejectedRecords() != 0 && !havePrevious)
            {
                fprintf(stderr, "orv-stat: %zu records did not match their manifest\n",
                        sampler.rejectedRecords());
            }
            if (havePrevious)
            {
                RateResult result = computeRates(previous, sample);
                _print(o, result, csvHeader);
                ++reports;
            }
            previous = sample;
            havePrevious = true;
        }
        catch (const CIMClientHTTPErrorException& e)
        {
            fprintf(stderr, "orv-stat: %s refused the request: %s\n", where.c_str(),
                    (const char*)e.getMessage().getCString());
            if (e.getCode() == 401 || e.getCode() == 403)
            {
                return 3; // waiting will not change the credentials
            }
            failed = true;
            ++reports;
        }
        catch (const CIMException& e)
        {
            fprintf(stderr, "orv-stat: %s: CIM error %d: %s\n", where.c_str(), int(e.getCode()),
                    (const char*)e.getMessage().getCString());
            failed = true;
            ++reports;
        }
        catch (const Exception& e)
        {
            // Connection refused, timed out or cut: say so and try again at
            // the next interval, until --count intervals have passed.
            fprintf(stderr, "orv-stat: %s is not answering: %s\n", where.c_str(),
                    (const char*)e.getMessage().getCString());
            failed = true;
            ++reports;
            client.disconnect();
            connected = false;
        }
        if (o.count >= 0 && reports >= o.count)
        {
            break;
        }
        std::this_thread::sleep_until(started + std::chrono::duration<double>(o.interval));
    }
    return failed ? 1 : 0;
}
