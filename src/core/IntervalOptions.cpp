#include "core/IntervalOptions.h"

#include <algorithm>

namespace vostel {

double IntervalOptions::bounded(double seconds) {
    return seconds > shortest ? std::min(seconds, longest) : shortest;
}

QString IntervalOptions::label(double seconds) {
    seconds = bounded(seconds);
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
