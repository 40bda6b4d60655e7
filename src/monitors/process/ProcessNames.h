#pragma once

#include <functional>

#include <QHash>
#include <QObject>

#include "monitors/process/ProcStat.h"
#include "monitors/process/ProcessSampler.h"

namespace vostel {

// Gives the rows of a list whose figures come from elsewhere their friendly names and icons, which
// are found off the main thread once for each process. One per item; main thread.
class ProcessNames : public QObject {
    Q_OBJECT

  public:
    // `publish` gets each list on the main thread.
    ProcessNames(ProcessSampler& sampler, std::function<void(QList<ProcStat>)> publish);

    // Publishes `rows`, which bring a short name each: at once when all processes are known, else
    // when they are; a list that comes meanwhile takes the place of this one. What is known of a
    // process is kept while it is in the list under the same short name, so that neither a new
    // owner of its id nor a new program in it goes by the old name.
    void show(QList<ProcStat> rows);

    // Forgets all; what is under way is not published.
    void clear();

  private:
    struct Known {
        QString shortName;
        ProcStat described;
    };

    ProcessSampler& sampler;
    std::function<void(QList<ProcStat>)> publish;
    QHash<int, Known> known;
    QList<ProcStat> wanted;
    bool inFlight = false;
};

}  // namespace vostel
