#include "core/AtomicFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace vostel {

namespace {

constexpr const char* temporaryName = ".vostel-XXXXXX";

QString failure(const char* what, const QString& path) {
    return QStringLiteral("%1 %2: %3")
        .arg(QLatin1String(what), path, QString::fromLocal8Bit(std::strerror(errno)));
}

bool writeAll(int descriptor, const QByteArray& bytes) {
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t n = write(descriptor, bytes.constData() + done,
                                static_cast<std::size_t>(bytes.size() - done));
        if (n < 0 && errno != EINTR) {
            return false;
        }
        done += n > 0 ? n : 0;
    }
    return true;
}

// What a symbolic link leads to, also when there is nothing yet.
QString targetOf(const QString& path) {
    const QFileInfo info(path);
    if (!info.isSymLink()) {
        return path;
    }
    const QString resolved = info.canonicalFilePath();
    return resolved.isEmpty() ? info.symLinkTarget() : resolved;
}

// The error, or nothing.
std::optional<QString> fillAndRename(int descriptor, const QByteArray& temporary,
                                     const QString& target, const QByteArray& bytes,
                                     const BeforeReplacing& beforeReplacing) {
    struct stat status{};
    if (!writeAll(descriptor, bytes) || fsync(descriptor) != 0 || fstat(descriptor, &status) != 0) {
        return failure("cannot write", target);
    }
    if (beforeReplacing) {
        if (const auto objection = beforeReplacing(status)) {
            return objection;
        }
    }
    if (std::rename(temporary.constData(), QFile::encodeName(target).constData()) != 0) {
        return failure("cannot replace", target);
    }
    return std::nullopt;
}

bool isAbandoned(int descriptor) {
    struct stat status{};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
           status.st_uid == geteuid() && flock(descriptor, LOCK_EX | LOCK_NB) == 0;
}

}  // namespace

std::optional<QString> writeFileAtomically(const QString& path, const QByteArray& bytes,
                                           unsigned mode, const BeforeReplacing& beforeReplacing) {
    const QString target = targetOf(path);
    const QByteArray folder = QFile::encodeName(QFileInfo(target).absolutePath());
    QByteArray temporary = folder + '/' + temporaryName;
    const int descriptor = mkostemp(temporary.data(), O_CLOEXEC);
    if (descriptor < 0) {
        return failure("cannot create a file beside", target);
    }
    // Tells removeAbandonedFiles() that somebody is at work; not every file system knows locks.
    flock(descriptor, LOCK_EX | LOCK_NB);
    // Some file systems know no permissions; elsewhere the file stays as strict as it was made.
    [[maybe_unused]] const int changed = fchmod(descriptor, mode);
    const auto error = fillAndRename(descriptor, temporary, target, bytes, beforeReplacing);
    if (error) {
        unlink(temporary.constData());
    }
    close(descriptor);
    if (error) {
        return error;
    }
    const int folderDescriptor = open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folderDescriptor >= 0) {
        fsync(folderDescriptor);
        close(folderDescriptor);
    }
    return std::nullopt;
}

void removeAbandonedFiles(const QString& path) {
    const QDir folder = QFileInfo(targetOf(path)).absoluteDir();
    QString pattern = QLatin1String(temporaryName);
    pattern.replace(u'X', u'?');
    const QStringList names = folder.entryList({pattern}, QDir::Files | QDir::Hidden);
    for (const QString& name : names) {
        const QByteArray file = QFile::encodeName(folder.filePath(name));
        const int descriptor =
            open(file.constData(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
        if (descriptor >= 0) {
            if (isAbandoned(descriptor)) {
                unlink(file.constData());
            }
            close(descriptor);
        }
    }
}

}  // namespace vostel
