#pragma once

#include <chrono>
#include <functional>
#include <optional>

#include <QDBusContext>
#include <QObject>
#include <QString>

#include "statusbar/BusLink.h"

namespace vostel {

// One running program per user session: a lock held by the kernel, so that it never goes stale, and
// a D-Bus name over which a second start and the commands reach the first.
class SingleInstance : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.vostel.App")

  public:
    // The lock lies in `folder` ($XDG_RUNTIME_DIR).
    explicit SingleInstance(const QString& folder, QObject* parent = nullptr);
    ~SingleInstance() override;

    // True when this process is the one. False when another one holds the lock. A lock that cannot
    // be made (a folder that cannot be written) is reported and does not keep the program from
    // starting. `inherited`: the descriptor of the lock from the process that hands over, or -1.
    bool acquire(int inherited = -1);
    // The lock's descriptor, for a process that takes over; -1 when there is none.
    int lock() const { return descriptor; }

    // Listens for later starts and commands, also after the bus was restarted; borrows the link.
    // Without D-Bus nobody is heard.
    void listen(const BusLink& bus);
    // Gives the D-Bus name back; what was answered until then has been sent when this returns, for
    // which it waits a second at the most. For the end of the program.
    void fallSilent();

    // Calls `attempt` until it is true: whoever holds the lock may be just starting, starting again
    // or ending, and cannot be asked then. Waits, so it is for commands; not where there is no bus.
    // False when `patience` ran out.
    static bool insist(std::chrono::milliseconds patience, const std::function<bool()>& attempt);

    // What the running instance is asked. Nothing when it cannot be reached.
    // To open its settings window: whether it does, which it cannot without a display.
    static std::optional<bool> askToShowSettings();
    static std::optional<QByteArray> askForSettings();  // its settings as an XML property list
    // To take over the settings of a file with these bytes and to start again: the error, or an
    // empty text.
    static std::optional<QString> askToImport(const QByteArray& bytes);

    // What answers them.
    std::function<bool()> showSettings;
    std::function<QByteArray()> settings;
    std::function<void(const QByteArray& bytes, std::function<void(const QString& error)> done)>
        takeSettings;

  public Q_SLOTS:
    Q_SCRIPTABLE bool ShowSettings() { return showSettings && showSettings(); }
    Q_SCRIPTABLE QByteArray ExportSettings() { return settings ? settings() : QByteArray(); }
    Q_SCRIPTABLE QString ImportSettings(const QByteArray& bytes);

  private:
    void release();
    void takeName();

    QString path;
    int descriptor = -1;
    const BusLink* link = nullptr;
};

}  // namespace vostel
