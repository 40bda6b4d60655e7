#pragma once

#include <memory>
#include <vector>

#include "platform/CPUSource.h"
#include "platform/Clock.h"
#include "platform/GPUSource.h"
#include "platform/MemorySource.h"
#include "platform/NetworkSource.h"
#include "platform/ProcessSource.h"
#include "platform/SystemRoots.h"

namespace vostel {

// Everything that the program reads from the machine, one small interface for each source.
struct Platform {
    SystemRoots roots;
    std::unique_ptr<Clock> clock;
    std::unique_ptr<CPUSource> cpu;
    std::unique_ptr<ProcessSource> processes;
    std::unique_ptr<MemorySource> memory;
    std::vector<std::shared_ptr<GPUSource>> gpu;  // shared with a thread that may hang
    std::unique_ptr<NetworkSource> network;
};

// The real sources. Nothing is opened before it is first asked for.
Platform makeLinuxPlatform(SystemRoots roots);

// Sources that know nothing: every reading is empty. Built on every machine, so that the
// interfaces stay free of one system's ideas.
Platform makeNullPlatform();

}  // namespace vostel
