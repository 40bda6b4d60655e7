#include "monitors/gpu/GPUModule.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

#include "core/GlobalSettings.h"
#include "core/History.h"
#include "monitors/gpu/GPUMonitor.h"
#include "monitors/gpu/GPUPopover.h"
#include "monitors/process/PrintableText.h"
#include "platform/Platform.h"
#include "render/BarImage.h"

namespace vostel {

namespace {

constexpr std::size_t longestName = 64;  // characters

QString printable(const std::string& text) {
    return QString::fromStdString(printableText(text, longestName));
}

// The `limit` processes with the highest rates, highest first; equals by ascending id.
QList<ProcStat> topApps(const std::map<int, double>& rates,
                        const std::map<int, GPUClientUsage>& apps, int limit) {
    QList<ProcStat> list;
    for (const auto& [pid, rate] : rates) {
        list.append({pid, QString::fromStdString(apps.at(pid).name), {}, rate});
    }
    std::ranges::stable_sort(list, std::ranges::greater(), &ProcStat::value);
    list.resize(std::min<qsizetype>(list.size(), limit));
    return list;
}

}  // namespace

GPUModule::GPUModule(AppContext& appContext, GPUSettings& gpuSettings, ProcessSampler& processes,
                     GPUSampler& sampler)
    : ItemModule(appContext,
                 {QStringLiteral("gpu"), QStringLiteral("GPU"), QStringLiteral("GPU usage")},
                 gpuSettings),
      settings(gpuSettings),
      reader(sampler),
      names(processes, [this](QList<ProcStat> list) { model.topApps = std::move(list); }) {}

void GPUModule::tick() {
    // After a change of the interval the gap was still waited for under the old one.
    longerInterval = std::max(effInterval(), std::exchange(lastInterval, effInterval()));
    const auto reading =
        reader.tick({context.platform.clock->seconds(), longerInterval, isLookedAt});
    const auto sample = reading ? measure(*reading) : std::nullopt;
    lastStats = sample ? sample->stats : lastStats;
    appendCapped(history, lastStats.utilization, historyCap);
    model.history = history;
    model.stats = lastStats;
    if (reading) {
        showCards(*reading, sample);
        showTopApps(*reading, sample.value_or(GPUSample()));
    }
    // An idle GPU does not cost an image four times a second.
    const std::pair shown(lastStats.utilization, model.state.value());
    if (drawn != shown) {
        drawn = shown;
        render();
    }
}

std::optional<GPUSample> GPUModule::measure(const GPUReading& reading) {
    auto sample = GPUMonitor::sampleIORegistry(reading.accelerators);
    if (sample) {
        const auto busy = report.sample(reading.accelerators, sample->accelerator);
        sample->stats.utilization = busy.value_or(sample->stats.utilization);
    }
    return sample;
}

void GPUModule::showCards(const GPUReading& reading, const std::optional<GPUSample>& sample) {
    QList<GPUCard> cards;
    for (const GPUAccelerator& accelerator : reading.accelerators) {
        const std::span<const GPUAccelerator> one(&accelerator, 1);
        GPUCard card{.name = printable(accelerator.name), .state = gpuState(one)};
        card.shown = sample && accelerator.id == sample->accelerator;
        if (card.shown) {
            card.utilization = sample->stats.utilization;
        } else if (const auto own = GPUMonitor::sampleIORegistry(one)) {
            card.utilization = own->stats.utilization;
        }
        cards.append(std::move(card));
    }
    model.cards = std::move(cards);
    model.state = gpuState(reading.accelerators);
}

void GPUModule::showTopApps(const GPUReading& reading, const GPUSample& sample) {
    if (!reading.detailed || !isLookedAt) {
        appRates.reset();
        return;
    }
    // After a longer gap a rate would be that of a time nobody waited for.
    if (appRates.previousAt && reading.at - *appRates.previousAt > 3 * longerInterval) {
        appRates.reset();
    }
    names.show(topApps(appRates.rates(sample.apps, reading.at), sample.apps, appLimit));
}

void GPUModule::detailPopoverWillShow() {
    isLookedAt = true;
    tick();
}

void GPUModule::detailPopoverDidClose() {
    isLookedAt = false;
    appRates.reset();
    names.clear();
    model.topApps = QList<ProcStat>();
}

void GPUModule::willStop() {
    detailPopoverDidClose();
    reader.stop();
    drawn.reset();
}

std::optional<StatusImage> GPUModule::menubarImage(const ImageContext& imageContext) {
    const GPUState state = model.state.value();
    const BarImage image{.fraction = lastStats.utilization,
                         .label = settings.label(),
                         .labelSize = context.global.labelSize(),
                         .shortName = QStringLiteral("GPU"),
                         .instead = state == GPUState::awake    ? QString()
                                    : state == GPUState::asleep ? QStringLiteral("zz")
                                    : state == GPUState::absent ? QStringLiteral("–")
                                                                : QStringLiteral("?"),
                         .appearance = settings.effAppearance(imageContext.appearance)};
    return image.make(imageContext);
}

QString GPUModule::valueText() const {
    switch (model.state.value()) {
        case GPUState::awake:
            break;
        case GPUState::asleep:
            return QStringLiteral("GPU asleep");
        case GPUState::silent:
            return QStringLiteral("GPU not responding");
        case GPUState::unknown:
            return QStringLiteral("GPU load unknown");
        case GPUState::absent:
            return QStringLiteral("No GPU found");
    }
    return QStringLiteral("GPU %1 %").arg(std::lround(lastStats.utilization * 100));
}

QVariantMap GPUModule::statusValues() const {
    return {{QStringLiteral("utilization"), lastStats.utilization},
            {QStringLiteral("renderer"), lastStats.renderer},
            {QStringLiteral("tiler"), lastStats.tiler},
            {QStringLiteral("inUseBytes"), lastStats.inUseBytes},
            {QStringLiteral("state"), valueText()}};
}

std::unique_ptr<Popover> GPUModule::makePopover() {
    return std::make_unique<GPUPopover>(model, settings, [this] { openSettingsPanel(); });
}

}  // namespace vostel
