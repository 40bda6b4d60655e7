#include "render/MenuBarImage.h"

#include <algorithm>
#include <cmath>

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>

#include "render/ElidedText.h"
#include "render/MeterGraph.h"
#include "render/SymbolImage.h"

namespace vostel {

namespace {

constexpr double placeholderWidth = 22;  // points
// At this resolution one point of a font is one pixel, whatever the screen's own resolution.
constexpr int dotsPerMeter = 2835;  // 72 per inch

double bounded(double value, double limit) {
    return value > 0 ? std::min(value, limit) : 0.0;
}

double boundedScale(double scale) {
    return scale > 0 ? std::clamp(scale, 0.5, 8.0) : 1.0;
}

QFont fontOfPixels(double pixels, const QPaintDevice& device) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setWeight(QFont::Medium);
    font.setPointSizeF(std::max(pixels, 1.0) * 72 / device.logicalDpiY());
    // Seen at 5 to 7 pixels: fitting stems to rows but not to columns keeps capitals crisp and
    // evenly spaced. Qt rounds the size to whole pixels.
    font.setHintingPreference(QFont::PreferVerticalHinting);
    font.setStyleStrategy(QFont::NoSubpixelAntialias);
    return QFont(font, &device);
}

// Text in device pixels: glyphs drawn at their own size are sharper than scaled ones.
void drawDeviceText(QPainter& painter, const QRectF& rect, const QString& text, const QFont& font,
                    const QColor& color, Qt::Alignment alignment) {
    const QFontMetricsF metrics(font, painter.device());
    QString shown = text;
    double width = metrics.horizontalAdvance(shown);
    if (width > rect.width() + 0.5) {
        shown = elided(metrics, text, Qt::ElideRight, rect.width());
        width = metrics.horizontalAdvance(shown);
    }
    double x = rect.left();
    if (alignment & Qt::AlignRight) {
        x = rect.right() - width;
    } else if (alignment & Qt::AlignHCenter) {
        x += (rect.width() - width) / 2;
    }
    // Vertically it is the capitals and figures that are centred: bar texts have few descenders.
    double baseline = rect.center().y() + metrics.capHeight() / 2;
    if (alignment & Qt::AlignTop) {
        baseline = rect.top() + metrics.capHeight();
    } else if (alignment & Qt::AlignBottom) {
        baseline = rect.bottom() - std::max(1.0, std::round(metrics.descent()));
    }
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(QPointF(std::round(x), std::round(baseline)), shown);
}

StatusImage build(double width, double height, const EffAppearance& appearance,
                  const ImageContext& context, const std::function<void(QPainter&)>& draw) {
    const double scale = boundedScale(context.scale);
    StatusImage result;
    result.size = QSizeF(width, height);
    result.isTemplate = appearance.monochrome;
    result.image = QImage(std::max(1, static_cast<int>(std::ceil(width * scale - 1e-6))),
                          std::max(1, static_cast<int>(std::lround(height * scale))),
                          QImage::Format_ARGB32_Premultiplied);
    result.image.fill(Qt::transparent);
    result.image.setDotsPerMeterX(dotsPerMeter);
    result.image.setDotsPerMeterY(dotsPerMeter);
    {
        QPainter painter(&result.image);
        painter.translate(0, result.image.height());
        painter.scale(scale, -scale);
        draw(painter);
    }
    result.image.setDevicePixelRatio(scale);
    return result;
}

}  // namespace

StatusImage MenuBarImage::placeholder(const QString& symbol, const QSizeF& symbolSize,
                                      const ImageContext& context) {
    const EffAppearance stencil{Qt::black, Qt::transparent, Qt::black, true};
    return make(placeholderWidth, stencil, context,
                [&](QPainter& painter, const QRectF& rect, const ImageColors&) {
                    const double side = std::min(symbolSize.width(), symbolSize.height());
                    const QImage image = symbolImage(symbol, side, context.scale, Qt::black);
                    // The painter's y runs upward; an image must not be drawn upside down.
                    painter.save();
                    painter.translate(0, rect.height());
                    painter.scale(1, -1);
                    painter.drawImage(QPointF(3 + (symbolSize.width() - side) / 2,
                                              std::round((rect.height() - side) / 2)),
                                      image);
                    painter.restore();
                });
}

ImageColors MenuBarImage::resolve(const EffAppearance& appearance) {
    if (!appearance.monochrome) {
        return {appearance.foreground, appearance.text, appearance.background};
    }
    QColor track = Qt::black;
    track.setAlphaF(appearance.background.isValid() ? appearance.background.alphaF() : 0.1F);
    return {Qt::black, Qt::black, track};
}

StatusImage MenuBarImage::makeLabeled(double contentWidth, const QString& label, double labelSize,
                                      const EffAppearance& appearance, const ImageContext& context,
                                      const Draw& draw) {
    contentWidth = bounded(contentWidth, widthLimit);
    const double height = bounded(context.thickness, 1000);
    const double labelHeight = label.isEmpty() ? 0 : bounded(labelSize, height) + 1;
    double width = contentWidth;
    if (!label.isEmpty()) {
        const double measured = textWidth(label, labelSize, boundedScale(context.scale));
        width = std::max(width, std::min(std::floor(measured) + 1, labelWidthLimit));
    }
    width = std::max(width, 1.0);

    return build(width, height, appearance, context, [&](QPainter& painter) {
        const ImageColors colors = resolve(appearance);
        const QRectF content(std::round((width - contentWidth) / 2), labelHeight, contentWidth,
                             std::max(0.0, height - labelHeight));
        draw(painter, MeterGraph::snapped(painter, content), colors);
        if (!label.isEmpty()) {
            drawText(painter, QRectF(0, 0, width, labelHeight), label, labelSize, colors.text,
                     Qt::AlignHCenter | Qt::AlignBottom);
        }
    });
}

StatusImage MenuBarImage::make(double width, const EffAppearance& appearance,
                               const ImageContext& context, const Draw& draw) {
    width = std::max(bounded(width, widthLimit), 1.0);
    const double height = bounded(context.thickness, 1000);
    return build(width, height, appearance, context, [&](QPainter& painter) {
        draw(painter, QRectF(0, 0, width, height), resolve(appearance));
    });
}

StatusImage MenuBarImage::makeSquare(const QString& label, const QString& valueText,
                                     std::optional<double> fraction,
                                     const EffAppearance& appearance, const ImageContext& context) {
    const double side = std::max(bounded(context.thickness, 1000), 1.0);
    const double scale = boundedScale(context.scale);
    return build(side, side, appearance, context, [&](QPainter& painter) {
        const ImageColors colors = resolve(appearance);
        double bottom = 0;
        double top = side;
        if (fraction) {
            const double meter = std::max(2.0, std::round(side / 7));
            const QRectF rect = MeterGraph::snapped(painter, QRectF(0, 0, side, meter));
            // The meter lies on its side: the value runs from the left.
            painter.save();
            painter.setTransform(QTransform(0, 1, 1, 0, 0, 0), true);
            MeterGraph::drawSingleBar(painter, QRectF(0, 0, rect.height(), rect.width()), *fraction,
                                      colors.foreground, colors.track);
            painter.restore();
            bottom = meter + 1;
        }
        if (!label.isEmpty()) {
            const double size = std::max(5.0, std::round(side / 3.6));
            drawText(painter, QRectF(0, side - size, side, size), label, size, colors.text);
            top = side - size;
        }
        // The largest size, in half points, at which the value fits its box.
        const double box = top - bottom;
        double size = std::floor(box / 0.74 * 2) / 2;
        while (size > 5 && textWidth(valueText, size, scale) > side) {
            size -= 0.5;
        }
        drawText(painter, QRectF(0, bottom, side, box), valueText, size, colors.text);
    });
}

void MenuBarImage::drawText(QPainter& painter, const QRectF& rect, const QString& text, double size,
                            const QColor& color, Qt::Alignment alignment) {
    if (text.isEmpty() || !(rect.width() > 0)) {
        return;
    }
    const QTransform toDevice = painter.transform();
    painter.save();
    painter.resetTransform();
    drawDeviceText(painter, toDevice.mapRect(rect), text,
                   fontOfPixels(size * std::abs(toDevice.m22()), *painter.device()), color,
                   alignment);
    painter.restore();
}

double MenuBarImage::textWidth(const QString& text, double size, double scale) {
    QImage device(1, 1, QImage::Format_ARGB32_Premultiplied);
    device.setDotsPerMeterX(dotsPerMeter);
    device.setDotsPerMeterY(dotsPerMeter);
    scale = boundedScale(scale);
    return QFontMetricsF(fontOfPixels(size * scale, device), &device).horizontalAdvance(text) /
           scale;
}

}  // namespace vostel
