#pragma once

#include <string>
#include <vector>

namespace vostel {

// Where the outside world begins. A test hands in a captured tree.
struct SystemRoots {
    std::string proc = "/proc";
    std::string sys = "/sys";
    std::string home;                   // $HOME
    std::vector<std::string> dataDirs;  // $XDG_DATA_HOME, then $XDG_DATA_DIRS, in order

    // The roots of this process, from its environment.
    static SystemRoots ofThisMachine();
};

}  // namespace vostel
