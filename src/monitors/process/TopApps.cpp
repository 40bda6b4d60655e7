#include "monitors/process/TopApps.h"

namespace vostel {

TopApps::TopApps(ProcessSampler& processSampler, Clock& injectedClock, ProcMetric procMetric,
                 std::function<void(QList<ProcStat>)> publishList)
    : sampler(processSampler),
      clock(injectedClock),
      metric(procMetric),
      publish(std::move(publishList)) {}

void TopApps::sample(bool force) {
    const double now = clock.seconds();
    if (topAppsInFlight || (!force && now - lastTopAppsAt < cadence)) {
        return;
    }
    topAppsInFlight = true;
    lastTopAppsAt = now;
    sampler.top(metric, limit, this, [this](QList<ProcStat> list) {
        topAppsInFlight = false;
        publish(std::move(list));
    });
}

}  // namespace vostel
