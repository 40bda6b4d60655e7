#pragma once

#include <functional>

#include "monitors/network/InterfaceList.h"
#include "monitors/network/NetworkGraphView.h"
#include "monitors/network/NetworkSettings.h"
#include "monitors/network/NetworkViewModel.h"
#include "monitors/network/RatesRow.h"
#include "ui/KeyValueRow.h"
#include "ui/NoteLine.h"
#include "ui/Popover.h"
#include "ui/ProcessList.h"
#include "ui/SectionTitle.h"

namespace vostel {

// Rates, peaks and totals, the machine's addresses, its interfaces, and who makes the traffic.
class NetworkPopover : public Popover {
    Q_OBJECT

  public:
    // Follows `model` while it lives.
    NetworkPopover(NetworkViewModel& model, const NetworkSettings& settings,
                   std::function<void()> openSettings);

  private:
    void build(std::function<void()> openSettings);
    void follow();
    void showGraph();
    void showRates();
    void showSession();
    void showWAN();
    void showTailscale();
    void showInterfaces();
    void showTopApps();
    void showSight();
    GraphConfig graphConfig() const;

    NetworkViewModel& model;
    const NetworkSettings& settings;
    RatesRow* rates;
    NetworkGraphView* graph;
    KeyValueRow* session;
    KeyValueRow* wan;
    SectionTitle* tailscaleTitle;
    KeyValueRow* tailscaleName;
    KeyValueRow* tailscaleAddress;
    InterfaceList* interfaces;
    ProcessList* processes;
    NoteLine* sight;
    NoteLine* problem;
    std::vector<QPropertyNotifier> notifiers;
};

}  // namespace vostel
