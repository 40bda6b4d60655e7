#pragma once

#include <QColor>
#include <QImage>
#include <QString>

namespace vostel {

// The symbol `name` ("cpu", "gearshape", ...) in one colour, `size` points square at `scale` device
// pixels per point. A null image for a name that does not exist.
QImage symbolImage(const QString& name, double size, double scale, const QColor& color);

}  // namespace vostel
