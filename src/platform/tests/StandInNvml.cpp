// Two cards, 0000:01:00.0 and 0000:02:00.0. STAND_IN_OLD leaves out what came with later versions.
#include "platform/tests/StandInNvml.h"

#include <cstdio>
#include <cstring>
#include <thread>

namespace {

constexpr int notFound = 6;
constexpr int insufficientSize = 7;

StandInNvml state;
int cards[2];

int query() {
    ++state.queries;
    ++state.inside;
    while (state.hang) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    --state.inside;
    return state.sessions > 0 ? state.queryResult : 1;
}

struct Utilization {
    unsigned gpu, memory;
};
struct Memory {
    unsigned long long total, free, used;
};
struct Pci {
    char legacy[16];
    unsigned numbers[5];
    char bus[32];
};
struct Sample {
    unsigned pid;
    unsigned long long at;
    unsigned sm, memory, encoder, decoder;
};
struct Running {
    unsigned pid;
    unsigned long long memory;
    unsigned instance, compute;
};

}  // namespace

extern "C" {

StandInNvml* standIn() {
    return &state;
}

int nvmlInit_v2() {
    if (state.initResult == 0) {
        ++state.sessions;
    }
    return state.initResult;
}

int nvmlShutdown() {
    --state.sessions;
    return 0;
}

int nvmlDeviceGetCount_v2(unsigned* count) {
    *count = 2;
    return 0;
}

int nvmlDeviceGetHandleByIndex_v2(unsigned index, void** device) {
    *device = &cards[index];
    return query();
}

int nvmlDeviceGetPciInfo_v3(void* device, Pci* info) {
    std::snprintf(info->bus, sizeof info->bus, "00000000:%02X:00.0", device == cards ? 1 : 2);
    return query();
}

int nvmlDeviceGetUtilizationRates(void*, Utilization* rates) {
    rates->gpu = state.utilization;
    return query();
}

int nvmlDeviceGetMemoryInfo(void*, Memory* memory) {
    *memory = {state.total, state.total - state.used, state.used};
    return query();
}

#ifndef STAND_IN_OLD
int nvmlDeviceGetHandleByPciBusId_v2(const char* address, void** device) {
    *device = &cards[std::strcmp(address, "0000:01:00.0") == 0 ? 0 : 1];
    return query();
}

int nvmlDeviceGetName(void*, char* name, unsigned size) {
    std::snprintf(name, size, "NVIDIA Stand-In 9000");
    return query();
}

int nvmlDeviceGetProcessUtilization(void*, Sample* samples, unsigned* count,
                                    unsigned long long since) {
    unsigned newer = 0;
    for (unsigned i = 0; i < state.sampleCount; ++i) {
        newer += state.samples[i].at > since ? 1 : 0;
    }
    const unsigned room = *count;
    *count = newer;
    if (newer == 0) {
        return notFound;
    }
    if (samples == nullptr || newer > room) {
        return insufficientSize;
    }
    for (unsigned i = 0; i < state.sampleCount; ++i) {
        if (state.samples[i].at > since) {
            *samples++ = {
                state.samples[i].pid, state.samples[i].at, state.samples[i].percent, 0, 0, 0};
        }
    }
    return query();
}

int nvmlDeviceGetComputeRunningProcesses_v3(void*, unsigned* count, Running* running) {
    for (unsigned i = 0; i < state.runningCount; ++i) {
        running[i] = {state.running[i], 1, 0, 0};
    }
    *count = state.runningCount;
    return query();
}
#endif
}
