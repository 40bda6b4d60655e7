#include "app/settings/SidebarRow.h"

#include <QPainter>
#include <QPainterPath>

#include "render/ElidedText.h"
#include "statusbar/BarPainter.h"
#include "ui/Theme.h"
#include "ui/settings/SettingsLook.h"
#include "ui/settings/ToggleSwitch.h"

namespace vostel {

namespace {

constexpr int plainHeight = 34;
constexpr int moduleHeight = 58;
constexpr int titleHeight = 28;
constexpr int textLeft = 36;
constexpr int edge = 10;
constexpr int chipPadding = 4;

}  // namespace

SidebarRow::SidebarRow(const SettingsPage& page, QWidget* parent)
    : PaintedButton(page.title, parent), pageId(page.id), symbol(page.symbol) {
    setText(page.title);
    setCheckable(true);
    setAutoExclusive(true);
    setFocusPolicy(Qt::ClickFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    if (page.isModule) {
        toggle = new ToggleSwitch(tr("Show %1").arg(page.title), this);
        connect(toggle, &QAbstractButton::clicked, this, &SidebarRow::switched);
    }
}

void SidebarRow::setOn(bool on) {
    if (toggle != nullptr) {
        toggle->setChecked(on);
        update();
    }
}

void SidebarRow::setMiniature(const QImage& image, Appearance appearance) {
    if (miniature != image || barAppearance != appearance) {
        miniature = image;
        barAppearance = appearance;
        update();
    }
}

QSize SidebarRow::sizeHint() const {
    return {200, toggle != nullptr ? moduleHeight : plainHeight};
}

void SidebarRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme& theme = Theme::current();
    const QRectF box = QRectF(rect()).adjusted(1, 1, -1, -1);
    painter.setPen(Qt::NoPen);
    if (isChecked()) {
        painter.setBrush(theme.pressed);
        painter.drawRoundedRect(box, SettingsLook::radius, SettingsLook::radius);
    } else if (underMouse()) {
        painter.setBrush(theme.hover);
        painter.drawRoundedRect(box, SettingsLook::radius, SettingsLook::radius);
    }
    const double top = toggle != nullptr ? 3 : (height() - titleHeight) / 2.0;
    drawSymbol(painter, QRectF(edge, top, 16, titleHeight), symbol, 16, theme.text);
    const int right = toggle != nullptr ? toggle->x() - 6 : width() - edge;
    painter.setPen(theme.text);
    painter.drawText(QRectF(textLeft, top, right - textLeft, titleHeight),
                     Qt::AlignLeft | Qt::AlignVCenter,
                     elided(QFontMetricsF(font()), text(), Qt::ElideRight, right - textLeft));
    if (toggle != nullptr) {
        paintMiniature(painter);
    }
    if (SettingsLook::showsRing(*this)) {
        SettingsLook::drawRing(painter, box, SettingsLook::radius);
    }
}

void SidebarRow::paintMiniature(QPainter& painter) const {
    const double bottom = height() - 6;
    if (!toggle->isChecked() || miniature.isNull()) {
        painter.setPen(Theme::current().secondary);
        painter.setFont(styled(font(), TextStyle::Small));
        painter.drawText(QRectF(textLeft, bottom - 22, width() - textLeft - edge, 20),
                         Qt::AlignLeft | Qt::AlignVCenter,
                         toggle->isChecked() ? QString() : tr("Off"));
        return;
    }
    // As it is; what is wider than the row, smaller.
    const QSizeF size = miniature.deviceIndependentSize();
    const double room = width() - textLeft - edge - 2 * chipPadding;
    const double factor = std::min(1.0, room / size.width());
    const QRectF chip(textLeft, bottom - size.height(), size.width() * factor + 2 * chipPadding,
                      size.height());
    QPainterPath outline;
    outline.addRoundedRect(chip, 4, 4);
    painter.fillPath(outline, barColors(barAppearance).background);
    painter.setClipPath(outline);
    if (factor < 1) {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        const double height = size.height() * factor;
        painter.drawImage(QRectF(chip.left() + chipPadding, chip.center().y() - height / 2,
                                 size.width() * factor, height),
                          miniature);
    } else {
        painter.drawImage(QPointF(chip.left() + chipPadding, chip.top()), miniature);
    }
    painter.setClipping(false);
}

void SidebarRow::resizeEvent(QResizeEvent*) {
    if (toggle != nullptr) {
        const QSize size = toggle->sizeHint();
        toggle->setGeometry(width() - edge - size.width() + 3,
                            3 + (titleHeight - size.height()) / 2, size.width(), size.height());
    }
}

}  // namespace vostel
