#include "platform/linux/IdleResidency.h"

#include <unistd.h>

#include <algorithm>
#include <utility>

namespace vostel {

namespace {

constexpr int mostTiles = 4;
constexpr int mostGts = 8;

bool isThere(const std::string& path) {
    return access(path.c_str(), F_OK) == 0;
}

}  // namespace

IdleResidency::IdleResidency(const DrmCard& card) {
    const auto add = [this](const std::string& folder, const char* counter) {
        const std::string path = folder + counter;
        if (isThere(path) && readAttribute(folder + "/rc6_enable") != "0") {
            gts.push_back({.path = path, .idle = {}});
        }
    };
    for (int gt = 0; gt < mostGts; ++gt) {
        add(card.path + "/gt/gt" + std::to_string(gt), "/rc6_residency_ms");
    }
    if (gts.empty()) {
        add(card.path + "/power", "/rc6_residency_ms");
    }
    for (int tile = 0; tile < mostTiles; ++tile) {
        const std::string folder = card.device() + "/tile" + std::to_string(tile);
        for (int gt = 0; gt < mostGts && isThere(folder); ++gt) {
            add(folder + "/gt" + std::to_string(gt) + "/gtidle", "/idle_residency_ms");
        }
    }
}

std::optional<double> IdleResidency::read(double now, double longestGap) {
    if (!gts.empty() && gts.front().idle && now - lastAt >= 0 && now - lastAt < shortestSpan) {
        return lastBusy;
    }
    const double elapsed = (now - std::exchange(lastAt, now)) * 1000;
    bool whole = elapsed > 0 && elapsed <= longestGap * 1000;
    double least = elapsed;
    for (Gt& gt : gts) {
        std::optional<double> idle;
        if (double value = 0; readAttribute(gt.path, value)) {
            idle = value;
        }
        const std::optional<double> before = std::exchange(gt.idle, idle);
        if (idle && before && *idle >= *before) {
            least = std::min(least, *idle - *before);
        } else {
            whole = false;
        }
    }
    lastBusy.reset();
    if (!whole || gts.empty()) {
        return std::nullopt;
    }
    off += least;
    on += elapsed - least;
    return lastBusy = 1 - least / elapsed;
}

void IdleResidency::forget() {
    for (Gt& gt : gts) {
        gt.idle.reset();
    }
    lastBusy.reset();
}

std::vector<GPUResidencyChannel> IdleResidency::channels() const {
    return {{.name = "GPUPH",
             .states = {{.name = "OFF", .residency = off}, {.name = "ON", .residency = on}}}};
}

}  // namespace vostel
