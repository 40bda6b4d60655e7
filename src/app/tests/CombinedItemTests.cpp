// The combined item with the program's real modules.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>

#include "app/AppDelegate.h"
#include "app/ModuleTable.h"
#include "combined/CombinedModule.h"
#include "statusbar/OffscreenBar.h"
#include "ui/Popover.h"

namespace vostel {
namespace {

constexpr int changes = 1000;

class CombinedItemTest : public testing::Test {
  protected:
    CombinedItemTest() { services.network.lookUpWAN = false; }

    int below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }
    template <typename T>
    T oneOf(std::initializer_list<T> values) {
        return values.begin()[below(static_cast<int>(values.size()))];
    }
    CombinedModule* combined() {
        return dynamic_cast<CombinedModule*>(delegate.moduleManager->running(id));
    }
    void click(Qt::MouseButton button) {
        if (!bar.items().empty()) {
            BarItem* item = bar.items().front();
            // Without a place while it waits for its first figures.
            const QRect rect = item->screenRect().value_or(QRect(0, 0, 22, 22));
            StatusItemClick at;
            at.button = button;
            at.globalPosition = rect.topLeft() + QPoint(below(rect.width() + 20) - 10, 3);
            Q_EMIT item->clicked(at);
        }
    }
    void changeMembers() {
        CombinedSettings& settings = services.combined;
        switch (below(8)) {
            case 0:
                delegate.moduleManager->setEnabled(below(3) > 0, id);
                break;
            case 1: {
                QStringList shuffled = settings.order();
                std::shuffle(shuffled.begin(), shuffled.end(), random);
                shuffled.insert(below(4), oneOf<QString>({QString(), shuffled.front(), id}));
                settings.setOrder(shuffled);
                break;
            }
            case 2:
            case 3:
                settings.setSpacing(oneOf(
                    {-5.0, 0.0, 2.5, 5.0, 11.0, 1e9, std::numeric_limits<double>::quiet_NaN()}));
                break;
            default:
                settings.setEnabled(settings.order()[below(4)], below(3) > 0);
                break;
        }
    }
    void changeLook() {
        GlobalSettings& global = services.global;
        switch (below(9)) {
            case 0:
                global.setLabelSize(oneOf({3.0, 5.0, 9.0, -1.0}));
                break;
            case 1:
                global.monochrome = below(2) == 0;
                break;
            case 2:
                global.updateInterval = oneOf({0.0, 0.02, 0.25, 5.0});
                break;
            case 3:
                global.foregroundHex = oneOf<QString>({QStringLiteral("#00C853FF"), QString()});
                break;
            case 4:
                services.cpu.showGraph = below(2) == 0;
                services.cpu.showPerCoreBars = below(2) == 0;
                services.cpu.monochromeOverride = below(2) == 0;
                break;
            case 5:
                services.memory.label = oneOf<QString>(
                    {QString(), QStringLiteral("MEM"), QString(300, QLatin1Char('W'))});
                break;
            case 6:
                services.gpu.revertAppearanceToGlobal();
                break;
            case 7:
                services.network.displayMode =
                    oneOf({DisplayMode::stacked, DisplayMode::mirrored, DisplayMode::opposing});
                services.network.showNumbers = below(2) == 0;
                break;
            default: {
                OffscreenBarOptions options = bar.options();
                options.scale = oneOf({1.0, 1.25, 2.0});
                options.thickness = oneOf({16.0, 22.0, 48.0});
                options.appearance = oneOf({Appearance::Dark, Appearance::Light});
                bar.setOptions(options);
            }
        }
    }
    // What must be so once everything has been heard of.
    void check() {
        for (int turn = 0; turn < 6; ++turn) {
            QCoreApplication::processEvents();
        }
        const auto windows = QApplication::topLevelWidgets();
        ASSERT_LE(std::count_if(windows.begin(), windows.end(),
                                [](const QWidget* window) {
                                    return qobject_cast<const Popover*>(window) != nullptr &&
                                           window->isVisible();
                                }),
                  1);
        if (combined() == nullptr) {
            ASSERT_TRUE(bar.items().empty());
            return;
        }
        // The bar gets the first image when all segments have measured what they show.
        const StatusImage image = combined()->isReady()
                                      ? bar.items().front()->image()
                                      : combined()->menubarImage(bar.imageContext()).value();
        QStringList shown;
        double end = -services.combined.spacing();
        for (const SegmentRange& range : combined()->segmentRanges()) {
            shown << range.id;
            ASSERT_NEAR(range.minX, end + services.combined.spacing(), 1e-9);
            end = range.maxX;
        }
        ASSERT_EQ(shown, services.combined.orderedEnabledIDs());
        ASSERT_NEAR(image.size.width(), shown.isEmpty() ? 22 : end, 1e-9);
        ASSERT_EQ(image.image.devicePixelRatio(), bar.options().scale);
    }

    const QString id = QStringLiteral("combined");
    std::mt19937 random{20240607};
    QTemporaryDir folder;
    AppServices services{makeLinuxPlatform(SystemRoots::ofThisMachine()),
                         folder.filePath(QStringLiteral("s.plist"))};
    ItemOrder order{services.defaults, itemNames()};
    OffscreenBar bar{order};
    AppDelegate delegate{services, bar};
};

// Catches segments, popovers and images that outlive what they belong to, in any order of events.
// Best run with the address sanitizer.
TEST_F(CombinedItemTest, survivesAThousandChangesOfItsSettings) {
    delegate.moduleManager->setEnabled(true, id);
    int opened = 0;
    for (int change = 0; change < changes; ++change) {
        switch (below(10)) {
            case 0:
                click(below(5) == 0 ? Qt::RightButton : Qt::LeftButton);
                opened += QApplication::activePopupWidget() != nullptr ? 1 : 0;
                break;
            case 1:
                if (QWidget* popup = QApplication::activePopupWidget()) {
                    QTest::keyClick(popup, Qt::Key_Escape);
                }
                break;
            case 2:
            case 3:
            case 4:
                changeMembers();
                break;
            default:
                changeLook();
                break;
        }
        if (below(3) == 0) {
            QCoreApplication::processEvents();
        }
        if (below(5) == 0) {
            ASSERT_NO_FATAL_FAILURE(check()) << "after change " << change;
        }
    }
    EXPECT_GT(opened, 20);
    delegate.willTerminate();
    EXPECT_TRUE(bar.items().empty());
}

// Catches a module whose own item and whose segment are mixed up.
TEST_F(CombinedItemTest, ownItemsAndSegmentsLiveSideBySide) {
    delegate.moduleManager->loadEnabledModules();
    delegate.moduleManager->setEnabled(true, id);
    EXPECT_EQ(bar.items().size(), 5U);
    const auto* item = combined();
    ASSERT_NE(item, nullptr);
    QStringList segments;
    for (const QVariant& segment : item->statusValues()[QStringLiteral("segments")].toList()) {
        segments << segment.toMap()[QStringLiteral("id")].toString();
    }
    EXPECT_EQ(segments.join(u' '), QStringLiteral("memory gpu cpu network"))
        << "as a first run seeds";
    for (const QString& each : segments) {
        delegate.moduleManager->setEnabled(false, each);
    }
    check();
    EXPECT_EQ(combined()->segmentRanges().size(), 4U);
}

// Catches a default that switches it on, and another order of the segments, where neither a first
// run nor the user chose anything.
TEST(CombinedDefaultsTest, withoutASettingItIsOffAndKeepsTheOrderOfTheCatalog) {
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("s.plist"));
    DefaultsStore(file, nullptr).set(QStringLiteral("app.hasLaunched"), true);
    AppServices services{makeNullPlatform(), file};
    services.network.lookUpWAN = false;
    ItemOrder order{services.defaults, itemNames()};
    OffscreenBar bar{order};
    AppDelegate delegate{services, bar};
    delegate.moduleManager->loadEnabledModules();
    QStringList shown;
    for (const BarItem* item : bar.items()) {
        shown << item->name();
    }
    EXPECT_EQ(shown.join(u' '),
              QStringLiteral("vostel.network vostel.cpu vostel.memory vostel.gpu"));

    const QStringList catalog{QStringLiteral("network Network Graph"),
                              QStringLiteral("cpu CPU Graph"), QStringLiteral("gpu GPU Bar"),
                              QStringLiteral("memory Memory Bar")};
    QStringList available;
    for (const auto& entry : services.combined.available()) {
        available << entry.id + u' ' + entry.title;
        services.combined.setEnabled(entry.id, true);
    }
    EXPECT_EQ(available, catalog);
    delegate.moduleManager->setEnabled(true, QStringLiteral("combined"));
    const auto* item =
        dynamic_cast<ShownItem*>(delegate.moduleManager->running(QStringLiteral("combined")));
    ASSERT_NE(item, nullptr);
    QStringList segments;
    for (const QVariant& segment : item->statusValues()[QStringLiteral("segments")].toList()) {
        segments << segment.toMap()[QStringLiteral("id")].toString();
    }
    EXPECT_EQ(segments.join(u' '), QStringLiteral("network cpu gpu memory"));
}

}  // namespace
}  // namespace vostel
