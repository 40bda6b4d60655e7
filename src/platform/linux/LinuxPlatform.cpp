#include <utility>

#include "platform/Platform.h"
#include "platform/linux/LinuxClock.h"
#include "platform/linux/NetlinkSource.h"
#include "platform/linux/ProcStatSource.h"

namespace vostel {

Platform makeLinuxPlatform(SystemRoots roots) {
    Platform platform;
    platform.clock = std::make_unique<LinuxClock>();
    platform.cpu = std::make_unique<ProcStatSource>(roots);
    platform.network = std::make_unique<NetlinkSource>();
    platform.roots = std::move(roots);
    return platform;
}

}  // namespace vostel
