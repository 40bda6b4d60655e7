#pragma once

#include <vector>

#include <QStringList>

#include "core/Setting.h"

namespace vostel {

// "combined." keys; posts "combinedSettingsChanged". Every change writes all of its keys and posts
// once.
class CombinedSettings {
  public:
    static constexpr const char* changeNotification = "combinedSettingsChanged";
    static constexpr double leastSpacing = 0;  // points
    static constexpr double mostSpacing = 40;

    // What can be combined.
    struct Available {
        QString id;
        QString title;
    };

    // `catalog`: each id once, in the order that stands until the user changes it. Of the stored
    // lists only its ids count, each once; what the stored order lacks stands at its end.
    CombinedSettings(DefaultsStore& store, NotificationCenter& center,
                     std::vector<Available> catalog);

    const std::vector<Available>& available() const { return catalog; }
    QString title(const QString& id) const;  // empty for an unknown id

    // Every id of the catalog, from left to right.
    const QStringList& order() const { return ids; }
    void setOrder(const QStringList& order);  // read as a stored one is

    bool isEnabled(const QString& id) const { return enabled.contains(id); }
    void setEnabled(const QString& id, bool on);  // nothing for an unknown id
    QStringList orderedEnabledIDs() const;

    // Points between two segments, within the bounds above whatever is stored.
    double spacing() const;
    void setSpacing(double points);

  private:
    QStringList known(const QStringList& stored) const;
    QStringList complete(QStringList order) const;
    void persist();

    SettingsGroup group;
    const std::vector<Available> catalog;
    QStringList ids;
    QStringList enabled;  // each once; where it stands says nothing
    double points;
};

}  // namespace vostel
