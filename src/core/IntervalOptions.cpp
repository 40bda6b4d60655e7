#include "core/IntervalOptions.h"

namespace vostel {

QString IntervalOptions::label(double seconds) {
    if (seconds == 0.25) {
        return QStringLiteral("¼s");
    }
    if (seconds == 0.5) {
        return QStringLiteral("½s");
    }
    return seconds >= 60 ? QStringLiteral("%1m").arg(static_cast<qint64>(seconds / 60))
                         : QStringLiteral("%1s").arg(static_cast<qint64>(seconds));
}

}  // namespace vostel
