// The real program from start to end, without a display.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QImage>
#include <QRegularExpression>

#include "app/ModuleTable.h"
#include "app/tests/Program.h"
#include "statusbar/tests/PrivateBus.h"
#include "statusbar/tests/XServer.h"

namespace vostel {
namespace {

const std::map<QString, QString> noDisplay = {{QStringLiteral("DISPLAY"), {}},
                                              {QStringLiteral("WAYLAND_DISPLAY"), {}}};
constexpr int hang =
    3000;  // ms: an end that takes longer hangs; it should take one second at the most
const QString complaintOfSettings = QStringLiteral("settings");

// Lives once its first line of values is out.
bool isLive(Program& program) {
    static const QRegularExpression values(QStringLiteral("^\\d\\d:\\d\\d:\\d\\d  "),
                                           QRegularExpression::MultilineOption);
    return XServer::until(
               [&] { return program.output().contains(values) || !program.isRunning(); }) &&
           program.isRunning();
}

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// True when some file of the folder holds exactly these bytes.
bool isKept(const Home& home, const QByteArray& bytes) {
    const QStringList names = QDir(home.settingsFolder()).entryList(QDir::Files);
    return std::any_of(names.begin(), names.end(), [&](const QString& name) {
        return contents(home.settingsFolder() + u'/' + name) == bytes;
    });
}

}  // namespace

TEST(StartAndStop, EverySignalThatAsksToEndEndsItCleanly) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        const Home home;
        Program program(home, {}, noDisplay);
        ASSERT_TRUE(isLive(program)) << program.errors().join(u'\n').toStdString();
        EXPECT_EQ(program.stop(signal), 0) << program.errors().join(u'\n').toStdString();
        EXPECT_TRUE(home.isOnDisk(QStringLiteral("app.hasLaunched")));
        EXPECT_EQ(home.leftovers(), QStringList());
        const QImage bar(home.runtimeFolder() + QStringLiteral("/vostel-bar.png"));
        EXPECT_TRUE(
            program.output().contains(home.runtimeFolder() + QStringLiteral("/vostel-bar.png")));
        EXPECT_GT(bar.width(), bar.height());
    }
}

TEST(StartAndStop, WhatTheMachineLacksIsSaidAndLeftOut) {
    const struct {
        const char* bar;
        const char* display;
        const char* wayland;
        const char* bus;
        const char* said;
    } rows[] = {
        {"--bar=dock", "", "", "", "needs an X server"},
        {"--bar=tray", "", "", "", "needs a display"},
        {"--bar=dock", ":4242", "", "", "no X server answers at :4242"},
        {"--bar=dock", "nonsense", "", "", "no X server answers at nonsense"},
        {"--bar=auto", "", "", "unix:path=/nonexistent/bus", "no D-Bus session bus"},
        {"--bar=auto", "", "wayland-7", "", "(package qt6-wayland) is not installed"},
        {"--bar=dock", "", "wayland-7", "", "needs an X server"},
        {"--bar=auto", "", "", "nonsense", "no D-Bus session bus"},
    };
    for (const auto& row : rows) {
        const Home home;
        auto environment = noDisplay;
        environment[QStringLiteral("DISPLAY")] = QString::fromLatin1(row.display);
        environment[QStringLiteral("WAYLAND_DISPLAY")] = QString::fromLatin1(row.wayland);
        environment[QStringLiteral("DBUS_SESSION_BUS_ADDRESS")] = QString::fromLatin1(row.bus);
        Program program(home, {QString::fromLatin1(row.bar)}, environment);
        EXPECT_TRUE(isLive(program)) << row.said;
        EXPECT_EQ(program.stop(SIGTERM), 0) << row.said;
        EXPECT_EQ(program.errors().filter(QString::fromLatin1(row.said)).size(), 1)
            << program.errors().join(u'\n').toStdString();
    }
}

TEST(StartAndStop, SecondStartLeavesTheFirstAlone) {
    const Home home;
    Program first(home, {}, noDisplay);
    ASSERT_TRUE(isLive(first));
    Program second(home, {}, noDisplay);
    EXPECT_EQ(second.wait(), 0);
    EXPECT_TRUE(second.output().contains(QStringLiteral("already running")));
    EXPECT_EQ(first.stop(SIGTERM), 0);
    Program third(home, {}, noDisplay);  // the lock went with its holder
    EXPECT_TRUE(isLive(third));
    EXPECT_EQ(third.stop(SIGKILL), 128 + SIGKILL);
    Program fourth(home, {}, noDisplay);
    EXPECT_TRUE(isLive(fourth));
    EXPECT_EQ(fourth.stop(SIGTERM), 0);
}

// What others could have prepared is not used: the program goes on in a folder of its own, which is
// gone when it ends.
TEST(StartAndStop, FoldersThatOthersCanReachAreNotUsed) {
    const struct {
        const char* what;
        bool isGiven;  // as $XDG_RUNTIME_DIR; else it lies in the temporary folder
        bool isLink;   // to a private folder
        mode_t mode;   // of the folder
        bool isUsed;
    } rows[] = {
        {"private", false, false, 0700, true},       {"open to all", false, false, 0777, false},
        {"readable", false, false, 0755, false},     {"a link", false, true, 0700, false},
        {"given, private", true, false, 0700, true}, {"given, open", true, false, 0777, false},
        {"given, a link", true, true, 0700, false},
    };
    for (const auto& row : rows) {
        const Home home;
        home.seed({});
        const QDir folder(QFileInfo(home.runtimeFolder()).path());
        const QString usual = QStringLiteral("vostel-%1").arg(getuid());
        const QString name = row.isGiven ? QStringLiteral("given") : usual;
        const QString real = row.isLink ? QStringLiteral("victim") : name;
        ASSERT_TRUE(folder.mkdir(real));
        ASSERT_EQ(::chmod(QFile::encodeName(folder.filePath(real)).constData(), row.mode), 0);
        ASSERT_TRUE(!row.isLink || QFile::link(folder.filePath(real), folder.filePath(name)));
        auto environment = noDisplay;
        environment[QStringLiteral("TMPDIR")] = folder.path();
        environment[QStringLiteral("XDG_RUNTIME_DIR")] =
            row.isGiven ? folder.filePath(name) : QString();
        Program program(home, {}, environment);
        EXPECT_TRUE(XServer::until([&] { return program.output().contains(u".png\n"); }))
            << row.what;
        const QString image =
            program.output().section(QStringLiteral("into "), 1).section(u'\n', 0, 0);
        EXPECT_TRUE(XServer::until([&] { return QFile::exists(image); })) << row.what;
        EXPECT_EQ(QFile::exists(folder.filePath(real) + QStringLiteral("/vostel.lock")), row.isUsed)
            << row.what;
        EXPECT_EQ(QDir(folder.filePath(real)).isEmpty(), !row.isUsed) << row.what;
        EXPECT_EQ(program.stop(SIGTERM), 0) << row.what;
        EXPECT_EQ(program.errors().filter(QStringLiteral("not this user's alone")).size(),
                  row.isUsed ? 0 : 1)
            << row.what << ": " << program.errors().join(u'\n').toStdString();
        EXPECT_EQ(folder.entryList({usual + QStringLiteral(".*")}), QStringList()) << row.what;
    }
}

// Who reads the output stops reading, before the program starts or while it runs: a pipe that is
// full. (A write that waits would last for ever.)
TEST(StartAndStop, AFullPipeHoldsUpNeitherTheProgramNorItsEnd) {
    for (const char* stream : {"1", "2"}) {
        for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
            const Home home;
            const QByteArray pipe = QFile::encodeName(home.runtimeFolder()) + "/pipe";
            ASSERT_EQ(mkfifo(pipe.constData(), 0600), 0);
            const int end = open(pipe.constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
            ASSERT_EQ(fcntl(end, F_SETPIPE_SZ, 4096), 4096);
            ASSERT_EQ(write(end, QByteArray(4096, 'x').constData(), 4096), 4096);
            const QString script = QStringLiteral("exec \"$0\" %1>\"$1\"");
            Program program(home,
                            {QStringLiteral("-c"), script.arg(QLatin1String(stream)),
                             QStringLiteral(VOSTEL), QFile::decodeName(pipe)},
                            noDisplay, QStringLiteral("/bin/sh"));
            const QString image = home.runtimeFolder() + QStringLiteral("/vostel-bar.png");
            std::set<QDateTime> times;  // of images: it goes on
            EXPECT_TRUE(XServer::until([&] {
                times.insert(QFileInfo(image).lastModified());
                return times.size() >= 3;
            })) << stream;
            QElapsedTimer ending;
            ending.start();
            EXPECT_EQ(program.stop(signal), 0) << stream << " " << signal;
            EXPECT_LT(ending.elapsed(), hang) << stream << " " << signal;
            EXPECT_TRUE(home.isOnDisk(QStringLiteral("app.hasLaunched")));
            close(end);
        }
    }
}

TEST(StartAndStop, EndsWithWhoReadsItsLines) {
    const Home home;
    Program both(home,
                 {QStringLiteral("-c"), QStringLiteral("(\"$0\"; echo ended $? >&2) | head -2"),
                  QStringLiteral(VOSTEL)},
                 noDisplay, QStringLiteral("/bin/sh"));
    EXPECT_TRUE(XServer::until([&] { return !both.isRunning(); }));
    EXPECT_EQ(both.output().count(u'\n'), 2);
    EXPECT_EQ(both.errors().filter(QStringLiteral("ended")),
              QStringList(QStringLiteral("ended 0")));
    EXPECT_EQ(home.leftovers(), QStringList());
    EXPECT_TRUE(home.isOnDisk(QStringLiteral("app.hasLaunched")));
}

// Nobody would see a window there.
TEST(StartAndStop, WithoutADisplayItSaysWhereTheSettingsAre) {
    const PrivateBus bus;
    const Home home;
    const QString file = home.settingsFile();
    for (const QString& address : {QString(), bus.address()}) {
        QFile::remove(file);
        auto environment = noDisplay;
        environment[QStringLiteral("DBUS_SESSION_BUS_ADDRESS")] = address;
        for (const bool isFirst : {true, false}) {
            Program program(home, {}, environment);
            ASSERT_TRUE(isLive(program));
            EXPECT_EQ(program.output().contains(QStringLiteral("The settings are in ") + file),
                      isFirst);
            Program second(home, {}, environment);
            EXPECT_EQ(second.wait(), 0);
            const QString how =
                address.isEmpty() ? QString() : QStringLiteral(" without a display");
            EXPECT_EQ(second.output(),
                      QStringLiteral("Vostel is already running%1; its settings are in %2\n")
                          .arg(how, file));
            EXPECT_EQ(program.stop(SIGTERM), 0);
        }
    }
}

TEST(StartAndStop, DamagedSettingsAreSaidOnceAndKept) {
    const Home healthy;
    healthy.seed(moduleIds());
    const QByteArray whole = contents(healthy.settingsFile());
    ASSERT_GT(whole.size(), 1000);
    QByteArray binary(5000, '\0');
    for (qsizetype i = 0; i < binary.size(); ++i) {
        binary[i] = static_cast<char>(i * 37 + i / 256);
    }
    const struct {
        const char* what;
        QByteArray bytes;
        mode_t mode;
    } rows[] = {
        {"truncated", whole.left(whole.size() / 2), 0600},
        {"binary", binary, 0600},
        {"binary property list, cut off", "bplist00\xd1\x01\x02", 0600},
        {"empty", {}, 0600},
        {"a list", "<plist version=\"1.0\"><array><true/></array></plist>", 0600},
        {"read-only", whole, 0400},
        {"read-only and damaged", whole.left(77), 0400},
    };
    for (const auto& row : rows) {
        const Home home;
        QFile file(home.settingsFile());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(row.bytes);
        file.close();
        ASSERT_EQ(::chmod(QFile::encodeName(home.settingsFile()).constData(), row.mode), 0);
        Program program(home, {}, noDisplay);
        EXPECT_TRUE(isLive(program)) << row.what;
        EXPECT_EQ(program.stop(SIGTERM), 0) << row.what;
        EXPECT_EQ(program.errors().filter(complaintOfSettings).size(), 1)
            << row.what << ": " << program.errors().join(u'\n').toStdString();
        EXPECT_TRUE(isKept(home, row.bytes)) << row.what;
    }
}

TEST(StartAndStop, ForeignTypesCountAsAbsentAndStay) {
    const QByteArray foreign =
        "<plist version=\"1.0\"><dict><key>cpu.interval</key><string>soon</string>"
        "<key>cpu.color</key><integer>-7</integer><key>cpu.label</key><array><data>AAEC</data></"
        "array>"
        "<key>memory.interval</key><date>2020-01-01T00:00:00Z</date><key>mem.color</key><true/>"
        "<key>module.cpu.enabled</key><string>yes</string><key>app.itemOrder</key><dict/>"
        "<key>app.bar</key><real>3</real><key>global.text</key><data>AAEC</data>"
        "<key>of.a.later.version</key><date>2031-02-03T04:05:06Z</date></dict></plist>";
    const Home home;
    QFile file(home.settingsFile());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(foreign);
    file.close();
    Program program(home, {}, noDisplay);
    ASSERT_TRUE(isLive(program)) << program.errors().join(u'\n').toStdString();
    EXPECT_TRUE(program.output().contains(QStringLiteral("CPU")));
    EXPECT_EQ(program.stop(SIGTERM), 0);
    const QByteArray after = contents(home.settingsFile());  // the first run added to it
    EXPECT_TRUE(home.isOnDisk(QStringLiteral("app.hasLaunched")));
    for (const char* value : {"2031-02-03T04:05:06Z", "<string>soon</string>", "AAEC", "-7"}) {
        EXPECT_TRUE(after.contains(value)) << value << after.constData();
    }
}

}  // namespace vostel

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
