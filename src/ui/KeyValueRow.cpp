#include "ui/KeyValueRow.h"

#include <chrono>
#include <cmath>

#include <QClipboard>
#include <QGuiApplication>
#include <QPainter>

#include "render/ElidedText.h"
#include "statusbar/PlainText.h"
#include "ui/ActionButton.h"
#include "ui/FigureText.h"
#include "ui/Theme.h"

namespace vostel {

namespace {

constexpr auto copiedTime = std::chrono::milliseconds(1400);
constexpr double gap = 10;
constexpr int rowHeight = 22;  // that of the button, so that rows with and without one are alike

}  // namespace

KeyValueRow::KeyValueRow(const QString& text, QWidget* parent)
    : Piece(QAccessible::StaticText, parent), key(text) {
    copiedTimer.setSingleShot(true);
    copiedTimer.setInterval(copiedTime);
    connect(&copiedTimer, &QTimer::timeout, this, [this] { showCopied(false); });
    refresh();
}

void KeyValueRow::setKey(const QString& text) {
    if (assign(key, text)) {
        refresh();
    }
}

void KeyValueRow::setValue(const QString& text) {
    if (assign(value, text)) {
        refresh();
    }
}

void KeyValueRow::setValueColor(const QColor& color) {
    assign(valueColor, color);
}

void KeyValueRow::setCopyable(const QString& name) {
    if (!assign(what, name)) {
        return;
    }
    if (!button && !what.isEmpty()) {
        button = new ActionButton(QStringLiteral("doc.on.doc"), QString(), false, this);
        connect(button, &QAbstractButton::clicked, this, &KeyValueRow::copy);
        placeButton();
    }
    showCopied(false);
    refresh();
}

QSize KeyValueRow::sizeHint() const {
    return {200, std::max(QFontMetrics(font()).height() + 4, rowHeight)};
}

void KeyValueRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Theme& theme = Theme::current();
    QRectF row = rect();
    if (button && !button->isHidden()) {
        row.setRight(button->x() - 2);
    }
    const QFontMetricsF metrics(font());
    const double keyWidth =
        std::min(std::ceil(metrics.horizontalAdvance(key)) + 1, row.width() * 0.55);
    painter.setPen(theme.secondary);
    FigureText::draw(painter, QRectF(0, 0, keyWidth, row.height()), font(), key, Qt::AlignLeft);
    row.setLeft(keyWidth + gap);
    painter.setPen(copied                 ? theme.readable(theme.accent)
                   : valueColor.isValid() ? theme.readable(valueColor)
                                          : theme.text);
    // The ends of addresses and names tell them apart: what is too long loses its middle.
    FigureText::draw(
        painter, row, font(),
        copied ? tr("Copied") : elided(metrics, value, Qt::ElideMiddle, std::ceil(row.width())));
}

void KeyValueRow::resizeEvent(QResizeEvent* event) {
    placeButton();
    Piece::resizeEvent(event);
}

void KeyValueRow::placeButton() {
    if (button) {
        const QSize size = button->sizeHint();
        button->setGeometry(width() - size.width(), (height() - size.height()) / 2, size.width(),
                            size.height());
    }
}

void KeyValueRow::copy() {
    QGuiApplication::clipboard()->setText(value);
    showCopied(true);
    copiedTimer.start();
}

void KeyValueRow::showCopied(bool on) {
    copied = on;
    if (button) {
        button->setSymbol(on ? QStringLiteral("checkmark") : QStringLiteral("doc.on.doc"));
        // A changed name is read out by assistive technology.
        button->setName(on ? tr("Copied") : tr("Copy %1").arg(what));
    }
    update();
}

void KeyValueRow::refresh() {
    setAccessibleName(key + u' ' + value);
    PlainText::setToolTip(*this,
                          QFontMetrics(font()).horizontalAdvance(value) > 150 ? value : QString());
    if (button) {
        button->setVisible(!value.isEmpty() && !what.isEmpty());
    }
}

}  // namespace vostel
