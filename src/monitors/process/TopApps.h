#pragma once

#include <functional>
#include <vector>

#include <QObject>

#include "monitors/process/ProcStat.h"
#include "monitors/process/ProcessSampler.h"
#include "platform/Clock.h"

namespace vostel {

// Asks the process sampler for the top processes, at most one request at a time and at most every
// two seconds, while somebody looks. One per item.
class TopApps : public QObject {
    Q_OBJECT

  public:
    static constexpr double cadence = 2.0;  // seconds
    static constexpr int limit = 8;

    // `publish` gets each list on the main thread.
    TopApps(ProcessSampler& sampler, Clock& clock, ProcMetric metric,
            std::function<void(QList<ProcStat>)> publish);

    // `force` skips the cadence, not the one that is under way.
    void sample(bool force);

  private:
    ProcessSampler& sampler;
    Clock& clock;
    const ProcMetric metric;
    std::function<void(QList<ProcStat>)> publish;
    bool topAppsInFlight = false;
    double lastTopAppsAt = -1e300;  // the distant past
};

}  // namespace vostel
