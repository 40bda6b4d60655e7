#include "monitors/gpu/GPUReport.h"

#include <algorithm>
#include <cmath>

namespace vostel {

namespace {

const GPUResidencyChannel* performanceStates(std::span<const GPUResidencyChannel> channels) {
    const auto found =
        std::ranges::find(channels, std::string_view("GPUPH"), &GPUResidencyChannel::name);
    return found == channels.end() ? nullptr : &*found;
}

// A state that was not there before, or that went back, gained nothing.
double gained(const GPUResidencyState& state, const GPUResidencyChannel& before) {
    const auto old = std::ranges::find(before.states, state.name, &GPUResidencyState::name);
    const double gain = old == before.states.end() ? 0 : state.residency - old->residency;
    return std::isfinite(gain) ? std::max(0.0, gain) : 0;
}

std::optional<double> busyFraction(std::span<const GPUResidencyChannel> now,
                                   std::span<const GPUResidencyChannel> before) {
    const GPUResidencyChannel* channel = performanceStates(now);
    const GPUResidencyChannel* old = performanceStates(before);
    if (channel == nullptr || old == nullptr || channel->states.empty()) {
        return std::nullopt;
    }
    double total = 0;
    double off = 0;
    for (const GPUResidencyState& state : channel->states) {
        const double gain = gained(state, *old);
        total += gain;
        if (state.name == "OFF") {
            off += gain;
        }
    }
    return total < 1 ? 0 : std::clamp((total - off) / total, 0.0, 1.0);
}

}  // namespace

std::optional<double> GPUReport::sample(std::span<const GPUAccelerator> accelerators,
                                        const std::string& id) {
    std::optional<double> result;
    std::map<std::string, std::vector<GPUResidencyChannel>> current;
    for (const GPUAccelerator& accelerator : accelerators) {
        if (accelerator.id == id) {
            if (const auto old = previous.find(id); old != previous.end()) {
                result = busyFraction(accelerator.residency, old->second);
            }
        }
        current[accelerator.id] = accelerator.residency;
    }
    previous = std::move(current);
    return result;
}

}  // namespace vostel
