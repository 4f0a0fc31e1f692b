#include "StatePaths.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace orvhost
{

std::string executableDir()
{
    char buf[4096];
    ssize_t n = readlink("/proc/self/exe", buf, sizeof(buf) - 1);
    if (n <= 0)
    {
        return ".";
    }
    std::string path(buf, static_cast<size_t>(n));
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

std::string defaultStateDir()
{
    const char* env = getenv("ORV_CIMSERVER_STATE_DIR");
    if (env != nullptr && *env != '\0')
    {
        return env;
    }
    return executableDir() + "/../var/orv-cimserver";
}

std::string defaultUsersFile()
{
    return defaultStateDir() + "/users";
}

void ensureDirectory(const std::string& path)
{
    if (path.empty())
    {
        return;
    }
    for (size_t pos = 1; pos <= path.size(); ++pos)
    {
        if (pos == path.size() || path[pos] == '/')
        {
            std::string part = path.substr(0, pos);
            if (mkdir(part.c_str(), pos == path.size() ? 0700 : 0755) != 0 && errno != EEXIST)
            {
                throw std::runtime_error("cannot create directory " + part + ": " +
                                         strerror(errno));
            }
        }
    }
}

} // namespace orvhost
