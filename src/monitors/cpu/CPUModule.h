#pragma once

#include "item/ItemModule.h"
#include "monitors/cpu/CPUMonitor.h"
#include "monitors/cpu/CPUSettings.h"
#include "monitors/cpu/CPUViewModel.h"
#include "monitors/process/TopApps.h"

namespace vostel {

// The CPU item: bars and a graph of processor load.
class CPUModule : public ItemModule {
    Q_OBJECT

  public:
    static constexpr int historyCap = 60;

    CPUModule(AppContext& context, CPUSettings& settings, ProcessSampler& processes);

    void tick() override;
    std::optional<StatusImage> menubarImage(const ImageContext& context) override;
    void detailPopoverWillShow() override;
    QString valueText() const override;
    QVariantMap statusValues() const override;

  private:
    std::unique_ptr<Popover> makePopover() override;
    bool isMeasured() const override { return readings > 1 || !error.empty(); }
    // Whether there is a load to show.
    bool hasLoad() const { return readings > 1 && error.empty(); }
    CoreLayout layout() const;

    CPUSettings& settings;
    CPUMonitor monitor;
    CPUViewModel model;
    std::vector<double> history;
    CPULoad lastLoad;
    int readings = 0;              // in a row that succeeded; the first has nothing to compare with
    std::string error;             // why the last one failed
    double lastSampleAt = -1e300;  // the distant past
    TopApps topApps;
};

}  // namespace vostel
