#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include <QImage>
#include <QPainter>

#include "render/MeterGraph.h"
#include "render/SymbolImage.h"

namespace vostel {
namespace {

const QColor track(255, 0, 0);
const QColor data(0, 255, 0);

// A canvas in points, y upward.
template <typename Draw>
QImage drawn(int width, int height, double scale, Draw draw) {
    QImage image(static_cast<int>(std::ceil(width * scale)),
                 static_cast<int>(std::lround(height * scale)),
                 QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.translate(0, image.height());
    painter.scale(scale, -scale);
    draw(painter);
    return image;
}

// Widths in pixels of the runs of non-transparent columns in one row, from the left.
std::vector<int> runs(const QImage& image, int y) {
    std::vector<int> result;
    bool inside = false;
    for (int x = 0; x < image.width(); ++x) {
        const bool lit = image.pixelColor(x, y).alpha() > 0;
        if (lit && !inside) {
            result.push_back(0);
        }
        if (lit) {
            ++result.back();
        }
        inside = lit;
    }
    return result;
}

// Catches a fill for next to nothing, a value that is not clamped, and a bar that hangs from the
// top.
TEST(MeterGraph, singleBarFillsFromTheBottomAboveHalfAPoint) {
    struct Row {
        double value;
        int lit;  // rows of the middle column in the data colour, whole ones
    };
    for (const Row& row : {Row{0.004, 0},
                           {0.5 / 22, 0},
                           {0.5, 11},
                           {1.0, 22},
                           {7.0, 22},
                           {-1, 0},
                           {std::nan(""), 0}}) {
        const QImage image = drawn(8, 22, 1, [&](QPainter& painter) {
            MeterGraph::drawSingleBar(painter, QRectF(0, 0, 8, 22), row.value, data, track);
        });
        int lit = 0;
        for (int y = 0; y < 22; ++y) {
            const QColor color = image.pixelColor(4, y);
            lit += color.green() == 255 ? 1 : 0;
            EXPECT_EQ(color.alpha(), 255) << y;
        }
        EXPECT_EQ(lit, row.lit) << row.value;
    }
    const QImage small = drawn(8, 22, 1, [&](QPainter& painter) {
        MeterGraph::drawSingleBar(painter, QRectF(0, 0, 8, 22), 0.03, data, track);
    });
    EXPECT_GT(small.pixelColor(4, 21).green(), 100);
    EXPECT_EQ(small.pixelColor(4, 20).green(), 0);
}

// Catches sharp, and too round, corners: a quarter circle is 0.29 of its radius away from the
// corner of its square, on the diagonal.
TEST(MeterGraph, cornersAreRoundUpToOneAndAHalfPoints) {
    constexpr int scale = 40;
    const struct {
        const char* what;
        double width;
        double height;
        double value;  // what is seen ends there
        double radius;
    } rows[] = {
        {"wide", 8, 22, 1, 1.5},
        {"no wider than two points", 2, 22, 1, 1},
        {"lower than wide", 8, 2, 1, 1},
        {"half full", 8, 22, 0.5, 1.5},
        {"nearly empty", 8, 20, 0.05, 0.5},
    };
    for (const auto& row : rows) {
        for (const bool single : {true, false}) {
            const QImage image = drawn(8, 22, scale, [&](QPainter& painter) {
                const QRectF rect(0, 0, row.width, row.height);
                if (single) {
                    MeterGraph::drawSingleBar(painter, rect, row.value, data, Qt::transparent);
                } else {
                    MeterGraph::drawBarRow(painter, rect, {&row.value, 1}, 0, data,
                                           Qt::transparent);
                }
            });
            const double height = row.height * row.value * scale;
            const auto diagonal = [&](double share, bool top) {  // share of the way to the curve
                const int step =
                    static_cast<int>(row.radius * scale * (1 - std::sqrt(0.5)) * share);
                const int y = top ? image.height() - static_cast<int>(height) + step
                                  : image.height() - 1 - step;
                return std::max(
                    image.pixelColor(step, y).alpha(),
                    image.pixelColor(static_cast<int>(row.width * scale) - 1 - step, y).alpha());
            };
            for (const bool top : {true, false}) {
                EXPECT_EQ(diagonal(0.85, top), 0) << row.what << (single ? "" : ", in a row");
                EXPECT_EQ(diagonal(1.15, top), 255) << row.what << (single ? "" : ", in a row");
            }
        }
    }
}

TEST(MeterGraph, nothingIsDrawnInAnEmptyRectangle) {
    const std::vector<double> values(4, 1.0);
    const QImage image = drawn(8, 22, 1, [&](QPainter& painter) {
        for (const QRectF& rect : {QRectF(0, 0, 0, 22), QRectF(0, 0, 8, 0), QRectF(4, 4, -4, -4)}) {
            MeterGraph::drawSingleBar(painter, rect, 1, data, track);
            MeterGraph::drawBarRow(painter, rect, values, 1, data, track);
            MeterGraph::drawLineGraph(painter, rect, values, data, true);
            MeterGraph::drawGraphPanel(painter, rect, values, data, track);
        }
        MeterGraph::drawBarRow(painter, QRectF(0, 0, 8, 22), {}, 1, data, track);
        MeterGraph::drawLineGraph(painter, QRectF(0, 0, 8, 22), {values.data(), 1}, data, true);
    });
    EXPECT_TRUE(runs(image, 11).empty());
}

// Catches bars of one row that differ in width or lose their gap at a fractional scale.
TEST(MeterGraph, barsOfARowAreEquallyWideAtEveryScale) {
    struct Row {
        int count;
        int width;
        double scale;
        int pixels;
    };
    for (const Row& row : {Row{8, 40, 1, 4},
                           {8, 40, 1.25, 5},
                           {8, 40, 1.5, 6},
                           {8, 40, 2, 8},
                           {16, 48, 1, 2},
                           {16, 48, 1.25, 2},
                           {16, 48, 1.5, 3},
                           {16, 48, 2, 4},
                           {32, 84, 1, 1}}) {
        const std::vector<double> values(static_cast<std::size_t>(row.count), 0.5);
        const QImage image = drawn(row.width, 22, row.scale, [&](QPainter& painter) {
            MeterGraph::drawBarRow(painter, QRectF(0, 0, row.width, 22), values, 1, data, track);
        });
        const std::vector<int> expected(values.size(), row.pixels);
        EXPECT_EQ(runs(image, image.height() / 2), expected) << row.count << " at " << row.scale;
        EXPECT_EQ(image.pixelColor(0, image.height() / 2).alpha(), 255) << "blurred edge";
    }
}

// Catches lost processors: 256 bars in 84 pixels show each pixel's mean load.
TEST(MeterGraph, moreBarsThanPixelsAreAveraged) {
    std::vector<double> values(256, 0.0);
    std::fill(values.begin() + 128, values.end(), 1.0);
    const QImage image = drawn(84, 22, 1, [&](QPainter& painter) {
        MeterGraph::drawBarRow(painter, QRectF(0, 0, 84, 22), values, 1, data, track);
    });
    EXPECT_EQ(image.pixelColor(40, 10), track);
    EXPECT_EQ(image.pixelColor(43, 10), data);
    EXPECT_EQ(runs(image, 10), std::vector<int>{84});
}

TEST(MeterGraph, smoothPathGoesThroughItsPoints) {
    EXPECT_TRUE(MeterGraph::smoothPath(std::vector<QPointF>{{1, 1}}).isEmpty());
    EXPECT_TRUE(MeterGraph::polyline({}).isEmpty());

    const QPainterPath line = MeterGraph::smoothPath(std::vector<QPointF>{{0, 0}, {6, 12}});
    ASSERT_EQ(line.elementCount(), 4);
    EXPECT_EQ(QPointF(line.elementAt(1)), QPointF(1, 2));
    EXPECT_EQ(QPointF(line.elementAt(2)), QPointF(5, 10));

    // Worked by hand: controls are a sixth of the chord between a point's neighbours away.
    const QPainterPath curve =
        MeterGraph::smoothPath(std::vector<QPointF>{{0, 0}, {6, 6}, {12, 0}, {18, 6}});
    const std::vector<QPointF> expected = {{0, 0},  {1, 1},  {4, 6},  {6, 6},  {8, 6},
                                           {10, 0}, {12, 0}, {14, 0}, {17, 5}, {18, 6}};
    ASSERT_EQ(curve.elementCount(), 10);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(QPointF(curve.elementAt(i)), expected[static_cast<std::size_t>(i)]) << i;
    }
}

// Catches a history drawn backwards or upside down, and an area that is opaque.
TEST(MeterGraph, lineGraphRisesToTheNewestValue) {
    const std::vector<double> history = {0.0, 1.0};
    const QImage image = drawn(40, 20, 1, [&](QPainter& painter) {
        MeterGraph::drawLineGraph(painter, QRectF(0, 0, 40, 20), history, data, true);
    });
    EXPECT_EQ(image.pixelColor(5, 2).alpha(), 0);
    EXPECT_NEAR(image.pixelColor(35, 15).alphaF(), 0.3, 0.01);
    EXPECT_GT(image.pixelColor(20, 9).alpha(), 200);
}

// Catches a symbol that is missing from the resources or does not parse.
TEST(SymbolImage, everySymbolDrawsSomethingInItsColour) {
    for (const char* name :
         {"cpu", "memorychip", "gpu", "network", "chart.bar.xaxis", "gearshape", "app.dashed",
          "rectangle.3.group", "exclamationmark.triangle.fill", "doc.on.doc", "checkmark",
          "arrow.down", "arrow.up", "magnifyingglass", "moon.zzz"}) {
        const QImage image = symbolImage(QString::fromLatin1(name), 16, 1.25, data);
        ASSERT_EQ(image.size(), QSize(20, 20)) << name;
        int opaque = 0;
        for (int y = 0; y < 20; ++y) {
            for (int x = 0; x < 20; ++x) {
                opaque += image.pixelColor(x, y) == data ? 1 : 0;
            }
        }
        EXPECT_GT(opaque, 5) << name;
        EXPECT_LT(opaque, 250) << name;
    }
    EXPECT_TRUE(symbolImage(QStringLiteral("no.such.symbol"), 16, 1, data).isNull());
}

}  // namespace
}  // namespace vostel
