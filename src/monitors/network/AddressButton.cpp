#include "monitors/network/AddressButton.h"

#include <chrono>
#include <cmath>

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>

#include "render/ElidedText.h"
#include "statusbar/PlainText.h"
#include "ui/Theme.h"

namespace vostel {

namespace {

constexpr auto copiedTime = std::chrono::milliseconds(1400);
constexpr double symbolSize = 11;
constexpr double symbolRoom = 15;

}  // namespace

AddressButton::AddressButton(QWidget* parent) : QAbstractButton(parent) {
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setCursor(Qt::PointingHandCursor);
    copiedTimer.setSingleShot(true);
    copiedTimer.setInterval(copiedTime);
    connect(&copiedTimer, &QTimer::timeout, this, &AddressButton::describe);
    connect(this, &QAbstractButton::clicked, this, &AddressButton::copy);
}

void AddressButton::setAddress(const QString& text) {
    if (address != text) {
        address = text;
        copiedTimer.stop();
        setVisible(!address.isEmpty());
        describe();
    }
}

QSize AddressButton::sizeHint() const {
    const QFontMetrics metrics(styled(font(), TextStyle::Small));
    return {metrics.horizontalAdvance(address) + static_cast<int>(symbolRoom) + 2,
            metrics.height() + 2};
}

void AddressButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Theme& theme = Theme::current();
    const bool copied = copiedTimer.isActive();
    const QFont small = styled(font(), TextStyle::Small);
    const QColor ink = copied         ? theme.readable(theme.accent)
                       : underMouse() ? theme.text
                                      : theme.secondary;
    if (hasFocus()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(theme.accent, 1.5));
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 3, 3);
    }
    painter.setFont(small);
    painter.setPen(ink);
    const QFontMetricsF metrics(small);
    const QRectF row = QRectF(rect()).adjusted(0, 0, -symbolRoom, 0);
    // The ends of addresses tell them apart: what is too long loses its middle.
    const QString shown =
        copied ? tr("Copied") : elided(metrics, address, Qt::ElideMiddle, row.width());
    painter.drawText(row, Qt::AlignLeft | Qt::AlignVCenter, shown);
    if (copied || underMouse() || hasFocus()) {
        const double left = std::ceil(metrics.horizontalAdvance(shown)) + 3;
        drawSymbol(painter, QRectF(left, 0, symbolSize, height()),
                   copied ? QStringLiteral("checkmark") : QStringLiteral("doc.on.doc"), symbolSize,
                   ink);
    }
}

void AddressButton::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();
        return;
    }
    QAbstractButton::keyPressEvent(event);
}

void AddressButton::copy() {
    QGuiApplication::clipboard()->setText(address);
    copiedTimer.start();
    describe();
}

// A changed name is read out by assistive technology.
void AddressButton::describe() {
    setAccessibleName(copiedTimer.isActive() ? tr("Copied") : tr("Copy %1").arg(address));
    PlainText::setToolTip(*this, tr("Copy %1").arg(address));
    update();
}

}  // namespace vostel
