#include "monitors/network/InterfaceList.h"

#include <algorithm>
#include <utility>

#include <QPainter>

#include "monitors/network/InterfaceRow.h"
#include "ui/Theme.h"

namespace vostel {

InterfaceList::InterfaceList(QWidget* parent) : Piece(QAccessible::List, parent) {}

void InterfaceList::setConfig(const GraphConfig& value) {
    if (assign(config, value)) {
        for (InterfaceRow* row : rows) {
            row->setConfig(config);
        }
    }
}

void InterfaceList::setStates(const std::vector<InterfaceState>& states) {
    const bool wasEmpty = entries.empty();
    merge(states);
    while (rows.size() < entries.size()) {
        auto* row = new InterfaceRow(this);
        row->setConfig(config);
        rows.push_back(row);
    }
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (i < entries.size()) {
            rows[i]->setState(entries[i].state);
        }
        rows[i]->setVisible(i < entries.size());
    }
    if (entries.size() > roomFor) {
        roomFor = entries.size();
        updateGeometry();
    }
    placeRows();
    if (wasEmpty != entries.empty()) {
        update();
    }
}

// The new list, with those interfaces put in where they were that have not been missing for long.
void InterfaceList::merge(const std::vector<InterfaceState>& states) {
    std::vector<Entry> merged;
    merged.reserve(states.size());
    for (const InterfaceState& state : states) {
        merged.push_back({state, 0});
    }
    std::string above;
    for (Entry& old : entries) {
        const std::string id = old.state.id;
        const auto is = [](const std::string& name) {
            return [&name](const Entry& entry) { return entry.state.id == name; };
        };
        if (std::none_of(merged.begin(), merged.end(), is(id))) {
            if (++old.missing > keptUpdates) {
                continue;
            }
            old.state.current = {};
            const auto place = std::find_if(merged.begin(), merged.end(), is(above));
            merged.insert(place == merged.end() ? merged.begin() : place + 1, std::move(old));
        }
        above = id;
    }
    entries = std::move(merged);
}

std::vector<std::string> InterfaceList::shownNames() const {
    std::vector<std::string> names;
    for (const Entry& entry : entries) {
        names.push_back(entry.state.id);
    }
    return names;
}

QSize InterfaceList::sizeHint() const {
    return {200, static_cast<int>(roomFor) * rowHeight()};
}

void InterfaceList::paintEvent(QPaintEvent*) {
    if (!entries.empty()) {
        return;
    }
    QPainter painter(this);
    painter.setPen(Theme::current().secondary);
    painter.setFont(font());
    painter.drawText(QRect(0, 0, width(), rowHeight()), Qt::AlignLeft | Qt::AlignVCenter,
                     QStringLiteral("No active interfaces"));
}

void InterfaceList::resizeEvent(QResizeEvent* event) {
    placeRows();
    Piece::resizeEvent(event);
}

void InterfaceList::placeRows() {
    const int height = rowHeight();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        rows[i]->setGeometry(0, static_cast<int>(i) * height, width(), height);
    }
}

int InterfaceList::rowHeight() const {
    return InterfaceRow::heightFor(font());
}

}  // namespace vostel
