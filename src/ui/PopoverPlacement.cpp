#include "ui/PopoverPlacement.h"

#include <algorithm>
#include <utility>

namespace vostel {

namespace {

constexpr int gap = 4;     // between item and popover
constexpr int margin = 6;  // to the edges of the usable screen

// The nearest edge; top and bottom win a draw, because bars mostly lie there.
Qt::Edge nearestEdge(const QRect& anchor, const QRect& screen) {
    const std::pair<int, Qt::Edge> distances[] = {
        {anchor.top() - screen.top(), Qt::TopEdge},
        {screen.bottom() - anchor.bottom(), Qt::BottomEdge},
        {anchor.left() - screen.left(), Qt::LeftEdge},
        {screen.right() - anchor.right(), Qt::RightEdge},
    };
    return std::min_element(std::begin(distances), std::end(distances),
                            [](const auto& a, const auto& b) { return a.first < b.first; })
        ->second;
}

int fitted(int wanted, int length, int low, int high) {
    return std::max(low, std::min(wanted, high - length));
}

}  // namespace

PopoverPlacement PopoverPlacement::at(const QRect& anchor, const QSize& size, const QRect& screen,
                                      const QRect& available, std::optional<Qt::Edge> edge) {
    PopoverPlacement result;
    result.edge = edge.value_or(nearestEdge(anchor, screen));
    const QRect room = available.adjusted(margin, margin, -margin, -margin);
    const int right = room.left() + room.width();
    const int bottom = room.top() + room.height();
    const int width = std::min(size.width(), room.width());
    int height = std::min(size.height(), room.height());
    int x = anchor.center().x() - width / 2;
    int y = anchor.center().y() - height / 2;
    switch (result.edge) {
        case Qt::TopEdge:
            y = std::max(anchor.bottom() + 1 + gap, room.top());
            height = std::min(height, std::max(bottom - y, room.height() / 2));
            break;
        case Qt::BottomEdge: {
            const int end = std::min(anchor.top() - gap, bottom);
            height = std::min(height, std::max(end - room.top(), room.height() / 2));
            y = end - height;
            break;
        }
        case Qt::LeftEdge:
            x = anchor.right() + 1 + gap;
            break;
        case Qt::RightEdge:
            x = anchor.left() - gap - width;
            break;
    }
    result.rect = QRect(fitted(x, width, room.left(), right), fitted(y, height, room.top(), bottom),
                        width, height);
    return result;
}

}  // namespace vostel
