#include "combined/CombinedSettings.h"

#include <algorithm>

namespace vostel {

namespace {

constexpr double defaultSpacing = 6;  // points

const QString orderName = QStringLiteral("order");
const QString enabledName = QStringLiteral("enabled");
const QString spacingName = QStringLiteral("spacing");

}  // namespace

CombinedSettings::CombinedSettings(DefaultsStore& store, NotificationCenter& center,
                                   std::vector<Available> known)
    : group(store, center, QStringLiteral("combined."), changeNotification),
      catalog(std::move(known)) {
    const PropertyList& stored = group.defaults.values();
    ids = cleaned(stored.textList(group.key(orderName)).value_or(QStringList()));
    for (const QString& id : stored.textList(group.key(enabledName)).value_or(QStringList())) {
        if (isAvailable(id)) {
            enabled.insert(id);
        }
    }
    points = stored.number(group.key(spacingName)).value_or(defaultSpacing);
}

bool CombinedSettings::isAvailable(const QString& id) const {
    return std::any_of(catalog.begin(), catalog.end(),
                       [&](const Available& entry) { return entry.id == id; });
}

QString CombinedSettings::title(const QString& id) const {
    const auto found = std::find_if(catalog.begin(), catalog.end(),
                                    [&](const Available& entry) { return entry.id == id; });
    return found != catalog.end() ? found->title : QString();
}

QStringList CombinedSettings::cleaned(const QStringList& order) const {
    QStringList result;
    for (const QString& id : order) {
        if (isAvailable(id) && !result.contains(id)) {
            result << id;
        }
    }
    for (const Available& entry : catalog) {
        if (!result.contains(entry.id)) {
            result << entry.id;
        }
    }
    return result;
}

void CombinedSettings::setOrder(const QStringList& order) {
    ids = cleaned(order);
    persist();
}

void CombinedSettings::setEnabled(const QString& id, bool on) {
    if (!isAvailable(id)) {
        return;
    }
    if (on) {
        enabled.insert(id);
    } else {
        enabled.erase(id);
    }
    persist();
}

QStringList CombinedSettings::orderedEnabledIDs() const {
    QStringList result;
    std::copy_if(ids.begin(), ids.end(), std::back_inserter(result),
                 [this](const QString& id) { return isEnabled(id); });
    return result;
}

double CombinedSettings::spacing() const {
    return points > leastSpacing ? std::min(points, mostSpacing) : leastSpacing;  // also not finite
}

void CombinedSettings::setSpacing(double value) {
    points = value;
    points = spacing();
    persist();
}

void CombinedSettings::persist() {
    group.defaults.set(group.key(orderName), ids);
    group.defaults.set(group.key(enabledName), orderedEnabledIDs());
    group.defaults.set(group.key(spacingName), points);
    group.posted();
}

}  // namespace vostel
