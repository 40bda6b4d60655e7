#pragma once

#include "item/ItemModule.h"
#include "monitors/memory/MemoryMonitor.h"
#include "monitors/memory/MemoryViewModel.h"
#include "monitors/process/TopApps.h"

namespace vostel {

// "mem." keys; posts "memorySettingsChanged".
class MemorySettings : public ModuleSettings {
  public:
    MemorySettings(DefaultsStore& store, NotificationCenter& center, GlobalSettings& global);
};

// The memory item: one bar of used physical memory.
class MemoryModule : public ItemModule {
    Q_OBJECT

  public:
    static constexpr int historyCap = 60;

    MemoryModule(AppContext& context, MemorySettings& settings, ProcessSampler& processes);

    void tick() override;
    std::optional<StatusImage> menubarImage(const ImageContext& context) override;
    void detailPopoverWillShow() override;
    QString valueText() const override;
    QVariantMap statusValues() const override;

  private:
    std::unique_ptr<Popover> makePopover() override;

    MemorySettings& settings;
    MemoryMonitor monitor;
    MemoryViewModel model;
    std::vector<double> history;
    MemoryUsage lastUsage;
    std::string error;  // why it could not be read
    TopApps topApps;
};

}  // namespace vostel
