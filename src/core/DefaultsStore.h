#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

#include <QObject>
#include <QTimer>

#include "core/PropertyList.h"
#include "core/SettingsFile.h"

namespace vostel {

class Background;

// All preferences: one flat map from text keys to booleans, numbers, texts and lists of text, kept
// as an XML property list in one file. Main thread only.
//
// Changes are gathered for at most half a second and then written as a whole, off the main thread
// (see AtomicFile). flush() and the destructor write at once. What the file holds and this program
// does not know is kept. No state of the file stops the program:
// - it does not parse, or is no dictionary: set aside as "<file>.corrupt-<time>", then as absent;
// - it cannot be read, cannot be set aside, or is marked read-only: left alone, and nothing is
//   written to it for this run;
// - it cannot be written: tried again, at longer and longer intervals;
// - another one than this run knows has come in its place: left alone, and foreignFileFound().
// Each of these is reported once on the log, and is the problem() as long as it lasts.
class DefaultsStore : public QObject {
    Q_OBJECT

  public:
    // ReadOnly: the file is read and never written, moved or complained about, for a command that
    // only looks.
    enum class Access { ReadWrite, ReadOnly };

    // Reads the file. `background` does the writing; without it every write happens at once on the
    // calling thread.
    DefaultsStore(QString path, Background* background, Access access = Access::ReadWrite);
    ~DefaultsStore() override;

    const PropertyList& values() const { return list; }
    const QString& filePath() const { return path; }

    // Whether there is a file that could not be read: then this is no first run.
    bool isUnreadable() const { return unreadable; }
    // Why changes are not saved, as sentences for the user; empty while they are.
    const QString& problem() const { return problemText; }

    // Stores a value (bool, double, QString, QStringList).
    template <typename T>
    void set(const QString& key, const T& value) {
        if (!isExchanged()) {
            const std::lock_guard lock(listMutex);
            list.set(key, value);
            changed();
        }
    }
    void remove(const QString& key);
    // Copies a value from another property list, whatever its type.
    void copyFrom(const PropertyList& other, const QString& key);

    // Writes what is not written yet. False when the file could not be written.
    bool flush();
    // The same on another thread, for a process that must end while its main thread hangs.
    void flushFromElsewhere();

    // Whether a property list holds a value under the key that its reader takes.
    using Holds = bool (*)(const PropertyList& list, const QString& key);
    // Every reader of a key says so, whether or not the store holds it.
    void know(const QString& key, Holds holds) { readers[key] = holds; }
    const std::map<QString, Holds>& known() const { return readers; }

    // Replaces everything at once, in the file too, for the program to start again with: from then
    // on changes are dropped, because whoever read the old values would write them over the new
    // ones. Returns the error, and nothing has changed then.
    std::optional<QString> exchange(PropertyList replacement);
    bool isExchanged() const { return before.has_value(); }
    // Takes the exchange back.
    void undoExchange();

  Q_SIGNALS:
    void problemChanged();
    // Nothing is written any more; the program has to start again to read that file.
    void foreignFileFound();

  private:
    // What the writing thread shares with this object; outlives it while a write is under way.
    struct Writer {
        explicit Writer(const QString& filePath) : file(filePath) {}
        std::mutex mutex;
        SettingsFile file;
        quint64 written = 0;  // generation that the file holds
        SettingsFile::Written write(const QByteArray& bytes, quint64 generation);
    };

    void load(Access access);
    void parse(const QByteArray& bytes);
    void setAside(const QString& reason);
    void leaveAlone(const QString& why);
    void setProblem(const QString& text);
    void removeLeftovers();
    void changed();
    void writeSoon();
    SettingsFile::Written writeNow();
    void report(const SettingsFile::Written& written);
    void stopForForeignFile();

    QString path;
    Background* background;
    PropertyList list;
    std::mutex listMutex;  // for changes, and for a reader on another thread
    QTimer timer;
    QTimer retry;
    std::chrono::milliseconds retryWait{};
    std::shared_ptr<Writer> writer;
    quint64 generation = 0;
    bool dirty = false;
    bool writable = true;
    bool unreadable = false;
    QString problemText;
    std::map<QString, Holds> readers;
    std::optional<PropertyList> before;  // what an exchange replaced
};

}  // namespace vostel
