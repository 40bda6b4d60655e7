#include "ui/Theme.h"

#include <algorithm>
#include <cmath>

#include <QApplication>
#include <QPalette>
#include <QPixmapCache>
#include <QWidget>

#include "core/SystemColors.h"
#include "render/SymbolImage.h"

namespace vostel {

namespace {

std::optional<Appearance>& chosen() {
    static std::optional<Appearance> appearance;
    return appearance;
}

Theme makeTheme(Appearance appearance) {
    Theme theme;
    theme.appearance = appearance;
    theme.track = tertiaryLabelColor(appearance);
    theme.accent = systemBlue(appearance);
    if (appearance == Appearance::Dark) {
        theme.window = QColor(38, 38, 41);
        theme.border = QColor(255, 255, 255, 38);
        theme.shadow = QColor(0, 0, 0, 110);
        theme.panel = QColor(255, 255, 255, 13);
        theme.text = QColor(240, 240, 242);
        theme.secondary = QColor(165, 165, 172);
        theme.warning = QColor(255, 186, 82);
        theme.hover = QColor(255, 255, 255, 22);
        theme.pressed = QColor(255, 255, 255, 38);
        theme.divider = QColor(255, 255, 255, 26);
    } else {
        theme.window = QColor(248, 248, 250);
        theme.border = QColor(0, 0, 0, 46);
        theme.shadow = QColor(0, 0, 0, 70);
        theme.panel = QColor(0, 0, 0, 10);
        theme.text = QColor(28, 28, 30);
        theme.secondary = QColor(99, 99, 104);
        theme.warning = QColor(148, 82, 0);
        theme.hover = QColor(0, 0, 0, 16);
        theme.pressed = QColor(0, 0, 0, 30);
        theme.divider = QColor(0, 0, 0, 26);
    }
    return theme;
}

double luminance(const QColor& color) {
    const auto linear = [](double channel) {
        return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

QColor mixed(const QColor& from, const QColor& to, double share) {
    const auto channel = [share](float a, float b) {
        return static_cast<float>(a + (b - a) * share);
    };
    return QColor::fromRgbF(channel(from.redF(), to.redF()), channel(from.greenF(), to.greenF()),
                            channel(from.blueF(), to.blueF()));
}

}  // namespace

const Theme& Theme::current() {
    static const Theme dark = makeTheme(Appearance::Dark);
    static const Theme light = makeTheme(Appearance::Light);
    if (chosen()) {
        return *chosen() == Appearance::Dark ? dark : light;
    }
    const QPalette palette = QApplication::palette();
    const bool darkDesktop = palette.color(QPalette::WindowText).lightness() >
                             palette.color(QPalette::Window).lightness();
    return darkDesktop ? dark : light;
}

void Theme::set(std::optional<Appearance> appearance) {
    chosen() = appearance;
    const QWidgetList widgets = QApplication::allWidgets();
    for (QWidget* widget : widgets) {
        widget->update();
    }
}

QColor Theme::readable(const QColor& color) const {
    constexpr double enough = 4.5;  // WCAG 2.1, level AA, text of normal size
    const QColor opaque = mixed(window, QColor(color.rgb()), color.alphaF());
    for (double share = 0; share < 1; share += 0.1) {
        const QColor candidate = mixed(opaque, text, share);
        if (contrast(candidate, window) >= enough) {
            return candidate;
        }
    }
    return text;
}

double contrast(const QColor& a, const QColor& b) {
    const double first = luminance(a);
    const double second = luminance(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

QFont styled(const QFont& base, TextStyle style) {
    struct Row {
        double size;
        QFont::Weight weight;
    };
    const Row row = [style]() -> Row {
        switch (style) {
            case TextStyle::Small:
                return {0.9, QFont::Normal};
            case TextStyle::Section:
                return {0.8, QFont::DemiBold};
            case TextStyle::Title:
                return {1.1, QFont::DemiBold};
            case TextStyle::Value:
                return {1.55, QFont::DemiBold};
            case TextStyle::Body:
                break;
        }
        return {1.0, QFont::Normal};
    }();
    QFont font = base;
    if (base.pointSizeF() > 0) {
        font.setPointSizeF(base.pointSizeF() * row.size);
    } else {
        font.setPixelSize(std::max(1, static_cast<int>(std::lround(base.pixelSize() * row.size))));
    }
    font.setWeight(row.weight);
    if (style == TextStyle::Section) {
        font.setLetterSpacing(QFont::PercentageSpacing, 105);
    }
    return font;
}

void drawSymbol(QPainter& painter, const QRectF& rect, const QString& name, double size,
                const QColor& color) {
    // Not the device's ratio: a widget drawn into an image says that of its screen.
    const double scale = painter.deviceTransform().m11();
    const QString key = QStringLiteral("vostel/%1/%2/%3/%4")
                            .arg(name)
                            .arg(size)
                            .arg(scale)
                            .arg(color.rgba(), 8, 16);
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = QPixmap::fromImage(symbolImage(name, size, scale, color));
        QPixmapCache::insert(key, pixmap);
    }
    const QPointF corner = rect.center() - QPointF(size / 2, size / 2);
    painter.drawPixmap(
        QPointF(std::round(corner.x() * scale) / scale, std::round(corner.y() * scale) / scale),
        pixmap);
}

}  // namespace vostel
