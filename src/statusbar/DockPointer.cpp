#include "statusbar/DockPointer.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include <QMouseEvent>
#include <QToolTip>

#include "statusbar/PlainText.h"

namespace vostel {

namespace {

constexpr std::chrono::milliseconds tipDelay{700};
constexpr double dragDistance = 4.0;  // points before a Ctrl-press becomes a drag

QString tipText(const BarItem& item) {
    return item.value().isEmpty() ? item.title() : item.title() + u'\n' + item.value();
}

}  // namespace

DockPointer::DockPointer(Target& bar) : target(bar) {
    tipTimer.setSingleShot(true);
    tipTimer.setInterval(tipDelay);
    connect(&tipTimer, &QTimer::timeout, this, &DockPointer::showTip);
}

bool DockPointer::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:  // the second press of two quick clicks
            press(*static_cast<QMouseEvent*>(event));
            break;
        case QEvent::MouseMove:
            move(*static_cast<QMouseEvent*>(event));
            break;
        case QEvent::MouseButtonRelease:
            release(*static_cast<QMouseEvent*>(event));
            break;
        case QEvent::Leave:
            leave();
            break;
        default:
            return QObject::eventFilter(watched, event);
    }
    return false;
}

int DockPointer::pixel(const QPointF& position) const {
    return static_cast<int>(std::floor(position.x() * target.pixelRatio()));
}

void DockPointer::press(const QMouseEvent& event) {
    tipTimer.stop();
    QToolTip::hideText();
    explained = nullptr;
    if (pressedButton != Qt::NoButton) return;  // one button at a time
    pressed = target.itemAt(pixel(event.position()));
    if (!pressed) return;
    pressedButton = event.button();
    pressedModifiers = event.modifiers();
    pressPosition = event.position();
    grabOffset = pixel(event.position()) - target.cellLeft(*pressed);
}

void DockPointer::move(const QMouseEvent& event) {
    const int x = pixel(event.position());
    if (pressedButton == Qt::NoButton) {
        tipPosition = event.globalPosition().toPoint();
        hover(target.itemAt(x));
        return;
    }
    if (!pressed || pressedButton != Qt::LeftButton ||
        !pressedModifiers.testFlag(Qt::ControlModifier)) {
        return;
    }
    if (std::abs(event.position().x() - pressPosition.x()) >= dragDistance) dragging = true;
    if (dragging) target.dragTo(*pressed, x - grabOffset);
}

void DockPointer::release(const QMouseEvent& event) {
    if (event.button() != pressedButton) return;
    const QPointer<BarItem> item = pressed;
    pressed = nullptr;
    pressedButton = Qt::NoButton;
    if (dragging) {
        dragging = false;
        target.endDrag();
        return;
    }
    const int x = pixel(event.position());
    if (!item || target.itemAt(x) != item) return;
    const double scale = target.pixelRatio();
    StatusItemClick click;
    click.button = event.button();
    click.modifiers = pressedModifiers;
    click.globalPosition = event.globalPosition().toPoint();
    click.localX =
        std::clamp((x - target.imageLeft(*item)) / scale, 0.0, item->pixelWidth() / scale);
    // Whoever answers may delete the item.
    Q_EMIT item->clicked(click);
}

void DockPointer::hover(BarItem* item) {
    if (item != hovered) {
        hovered = item;
        target.highlight(item);
        if (explained) {
            explained = nullptr;
            QToolTip::hideText();
        }
    }
    if (item && item != explained) {
        tipTimer.start();
    } else {
        tipTimer.stop();
    }
}

void DockPointer::leave() {
    if (dragging) return;
    hover(nullptr);
}

void DockPointer::showTip() {
    if (!hovered || hovered->title().isEmpty()) return;
    explained = hovered;
    // The toolkit shows a tip some 16 points below a position: clear of the bar, not on it.
    constexpr int overlap = 12;
    if (const auto rect = hovered->screenRect()) {
        tipPosition.setY(std::max(tipPosition.y(), rect->bottom() - overlap));
    }
    PlainText::showToolTip(tipPosition, tipText(*hovered));
}

void DockPointer::textChanged(const BarItem& item) {
    if (explained != &item) return;
    if (QToolTip::isVisible()) {
        PlainText::showToolTip(tipPosition, tipText(item));
    } else {
        explained = nullptr;
    }
}

void DockPointer::forget(const BarItem& item) {
    if (pressed == &item) {
        pressed = nullptr;
        dragging = false;
        // pressedButton stays until the release, so that it cannot land on a neighbour.
    }
    if (explained == &item) {
        explained = nullptr;
        QToolTip::hideText();
    }
    if (hovered == &item) {
        hovered = nullptr;
        tipTimer.stop();
    }
}

}  // namespace vostel
