#include "app/AppServices.h"

#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include "app/ModuleTable.h"
#include "app/updates/AppcastUpdater.h"
#include "core/FirstRunDefaults.h"
#include "core/Log.h"
#include "core/Notifier.h"
#include "platform/PrivateFolder.h"

namespace vostel {

namespace {

const QString orderKey = QStringLiteral("app.itemOrder");

const QString launchedKey = QStringLiteral("app.hasLaunched");

// A settings file that cannot be read is no first run; the values of one then stand in for it.
bool seedFirstRun(DefaultsStore& store) {
    store.know(launchedKey,
               [](const PropertyList& list, const QString& key) { return list.holdsTruth(key); });
    if (store.values().truth(launchedKey)) {
        return false;
    }
    FirstRunDefaults::apply(store);
    store.set(launchedKey, true);
    return !store.isUnreadable();
}

// Chosen once: a new folder must not be another one for each who asks.
struct RuntimeFolder {
    RuntimeFolder() {
        const QString given = qEnvironmentVariable("XDG_RUNTIME_DIR");
        if (isPrivateFolder(QFile::encodeName(given).toStdString())) {
            path = given;
            return;
        }
        const QString own = QDir::tempPath() + QStringLiteral("/vostel-%1").arg(getuid());
        const auto made = makePrivateFolder(QFile::encodeName(own).toStdString());
        // Where no folder is to be had, nothing is written at all.
        path = made ? QFile::decodeName(made->c_str()) : QStringLiteral("/nonexistent");
        isNew = made && path != own;
        if (isNew || QFileInfo::exists(given)) {
            logLine(QStringLiteral("%1 is not this user's alone; using %2")
                        .arg(QFileInfo::exists(given) ? given : own, path));
        }
    }
    ~RuntimeFolder() {
        if (isNew) {
            QDir(path).removeRecursively();
        }
    }

    QString path;
    bool isNew = false;
};

}  // namespace

AppServices::AppServices(Platform platformSources, const QString& settingsPath,
                         DefaultsStore::Access access)
    : platform(std::move(platformSources)),
      icons(platform.roots),
      processes(background, *platform.processes, *platform.clock, icons),
      graphics(platform.gpu),
      defaults(settingsPath, &background, access),
      isFirstRun(seedFirstRun(defaults)),
      scheduler(*platform.clock),
      app(defaults, notifications),
      global(defaults, notifications),
      cpu(defaults, notifications, global),
      memory(defaults, notifications, global),
      gpu(defaults, notifications, global),
      network(defaults, notifications, global),
      combined(defaults, notifications, combinableModules()),
      updates(std::make_unique<UpdateController>(makeUpdater(), app, notifications, scheduler,
                                                 *platform.clock, Notifier::post)) {}

ItemOrder::ItemOrder(DefaultsStore& store, QStringList defaultOrder)
    : defaults(store), fallback(std::move(defaultOrder)) {
    defaults.know(orderKey, [](const PropertyList& list, const QString& key) {
        return list.textList(key).has_value();
    });
}

// Items that the stored order does not know (a module of a later version) stand at the end.
QStringList ItemOrder::itemOrder() const {
    QStringList order =
        detail::readValue<QStringList>(defaults.values(), orderKey).value_or(QStringList());
    for (const QString& name : fallback) {
        if (!order.contains(name)) {
            order << name;
        }
    }
    return order;
}

// The bar knows only the items that it shows now; the others keep their place behind their left
// neighbour.
void ItemOrder::setItemOrder(const QStringList& names) {
    QStringList merged = names;
    const QStringList before = itemOrder();
    for (qsizetype i = 0; i < before.size(); ++i) {
        if (!names.contains(before[i])) {
            const qsizetype left = i > 0 ? merged.indexOf(before[i - 1]) : -1;
            merged.insert(left + 1, before[i]);
        }
    }
    defaults.set(orderKey, merged);
}

QString settingsFilePath() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/vostel/com.vostel.app.plist");
}

QString runtimeFolder() {
    static const RuntimeFolder folder;
    return folder.path;
}

}  // namespace vostel
