#include "core/ColorText.h"

#include <cmath>

namespace vostel {

QString hexString(const QColor& color) {
    const QColor rgb = color.toRgb();
    if (!rgb.isValid()) {
        return QStringLiteral("#00C853FF");
    }
    const auto byte = [](float component) {
        return static_cast<int>(std::lround(static_cast<double>(component) * 255.0));
    };
    return QString::asprintf("#%02X%02X%02X%02X", byte(rgb.redF()), byte(rgb.greenF()),
                             byte(rgb.blueF()), byte(rgb.alphaF()));
}

std::optional<QColor> colorFromHex(const QString& text) {
    QString digits = text.trimmed();
    if (digits.startsWith(u'#')) {
        digits.remove(0, 1);
    }
    if (digits.size() != 6 && digits.size() != 8) {
        return std::nullopt;
    }
    quint32 value = 0;
    for (QChar c : digits) {
        const int digit = c.unicode() < 128 ? QByteArray(1, c.toLatin1()).toInt(nullptr, 16) : -1;
        const bool isDigit = c.isDigit() || (c.toLower() >= u'a' && c.toLower() <= u'f');
        if (digit < 0 || !isDigit) {
            return std::nullopt;
        }
        value = value * 16 + static_cast<quint32>(digit);
    }
    if (digits.size() == 6) {
        value = value << 8 | 0xff;
    }
    return QColor(value >> 24 & 0xff, value >> 16 & 0xff, value >> 8 & 0xff, value & 0xff);
}

}  // namespace vostel
