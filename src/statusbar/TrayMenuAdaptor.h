#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusArgument>
#include <QDBusVariant>
#include <QList>
#include <QStringList>
#include <QVariant>

namespace vostel {

class TrayItem;

// One entry with its properties, D-Bus type (ia{sv}).
struct TrayMenuEntry {
    int id = 0;
    QVariantMap properties;
};

// An entry with the entries below it, D-Bus type (ia{sv}av).
struct TrayMenuLayout {
    int id = 0;
    QVariantMap properties;
    QList<QDBusVariant> children;
};

// What a host tells of an entry, D-Bus type (isvu).
struct TrayMenuEvent {
    int id = 0;
    QString type;
    QDBusVariant data;
    uint time = 0;
};

inline const QString trayMenuPath = QStringLiteral("/StatusNotifierItem/Menu");

// The menu (com.canonical.dbusmenu, version 3) for hosts that open a menu of their own making on a
// right click and report nothing: two fixed entries that stand for the left and the right button.
// It never changes, so it has no signals.
class TrayMenuAdaptor final : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(QString TextDirection READ textDirection)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath)

  public:
    // Speaks for `item`; `parent` is the object on the bus.
    TrayMenuAdaptor(QObject* parent, TrayItem* item);

    uint version() const { return 3; }
    QString status() const { return QStringLiteral("normal"); }
    QString textDirection() const { return QStringLiteral("ltr"); }
    QStringList iconThemePath() const { return {}; }

  public Q_SLOTS:
    // An unknown parent has an empty layout. All properties are handed out, whichever are asked
    // for.
    uint GetLayout(int parent, int depth, const QStringList& names,
                   vostel::TrayMenuLayout& layout) const;
    QList<vostel::TrayMenuEntry> GetGroupProperties(const QList<int>& ids,
                                                    const QStringList& names) const;
    bool AboutToShow(int /*id*/) const { return false; }
    QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& unknownIds) const;
    void Event(int id, const QString& type, const QDBusVariant& data, uint time);
    // Answers the ids that it does not know.
    QList<int> EventGroup(const QList<vostel::TrayMenuEvent>& events);

  private:
    TrayItem* item;
};

QDBusArgument& operator<<(QDBusArgument& argument, const TrayMenuEntry& entry);
const QDBusArgument& operator>>(const QDBusArgument& argument, TrayMenuEntry& entry);
QDBusArgument& operator<<(QDBusArgument& argument, const TrayMenuLayout& layout);
const QDBusArgument& operator>>(const QDBusArgument& argument, TrayMenuLayout& layout);
QDBusArgument& operator<<(QDBusArgument& argument, const TrayMenuEvent& event);
const QDBusArgument& operator>>(const QDBusArgument& argument, TrayMenuEvent& event);

}  // namespace vostel

Q_DECLARE_METATYPE(vostel::TrayMenuEntry)
Q_DECLARE_METATYPE(vostel::TrayMenuLayout)
Q_DECLARE_METATYPE(vostel::TrayMenuEvent)
