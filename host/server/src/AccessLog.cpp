#include "AccessLog.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <stdexcept>

namespace orvhost
{

namespace
{
// Client-supplied texts (user names, class names) must not break the line
// format or smuggle fake lines into the log.
std::string _field(const std::string& text)
{
    if (text.empty())
    {
        return "-";
    }
    std::string out;
    for (unsigned char c : text.substr(0, 128))
    {
        out.push_back((c <= ' ' || c == 0x7f) ? '_' : static_cast<char>(c));
    }
    return out;
}
} // namespace

AccessLog::AccessLog(const std::string& path)
{
    if (path == "-")
    {
        _file = stderr;
    }
    else if (!path.empty())
    {
        _file = fopen(path.c_str(), "a");
        if (_file == nullptr)
        {
            throw std::runtime_error("cannot open access log " + path + ": " + strerror(errno));
        }
        _own = true;
    }
}

AccessLog::~AccessLog()
{
    if (_own)
    {
        fclose(_file);
    }
}

std::string AccessLog::formatLine(long long epochMs, const std::string& user,
                                  const std::string& peer, const std::string& operation,
                                  const std::string& className, int httpStatus,
                                  const std::string& cimStatus, double durationMs)
{
    time_t secs = static_cast<time_t>(epochMs / 1000);
    struct tm tmv;
    gmtime_r(&secs, &tmv);
    char stamp[64];
    strftime(stamp, sizeof(stamp), "%Y-%m-%dT%H:%M:%S", &tmv);
    char line[1024];
    snprintf(line, sizeof(line), "%s.%03dZ user=%s peer=%s op=%s class=%s http=%d cim=%s ms=%.1f",
             stamp, static_cast<int>(epochMs % 1000), _field(user).c_str(), _field(peer).c_str(),
             _field(operation).c_str(), _field(className).c_str(), httpStatus,
             _field(cimStatus).c_str(), durationMs);
    return line;
}

void AccessLog::record(const std::string& user, const std::string& peer,
                       const std::string& operation, const std::string& className, int httpStatus,
                       const std::string& cimStatus, double durationMs)
{
    if (_file == nullptr)
    {
        return;
    }
    long long now = std::chrono::duration_cast<std::chrono::milliseconds>(
                        std::chrono::system_clock::now().time_since_epoch())
                        .count();
    std::string line =
        formatLine(now, user, peer, operation, className, httpStatus, cimStatus, durationMs);
    std::lock_guard<std::mutex> lock(_mutex);
    fprintf(_file, "%s\n", line.c_str());
    fflush(_file);
}

} // namespace orvhost
