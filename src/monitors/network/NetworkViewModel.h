#pragma once

#include <optional>
#include <vector>

#include <QList>
#include <QProperty>
#include <QString>

#include "monitors/nettraffic/AppUsage.h"
#include "monitors/nettraffic/TrafficState.h"
#include "monitors/network/InterfaceState.h"
#include "monitors/network/NetSample.h"
#include "monitors/probes/TailscaleStatus.h"

namespace vostel {

// What the network popover shows; every field notifies on change. Rates in bytes per second.
struct NetworkViewModel {
    QProperty<std::vector<NetSample>> aggregate;  // oldest first, at most 60
    QProperty<NetSample> current;
    QProperty<bool> measured{true};  // false: there are no rates, or none yet
    QProperty<QString> problem;      // why there are none; empty: they are just not known yet
    QProperty<double> peakDown;
    QProperty<double> peakUp;
    QProperty<double> sessionDown;  // bytes
    QProperty<double> sessionUp;
    QProperty<std::vector<InterfaceState>> interfaces;
    QProperty<std::optional<QString>> wanIP;
    QProperty<bool> looksUpWAN{true};
    QProperty<std::optional<TailscaleStatus>> tailscale;
    QProperty<std::vector<AppUsage>> topApps;  // empty while nobody looks
    QProperty<TrafficState> trafficState{TrafficState::waiting};
    // How far the traffic helper sees (ProcessNetMonitor::sight); kept when the popover closes.
    QProperty<QString> sight;
};

}  // namespace vostel
