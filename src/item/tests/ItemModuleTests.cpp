#include <gtest/gtest.h>

#include <QApplication>
#include <QMenu>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include "core/Background.h"
#include "core/ModuleManager.h"
#include "core/tests/FakeClock.h"
#include "item/ItemModule.h"
#include "platform/Platform.h"
#include "statusbar/OffscreenBar.h"

namespace vostel {
namespace {

class PlainModule : public ItemModule {
  public:
    PlainModule(AppContext& appContext, ModuleSettings& moduleSettings)
        : ItemModule(
              appContext,
              {QStringLiteral("plain"), QStringLiteral("Plain"), QStringLiteral("Plain usage")},
              moduleSettings) {}

    void tick() override {
        ++ticks;
        render();
    }
    std::optional<StatusImage> menubarImage(const ImageContext& imageContext) override {
        ++images;
        QImage image(30, 22, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::red);
        image.setDevicePixelRatio(imageContext.scale);
        return StatusImage{image, QSizeF(30, 22), false};
    }
    QString valueText() const override { return QStringLiteral("Plain %1").arg(ticks); }
    QVariantMap statusValues() const override { return {}; }
    void detailPopoverDidClose() override { ++closes; }
    using ItemModule::isPopoverShown;

    bool isMeasured() const override { return ticks >= needed; }

    int needed = 0;  // ticks
    int ticks = 0;
    int images = 0;
    int closes = 0;

  private:
    std::unique_ptr<Popover> makePopover() override {
        return std::make_unique<Popover>(QStringLiteral("Plain"));
    }
};

class ItemOrderInMemory : public ItemOrderStore {
  public:
    QStringList itemOrder() const override { return {}; }
    void setItemOrder(const QStringList&) override {}
};

class ItemModuleTest : public testing::Test {
  protected:
    void runFor(double seconds) {
        for (const double end = clock->now + seconds; clock->now < end;) {
            clock->now += 0.01;
            scheduler.fire();
        }
    }

    QMenu* openMenu() {
        bar.click(QStringLiteral("vostel.plain"), Qt::RightButton);
        return qobject_cast<QMenu*>(QApplication::activePopupWidget());
    }

    QTemporaryDir folder;
    Platform platform = makeNullPlatform();
    FakeClock* clock = [this] {
        auto fake = std::make_unique<FakeClock>();
        FakeClock* borrowed = fake.get();
        platform.clock = std::move(fake);
        return borrowed;
    }();
    Background background;
    DefaultsStore defaults{folder.filePath(QStringLiteral("s.plist")), nullptr};
    NotificationCenter notifications;
    TickScheduler scheduler{*platform.clock};
    GlobalSettings global{defaults, notifications};
    ModuleSettings settings{defaults, notifications, global, QStringLiteral("plain."),
                            "plainSettingsChanged"};
    ItemOrderInMemory order;
    OffscreenBar bar{order};
    ModuleManager manager{defaults, {}};
    QStringList panels;
    int quits = 0;
    AppContext context{platform,
                       background,
                       scheduler,
                       defaults,
                       notifications,
                       global,
                       bar,
                       &manager,
                       [this](const QString& panel) { panels << panel; },
                       [this] { ++quits; }};
    PlainModule module{context, settings};
};

TEST_F(ItemModuleTest, TicksAtTheEffectiveIntervalAndStops) {
    module.start();
    EXPECT_EQ(module.ticks, 1);
    EXPECT_EQ(bar.text(), QString()) << "all items come together, when all are measured";
    EXPECT_TRUE(QTest::qWaitFor([this] { return !bar.text().isEmpty(); }));
    EXPECT_EQ(module.ticks, 2);  // not empty until the first interval is over
    EXPECT_GT(bar.image().width(), 30);
    module.ticks = 1;
    runFor(10);
    EXPECT_NEAR(module.ticks, 11, 1);
    settings.intervalOverride = 0.25;
    settings.label = QStringLiteral("x");
    const int imagesBefore = module.images;
    QCoreApplication::processEvents();
    EXPECT_EQ(module.images, imagesBefore + 1);  // two changes, one image
    module.ticks = 0;
    runFor(10);
    EXPECT_NEAR(module.ticks, 40, 2);
    settings.intervalOverride = 0.5;  // handled after stop(): must not start the timer again
    module.stop();
    module.stop();
    QCoreApplication::processEvents();
    module.ticks = 0;
    runFor(5);
    EXPECT_EQ(module.ticks, 0);
    EXPECT_FALSE(bar.click(QStringLiteral("vostel.plain")));
}

// Catches timers that no other can share a wake-up with, and graphs with uneven steps.
TEST_F(ItemModuleTest, ATickMayComeLateByThreeTwentiethsOfTheInterval) {
    for (const double interval : {1.0, 2.0}) {
        settings.intervalOverride = interval;
        module.start();
        const double due = clock->now + interval;
        for (const auto& [late, shared] : {std::pair(0.149, true), std::pair(0.151, false)}) {
            const double other = due + late * interval;
            // A timer that is due just then, and patient.
            const auto tick = scheduler.every(other / 500, 1, [] {});
            EXPECT_NEAR(clock->now + *scheduler.nextWakeUp(), shared ? other : due, 1e-6)
                << late << " of " << interval;
        }
        module.stop();
    }
}

TEST_F(ItemModuleTest, ReadsAgainUntilItHasMeasured) {
    settings.intervalOverride = 60.0;
    module.needed = 3;
    module.start();
    EXPECT_TRUE(QTest::qWaitFor([this] { return !bar.text().isEmpty(); }));
    EXPECT_EQ(bar.text(), QStringLiteral("Plain 3"));
    QTest::qWait(600);
    EXPECT_EQ(module.ticks, 3) << "goes on at four times a second";
    module.stop();
    module.needed = 1000;  // a source that does not answer
    module.start();
    EXPECT_TRUE(QTest::qWaitFor([this] { return !bar.text().isEmpty(); }, 20'000));
    module.stop();
    const int before = module.ticks;
    QTest::qWait(600);
    EXPECT_EQ(module.ticks, before) << "goes on after the end";
}

TEST_F(ItemModuleTest, EmbeddedItReportsInsteadOfShowing) {
    int reports = 0;
    module.onImageChanged = [&] { ++reports; };
    module.startEmbedded();
    runFor(5);
    EXPECT_NEAR(reports, 6, 1);
    EXPECT_FALSE(bar.click(QStringLiteral("vostel.plain")));
    module.stopEmbedded();
}

TEST_F(ItemModuleTest, ClicksOpenAndCloseThePopover) {
    module.start();
    bar.click(QStringLiteral("vostel.plain"));
    EXPECT_TRUE(module.isPopoverShown());
    EXPECT_EQ(module.ticks, 2);  // it opens on fresh figures
    bar.click(QStringLiteral("vostel.plain"));
    EXPECT_FALSE(module.isPopoverShown());
    EXPECT_EQ(module.closes, 1);
    bar.click(QStringLiteral("vostel.plain"));
    EXPECT_TRUE(module.isPopoverShown());
    module.stop();  // with the popover open
    EXPECT_FALSE(module.isPopoverShown());
}

// A host that reports a button again and again, or for no reason.
TEST_F(ItemModuleTest, ManyClicksOpenOneMenu) {
    module.start();
    for (int i = 0; i < 500; ++i) {
        bar.click(QStringLiteral("vostel.plain"), Qt::RightButton);
    }
    const auto isMenu = [](const QWidget* widget) {
        return qobject_cast<const QMenu*>(widget) != nullptr && widget->isVisible();
    };
    const auto menus = [&] {
        const QWidgetList all = QApplication::topLevelWidgets();
        return std::count_if(all.begin(), all.end(), isMenu);
    };
    EXPECT_EQ(menus(), 1);
    QApplication::activePopupWidget()->close();
    EXPECT_EQ(menus(), 0);
    EXPECT_NE(openMenu(), nullptr);  // and the next click opens one again
}

TEST_F(ItemModuleTest, TheMenuOffersSettingsModulesAndQuit) {
    module.start();
    bar.click(QStringLiteral("vostel.plain"), Qt::LeftButton, Qt::ControlModifier);
    ASSERT_NE(QApplication::activePopupWidget(), nullptr);
    QApplication::activePopupWidget()->close();
    QMenu* menu = openMenu();
    ASSERT_NE(menu, nullptr);
    QStringList texts;
    for (const QAction* action : menu->actions()) {
        texts << (action->isSeparator() ? QStringLiteral("-") : action->text());
    }
    EXPECT_EQ(texts, (QStringList{QStringLiteral("Plain Settings…"), QStringLiteral("-"),
                                  QStringLiteral("Modules"), QStringLiteral("-"),
                                  QStringLiteral("Quit Vostel")}));
    menu->actions().front()->trigger();
    EXPECT_EQ(panels, QStringList{QStringLiteral("plain")});
    menu->actions().back()->trigger();
    QCoreApplication::processEvents();
    EXPECT_EQ(quits, 1);
    // The item may go while its menu is open (it is switched off in it).
    module.stop();
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

}  // namespace
}  // namespace vostel
