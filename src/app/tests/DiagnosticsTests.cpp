// What the program says of sources that it cannot read, and what it shows first, with the program's
// real sources on a machine made up of files.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include "app/AppDelegate.h"
#include "app/Diagnostics.h"
#include "app/ModuleTable.h"
#include "app/StatusCommand.h"
#include "app/settings/SettingsWindow.h"
#include "app/settings/SourcesRow.h"
#include "core/Log.h"
#include "item/ItemModule.h"
#include "platform/tests/GPUTree.h"
#include "statusbar/OffscreenBar.h"
#include "ui/Piece.h"
#include "ui/Popover.h"
#include "ui/settings/TextButton.h"

namespace vostel {
namespace {

const QString dash = QStringLiteral("—");

class DiagnosticsTest : public testing::Test {
  protected:
    // Two processors, half of the memory used, and a GPU known by its clients alone.
    DiagnosticsTest() {
        elapsed.start();
        tree.add({.device = "fdc00000.gpu", .driver = "panthor"});
        move();
        tree.file("proc/meminfo", "MemTotal: 8000000 kB\nMemFree: 4000000 kB\n");
        tree.file("proc/70/comm", "secretgame\n");
        tree.link("proc/70/fd/4", "/dev/dri/renderD128");
        QObject::connect(&mover, &QTimer::timeout, &mover, [this] { move(); });
        mover.start(5);
    }
    // A quarter of the processors' time and half of the GPU's is used.
    void move() const {
        const qint64 now = elapsed.elapsed() + 1000;  // ms
        if (readable) {
            const std::string ticks = digits(now) + " 0 0 " + digits(3 * now) + " 0 0 0 0 0 0\n";
            write("proc/stat", "cpu  1 0 0 1\ncpu0 " + ticks + "cpu1 " + ticks);
        }
        write("proc/70/fdinfo/4", "drm-driver:\tpanthor\ndrm-client-id:\t1\ndrm-engine-panthor:\t" +
                                      digits(now * 500'000) + " ns\n");
    }
    static std::string digits(qint64 number) {
        return QString::number(number).rightJustified(15, u'0').toStdString();
    }
    // In place and in one go, always the same length: who has it open never reads half of it.
    void write(const std::string& path, const std::string& text) const {
        std::filesystem::create_directories((tree.root / path).parent_path());
        const int file = open((tree.root / path).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
        EXPECT_EQ(pwrite(file, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
        close(file);
    }
    void hide(const char* file) const { std::filesystem::remove(tree.root / file); }

    ShownItem* item(const char* id) {
        return dynamic_cast<ShownItem*>(delegate->moduleManager->running(QLatin1String(id)));
    }
    void startItems() {
        delegate = std::make_unique<AppDelegate>(services, bar);
        delegate->moduleManager->loadEnabledModules();
    }
    bool ready() {
        return QTest::qWaitFor([this] {
            return std::ranges::all_of(bar.items(),
                                       [](const BarItem* each) { return each->pixelWidth() > 0; });
        });
    }
    QString popoverTexts(const char* id) {
        const Popover* popover = dynamic_cast<ItemModule*>(item(id))->detailPopover();
        QStringList shown;
        for (const Piece* piece : popover->findChildren<Piece*>()) {
            if (piece->isVisibleTo(popover)) {
                shown << piece->accessibleName() + piece->accessibleDescription();
            }
        }
        return shown.join(u'|');
    }
    QString path(const char* file) const {
        return QString::fromStdString((tree.root / file).string());
    }

    GPUTree tree;
    QElapsedTimer elapsed;
    bool readable = true;
    QTimer mover;
    QTemporaryDir folder;
    AppServices services = [this] {
        const QString settings = folder.filePath(QStringLiteral("s.plist"));
        return AppServices(makeLinuxPlatform(tree.roots()), settings);
    }();
    ItemOrder order{services.defaults, itemNames()};
    OffscreenBar bar{order};
    std::unique_ptr<AppDelegate> delegate;
};

// A load is what passed between two readings: nothing of it is shown after the first.
TEST_F(DiagnosticsTest, NothingIsShownBeforeItWasMeasured) {
    services.network.lookUpWAN = false;
    services.global.updateInterval = 5;
    OffscreenBarOptions options = bar.options();
    options.imagePath = folder.filePath(QStringLiteral("bar.png"));
    bar.setOptions(options);
    startItems();
    EXPECT_EQ(item("cpu")->valueText(), QStringLiteral("CPU —"));
    EXPECT_EQ(item("gpu")->valueText(), QStringLiteral("GPU —"));
    EXPECT_EQ(item("network")->valueText(), QStringLiteral("Network —"));
    EXPECT_TRUE(popoverTexts("cpu").startsWith(QStringLiteral("CPU —")));
    QString firstText;
    QObject::connect(item("cpu"), &ShownItem::rendered, &bar, [&] {
        firstText = firstText.isEmpty() ? item("cpu")->valueText() : firstText;
    });
    ASSERT_TRUE(QTest::qWaitFor([&] { return QFile::exists(options.imagePath); }));
    EXPECT_FALSE(bar.text().contains(dash)) << bar.text().toStdString();
    ASSERT_TRUE(ready());
    EXPECT_EQ(firstText, QStringLiteral("CPU 25 %"));
    const QString gpu = item("gpu")->valueText();
    EXPECT_NEAR(gpu.split(u' ')[1].toInt(), 50, 10) << gpu.toStdString();
    EXPECT_TRUE(bar.text().contains(QStringLiteral("Memory 50 %"))) << bar.text().toStdString();
}

TEST_F(DiagnosticsTest, StatusPrintsWhatWasMeasured) {
    services.network.lookUpWAN = false;
    services.global.updateInterval = 0.25;
    testing::internal::CaptureStdout();
    EXPECT_EQ(printStatus(services, true), 0);
    const QJsonObject values =
        QJsonDocument::fromJson(QByteArray::fromStdString(testing::internal::GetCapturedStdout()))
            .object();
    EXPECT_NEAR(values[QStringLiteral("cpu")][QStringLiteral("overall")].toDouble(), 0.25, 0.05);
    EXPECT_NEAR(values[QStringLiteral("gpu")][QStringLiteral("utilization")].toDouble(), 0.5, 0.1);
    EXPECT_TRUE(values[QStringLiteral("network")][QStringLiteral("down")].isDouble());
}

TEST_F(DiagnosticsTest, SourcesThatCannotBeReadSaySo) {
    services.network.lookUpWAN = false;
    services.global.updateInterval = 0.25;
    services.memory.intervalOverride = 0.25;  // what a first run sets is longer than the test waits
    readable = false;
    hide("proc/stat");
    hide("proc/meminfo");
    testing::internal::CaptureStdout();
    printStatus(services, false);
    const QString printed = QString::fromStdString(testing::internal::GetCapturedStdout());
    const QString why = QStringLiteral("cannot read %1: No such file or directory");
    const QString cpu = QStringLiteral("CPU — (%1)").arg(why.arg(path("proc/stat")));
    const QString memory = QStringLiteral("Memory — (%1)").arg(why.arg(path("proc/meminfo")));
    EXPECT_TRUE(printed.contains(cpu)) << printed.toStdString();
    EXPECT_TRUE(printed.contains(memory)) << printed.toStdString();
    EXPECT_FALSE(printed.contains(QStringLiteral(" 0 %"))) << printed.toStdString();

    services.scheduler.setIntervalFactor(1);
    startItems();
    ASSERT_TRUE(ready());
    const auto toolTip = [this](const char* name) {
        for (const BarItem* each : bar.items()) {
            if (each->name() == QLatin1String(name)) {
                return each->value();
            }
        }
        return QString();
    };
    EXPECT_EQ(toolTip("vostel.cpu"), cpu);
    EXPECT_EQ(toolTip("vostel.memory"), memory);
    const QString texts = popoverTexts("cpu") + popoverTexts("memory");
    EXPECT_TRUE(texts.contains(QStringLiteral("CPU —|Cannot read "))) << texts.toStdString();
    EXPECT_TRUE(texts.contains(QStringLiteral("Memory —|Cannot read "))) << texts.toStdString();
    EXPECT_FALSE(texts.contains(u'%')) << texts.toStdString();
    EXPECT_TRUE(item("cpu")->statusValues()[QStringLiteral("overall")].isNull());

    const auto window = delegate->settingsWindow.makeWindow();
    window->select(QStringLiteral("general"));
    auto* row = window->findChild<SourcesRow*>();
    ASSERT_NE(row, nullptr);
    EXPECT_TRUE(row->searchText().contains(QStringLiteral("Processors: Cannot read")));
    readable = true;
    move();
    tree.file("proc/meminfo", "MemTotal: 8000000 kB\nMemFree: 4000000 kB\n");
    EXPECT_TRUE(QTest::qWaitFor([&] {
        return item("cpu")->valueText() == QStringLiteral("CPU 25 %") &&
               item("memory")->valueText().startsWith(QStringLiteral("Memory 50 %"));
    })) << item("cpu")->valueText().toStdString()
        << item("memory")->valueText().toStdString();
    row->refresh();
    EXPECT_TRUE(row->searchText().contains(QStringLiteral("It can be read again.")));
}

TEST_F(DiagnosticsTest, WhatIsCopiedCanBeShownToAnybody) {
    readable = false;
    hide("proc/stat");
    services.platform.cpu->ticks();
    const char* secrets[] = {"192.0.2.77",
                             "fe80::1c2d:3eff:fe4f:5a6b",
                             "2001:db8::77",
                             "52:54:00:ab:cd:ef",
                             "https://feed.example.org/secret?key=1",
                             "alice@example.org",
                             "sk-plant-"
                             "0123456789",
                             "/home/alice/private"};
    for (const char* secret : secrets) {
        logLine(QStringLiteral("cannot take %1; going on").arg(QLatin1String(secret)));
    }
    logLine(QStringLiteral("cannot write ") + QDir::homePath() + QStringLiteral("/vostel.plist"));
    startItems();
    const auto window = delegate->settingsWindow.makeWindow();
    window->select(QStringLiteral("general"));
    auto* row = window->findChild<SourcesRow*>();
    ASSERT_NE(row, nullptr);
    row->findChild<TextButton*>()->click();
    const QString text = QGuiApplication::clipboard()->text();
    for (const char* secret : secrets) {
        EXPECT_FALSE(text.contains(QLatin1String(secret))) << secret << "\n" << text.toStdString();
    }
    for (const char* part : {"alice", "secretgame", "db8", "0123456789", "feed.example"}) {
        EXPECT_FALSE(text.contains(QLatin1String(part))) << part;
    }
    EXPECT_FALSE(text.contains(QDir::homePath())) << text.toStdString();
    for (const char* part :
         {"Vostel ", "Qt 6", "Kernel: linux ", "Desktop: ", "Bar: ", "Processors: Cannot read ",
          "cannot take …; going on", "cannot write ~/vostel.plist"}) {
        EXPECT_TRUE(text.contains(QString::fromUtf8(part))) << part << "\n" << text.toStdString();
    }
}

}  // namespace
}  // namespace vostel
