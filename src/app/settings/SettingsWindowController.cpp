#include "app/settings/SettingsWindowController.h"

#include <QPixmapCache>

#include "app/BarSwitch.h"
#include "app/ModuleTable.h"
#include "app/settings/AppearanceSettingsPanel.h"
#include "app/settings/GeneralSettingsPanel.h"
#include "core/GiveBack.h"

namespace vostel {

SettingsWindowController::SettingsWindowController(AppServices& appServices, AppContext& appContext)
    : services(appServices), context(appContext) {}

SettingsWindowController::~SettingsWindowController() = default;

std::unique_ptr<SettingsWindow> SettingsWindowController::makeWindow() {
    std::vector<SettingsPage> pages;
    pages.push_back({QStringLiteral("general"), QStringLiteral("General"),
                     QStringLiteral("gearshape"), false,
                     [this] { return new GeneralSettingsPanel(services, context); }});
    pages.push_back({QStringLiteral("appearance"), QStringLiteral("Appearance"),
                     QStringLiteral("paintpalette"), false, [this] {
                         return new AppearanceSettingsPanel(
                             services.global, services.notifications,
                             [this] { return imageContextOf(context.statusBar).appearance; });
                     }});
    for (SettingsPage& page : modulePages(services, context)) {
        pages.push_back(std::move(page));
    }
    return std::make_unique<SettingsWindow>(context, services.app, std::move(pages));
}

void SettingsWindowController::show(const QString& select) {
    const bool opening = !window;
    if (opening) {
        window = makeWindow();
        connect(window.get(), &SettingsWindow::closed, this,
                &SettingsWindowController::windowClosed);
    }
    window->select(select);
    if (window->isMinimized()) {
        window->showNormal();
    }
    window->show();
    window->raise();
    window->activateWindow();
    if (opening && onOpenChanged) {
        onOpenChanged();
    }
}

void SettingsWindowController::windowClosed() {
    // The window is still closing; it goes in the next turn of the event loop.
    SettingsWindow* closing = window.release();
    connect(
        closing, &QObject::destroyed, this,
        [this] {
            QPixmapCache::clear();
            giveBackMemory(services.background);
        },
        Qt::QueuedConnection);
    closing->deleteLater();
    if (onOpenChanged) {
        onOpenChanged();
    }
}

}  // namespace vostel
