#include "monitors/gpu/GPUModule.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

#include "core/GlobalSettings.h"
#include "core/History.h"
#include "core/SourceText.h"
#include "monitors/gpu/GPUMonitor.h"
#include "monitors/gpu/GPUPopover.h"
#include "monitors/process/PrintableText.h"
#include "platform/Platform.h"
#include "render/BarImage.h"

namespace vostel {

namespace {

constexpr std::size_t longestName = 64;    // characters
constexpr double shortestInterval = 0.25;  // seconds

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
    // The sources judge a gap by the interval. After a change of it the gap was still waited for
    // under the old one; and the second reading comes before that.
    longerInterval =
        std::max({effInterval(), std::exchange(lastInterval, effInterval()), shortestInterval});
    const auto reading =
        reader.tick({context.platform.clock->seconds(), longerInterval, isLookedAt});
    const auto sample = reading ? measure(*reading) : std::nullopt;
    lastStats = sample ? sample->stats : lastStats;
    appendCapped(history, lastStats.utilization, historyCap);
    if (reading) {
        showCards(*reading, sample);
        measured =
            measured || std::ranges::all_of(reading->accelerators, &GPUAccelerator::measured);
    }
    model.measured = hasFigure();
    model.problem = errorSentence(problem());
    model.history = history;
    model.stats = lastStats;
    if (reading) {
        showTopApps(*reading, sample.value_or(GPUSample()));
    }
    // An idle GPU does not cost an image four times a second.
    const std::tuple shown(lastStats.utilization, model.state.value(), measured);
    if (drawn != shown) {
        drawn = shown;
        render();
    }
}

bool GPUModule::hasFigure() const {
    const GPUState state = model.state.value();
    return measured && (state == GPUState::awake || state == GPUState::asleep);
}

// Why there is no figure, when a source tells.
std::string GPUModule::problem() const {
    const GPUState state = model.state.value();
    if (state == GPUState::unknown || state == GPUState::absent) {
        for (const auto& source : context.platform.gpu) {
            if (std::string error = source->health.error(); !error.empty()) {
                return error;
            }
        }
    }
    return {};
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
        model.ratesKnown = false;
        return;
    }
    // After a longer gap a rate would be that of a time nobody waited for.
    if (appRates.previousAt && reading.at - *appRates.previousAt > 3 * longerInterval) {
        appRates.reset();
    }
    model.ratesKnown = appRates.previousAt && reading.at > *appRates.previousAt;
    names.show(topApps(appRates.rates(sample.apps, reading.at), sample.apps, appLimit));
}

void GPUModule::detailPopoverWillShow() {
    isLookedAt = true;
    tick();
    readSoon();
}

void GPUModule::detailPopoverDidClose() {
    isLookedAt = false;
    appRates.reset();
    names.clear();
    model.ratesKnown = false;
    model.topApps = QList<ProcStat>();
}

void GPUModule::willStop() {
    detailPopoverDidClose();
    reader.stop();
    drawn.reset();
    measured = false;
}

std::optional<StatusImage> GPUModule::menubarImage(const ImageContext& imageContext) {
    const GPUState state = model.state.value();
    const BarImage image{.fraction = lastStats.utilization,
                         .known = hasFigure(),
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
    if (const std::string error = problem(); !error.empty() || !measured) {
        return noValueText(QStringLiteral("GPU"), error);
    }
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
    const auto figure = [this](double value) { return hasFigure() ? value : QVariant(); };
    return {{QStringLiteral("utilization"), figure(lastStats.utilization)},
            {QStringLiteral("renderer"), figure(lastStats.renderer)},
            {QStringLiteral("tiler"), figure(lastStats.tiler)},
            {QStringLiteral("inUseBytes"), figure(lastStats.inUseBytes)},
            {QStringLiteral("state"), valueText()}};
}

std::unique_ptr<Popover> GPUModule::makePopover() {
    return std::make_unique<GPUPopover>(model, settings, [this] { openSettingsPanel(); });
}

}  // namespace vostel
