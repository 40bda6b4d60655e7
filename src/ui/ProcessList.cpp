#include "ui/ProcessList.h"

#include <algorithm>
#include <cmath>

#include <QEvent>
#include <QPainter>

#include "ui/FigureText.h"
#include "ui/Theme.h"

namespace vostel {

ProcessList::ProcessList(const QString& text, int reserved, QWidget* parent)
    : Piece(QAccessible::List, parent),
      roomFor(std::clamp(reserved, 1, static_cast<int>(mostRows))) {
    setPlaceholder(text);
}

void ProcessList::setPlaceholder(const QString& text) {
    if (assign(placeholder, text) && used == 0) {
        setAccessibleName(placeholder);
    }
}

int ProcessList::setEntries(const std::vector<ProcessEntry>& entries) {
    const std::size_t count = std::min(entries.size(), mostRows);
    const bool wider = growColumns(entries, count);
    int redrawn = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (i == rows.size()) {
            rows.push_back(new ProcessRow(this));
        }
        const bool appeared = i >= used;
        const bool changed = rows[i]->setEntry(entries[i]);
        rows[i]->setColumns(columns);
        if (appeared) {
            rows[i]->show();
        }
        redrawn += appeared || changed || wider ? 1 : 0;
    }
    for (std::size_t i = count; i < used; ++i) {
        rows[i]->hide();
    }
    if ((used == 0) != (count == 0)) {
        update();
        setAccessibleName(count == 0 ? placeholder : QString());
    }
    const bool appeared = count > used;
    used = count;
    if (static_cast<int>(count) > roomFor) {
        roomFor = static_cast<int>(count);
        updateGeometry();
    }
    if (appeared) {
        placeRows();
    }
    return redrawn;
}

QSize ProcessList::sizeHint() const {
    return {200, roomFor * rowHeight()};
}

void ProcessList::paintEvent(QPaintEvent*) {
    if (used > 0) {
        return;
    }
    QPainter painter(this);
    painter.setPen(Theme::current().secondary);
    painter.setFont(font());
    painter.drawText(QRect(0, 0, width(), rowHeight()), Qt::AlignLeft | Qt::AlignVCenter,
                     placeholder);
}

void ProcessList::resizeEvent(QResizeEvent* event) {
    placeRows();
    Piece::resizeEvent(event);
}

void ProcessList::changeEvent(QEvent* event) {
    if (event->type() == QEvent::FontChange) {
        columns.clear();
    }
    Piece::changeEvent(event);
}

void ProcessList::placeRows() {
    const int height = rowHeight();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        rows[i]->setGeometry(0, static_cast<int>(i) * height, width(), height);
    }
}

int ProcessList::rowHeight() const {
    return std::max(QFontMetrics(font()).height() + 5, 22);
}

bool ProcessList::growColumns(const std::vector<ProcessEntry>& entries, std::size_t count) {
    bool grown = false;
    for (std::size_t i = 0; i < count; ++i) {
        const auto& values = entries[i].values;
        if (values.size() > columns.size()) {
            columns.resize(values.size(), 0);
            grown = true;
        }
        for (std::size_t column = 0; column < values.size(); ++column) {
            const double width = std::ceil(FigureText::width(font(), values[column].text));
            if (width > columns[column]) {
                columns[column] = width;
                grown = true;
            }
        }
    }
    return grown;
}

}  // namespace vostel
