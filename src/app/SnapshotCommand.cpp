#include "app/SnapshotCommand.h"

#include <cmath>
#include <cstdio>

#include <QApplication>
#include <QDir>
#include <QIcon>
#include <QStandardPaths>
#include <QTimer>

#include "app/AppDelegate.h"
#include "app/ModuleTable.h"
#include "core/Log.h"
#include "item/ShownItem.h"
#include "statusbar/ImageFile.h"
#include "statusbar/OffscreenBar.h"
#include "ui/Popover.h"
#include "ui/Theme.h"

namespace vostel {

namespace {

// The off-screen platform knows of no icon themes; the programs in the pictures have icons.
void findIconThemes() {
    QStringList folders = QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
    for (QString& folder : folders) {
        folder += QStringLiteral("/icons");
    }
    QIcon::setThemeSearchPaths(folders);
    QIcon::setThemeName(QStringLiteral("hicolor"));
}

class Snapshot {
  public:
    Snapshot(const CommandLine& asked, AppDelegate& appDelegate, OffscreenBar& offscreenBar)
        : commandLine(asked), delegate(appDelegate), bar(offscreenBar) {}

    // What a popover needs to have seen before it is worth a picture.
    void begin() {
        for (ShownItem* item : items()) {
            if (auto* module = dynamic_cast<EmbeddableModule*>(item)) {
                module->detailPopoverWillShow();
            }
        }
    }

    bool writeAll() {
        for (const Appearance appearance : {Appearance::Dark, Appearance::Light}) {
            if (!commandLine.appearance || *commandLine.appearance == appearance) {
                write(appearance);
            }
        }
        return !failed;
    }

  private:
    std::vector<ShownItem*> items() const {
        std::vector<ShownItem*> result;
        for (const Registration& row : delegate.moduleManager->rows()) {
            auto* item = dynamic_cast<ShownItem*>(delegate.moduleManager->running(row.id));
            if (item != nullptr && (commandLine.module.isEmpty() || commandLine.module == row.id)) {
                result.push_back(item);
            }
        }
        return result;
    }

    void write(Appearance appearance) {
        const QString suffix =
            appearance == Appearance::Dark ? QStringLiteral("dark") : QStringLiteral("light");
        OffscreenBarOptions options = bar.options();
        options.scale = commandLine.scale;
        options.appearance = appearance;
        bar.setOptions(options);
        Theme::set(appearance);
        if (commandLine.module.isEmpty()) {
            save(bar.image(), QStringLiteral("bar-") + suffix);
        }
        for (ShownItem* item : items()) {
            const QString id = item->identity().id;
            const ImageContext context{appearance, ImageShape::Wide, commandLine.scale,
                                       bar.thickness()};
            if (const auto image = item->menubarImage(context)) {
                save(tinted(*image, appearance), id + QStringLiteral("-item-") + suffix);
            }
            ImageContext square = context;
            square.shape = ImageShape::Square;
            if (const auto image = item->menubarImage(square)) {
                save(tinted(*image, appearance), id + QStringLiteral("-square-") + suffix);
            }
            if (auto* module = dynamic_cast<EmbeddableModule*>(item)) {
                save(module->detailPopover()->snapshot(commandLine.scale),
                     id + QStringLiteral("-popover-") + suffix);
            }
        }
        writeSettings(suffix);
    }

    void writeSettings(const QString& suffix) {
        const auto window = delegate.settingsWindow.makeWindow();
        for (const QString& id : window->pageIds()) {
            if (commandLine.module.isEmpty() || commandLine.module == id) {
                save(window->snapshot(id, commandLine.scale),
                     QStringLiteral("settings-%1-%2").arg(id, suffix));
            }
        }
    }

    void save(const QImage& image, const QString& name) {
        const QString path = QDir(commandLine.outFolder).filePath(name + QStringLiteral(".png"));
        if (writeImageFile(image, path)) {
            std::printf("%s\n", path.toLocal8Bit().constData());
        } else {
            logLine(QStringLiteral("cannot write %1").arg(path));
            failed = true;
        }
    }

    const CommandLine& commandLine;
    AppDelegate& delegate;
    OffscreenBar& bar;
    bool failed = false;
};

}  // namespace

int runSnapshot(const CommandLine& commandLine, int& argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    findIconThemes();
    if (!QDir().mkpath(commandLine.outFolder)) {
        logLine(QStringLiteral("cannot make the folder %1").arg(commandLine.outFolder));
        return 2;
    }
    AppServices services(makeLinuxPlatform(SystemRoots::ofThisMachine()), settingsFilePath(),
                         DefaultsStore::Access::ReadOnly);
    ItemOrder order(services.defaults, itemNames());
    OffscreenBar bar(order);
    AppDelegate delegate(services, bar);
    delegate.moduleManager->loadEnabledModules();
    if (!commandLine.module.isEmpty()) {
        delegate.moduleManager->setEnabled(true, commandLine.module);
    }
    Snapshot snapshot(commandLine, delegate, bar);
    snapshot.begin();
    QTimer::singleShot(static_cast<int>(commandLine.after * 1000), &application,
                       [&] { QCoreApplication::exit(snapshot.writeAll() ? 0 : 1); });
    return QApplication::exec();
}

}  // namespace vostel
