#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include <QAbstractButton>
#include <QApplication>
#include <QDesktopServices>
#include <QLabel>
#include <QScrollArea>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>

#include "FakeUpdater.h"
#include "app/AppDelegate.h"
#include "app/ModuleTable.h"
#include "app/settings/SettingsSidebar.h"
#include "app/settings/SettingsWindow.h"
#include "app/settings/SidebarRow.h"
#include "item/ItemModule.h"
#include "statusbar/OffscreenBar.h"
#include "ui/NoteLine.h"
#include "ui/settings/SettingsPanel.h"
#include "ui/settings/SettingsRow.h"
#include "ui/settings/TextField.h"

namespace vostel {
namespace {

class SettingsWindowTest : public testing::Test {
  protected:
    SettingsWindowTest() { delegate.moduleManager->loadEnabledModules(); }

    SettingsWindow* open(const char* page = "") {
        delegate.showSettings(QLatin1String(page));
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            auto* window = qobject_cast<SettingsWindow*>(widget);
            if (window != nullptr && window->isVisible() && QTest::qWaitForWindowActive(window)) {
                return window;
            }
        }
        ADD_FAILURE() << "no settings window";
        std::abort();
    }
    static SidebarRow* row(SettingsWindow* window, const char* id) {
        for (SidebarRow* each : window->findChildren<SidebarRow*>()) {
            if (each->id() == QLatin1String(id)) {
                return each;
            }
        }
        return nullptr;
    }
    static QStringList foundRows(SettingsPanel* panel) {
        QStringList titles;
        for (const SettingsRow* each : panel->findChildren<SettingsRow*>()) {
            if (each->isFound()) {
                titles << each->title();
            }
        }
        return titles;
    }

    QTemporaryDir folder;
    AppServices services{makeLinuxPlatform(SystemRoots::ofThisMachine()),
                         folder.filePath(QStringLiteral("s.plist"))};
    ItemOrder order{services.defaults, itemNames()};
    OffscreenBar bar{order};
    AppDelegate delegate{services, bar};
};

// Catches changes that are lost without a word.
TEST_F(SettingsWindowTest, theGeneralPageSaysThatNothingIsSaved) {
    SettingsWindow* window = open("general");
    const auto warns = [window] {
        const auto notes = window->findChildren<NoteLine*>();
        return std::any_of(notes.begin(), notes.end(), [](const NoteLine* note) {
            return note->isVisible() &&
                   note->accessibleName().contains(QStringLiteral("are not saved"));
        });
    };
    EXPECT_FALSE(warns());
    QFile other(services.defaults.filePath());
    ASSERT_TRUE(other.open(QFile::WriteOnly));
    other.write("another file");
    other.close();
    services.global.monochrome = true;
    EXPECT_TRUE(QTest::qWaitFor(warns, 20000));
    EXPECT_TRUE(other.open(QFile::ReadOnly));
    EXPECT_EQ(other.readAll(), "another file");
}

TEST_F(SettingsWindowTest, opensAtAPageAndGoesWhenItCloses) {
    QPointer<SettingsWindow> window = open("memory");
    EXPECT_EQ(window->selected(), QStringLiteral("memory"));
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Vostel Settings"));
    EXPECT_EQ(open("cpu"), window.data()) << "one window only";
    EXPECT_EQ(window->selected(), QStringLiteral("cpu"));
    open("no such page");
    EXPECT_EQ(window->selected(), QStringLiteral("cpu"));
    window->resize(770, 555);
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_FALSE(delegate.settingsWindow.isOpen());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(window.isNull());
    EXPECT_EQ(open()->size(), QSize(770, 555));
}

// Without the icon theme's file (a program that was never installed) a taskbar showed a blank.
TEST_F(SettingsWindowTest, hasAnIconWithoutAnInstalledOne) {
    QIcon::setThemeSearchPaths({folder.path()});
    const QIcon icon = open()->windowIcon();
    EXPECT_TRUE(icon.availableSizes().contains(QSize(16, 16)));
    EXPECT_GT(icon.pixmap(48).toImage().pixelColor(24, 24).alpha(), 200);
}

// Catches controls that only the mouse reaches, places that the keyboard does not leave, and
// controls without a name.
TEST_F(SettingsWindowTest, tabReachesEveryControlOfEveryPage) {
    SettingsWindow* window = open();
    for (const QString& id : window->pageIds()) {
        window->select(id);
        std::set<QWidget*> wanted;
        for (QWidget* each : window->findChildren<QWidget*>()) {
            auto* button = qobject_cast<QAbstractButton*>(each);
            const bool isControl =
                button != nullptr || qobject_cast<TextField*>(each) || qobject_cast<QSlider*>(each);
            if (!isControl || !each->isVisible() || !each->isEnabled()) {
                continue;
            }
            EXPECT_FALSE(each->accessibleName().isEmpty()) << each->metaObject()->className();
            // The arrows reach what is not chosen.
            if (button == nullptr || !button->autoExclusive() || button->isChecked()) {
                wanted.insert(each);
            }
        }
        QWidget* first = QApplication::focusWidget();
        for (int steps = 0; steps < 100; ++steps) {
            QTest::keyClick(window, Qt::Key_Tab);
            QWidget* now = QApplication::focusWidget();
            ASSERT_NE(now, nullptr);
            wanted.erase(now);
            if (now == first) {
                break;
            }
            first = first != nullptr ? first : now;
        }
        for (const QWidget* left : wanted) {
            ADD_FAILURE() << id.toStdString() << ": " << left->accessibleName().toStdString();
        }
    }
}

TEST_F(SettingsWindowTest, theSidebarChoosesWithArrowsAndSwitchesModules) {
    SettingsWindow* window = open("general");
    row(window, "general")->setFocus();
    for (const char* expected : {"appearance", "network", "cpu"}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
        EXPECT_EQ(window->selected(), QLatin1String(expected));
    }
    auto* toggle = row(window, "memory")->findChild<QAbstractButton*>();
    ASSERT_TRUE(toggle->isChecked());
    QTest::mouseClick(toggle, Qt::LeftButton);
    EXPECT_EQ(delegate.moduleManager->running(QStringLiteral("memory")), nullptr);
    EXPECT_EQ(window->selected(), QStringLiteral("cpu")) << "the switch is not the row";
    delegate.moduleManager->setEnabled(true, QStringLiteral("memory"));  // as the Modules menu does
    EXPECT_TRUE(toggle->isChecked());
}

TEST_F(SettingsWindowTest, aChangeShowsInTheBarAndInTheMiniature) {
    ASSERT_TRUE(QTest::qWaitFor([this] { return bar.text().contains(QStringLiteral("CPU")); }));
    SettingsWindow* window = open("cpu");
    const QImage barBefore = bar.image();
    const QImage rowBefore = row(window, "cpu")->grab().toImage();
    services.cpu.showGraph = !services.cpu.showGraph();
    QCoreApplication::processEvents();
    EXPECT_NE(bar.image(), barBefore);
    EXPECT_NE(row(window, "cpu")->grab().toImage(), rowBefore);
}

TEST_F(SettingsWindowTest, searchFindsASettingByItsWords) {
    SettingsWindow* window = open("general");
    auto* search = window->findChild<SettingsSidebar*>()->findChild<TextField*>();
    const struct {
        const char* typed;
        QStringList pages;
        const char* shown;
        QStringList rows;
    } rows[] = {
        {"efficiency color",
         {QStringLiteral("cpu")},
         "cpu",
         {QStringLiteral("Efficiency Core Color")}},
        {"colour TEXT",
         {QStringLiteral("appearance"), QStringLiteral("network"), QStringLiteral("cpu"),
          QStringLiteral("memory"), QStringLiteral("gpu")},
         "cpu",
         {QStringLiteral("Text Color")}},
        {"taskbar", {QStringLiteral("general")}, "general", {QStringLiteral("Show Dock Icon")}},
        {"memory", {QStringLiteral("memory")}, "memory", {}},
        {"no such words", {}, nullptr, {}},
    };
    for (const auto& each : rows) {
        search->setFocus();
        search->selectAll();
        QTest::keyClicks(search, QLatin1String(each.typed));
        for (const QString& id : window->pageIds()) {
            EXPECT_EQ(row(window, id.toLatin1().constData())->isVisible(), each.pages.contains(id))
                << each.typed << " " << id.toStdString();
        }
        if (each.shown != nullptr) {
            EXPECT_EQ(window->selected(), QLatin1String(each.shown)) << each.typed;
        }
        const auto labels = window->findChild<SettingsSidebar*>()->findChildren<QLabel*>();
        EXPECT_EQ(labels.size(), 1);
        EXPECT_EQ(labels.value(0)->isVisible(), each.pages.isEmpty()) << each.typed;
        EXPECT_EQ(foundRows(window->panel(window->selected())), each.rows) << each.typed;
    }
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_TRUE(search->text().isEmpty());
    EXPECT_TRUE(window->isVisible()) << "the first Escape ends the search";
    EXPECT_TRUE(row(window, "general")->isVisible());
}

// Catches interfaces that are not offered, lost when they are down, or not taken out again.
TEST_F(SettingsWindowTest, interfacesAreChosenOneByOne) {
    delegate.moduleManager->stopAll();  // the list is the test's
    services.network.interfaceMode = InterfaceMode::custom;
    services.network.selectedInterfaces = QStringList{QStringLiteral("gone0")};
    services.network.knownInterfaces = QStringList{QStringLiteral("eth7")};
    SettingsWindow* window = open("network");
    const auto click = [&](const char* name) {
        for (auto* each : window->findChildren<QAbstractButton*>()) {
            if (each->accessibleName() == QLatin1String(name) && each->isVisible()) {
                QTest::mouseClick(each, Qt::LeftButton);
                QCoreApplication::processEvents();
                return true;
            }
        }
        return false;
    };
    const auto& chosen = services.network.selectedInterfaces;
    EXPECT_TRUE(click("eth7"));
    EXPECT_EQ(chosen(), QStringList({QStringLiteral("gone0"), QStringLiteral("eth7")}));
    EXPECT_TRUE(click("gone0"));
    EXPECT_EQ(chosen(), QStringList(QStringLiteral("eth7")));
    EXPECT_FALSE(click("gone0")) << "neither there nor chosen";
    services.network.knownInterfaces = QStringList{QStringLiteral("wlan7")};
    QCoreApplication::processEvents();
    EXPECT_TRUE(click("wlan7"));
    EXPECT_TRUE(click("Include: All"));
    EXPECT_FALSE(click("wlan7"));
    EXPECT_EQ(services.defaults.values().text(QStringLiteral("net.interfaceMode")),
              QStringLiteral("all"));
}

// What the desktop is asked to open.
class Browser : public QObject {
    Q_OBJECT

  public:
    Browser() { QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "open"); }
    ~Browser() override { QDesktopServices::unsetUrlHandler(QStringLiteral("https")); }

    QStringList opened;

  public Q_SLOTS:
    void open(const QUrl& url) { opened << url.toString(); }
};

// Catches controls that work without a feed, a result that is not shown, and an offer that opens
// nothing or stays when it is gone.
TEST_F(SettingsWindowTest, theUpdatesSectionFollowsTheCheck) {
    const auto button = [](SettingsWindow* window, const char* name) -> QAbstractButton* {
        for (auto* each : window->findChildren<QAbstractButton*>()) {
            if (each->accessibleName() == QString::fromUtf8(name)) {
                return each;
            }
        }
        return nullptr;
    };
    const auto shows = [](SettingsWindow* window, const char* text) {
        const auto labels = window->findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(), [&](const QLabel* label) {
            return label->isVisible() && label->text().contains(QString::fromUtf8(text));
        });
    };
    const auto lookIn = [this](std::unique_ptr<Updater> source) {
        services.updates = std::make_unique<UpdateController>(
            std::move(source), services.app, services.notifications, services.scheduler,
            *services.platform.clock, [](const QString&, const QString&) {});
    };
    lookIn(nullptr);
    SettingsWindow* window = open("general");
    EXPECT_FALSE(button(window, "Check for Updates…")->isEnabled());
    EXPECT_FALSE(button(window, "Automatically Check for Updates")->isEnabled());
    EXPECT_FALSE(button(window, "Automatically Check for Updates")->isChecked());
    EXPECT_EQ(button(window, "Open Download Page"), nullptr);
    window->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    auto source = std::make_unique<FakeUpdater>();
    FakeUpdater* updater = source.get();
    lookIn(std::move(source));
    Browser browser;
    window = open("general");
    auto* check = button(window, "Check for Updates…");
    auto* automatic = button(window, "Automatically Check for Updates");
    auto* download = button(window, "Open Download Page");
    EXPECT_TRUE(automatic->isChecked());
    automatic->click();
    EXPECT_FALSE(services.app.checkForUpdates());
    EXPECT_FALSE(download->isVisible());
    check->click();
    EXPECT_TRUE(shows(window, "Checking for updates…"));
    EXPECT_FALSE(check->isEnabled());
    updater->end(failure);
    EXPECT_TRUE(shows(window, "The check failed: no network."));
    check->click();
    updater->end(offerOf("2.0"));
    EXPECT_TRUE(shows(window, "Version 2.0 is available"));
    download->click();
    button(window, "Release Notes")->click();
    EXPECT_EQ(browser.opened, QStringList({QStringLiteral("https://e.org/"),
                                           QStringLiteral("https://e.org/notes")}));
    check->click();
    updater->end({});
    EXPECT_TRUE(shows(window, "Vostel is up to date."));
    EXPECT_FALSE(download->isVisible());
}

}  // namespace
}  // namespace vostel

#include "SettingsWindowTests.moc"
