#pragma once

#include <functional>
#include <optional>

#include <QDBusContext>
#include <QObject>
#include <QString>

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

    // Listens for later starts and commands. Without D-Bus nobody is heard.
    void listen();
    // Gives the D-Bus name back; what was answered until then has been sent when this returns.
    void fallSilent();

    // What the running instance is asked. Nothing when it cannot be reached.
    static bool askToShowSettings();
    static std::optional<QByteArray> askForSettings();  // its settings as an XML property list
    // To take over the settings of a file with these bytes and to start again: the error, or an
    // empty text.
    static std::optional<QString> askToImport(const QByteArray& bytes);

    // What answers them.
    std::function<QByteArray()> settings;
    std::function<void(const QByteArray& bytes, std::function<void(const QString& error)> done)>
        takeSettings;

  public Q_SLOTS:
    Q_SCRIPTABLE void ShowSettings() { Q_EMIT showSettingsRequested(); }
    Q_SCRIPTABLE QByteArray ExportSettings() { return settings ? settings() : QByteArray(); }
    Q_SCRIPTABLE QString ImportSettings(const QByteArray& bytes);

  Q_SIGNALS:
    void showSettingsRequested();

  private:
    void release();

    QString path;
    int descriptor = -1;
};

}  // namespace vostel
