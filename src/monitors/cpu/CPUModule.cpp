#include "monitors/cpu/CPUModule.h"

#include <algorithm>
#include <cmath>

#include "core/GlobalSettings.h"
#include "core/History.h"
#include "core/SourceText.h"
#include "monitors/cpu/CPUImage.h"
#include "monitors/cpu/CPUPopover.h"
#include "platform/Platform.h"

namespace vostel {

namespace {

constexpr double shortestReading = 0.1;  // seconds

}  // namespace

CPUModule::CPUModule(AppContext& appContext, CPUSettings& cpuSettings, ProcessSampler& processes)
    : ItemModule(appContext,
                 {QStringLiteral("cpu"), QStringLiteral("CPU"), QStringLiteral("CPU usage")},
                 cpuSettings),
      settings(cpuSettings),
      monitor(*appContext.platform.cpu),
      topApps(processes, *appContext.platform.clock, ProcMetric::cpu,
              [this](QList<ProcStat> list) { model.topApps = std::move(list); }) {}

CoreLayout CPUModule::layout() const {
    const CPUSource::CoreCounts counts = context.platform.cpu->coreCounts();
    return {counts.performance, counts.efficiency};
}

void CPUModule::tick() {
    // The counters move in steps of 10 ms: right after a tick (the popover opens) a new reading
    // would be nothing but noise.
    const double now = context.platform.clock->seconds();
    if (!(now - lastSampleAt < shortestReading)) {
        lastLoad = monitor.sample();
        lastSampleAt = now;
        error = context.platform.cpu->health.error();
        if (error.empty() && lastLoad.perCore.empty()) {
            error = "no processors can be read";
        }
        readings = error.empty() ? std::min(readings + 1, 2) : 0;
    }
    model.measured = hasLoad();
    model.problem = errorSentence(error);
    appendCapped(history, lastLoad.overall, historyCap);
    model.history = history;
    model.perCore = lastLoad.perCore;
    model.overall = lastLoad.overall;
    if (isPopoverShown()) {
        topApps.sample(false);
    }
    render();
}

void CPUModule::detailPopoverWillShow() {
    tick();
    topApps.sample(true);
}

std::optional<StatusImage> CPUModule::menubarImage(const ImageContext& imageContext) {
    const CPUImageInput input{
        .showSingleBar = settings.showSingleBar(),
        .showPerCoreBars = settings.showPerCoreBars(),
        .showGraph = settings.showGraph(),
        .splitCores = settings.splitCores(),
        .label = settings.label(),
        .labelSize = context.global.labelSize(),
        .appearance = settings.effAppearance(imageContext.appearance),
        .efficiencyColor = settings.efficiencyColor(),
        .coreCount = context.platform.cpu->activeProcessorCount(),
        .layout = layout(),
        .load = lastLoad,
        .known = hasLoad(),
        .history = history,
    };
    return makeCPUImage(input, imageContext);
}

QString CPUModule::valueText() const {
    if (!hasLoad()) {
        return noValueText(QStringLiteral("CPU"), error);
    }
    return QStringLiteral("CPU %1 %").arg(std::lround(lastLoad.overall * 100));
}

QVariantMap CPUModule::statusValues() const {
    QVariantList cores;
    for (const double load : lastLoad.perCore) {
        cores << load;
    }
    if (!hasLoad()) {
        return {{QStringLiteral("overall"), QVariant()},
                {QStringLiteral("perCore"), QVariant()},
                {QStringLiteral("error"), QString::fromStdString(error)}};
    }
    return {{QStringLiteral("overall"), lastLoad.overall}, {QStringLiteral("perCore"), cores}};
}

std::unique_ptr<Popover> CPUModule::makePopover() {
    return std::make_unique<CPUPopover>(
        model, settings, [this] { return layout(); }, [this] { openSettingsPanel(); });
}

}  // namespace vostel
