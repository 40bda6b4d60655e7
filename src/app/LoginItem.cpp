#include "app/LoginItem.h"

#include <algorithm>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include "core/AtomicFile.h"
#include "core/Log.h"

namespace vostel {

namespace {

const QString fileName = QStringLiteral("/com.vostel.app.desktop");
constexpr qint64 longestEntry = 65536;  // bytes

// A desktop that switches an entry off leaves it in place and says so in it.
bool saysOff(const QByteArray& line) {
    const QByteArray plain = line.trimmed().toLower().replace(' ', "");
    return plain == "hidden=true" || plain == "x-gnome-autostart-enabled=false";
}

}  // namespace

QString execQuoted(const QString& program) {
    QString quoted;
    for (const QChar c : program) {
        if (c == u'\\') {
            quoted += QStringLiteral("\\\\\\\\");  // escaped for the quotes, and again as a text
        } else if (c == u'"' || c == u'`' || c == u'$') {
            quoted += QStringLiteral("\\\\") + c;
        } else if (c == u'%') {
            quoted += QStringLiteral("%%");
        } else {
            quoted += c;
        }
    }
    return u'"' + quoted + u'"';
}

LoginItem::LoginItem(QString autostartFolder, QString programPath)
    : folder(std::move(autostartFolder)), program(std::move(programPath)) {}

LoginItem LoginItem::ofThisProgram() {
    // Inside a mounted image the program's own path is gone after it quits.
    const QString image = qEnvironmentVariable("APPIMAGE");
    return {QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                QStringLiteral("/autostart"),
            image.isEmpty() ? QCoreApplication::applicationFilePath() : image};
}

bool LoginItem::isEnabled() const {
    QFile file(folder + fileName);
    if (!file.open(QFile::ReadOnly)) {
        return false;
    }
    const QList<QByteArray> lines = file.read(longestEntry).split('\n');
    return std::none_of(lines.begin(), lines.end(), saysOff);
}

QByteArray LoginItem::entry() const {
    return QStringLiteral(
               "[Desktop Entry]\n"
               "Type=Application\n"
               "Name=Vostel\n"
               "Comment=Menu-bar system & usage monitor\n"
               "Exec=%1\n"
               "Icon=com.vostel.app\n"
               "Terminal=false\n"
               "X-GNOME-Autostart-enabled=true\n")
        .arg(execQuoted(program))
        .toUtf8();
}

bool LoginItem::apply(bool enabled) {
    const QString path = folder + fileName;
    if (enabled != isEnabled()) {
        std::optional<QString> error;
        if (enabled) {
            QDir().mkpath(folder);
            error = writeFileAtomically(path, entry(), 0644);
        } else if (QFile file(path); !file.remove()) {
            error = file.errorString();
        }
        if (error) {
            logLine(QStringLiteral("vostel: Launch at Login change failed: ") + *error);
        }
    }
    return isEnabled();
}

}  // namespace vostel
