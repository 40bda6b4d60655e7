#pragma once

#include <QFontMetricsF>
#include <QString>

namespace vostel {

// `text` as it fits into `width` logical pixels, with one ellipsis at most: a text that came with
// one loses more at the same place, and keeps what stands behind it while there is room for that.
QString elided(const QFontMetricsF& metrics, const QString& text, Qt::TextElideMode mode,
               double width);

}  // namespace vostel
