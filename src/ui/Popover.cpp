#include "ui/Popover.h"

#include <algorithm>
#include <cmath>

#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QScreen>
#include <QScrollArea>
#include <QVBoxLayout>
#include <QWindow>

#include "ui/AccessibleRole.h"
#include "ui/Compositing.h"
#include "ui/PopoverPlacement.h"
#include "ui/Theme.h"
#include "ui/ThinScrollBar.h"

namespace vostel {

namespace {

constexpr int margin = 14;
constexpr int spacing = 4;
constexpr int shadowRoom = 14;
constexpr double radius = 10;
constexpr double maskRadius = 6;     // smaller where corners cannot be smooth
constexpr int sameClickTime = 1000;  // milliseconds from press to release
constexpr int hostClickTime = 400;   // where the host may have kept the release to itself
constexpr int sameClickDistance = 24;

// Hands a press that closed the popover to the program's own window under it, so that one click
// moves from one item's popover to the next. Qt does so on some platforms only (not on X11).
// The release follows at once: the real one goes to this window, to that one or to none, depending
// on whether the server saw it before the popover was gone. A second release is nothing to a
// window.
void replay(const QMouseEvent& press) {
    // A bar is a plain window, which QApplication::widgetAt() would not find.
    QPointer<QWindow> window = QGuiApplication::topLevelAt(press.globalPosition().toPoint());
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        if (window) {
            const bool down = type == QEvent::MouseButtonPress;
            QMouseEvent event(type, window->mapFromGlobal(press.globalPosition()),
                              press.globalPosition(), press.button(),
                              down ? press.buttons() : press.buttons() & ~press.button(),
                              press.modifiers(), press.pointingDevice());
            QCoreApplication::sendEvent(window, &event);
        }
    }
}

}  // namespace

Popover::Popover(const QString& title, QWidget* parent)
    : QWidget(parent, Qt::Popup | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint),
      translucent(isComposited()),
      shadow(translucent ? shadowRoom : 0) {
    setAttribute(Qt::WA_TranslucentBackground, translucent);
    setAttribute(Qt::WA_OpaquePaintEvent, !translucent);
    setAttribute(Qt::WA_NoMouseReplay);  // replay() does it everywhere
    setWindowTitle(title);
    setAccessibleName(title);
    setAccessibleRole(*this, QAccessible::Dialog);
    setFocusPolicy(Qt::NoFocus);

    content = new QWidget;
    column = new QVBoxLayout(content);
    column->setContentsMargins(margin, margin - 4, margin, margin - 4);
    column->setSpacing(spacing);
    content->setFixedWidth(contentWidth + 2 * margin);
    content->setAutoFillBackground(false);
    content->installEventFilter(this);

    scroll = new QScrollArea(this);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setVerticalScrollBar(new ThinScrollBar(scroll));
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setWidget(content);
    scroll->setWidgetResizable(true);
    scroll->viewport()->setAutoFillBackground(false);
    content->setAutoFillBackground(false);

    frame = new QVBoxLayout(this);
    frame->setContentsMargins(shadow + 1, shadow + 1, shadow + 1, shadow + 1);
    frame->setSpacing(0);
    frame->setSizeConstraint(QLayout::SetNoConstraint);
    frame->addWidget(scroll, 1);
}

void Popover::add(QWidget* widget) {
    column->addWidget(widget);
}

void Popover::addSpace(int pixels) {
    column->addSpacing(pixels);
}

void Popover::setFooter(QWidget* widget) {
    delete footer;
    footer = widget;
    if (footer) {
        frame->addWidget(footer);
    }
}

void Popover::showAt(const QRect& item, std::optional<Qt::Edge> barEdge) {
    anchor = item;
    edge = barEdge;
    anchorIsItem = true;
    open();
}

void Popover::showAtPoint(const QPoint& point) {
    anchor = QRect(point, QSize(1, 1));
    edge.reset();
    anchorIsItem = false;
    open();
}

void Popover::showAtCorner() {
    const QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
    const QScreen* used = screen ? screen : QGuiApplication::primaryScreen();
    const QRect whole = used->geometry();
    const QRect usable = used->availableGeometry();
    // The corner of the panel: the bottom one only where a panel lies there and none at the top.
    const bool bottom = usable.top() == whole.top() && usable.bottom() < whole.bottom();
    anchor = QRect(bottom ? whole.bottomRight() : whole.topRight(), QSize(1, 1));
    edge = bottom ? Qt::BottomEdge : Qt::TopEdge;
    anchorIsItem = false;
    open();
}

bool Popover::closedByPressAt(const QPoint& position) {
    if (!sinceClosingPress.isValid()) {
        return false;
    }
    // An item may be wider than what its popover stands at.
    const bool atAnchor =
        anchorIsItem && anchor.contains(closingPress) && anchor.contains(position);
    const bool recent = !sinceClosingPress.hasExpired(atAnchor ? sameClickTime : hostClickTime);
    sinceClosingPress.invalidate();
    return recent && (atAnchor || (position - closingPress).manhattanLength() <= sameClickDistance);
}

QImage Popover::snapshot(double scale) {
    const QSize size = bodySize();
    ensurePolished();
    resize(size.grownBy({shadow, shadow, shadow, shadow}));
    frame->activate();
    column->activate();
    QImage image((QSizeF(this->size()) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    render(&image, QPoint(), QRegion(), QWidget::DrawChildren | QWidget::DrawWindowBackground);
    return image.copy(QRectF(body().topLeft() * scale, body().size() * scale).toRect());
}

bool Popover::event(QEvent* event) {
    // The content's height changed while open.
    if (event->type() == QEvent::LayoutRequest && isVisible()) {
        place();
    }
    return QWidget::event(event);
}

bool Popover::eventFilter(QObject* watched, QEvent* event) {
    if (watched == content && event->type() == QEvent::LayoutRequest && isVisible()) {
        place();
    }
    return QWidget::eventFilter(watched, event);
}

void Popover::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    const Theme& theme = Theme::current();
    const QRectF box = body();
    const double corner = translucent ? radius : maskRadius;
    // Inside, where no edge is near, a plain fill: this is what every redraw of a piece costs.
    if (box.adjusted(corner, 2, -corner, -2).contains(event->rect()) ||
        box.adjusted(2, corner, -2, -corner).contains(event->rect())) {
        painter.fillRect(event->rect(), theme.window);
        return;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    if (translucent) {
        // Layers that add up to a soft edge, a little lower than the body.
        for (int i = 0; i < shadow; ++i) {
            QColor layer = theme.shadow;
            const double share = static_cast<double>(i + 1) / shadow;
            layer.setAlphaF(static_cast<float>(theme.shadow.alphaF() * share * share * 0.18));
            painter.setBrush(layer);
            const double grow = shadow - i - 1;
            painter.drawRoundedRect(
                box.adjusted(-grow, -grow + 2, grow, std::min(grow + 2, shadow * 1.0)),
                corner + grow, corner + grow);
        }
    } else {
        painter.fillRect(rect(), theme.window);
    }
    painter.setBrush(theme.window);
    painter.drawRoundedRect(box, corner, corner);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(theme.border, 1));
    painter.drawRoundedRect(box.adjusted(0.5, 0.5, -0.5, -0.5), corner - 0.5, corner - 0.5);
}

void Popover::mousePressEvent(QMouseEvent* event) {
    if (!body().contains(event->position())) {
        closingPress = event->globalPosition().toPoint();
        sinceClosingPress.start();
        close();
        event->accept();
        replay(*event);
        return;
    }
    event->accept();
}

void Popover::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

void Popover::resizeEvent(QResizeEvent* event) {
    if (!translucent) {
        QPainterPath shape;
        shape.addRoundedRect(rect(), maskRadius, maskRadius);
        setMask(QRegion(shape.toFillPolygon().toPolygon()));
    }
    QWidget::resizeEvent(event);
}

void Popover::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (!event->spontaneous()) {
        Q_EMIT closed();
    }
}

QSize Popover::bodySize() const {
    column->activate();
    const int width = contentWidth + 2 * margin;
    int height =
        column->hasHeightForWidth() ? column->heightForWidth(width) : column->sizeHint().height();
    height += footer ? footer->sizeHint().height() : 0;
    return {width + 2, height + 2};  // the border
}

QRectF Popover::body() const {
    return QRectF(rect()).adjusted(shadow, shadow, -shadow, -shadow);
}

void Popover::open() {
    sinceClosingPress.invalidate();
    Q_EMIT aboutToShow();
    ensurePolished();
    if (QWidget* last = focusWidget()) {
        last->clearFocus();
    }
    place();
    show();
}

void Popover::place() {
    if (placing) {
        return;
    }
    placing = true;
    const QScreen* found = QGuiApplication::screenAt(anchor.center());
    const QScreen* screen = found ? found : QGuiApplication::primaryScreen();
    const QRect rect = PopoverPlacement::at(anchor, bodySize(), screen->geometry(),
                                            screen->availableGeometry(), edge)
                           .rect;
    setGeometry(rect.adjusted(-shadow, -shadow, shadow, shadow));
    placing = false;
}

}  // namespace vostel
