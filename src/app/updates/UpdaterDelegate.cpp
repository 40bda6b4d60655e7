#include "app/updates/UpdaterDelegate.h"

#include "core/Log.h"

namespace vostel {

void UpdaterDelegate::didAbort(const QString& error) const {
    logLine(QStringLiteral("update aborted: ") + error);
}

void UpdaterDelegate::didFinishCheck(const QString& error) const {
    logLine(QStringLiteral("update check finished with error: ") + error);
}

}  // namespace vostel
