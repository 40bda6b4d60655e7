#include "monitors/gpu/GPUSampler.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace vostel {

namespace {

// How long the end of the program waits for a reading under way. A reading takes milliseconds.
constexpr std::chrono::milliseconds farewell(200);

// What the thread of a slow source touches. Shared, so that a thread that hangs can be left behind.
struct Desk {
    explicit Desk(std::shared_ptr<GPUSource> theSource) : source(std::move(theSource)) {}

    std::shared_ptr<GPUSource> source;  // used by the thread only while `request` is set
    std::mutex mutex;
    std::condition_variable changed;
    std::optional<GPURequest> request;  // set: the thread works
    std::optional<GPUReading> finished;
    bool stop = false;
};

void work(const std::shared_ptr<Desk>& desk) {
    std::unique_lock lock(desk->mutex);
    for (;;) {
        desk->changed.wait(lock, [&] { return desk->stop || desk->request.has_value(); });
        if (desk->stop) {
            desk->request.reset();
            desk->changed.notify_all();
            return;
        }
        const GPURequest request = *desk->request;
        lock.unlock();
        GPUReading reading = desk->source->read(request);
        lock.lock();
        desk->finished = std::move(reading);
        desk->request.reset();
    }
}

}  // namespace

class GPUSampler::Lane {
  public:
    explicit Lane(std::shared_ptr<GPUSource> source)
        : desk(std::make_shared<Desk>(std::move(source))) {}

    ~Lane() {
        if (!thread.joinable()) {
            return;
        }
        std::unique_lock lock(desk->mutex);
        desk->stop = true;
        desk->changed.notify_all();
        const bool ended =
            desk->changed.wait_for(lock, stale ? std::chrono::milliseconds(0) : farewell,
                                   [&] { return !desk->request.has_value(); });
        lock.unlock();
        if (ended) {
            thread.join();
        } else {
            thread.detach();
        }
    }

    // Whether `latest` changed.
    bool tick(const GPURequest& request) {
        std::unique_lock lock(desk->mutex);
        bool fresh = false;
        if (desk->finished) {
            latest = std::move(*desk->finished);
            desk->finished.reset();
            stale = false;
            fresh = true;
        }
        if (desk->request) {
            if (!stale && request.now - desk->request->now > answerLimit) {
                markStale();
                fresh = true;
            }
            return fresh;
        }
        lock.unlock();
        if (desk->source->isSlow(request)) {
            post(request);
            return fresh;
        }
        latest = desk->source->read(request);
        return true;
    }

    GPUReading latest;
    bool stale = false;  // the reading under way takes longer than it may

  private:
    void post(const GPURequest& request) {
        {
            const std::lock_guard lock(desk->mutex);
            desk->request = request;
        }
        if (thread.joinable()) {
            desk->changed.notify_all();
            return;
        }
        try {
            thread = std::thread(work, desk);
        } catch (const std::system_error&) {
            desk->request.reset();  // no thread to be had now; the next tick tries again
        }
    }

    void markStale() {
        stale = true;
        if (latest.accelerators.empty()) {
            latest.accelerators.emplace_back().name = "GPU";
        }
        for (GPUAccelerator& accelerator : latest.accelerators) {
            accelerator.stale = !accelerator.asleep;
            if (accelerator.stale) {
                accelerator.statistics.reset();
                accelerator.residency.clear();
            }
        }
    }

    std::shared_ptr<Desk> desk;
    std::thread thread;
};

GPUSampler::GPUSampler(std::vector<std::shared_ptr<GPUSource>> sources) {
    for (auto& source : sources) {
        lanes.push_back(std::make_unique<Lane>(std::move(source)));
    }
}

GPUSampler::~GPUSampler() = default;

std::optional<GPUReading> GPUSampler::tick(const GPURequest& request) {
    bool fresh = lanes.empty();
    for (const auto& lane : lanes) {
        fresh = lane->tick(request) || fresh;
    }
    if (!fresh) {
        return std::nullopt;
    }
    GPUReading all{.at = lanes.empty() ? request.now : 0, .detailed = true, .accelerators = {}};
    for (const auto& lane : lanes) {
        const auto& part = lane->latest;
        all.at = std::max(all.at, part.at);
        all.detailed = all.detailed && (part.detailed || lane->stale || part.accelerators.empty());
        all.accelerators.insert(all.accelerators.end(), part.accelerators.begin(),
                                part.accelerators.end());
    }
    const auto rank = [](const GPUAccelerator& accelerator) {
        return accelerator.stale ? 2 : accelerator.asleep ? 1 : 0;
    };
    std::ranges::stable_sort(all.accelerators, {}, rank);
    return all;
}

}  // namespace vostel
