#include "DashboardServer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

using namespace orvdash;

namespace
{

std::string _file(const std::string& relative)
{
    std::ifstream in(std::string(ORV_DASHBOARD_WEB_DIR) + "/" + relative, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// One HTTP/1.0 exchange with the server on loopback; the whole answer.
std::string _get(unsigned port, const std::string& path, const std::string& headers = "")
{
    int fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0)
    {
        close(fd);
        return "";
    }
    const std::string request = "GET " + path + " HTTP/1.0\r\nHost: x\r\n" + headers + "\r\n";
    if (write(fd, request.data(), request.size()) != static_cast<ssize_t>(request.size()))
    {
        close(fd);
        return "";
    }
    std::string answer;
    char buffer[4096];
    ssize_t n;
    while ((n = read(fd, buffer, sizeof(buffer))) > 0)
    {
        answer.append(buffer, static_cast<size_t>(n));
    }
    close(fd);
    return answer;
}

// The status code of an HTTP answer.
std::string _status(const std::string& answer)
{
    return answer.size() > 12 && answer.compare(0, 5, "HTTP/") == 0 ? answer.substr(9, 3) : "";
}

} // namespace

TEST(DashboardServer, Routes)
{
    RateWindow window(60, 2);
    orvstat::RateResult result;
    orvstat::ElementRates r;
    r.id = "v1";
    r.elementType = 8;
    r.totalIops = 5;
    result.rates = {r};
    window.add(10, result);
    struct Case
    {
        const char* path;
        const char* type;
        const char* sort;
        const char* top;
        unsigned status;
        const char* contentType;
    } cases[] = {
        {"/api/rates", "volume", nullptr, nullptr, 200, "application/json"},
        {"/api/rates", "lun", "latency", "500", 200, "application/json"},
        {"/api/rates", nullptr, nullptr, nullptr, 400, "application/json"},
        {"/api/rates", "volumes", nullptr, nullptr, 400, "application/json"},
        {"/api/rates", "volume", "name", nullptr, 400, "application/json"},
        {"/api/rates", "volume", "iops", "0", 400, "application/json"},
        {"/api/rates", "volume", "iops", "501", 400, "application/json"},
        {"/api/rates", "volume", "iops", "10x", 400, "application/json"},
        {"/api/rates", "volume", "iops", "", 400, "application/json"},
        {"/api/totals", nullptr, nullptr, nullptr, 200, "application/json"},
        {"/", nullptr, nullptr, nullptr, 200, "text/html; charset=utf-8"},
        {"/app.js", nullptr, nullptr, nullptr, 200, "text/javascript; charset=utf-8"},
        {"/uPlot.min.css", nullptr, nullptr, nullptr, 200, "text/css; charset=utf-8"},
        {"/index.htm", nullptr, nullptr, nullptr, 404, "application/json"},
        {"/../RateWindow.cpp", nullptr, nullptr, nullptr, 404, "application/json"},
    };
    for (const Case& c : cases)
    {
        const Reply reply = route(window, c.path, c.type, c.sort, c.top);
        const std::string what = std::string(c.path) + "?type=" + (c.type ? c.type : "-") +
                                 "&sort=" + (c.sort ? c.sort : "-") +
                                 "&top=" + (c.top ? c.top : "-");
        EXPECT_EQ(reply.status, c.status) << what;
        EXPECT_EQ(reply.contentType, c.contentType) << what;
        if (!reply.data)
        {
            EXPECT_NO_THROW(nlohmann::json::parse(reply.body)) << what;
        }
    }
    EXPECT_EQ(nlohmann::json::parse(
                  route(window, "/api/rates", "volume", nullptr, nullptr).body)["rows"][0]["id"],
              "v1");
}

TEST(DashboardServer, ServesTheFilesAsCheckedIn)
{
    RateWindow window(60, 2);
    const std::pair<const char*, const char*> files[] = {
        {"/", "index.html"},
        {"/app.js", "app.js"},
        {"/style.css", "style.css"},
        {"/uPlot.iife.min.js", "uplot/dist/uPlot.iife.min.js"},
        {"/uPlot.min.css", "uplot/dist/uPlot.min.css"},
        {"/uPlot-LICENSE.txt", "uplot/LICENSE"},
    };
    for (const auto& f : files)
    {
        const Reply reply = route(window, f.first, nullptr, nullptr, nullptr);
        ASSERT_NE(reply.data, nullptr) << f.first;
        const std::string expected = _file(f.second);
        ASSERT_FALSE(expected.empty()) << f.second;
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(reply.data), reply.size), expected)
            << f.first;
    }
}

TEST(DashboardServer, BasicCredentials)
{
    struct Case
    {
        const char* header;
        bool matches;
    } cases[] = {
        {"Basic YWRtaW46czNjcjN0", true},      // admin:s3cr3t
        {"basic  YWRtaW46czNjcjN0 ", true},    // scheme in any case, spaces around
        {"Basic YWRtaW46czNjcjN1", false},     // admin:s3cr3u
        {"Basic YWRtaW46czNjcjN0eA==", false}, // admin:s3cr3tx
        {"Basic YWRtaW46", false},             // admin:
        {"Basic cm9vdDpzM2NyM3Q=", false},     // root:s3cr3t
        {"Basic YWRtaW4=", false},             // admin, no colon
        {"Basic YWRtaW46czNjcjN0!", false},    // not base64
        {"Basic YWRtaW46czNjcjN", false},      // cut short
        {"Bearer YWRtaW46czNjcjN0", false},
        {"", false},
        {nullptr, false},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(basicAuthMatches(c.header, "admin", "s3cr3t"), c.matches)
            << (c.header ? c.header : "(none)");
    }
    // A password holding colons: only the first colon ends the user name.
    EXPECT_TRUE(basicAuthMatches("Basic dTphOmI6Yw==", "u", "a:b:c"));
}

TEST(DashboardServer, ListenAddresses)
{
    struct Case
    {
        const char* text;
        bool ok;
        int family;
        unsigned port;
    } cases[] = {
        {"127.0.0.1:8080", true, AF_INET, 8080},
        {"localhost:0", true, AF_INET, 0},
        {"0.0.0.0:80", true, AF_INET, 80},
        {"[::1]:8443", true, AF_INET6, 8443},
        {"127.0.0.1", false, 0, 0},
        {"127.0.0.1:", false, 0, 0},
        {"127.0.0.1:65536", false, 0, 0},
        {"127.0.0.1:-1", false, 0, 0},
        {"127.0.0.1:80x", false, 0, 0},
        {"example.com:80", false, 0, 0},
        {"[::1:80", false, 0, 0},
    };
    for (const Case& c : cases)
    {
        sockaddr_storage address;
        ASSERT_EQ(parseListen(c.text, address), c.ok) << c.text;
        if (!c.ok)
        {
            continue;
        }
        EXPECT_EQ(address.ss_family, c.family) << c.text;
        const uint16_t port = c.family == AF_INET
                                  ? reinterpret_cast<sockaddr_in*>(&address)->sin_port
                                  : reinterpret_cast<sockaddr_in6*>(&address)->sin6_port;
        EXPECT_EQ(ntohs(port), c.port) << c.text;
    }
}

TEST(DashboardServer, OverHttpWithAndWithoutPageCredentials)
{
    RateWindow window(60, 2);
    ServerConfig open;
    open.listen = "127.0.0.1:0";
    ServerConfig locked = open;
    locked.pageUser = "admin";
    locked.pagePassword = "s3cr3t";

    DashboardServer openServer(window, open);
    DashboardServer lockedServer(window, locked);
    std::string error;
    ASSERT_TRUE(openServer.start(error)) << error;
    ASSERT_TRUE(lockedServer.start(error)) << error;
    ASSERT_NE(openServer.port(), 0u);

    const std::string page = _get(openServer.port(), "/");
    EXPECT_EQ(_status(page), "200") << page.substr(0, 80);
    EXPECT_NE(page.find("Content-Security-Policy: default-src 'self'"), std::string::npos);
    EXPECT_NE(page.find("<title>Array performance</title>"), std::string::npos);
    const std::string bad = _get(openServer.port(), "/api/rates?type=nothing&top=3");
    EXPECT_EQ(_status(bad), "400") << bad.substr(0, 80);

    const std::string denied = _get(lockedServer.port(), "/api/totals");
    EXPECT_EQ(_status(denied), "401") << denied.substr(0, 80);
    EXPECT_NE(denied.find("WWW-Authenticate: Basic realm=\"orv-dashboard\""), std::string::npos);
    const std::string wrong =
        _get(lockedServer.port(), "/api/totals", "Authorization: Basic YWRtaW46czNjcjN1\r\n");
    EXPECT_EQ(_status(wrong), "401") << wrong.substr(0, 80);
    const std::string allowed =
        _get(lockedServer.port(), "/api/totals", "Authorization: Basic YWRtaW46czNjcjN0\r\n");
    EXPECT_EQ(_status(allowed), "200") << allowed.substr(0, 80);
    EXPECT_NE(allowed.find("\"interval_s\":2.000"), std::string::npos);
}
