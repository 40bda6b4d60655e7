#include <gtest/gtest.h>

#include <cmath>

#include <QPainter>

#include "monitors/network/NetworkGraph.h"
#include "monitors/network/NetworkImage.h"

namespace vostel {
namespace {

constexpr int height = 20;

NetworkImageInput input(DisplayMode mode, DisplayStyle style, std::vector<NetSample> history = {}) {
    NetworkImageInput result;
    result.mode = mode;
    result.style = style;
    result.showNumbers = false;
    result.appearance = {QColor(0, 255, 0), QColor(0, 0, 0, 0), Qt::white, false};
    result.upColor = QColor(255, 0, 0);
    result.history = std::move(history);
    return result;
}

QImage draw(const NetworkImageInput& in, double scale = 1) {
    return makeNetworkImage(in, {Appearance::Dark, ImageShape::Wide, scale, height}).image;
}

// The rows, from the top, in which the column shows mostly the one or the other colour.
struct Lit {
    std::vector<int> down;
    std::vector<int> up;
};

Lit lit(const QImage& image, int x) {
    Lit result;
    for (int y = 0; y < image.height(); ++y) {
        const QColor color = image.pixelColor(x, y);
        if (color.alpha() > 100) {
            (color.green() > color.red() ? result.down : result.up).push_back(y);
        }
    }
    return result;
}

TEST(NetworkImageTest, DirectionsKeepTheirPlaces) {
    // The newest sample alone carries traffic: three parts down, one part up.
    const std::vector<NetSample> history = {{}, {}, {300e3, 100e3}};
    const struct {
        DisplayMode mode;
        int downFirst, downLast, upFirst, upLast;  // rows from the top
    } rows[] = {
        {DisplayMode::stacked, 6, 19, 0, 4},
        {DisplayMode::mirrored, 10, 18, 6, 8},
        {DisplayMode::opposing, 6, 19, 0, 4},
    };
    for (const auto& row : rows) {
        const QImage image = draw(input(row.mode, DisplayStyle::bars, history));
        const Lit newest = lit(image, 58);  // the corner of column 59 is round
        EXPECT_TRUE(lit(image, 50).down.empty() || row.mode == DisplayMode::mirrored);
        const Lit last = lit(image, 59);
        ASSERT_FALSE(last.down.empty());
        ASSERT_FALSE(last.up.empty());
        EXPECT_TRUE(newest.up.empty()) << "one column for each sample";
        EXPECT_NEAR(last.down.front(), row.downFirst, 1) << int(row.mode);
        EXPECT_NEAR(last.down.back(), row.downLast, 1) << int(row.mode);
        EXPECT_NEAR(last.up.front(), row.upFirst, 1) << int(row.mode);
        EXPECT_NEAR(last.up.back(), row.upLast, 1) << int(row.mode);
        EXPECT_GT(last.down.front(), last.up.back()) << "upload is above download";
    }
}

TEST(NetworkImageTest, DirectionsNeverTouch) {
    for (const DisplayMode mode :
         {DisplayMode::stacked, DisplayMode::mirrored, DisplayMode::opposing}) {
        for (const double scale : {1.0, 1.25, 2.0}) {
            NetworkImageInput in = input(mode, DisplayStyle::bars, {60, {5e9, 5e9}});
            const QImage image = draw(in, scale);
            const Lit column = lit(image, image.width() / 2);
            ASSERT_FALSE(column.down.empty());
            ASSERT_FALSE(column.up.empty());
            EXPECT_GE(column.down.front() - column.up.back(), 1);
            // Something between them is neither the one nor the other.
            bool gap = false;
            for (int y = column.up.back() - 1; y <= column.down.front() + 1; ++y) {
                const QColor color = image.pixelColor(image.width() / 2, y);
                gap = gap || color.alpha() < 200 || (color.red() > 60 && color.green() > 60);
            }
            EXPECT_TRUE(gap) << int(mode) << " at " << scale;
        }
    }
}

TEST(NetworkImageTest, MonochromeTellsThemApartByStrength) {
    for (const DisplayStyle style : {DisplayStyle::bars, DisplayStyle::line}) {
        NetworkImageInput in = input(DisplayMode::opposing, style, {60, {5e6, 5e6}});
        in.appearance.monochrome = true;
        const StatusImage image = makeNetworkImage(in, {Appearance::Dark, {}, 1, height});
        EXPECT_TRUE(image.isTemplate);
        const int up = image.image.pixelColor(30, 3).alpha();
        const int down = image.image.pixelColor(30, height - 4).alpha();
        EXPECT_GT(up, 20);
        EXPECT_GT(down, up * 3 / 2);
    }
}

TEST(NetworkImageTest, NothingAndIdleNoiseStayDark) {
    const std::vector<NetSample> histories[] = {{}, {{}}, {60, {0, 0}}, {60, {200, 90}}};
    for (const auto& history : histories) {
        for (const DisplayMode mode : {DisplayMode::stacked, DisplayMode::opposing}) {
            const QImage image = draw(input(mode, DisplayStyle::bars, history));
            for (int x = 0; x < image.width(); ++x) {
                const Lit column = lit(image, x);
                EXPECT_TRUE(column.down.empty() && column.up.empty()) << history.size();
            }
        }
        EXPECT_EQ(NetworkGraph::scaleOf(history, DisplayMode::stacked),
                  NetworkGraph::smallestScale);
    }
    // What has left the sixty samples that are shown does not press the rest down any more.
    std::vector<NetSample> longer(61, {1e6, 0});
    longer.front() = {1e12, 0};
    EXPECT_EQ(NetworkGraph::scaleOf(longer, DisplayMode::mirrored), 1e6);
}

TEST(NetworkImageTest, TheWidthIsTheSameForAllRates) {
    for (const double scale : {1.0, 1.5, 2.0}) {
        NetworkImageInput in = input(DisplayMode::opposing, DisplayStyle::bars);
        in.showNumbers = true;
        const ImageContext context{Appearance::Dark, ImageShape::Wide, scale, 22};
        const double width = makeNetworkImage(in, context).size.width();
        EXPECT_GT(width, 60 + 30);
        for (double rate = 0.4; rate < 2e11; rate *= 3.7) {
            in.current = {rate, 1e11 / rate};
            in.history.assign(7, in.current);
            const StatusImage image = makeNetworkImage(in, context);
            ASSERT_EQ(image.size.width(), width) << rate;
            // No digit is cut: the column before the text's right-aligned room is free.
            const int x = static_cast<int>(std::lround((60 + 5 + 5 + 1) * scale));
            for (int y = 0; y < image.image.height(); ++y) {
                ASSERT_EQ(image.image.pixelColor(x, y).alpha(), 0) << rate;
            }
        }
        in.showNumbers = false;
        EXPECT_EQ(makeNetworkImage(in, context).size.width(), 60);
    }
}

TEST(NetworkImageTest, ShortRatesHaveFourCharactersAtMost) {
    const struct {
        double rate;
        const char* text;
    } rows[] = {{0, "0"},          {-5, "0"},         {NAN, "0"},      {999.4, "999"},
                {999.6, "1.0K"},   {1536, "1.5K"},    {10188, "9.9K"}, {10189, "10K"},
                {1022976, "999K"}, {1023488, "1.0M"}, {1e11, "93G"},   {1e30, "909T"}};
    for (const auto& row : rows) {
        EXPECT_EQ(shortRate(row.rate), QLatin1String(row.text)) << row.rate;
    }
    const StatusImage cell = makeNetworkImage(input(DisplayMode::stacked, DisplayStyle::line),
                                              {Appearance::Dark, ImageShape::Square, 1, 24});
    EXPECT_EQ(cell.size, QSizeF(24, 24));
}

}  // namespace
}  // namespace vostel
