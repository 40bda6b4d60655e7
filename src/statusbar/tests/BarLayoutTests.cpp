#include <gtest/gtest.h>

#include "statusbar/BarLayout.h"
#include "statusbar/BarPainter.h"
#include "statusbar/DockStrut.h"
#include "statusbar/PixelFormat.h"

using namespace vostel;

namespace {

QStringList words(const char* text) {
    return QString::fromLatin1(text).split(u' ', Qt::SkipEmptyParts);
}

std::string ids(const std::vector<BarEntry>& entries) {
    std::string result;
    for (const BarEntry& entry : entries)
        result += std::to_string(entry.id);
    return result;
}

}  // namespace

// Items that jump about when one is switched off and on again, or that lose a new item.
TEST(BarLayout, orderFollowsTheStoreAndKeepsWhatItDoesNotKnow) {
    struct Case {
        const char *present, *stored, *expected;
    };
    for (const auto& [present, stored, expected] :
         std::initializer_list<Case>{{"a b c", "", "a b c"},
                                     {"a b c", "c a b", "c a b"},
                                     {"n a b", "b a", "b a n"},
                                     {"b", "a b c", "b"},
                                     {"a x a", "x a", "x a a"},
                                     {"", "a b", ""}}) {
        const QStringList names = words(present);
        QStringList result;
        for (const int index : BarLayout::ordered(names, words(stored)))
            result << names[index];
        EXPECT_EQ(result, words(expected)) << present << " in " << stored;
    }
}

// A drag while some items are switched off must not send those to another place.
TEST(BarLayout, mergedKeepsAbsentItemsBehindTheirNeighbour) {
    struct Case {
        const char *stored, *shown, *expected;
    };
    for (const auto& [stored, shown, expected] :
         std::initializer_list<Case>{{"a b c", "c a", "c a b"},
                                     {"off a b", "b a", "off b a"},
                                     {"a off1 off2 b", "b a", "b a off1 off2"},
                                     {"", "b a", "b a"},
                                     {"a b", "", "a b"},
                                     {"a b", "b new a", "b new a"}}) {
        EXPECT_EQ(BarLayout::merged(words(stored), words(shown)), words(expected))
            << stored << " with " << shown;
    }
}

TEST(BarLayout, cellsEndAtTheRightAndAreCutOffAtTheLeft) {
    const BarMetrics metrics{100, 4, 5};
    EXPECT_EQ(BarLayout::placed({}, metrics), std::vector<BarCell>());
    EXPECT_EQ(BarLayout::placed({{1, 10}, {2, 0}, {3, 20}}, metrics),
              (std::vector<BarCell>{{1, 49, 18}, {3, 67, 28}}));
    const auto crowded = BarLayout::placed({{1, 60}, {2, 60}}, metrics);
    EXPECT_EQ(crowded, (std::vector<BarCell>{{1, -41, 68}, {2, 27, 68}}));
    EXPECT_EQ(BarLayout::cellAt(crowded, 26)->id, 1);
    EXPECT_EQ(BarLayout::cellAt(crowded, 27)->id, 2);
    EXPECT_EQ(BarLayout::cellAt(crowded, 95), nullptr);
}

// Cells at 40 (width 10), 50 (30), 80 (20): ids 1, 2, 3.
TEST(BarLayout, draggedItemPassesNeighboursAtTheirCentre) {
    const BarMetrics metrics{100, 0, 0};
    const std::vector<BarEntry> start{{1, 10}, {2, 30}, {3, 20}};
    struct Case {
        int id, x;
        const char* expected;
    };
    for (const auto& [id, x, expected] : std::initializer_list<Case>{{1, 40, "123"},
                                                                     {1, 55, "123"},
                                                                     {1, 56, "213"},
                                                                     {1, 90, "231"},
                                                                     {3, 65, "123"},
                                                                     {3, 64, "132"},
                                                                     {3, 44, "312"},
                                                                     {3, -500, "312"},
                                                                     {2, 61, "132"},
                                                                     {9, 0, "123"}}) {
        const auto result = BarLayout::dragged(start, metrics, id, x);
        EXPECT_EQ(ids(result), expected) << id << " to " << x;
        // The same pointer position again: neighbours of other widths must not swap back.
        EXPECT_EQ(BarLayout::dragged(result, metrics, id, x), result) << id << " to " << x;
    }
    // A hidden item between two others does not stop a drag.
    EXPECT_EQ(ids(BarLayout::dragged({{1, 10}, {2, 0}, {3, 10}}, metrics, 3, 80)), "321");
}

// Blurred graphs at odd widths or fractional scales.
TEST(BarPainter, imagesLandOnThePixelGridUnchanged) {
    for (const double ratio : {1.0, 1.25, 1.5, 2.0}) {
        StatusImage item;
        item.image = QImage(13, 27, QImage::Format_ARGB32_Premultiplied);
        for (int y = 0; y < 27; ++y) {
            for (int x = 0; x < 13; ++x) {
                item.image.setPixel(x, y, (x + y) % 2 ? 0xffff0000 : 0xff00ff00);
            }
        }
        item.image.setDevicePixelRatio(ratio);
        item.size = item.image.deviceIndependentSize();
        const QRect cell(50, 0, 20, 28);
        const QImage bar = paintBar(QRect(45, 0, 40, 28), {Appearance::Dark, BarEdge::Top, 28},
                                    {{0, cell, &item, false}});
        const QImage expected = item.image.convertToFormat(QImage::Format_RGB32);
        QImage there = bar.copy(QRect(5 + 3, 0, 13, 27));
        there.setDevicePixelRatio(ratio);
        EXPECT_EQ(there, expected) << ratio;
        EXPECT_EQ(bar.pixelColor(5, 5), barColors(Appearance::Dark).background);
        EXPECT_EQ(bar.pixelColor(0, 27), barColors(Appearance::Dark).line);
    }
}

TEST(BarPainter, stencilsTakeTheColourOfTheBar) {
    StatusImage item;
    item.image = QImage(4, 10, QImage::Format_ARGB32_Premultiplied);
    item.image.fill(Qt::black);
    item.size = {4, 10};
    item.isTemplate = true;
    const auto at = [&](Appearance appearance) {
        const QRect cell(0, 0, 4, 10);
        return paintBar(cell, {appearance, BarEdge::Bottom, 10}, {{0, cell, &item, false}})
            .pixelColor(2, 5);
    };
    EXPECT_EQ(at(Appearance::Dark), QColor(Qt::white));
    EXPECT_EQ(at(Appearance::Light), QColor(Qt::black));
}

TEST(PixelFormat, packsForOtherDisplays) {
    QImage image(3, 1, QImage::Format_RGB32);
    image.setPixel(0, 0, 0xffff0000);
    image.setPixel(1, 0, 0xff00ff80);
    image.setPixel(2, 0, 0xff0000ff);
    using Bytes = std::vector<std::uint8_t>;
    // 16 bits 5-6-5, padded to 32 bits; 0x80 of 255 is 16 of 31.
    EXPECT_EQ(packed(image, {16, 32, 0xf800, 0x07e0, 0x001f, false}),
              (Bytes{0x00, 0xf8, 0xf0, 0x07, 0x1f, 0x00, 0, 0}));
    EXPECT_EQ(packed(image, {32, 32, 0xff0000, 0xff00, 0xff, true}),
              (Bytes{0, 255, 0, 0, 0, 0, 255, 128, 0, 0, 0, 255}));
    EXPECT_EQ(packed(image, {24, 32, 0xff0000, 0xff00, 0xff, false}),
              (Bytes{0, 0, 255, 128, 255, 0, 255, 0, 0, 0, 0, 0}));
    // 10 bits a colour: full stays full.
    EXPECT_EQ(PixelFormat({32, 32, 0x3ff00000, 0xffc00, 0x3ff}).pixel(0xffffffff), 0x3fffffffu);
    EXPECT_TRUE(PixelFormat().isRgb32());
    EXPECT_FALSE(PixelFormat({32, 32, 0xff, 0xff00, 0xff0000}).isRgb32());
}

// A strut counts from the desktop's edge: on an inner edge it would swallow another monitor.
TEST(DockStrut, countsFromTheEdgeOfTheDesktop) {
    const QRect left(0, 100, 1000, 800);
    const QRect right(1000, 0, 1600, 900);
    const QRect root(0, 0, 2600, 900);
    using Strut = std::array<std::uint32_t, 12>;
    EXPECT_EQ(dockStrut(QRect(0, 100, 1000, 22), BarEdge::Top, root, {left, right}),
              (Strut{0, 0, 122, 0, 0, 0, 0, 0, 0, 999, 0, 0}));
    EXPECT_EQ(dockStrut(QRect(1000, 878, 1600, 22), BarEdge::Bottom, root, {left, right}),
              (Strut{0, 0, 0, 22, 0, 0, 0, 0, 0, 0, 1000, 2599}));
    const QRect upper(0, 0, 1000, 500);
    const QRect lower(0, 500, 1000, 500);
    EXPECT_EQ(
        dockStrut(QRect(0, 500, 1000, 22), BarEdge::Top, QRect(0, 0, 1000, 1000), {upper, lower}),
        Strut{});
}
