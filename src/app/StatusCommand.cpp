#include "app/StatusCommand.h"

#include <algorithm>
#include <cstdio>

#include <QApplication>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

#include "app/AppDelegate.h"
#include "item/ShownItem.h"
#include "statusbar/OffscreenBar.h"

namespace vostel {

namespace {

// Longer than a source takes that does not answer.
constexpr int longestMilliseconds = 4000;
constexpr int lookMilliseconds = 20;
constexpr double noTicks = 1e6;  // makes every interval longer than the command lives

bool isReady(const AppDelegate& delegate) {
    const auto& rows = delegate.moduleManager->rows();
    return std::ranges::all_of(rows, [&](const Registration& row) {
        const auto* item = dynamic_cast<ShownItem*>(delegate.moduleManager->running(row.id));
        return item == nullptr || item->isReady();
    });
}

void print(const AppDelegate& delegate, bool json) {
    QJsonObject object;
    for (const Registration& row : delegate.moduleManager->rows()) {
        if (auto* item = dynamic_cast<ShownItem*>(delegate.moduleManager->running(row.id))) {
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
    return printStatus(services, commandLine.json);
}

int printStatus(AppServices& services, bool json) {
    ItemOrder order(services.defaults, {});
    OffscreenBar bar(order, {});
    AppDelegate delegate(services, bar);
    // The items take the readings that they need when they start, and no others.
    services.scheduler.setIntervalFactor(noTicks);
    delegate.moduleManager->loadEnabledModules();
    QElapsedTimer elapsed;
    elapsed.start();
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &look, [&] {
        if (isReady(delegate) || elapsed.elapsed() > longestMilliseconds) {
            look.stop();
            print(delegate, json);
            QCoreApplication::quit();
        }
    });
    look.start(lookMilliseconds);
    return QApplication::exec();
}

}  // namespace vostel
