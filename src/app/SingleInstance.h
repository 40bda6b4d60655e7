#pragma once

#include <functional>

#include <QObject>
#include <QString>

namespace vostel {

// One running program per user session: a lock held by the kernel, so that it never goes stale, and
// a D-Bus name over which a second start asks the first to open its settings window.
class SingleInstance : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.vostel.App")

  public:
    // The lock lies in `folder` ($XDG_RUNTIME_DIR).
    explicit SingleInstance(const QString& folder, QObject* parent = nullptr);
    ~SingleInstance() override;

    // True when this process is the one. False when another one holds the lock. A lock that cannot
    // be made (a folder that cannot be written) is reported and does not keep the program from
    // starting.
    bool acquire();
    // Lets go of the lock, for a process that takes over.
    void release();

    // Listens for later starts. Without D-Bus nobody is heard.
    void listen();
    // Asks the running instance to open its settings window; false when it cannot be reached.
    static bool askToShowSettings();

  public Q_SLOTS:
    Q_SCRIPTABLE void ShowSettings() { Q_EMIT showSettingsRequested(); }

  Q_SIGNALS:
    void showSettingsRequested();

  private:
    QString path;
    int descriptor = -1;
};

}  // namespace vostel
