#pragma once

#include <functional>

#include <QObject>

#include "core/AppContext.h"
#include "monitors/nettraffic/ProcessNetMonitor.h"
#include "monitors/probes/TailscaleProbe.h"
#include "monitors/probes/WANIPFetcher.h"
#include "monitors/process/AppIcons.h"

namespace vostel {

// What the network item asks outside of the platform's sources. Tests hand in their own.
struct NetworkOutside {
    // Both call the completion at most once, from the event loop, and never when `owner` is gone.
    std::function<void(QObject* owner, WANIPFetcher::Completion)> fetchWAN;
    std::function<void(QObject* owner, TailscaleProbe::Completion)> fetchTailscale;
    ProcessNetMonitor::Parts traffic;

    // The real ones. Nothing is made before it is asked for, and nothing is kept after an answer.
    // Both arguments are borrowed.
    static NetworkOutside ofThisMachine(AppContext& context, AppIcons& icons);
};

}  // namespace vostel
