#include "statusbar/ItemBar.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vostel {

namespace {

// Points. Half the gap between two images, which also belongs to the item for the pointer.
constexpr double itemPadding = 4.0;
constexpr double endMargin = 4.0;

}  // namespace

ItemBar::ItemBar(ItemOrderStore& order) : orderStore(order) {}

ItemBar::~ItemBar() {
    for (BarItem* item : members)
        item->detach();
}

std::unique_ptr<StatusItem> ItemBar::makeItem(const QString& autosaveName) {
    auto item = std::make_unique<BarItem>(*this, autosaveName, nextId++);
    members.push_back(item.get());
    reloadOrder();
    return item;
}

void ItemBar::removeItem(BarItem& item) {
    std::erase(members, &item);
    itemRemoved(item);
    itemResized();
}

void ItemBar::reloadOrder() {
    std::vector<BarItem*> sorted;
    for (const int index : BarLayout::ordered(names(), orderStore.itemOrder())) {
        sorted.push_back(members[static_cast<size_t>(index)]);
    }
    members = std::move(sorted);
    itemResized();
}

std::vector<BarEntry> ItemBar::entries() const {
    std::vector<BarEntry> result;
    for (const BarItem* item : members)
        result.push_back({item->id(), item->pixelWidth()});
    return result;
}

QStringList ItemBar::names() const {
    QStringList result;
    for (const BarItem* item : members)
        result << item->name();
    return result;
}

BarItem* ItemBar::itemWithId(int id) const {
    const auto found = std::find_if(members.begin(), members.end(),
                                    [id](const BarItem* item) { return item->id() == id; });
    return found == members.end() ? nullptr : *found;
}

std::vector<BarPicture> ItemBar::pictures(const std::vector<BarCell>& cells, int height) const {
    std::vector<BarPicture> result;
    for (const BarCell& cell : cells) {
        if (const BarItem* item = itemWithId(cell.id)) {
            result.push_back({item->id(), QRect(cell.x, 0, cell.width, height), &item->image()});
        }
    }
    return result;
}

void ItemBar::takeOrder(const std::vector<BarEntry>& sorted) {
    std::vector<BarItem*> next;
    for (const BarEntry& entry : sorted) {
        if (BarItem* item = itemWithId(entry.id)) next.push_back(item);
    }
    if (next.size() == members.size()) members = std::move(next);
}

void ItemBar::keepOrder() {
    QStringList shown = names();
    shown.removeDuplicates();
    const QStringList stored = orderStore.itemOrder();
    const QStringList next = BarLayout::merged(stored, shown);
    if (next != stored) orderStore.setItemOrder(next);
}

BarMetrics ItemBar::metricsFor(int width, double scale) {
    return {width, static_cast<int>(std::lround(itemPadding * scale)),
            static_cast<int>(std::lround(endMargin * scale))};
}

}  // namespace vostel
