#pragma once

#include <vector>

#include <QStringList>

namespace vostel {

// One item of a bar as the layout sees it. Widths and positions are device pixels, so that every
// image lands on the pixel grid whatever the scale is.
struct BarEntry {
    int id = 0;     // the caller's, unique within a bar
    int width = 0;  // of its image; 0 hides the item

    bool operator==(const BarEntry&) const = default;
};

struct BarMetrics {
    int width = 0;    // of the bar
    int padding = 0;  // on both sides of each image
    int margin = 0;   // between the last item and the right end of the bar
};

// Where an item stands: its cell (image and padding), which is what the pointer hits.
struct BarCell {
    int id = 0;
    int x = 0;
    int width = 0;

    int right() const { return x + width; }
    bool operator==(const BarCell&) const = default;
};

// Order and places of the items of a bar. Pure: the same input always gives the same result.
struct BarLayout {
    // The indices of `present` in the order of `stored`; names that `stored` does not know follow
    // in their own order.
    static std::vector<int> ordered(const QStringList& present, const QStringList& stored);

    // The order to keep after the items now shown were put into the order `shown`. Names of
    // `stored` that are not shown stay behind the name that they followed.
    static QStringList merged(const QStringList& stored, const QStringList& shown);

    // Cells from left to right, the last one ending at the right margin. When they do not fit, the
    // first ones have a negative x: the bar's left end cuts them off. Hidden items have no cell.
    static std::vector<BarCell> placed(const std::vector<BarEntry>& entries,
                                       const BarMetrics& metrics);

    // The cell that x falls into, or null.
    static const BarCell* cellAt(const std::vector<BarCell>& cells, int x);

    // The entries after `id` has been dragged so far that its cell's left edge would be at `x`.
    // A neighbour gives way when the dragged cell's leading edge passes its centre, and only then:
    // at rest nothing jumps back and forth, however different the widths are.
    static std::vector<BarEntry> dragged(std::vector<BarEntry> entries, const BarMetrics& metrics,
                                         int id, int x);
};

}  // namespace vostel
