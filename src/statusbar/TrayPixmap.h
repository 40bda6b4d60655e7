#pragma once

#include <vector>

#include <QByteArray>
#include <QDBusArgument>
#include <QImage>
#include <QList>
#include <QMetaType>
#include <QString>

#include "statusbar/StatusImage.h"

namespace vostel {

// One image as the item protocol carries it, D-Bus type (iiay): width, height in device pixels, and
// width * height * 4 bytes A, R, G, B, rows from the top, colours not multiplied by alpha.
struct TrayPixmap {
    int width = 0;
    int height = 0;
    QByteArray bytes;
};

using TrayPixmaps = QList<TrayPixmap>;

// D-Bus type (sa(iiay)ss).
struct TrayToolTip {
    QString iconName;
    TrayPixmaps icon;
    QString title;
    QString text;
};

TrayPixmap toTrayPixmap(const QImage& image);

// The image as pixels for the tray: tinted, and in a square shape padded to a square with
// transparent pixels, so that a square cell never distorts it.
QImage trayImage(const StatusImage& image, const ImageContext& context);

QDBusArgument& operator<<(QDBusArgument& argument, const TrayPixmap& pixmap);
const QDBusArgument& operator>>(const QDBusArgument& argument, TrayPixmap& pixmap);
QDBusArgument& operator<<(QDBusArgument& argument, const TrayToolTip& tip);
const QDBusArgument& operator>>(const QDBusArgument& argument, TrayToolTip& tip);

// Makes the types above known to Qt's D-Bus library. May be called any number of times.
void registerTrayTypes();

}  // namespace vostel

Q_DECLARE_METATYPE(vostel::TrayPixmap)
Q_DECLARE_METATYPE(vostel::TrayPixmaps)
Q_DECLARE_METATYPE(vostel::TrayToolTip)
