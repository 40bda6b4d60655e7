#pragma once

#include <optional>

#include <QColor>
#include <QString>

namespace vostel {

// "#RRGGBBAA" of a colour in sRGB, upper case; "#00C853FF" for an invalid colour. Components are
// rounded to the nearest of 0 ... 255, halves away from zero.
QString hexString(const QColor& color);

// 6 or 8 hexadecimal digits (RRGGBB, RRGGBBAA) with an optional leading "#" and white space
// around; anything else is no colour. 6 digits mean full opacity.
std::optional<QColor> colorFromHex(const QString& text);

}  // namespace vostel
