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
    bool working = false;  // the thread has not ended
    bool stop = false;
};

void work(const std::shared_ptr<Desk>& desk) {
    std::unique_lock lock(desk->mutex);
    for (;;) {
        const bool wanted = desk->changed.wait_for(
            lock, GPUSampler::unusedFor, [&] { return desk->stop || desk->request.has_value(); });
        if (desk->stop || !wanted) {
            desk->request.reset();
            desk->working = false;
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

    void tick(const GPURequest& request) {
        std::unique_lock lock(desk->mutex);
        if (desk->finished) {
            take(std::move(*desk->finished));
            desk->finished.reset();
        }
        if (desk->request) {
            if (!stale && request.now - desk->request->now > answerLimit) {
                markStale();
            }
            return;
        }
        lock.unlock();
        const double since = asked ? request.now - asked->now : 0;
        if (asked && since >= 0 && since < together && (asked->detailed || !request.detailed)) {
            return;
        }
        asked = request;
        if (desk->source->isSlow(request)) {
            post(request);
        } else {
            take(desk->source->read(request));
        }
    }

    // Whether there is an answer, or word that there is none, for who began at `begun`.
    bool hasAnswered(double begun) const { return stale || (changes > 0 && latest.at >= begun); }

    GPUReading latest;
    std::uint64_t changes = 0;
    bool stale = false;  // the reading under way takes longer than it may

  private:
    void take(GPUReading reading) {
        latest = std::move(reading);
        stale = false;
        ++changes;
    }

    void post(const GPURequest& request) {
        std::unique_lock lock(desk->mutex);
        desk->request = request;
        if (desk->working) {
            desk->changed.notify_all();
            return;
        }
        lock.unlock();
        if (thread.joinable()) {
            thread.join();  // it has ended
        }
        desk->working = true;
        try {
            thread = std::thread(work, desk);
        } catch (const std::system_error&) {
            desk->working = false;
            desk->request.reset();  // no thread to be had now; the next tick tries again
        }
    }

    void markStale() {
        stale = true;
        ++changes;
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
    std::optional<GPURequest> asked;  // the last
};

GPUSampler::GPUSampler(std::vector<std::shared_ptr<GPUSource>> sources) {
    for (auto& source : sources) {
        lanes.push_back(std::make_unique<Lane>(std::move(source)));
    }
}

GPUSampler::~GPUSampler() = default;

std::uint64_t GPUSampler::changes() const {
    std::uint64_t sum = 0;
    for (const auto& lane : lanes) {
        sum += lane->changes;
    }
    return sum;
}

GPUSampler::Reader::Reader(GPUSampler& shared) : sampler(shared) {
    sampler.readers.push_back(this);
}

GPUSampler::Reader::~Reader() {
    std::erase(sampler.readers, this);
}

void GPUSampler::Reader::stop() {
    begun.reset();
    seen = 0;
    looks = false;
}

std::optional<GPUReading> GPUSampler::Reader::tick(const GPURequest& request) {
    looks = request.detailed;
    begun = begun.value_or(request.now - together);
    GPURequest asked = request;
    asked.detailed = std::ranges::any_of(sampler.readers, &Reader::looks);
    const auto& lanes = sampler.lanes;
    for (const auto& lane : lanes) {
        lane->tick(asked);
    }
    const bool answered =
        std::ranges::all_of(lanes, [this](const auto& lane) { return lane->hasAnswered(*begun); });
    if (!answered || (!lanes.empty() && seen == sampler.changes())) {
        return std::nullopt;
    }
    seen = sampler.changes();
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
