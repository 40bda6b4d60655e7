#pragma once

#include <functional>
#include <map>

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace vostel {

// The folders of one user. Everything that a program started in them runs can be told from other
// processes.
class Home {
  public:
    Home();

    QString settingsFolder() const { return folder.path() + QStringLiteral("/config/vostel"); }
    QString settingsFile() const {
        return settingsFolder() + QStringLiteral("/com.vostel.app.plist");
    }
    QString runtimeFolder() const { return folder.path() + QStringLiteral("/runtime"); }
    QString tag() const { return QStringLiteral("VOSTEL_TEST_HOME=") + folder.path(); }

    // First-run settings with exactly these modules on.
    void seed(const QStringList& modulesOn) const;
    // A setting as it is on disk now.
    bool isOnDisk(const QString& key) const;
    // Processes that still run and were started by a program of this home.
    QStringList leftovers() const;
    // The process ids of the programs among them, whoever started them.
    QList<qint64> running() const;

  private:
    // Calls `found` with the process id and the command of every process that was started here.
    void forEach(const std::function<void(qint64 id, const QString& command)>& found) const;

    QTemporaryDir folder;
};

// The real program, run in a home of its own.
class Program {
  public:
    // `environment` adds to this process's own; an empty value removes the variable. `executable`
    // is run instead of the program that was built, when given.
    Program(const Home& home, const QStringList& arguments,
            const std::map<QString, QString>& environment = {}, const QString& executable = {});
    ~Program();

    // Sends the signal and waits; see wait().
    int stop(int signal);
    // The exit status; 128 + n when signal n ended it, -1 when it does not end.
    int wait();
    bool isRunning() const { return process.state() == QProcess::Running; }
    qint64 id() const { return process.processId(); }
    // Writes to its standard input and closes it.
    void say(const QByteArray& bytes);

    // What it wrote so far.
    QString output();
    QStringList errors();

  private:
    QProcess process;
    QString written;
    QString complained;
};

}  // namespace vostel
