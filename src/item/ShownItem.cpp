#include "item/ShownItem.h"

#include <QApplication>
#include <QScreen>

#include "core/ModuleManager.h"
#include "statusbar/PlainText.h"
#include "ui/Popover.h"

namespace vostel {

namespace {

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

ShownItem::ShownItem(AppContext& appContext, ItemIdentity identity)
    : context(appContext), who(std::move(identity)) {}

ShownItem::~ShownItem() = default;

void ShownItem::makeStatusItem() {
    statusItem = context.statusBar.makeItem(QStringLiteral("vostel.") + who.id);
    connect(statusItem.get(), &StatusItem::clicked, this, &ShownItem::handleClick);
    connect(statusItem.get(), &StatusItem::imagesWanted, this, &ShownItem::imagesWanted);
}

void ShownItem::removeStatusItem() {
    if (openMenu) {
        openMenu->close();
    }
    statusItem.reset();
}

void ShownItem::showImages(std::vector<StatusImage> images) {
    statusItem->setImages(std::move(images));
    statusItem->setToolTip(who.toolTip, valueText());
}

void ShownItem::handleClick(const StatusItemClick& click) {
    if (click.button == Qt::RightButton || click.modifiers.testFlag(Qt::ControlModifier)) {
        closePopover();
        popUp(makeContextMenu(), click);
    } else if (click.button == Qt::LeftButton) {
        clicked(click);
    }
}

std::unique_ptr<QMenu> ShownItem::makeContextMenu() {
    auto menu = std::make_unique<QMenu>();
    connect(menu->addAction(PlainText::inMenu(who.shortName) + QStringLiteral(" Settings…")),
            &QAction::triggered, this, [this] { openSettingsPanel(); });
    menu->addSeparator();
    if (context.modules != nullptr) {
        QMenu* modules = context.modules->buildModulesMenu().release();
        modules->setParent(menu.get(), modules->windowFlags());
        menu->addMenu(modules);
    }
    menu->addSeparator();
    // Queued from a context that outlives this item: quitting stops it.
    QAction* quit = menu->addAction(QStringLiteral("Quit Vostel"));
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(quit, &QAction::triggered, qApp, context.quit, Qt::QueuedConnection);
    return menu;
}

void ShownItem::popUp(std::unique_ptr<QMenu> menu, const StatusItemClick& click) {
    if (openMenu && openMenu->isVisible()) {
        return;
    }
    menu->setAttribute(Qt::WA_DeleteOnClose);
    openMenu = menu.release();
    openMenu->popup(menuPosition(*openMenu, statusItem->screenRect(), click.globalPosition));
}

void ShownItem::showBeside(Popover& popover, const StatusItemClick& click) const {
    if (const auto rect = statusItem->screenRect()) {
        popover.showAt(*rect);
    } else if (!click.globalPosition.isNull()) {
        popover.showAtPoint(click.globalPosition);
    } else {
        popover.showAtCorner();
    }
}

}  // namespace vostel
