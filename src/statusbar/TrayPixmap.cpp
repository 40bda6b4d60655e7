#include "statusbar/TrayPixmap.h"

#include <algorithm>

#include <QDBusMetaType>
#include <QPainter>
#include <QtEndian>

namespace vostel {

TrayPixmap toTrayPixmap(const QImage& image) {
    const QImage plain = image.convertToFormat(QImage::Format_ARGB32);
    TrayPixmap result{plain.width(), plain.height(), {}};
    const qsizetype row = qsizetype{4} * plain.width();
    result.bytes.resize(row * plain.height());
    for (int y = 0; y < plain.height(); ++y) {
        qToBigEndian<quint32>(plain.constScanLine(y), plain.width(), result.bytes.data() + y * row);
    }
    return result;
}

QImage trayImage(const StatusImage& image, const ImageContext& context) {
    QImage pixels = tinted(image, context.appearance);
    if (context.shape == ImageShape::Wide || pixels.width() == pixels.height()) return pixels;
    pixels.setDevicePixelRatio(1.0);
    const int side = std::max(pixels.width(), pixels.height());
    QImage square(side, side, QImage::Format_ARGB32_Premultiplied);
    square.fill(Qt::transparent);
    QPainter painter(&square);
    painter.drawImage((side - pixels.width()) / 2, (side - pixels.height()) / 2, pixels);
    return square;
}

QDBusArgument& operator<<(QDBusArgument& argument, const TrayPixmap& pixmap) {
    argument.beginStructure();
    argument << pixmap.width << pixmap.height << pixmap.bytes;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, TrayPixmap& pixmap) {
    argument.beginStructure();
    argument >> pixmap.width >> pixmap.height >> pixmap.bytes;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const TrayToolTip& tip) {
    argument.beginStructure();
    argument << tip.iconName << tip.icon << tip.title << tip.text;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, TrayToolTip& tip) {
    argument.beginStructure();
    argument >> tip.iconName >> tip.icon >> tip.title >> tip.text;
    argument.endStructure();
    return argument;
}

void registerTrayTypes() {
    qDBusRegisterMetaType<TrayPixmap>();
    qDBusRegisterMetaType<TrayPixmaps>();
    qDBusRegisterMetaType<TrayToolTip>();
}

}  // namespace vostel
