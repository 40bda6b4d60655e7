#include "app/StatusCommand.h"

#include <cstdio>

#include <QApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

#include "app/AppDelegate.h"
#include "item/ShownItem.h"
#include "statusbar/OffscreenBar.h"

namespace vostel {

namespace {

constexpr int readingMilliseconds = 1000;
constexpr double noTicks = 1e6;  // makes every interval longer than the command lives

void print(const AppDelegate& delegate, bool json) {
    QJsonObject object;
    for (const Registration& row : delegate.moduleManager->rows()) {
        if (auto* item = dynamic_cast<ShownItem*>(delegate.moduleManager->running(row.id))) {
            item->tick();
            if (json) {
                object.insert(row.id, QJsonObject::fromVariantMap(item->statusValues()));
            } else {
                std::printf("%s\n", item->valueText().toLocal8Bit().constData());
            }
        }
    }
    if (json) {
        std::printf("%s", QJsonDocument(object).toJson().constData());
    }
}

}  // namespace

int runStatus(const CommandLine& commandLine, int& argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    AppServices services(makeLinuxPlatform(SystemRoots::ofThisMachine()), settingsFilePath(),
                         DefaultsStore::Access::ReadOnly);
    ItemOrder order(services.defaults, {});
    OffscreenBar bar(order, {});
    AppDelegate delegate(services, bar);
    // Both readings are taken here: one when the items start, one at the end.
    services.scheduler.setIntervalFactor(noTicks);
    delegate.moduleManager->loadEnabledModules();
    QTimer::singleShot(readingMilliseconds, &application, [&] {
        print(delegate, commandLine.json);
        QCoreApplication::quit();
    });
    return QApplication::exec();
}

}  // namespace vostel
