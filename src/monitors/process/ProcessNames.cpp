#include "monitors/process/ProcessNames.h"

#include <utility>

namespace vostel {

ProcessNames::ProcessNames(ProcessSampler& processSampler,
                           std::function<void(QList<ProcStat>)> publishList)
    : sampler(processSampler), publish(std::move(publishList)) {}

void ProcessNames::show(QList<ProcStat> rows) {
    QHash<int, Known> still;
    QList<ProcStat> named;
    QList<ProcStat> unknown;
    for (const ProcStat& row : rows) {
        const auto entry = known.constFind(row.id);
        if (entry == known.cend() || entry->shortName != row.name) {
            unknown.append(row);
            continue;
        }
        still.insert(row.id, *entry);
        named.append({row.id, entry->described.name, entry->described.icon, row.value});
    }
    known = std::move(still);
    if (unknown.isEmpty()) {
        wanted.clear();
        publish(std::move(named));
        return;
    }
    wanted = std::move(rows);
    if (inFlight) {
        return;
    }
    inFlight = true;
    sampler.describe(unknown, this, [this, unknown](const QList<ProcStat>& described) {
        inFlight = false;
        for (qsizetype i = 0; i < described.size(); ++i) {
            known.insert(unknown[i].id, {unknown[i].name, described[i]});
        }
        if (!wanted.isEmpty()) {
            show(wanted);
        }
    });
}

void ProcessNames::clear() {
    known.clear();
    wanted.clear();
}

}  // namespace vostel
