#include "render/BarImage.h"

#include <cmath>

#include "render/MenuBarImage.h"
#include "render/MeterGraph.h"

namespace vostel {

namespace {

constexpr double barWidth = 8;  // points

}  // namespace

StatusImage BarImage::make(const ImageContext& context) const {
    if (context.shape == ImageShape::Square) {
        return makeSquare(context);
    }
    return MenuBarImage::makeLabeled(
        barWidth, label, labelSize, appearance, context,
        [this](QPainter& painter, const QRectF& rect, const ImageColors& colors) {
            if (known) {
                MeterGraph::drawSingleBar(painter, rect, fraction, colors.foreground, colors.track);
            } else {
                MeterGraph::drawNoValue(painter, rect, colors.foreground, colors.track);
            }
        });
}

StatusImage BarImage::makeSquare(const ImageContext& context) const {
    const QString& title = label.isEmpty() ? shortName : label;
    if (!known && instead.isEmpty()) {
        return MenuBarImage::makeSquare(title, QStringLiteral("—"), std::nullopt, appearance,
                                        context);
    }
    if (!instead.isEmpty()) {
        return MenuBarImage::makeSquare(title, instead, std::nullopt, appearance, context);
    }
    return MenuBarImage::makeSquare(title, QString::number(std::lround(fraction * 100)), fraction,
                                    appearance, context);
}

}  // namespace vostel
