#include "monitors/memory/MemoryPopover.h"

#include "render/RateFormatter.h"

namespace vostel {

namespace {

QString bytes(double count) {
    return QString::fromStdString(RateFormatter::bytes(count));
}

}  // namespace

MemoryPopover::MemoryPopover(MemoryViewModel& model, const ModuleSettings& memorySettings,
                             std::function<void()> openSettings)
    : UsagePopover(QStringLiteral("Memory"), QStringLiteral("Used memory, history"), model,
                   memorySettings) {
    const auto showUsage = [this, &model] {
        const MemoryUsage usage = model.usage.value();
        const bool known = model.measured.value();
        header->setValue(percent(usage.fraction(), known));
        header->setDetail(known ? QStringLiteral("Used %1 of %2")
                                      .arg(bytes(usage.usedBytes), bytes(usage.totalBytes))
                                : QString());
    };
    follow(model.usage, showUsage);
    follow(model.measured, showUsage);
    addTopApps(SystemApp::MonitorTab::Memory, QStringLiteral("Sampling…"), bytes,
               std::move(openSettings));
}

}  // namespace vostel
