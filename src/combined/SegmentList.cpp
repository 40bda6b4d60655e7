#include "combined/SegmentList.h"

#include <algorithm>

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>

#include "combined/SegmentRow.h"
#include "ui/Theme.h"
#include "ui/settings/SettingsLook.h"

namespace vostel {

namespace {

constexpr int line = 1;  // between two rows

}  // namespace

SegmentList::SegmentList(CombinedSettings& combinedSettings, QWidget* parent)
    : QWidget(parent), settings(combinedSettings) {
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    for (const CombinedSettings::Available& entry : settings.available()) {
        auto* row = new SegmentRow(entry.id, entry.title, this);
        rows.push_back(row);
        connect(row, &SegmentRow::switched, this,
                [this, row](bool on) { settings.setEnabled(row->id(), on); });
        connect(row, &SegmentRow::moveAsked, this, [this, row](int places) {
            const int to = placeOf(row) + places;
            if (!dragging && to >= 0 && to < static_cast<int>(rows.size())) {
                move(row, to);
                write();
            }
        });
    }
    refresh();
}

void SegmentList::refresh() {
    endDrag();
    const QStringList& order = settings.order();
    std::sort(rows.begin(), rows.end(), [&](const SegmentRow* a, const SegmentRow* b) {
        return order.indexOf(a->id()) < order.indexOf(b->id());
    });
    for (SegmentRow* row : rows) {
        row->setOn(settings.isEnabled(row->id()));
    }
    place();
}

int SegmentList::rowHeight() const {
    return rows.empty() ? 0 : std::max(SettingsLook::rowHeight, rows.front()->sizeHint().height());
}

int SegmentList::top(int place) const {
    return place * (rowHeight() + line);
}

int SegmentList::placeAt(int y) const {
    return std::clamp(y / (rowHeight() + line), 0, static_cast<int>(rows.size()) - 1);
}

int SegmentList::placeOf(const SegmentRow* row) const {
    return static_cast<int>(std::find(rows.begin(), rows.end(), row) - rows.begin());
}

QSize SegmentList::sizeHint() const {
    return {200, std::max(0, top(static_cast<int>(rows.size())) - line)};
}

void SegmentList::place() {
    std::vector<QWidget*> controls;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        SegmentRow* row = rows[i];
        const bool held = dragging && row == pressed;
        row->setGeometry(0, held ? dragTop : top(static_cast<int>(i)), width(), rowHeight());
        row->setPlace(static_cast<int>(i), static_cast<int>(rows.size()));
        row->raise();  // a screen reader goes through them in the order in which they lie
        for (QWidget* control : row->controls()) {
            controls.push_back(control);
        }
    }
    for (std::size_t i = 1; i < controls.size(); ++i) {
        setTabOrder(controls[i - 1], controls[i]);
    }
    if (dragging) {
        pressed->raise();
    }
    update();
}

void SegmentList::move(SegmentRow* row, int to) {
    rows.erase(rows.begin() + placeOf(row));
    rows.insert(rows.begin() + to, row);
    place();
}

void SegmentList::write() {
    QStringList order;
    for (const SegmentRow* row : rows) {
        order << row->id();
    }
    if (order != settings.order()) {
        settings.setOrder(order);
    }
}

// Presses between the controls of a row come here.
void SegmentList::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && !rows.empty()) {
        pressed = rows[static_cast<std::size_t>(placeAt(event->pos().y()))];
        pressedAt = event->pos().y() - pressed->y();
    }
}

void SegmentList::mouseMoveEvent(QMouseEvent* event) {
    if (pressed == nullptr) {
        return;
    }
    const int wanted = event->pos().y() - pressedAt;
    if (!dragging && std::abs(wanted - pressed->y()) < QApplication::startDragDistance()) {
        return;
    }
    if (!dragging) {
        dragging = true;
        pressed->setLifted(true);
        setCursor(Qt::ClosedHandCursor);
    }
    dragTop = std::clamp(wanted, 0, height() - rowHeight());
    move(pressed, placeAt(dragTop + rowHeight() / 2));
}

void SegmentList::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        endDrag();
        place();
        write();
    }
}

void SegmentList::endDrag() {
    if (dragging) {
        pressed->setLifted(false);
        unsetCursor();
    }
    pressed = nullptr;
    dragging = false;
}

void SegmentList::resizeEvent(QResizeEvent*) {
    place();
}

void SegmentList::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    for (int i = 1; i < static_cast<int>(rows.size()); ++i) {
        painter.fillRect(SettingsLook::rowMargin, top(i) - line, width() - SettingsLook::rowMargin,
                         line, Theme::current().divider);
    }
}

}  // namespace vostel
