#include "render/SymbolImage.h"

#include <cmath>

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

// Resources of a static library are registered by hand, outside any namespace.
static void registerSymbols() {
    Q_INIT_RESOURCE(symbols);
}

namespace vostel {

QImage symbolImage(const QString& name, double size, double scale, const QColor& color) {
    registerSymbols();
    const QString path = QStringLiteral(":/symbols/%1.svg").arg(name);
    const double pixels = size * scale;
    if (!(pixels >= 1) || pixels > 4096 || !QFile::exists(path)) {
        return {};
    }
    const int side = static_cast<int>(std::lround(pixels));
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QSvgRenderer(path).render(&painter, QRectF(0, 0, side, side));
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    painter.end();
    image.setDevicePixelRatio(scale);
    return image;
}

}  // namespace vostel
