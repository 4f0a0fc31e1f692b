#ifndef ORV_HOST_STATEPATHS_H
#define ORV_HOST_STATEPATHS_H

#include <string>

namespace orvhost
{

/// Directory of the running executable.
std::string executableDir();

/// Where the server keeps its users file and generated certificate:
/// $ORV_CIMSERVER_STATE_DIR, else <exe dir>/../var/orv-cimserver. The second
/// works alike for the build tree (<build>/var/...) and an install
/// (<prefix>/var/...), so neither command needs options to agree on it.
std::string defaultStateDir();

/// Creates the directory and its parents (mode 0700 for the last).
void ensureDirectory(const std::string& path);

std::string defaultUsersFile();

} // namespace orvhost

#endif
