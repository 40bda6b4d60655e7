#include "render/ElidedText.h"

namespace vostel {

QString elided(const QFontMetricsF& metrics, const QString& text, Qt::TextElideMode mode,
               double width) {
    constexpr QChar ellipsis = u'…';
    const qsizetype cut = text.indexOf(ellipsis);
    if (cut < 0 || metrics.horizontalAdvance(text) <= width) {
        return metrics.elidedText(text, mode, width);
    }
    const QString rest = text.mid(cut + 1).remove(ellipsis);
    const double room = width - metrics.horizontalAdvance(rest);
    if (room > 2 * metrics.horizontalAdvance(ellipsis)) {
        return metrics.elidedText(text.left(cut + 1), Qt::ElideRight, room) + rest;
    }
    return metrics.elidedText(text.left(cut) + rest, Qt::ElideRight, width);
}

}  // namespace vostel
