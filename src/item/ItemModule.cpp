#include "item/ItemModule.h"

#include <malloc.h>

#include <chrono>

#include <QApplication>
#include <QScreen>

#include "core/ModuleManager.h"

namespace vostel {

namespace {

using namespace std::chrono_literals;

// A closed popover is given back after this long: opened again soon it comes at once, and later its
// memory is free.
constexpr auto popoverKept = 10s;
constexpr double timerTolerance = 0.15;  // of the interval

// Under the item, or over it when the bar is at the bottom; at the pointer where the host does not
// tell the item's place.
QPoint menuPosition(const QMenu& menu, const std::optional<QRect>& item, const QPoint& click) {
    if (!item) {
        return click;
    }
    const QScreen* screen = QGuiApplication::screenAt(item->center());
    const bool atBottom = screen != nullptr && item->center().y() > screen->geometry().center().y();
    return atBottom ? item->topLeft() - QPoint(0, menu.sizeHint().height())
                    : QPoint(item->left(), item->bottom() + 1);
}

}  // namespace

ItemModule::ItemModule(AppContext& appContext, ItemIdentity identity,
                       ModuleSettings& moduleSettings)
    : context(appContext), who(std::move(identity)), settings(moduleSettings) {
    popoverRelease.setSingleShot(true);
    popoverRelease.setInterval(popoverKept);
    connect(&popoverRelease, &QTimer::timeout, this, [this] {
        popover.reset();
        malloc_trim(0);
    });
}

ItemModule::~ItemModule() = default;

void ItemModule::start() {
    embedded = false;
    statusItem = context.statusBar.makeItem(QStringLiteral("vostel.") + who.id);
    connect(statusItem.get(), &StatusItem::clicked, this, &ItemModule::handleClick);
    connect(statusItem.get(), &StatusItem::imagesWanted, this, &ItemModule::render);
    begin();
}

void ItemModule::startEmbedded() {
    embedded = true;
    begin();
}

void ItemModule::begin() {
    running = true;
    for (const std::string& name :
         {settings.changeNotification(), std::string("globalSettingsChanged")}) {
        subscriptions.push_back(
            context.notifications.subscribe(name, [this] { settingsChanged(); }));
    }
    startTimer();
    didStart();
    tick();  // an item with a long interval must not stand empty until its first tick
}

void ItemModule::stop() {
    if (!running) {
        return;
    }
    running = false;
    willStop();
    timer.reset();
    subscriptions.clear();
    popoverRelease.stop();
    if (openMenu) {
        openMenu->close();
    }
    popover.reset();
    statusItem.reset();
}

void ItemModule::startTimer() {
    const double interval = effInterval();
    timer.reset();
    timer = context.scheduler.every(interval, timerTolerance * interval, [this] { tick(); });
}

// Many fields may change in one go (a revert clears six): one restart and one image serve all.
void ItemModule::settingsChanged() {
    if (changePending) {
        return;
    }
    changePending = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            changePending = false;
            if (running) {
                startTimer();
                render();
            }
        },
        Qt::QueuedConnection);
}

void ItemModule::render() {
    if (statusItem) {
        std::vector<StatusImage> images;
        for (const ImageContext& wanted : statusItem->wantedImages()) {
            images.push_back(menubarImage(wanted).value_or(StatusImage()));
        }
        statusItem->setImages(std::move(images));
        statusItem->setToolTip(who.toolTip, valueText());
    } else if (embedded && onImageChanged) {
        onImageChanged();
    }
    Q_EMIT rendered();
}

void ItemModule::handleClick(const StatusItemClick& click) {
    if (click.button == Qt::RightButton || click.modifiers.testFlag(Qt::ControlModifier)) {
        showMenu(click);
    } else if (click.button == Qt::LeftButton) {
        togglePopover(click);
    }
}

void ItemModule::showMenu(const StatusItemClick& click) {
    if (popover) {
        popover->close();
    }
    auto* menu = new QMenu;
    menu->setAttribute(Qt::WA_DeleteOnClose);
    connect(menu->addAction(who.shortName + QStringLiteral(" Settings…")), &QAction::triggered,
            this, [this] { openSettingsPanel(); });
    menu->addSeparator();
    if (context.modules != nullptr) {
        QMenu* modules = context.modules->buildModulesMenu().release();
        modules->setParent(menu, modules->windowFlags());
        menu->addMenu(modules);
    }
    menu->addSeparator();
    // Queued from a context that outlives this module: quitting stops it.
    QAction* quit = menu->addAction(QStringLiteral("Quit Vostel"));
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(quit, &QAction::triggered, qApp, context.quit, Qt::QueuedConnection);
    openMenu = menu;
    menu->popup(menuPosition(*menu, statusItem->screenRect(), click.globalPosition));
}

Popover* ItemModule::detailPopover() {
    popoverRelease.stop();
    if (!popover) {
        popover = makePopover();
        connect(popover.get(), &Popover::closed, this, &ItemModule::popoverClosed);
    }
    return popover.get();
}

void ItemModule::togglePopover(const StatusItemClick& click) {
    if (popover && (popover->isVisible() || popover->closedByPressAt(click.globalPosition))) {
        popover->close();
        return;
    }
    Popover* shown = detailPopover();
    detailPopoverWillShow();
    if (const auto rect = statusItem->screenRect()) {
        shown->showAt(*rect);
    } else if (!click.globalPosition.isNull()) {
        shown->showAtPoint(click.globalPosition);
    } else {
        shown->showAtCorner();
    }
}

void ItemModule::popoverClosed() {
    if (!embedded) {  // the combined item tells its segments itself
        detailPopoverDidClose();
    }
    popoverRelease.start();
}

}  // namespace vostel
