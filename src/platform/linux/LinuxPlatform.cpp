#include <utility>

#include "platform/Platform.h"
#include "platform/linux/DrmGPUSource.h"
#include "platform/linux/LinuxClock.h"
#include "platform/linux/MeminfoSource.h"
#include "platform/linux/NetlinkSource.h"
#include "platform/linux/NvidiaGPUSource.h"
#include "platform/linux/ProcProcessSource.h"
#include "platform/linux/ProcStatSource.h"

namespace vostel {

Platform makeLinuxPlatform(SystemRoots roots) {
    Platform platform;
    platform.clock = std::make_unique<LinuxClock>();
    platform.cpu = std::make_unique<ProcStatSource>(roots);
    platform.processes = std::make_unique<ProcProcessSource>(roots);
    platform.memory = std::make_unique<MeminfoSource>(roots);
    platform.gpu = {std::make_shared<DrmGPUSource>(roots),
                    std::make_shared<NvidiaGPUSource>(roots)};
    platform.network = std::make_unique<NetlinkSource>();
    platform.roots = std::move(roots);
    return platform;
}

}  // namespace vostel
