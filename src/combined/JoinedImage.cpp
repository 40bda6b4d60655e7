#include "combined/JoinedImage.h"

#include <algorithm>
#include <cmath>

#include <QPainter>

namespace vostel {

namespace {

// Pixel for pixel, whatever its ratio.
void draw(QPainter& painter, int x, int bottom, const QImage& image) {
    const QImage plain(image.constBits(), image.width(), image.height(), image.bytesPerLine(),
                       image.format());
    painter.drawImage(QPoint(x, bottom - image.height()), plain);
}

}  // namespace

JoinedImage joined(const std::vector<SegmentImage>& segments, double spacing,
                   const ImageContext& context) {
    JoinedImage result;
    double offset = 0;
    int pixelWidth = 1;
    int pixelHeight = 1;
    const double scale = segments.front().image.image.devicePixelRatio();
    std::vector<int> lefts;
    for (const SegmentImage& segment : segments) {
        const StatusImage& each = segment.image;
        result.ranges.push_back({segment.id, offset, offset + each.size.width()});
        lefts.push_back(static_cast<int>(std::lround(std::floor(offset) * scale)));
        pixelWidth = std::max(pixelWidth, lefts.back() + each.image.width());
        pixelHeight = std::max(pixelHeight, each.image.height());
        offset += each.size.width() + spacing;
    }
    const double width = std::max(1.0, offset - spacing);
    pixelWidth = std::max(pixelWidth, static_cast<int>(std::ceil(width * scale - 1e-6)));

    const bool isTemplate =
        std::all_of(segments.begin(), segments.end(),
                    [](const SegmentImage& segment) { return segment.image.isTemplate; });
    QImage canvas(pixelWidth, pixelHeight, QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::transparent);
    QPainter painter(&canvas);
    for (std::size_t i = 0; i < segments.size(); ++i) {
        const StatusImage& each = segments[i].image;
        draw(painter, lefts[i], pixelHeight,
             isTemplate ? each.image : tinted(each, context.appearance));
    }
    painter.end();
    canvas.setDevicePixelRatio(scale);
    result.image = {canvas, QSizeF(width, context.thickness), isTemplate};
    return result;
}

}  // namespace vostel
