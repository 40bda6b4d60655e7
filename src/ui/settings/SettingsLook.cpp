#include "ui/settings/SettingsLook.h"

#include <QPainterPath>

#include "ui/Theme.h"

namespace vostel::SettingsLook {

QPalette palette() {
    const Theme& theme = Theme::current();
    QPalette result;
    const bool dark = theme.appearance == Appearance::Dark;
    const QColor field = dark ? QColor(28, 28, 30) : QColor(255, 255, 255);
    const QColor button = dark ? QColor(62, 62, 66) : QColor(236, 236, 239);
    const std::pair<QPalette::ColorRole, QColor> roles[] = {
        {QPalette::Window, theme.window},
        {QPalette::WindowText, theme.text},
        {QPalette::Base, field},
        {QPalette::AlternateBase, theme.window},
        {QPalette::Text, theme.text},
        {QPalette::Button, button},
        {QPalette::ButtonText, theme.text},
        {QPalette::BrightText, theme.warning},
        {QPalette::Highlight, selection()},
        {QPalette::HighlightedText, Qt::white},
        {QPalette::PlaceholderText, theme.secondary},
        {QPalette::ToolTipBase, theme.window},
        {QPalette::ToolTipText, theme.text},
        {QPalette::Link, theme.accent},
        {QPalette::Light, button.lighter(130)},
        {QPalette::Midlight, button.lighter(115)},
        {QPalette::Mid, button.darker(130)},
        {QPalette::Dark, button.darker(160)},
        {QPalette::Shadow, Qt::black},
    };
    for (const auto& [role, color] : roles) {
        result.setColor(role, color);
    }
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        result.setColor(QPalette::Disabled, role, theme.secondary);
    }
    return result;
}

QColor selection() {
    const Theme& theme = Theme::current();
    return theme.appearance == Appearance::Dark ? QColor(36, 104, 190) : theme.accent;
}

bool showsRing(const QWidget& widget) {
    return widget.hasFocus() && widget.window()->testAttribute(Qt::WA_KeyboardFocusChange);
}

void drawRing(QPainter& painter, const QRectF& box, double cornerRadius) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(Theme::current().accent, 2));
    painter.drawRoundedRect(box, cornerRadius, cornerRadius);
}

void drawBox(QPainter& painter, const QRectF& box, const QColor& fill, const QColor& edge) {
    painter.setBrush(fill);
    painter.setPen(QPen(edge, 1));
    painter.drawRoundedRect(box.adjusted(0.5, 0.5, -0.5, -0.5), radius - 1, radius - 1);
}

void drawColor(QPainter& painter, const QRectF& box, const QColor& color) {
    constexpr double cell = 4;
    QPainterPath outline;
    outline.addRoundedRect(box, radius - 2, radius - 2);
    painter.save();
    painter.setClipPath(outline, Qt::IntersectClip);
    painter.fillRect(box, Qt::white);
    for (int row = 0; row * cell < box.height(); ++row) {
        for (int column = row % 2; column * cell < box.width(); column += 2) {
            painter.fillRect(QRectF(box.left() + column * cell, box.top() + row * cell, cell, cell),
                             QColor(190, 190, 194));
        }
    }
    painter.fillRect(box, color);
    painter.restore();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(Theme::current().border, 1));
    painter.drawRoundedRect(box.adjusted(0.5, 0.5, -0.5, -0.5), radius - 2, radius - 2);
}

}  // namespace vostel::SettingsLook
