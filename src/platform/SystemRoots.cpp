#include "platform/SystemRoots.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

namespace vostel {

namespace {

std::string environment(const char* name, const std::string& fallback) {
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0' ? value : fallback;
}

}  // namespace

SystemRoots SystemRoots::ofThisMachine() {
    SystemRoots roots;
    const passwd* user = getpwuid(getuid());
    roots.home = environment("HOME", user != nullptr ? user->pw_dir : "/");
    roots.dataDirs.push_back(environment("XDG_DATA_HOME", roots.home + "/.local/share"));
    std::string rest = environment("XDG_DATA_DIRS", "/usr/local/share:/usr/share");
    for (std::size_t start = 0; start <= rest.size();) {
        std::size_t end = rest.find(':', start);
        if (end == std::string::npos) {
            end = rest.size();
        }
        if (end > start) {
            roots.dataDirs.push_back(rest.substr(start, end - start));
        }
        start = end + 1;
    }
    return roots;
}

}  // namespace vostel
