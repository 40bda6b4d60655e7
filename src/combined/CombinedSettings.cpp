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
                                   std::vector<Available> available)
    : group(store, center, QStringLiteral("combined."), changeNotification),
      catalog(std::move(available)) {
    const auto storedIds = [this](const QString& name) {
        return known(detail::readField<QStringList>(group.defaults, group.key(name))
                         .value_or(QStringList()));
    };
    ids = complete(storedIds(orderName));
    enabled = storedIds(enabledName);
    points =
        detail::readField<double>(group.defaults, group.key(spacingName)).value_or(defaultSpacing);
}

QString CombinedSettings::title(const QString& id) const {
    const auto found = std::find_if(catalog.begin(), catalog.end(),
                                    [&](const Available& entry) { return entry.id == id; });
    return found != catalog.end() ? found->title : QString();
}

// The ids of the catalog among them, each once.
QStringList CombinedSettings::known(const QStringList& stored) const {
    QStringList result;
    for (const QString& id : stored) {
        if (!result.contains(id) &&
            std::any_of(catalog.begin(), catalog.end(),
                        [&](const Available& entry) { return entry.id == id; })) {
            result << id;
        }
    }
    return result;
}

QStringList CombinedSettings::complete(QStringList order) const {
    for (const Available& entry : catalog) {
        if (!order.contains(entry.id)) {
            order << entry.id;
        }
    }
    return order;
}

void CombinedSettings::setOrder(const QStringList& order) {
    ids = complete(known(order));
    persist();
}

void CombinedSettings::setEnabled(const QString& id, bool on) {
    if (!ids.contains(id)) {
        return;
    }
    enabled.removeAll(id);
    if (on) {
        enabled << id;
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
    group.defaults.set(group.key(enabledName), enabled);
    group.defaults.set(group.key(spacingName), points);
    group.posted();
}

}  // namespace vostel
