#include "platform/open/commif/SocketPath.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace {

constexpr char kSocketVariable[] = "QUADPLAYER_LINK"; // set where both sides agree on a path
constexpr char kSocketName[] = "/quadplayer-commif.sock";
constexpr char kPrivateFolder[] = "/tmp/quadplayer-";
constexpr mode_t kOwnerOnly = 0700;
constexpr mode_t kOthers = 0077;

// Null if it is not set or empty.
const char* variable(const char* name)
{
    const char* value = std::getenv(name); // NOLINT(concurrency-mt-unsafe)
    return value && *value ? value : nullptr;
}

// Another user may have made the folder first: use it only if it is ours, closed and no link.
bool isPrivate(const std::string& folder)
{
    struct stat info = {};
    return lstat(folder.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == geteuid() &&
           (info.st_mode & kOthers) == 0;
}

} // namespace

std::string commSocketPath()
{
    if (const char* path = variable(kSocketVariable))
        return path;
    if (const char* runtime = variable("XDG_RUNTIME_DIR"))
        return std::string(runtime) + kSocketName;
    const std::string folder = kPrivateFolder + std::to_string(geteuid());
    mkdir(folder.c_str(), kOwnerOnly);
    return isPrivate(folder) ? folder + kSocketName : std::string();
}
