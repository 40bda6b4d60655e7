#pragma once

#include <optional>

#include <QRect>
#include <QSize>

namespace vostel {

struct PopoverPlacement {
    QRect rect;                   // body of the popover
    Qt::Edge edge = Qt::TopEdge;  // screen edge that the item's bar lies on

    // Places a body of `size` beside `anchor` (an item in a bar), on the side away from the bar's
    // edge and centred on the item as far as it fits, inside `available`. What is larger than
    // `available` is cut to it. `edge` is guessed from the nearest edge of `screen` when not given.
    static PopoverPlacement at(const QRect& anchor, const QSize& size, const QRect& screen,
                               const QRect& available, std::optional<Qt::Edge> edge = std::nullopt);
};

}  // namespace vostel
