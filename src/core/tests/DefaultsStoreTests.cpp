#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <random>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

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
        if (!QFileInfo::exists(path())) {
            continue;
        }
        ++survivors;
        const DefaultsStore store(path(), nullptr);
        const auto first = store.values().number(QStringLiteral("first"));
        ASSERT_TRUE(first.has_value());
        ASSERT_EQ(first, store.values().number(QStringLiteral("second")));
    }
    EXPECT_GT(survivors, 5);  // else the test showed nothing
    EXPECT_TRUE(asides().isEmpty());
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
