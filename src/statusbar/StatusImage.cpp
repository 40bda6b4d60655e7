#include "statusbar/StatusImage.h"

#include <QPainter>

namespace vostel {

QImage tinted(const StatusImage& image, Appearance appearance) {
    if (!image.isTemplate) {
        return image.image;
    }
    QImage result = image.image;
    QPainter painter(&result);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(QRectF(QPointF(), image.size),
                     appearance == Appearance::Dark ? Qt::white : Qt::black);
    return result;
}

}  // namespace vostel
