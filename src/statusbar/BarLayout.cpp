#include "statusbar/BarLayout.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace vostel {

namespace {

// The next shown entry after `from` in the direction of `step`, or -1.
int neighbour(const std::vector<BarEntry>& entries, int from, int step) {
    const int count = static_cast<int>(entries.size());
    for (int i = from + step; i >= 0 && i < count; i += step) {
        if (entries[static_cast<size_t>(i)].width > 0) return i;
    }
    return -1;
}

// The centre of a cell that is known to be there.
int centre(const std::vector<BarCell>& cells, int id) {
    const auto found = std::find_if(cells.begin(), cells.end(),
                                    [id](const BarCell& cell) { return cell.id == id; });
    return found->x + found->width / 2;
}

}  // namespace

std::vector<int> BarLayout::ordered(const QStringList& present, const QStringList& stored) {
    const auto rank = [&](int index) {
        const qsizetype at = stored.indexOf(present[index]);
        return at < 0 ? stored.size() : at;
    };
    std::vector<int> result(static_cast<size_t>(present.size()));
    std::iota(result.begin(), result.end(), 0);
    std::stable_sort(result.begin(), result.end(), [&](int a, int b) { return rank(a) < rank(b); });
    return result;
}

QStringList BarLayout::merged(const QStringList& stored, const QStringList& shown) {
    QStringList result = shown;
    qsizetype after = 0;  // where an absent name goes that follows the last name looked at
    for (const QString& name : stored) {
        const qsizetype at = result.indexOf(name);
        if (at >= 0) {
            after = at + 1;
        } else {
            result.insert(after++, name);
        }
    }
    return result;
}

std::vector<BarCell> BarLayout::placed(const std::vector<BarEntry>& entries,
                                       const BarMetrics& metrics) {
    std::vector<BarCell> cells;
    int right = metrics.width - metrics.margin;
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
        if (entry->width <= 0) continue;
        const int width = entry->width + 2 * metrics.padding;
        right -= width;
        cells.push_back({entry->id, right, width});
    }
    std::reverse(cells.begin(), cells.end());
    return cells;
}

const BarCell* BarLayout::cellAt(const std::vector<BarCell>& cells, int x) {
    const auto found = std::find_if(cells.begin(), cells.end(), [x](const BarCell& cell) {
        return x >= cell.x && x < cell.right();
    });
    return found == cells.end() ? nullptr : &*found;
}

std::vector<BarEntry> BarLayout::dragged(std::vector<BarEntry> entries, const BarMetrics& metrics,
                                         int id, int x) {
    const auto at = std::find_if(entries.begin(), entries.end(),
                                 [id](const BarEntry& entry) { return entry.id == id; });
    if (at == entries.end() || at->width <= 0) return entries;
    int index = static_cast<int>(at - entries.begin());
    const int right = x + at->width + 2 * metrics.padding;
    for (const int step : {-1, 1}) {
        for (int next = neighbour(entries, index, step); next >= 0;
             next = neighbour(entries, index, step)) {
            const int other =
                centre(placed(entries, metrics), entries[static_cast<size_t>(next)].id);
            const bool passed = step < 0 ? x < other : right > other;
            if (!passed) break;
            std::swap(entries[static_cast<size_t>(index)], entries[static_cast<size_t>(next)]);
            index = next;
        }
    }
    return entries;
}

}  // namespace vostel
