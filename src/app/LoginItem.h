#pragma once

#include <optional>

#include <QString>

namespace vostel {

// Whether the program starts with the desktop session: an XDG autostart entry, which itself is the
// truth; nothing is kept in the settings.
class LoginItem {
  public:
    // `folder` is that of the user's autostart entries, `program` what the entry starts.
    LoginItem(QString folder, QString program);

    // $XDG_CONFIG_HOME/autostart, and this program, or the image file that it was started from.
    static LoginItem ofThisProgram();

    bool isEnabled() const;
    // Returns whether the item is enabled afterwards. A failure is reported on the log.
    bool apply(bool enabled);

    // Makes an enabled entry whose program is gone (moved, or of an older version) start this one.
    // An entry that starts another copy which is there is left alone.
    void repair() const;

  private:
    QByteArray entry() const;
    std::optional<QString> write() const;  // an error

    QString folder;
    QString program;
};

// A program's path as the Exec line of a desktop entry needs it (Desktop Entry Specification 1.5,
// "The Exec key"), and the program's path in such a line; empty where that is no absolute path.
QString execLine(const QString& program);
QString programOfExec(const QString& line);

}  // namespace vostel
