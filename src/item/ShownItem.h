#pragma once

#include <memory>
#include <vector>

#include <QMenu>
#include <QObject>
#include <QPointer>
#include <QVariantMap>

#include "core/AppContext.h"
#include "statusbar/StatusBar.h"

namespace vostel {

class Popover;

struct ItemIdentity {
    QString id;         // "cpu"; the autosave name is "vostel." + id
    QString shortName;  // "CPU", before " Settings…" in the context menu
    QString toolTip;    // "CPU usage"
};

// What stands in the bar, whatever it draws: its status item, the context menu, and what the rest
// of the program may ask it.
class ShownItem : public QObject {
    Q_OBJECT

  public:
    ~ShownItem() override;

    const ItemIdentity& identity() const { return who; }

    // The current image; nothing when there is nothing to draw yet.
    virtual std::optional<StatusImage> menubarImage(const ImageContext& context) = 0;
    // What it shows, as one short text ("CPU 12 %"): tool tip, accessible value, text bar.
    virtual QString valueText() const = 0;
    // The current values for `vostel status --json`; fractions 0 ... 1, bytes, bytes per second.
    virtual QVariantMap statusValues() const = 0;
    // Whether there is something to show; false for a moment after the start.
    virtual bool isReady() const { return true; }
    // Takes a new reading now.
    virtual void tick() = 0;

  Q_SIGNALS:
    void rendered();  // there is a new image

  protected:
    ShownItem(AppContext& context, ItemIdentity identity);

    // Puts the status item into the bar and takes it out again, with an open menu of it.
    void makeStatusItem();
    void removeStatusItem();
    // Null while there is none.
    StatusItem* status() const { return statusItem.get(); }
    // One image for each that status() wants; the tool tip with them.
    void showImages(std::vector<StatusImage> images);

    // A left click.
    virtual void clicked(const StatusItemClick& click) = 0;
    // The bar wants other images than before.
    virtual void imagesWanted() = 0;
    // A menu is about to open.
    virtual void closePopover() = 0;

    // Opens a menu of the item where the click was; it goes when it closes or the item leaves.
    // While one is open, no other one opens.
    void popUp(std::unique_ptr<QMenu> menu, const StatusItemClick& click);
    // Opens the popover beside the item, or where the click was when the host does not tell where
    // the item stands.
    void showBeside(Popover& popover, const StatusItemClick& click) const;
    void openSettingsPanel() { context.openSettings(who.id); }

    AppContext& context;

  private:
    void handleClick(const StatusItemClick& click);
    std::unique_ptr<QMenu> makeContextMenu();

    const ItemIdentity who;
    std::unique_ptr<StatusItem> statusItem;
    QPointer<QMenu> openMenu;
};

}  // namespace vostel
