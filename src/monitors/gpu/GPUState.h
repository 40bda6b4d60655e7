#pragma once

#include <span>

#include "platform/GPUSource.h"

namespace vostel {

enum class GPUState {
    awake,    // at least one accelerator tells its figures
    asleep,   // all are powered down
    silent,   // none tells its figures, and at least one does not answer
    unknown,  // none tells its figures
    absent,   // there is no accelerator
};

// What a person is told of the accelerators as a whole, or of one.
GPUState gpuState(std::span<const GPUAccelerator> accelerators);

}  // namespace vostel
