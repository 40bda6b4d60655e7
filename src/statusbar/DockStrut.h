#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include <QRect>

#include "statusbar/BarPainter.h"

namespace vostel {

// The twelve numbers of _NET_WM_STRUT_PARTIAL (EWMH 1.5), the first four of which are
// _NET_WM_STRUT: left, right, top, bottom, then the ranges left y, right y, top x, bottom x. All
// rectangles are device pixels of the whole desktop `root`. A strut is counted from the desktop's
// edge, so a bar between two monitors that stand one above the other would take the whole of the
// other monitor: such a bar reserves nothing (all zero).
std::array<std::uint32_t, 12> dockStrut(const QRect& bar, BarEdge edge, const QRect& root,
                                        const std::vector<QRect>& monitors);

}  // namespace vostel
