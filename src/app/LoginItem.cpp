#include "app/LoginItem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include "app/updates/InstallLocation.h"
#include "core/AtomicFile.h"
#include "core/Log.h"
#include "monitors/process/DesktopEntry.h"

namespace vostel {

namespace {

const QString fileName = QStringLiteral("/com.vostel.app.desktop");
constexpr qint64 longestEntry = 65536;  // bytes

// Desktops look the first word up as it is written, so a path that needs "%%" cannot stand there.
const QString plainStarter = QStringLiteral("nice -n 0 ");

std::optional<DesktopEntry> entryIn(const QString& path) {
    QFile file(path);
    return file.open(QFile::ReadOnly)
               ? std::optional(parseDesktopEntry(file.read(longestEntry).toStdString()))
               : std::nullopt;
}

// A desktop that switches an entry off leaves it in place and says so in it.
bool isOn(const DesktopEntry& entry) {
    return !entry.hidden && entry.autostart;
}

// Past what plainStarter puts before it; empty where that is no absolute path.
QString programOf(const DesktopEntry& entry) {
    const std::size_t first = !entry.exec.empty() && entry.exec.front() == "nice" ? 3 : 0;
    QString program =
        entry.exec.size() > first ? QString::fromStdString(entry.exec[first]) : QString();
    program.replace(QStringLiteral("%%"), QStringLiteral("%"));
    return QDir::isAbsolutePath(program) ? program : QString();
}

void report(const std::optional<QString>& error) {
    if (error) {
        logLine(QStringLiteral("vostel: Launch at Login change failed: ") + *error);
    }
}

}  // namespace

QString execLine(const QString& program) {
    QString quoted;
    for (const QChar c : program) {
        if (c == u'\\') {
            quoted += QStringLiteral("\\\\\\\\");  // escaped for the quotes, and again as a text
        } else if (c == u'"' || c == u'`' || c == u'$') {
            quoted += QStringLiteral("\\\\") + c;
        } else if (c == u'%') {
            quoted += QStringLiteral("%%");
        } else if (c == u'\n') {
            quoted += QStringLiteral("\\n");
        } else if (c == u'\t') {
            quoted += QStringLiteral("\\t");
        } else {
            quoted += c;
        }
    }
    return (program.contains(u'%') ? plainStarter : QString()) + u'"' + quoted + u'"';
}

QString programOfExec(const QString& line) {
    return programOf(parseDesktopEntry("[Desktop Entry]\nExec=" + line.toStdString()));
}

LoginItem::LoginItem(QString autostartFolder, QString programPath)
    : folder(std::move(autostartFolder)), program(std::move(programPath)) {}

LoginItem LoginItem::ofThisProgram() {
    // Inside a mounted image the program's own path is gone after it quits.
    return {QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                QStringLiteral("/autostart"),
            programFile()};
}

bool LoginItem::isEnabled() const {
    const auto stored = entryIn(folder + fileName);
    return stored && isOn(*stored);
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
        .arg(execLine(program))
        .toUtf8();
}

bool LoginItem::apply(bool enabled) {
    if (enabled != isEnabled()) {
        std::optional<QString> error;
        if (enabled) {
            error = write();
        } else if (QFile file(folder + fileName); !file.remove()) {
            error = file.errorString();
        }
        report(error);
    }
    return isEnabled();
}

void LoginItem::repair() const {
    const auto stored = entryIn(folder + fileName);
    if (!stored || !isOn(*stored)) {
        return;
    }
    const QString started = programOf(*stored);
    if (!started.isEmpty() && !QFileInfo::exists(started)) {
        report(write());
    }
}

std::optional<QString> LoginItem::write() const {
    QDir().mkpath(folder);
    return writeFileAtomically(folder + fileName, entry(), 0644);
}

}  // namespace vostel
