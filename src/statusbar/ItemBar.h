#pragma once

#include <memory>
#include <vector>

#include "statusbar/BarItem.h"
#include "statusbar/BarLayout.h"
#include "statusbar/BarPainter.h"

class QWindow;

namespace vostel {

// What the bars that draw their items themselves share: the items, their order and their places.
class ItemBar : public StatusBar {
    Q_OBJECT

  public:
    // `order` is borrowed and outlives the bar.
    explicit ItemBar(ItemOrderStore& order);
    ~ItemBar() override;

    // A name that is already in the bar is taken all the same; the two stand side by side.
    std::unique_ptr<StatusItem> makeItem(const QString& autosaveName) override;

    // Reads the order store again (it was changed from outside, for example by an import).
    void reloadOrder();

    // For BarItem alone.
    virtual ImageContext imageContext() const = 0;
    virtual std::optional<QRect> itemRect(const BarItem& item) = 0;
    virtual void itemResized() = 0;               // some item's size, or the set of items
    virtual void itemRedrawn(BarItem& item) = 0;  // same size, other pixels
    virtual void itemTextChanged(BarItem& item) = 0;
    virtual void itemReported() {}  // an item was told something, changed or not
    void removeItem(BarItem& item);

    // The window that shows the items, if there is one.
    virtual QWindow* hostWindow() const { return nullptr; }

    // From left to right, hidden ones included.
    const std::vector<BarItem*>& items() const { return members; }

  protected:
    // The item is leaving: forget it. It is not in items() any more.
    virtual void itemRemoved(BarItem& item) = 0;

    std::vector<BarEntry> entries() const;

    BarItem* itemWithId(int id) const;  // null: none

    // The items that have a cell, ready to be painted into a bar of `height` device pixels.
    std::vector<BarPicture> pictures(const std::vector<BarCell>& cells, int height) const;

    // Takes the order of `sorted`, which are entries() in another order.
    void takeOrder(const std::vector<BarEntry>& sorted);
    // Writes the order of the items to the store.
    void keepOrder();

    // Padding and margin of this program's bars at `scale`, for a bar of `width` device pixels.
    static BarMetrics metricsFor(int width, double scale);

  private:
    QStringList names() const;

    ItemOrderStore& orderStore;
    std::vector<BarItem*> members;
    int nextId = 0;
};

}  // namespace vostel
