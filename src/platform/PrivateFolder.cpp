#include "platform/PrivateFolder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace vostel {

bool isPrivateFolder(const std::string& path) {
    // With a slash at the end lstat() would follow a link.
    const std::size_t last = path.find_last_not_of('/');
    const std::string name = path.substr(0, last == std::string::npos ? 1 : last + 1);
    struct stat found{};
    return name.starts_with('/') && lstat(name.c_str(), &found) == 0 && S_ISDIR(found.st_mode) &&
           found.st_uid == geteuid() && (found.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

std::optional<std::string> makePrivateFolder(const std::string& path) {
    mkdir(path.c_str(), S_IRWXU);
    if (isPrivateFolder(path)) {
        return path;
    }
    std::string fresh = path + ".XXXXXX";
    return mkdtemp(fresh.data()) != nullptr ? std::optional(fresh) : std::nullopt;
}

}  // namespace vostel
