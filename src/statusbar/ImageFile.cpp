#include "statusbar/ImageFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include <QFile>

namespace vostel {

bool writeImageFile(const QImage& image, const QString& path) {
    const QByteArray target = QFile::encodeName(path);
    const QByteArray temporary = target + ".tmp";
    // What a killed process left, or what somebody put there: a link goes, its target stays.
    unlink(temporary.constData());
    constexpr int anew = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    const int descriptor = open(temporary.constData(), anew, 0666);
    if (descriptor < 0) {
        return false;
    }
    // Nothing is synced: after a power failure the next second brings a new image.
    QFile file;
    const bool written =
        file.open(descriptor, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle) &&
        image.save(&file, "PNG") && file.flush();
    file.close();
    if (written && std::rename(temporary.constData(), target.constData()) == 0) {
        return true;
    }
    unlink(temporary.constData());
    return false;
}

}  // namespace vostel
