#include <gtest/gtest.h>

#include <QApplication>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>

#include "combined/tests/FakeSegments.h"

namespace vostel {
namespace {

// A host as a tray is one: square cells at two scales, and no word about where an item stands.
class BlindItem : public StatusItem {
  public:
    std::vector<ImageContext> wantedImages() const override { return wanted; }
    void setImages(std::vector<StatusImage> given) override { images = std::move(given); }
    void setToolTip(const QString& /*title*/, const QString& /*value*/) override {}
    std::optional<QRect> screenRect() const override { return std::nullopt; }

    std::vector<ImageContext> wanted{{.shape = ImageShape::Square},
                                     {.shape = ImageShape::Square, .scale = 2}};
    std::vector<StatusImage> images;
};

class BlindBar : public StatusBar {
  public:
    std::unique_ptr<StatusItem> makeItem(const QString& /*autosaveName*/) override {
        auto made = std::make_unique<BlindItem>();
        item = made.get();
        return made;
    }
    double thickness() const override { return 22; }
    BlindItem* item = nullptr;
};

class CombinedModuleTest : public testing::Test, protected FakeWorld {
  protected:
    FakeState& of(const char* id) { return state[QLatin1String(id)]; }
    void reset() {
        for (auto& [id, each] : state) {
            each = FakeState{.width = each.width, .live = each.live};
        }
    }
    QStringList drawn() {
        QStringList ids;
        for (const auto& [id, each] : state) {
            for (int i = 0; i < each.drawn; ++i) {
                ids << id;
            }
        }
        return ids;
    }
    static void settle() {
        for (int i = 0; i < 3; ++i) {
            QCoreApplication::processEvents();
        }
    }
    QString ranges() const {
        QStringList texts;
        for (const SegmentRange& range : module.segmentRanges()) {
            texts << QStringLiteral("%1 %2-%3").arg(range.id).arg(range.minX).arg(range.maxX);
        }
        return texts.join(QStringLiteral(", "));
    }
    // A click at x, points from the image's left edge.
    void click(double x, Qt::MouseButton button = Qt::LeftButton) {
        BarItem* item = bar.items().front();
        StatusItemClick at;
        at.button = button;
        at.globalPosition = item->screenRect()->topLeft() + QPoint(static_cast<int>(x), 5);
        Q_EMIT item->clicked(at);
    }
    void clickBlind() {
        StatusItemClick at;
        at.globalPosition = {200, 100};
        Q_EMIT blind.item->clicked(at);
    }
    // The id whose popover is on the screen; empty: none.
    QString shown() {
        for (auto& [id, each] : state) {
            if (each.live != nullptr && each.live->detailPopover()->isVisible()) {
                return id;
            }
        }
        return {};
    }

    BlindBar blind;
    AppContext context{platform, background, scheduler, defaults, notifications,
                       global,   bar,        nullptr,   {},       {}};
    AppContext blindContext{platform, background, scheduler, defaults, notifications,
                            global,   blind,      nullptr,   {},       {}};
    CombinedModule module{context, settings, catalog()};
};

TEST(SegmentAtTest, missesGoToTheFirstOrTheLast) {
    const std::vector<SegmentRange> two{{QStringLiteral("1"), 0, 30},
                                        {QStringLiteral("2"), 35, 75}};
    const std::vector<SegmentRange> three{
        {QStringLiteral("1"), 4, 10}, {QStringLiteral("2"), 15, 20}, {QStringLiteral("3"), 25, 30}};
    const struct {
        const std::vector<SegmentRange>& ranges;
        double x;
        const char* id;
    } rows[] = {
        {two, 0, "1"},    {two, 29.9, "1"}, {two, 30, "2"},   {two, 32, "2"},   {two, 35, "2"},
        {two, 74.9, "2"}, {two, 75, "2"},   {two, 1e9, "2"},  {two, -1, "1"},   {three, 3.9, "1"},
        {three, 4, "1"},  {three, 12, "3"}, {three, 19, "2"}, {three, 22, "3"}, {three, 30, "3"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(segmentAt(row.ranges, row.x)->id, QLatin1String(row.id)) << row.x;
    }
    EXPECT_EQ(segmentAt({}, 3), nullptr);
    EXPECT_EQ(imageOffset(80, 75), 3);
}

// Catches seams: a segment that is blurred, cut or drawn over its neighbour at any scale.
TEST(JoinedImageTest, everySegmentStandsWholeInItsPlace) {
    for (const double scale : {1.0, 1.25, 1.5, 2.0}) {
        const ImageContext context{.scale = scale};
        FakeState red{.width = 30, .color = Qt::red};
        FakeState blue{.width = 40, .color = Qt::blue};
        const JoinedImage result =
            joined({{QStringLiteral("r"), *FakeSegment(red).menubarImage(context)},
                    {QStringLiteral("b"), *FakeSegment(blue).menubarImage(context)}},
                   5, context);
        EXPECT_EQ(result.image.size, QSizeF(75, 22));
        EXPECT_EQ(result.image.image.width(), static_cast<int>(std::ceil(75 * scale)));
        std::map<QRgb, int> columns;
        for (int x = 0; x < result.image.image.width(); ++x) {
            ++columns[result.image.image.pixel(x, 3)];
        }
        EXPECT_EQ(columns[QColor(Qt::red).rgba()], std::lround(30 * scale)) << scale;
        EXPECT_EQ(columns[QColor(Qt::blue).rgba()], std::lround(40 * scale)) << scale;
        EXPECT_LE(columns.size(), 3U) << "mixed colours at " << scale;
    }
}

// Catches a stencil that is drawn black on a black bar, and coloured parts that lose their colour.
TEST(JoinedImageTest, isATemplateOnlyOfTemplates) {
    const ImageContext context{.appearance = Appearance::Dark};
    FakeState stencil{.width = 10, .isTemplate = true, .color = Qt::black};
    FakeState colored{.width = 10, .color = Qt::red};
    const SegmentImage a{QStringLiteral("a"), *FakeSegment(stencil).menubarImage(context)};
    const SegmentImage b{QStringLiteral("b"), *FakeSegment(colored).menubarImage(context)};
    const StatusImage all = joined({a, a}, 0, context).image;
    EXPECT_TRUE(all.isTemplate);
    EXPECT_EQ(all.image.pixelColor(15, 5), QColor(Qt::black));
    const StatusImage mixed = joined({a, b}, 0, context).image;
    EXPECT_FALSE(mixed.isTemplate);
    EXPECT_EQ(mixed.image.pixelColor(5, 5), QColor(Qt::white));
    EXPECT_EQ(mixed.image.pixelColor(15, 5), QColor(Qt::red));
}

TEST_F(CombinedModuleTest, manyUpdatesInOneTurnCostOneImageOfWhatIsNew) {
    module.start();
    settle();
    reset();
    QSignalSpy rendered(&module, &ShownItem::rendered);
    for (int i = 0; i < 50; ++i) {
        of("b").live->onImageChanged();
        of("d").live->onImageChanged();
    }
    EXPECT_EQ(rendered.count(), 0);
    settle();
    EXPECT_EQ(rendered.count(), 1);
    EXPECT_EQ(drawn(), QStringList({QStringLiteral("b"), QStringLiteral("d")}));
    notifications.post("globalSettingsChanged");
    settle();
    EXPECT_EQ(rendered.count(), 2);
    EXPECT_EQ(drawn().size(), 6) << "everything anew";
}

TEST_F(CombinedModuleTest, aSegmentWithoutAnImageIsLeftOutUntilItHasOne) {
    settings.setSpacing(5);
    of("b").width = 0;
    of("c").width = 40;
    module.start();
    EXPECT_EQ(ranges(), QStringLiteral("a 0-30, c 35-75, d 80-110"));
    EXPECT_EQ(bar.items().front()->pixelWidth(), 110);
    of("b").width = 10;
    of("b").live->onImageChanged();
    settle();
    EXPECT_EQ(ranges(), QStringLiteral("a 0-30, b 35-45, c 50-90, d 95-125"));
    of("b").width = 0;
    of("b").live->onImageChanged();
    settle();
    EXPECT_EQ(ranges(), QStringLiteral("a 0-30, c 35-75, d 80-110")) << "an old image stayed";
    click(33);
    EXPECT_EQ(shown(), QStringLiteral("d"));
}

TEST_F(CombinedModuleTest, withNothingToShowItShowsItsSymbol) {
    for (const char* id : {"a", "b", "c", "d"}) {
        settings.setEnabled(QLatin1String(id), false);
    }
    module.start();
    const StatusImage& image = bar.items().front()->image();
    EXPECT_EQ(image.size, QSizeF(22, 22));
    EXPECT_TRUE(image.isTemplate);
    EXPECT_GT(qAlpha(image.image.pixel(4, 6)), 0);
    click(5);  // nothing to open
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    of("a").width = 0;
    settings.setEnabled(QStringLiteral("a"), true);
    settle();
    EXPECT_EQ(ranges(), QString());
    EXPECT_TRUE(bar.items().front()->image().isTemplate);
    click(5);
    EXPECT_EQ(shown(), QStringLiteral("a")) << "it is there, though it has no image yet";
}

TEST_F(CombinedModuleTest, onlyOtherMembersRestartTheModules) {
    module.start();
    reset();
    settings.setSpacing(11);
    settings.setOrder(settings.order());
    settle();
    EXPECT_EQ(ranges(), QStringLiteral("a 0-30, b 41-71, c 82-112, d 123-153"));
    EXPECT_EQ(of("a").made, 0);
    EXPECT_EQ(drawn(), QStringList()) << "drawn from its cache";
    settings.setEnabled(QStringLiteral("a"), false);
    settings.setEnabled(QStringLiteral("a"), true);
    settle();
    EXPECT_EQ(of("a").made, 0) << "there and back within one turn";
    settings.setEnabled(QStringLiteral("a"), false);
    settings.setOrder({QStringLiteral("d"), QStringLiteral("c"), QStringLiteral("b")});
    settle();
    EXPECT_EQ(ranges(), QStringLiteral("d 0-30, c 41-71, b 82-112"));
    EXPECT_EQ(of("a").stopped, 1);
    EXPECT_EQ(of("a").live, nullptr);
    EXPECT_EQ(of("d").stopped, 1);
    EXPECT_EQ(of("d").made, 1);
    module.stop();
    settings.setEnabled(QStringLiteral("a"), true);
    settle();
    EXPECT_EQ(of("d").stopped, 2);
    EXPECT_EQ(of("d").started, 1);
    EXPECT_TRUE(bar.items().empty());
}

TEST_F(CombinedModuleTest, aClickOpensTheSegmentsOwnPopoverAndASecondOneCloses) {
    settings.setSpacing(5);
    module.start();
    const struct {
        double x;
        const char* id;
    } rows[] = {{-3, "a"}, {0, "a"},   {29, "a"},  {32, "d"}, {36, "b"},
                {80, "c"}, {106, "d"}, {134, "d"}, {140, "d"}};
    for (const auto& row : rows) {
        reset();
        click(row.x);
        EXPECT_EQ(shown(), QLatin1String(row.id)) << row.x;
        EXPECT_EQ(of(row.id).willShow, 1);
        click(36);  // wherever
        EXPECT_EQ(shown(), QString()) << row.x;
        EXPECT_EQ(of(row.id).didClose, 1);
    }
    // As on a desktop: the popover has the mouse, and its press closes it before the click comes.
    reset();
    click(5);
    Popover* open = of("a").live->detailPopover();
    const QPoint onAnother = bar.items().front()->screenRect()->topLeft() + QPoint(120, 5);
    QTest::mousePress(open, Qt::LeftButton, {}, open->mapFromGlobal(onAnother));
    click(120);
    EXPECT_EQ(shown(), QString());
    EXPECT_EQ(of("a").didClose, 1);
    click(120);
    EXPECT_EQ(shown(), QStringLiteral("d"));
    click(5, Qt::RightButton);
    EXPECT_EQ(shown(), QString());
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(menu->actions().front()->text(), QStringLiteral("Combined Settings…"));
    module.stop();
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

// Catches popovers and modules that are used after they are gone.
TEST_F(CombinedModuleTest, membersMayChangeWhileAPopoverIsOpen) {
    module.start();
    for (const char* toggled : {"a", "b"}) {  // the open one, another one
        reset();
        click(5);
        ASSERT_EQ(shown(), settings.orderedEnabledIDs().front());
        FakeState& opened = state[shown()];
        settings.setEnabled(QLatin1String(toggled), false);
        settle();
        EXPECT_EQ(shown(), QString());
        EXPECT_EQ(opened.didClose, 1) << toggled;
        click(5);
        click(5);
        EXPECT_EQ(shown(), QString());
    }
    click(5);
    const QString last = shown();
    module.stop();
    EXPECT_EQ(state[last].didClose, 2 - (last == QStringLiteral("a")));
}

TEST_F(CombinedModuleTest, inASquareCellOneSegmentIsShownAndAMenuOffersAll) {
    of("a").width = 0;
    CombinedModule square(blindContext, settings, catalog());
    square.start();
    ASSERT_EQ(blind.item->images.size(), 2U);
    EXPECT_EQ(blind.item->images[0].image.size(), QSize(22, 22));
    EXPECT_EQ(blind.item->images[1].image.size(), QSize(44, 44));
    reset();
    of("b").live->onImageChanged();
    settle();
    EXPECT_EQ(of("b").drawn, 2) << "one for each scale";
    EXPECT_EQ(of("c").drawn, 0);

    clickBlind();
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    ASSERT_EQ(menu->actions().size(), 4);
    EXPECT_TRUE(menu->actions()[2]->text().startsWith(QStringLiteral("Title c")));
    for (int i = 0; i < 3; ++i) {
        QTest::keyClick(menu, Qt::Key_Down);
    }
    QTest::keyClick(menu, Qt::Key_Return);
    settle();
    EXPECT_EQ(shown(), QStringLiteral("c"));
    clickBlind();
    EXPECT_EQ(shown(), QString());
    EXPECT_EQ(of("c").didClose, 1);

    // A member that leaves while the menu is open cannot be opened any more.
    clickBlind();
    menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    settings.setEnabled(QStringLiteral("c"), false);
    settle();
    menu->actions()[2]->trigger();
    menu->close();
    settle();
    EXPECT_EQ(shown(), QString());

    for (const char* id : {"a", "b"}) {
        settings.setEnabled(QLatin1String(id), false);
    }
    settle();
    clickBlind();
    EXPECT_EQ(shown(), QStringLiteral("d")) << "one needs no menu";
}

}  // namespace
}  // namespace vostel
