#include "core/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <QFile>
#include <QFileInfo>

namespace vostel {

namespace {

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

}  // namespace

std::optional<QString> writeFileAtomically(const QString& path, const QByteArray& bytes,
                                           unsigned mode) {
    QString target = path;
    if (const QFileInfo info(path); info.isSymLink()) {
        const QString resolved = info.canonicalFilePath();
        target = resolved.isEmpty() ? info.symLinkTarget() : resolved;
    }
    const QByteArray folder = QFile::encodeName(QFileInfo(target).absolutePath());
    QByteArray temporary = QFile::encodeName(target) + ".XXXXXX";
    const int descriptor = mkostemp(temporary.data(), O_CLOEXEC);
    if (descriptor < 0) {
        return failure("cannot create a file beside", target);
    }
    // Some file systems know no permissions; elsewhere the file stays as strict as it was made.
    [[maybe_unused]] const int changed = fchmod(descriptor, mode);
    const bool written = writeAll(descriptor, bytes) && fsync(descriptor) == 0;
    const int writeError = errno;
    const bool closed = close(descriptor) == 0;
    if (!written || !closed) {
        errno = written ? errno : writeError;
        const QString message = failure("cannot write", target);
        unlink(temporary.constData());
        return message;
    }
    if (std::rename(temporary.constData(), QFile::encodeName(target).constData()) != 0) {
        const QString message = failure("cannot replace", target);
        unlink(temporary.constData());
        return message;
    }
    const int folderDescriptor = open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folderDescriptor >= 0) {
        fsync(folderDescriptor);
        close(folderDescriptor);
    }
    return std::nullopt;
}

}  // namespace vostel
