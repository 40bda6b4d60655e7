#include "app/updates/InstallLocation.h"

#include <algorithm>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace vostel {

namespace {

bool isBelow(const QString& path, const QString& folder) {
    return !folder.isEmpty() && path.startsWith(folder + u'/');
}

bool isBelowAny(const QString& path, const QStringList& folders) {
    return std::any_of(folders.begin(), folders.end(),
                       [&](const QString& folder) { return isBelow(path, folder); });
}

}  // namespace

QString programFile(const QString& program, const QString& appImage, const QString& appDir) {
    return !appImage.isEmpty() && isBelow(program, QDir::cleanPath(appDir)) ? appImage : program;
}

QString programFile() {
    return programFile(QCoreApplication::applicationFilePath(), qEnvironmentVariable("APPIMAGE"),
                       qEnvironmentVariable("APPDIR"));
}

QString installLocationHint(const QString& path, bool isAppImage, const QString& home,
                            bool folderWritable) {
    QStringList places{QStringLiteral("/usr"), QStringLiteral("/opt"),
                       home + QStringLiteral("/.local")};
    if (isAppImage) {
        places << home + QStringLiteral("/Applications");
    }
    if (isBelowAny(path, places)) {
        return {};
    }
    const bool temporary =
        isBelowAny(path, {QStringLiteral("/tmp"), QStringLiteral("/var/tmp"),
                          QStringLiteral("/dev/shm"), QStringLiteral("/run/user")});
    const QString image = QStringLiteral("Move Vostel to ~/Applications and reopen it.");
    if (temporary || !folderWritable) {
        return QStringLiteral("Vostel is running from a %1, so it can’t update itself. %2")
            .arg(temporary ? QStringLiteral("temporary copy") : QStringLiteral("read-only folder"),
                 isAppImage ? image : QStringLiteral("Install Vostel and reopen it."));
    }
    return QStringLiteral("Vostel isn’t %1, so it may not be able to update itself in place. %2")
        .arg(isAppImage ? QStringLiteral("in your Applications folder")
                        : QStringLiteral("installed in /usr, /opt or ~/.local"),
             isAppImage ? image : QStringLiteral("Install it there and reopen it."));
}

QString installLocationHint() {
    const QString path = programFile();
    const QFileInfo folder(QFileInfo(path).path());
    return installLocationHint(path, path != QCoreApplication::applicationFilePath(),
                               QDir::homePath(), folder.isWritable());
}

}  // namespace vostel
