#include "core/Log.h"

#include "platform/LogRing.h"

namespace vostel {

void logLine(const QString& text) {
    writeLogLine(text.toStdString());
}

}  // namespace vostel
