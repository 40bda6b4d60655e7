#pragma once

#include <memory>
#include <vector>

#include "item/ItemModule.h"
#include "monitors/network/InterfaceSelection.h"
#include "monitors/network/NetworkMonitor.h"
#include "monitors/network/NetworkOutside.h"
#include "monitors/network/NetworkSettings.h"
#include "monitors/network/NetworkViewModel.h"

namespace vostel {

// The network item: a graph of download and upload with the two rates beside it.
class NetworkModule : public ItemModule {
    Q_OBJECT

  public:
    static constexpr double tailscaleInterval = 10;  // seconds
    static constexpr double wanInterval = 120;

    NetworkModule(AppContext& context, NetworkSettings& settings, NetworkOutside outside);
    ~NetworkModule() override;

    void tick() override;
    std::optional<StatusImage> menubarImage(const ImageContext& context) override;
    void detailPopoverWillShow() override;
    void detailPopoverDidClose() override;
    QString valueText() const override;
    QVariantMap statusValues() const override;

    const NetworkViewModel& viewModel() const { return model; }
    // Whether processes' traffic is watched: only between detailPopoverWillShow() and DidClose().
    bool watchesProcesses() const { return processMonitor != nullptr; }

  private:
    std::unique_ptr<Popover> makePopover() override;
    void didStart() override;
    bool isMeasured() const override { return monitor.hasMeasured() || !error.empty(); }
    // Whether there are rates to show.
    bool hasRates() const { return monitor.hasMeasured() && error.empty(); }
    void willStop() override;
    void startBackgroundProbes();
    void refreshTailscale();
    void refreshWAN();
    void applyLookUp();
    void startProcessMonitor();
    void stopProcessMonitor();
    void noteTrafficState(TrafficState state);
    void publish();

    NetworkSettings& settings;
    NetworkOutside outside;
    NetworkMonitor monitor;
    std::string error;  // why the interfaces could not be read
    InterfaceSelection selection;
    NetworkViewModel model;
    std::unique_ptr<ProcessNetMonitor> processMonitor;
    std::unique_ptr<TickScheduler::Tick> tailscaleTimer;
    std::unique_ptr<TickScheduler::Tick> wanTimer;
    NotificationCenter::Subscription settingsSubscription;
    // One request of each kind at a time, however often the popover opens.
    bool wanInFlight = false;
    bool tailscaleInFlight = false;
};

}  // namespace vostel
