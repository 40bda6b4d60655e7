#include "core/SettingsFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "core/AtomicFile.h"
#include "core/SettingsTransfer.h"

namespace vostel {

namespace {

QString systemError(int number) {
    return QString::fromLocal8Bit(std::strerror(number));
}

QByteArray hashOf(const QByteArray& bytes) {
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

bool isSame(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
           a.st_mtim.tv_sec == b.st_mtim.tv_sec && a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

SettingsFile::Contents readFile(const QString& path, struct stat& status) {
    using State = SettingsFile::State;
    const int descriptor =
        open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0) {
        return errno == ENOENT ? SettingsFile::Contents{}
                               : SettingsFile::Contents{State::Unreadable, {}, systemError(errno)};
    }
    SettingsFile::Contents contents{State::Unreadable, {}, {}};
    if (fstat(descriptor, &status) != 0) {
        contents.error = systemError(errno);
    } else if (!S_ISREG(status.st_mode)) {
        contents.error = QStringLiteral("it is no ordinary file");
    } else if (auto bytes = SettingsTransfer::readAll(descriptor); bytes.value) {
        contents = {State::Read, std::move(*bytes.value), {}};
    } else {
        contents.error = bytes.error;
    }
    close(descriptor);
    return contents;
}

}  // namespace

SettingsFile::Contents SettingsFile::read() {
    struct stat status{};
    Contents contents = readFile(path, status);
    known.reset();
    if (contents.state == State::Read) {
        remember(status, contents.bytes);
    }
    return contents;
}

bool SettingsFile::setAside(const QString& newPath) {
    if (!QFile::rename(path, newPath)) {
        return false;
    }
    known.reset();
    return true;
}

void SettingsFile::remember(const struct stat& status, const QByteArray& bytes) {
    known = Known{status, hashOf(bytes)};
}

SettingsFile::Written SettingsFile::write(const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    Written result;
    struct stat mine{};
    result.error = writeFileAtomically(path, bytes, 0600, [&](const struct stat& status) {
        mine = status;
        return objection(result.isForeign);
    });
    if (!result.error) {
        remember(mine, bytes);
    }
    return result;
}

// Why the file that stands there now must stay.
std::optional<QString> SettingsFile::objection(bool& isForeign) {
    struct stat there{};
    if (stat(QFile::encodeName(path).constData(), &there) != 0) {
        return errno == ENOENT ? std::nullopt : std::optional(systemError(errno));
    }
    if ((there.st_mode & 0222) == 0) {
        return QStringLiteral("%1 is read-only").arg(path);
    }
    if (known && isSame(there, known->status)) {
        return std::nullopt;
    }
    // The same bytes under another number or time are no other file: some file systems number
    // anew whenever they are mounted or a file was not used for a while.
    const Contents contents = readFile(path, there);
    if (known && contents.state == State::Read && hashOf(contents.bytes) == known->hash) {
        return std::nullopt;
    }
    isForeign = contents.state != State::Absent;
    return isForeign ? std::optional(QStringLiteral("another file has come to %1").arg(path))
                     : std::nullopt;
}

}  // namespace vostel
