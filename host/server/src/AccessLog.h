#ifndef ORV_HOST_ACCESSLOG_H
#define ORV_HOST_ACCESSLOG_H

#include <cstdio>
#include <mutex>
#include <string>

namespace orvhost
{

/// One line per request: time, user, peer, operation, class, HTTP and CIM
/// status, duration. Fields never contain blanks, so the lines split simply.
class AccessLog
{
public:
    /// "-" writes to stderr, "" writes nothing.
    explicit AccessLog(const std::string& path);
    ~AccessLog();
    AccessLog(const AccessLog&) = delete;
    AccessLog& operator=(const AccessLog&) = delete;

    void record(const std::string& user, const std::string& peer, const std::string& operation,
                const std::string& className, int httpStatus, const std::string& cimStatus,
                double durationMs);

    static std::string formatLine(long long epochMs, const std::string& user,
                                  const std::string& peer, const std::string& operation,
                                  const std::string& className, int httpStatus,
                                  const std::string& cimStatus, double durationMs);

private:
    std::mutex _mutex;
    FILE* _file = nullptr;
    bool _own = false;
};

} // namespace orvhost

#endif
