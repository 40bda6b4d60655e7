#include "core/SettingsTransfer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <QFile>
#include <QFileInfo>

#include "core/AtomicFile.h"
#include "core/DefaultsStore.h"
#include "core/Log.h"

namespace vostel::SettingsTransfer {

namespace {

constexpr unsigned newFile = 0666;
constexpr unsigned usualMask = 022;
constexpr qsizetype chunk = 65536;

Loaded<QByteArray> failed(const QString& why) {
    return {std::nullopt, why};
}

QString systemError(int number) {
    return QString::fromLocal8Bit(std::strerror(number));
}

// proc_pid_status(5). Asking the system call would change the mask for the other threads.
unsigned creationMask() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (status.open(QFile::ReadOnly)) {
        for (const QByteArray& line : status.readAll().split('\n')) {
            if (line.startsWith("Umask:")) {
                return line.mid(6).trimmed().toUInt(nullptr, 8);
            }
        }
    }
    return usualMask;
}

// A link of one's own is followed. One that another user left in a shared folder leads to a file of
// that user's choice.
bool isForeignLink(const QString& path) {
    struct stat found{};
    return lstat(QFile::encodeName(path).constData(), &found) == 0 && S_ISLNK(found.st_mode) &&
           found.st_uid != geteuid() && found.st_uid != 0;
}

// The keys whose values no reader takes.
QStringList keysNotTaken(const PropertyList& settings, const DefaultsStore& store) {
    QStringList wrong;
    for (const QString& key : settings.keys()) {
        const auto reader = store.known().find(key);
        if (reader != store.known().end() && !reader->second(settings, key)) {
            wrong << key;
        }
    }
    return wrong;
}

}  // namespace

Loaded<QByteArray> readFile(const QString& path) {
    const int descriptor =
        open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0) {
        return failed(QStringLiteral("%1: %2").arg(path, systemError(errno)));
    }
    struct stat status{};
    Loaded<QByteArray> result;
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        result =
            failed(S_ISDIR(status.st_mode) ? QStringLiteral("%1 is a folder.").arg(path)
                                           : QStringLiteral("%1 is no ordinary file.").arg(path));
    } else {
        result = readAll(descriptor);
    }
    close(descriptor);
    return result;
}

Loaded<QByteArray> readAll(int descriptor) {
    QByteArray bytes;
    for (;;) {
        const qsizetype before = bytes.size();
        bytes.resize(before + chunk);
        const ssize_t n = read(descriptor, bytes.data() + before, static_cast<std::size_t>(chunk));
        const int error = errno;
        bytes.resize(before + std::max<ssize_t>(n, 0));
        if (n == 0) {
            return {bytes, {}};
        }
        if (n < 0 && error != EINTR) {
            return failed(systemError(error));
        }
        if (bytes.size() > largestFile) {
            return failed(QStringLiteral("The file is larger than %1 MB.").arg(largestFile >> 20));
        }
    }
}

Loaded<PropertyList> parse(const QByteArray& bytes) {
    if (auto settings = PropertyList::parse(bytes)) {
        return {std::move(settings), {}};
    }
    return {std::nullopt, QStringLiteral("That file isn’t a valid Vostel settings file.")};
}

std::optional<QString> objection(const PropertyList& settings, const DefaultsStore& store) {
    const QStringList wrong = keysNotTaken(settings, store);
    if (wrong.isEmpty()) {
        return std::nullopt;
    }
    if (wrong.size() == 1) {
        return QStringLiteral("The value of “%1” is of the wrong type.").arg(wrong.front());
    }
    return QStringLiteral("The values of “%1” and %2 more are of the wrong type.")
        .arg(wrong.front())
        .arg(wrong.size() - 1);
}

PropertyList exported(const PropertyList& settings, const DefaultsStore& store) {
    PropertyList taken = settings;
    for (const QString& key : keysNotTaken(settings, store)) {
        taken.remove(key);
        logLine(QStringLiteral("“%1” is left out of the exported settings: its value is of the "
                               "wrong type")
                    .arg(key));
    }
    return taken;
}

std::optional<QString> writeFile(const QString& path, const QByteArray& bytes) {
    if (const QFileInfo info(path); info.exists() && !info.isFile()) {
        return info.isDir() ? QStringLiteral("%1 is a folder.").arg(path)
                            : QStringLiteral("%1 is no ordinary file.").arg(path);
    }
    if (isForeignLink(path)) {
        return QStringLiteral("%1 is another user's link.").arg(path);
    }
    return writeFileAtomically(path, bytes, newFile & ~creationMask());
}

}  // namespace vostel::SettingsTransfer
