#include "statusbar/BarItem.h"

#include <utility>

#include "statusbar/ItemBar.h"

namespace vostel {

BarItem::BarItem(ItemBar& owner, const QString& name, int id)
    : bar(&owner), autosaveName(name), number(id) {}

BarItem::~BarItem() {
    if (bar) bar->removeItem(*this);
}

std::vector<ImageContext> BarItem::wantedImages() const {
    return {bar ? bar->imageContext() : ImageContext()};
}

void BarItem::setImages(std::vector<StatusImage> images) {
    StatusImage next = images.empty() ? StatusImage() : std::move(images.front());
    const bool sameSize = next.image.size() == shown.image.size();
    const bool samePixels =
        sameSize && next.isTemplate == shown.isTemplate && next.image == shown.image;
    shown = std::move(next);
    if (!bar) return;
    if (!sameSize) {
        bar->itemResized();
    } else if (!samePixels) {
        bar->itemRedrawn(*this);
    }
    bar->itemReported();
}

void BarItem::setToolTip(const QString& title, const QString& value) {
    const bool same = title == titleText && value == valueText;
    titleText = title;
    valueText = value;
    if (!bar) return;
    if (!same) bar->itemTextChanged(*this);
    bar->itemReported();
}

std::optional<QRect> BarItem::screenRect() const {
    return bar ? bar->itemRect(*this) : std::nullopt;
}

}  // namespace vostel
