#include "app/tests/Program.h"

#include <signal.h>
#include <sys/prctl.h>

#include <QDir>
#include <QFile>

#include "app/ModuleTable.h"
#include "core/DefaultsStore.h"
#include "core/FirstRunDefaults.h"

namespace vostel {

namespace {

constexpr int limit = 30000;  // ms before something counts as never happening

}  // namespace

Home::Home() {
    QDir(folder.path()).mkdir(QStringLiteral("runtime"));
    QFile::setPermissions(runtimeFolder(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QDir().mkpath(settingsFolder());
}

void Home::seed(const QStringList& modulesOn) const {
    DefaultsStore store(settingsFile(), nullptr);
    FirstRunDefaults::apply(store);
    store.set(QStringLiteral("app.hasLaunched"), true);
    for (const QString& id : moduleIds()) {
        store.set(QStringLiteral("module.%1.enabled").arg(id), modulesOn.contains(id));
    }
}

bool Home::isOnDisk(const QString& key) const {
    return DefaultsStore(settingsFile(), nullptr, DefaultsStore::Access::ReadOnly)
        .values()
        .truth(key);
}

void Home::forEach(const std::function<void(qint64, const QString&)>& found) const {
    const QStringList processes =
        QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")});
    for (const QString& id : processes) {
        QFile environment(QStringLiteral("/proc/%1/environ").arg(id));
        QFile name(QStringLiteral("/proc/%1/comm").arg(id));
        if (environment.open(QIODevice::ReadOnly) && name.open(QIODevice::ReadOnly) &&
            environment.readAll().split('\0').contains(tag().toLocal8Bit())) {
            found(id.toLongLong(), QString::fromLocal8Bit(name.readAll().trimmed()));
        }
    }
}

QStringList Home::leftovers() const {
    QStringList found;
    forEach([&](qint64, const QString& command) { found << command; });
    return found;
}

QList<qint64> Home::running() const {
    QList<qint64> found;
    forEach([&](qint64 id, const QString&) {
        const QString file = QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(id));
        if (QFileInfo(file).fileName().startsWith(QStringLiteral("vostel"))) {
            found << id;
        }
    });
    return found;
}

Program::Program(const Home& home, const QStringList& arguments,
                 const std::map<QString, QString>& environment, const QString& executable) {
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    variables.remove(QStringLiteral("QT_QPA_PLATFORM"));  // the program chooses
    variables.insert(QStringLiteral("HOME"), QFileInfo(home.runtimeFolder()).path());
    variables.insert(QStringLiteral("XDG_CONFIG_HOME"), QFileInfo(home.settingsFolder()).path());
    variables.insert(QStringLiteral("XDG_RUNTIME_DIR"), home.runtimeFolder());
    variables.insert(home.tag().section(u'=', 0, 0), home.tag().section(u'=', 1));
    for (const auto& [name, value] : environment) {
        if (value.isEmpty()) {
            variables.remove(name);
        } else {
            variables.insert(name, value);
        }
    }
    process.setProcessEnvironment(variables);
    process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    process.start(executable.isEmpty() ? QStringLiteral(VOSTEL) : executable, arguments);
    process.waitForStarted(limit);
}

Program::~Program() {
    process.kill();
    process.waitForFinished();
}

int Program::stop(int signal) {
    ::kill(static_cast<pid_t>(process.processId()), signal);
    return wait();
}

int Program::wait() {
    if (process.state() != QProcess::NotRunning && !process.waitForFinished(limit)) {
        return -1;
    }
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode()
                                                        : 128 + process.exitCode();
}

void Program::say(const QByteArray& bytes) {
    process.write(bytes);
    process.closeWriteChannel();
}

QString Program::output() {
    return written += QString::fromLocal8Bit(process.readAllStandardOutput());
}

QStringList Program::errors() {
    complained += QString::fromLocal8Bit(process.readAllStandardError());
    return complained.split(u'\n', Qt::SkipEmptyParts);
}

}  // namespace vostel
