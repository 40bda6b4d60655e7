#include "app/LoginItem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QStandardPaths>

#include "app/updates/InstallLocation.h"
#include "core/AtomicFile.h"
#include "core/Log.h"

namespace vostel {

namespace {

const QString fileName = QStringLiteral("/com.vostel.app.desktop");
constexpr qint64 longestEntry = 65536;  // bytes

// Desktops look the first word up as it is written, so a path that needs "%%" cannot stand there.
const QString plainStarter = QStringLiteral("nice -n 0 ");

using Entry = QMap<QByteArray, QByteArray>;

// The keys of the group "Desktop Entry".
Entry readEntry(const QByteArray& text) {
    Entry entry;
    bool inside = false;
    for (const QByteArray& raw : text.split('\n')) {
        const QByteArray line = raw.trimmed();
        const qsizetype equals = line.indexOf('=');
        if (line.startsWith('[')) {
            inside = line == "[Desktop Entry]";
        } else if (inside && equals > 0 && !line.startsWith('#')) {
            entry.insert(line.left(equals).trimmed(), line.mid(equals + 1).trimmed());
        }
    }
    return entry;
}

// A desktop that switches an entry off leaves it in place and says so in it.
bool isOn(const Entry& entry) {
    return entry.value("Hidden").toLower() != "true" &&
           entry.value("X-GNOME-Autostart-enabled").toLower() != "false";
}

std::optional<Entry> entryIn(const QString& path) {
    QFile file(path);
    return file.open(QFile::ReadOnly) ? std::optional(readEntry(file.read(longestEntry)))
                                      : std::nullopt;
}

void report(const std::optional<QString>& error) {
    if (error) {
        logLine(QStringLiteral("vostel: Launch at Login change failed: ") + *error);
    }
}

QString unescaped(const QString& text) {
    QString result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'\\' && i + 1 < text.size()) {
            const QChar c = text[++i];
            result += c == u'n' ? QChar(u'\n') : c == u't' ? QChar(u'\t') : c;
        } else {
            result += text[i];
        }
    }
    return result;
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
    QString text = unescaped(line);
    if (text.startsWith(plainStarter)) {
        text.remove(0, plainStarter.size());
    }
    const bool quoted = text.startsWith(u'"');
    QString program;
    for (qsizetype i = quoted ? 1 : 0; i < text.size(); ++i) {
        if (text[i] == (quoted ? u'"' : u' ')) {
            break;
        }
        if (quoted && text[i] == u'\\' && i + 1 < text.size()) {
            ++i;
        }
        program += text[i];
    }
    program.replace(QStringLiteral("%%"), QStringLiteral("%"));
    return QDir::isAbsolutePath(program) ? program : QString();
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
    const QString started = programOfExec(QString::fromUtf8(stored->value("Exec")));
    if (!started.isEmpty() && !QFileInfo::exists(started)) {
        report(write());
    }
}

std::optional<QString> LoginItem::write() const {
    QDir().mkpath(folder);
    return writeFileAtomically(folder + fileName, entry(), 0644);
}

}  // namespace vostel
