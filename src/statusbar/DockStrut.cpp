#include "statusbar/DockStrut.h"

#include <algorithm>

namespace vostel {

std::array<std::uint32_t, 12> dockStrut(const QRect& bar, BarEdge edge, const QRect& root,
                                        const std::vector<QRect>& monitors) {
    std::array<std::uint32_t, 12> strut{};
    const bool top = edge == BarEdge::Top;
    // What lies between the bar and the desktop's edge.
    QRect beyond = bar;
    if (top) {
        beyond.setTop(root.top());
        beyond.setBottom(bar.top() - 1);
    } else {
        beyond.setTop(bar.bottom() + 1);
        beyond.setBottom(root.bottom());
    }
    const bool between = std::any_of(monitors.begin(), monitors.end(), [&](const QRect& monitor) {
        return monitor.intersects(beyond);
    });
    if (between || bar.isEmpty()) return strut;
    const int depth = top ? bar.bottom() + 1 - root.top() : root.bottom() + 1 - bar.top();
    const size_t side = top ? 2 : 3;
    strut[side] = static_cast<std::uint32_t>(std::max(depth, 0));
    strut[4 + 2 * side] = static_cast<std::uint32_t>(std::max(bar.left(), 0));
    strut[5 + 2 * side] = static_cast<std::uint32_t>(std::max(bar.right(), 0));
    return strut;
}

}  // namespace vostel
