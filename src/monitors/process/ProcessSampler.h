#pragma once

#include <functional>
#include <memory>

#include <QList>
#include <QObject>

#include "core/Background.h"
#include "monitors/process/AppIcons.h"
#include "monitors/process/ProcMetric.h"
#include "monitors/process/ProcStat.h"
#include "platform/Clock.h"
#include "platform/ProcessSource.h"

namespace vostel {

// The processes that use the most of the machine. One instance serves all items.
class ProcessSampler : public QObject {
    Q_OBJECT
  public:
    // native: the platform's own process list, CPU percent between two readings. ps: the text of
    // the system's ps, whose CPU percent is what that program makes of it. Native falls back to ps
    // where there is no list to read.
    enum class Source { native, ps };
    using Completion = std::function<void(QList<ProcStat>)>;

    // All four must outlive the work in `background`, which its destructor waits for.
    ProcessSampler(Background& background, ProcessSource& processes, const Clock& clock,
                   AppIcons& icons, QObject* parent = nullptr);
    ~ProcessSampler() override;

    // The `limit` processes with the largest value, largest first; empty when nothing can be read.
    // Main thread; so is the completion, which is dropped when `owner` is gone by then. A caller
    // keeps at most one request of its own in flight; callers do not disturb each other. The first
    // CPU request after a pause takes 0.4 s more, for a second reading.
    void top(ProcMetric metric, int limit, QObject* owner, Completion completion);

    // The rows as they are, with the friendly name and the icon of the processes. `rows` bring a
    // short name of their own, any text; it serves, made printable, where nothing else is to be
    // had. Main thread; the completion as above.
    void describe(const QList<ProcStat>& rows, QObject* owner, Completion completion);

    // Main thread; counts from the next request.
    void setSource(Source source);

  private:
    struct State;

    Background& background;
    AppIcons& icons;
    std::shared_ptr<State> state;
};

}  // namespace vostel
