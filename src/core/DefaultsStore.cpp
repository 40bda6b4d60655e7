#include "core/DefaultsStore.h"

#include <sys/stat.h>

#include <utility>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "core/AtomicFile.h"
#include "core/Background.h"
#include "core/Log.h"

namespace vostel {

namespace {

constexpr int gatherMilliseconds = 500;
constexpr qint64 largestFile = 64 << 20;

bool isMarkedReadOnly(const QString& path) {
    struct stat status {};
    return stat(QFile::encodeName(path).constData(), &status) == 0 && (status.st_mode & 0222) == 0;
}

}  // namespace

DefaultsStore::DefaultsStore(QString filePath, Background* writerThread, Access access)
    : path(std::move(filePath)), background(writerThread) {
    timer.setSingleShot(true);
    timer.setInterval(gatherMilliseconds);
    connect(&timer, &QTimer::timeout, this, &DefaultsStore::writeSoon);
    load(access);
}

DefaultsStore::~DefaultsStore() {
    flush();
}

void DefaultsStore::load(Access access) {
    const QFileInfo info(path);
    writable = access == Access::ReadWrite;
    if (!info.exists()) {
        return;  // also a symbolic link whose target is still to come
    }
    QFile file(path);
    if (!info.isFile() || info.size() > largestFile || !file.open(QIODevice::ReadOnly)) {
        if (!writable) {
            return;
        }
        writable = false;
        logLine(QStringLiteral("cannot read the settings in %1 (%2); they stay as they are, and "
                               "changes last only until Vostel quits")
                    .arg(path, file.errorString()));
        return;
    }
    bool notDictionary = false;
    std::optional<PropertyList> parsed = PropertyList::parse(file.readAll(), &notDictionary);
    file.close();
    if (!parsed) {
        if (!writable) {
            return;
        }
        setAside(notDictionary ? QStringLiteral("holds no dictionary")
                               : QStringLiteral("is not a property list"));
        return;
    }
    list = std::move(*parsed);
    if (writable && isMarkedReadOnly(path)) {
        writable = false;
        logLine(QStringLiteral("the settings in %1 are read-only; changes last only until Vostel "
                               "quits")
                    .arg(path));
    }
}

void DefaultsStore::setAside(const QString& reason) {
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString aside = path + QStringLiteral(".corrupt-") + stamp;
    for (int i = 2; QFileInfo::exists(aside); ++i) {
        aside = QStringLiteral("%1.corrupt-%2-%3").arg(path, stamp).arg(i);
    }
    if (QFile::rename(path, aside)) {
        logLine(QStringLiteral("the settings file %1 %2; it is kept as %3 and the defaults apply")
                    .arg(path, reason, aside));
    } else {
        writable = false;
        logLine(QStringLiteral(
                    "the settings file %1 %2 and cannot be set aside; it stays as it is, and "
                    "changes last only until Vostel quits")
                    .arg(path, reason));
    }
}

void DefaultsStore::remove(const QString& key) {
    if (!isExchanged()) {
        list.remove(key);
        changed();
    }
}

void DefaultsStore::copyFrom(const PropertyList& other, const QString& key) {
    if (!isExchanged()) {
        list.copyFrom(other, key);
        changed();
    }
}

std::optional<QString> DefaultsStore::exchange(PropertyList replacement) {
    if (!writable || isExchanged()) {
        return isExchanged() ? QStringLiteral("The settings are being replaced already.")
                             : QStringLiteral("The settings file %1 cannot be written.").arg(path);
    }
    PropertyList replaced = std::exchange(list, std::move(replacement));
    ++generation;
    const auto error = writeNow();
    if (error) {
        list = std::move(replaced);
        --generation;
        return error;
    }
    timer.stop();
    before = std::move(replaced);
    return std::nullopt;
}

void DefaultsStore::undoExchange() {
    if (isExchanged()) {
        list = *std::exchange(before, std::nullopt);
        changed();
        flush();
    }
}

void DefaultsStore::changed() {
    dirty = true;
    ++generation;
    if (writable && !timer.isActive()) {
        timer.start();
    }
}

void DefaultsStore::writeSoon() {
    if (background == nullptr) {
        flush();
        return;
    }
    dirty = false;
    background->run(
        this,
        [writer = writer, path = path, bytes = list.toXml(), generation = generation] {
            return writer->write(path, bytes, generation);
        },
        [this](const std::optional<QString>& error) { report(error); });
}

bool DefaultsStore::flush() {
    timer.stop();
    if (!writable) {
        return !dirty;
    }
    const auto error = writeNow();
    report(error);
    return !error;
}

std::optional<QString> DefaultsStore::writeNow() {
    // Taking the mutex also waits for a write that is under way.
    const std::lock_guard lock(writer->mutex);
    if (writer->written == generation) {
        return std::nullopt;
    }
    QDir().mkpath(QFileInfo(path).absolutePath());
    const auto error = writeFileAtomically(path, list.toXml());
    if (!error) {
        writer->written = generation;
        dirty = false;
    }
    return error;
}

std::optional<QString> DefaultsStore::Writer::write(const QString& path, const QByteArray& bytes,
                                                    quint64 generation) {
    const std::lock_guard lock(mutex);
    if (written >= generation) {
        return std::nullopt;  // a later state is on disk already
    }
    QDir().mkpath(QFileInfo(path).absolutePath());
    auto error = writeFileAtomically(path, bytes);
    if (!error) {
        written = generation;
    }
    return error;
}

void DefaultsStore::report(const std::optional<QString>& error) {
    if (!error) {
        reported = false;
        return;
    }
    dirty = true;
    if (!reported) {
        reported = true;
        logLine(QStringLiteral("cannot save the settings: %1").arg(*error));
    }
}

}  // namespace vostel
