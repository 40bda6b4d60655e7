#pragma once

#include <optional>
#include <tuple>
#include <utility>

#include "item/ItemModule.h"
#include "monitors/gpu/GPUAppRateTracker.h"
#include "monitors/gpu/GPUReport.h"
#include "monitors/gpu/GPUSample.h"
#include "monitors/gpu/GPUSampler.h"
#include "monitors/gpu/GPUSettings.h"
#include "monitors/gpu/GPUViewModel.h"
#include "monitors/process/ProcessNames.h"

namespace vostel {

// The GPU item: one bar of the busiest GPU's utilisation. The GPU's clients are asked for only
// while the popover is open.
class GPUModule : public ItemModule {
    Q_OBJECT

  public:
    static constexpr int historyCap = 60;
    static constexpr int appLimit = 8;

    GPUModule(AppContext& context, GPUSettings& settings, ProcessSampler& processes,
              GPUSampler& sampler);

    void tick() override;
    std::optional<StatusImage> menubarImage(const ImageContext& context) override;
    void detailPopoverWillShow() override;
    void detailPopoverDidClose() override;
    QString valueText() const override;
    QVariantMap statusValues() const override;

    const GPUViewModel& viewModel() const { return model; }

  private:
    std::unique_ptr<Popover> makePopover() override;
    void willStop() override;
    bool isMeasured() const override { return measured; }
    bool wantsReadingSoon() const override {
        return !measured || (isLookedAt && !model.ratesKnown.value());
    }

    bool hasFigure() const;
    std::string problem() const;
    std::optional<GPUSample> measure(const GPUReading& reading);
    void showCards(const GPUReading& reading, const std::optional<GPUSample>& sample);
    void showTopApps(const GPUReading& reading, const GPUSample& sample);

    GPUSettings& settings;
    GPUSampler::Reader reader;
    GPUReport report;
    GPUViewModel model;
    std::vector<double> history;
    GPUStats lastStats;
    GPUAppRateTracker appRates;
    ProcessNames names;
    bool isLookedAt = false;
    double lastInterval = 0;    // seconds; of the latest tick
    double longerInterval = 0;  // of the two latest ticks: by it a gap is told
    bool measured = false;
    std::optional<std::tuple<double, GPUState, bool>> drawn;  // what the image shows
};

}  // namespace vostel
