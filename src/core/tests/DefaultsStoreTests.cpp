#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <random>
#include <thread>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "core/Background.h"
#include "core/DefaultsStore.h"
#include "core/FirstRunDefaults.h"

namespace vostel {
namespace {

class DefaultsStoreTest : public testing::Test {
  protected:
    QString path() const { return folder.filePath(QStringLiteral("vostel/settings.plist")); }

    void writeFile(const QByteArray& bytes) const {
        QDir().mkpath(folder.filePath(QStringLiteral("vostel")));
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    static QByteArray readFile(const QString& name) {
        QFile file(name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
    }

    QStringList asides() const {
        return QDir(folder.filePath(QStringLiteral("vostel")))
            .entryList({QStringLiteral("*.corrupt-*")}, QDir::Files);
    }

    // What writing leaves behind when the process is killed.
    QStringList leftovers() const {
        return QDir(folder.filePath(QStringLiteral("vostel")))
            .entryList({QStringLiteral(".vostel-*")}, QDir::Files | QDir::Hidden);
    }

    QTemporaryDir folder;
};

TEST_F(DefaultsStoreTest, EveryTypeSurvivesTheFile) {
    {
        DefaultsStore store(path(), nullptr);
        store.set(QStringLiteral("a.bool"), true);
        store.set(QStringLiteral("a.real"), 0.25);
        store.set(QStringLiteral("a.text"), QStringLiteral("größer & <b>"));
        store.set(QStringLiteral("a.empty"), QString());
        store.set(QStringLiteral("a.list"), QStringList{QStringLiteral("x"), QString()});
        store.set(QStringLiteral("a.gone"), 1.0);
        store.remove(QStringLiteral("a.gone"));
    }
    const DefaultsStore again(path(), nullptr);
    const PropertyList& values = again.values();
    EXPECT_EQ(values.boolean(QStringLiteral("a.bool")), true);
    EXPECT_EQ(values.number(QStringLiteral("a.real")), 0.25);
    EXPECT_EQ(values.text(QStringLiteral("a.text")), QStringLiteral("größer & <b>"));
    EXPECT_EQ(values.text(QStringLiteral("a.empty")), QString(QLatin1String("")));
    EXPECT_EQ(values.textList(QStringLiteral("a.list")),
              (QStringList{QStringLiteral("x"), QString()}));
    EXPECT_FALSE(values.contains(QStringLiteral("a.gone")));
    // A value of another type counts as absent.
    EXPECT_FALSE(values.number(QStringLiteral("a.text")));
    EXPECT_FALSE(values.text(QStringLiteral("a.real")));
    EXPECT_FALSE(values.boolean(QStringLiteral("a.real")));
}

TEST_F(DefaultsStoreTest, ForeignTypesAreKeptOnDisk) {
    const QByteArray file =
        "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>"
        "<key>cpu.label</key><integer>-3</integer><key>d</key><data>AAEC</data>"
        "<key>t</key><date>2026-01-02T03:04:05Z</date>"
        "<key>n</key><dict><key>deep</key><array><true/></array></dict>"
        "<key>mixed</key><array><string>a</string><integer>1</integer></array>"
        "</dict></plist>";
    writeFile(file);
    {
        DefaultsStore store(path(), nullptr);
        EXPECT_EQ(store.values().number(QStringLiteral("cpu.label")), -3.0);
        EXPECT_FALSE(store.values().text(QStringLiteral("cpu.label")));
        EXPECT_FALSE(store.values().textList(QStringLiteral("mixed")));
        store.set(QStringLiteral("mine"), true);
    }
    const QByteArray written = readFile(path());
    for (const char* kept : {"<integer>-3</integer>", "AAEC", "2026-01-02T03:04:05Z",
                             "<key>deep</key>", "<key>mixed</key>", "<key>mine</key>"}) {
        EXPECT_TRUE(written.contains(kept)) << kept;
    }
}

TEST_F(DefaultsStoreTest, FilesThatDoNotParseAreSetAside) {
    const QByteArray good = FirstRunDefaults::values().toXml();
    const QByteArray cases[] = {
        QByteArray(),
        good.left(good.size() / 2),
        QByteArray::fromHex("00ff13377f454c46"),
        "bplist00garbage",
        "{\"app.hasLaunched\": true}",
        "{ \"app.hasLaunched\" = 1; }",
        "<plist version=\"1.0\"><array><string>a</string></array></plist>",
    };
    for (const QByteArray& bytes : cases) {
        writeFile(bytes);
        const auto before = asides().size();
        testing::internal::CaptureStderr();
        DefaultsStore store(path(), nullptr);
        const std::string said = testing::internal::GetCapturedStderr();
        EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
        ASSERT_EQ(asides().size(), before + 1) << bytes.left(20).constData();
        EXPECT_TRUE(store.values().keys().isEmpty());
        store.set(QStringLiteral("k"), true);
        EXPECT_TRUE(store.flush());
        // The old bytes are still there, whole.
        bool found = false;
        for (const QString& name : asides()) {
            found = found || readFile(folder.filePath(QStringLiteral("vostel/") + name)) == bytes;
        }
        EXPECT_TRUE(found);
    }
}

TEST_F(DefaultsStoreTest, FilesThatCannotBeReplacedAreLeftAlone) {
    const QByteArray good = FirstRunDefaults::values().toXml();
    writeFile(good);
    ASSERT_EQ(chmod(QFile::encodeName(path()).constData(), 0444), 0);
    testing::internal::CaptureStderr();
    {
        DefaultsStore store(path(), nullptr);
        EXPECT_EQ(store.values().text(QStringLiteral("cpu.label")), QStringLiteral("CPU"));
        store.set(QStringLiteral("cpu.label"), QStringLiteral("mine"));
        store.set(QStringLiteral("cpu.label"), QStringLiteral("mine again"));
        EXPECT_FALSE(store.flush());
        EXPECT_EQ(store.values().text(QStringLiteral("cpu.label")), QStringLiteral("mine again"));
    }
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    EXPECT_EQ(readFile(path()), good);

    // A folder where the file should be: nothing can be read or written, and the program goes on.
    const QString occupied = folder.filePath(QStringLiteral("occupied"));
    QDir().mkpath(occupied + QStringLiteral("/inside"));
    testing::internal::CaptureStderr();
    DefaultsStore store(occupied, nullptr);
    store.set(QStringLiteral("k"), true);
    EXPECT_FALSE(store.flush());
    EXPECT_FALSE(testing::internal::GetCapturedStderr().empty());
    EXPECT_TRUE(QDir(occupied + QStringLiteral("/inside")).exists());
}

TEST_F(DefaultsStoreTest, ASymbolicLinkStaysOne) {
    const QString target = folder.filePath(QStringLiteral("dotfiles.plist"));
    writeFile("");
    QFile::remove(path());
    QFile(target).open(QIODevice::WriteOnly);
    ASSERT_TRUE(QFile::link(target, path()));
    QFile::remove(target);  // dangling at first
    DefaultsStore store(path(), nullptr);
    store.set(QStringLiteral("k"), true);
    EXPECT_TRUE(store.flush());
    EXPECT_TRUE(QFileInfo(path()).isSymLink());
    EXPECT_TRUE(readFile(target).contains("<key>k</key>"));
}

// A process writes numbered states and is killed at a random moment: the file always parses, and
// its two keys belong to the same state.
TEST_F(DefaultsStoreTest, KilledWhileWriting) {
    std::mt19937 random(20260101);
    int survivors = 0;
    qsizetype abandoned = 0;
    for (int round = 0; round < 25; ++round) {
        const pid_t child = fork();
        if (child == 0) {
            DefaultsStore store(path(), nullptr);
            for (int i = 0; i < 500; ++i) {
                store.set(QStringLiteral("first"), static_cast<double>(i));
                store.set(QStringLiteral("filler"), QString(4000, QChar(u'a' + i % 26)));
                store.set(QStringLiteral("second"), static_cast<double>(i));
                store.flush();
            }
            _exit(0);
        }
        usleep(std::uniform_int_distribution<useconds_t>(500, 40000)(random));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        abandoned += leftovers().size();
        if (!QFileInfo::exists(path())) {
            continue;
        }
        ++survivors;
        const DefaultsStore store(path(), nullptr);
        EXPECT_EQ(leftovers(), QStringList());
        const auto first = store.values().number(QStringLiteral("first"));
        ASSERT_TRUE(first.has_value());
        ASSERT_EQ(first, store.values().number(QStringLiteral("second")));
    }
    EXPECT_GT(survivors, 5);  // else the test showed nothing
    EXPECT_GT(abandoned, 0);
    EXPECT_TRUE(asides().isEmpty());
}

// Catches cleaning up that takes what another process is writing, or what is not ours.
TEST_F(DefaultsStoreTest, OnlyAbandonedFilesOfOursAreRemoved) {
    writeFile(FirstRunDefaults::values().toXml());
    const QDir here(folder.filePath(QStringLiteral("vostel")));
    for (const char* name : {".vostel-abandn", ".vostel-locked", ".vostel-foreig",
                             ".vostel-longer7", "com.vostel.app.plist.backup"}) {
        ASSERT_TRUE(QFile(here.filePath(QLatin1String(name))).open(QIODevice::WriteOnly));
    }
    ASSERT_TRUE(here.mkdir(QStringLiteral(".vostel-folder")));
    ASSERT_TRUE(QFile::link(path(), here.filePath(QStringLiteral(".vostel-symlnk"))));
    QStringList kept{QStringLiteral(".vostel-folder"),
                     QStringLiteral(".vostel-locked"),
                     QStringLiteral(".vostel-longer7"),
                     QStringLiteral(".vostel-symlnk"),
                     QStringLiteral("com.vostel.app.plist.backup"),
                     QStringLiteral("settings.plist")};
    if (chown(QFile::encodeName(here.filePath(QStringLiteral(".vostel-foreig"))).constData(), 65534,
              65534) == 0) {  // only root can give files away
        kept.insert(1, QStringLiteral(".vostel-foreig"));
    }
    const int lock = open(
        QFile::encodeName(here.filePath(QStringLiteral(".vostel-locked"))).constData(), O_RDONLY);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    const DefaultsStore store(path(), nullptr);
    EXPECT_EQ(here.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name)
                  .join(u' ')
                  .toStdString(),
              kept.join(u' ').toStdString());
    close(lock);
}

// Catches a folder that cannot be looked into, and the like, taken for a first run: its defaults
// would later be written over the user's file.
TEST_F(DefaultsStoreTest, OnlyAMissingFileIsNoFile) {
    const auto in = [this](const char* name) { return folder.filePath(QLatin1String(name)); };
    QDir().mkpath(in("folder"));
    QFile(in("file")).open(QIODevice::WriteOnly);
    QFile::link(in("loop"), in("loop"));
    QFile::link(in("nowhere"), in("dangling"));
    ASSERT_EQ(mkfifo(QFile::encodeName(in("pipe")).constData(), 0600), 0);
    const struct {
        QString path;
        const char* error;  // null: there is none
    } rows[] = {
        {in("none"), nullptr},
        {in("none/below"), nullptr},
        {in("dangling"), nullptr},
        {in("folder"), "no ordinary file"},
        {in("pipe"), "no ordinary file"},
        {in("loop"), "symbolic links"},
        {in("file/below"), "Not a directory"},
        {folder.filePath(QString(300, u'x')), "too long"},
    };
    for (const auto& row : rows) {
        DefaultsStore store(row.path, nullptr);
        EXPECT_EQ(store.isUnreadable(), row.error != nullptr) << row.path.toStdString();
        EXPECT_TRUE(store.problem().contains(QLatin1String(row.error)))
            << store.problem().toStdString();
        if (row.error != nullptr) {
            store.set(QStringLiteral("k"), true);
            EXPECT_FALSE(store.flush());
        }
    }
    EXPECT_TRUE(QFileInfo(in("loop")).isSymLink());
    EXPECT_FALSE(QFileInfo::exists(in("nowhere")));

    // A folder that an ordinary user may not look into.
    const QByteArray good = FirstRunDefaults::values().toXml();
    writeFile(good);
    const QByteArray closed = QFile::encodeName(in("vostel"));
    ASSERT_EQ(chmod(closed.constData(), 0), 0);
    const pid_t child = fork();
    if (child == 0) {
        if (geteuid() == 0 && setresuid(65534, 65534, 65534) != 0) {
            _exit(3);
        }
        DefaultsStore store(path(), nullptr);
        store.set(QStringLiteral("k"), true);
        const bool isLeftAlone = !store.flush() && store.isUnreadable() &&
                                 store.problem().contains(QStringLiteral("Permission denied"));
        _exit(isLeftAlone ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    ASSERT_EQ(chmod(closed.constData(), 0700), 0);
    EXPECT_EQ(readFile(path()), good);
    EXPECT_EQ(leftovers(), QStringList());
}

// Catches settings written over a file that came after the start: with a home that was mounted
// late, from another machine.
TEST_F(DefaultsStoreTest, AFileThatThisRunDoesNotKnowStays) {
    const QByteArray mine = FirstRunDefaults::values().toXml();
    const QByteArray theirs = PropertyList().toXml();
    const QString other = folder.filePath(QStringLiteral("other"));
    const auto replaceWith = [&](const QByteArray& bytes) {
        QFile file(other);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.close();
        ASSERT_EQ(
            rename(QFile::encodeName(other).constData(), QFile::encodeName(path()).constData()), 0);
    };
    const struct {
        const char* what;
        bool wasThere;
        bool wrote;  // this run itself, before it happens
        std::function<void()> happens;
        bool isForeign;
    } rows[] = {
        {"comes later", false, false, [&] { writeFile(theirs); }, true},
        {"comes later with what was written", false, false, [&] { writeFile(mine); }, true},
        {"is replaced", true, false, [&] { replaceWith(theirs); }, true},
        {"is replaced after a write", true, true, [&] { replaceWith(theirs); }, true},
        {"is written in its place", true, true, [&] { writeFile(theirs); }, true},
        {"is damaged", true, false, [&] { writeFile("{"); }, true},
        {"becomes a copy of itself", true, false, [&] { replaceWith(mine); }, false},
        {"goes", true, true, [&] { QFile::remove(path()); }, false},
        {"stays", true, true, [] {}, false},
    };
    for (const auto& row : rows) {
        QFile::remove(path());
        if (row.wasThere) {
            writeFile(mine);
        }
        DefaultsStore store(path(), nullptr);
        int found = 0;
        QObject::connect(&store, &DefaultsStore::foreignFileFound, [&] { ++found; });
        if (row.wrote) {
            store.set(QStringLiteral("k"), 1.0);
            ASSERT_TRUE(store.flush()) << row.what;
        }
        row.happens();
        const QByteArray before = readFile(path());
        store.set(QStringLiteral("k"), 2.0);
        for (int wait = 0; wait < 200 && found == 0 && readFile(path()) == before; ++wait) {
            QTest::qWait(10);
        }
        EXPECT_EQ(found, row.isForeign ? 1 : 0) << row.what;
        EXPECT_EQ(store.problem().isEmpty(), !row.isForeign) << row.what;
        EXPECT_EQ(store.flush(), !row.isForeign) << row.what;
        EXPECT_EQ(store.exchange(PropertyList()).has_value(), row.isForeign) << row.what;
        EXPECT_EQ(readFile(path()) == before, row.isForeign) << row.what;
        EXPECT_EQ(leftovers(), QStringList()) << row.what;
    }
}

// Catches a change that is given up because it could not be saved at once.
TEST_F(DefaultsStoreTest, ASaveThatFailedIsTriedAgain) {
    Background background;
    DefaultsStore store(path(), &background);
    const QString blocked = folder.filePath(QStringLiteral("vostel"));
    ASSERT_TRUE(QFile(blocked).open(QIODevice::WriteOnly));  // where the folder should be
    int changes = 0;
    QObject::connect(&store, &DefaultsStore::problemChanged, [&] { ++changes; });
    store.set(QStringLiteral("k"), true);
    EXPECT_TRUE(QTest::qWaitFor([&] { return changes == 1; }, 20000));
    EXPECT_TRUE(store.problem().contains(QStringLiteral("Not a directory")))
        << store.problem().toStdString();
    QFile::remove(blocked);
    EXPECT_TRUE(QTest::qWaitFor([&] { return changes == 2; }, 20000));
    EXPECT_EQ(store.problem(), QString());
    EXPECT_TRUE(readFile(path()).contains("<key>k</key>"));

    // Made read-only while the program runs, and writable again.
    ASSERT_EQ(chmod(QFile::encodeName(path()).constData(), 0400), 0);
    store.set(QStringLiteral("later"), true);
    EXPECT_TRUE(QTest::qWaitFor([&] { return changes == 3; }, 20000));
    EXPECT_FALSE(readFile(path()).contains("later"));
    ASSERT_EQ(chmod(QFile::encodeName(path()).constData(), 0600), 0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return changes == 4; }, 20000));
    EXPECT_TRUE(readFile(path()).contains("later"));
}

// The main thread hangs: nothing here runs its event loop, and what waits there to be written is
// written all the same.
TEST_F(DefaultsStoreTest, AnotherThreadKeepsWhatTheMainThreadHasNotWritten) {
    Background background;
    DefaultsStore store(path(), &background);
    for (const double value : {1.0, 2.0}) {
        store.set(QStringLiteral("a.real"), value);
        std::thread([&] { store.flushFromElsewhere(); }).join();
        EXPECT_EQ(DefaultsStore(path(), nullptr).values().number(QStringLiteral("a.real")), value);
    }
    EXPECT_EQ(chmod(QFile::encodeName(path()).constData(), 0400), 0);
    DefaultsStore readOnly(path(), &background);
    readOnly.set(QStringLiteral("a.real"), 3.0);
    std::thread([&] { readOnly.flushFromElsewhere(); }).join();
    EXPECT_EQ(DefaultsStore(path(), nullptr).values().number(QStringLiteral("a.real")), 2);
}

TEST_F(DefaultsStoreTest, FirstRunKeepsWhatTheUserHas) {
    DefaultsStore store(path(), nullptr);
    store.set(QStringLiteral("global.labelSize"), 8.0);
    store.set(QStringLiteral("net.label"), true);  // of another type: still the user's
    FirstRunDefaults::apply(store);
    const PropertyList& values = store.values();
    EXPECT_EQ(values.keys().size(), 45);
    EXPECT_EQ(values.number(QStringLiteral("global.labelSize")), 8.0);
    EXPECT_EQ(values.boolean(QStringLiteral("net.label")), true);
    EXPECT_EQ(values.number(QStringLiteral("anthropic.interval")), 900.0);
    EXPECT_EQ(values.boolean(QStringLiteral("module.claude_usage.enabled")), false);
    EXPECT_EQ(values.textList(QStringLiteral("combined.order"))->join(u' '),
              QStringLiteral("memory gpu cpu network"));
    EXPECT_EQ(values.text(QStringLiteral("cpu.color")), QStringLiteral("#00B5FF98"));
}

}  // namespace
}  // namespace vostel
