#include "combined/SegmentRow.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>

#include "ui/ActionButton.h"
#include "ui/Theme.h"
#include "ui/settings/SettingsLook.h"
#include "ui/settings/ToggleSwitch.h"

namespace vostel {

namespace {

// Six dots: here it can be taken hold of.
class Grip : public QWidget {
  public:
    Grip() {
        setFixedSize(10, 18);
        setCursor(Qt::OpenHandCursor);
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Theme::current().secondary);
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 2; ++column) {
                painter.drawEllipse(QPointF(2.5 + 5 * column, 4 + 5 * row), 1.25, 1.25);
            }
        }
    }
};

}  // namespace

SegmentRow::SegmentRow(const QString& id, const QString& title, QWidget* parent)
    : SettingsRow(title, parent),
      segmentId(id),
      up(new ActionButton(QStringLiteral("arrow.up"), tr("Move %1 Up").arg(title), false)),
      down(new ActionButton(QStringLiteral("arrow.down"), tr("Move %1 Down").arg(title), false)),
      toggle(new ToggleSwitch(title)) {
    static_cast<QHBoxLayout*>(layout())->insertWidget(0, new Grip);
    for (QWidget* control : controls()) {
        addControl(control);
        control->installEventFilter(this);
    }
    connect(up, &QAbstractButton::clicked, this, [this] { Q_EMIT moveAsked(-1); });
    connect(down, &QAbstractButton::clicked, this, [this] { Q_EMIT moveAsked(1); });
    connect(toggle, &QAbstractButton::clicked, this, &SegmentRow::switched);
}

std::vector<QWidget*> SegmentRow::controls() const {
    return {up, down, toggle};
}

void SegmentRow::setOn(bool on) {
    toggle->setChecked(on);
}

void SegmentRow::setPlace(int place, int count) {
    const bool canRise = place > 0;
    const bool canSink = place < count - 1;
    // The keyboard stays with the row that it moved.
    if (up->hasFocus() && !canRise) {
        (canSink ? down : toggle)->setFocus(Qt::TabFocusReason);
    } else if (down->hasFocus() && !canSink) {
        (canRise ? up : toggle)->setFocus(Qt::TabFocusReason);
    }
    up->setEnabled(canRise);
    down->setEnabled(canSink);
    toggle->setAccessibleDescription(tr("Position %1 of %2").arg(place + 1).arg(count));
}

void SegmentRow::setLifted(bool value) {
    lifted = value;
    update();
}

// Buttons take the arrow keys for themselves.
bool SegmentRow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->modifiers().testFlag(Qt::AltModifier) &&
            (key->key() == Qt::Key_Up || key->key() == Qt::Key_Down)) {
            Q_EMIT moveAsked(key->key() == Qt::Key_Up ? -1 : 1);
            return true;
        }
    }
    return SettingsRow::eventFilter(watched, event);
}

void SegmentRow::paintEvent(QPaintEvent* event) {
    if (lifted) {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const Theme& theme = Theme::current();
        painter.setPen(QPen(theme.border, 1));
        painter.setBrush(theme.window);
        painter.drawRoundedRect(QRectF(rect()).adjusted(4.5, 0.5, -4.5, -0.5), SettingsLook::radius,
                                SettingsLook::radius);
    }
    SettingsRow::paintEvent(event);
}

}  // namespace vostel
