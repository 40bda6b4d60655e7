#include "app/AppIcon.h"

// Resources of a static library are registered by hand, outside any namespace.
static void registerIcons() {
    Q_INIT_RESOURCE(icons);
}

namespace vostel {

QIcon appIcon() {
    const QIcon installed = QIcon::fromTheme(QStringLiteral("com.vostel.app"));
    if (!installed.isNull()) {
        return installed;
    }
    registerIcons();
    QIcon own;
    for (const int size : {16, 22, 24, 32, 48, 64, 128}) {
        own.addFile(QStringLiteral(":/icons/%1.png").arg(size));
    }
    return own;
}

}  // namespace vostel
