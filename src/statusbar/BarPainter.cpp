#include "statusbar/BarPainter.h"

#include <QPainter>

namespace vostel {

BarColors barColors(Appearance appearance) {
    if (appearance == Appearance::Dark) {
        return {QColor(0x1d, 0x1d, 0x1f), QColor(0x35, 0x35, 0x38), QColor(0x38, 0x38, 0x3c)};
    }
    return {QColor(0xf2, 0xf2, 0xf4), QColor(0xc9, 0xc9, 0xcd), QColor(0xdc, 0xdc, 0xe0)};
}

QImage paintBar(const QRect& region, const BarLook& look, const std::vector<BarPicture>& pictures) {
    if (region.isEmpty()) return {};
    QImage canvas(region.size(), QImage::Format_RGB32);
    if (canvas.isNull()) return {};
    const BarColors colors = barColors(look.appearance);
    canvas.fill(colors.background);
    QPainter painter(&canvas);
    painter.translate(-region.topLeft());
    const int lineY = look.edge == BarEdge::Top ? look.height - 1 : 0;
    const QRect line(region.left(), lineY, region.width(), 1);
    painter.fillRect(line, colors.line);
    for (const BarPicture& picture : pictures) {
        if (!picture.cell.intersects(region)) continue;
        painter.fillRect(picture.cell, picture.highlighted ? colors.highlight : colors.background);
        painter.fillRect(line & picture.cell, colors.line);
        const QImage image = tinted(*picture.image, look.appearance);
        // Whole pixels only: source and target are equal in size, so nothing is resampled.
        QRect target(QPoint(), image.size());
        target.moveLeft(picture.cell.left() + (picture.cell.width() - image.width()) / 2);
        target.moveTop((look.height - image.height()) / 2);
        painter.drawImage(target, image, image.rect());
    }
    return canvas;
}

}  // namespace vostel
