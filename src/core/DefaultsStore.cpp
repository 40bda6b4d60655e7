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

using namespace std::chrono_literals;

constexpr int gatherMilliseconds = 500;
constexpr std::chrono::milliseconds firstRetry = 1s;
constexpr std::chrono::milliseconds lastRetry = 5min;

bool isMarkedReadOnly(const QString& path) {
    struct stat status{};
    return stat(QFile::encodeName(path).constData(), &status) == 0 && (status.st_mode & 0222) == 0;
}

}  // namespace

DefaultsStore::DefaultsStore(QString filePath, Background* writerThread, Access access)
    : path(std::move(filePath)),
      background(writerThread),
      retryWait(firstRetry),
      writer(std::make_shared<Writer>(path)) {
    timer.setSingleShot(true);
    timer.setInterval(gatherMilliseconds);
    retry.setSingleShot(true);
    connect(&timer, &QTimer::timeout, this, &DefaultsStore::writeSoon);
    connect(&retry, &QTimer::timeout, this, &DefaultsStore::writeSoon);
    load(access);
    if (writable) {
        removeLeftovers();
    }
}

DefaultsStore::~DefaultsStore() {
    flush();
}

void DefaultsStore::load(Access access) {
    writable = access == Access::ReadWrite;
    const SettingsFile::Contents contents = writer->file.read();
    switch (contents.state) {
        case SettingsFile::State::Absent:
            break;
        case SettingsFile::State::Unreadable:
            unreadable = true;
            leaveAlone(
                QStringLiteral("The settings in %1 cannot be read (%2)").arg(path, contents.error));
            break;
        case SettingsFile::State::Read:
            parse(contents.bytes);
            break;
    }
}

void DefaultsStore::parse(const QByteArray& bytes) {
    bool notDictionary = false;
    std::optional<PropertyList> parsed = PropertyList::parse(bytes, &notDictionary);
    if (!parsed) {
        if (writable) {
            setAside(notDictionary ? QStringLiteral("holds no dictionary")
                                   : QStringLiteral("is not a property list"));
        }
        return;
    }
    list = std::move(*parsed);
    if (isMarkedReadOnly(path)) {
        leaveAlone(QStringLiteral("The settings in %1 are read-only").arg(path));
    }
}

void DefaultsStore::setAside(const QString& reason) {
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString aside = path + QStringLiteral(".corrupt-") + stamp;
    for (int i = 2; QFileInfo::exists(aside); ++i) {
        aside = QStringLiteral("%1.corrupt-%2-%3").arg(path, stamp).arg(i);
    }
    if (writer->file.setAside(aside)) {
        logLine(QStringLiteral("the settings file %1 %2; it is kept as %3 and the defaults apply")
                    .arg(path, reason, aside));
    } else {
        leaveAlone(
            QStringLiteral("The settings file %1 %2 and cannot be set aside").arg(path, reason));
    }
}

// Nothing is written to the file in this run.
void DefaultsStore::leaveAlone(const QString& why) {
    if (std::exchange(writable, false)) {
        setProblem(QStringLiteral("%1; changes last only until Vostel quits.").arg(why));
    }
}

void DefaultsStore::setProblem(const QString& text) {
    if (problemText != text) {
        problemText = text;
        if (!text.isEmpty()) {
            logLine(text);
        }
        Q_EMIT problemChanged();
    }
}

void DefaultsStore::removeLeftovers() {
    if (background == nullptr) {
        removeAbandonedFiles(path);
        return;
    }
    background->run(
        this,
        [path = path] {
            removeAbandonedFiles(path);
            return true;
        },
        [](bool) {});
}

void DefaultsStore::remove(const QString& key) {
    if (!isExchanged()) {
        const std::lock_guard lock(listMutex);
        list.remove(key);
        changed();
    }
}

void DefaultsStore::copyFrom(const PropertyList& other, const QString& key) {
    if (!isExchanged()) {
        const std::lock_guard lock(listMutex);
        list.copyFrom(other, key);
        changed();
    }
}

std::optional<QString> DefaultsStore::exchange(PropertyList replacement) {
    if (!writable || isExchanged()) {
        return isExchanged() ? QStringLiteral("The settings are being replaced already.")
                             : QStringLiteral("The settings file %1 cannot be written.").arg(path);
    }
    const auto put = [this](PropertyList values, int step) {
        const std::lock_guard lock(listMutex);
        generation += static_cast<quint64>(step);
        return std::exchange(list, std::move(values));
    };
    PropertyList replaced = put(std::move(replacement), 1);
    const SettingsFile::Written written = writeNow();
    if (written.error) {
        put(std::move(replaced), -1);
        if (written.isForeign) {
            report(written);
            stopForForeignFile();
        }
        return written.error;
    }
    timer.stop();
    retry.stop();
    before = std::move(replaced);
    return std::nullopt;
}

void DefaultsStore::undoExchange() {
    if (isExchanged()) {
        {
            const std::lock_guard lock(listMutex);
            list = *std::exchange(before, std::nullopt);
            changed();
        }
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
    if (!writable) {
        return;
    }
    const auto done = [this](const SettingsFile::Written& written) {
        report(written);
        if (written.isForeign) {
            stopForForeignFile();
        }
    };
    retry.stop();
    if (background == nullptr) {
        done(writeNow());
        return;
    }
    dirty = false;
    background->run(
        this,
        [writer = writer, bytes = list.toXml(), generation = generation] {
            return writer->write(bytes, generation);
        },
        done);
}

bool DefaultsStore::flush() {
    timer.stop();
    retry.stop();
    if (!writable) {
        return !dirty;
    }
    const SettingsFile::Written written = writeNow();
    report(written);
    return !written.error;
}

void DefaultsStore::flushFromElsewhere() {
    std::unique_lock lock(listMutex);
    if (writable) {
        const QByteArray bytes = list.toXml();
        const quint64 current = generation;
        lock.unlock();
        writer->write(bytes, current);
    }
}

SettingsFile::Written DefaultsStore::writeNow() {
    const SettingsFile::Written written = writer->write(list.toXml(), generation);
    if (!written.error) {
        dirty = false;
    }
    return written;
}

// Taking the mutex also waits for a write that is under way.
SettingsFile::Written DefaultsStore::Writer::write(const QByteArray& bytes, quint64 generation) {
    const std::lock_guard lock(mutex);
    if (written >= generation) {
        return {};  // this or a later state is on disk already
    }
    SettingsFile::Written result = file.write(bytes);
    if (!result.error) {
        written = generation;
    }
    return result;
}

void DefaultsStore::report(const SettingsFile::Written& written) {
    if (!written.error) {
        retryWait = firstRetry;
        if (!problemText.isEmpty()) {
            logLine(QStringLiteral("the settings are saved again"));
            setProblem({});
        }
        return;
    }
    dirty = true;
    retry.start(retryWait);
    retryWait = std::min(2 * retryWait, lastRetry);
    if (written.isForeign) {
        setProblem(
            QStringLiteral("Another settings file has come to %1 since Vostel started; it stays "
                           "as it is, and changes made here are not saved.")
                .arg(path));
    } else if (problemText.isEmpty()) {
        setProblem(
            QStringLiteral("The settings cannot be saved: %1. Vostel tries again until it works.")
                .arg(*written.error));
    }
}

void DefaultsStore::stopForForeignFile() {
    timer.stop();
    retry.stop();
    if (std::exchange(writable, false)) {
        Q_EMIT foreignFileFound();
    }
}

}  // namespace vostel
