#include "monitors/memory/MemoryModule.h"

#include <cmath>

#include "core/GlobalSettings.h"
#include "core/History.h"
#include "core/SourceText.h"
#include "monitors/memory/MemoryPopover.h"
#include "platform/Platform.h"
#include "render/BarImage.h"
#include "render/RateFormatter.h"

namespace vostel {

MemorySettings::MemorySettings(DefaultsStore& store, NotificationCenter& center,
                               GlobalSettings& globalSettings)
    : ModuleSettings(store, center, globalSettings, QStringLiteral("mem."),
                     "memorySettingsChanged") {}

MemoryModule::MemoryModule(AppContext& appContext, MemorySettings& memorySettings,
                           ProcessSampler& processes)
    : ItemModule(
          appContext,
          {QStringLiteral("memory"), QStringLiteral("Memory"), QStringLiteral("Memory usage")},
          memorySettings),
      settings(memorySettings),
      monitor(*appContext.platform.memory),
      topApps(processes, *appContext.platform.clock, ProcMetric::memory,
              [this](QList<ProcStat> list) { model.topApps = std::move(list); }) {}

void MemoryModule::tick() {
    lastUsage = monitor.sample();
    error = context.platform.memory->health.error();
    if (error.empty() && !(lastUsage.totalBytes > 0)) {
        error = "the memory cannot be read";
    }
    model.measured = error.empty();
    model.problem = errorSentence(error);
    appendCapped(history, lastUsage.fraction(), historyCap);
    model.history = history;
    model.usage = lastUsage;
    if (isPopoverShown()) {
        topApps.sample(false);
    }
    render();
}

void MemoryModule::detailPopoverWillShow() {
    tick();
    topApps.sample(true);
}

std::optional<StatusImage> MemoryModule::menubarImage(const ImageContext& imageContext) {
    const BarImage image{.fraction = lastUsage.fraction(),
                         .known = error.empty(),
                         .label = settings.label(),
                         .labelSize = context.global.labelSize(),
                         .shortName = QStringLiteral("MEM"),
                         .appearance = settings.effAppearance(imageContext.appearance)};
    return image.make(imageContext);
}

QString MemoryModule::valueText() const {
    if (!error.empty()) {
        return noValueText(QStringLiteral("Memory"), error);
    }
    return QStringLiteral("Memory %1 % (%2 of %3)")
        .arg(QString::number(std::lround(lastUsage.fraction() * 100)),
             QString::fromStdString(RateFormatter::bytes(lastUsage.usedBytes)),
             QString::fromStdString(RateFormatter::bytes(lastUsage.totalBytes)));
}

QVariantMap MemoryModule::statusValues() const {
    if (!error.empty()) {
        return {{QStringLiteral("usedBytes"), QVariant()},
                {QStringLiteral("totalBytes"), QVariant()},
                {QStringLiteral("error"), QString::fromStdString(error)}};
    }
    return {{QStringLiteral("usedBytes"), lastUsage.usedBytes},
            {QStringLiteral("totalBytes"), lastUsage.totalBytes}};
}

std::unique_ptr<Popover> MemoryModule::makePopover() {
    return std::make_unique<MemoryPopover>(model, settings, [this] { openSettingsPanel(); });
}

}  // namespace vostel
