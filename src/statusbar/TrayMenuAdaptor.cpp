#include "statusbar/TrayMenuAdaptor.h"

#include <algorithm>
#include <array>
#include <iterator>

#include <QDBusMetaType>

#include "statusbar/TrayItem.h"

namespace vostel {

namespace {

constexpr uint revision = 1;

struct Entry {
    int id;
    const char* label;
    Qt::MouseButton button;
};

constexpr std::array entries = {
    Entry{1, "Open", Qt::LeftButton},
    Entry{2, "Options…", Qt::RightButton},
};

QVariantMap propertiesOf(const Entry& entry) {
    return {{QStringLiteral("label"), QString::fromUtf8(entry.label)}};
}

QVariantMap propertiesOfRoot() {
    return {{QStringLiteral("children-display"), QStringLiteral("submenu")}};
}

bool isKnown(int id) {
    return id == 0 || std::any_of(entries.begin(), entries.end(),
                                  [id](const Entry& entry) { return entry.id == id; });
}

}  // namespace

TrayMenuAdaptor::TrayMenuAdaptor(QObject* parent, TrayItem* owner)
    : QDBusAbstractAdaptor(parent), item(owner) {
    qDBusRegisterMetaType<TrayMenuEntry>();
    qDBusRegisterMetaType<QList<TrayMenuEntry>>();
    qDBusRegisterMetaType<TrayMenuLayout>();
    qDBusRegisterMetaType<TrayMenuEvent>();
    qDBusRegisterMetaType<QList<TrayMenuEvent>>();
    qDBusRegisterMetaType<QList<QDBusVariant>>();
    qDBusRegisterMetaType<QList<int>>();
}

uint TrayMenuAdaptor::GetLayout(int parent, int depth, const QStringList& /*names*/,
                                TrayMenuLayout& layout) const {
    layout = {parent, {}, {}};
    if (parent == 0) {
        layout.properties = propertiesOfRoot();
    }
    for (const Entry& entry : entries) {
        if (parent == entry.id) {
            layout.properties = propertiesOf(entry);
        } else if (parent == 0 && depth != 0) {
            const TrayMenuLayout child{entry.id, propertiesOf(entry), {}};
            layout.children.append(QDBusVariant(QVariant::fromValue(child)));
        }
    }
    return revision;
}

QList<TrayMenuEntry> TrayMenuAdaptor::GetGroupProperties(const QList<int>& ids,
                                                         const QStringList& /*names*/) const {
    // No ids stand for every entry.
    QList<TrayMenuEntry> result;
    if (ids.isEmpty() || ids.contains(0)) {
        result.append({0, propertiesOfRoot()});
    }
    for (const Entry& entry : entries) {
        if (ids.isEmpty() || ids.contains(entry.id)) {
            result.append({entry.id, propertiesOf(entry)});
        }
    }
    return result;
}

void TrayMenuAdaptor::Event(int id, const QString& type, const QDBusVariant& /*data*/,
                            uint /*time*/) {
    if (type != QLatin1String("clicked")) return;
    for (const Entry& entry : entries) {
        if (entry.id == id) {
            item->takeClick(entry.button, {});
        }
    }
}

QList<int> TrayMenuAdaptor::EventGroup(const QList<TrayMenuEvent>& events) {
    QList<int> unknown;
    for (const TrayMenuEvent& event : events) {
        if (isKnown(event.id)) {
            Event(event.id, event.type, event.data, event.time);
        } else {
            unknown.append(event.id);
        }
    }
    return unknown;
}

QList<int> TrayMenuAdaptor::AboutToShowGroup(const QList<int>& ids, QList<int>& unknownIds) const {
    unknownIds.clear();
    std::copy_if(ids.begin(), ids.end(), std::back_inserter(unknownIds),
                 [](int id) { return !isKnown(id); });
    return {};
}

QDBusArgument& operator<<(QDBusArgument& argument, const TrayMenuEntry& entry) {
    argument.beginStructure();
    argument << entry.id << entry.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, TrayMenuEntry& entry) {
    argument.beginStructure();
    argument >> entry.id >> entry.properties;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const TrayMenuLayout& layout) {
    argument.beginStructure();
    argument << layout.id << layout.properties << layout.children;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, TrayMenuLayout& layout) {
    argument.beginStructure();
    argument >> layout.id >> layout.properties >> layout.children;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const TrayMenuEvent& event) {
    argument.beginStructure();
    argument << event.id << event.type << event.data << event.time;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, TrayMenuEvent& event) {
    argument.beginStructure();
    argument >> event.id >> event.type >> event.data >> event.time;
    argument.endStructure();
    return argument;
}

}  // namespace vostel
