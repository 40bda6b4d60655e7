// Settings out of the real program and into it, and the relaunch that an import ends in.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include "app/AppDelegate.h"
#include "app/ModuleTable.h"
#include "app/SingleInstance.h"
#include "app/tests/Program.h"
#include "statusbar/OffscreenBar.h"
#include "statusbar/tests/PrivateBus.h"

namespace vostel {
namespace {

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<none>");
}

void put(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

// The keys that settings files have, by the type of their values.
struct Keys {
    QStringList truths, numbers, texts, lists;
    QStringList all() const { return truths + numbers + texts + lists; }
};

QStringList words(const char* text) {
    return QString::fromLatin1(text).split(u' ');
}

Keys fileKeys() {
    Keys keys{
        words("app.hasLaunched app.showDock app.slowOnBattery app.checkForUpdates global.mono "
              "cpu.showSingleBar cpu.showPerCoreBars cpu.showGraph cpu.splitCores net.showNumbers "
              "net.includeAll net.lookUpWAN module.network.enabled module.cpu.enabled "
              "module.memory.enabled module.gpu.enabled module.combined.enabled"),
        words("app.barThickness app.lastUpdateCheck app.settingsWidth app.settingsHeight "
              "global.interval global.labelSize combined.spacing"),
        words("app.bar app.barEdge app.barAppearance app.announcedUpdate global.fg global.bg "
              "global.text cpu.ecore net.displayMode net.displayStyle net.upColor "
              "net.interfaceMode"),
        words("app.itemOrder combined.order combined.enabled net.selectedInterfaces")};
    for (const QString& item : words("cpu mem gpu net")) {
        keys.truths << item + QStringLiteral(".mono");
        keys.numbers << item + QStringLiteral(".interval");
        for (const char* name : {".label", ".fg", ".bg", ".text"}) {
            keys.texts << item + QLatin1String(name);
        }
    }
    return keys;
}

// A value of the right type for every key, and one of a later version.
PropertyList everyKey(bool truth, double number, const QString& text) {
    const Keys keys = fileKeys();
    PropertyList list;
    for (const QString& key : keys.truths) {
        list.set(key, truth);
    }
    for (const QString& key : keys.numbers) {
        list.set(key, number);
    }
    for (const QString& key : keys.texts) {
        list.set(key, text);
    }
    for (const QString& key : keys.lists) {
        list.set(key, QStringList{text, QStringLiteral("vostel.cpu")});
    }
    list.set(QStringLiteral("app.hasLaunched"), true);
    list.set(QStringLiteral("of.a.later.version"), text);
    return list;
}

// A date, which no reader takes, for every key.
PropertyList everyTypeWrong() {
    PropertyList wrong;
    for (const QString& key : everyKey(true, 1, QString()).keys()) {
        wrong.copyFrom(PropertyList::parse("<plist version=\"1.0\"><dict><key>" + key.toUtf8() +
                                           "</key><date>2020-01-01T00:00:00Z</date></dict></plist>")
                           .value(),
                       key);
    }
    return wrong;
}

struct TransferTest : testing::Test {
    const PrivateBus bus;
    const Home home;
    const std::map<QString, QString> environment = {
        {QStringLiteral("DISPLAY"), {}},
        {QStringLiteral("WAYLAND_DISPLAY"), {}},
        {QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), bus.address()}};
    const QByteArray first = everyKey(false, 3, QStringLiteral("one")).toXml();
    const QByteArray second = everyKey(true, 2, QStringLiteral("two")).toXml();
    const QString file = home.runtimeFolder() + QStringLiteral("/given.plist");
    const QString exported = home.runtimeFolder() + QStringLiteral("/exported.plist");

    struct Ended {
        int status;
        QString said;
    };

    ~TransferTest() override { EXPECT_TRUE(end()); }

    // Ends every program, also those that no test started itself.
    bool end() const {
        for (const qint64 id : home.running()) {
            ::kill(static_cast<pid_t>(id), SIGTERM);
        }
        return waitUntil([this] { return home.leftovers().isEmpty(); });
    }

    Ended run(const QStringList& arguments, const QByteArray& input = {}) const {
        Program command(home, arguments, environment);
        command.say(input);
        const int status = command.wait();
        EXPECT_LE(command.errors().size(), 1) << command.errors().join(u'\n').toStdString();
        for (const QString& line : command.errors()) {
            EXPECT_TRUE(line.startsWith(QStringLiteral("vostel: "))) << line.toStdString();
        }
        return {status, command.errors().join(u'\n')};
    }
    Ended import() const { return run({QStringLiteral("import"), QStringLiteral("--yes"), file}); }
    QByteArray exportedNow() const {
        EXPECT_EQ(run({QStringLiteral("export"), exported}).status, 0);
        return contents(exported);
    }

    std::unique_ptr<Program> start(const QString& executable = {}) const {
        auto program = std::make_unique<Program>(
            home, QStringList{QStringLiteral("--bar=offscreen")}, environment, executable);
        EXPECT_TRUE(waitUntil([this] { return isReachable(); }))
            << program->errors().join(u'\n').toStdString();
        return program;
    }
    // What the running program answers on the bus; nothing when none does.
    std::optional<QVariant> answers(const QString& method, const QVariantList& arguments) const {
        QDBusConnection own = QDBusConnection::connectToBus(bus.address(), bus.address());
        QDBusMessage call = QDBusMessage::createMethodCall(
            QStringLiteral("com.vostel.app"), QStringLiteral("/com/vostel/app"),
            QStringLiteral("com.vostel.App"), method);
        call.setArguments(arguments);
        const QDBusMessage answer = own.call(call);
        return answer.type() == QDBusMessage::ReplyMessage
                   ? std::optional(answer.arguments().value(0))
                   : std::nullopt;
    }
    bool isReachable() const { return answers(QStringLiteral("ExportSettings"), {}).has_value(); }
    // Whether another process than `old`, and only that one, has taken over.
    bool hasTakenOver(qint64 old) const {
        return waitUntil([&] {
            const auto ids = home.running();
            return ids.size() == 1 && ids.front() != old && isReachable();
        });
    }
    int barWidth() const {
        return QImage(home.runtimeFolder() + QStringLiteral("/vostel-bar.png")).width();
    }
    qsizetype descriptors() const {
        return QDir(QStringLiteral("/proc/%1/fd").arg(home.running().value(0)))
            .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
            .size();
    }
};

}  // namespace

// Catches a key that is lost, one that the old process writes back, and a relaunch that does not
// come or comes twice.
TEST_F(TransferTest, EveryKeyComesBackThroughARelaunch) {
    put(home.settingsFile(), first);
    const auto old = start();
    ASSERT_TRUE(waitUntil([this] { return barWidth() > 0; }));
    const int empty = barWidth();
    EXPECT_EQ(exportedNow(), first);
    put(file, second);
    EXPECT_EQ(import().said, QString());
    EXPECT_EQ(old->wait(), 0);
    ASSERT_TRUE(hasTakenOver(old->id()));
    EXPECT_EQ(contents(home.settingsFile()), second);
    EXPECT_EQ(exportedNow(), second);
    EXPECT_TRUE(waitUntil([&] { return barWidth() > empty; }));  // the items were off before
    // It holds the lock that the old one had. (Over the bus it would open its settings window.)
    auto alone = environment;
    alone[QStringLiteral("DBUS_SESSION_BUS_ADDRESS")] = QString();
    Program another(home, {}, alone);
    EXPECT_EQ(another.wait(), 0);
    EXPECT_TRUE(another.output().contains(QStringLiteral("already running")));
    EXPECT_EQ(old->errors(), QStringList());
    ASSERT_TRUE(end());
    EXPECT_EQ(contents(home.settingsFile()), second);

    // And back, with no program that runs: there is nothing to start then.
    put(file, first);
    EXPECT_EQ(
        run({QStringLiteral("import"), QStringLiteral("--yes"), QStringLiteral("-")}, first).said,
        QString());
    EXPECT_EQ(exportedNow(), first);
    EXPECT_EQ(home.running(), QList<qint64>());
}

TEST_F(TransferTest, WhatCannotBeUsedChangesNothing) {
    const PropertyList wrong = everyTypeWrong();
    const QString notValid = QStringLiteral("That file isn’t a valid Vostel settings file.");
    const struct {
        const char* what;
        QByteArray bytes;
        QString said;
    } rows[] = {
        {"a list", "<plist version=\"1.0\"><array/></plist>", notValid},
        {"nonsense", QByteArray(10 << 20, 'x'), notValid},
        {"every type wrong", wrong.toXml(),  // but that of the key that only a later version knows
         QStringLiteral("“%1” and %2 more").arg(wrong.keys().front()).arg(wrong.keys().size() - 2)},
    };
    put(home.settingsFile(), first);
    for (const bool isRunning : {false, true}) {
        const auto program = isRunning ? start() : nullptr;
        const auto ids = home.running();
        for (const auto& row : rows) {
            put(file, row.bytes);
            const Ended ended = import();
            EXPECT_EQ(ended.status, 1) << row.what;
            EXPECT_TRUE(ended.said.contains(row.said)) << ended.said.toStdString();
            EXPECT_EQ(contents(home.settingsFile()), first) << row.what;
            if (isRunning) {  // which looks for itself
                const auto answer = answers(QStringLiteral("ImportSettings"), {row.bytes});
                EXPECT_TRUE(answer && answer->toString().contains(row.said)) << row.what;
            }
        }
        QFile::remove(file);
        EXPECT_TRUE(import().said.contains(QStringLiteral("No such file")));
        put(file, second);
        EXPECT_EQ(run({QStringLiteral("import"), file}).status, 2);  // nobody to ask
        EXPECT_EQ(contents(home.settingsFile()), first);
        EXPECT_EQ(home.running(), ids);
    }
}

// Catches a reader that tells nobody what it takes.
TEST_F(TransferTest, EveryReaderSaysWhatItTakes) {
    AppServices services(makeLinuxPlatform(SystemRoots::ofThisMachine()), home.settingsFile(),
                         DefaultsStore::Access::ReadOnly);
    ItemOrder order(services.defaults, itemNames());
    OffscreenBar bar(order);
    const AppDelegate delegate(services, bar);
    QStringList known;
    for (const auto& [key, holds] : services.defaults.known()) {
        known << key;
        EXPECT_FALSE(holds(everyTypeWrong(), key)) << key.toStdString();
        EXPECT_TRUE(holds(everyKey(true, 1, QString()), key)) << key.toStdString();
    }
    QStringList expected = fileKeys().all();
    expected.sort();
    EXPECT_EQ(known, expected) << known.join(u' ').toStdString();
}

// Catches an export that import refuses: the store may hold values that no reader takes.
TEST_F(TransferTest, EveryExportComesBackIn) {
    PropertyList stored = everyTypeWrong();
    stored.set(QStringLiteral("cpu.label"), QStringLiteral("kept"));
    for (const bool isRunning : {false, true}) {
        put(home.settingsFile(), stored.toXml());
        const auto program = isRunning ? start() : nullptr;
        ASSERT_EQ(Program(home, {QStringLiteral("export"), file}, environment).wait(), 0);
        const auto settings = PropertyList::parse(contents(file));
        ASSERT_TRUE(settings);
        EXPECT_EQ(settings->text(QStringLiteral("cpu.label")), QStringLiteral("kept"));
        EXPECT_TRUE(settings->contains(QStringLiteral("of.a.later.version")));
        EXPECT_FALSE(settings->contains(QStringLiteral("combined.order")));
        EXPECT_EQ(import().said, QString());
        EXPECT_TRUE(!isRunning || hasTakenOver(program->id()));
        EXPECT_EQ(contents(home.settingsFile()), contents(file));
    }
}

TEST_F(TransferTest, ImportsRightAfterEachOther) {
    put(home.settingsFile(), first);
    const auto old = start();
    const auto before = descriptors();
    for (const QByteArray& bytes : {second, first, first, second}) {
        put(file, bytes);
        const qint64 id = home.running().value(0);
        EXPECT_EQ(import().said, QString());
        ASSERT_TRUE(hasTakenOver(id));
        EXPECT_EQ(exportedNow(), bytes);
    }
    // What one process hands to the next does not pile up.
    put(file, first);
    EXPECT_EQ(import().said, QString());
    EXPECT_TRUE(waitUntil([&] { return descriptors() <= before; }))
        << descriptors() << " " << before;

    // Also while the program is still starting again.
    for (const QByteArray& bytes : {second, first, second, first}) {
        put(file, bytes);
        EXPECT_EQ(import().said, QString());
    }
    EXPECT_TRUE(waitUntil([&] { return home.running().size() == 1 && isReachable(); }));
    EXPECT_EQ(exportedNow(), first);

    // At the same time: one program is left, with the settings of one of them.
    Program one(home, {QStringLiteral("import"), QStringLiteral("--yes"), file}, environment);
    Program two(home, {QStringLiteral("import"), QStringLiteral("--yes"), file}, environment);
    one.wait();
    two.wait();
    EXPECT_TRUE(waitUntil([&] { return home.running().size() == 1; }));
    EXPECT_EQ(exportedNow(), first);
}

// Catches a run that writes over the file of a home that was mounted after its start, or goes on
// with its own settings.
TEST_F(TransferTest, AFolderMountedLaterIsReadAndNotWrittenOver) {
    ASSERT_EQ(geteuid(), 0u) << "the mount of this test needs root";
    const QString late = home.runtimeFolder() + QStringLiteral("/late");
    ASSERT_TRUE(QDir().mkdir(late));
    const QString lateFile = late + QStringLiteral("/com.vostel.app.plist");
    put(lateFile, second);
    // In a mount namespace of its own.
    const QString script = home.runtimeFolder() + QStringLiteral("/start");
    put(script, "#!/bin/sh\nexec unshare -m " VOSTEL " \"$@\"\n");
    QFile::setPermissions(script, QFile::ReadOwner | QFile::ExeOwner);
    const auto old = start(script);
    ASSERT_TRUE(waitUntil([this] { return home.isOnDisk(QStringLiteral("app.hasLaunched")); }));
    const QByteArray before = contents(home.settingsFile());
    QProcess mount;
    mount.start(QStringLiteral("nsenter"),
                QStringList{QStringLiteral("-m"), QStringLiteral("-t"), QString::number(old->id()),
                            QStringLiteral("mount"), QStringLiteral("--bind"), late,
                            home.settingsFolder()});
    ASSERT_TRUE(mount.waitForFinished());
    ASSERT_EQ(mount.exitCode(), 0) << mount.readAllStandardError().toStdString();
    put(file, first);
    EXPECT_TRUE(import().said.contains(QStringLiteral("another file has come")));
    EXPECT_EQ(old->wait(), 0);
    ASSERT_TRUE(hasTakenOver(old->id()));
    EXPECT_TRUE(old->errors().join(u' ').contains(QStringLiteral("Another settings file")));
    EXPECT_EQ(contents(lateFile), second);
    EXPECT_EQ(contents(home.settingsFile()), before);
    EXPECT_EQ(exportedNow(), second);
    // The new one knows the file, and writes it.
    EXPECT_EQ(import().said, QString());
    EXPECT_EQ(contents(lateFile), first);
}

// A program that holds the lock and is not on the bus yet, or not any more, as between two imports.
TEST_F(TransferTest, WaitsForAProgramThatIsJustStartingOrEnding) {
    put(home.settingsFile(), first);
    put(file, second);
    const QStringList arguments = {QStringLiteral("import"), QStringLiteral("--yes"), file};
    const BusLink link(bus.address());
    ASSERT_TRUE(waitUntil([&] { return link.isOpen(); }));
    for (const bool isStarting : {true, false}) {
        auto holder = std::make_unique<SingleInstance>(home.runtimeFolder());
        ASSERT_TRUE(holder->acquire());
        Program command(home, arguments, environment);
        QElapsedTimer waited;
        waited.start();
        waitUntil([&] { return waited.hasExpired(1500); });  // it has asked by now
        EXPECT_TRUE(command.isRunning()) << command.errors().join(u'\n').toStdString();
        QByteArray given;
        if (isStarting) {
            holder->takeSettings = [&](const QByteArray& bytes, const auto& done) {
                given = bytes;
                done(QString());
            };
            holder->listen(link);
        } else {
            holder.reset();
        }
        EXPECT_TRUE(waitUntil([&] { return !command.isRunning(); }));
        EXPECT_EQ(command.wait(), 0);
        EXPECT_EQ(given, isStarting ? second : QByteArray());
        EXPECT_EQ(contents(home.settingsFile()), isStarting ? first : second);
        if (holder) {
            holder->fallSilent();
        }
    }
}

TEST_F(TransferTest, ARelaunchThatFailsTakesTheImportBack) {
    const QString copy = home.runtimeFolder() + QStringLiteral("/vostel-copy");
    ASSERT_TRUE(QFile::copy(QStringLiteral(VOSTEL), copy));
    put(home.settingsFile(), first);
    put(file, second);
    const auto old = start(copy);
    for (const char* script : {"#!/bin/sh\nexit 3\n", "#!/bin/sh\nkill -9 $$\n"}) {
        QFile::remove(copy);
        put(copy, script);
        QFile::setPermissions(copy, QFile::ReadOwner | QFile::ExeOwner);
        const Ended ended = import();
        EXPECT_EQ(ended.status, 1) << script;
        EXPECT_TRUE(ended.said.contains(QStringLiteral("could not be started again"))) << script;
        EXPECT_EQ(contents(home.settingsFile()), first) << script;
        EXPECT_EQ(exportedNow(), first) << script;
        EXPECT_TRUE(old->isRunning());
    }
    // A program whose file is gone starts itself once more.
    QFile::remove(copy);
    EXPECT_EQ(import().said, QString());
    EXPECT_EQ(old->wait(), 0);
    EXPECT_TRUE(hasTakenOver(old->id()));
    EXPECT_EQ(contents(home.settingsFile()), second);
}

TEST_F(TransferTest, AnImageIsStartedFromItsFile) {
    // The file of an image stands for the program that it holds.
    const QString image = home.runtimeFolder() + QStringLiteral("/vostel.AppImage");
    put(image, "#!/bin/sh\necho started from the image\nexec " VOSTEL " \"$@\"\n");
    QFile::setPermissions(image, QFile::ReadOwner | QFile::ExeOwner);
    put(home.settingsFile(), first);
    put(file, second);
    auto inImage = environment;
    inImage[QStringLiteral("APPIMAGE")] = image;
    inImage[QStringLiteral("APPDIR")] = QFileInfo(QStringLiteral(VOSTEL)).path();
    Program old(home, {QStringLiteral("--bar=offscreen")}, inImage);
    ASSERT_TRUE(waitUntil([&] { return isReachable(); }));
    EXPECT_EQ(import().said, QString());
    EXPECT_TRUE(hasTakenOver(old.id()));
    EXPECT_TRUE(old.output().contains(QStringLiteral("started from the image")));
}

TEST_F(TransferTest, ARunningProgramThatCannotBeAskedIsNotImportedInto) {
    put(home.settingsFile(), first);
    put(file, second);
    auto alone = environment;
    alone[QStringLiteral("DBUS_SESSION_BUS_ADDRESS")] = QString();
    Program program(home, {QStringLiteral("--bar=offscreen")}, alone);
    ASSERT_TRUE(waitUntil(
        [&] { return program.output().contains(QStringLiteral("The bar is drawn into")); }));
    const Ended ended = import();
    EXPECT_EQ(ended.status, 1);
    EXPECT_TRUE(ended.said.contains(QStringLiteral("cannot be reached")))
        << ended.said.toStdString();
    EXPECT_EQ(contents(home.settingsFile()), first);
    EXPECT_EQ(exportedNow(), first);  // from the file
}

}  // namespace vostel
