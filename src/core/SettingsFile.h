#pragma once

#include <sys/stat.h>

#include <optional>
#include <utility>

#include <QByteArray>
#include <QString>

namespace vostel {

// The settings file, and what this run last read from it or wrote to it. Whatever else stands in
// its place by now (its folder was mounted late, another machine's copy came) is never replaced.
// One caller at a time.
class SettingsFile {
  public:
    explicit SettingsFile(QString filePath) : path(std::move(filePath)) {}

    enum class State { Read, Absent, Unreadable };
    struct Contents {
        State state = State::Absent;
        QByteArray bytes;
        QString error;  // why it is unreadable
    };
    // Absent: there is no such file, or its symbolic link leads nowhere yet. Everything else that
    // is no regular file of readable bytes is unreadable.
    Contents read();

    // Renames the file that was read. False when that is not possible.
    bool setAside(const QString& newPath);

    struct Written {
        std::optional<QString> error;
        bool isForeign = false;  // a file that this run does not know is there, and stays
    };
    // Replaces the file as a whole; makes its folder. A file marked read-only is not replaced.
    Written write(const QByteArray& bytes);

  private:
    struct Known {
        struct stat status;
        QByteArray hash;
    };

    void remember(const struct stat& status, const QByteArray& bytes);
    std::optional<QString> objection(bool& isForeign);

    const QString path;
    std::optional<Known> known;  // empty: there was none
};

}  // namespace vostel
