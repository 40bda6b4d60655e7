#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include <QImage>
#include <QPainter>

#include "render/MenuBarImage.h"

namespace vostel {
namespace {

const EffAppearance colors{QColor(0, 255, 0), QColor(255, 0, 0, 51), QColor(0, 0, 255), false};

EffAppearance monochrome(QColor background) {
    return {QColor(0, 255, 0), background, QColor(0, 0, 255), true};
}

ImageContext atScale(double scale) {
    ImageContext context;
    context.scale = scale;
    return context;
}

void fillForeground(QPainter& painter, const QRectF& rect, const ImageColors& resolved) {
    painter.fillRect(rect, resolved.foreground);
}

// The smallest rectangle around the pixels that `matches` accepts.
template <typename Matches>
QRect extent(const QImage& image, Matches matches) {
    QRect result;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (matches(image.pixelColor(x, y))) {
                result |= QRect(x, y, 1, 1);
            }
        }
    }
    return result;
}

bool isForeground(const QColor& color) {
    return color.green() > 200 && color.alpha() > 200;
}
bool isText(const QColor& color) {
    return color.blue() > 60 && color.alpha() > 60;
}

TEST(MenuBarImage, unlabelledImageIsAsWideAsItsContent) {
    const StatusImage image =
        MenuBarImage::makeLabeled(30, QString(), 7, colors, atScale(2), fillForeground);
    EXPECT_EQ(image.size, QSizeF(30, 22));
    EXPECT_EQ(image.image.size(), QSize(60, 44));
    EXPECT_EQ(image.image.devicePixelRatio(), 2);
    EXPECT_EQ(extent(image.image, isForeground), QRect(0, 0, 60, 44));
    EXPECT_FALSE(image.isTemplate);
}

// Catches sizes that give no image, and an image of any size asked for.
TEST(MenuBarImage, sizesAreBounded) {
    const double inf = std::numeric_limits<double>::infinity();
    for (const double width : {0.0, -5.0, std::nan("")}) {
        EXPECT_EQ(MenuBarImage::makeLabeled(width, QString(), 7, colors, {}, fillForeground)
                      .image.width(),
                  1);
        EXPECT_EQ(MenuBarImage::make(width, colors, {}, fillForeground).image.width(), 1);
    }
    EXPECT_EQ(MenuBarImage::make(inf, colors, {}, fillForeground).image.width(), 4096);
    EXPECT_EQ(MenuBarImage::make(10, colors, atScale(0), fillForeground).image.width(), 10);
}

// Catches a label that is drawn over the content, upside down or not at all, and content that is
// not centred on a whole point.
TEST(MenuBarImage, labelWidensTheImageAndStandsUnderTheCentredContent) {
    const QString label = QStringLiteral("MMMMM");
    for (const double scale : {1.0, 1.25, 1.5, 2.0}) {
        const StatusImage image =
            MenuBarImage::makeLabeled(8, label, 7, colors, atScale(scale), fillForeground);
        const double labelWidth = std::floor(MenuBarImage::textWidth(label, 7, scale)) + 1;
        ASSERT_GT(labelWidth, 8);
        EXPECT_EQ(image.size.width(), labelWidth);

        const QRect content = extent(image.image, isForeground);
        const double left = std::round((labelWidth - 8) / 2);
        EXPECT_NEAR(content.left(), left * scale, 0.51) << scale;
        EXPECT_NEAR(content.width(), 8 * scale, 1) << scale;
        EXPECT_EQ(content.top(), 0);
        EXPECT_NEAR(content.height(), 14 * scale, 0.51) << scale;

        const QRect text = extent(image.image, isText);
        EXPECT_GT(text.top(), content.bottom()) << scale;
        EXPECT_GT(text.height(), 4 * scale) << scale;
        EXPECT_NEAR(text.center().x(), image.image.width() / 2.0, 1.5 * scale) << scale;
    }
}

TEST(MenuBarImage, textIsUpright) {
    const StatusImage image = MenuBarImage::make(
        20, colors, atScale(1), [](QPainter& painter, const QRectF& rect, const ImageColors& c) {
            MenuBarImage::drawText(painter, rect, QStringLiteral("L"), 14, c.text);
        });
    const QRect text = extent(image.image, isText);
    const auto widthFrom = [&](int y) {
        return extent(image.image.copy(0, y, image.image.width(), 3), isText).width();
    };
    EXPECT_GT(widthFrom(text.bottom() - 2), widthFrom(text.top()) + 2);
}

TEST(MenuBarImage, longLabelIsCutTo120Points) {
    const StatusImage image =
        MenuBarImage::makeLabeled(8, QString(100, u'W'), 7, colors, {}, fillForeground);
    EXPECT_EQ(image.size.width(), 120);
    // Not clipped in the middle of a letter: the ellipsis ends before the edge.
    EXPECT_LT(extent(image.image, isText).width(), 121);
    EXPECT_GT(extent(image.image, isText).width(), 100);
}

TEST(MenuBarImage, monochromeIsABlackTemplateWithTheTracksAlpha) {
    const auto paint = [](QPainter& painter, const QRectF& rect, const ImageColors& resolved) {
        painter.fillRect(QRectF(0, 0, 10, 22), resolved.foreground);
        painter.fillRect(QRectF(10, 0, 10, rect.height()), resolved.track);
    };
    struct Row {
        QColor background;
        int alpha;
    };
    for (const Row& row : {Row{QColor(255, 0, 0, 51), 51}, {QColor(), 26}}) {
        const StatusImage image = MenuBarImage::make(20, monochrome(row.background), {}, paint);
        EXPECT_TRUE(image.isTemplate);
        EXPECT_EQ(image.image.pixelColor(5, 10), QColor(Qt::black));
        EXPECT_EQ(image.image.pixelColor(15, 10), QColor(0, 0, 0, row.alpha));
    }
}

// Catches a value that runs out of the square cell and a meter that lies about its fraction.
TEST(MenuBarImage, squareShowsValueLabelAndMeter) {
    for (const char* value : {"7%", "100%", "1.5 K/s", "much too long for a cell"}) {
        const StatusImage image = MenuBarImage::makeSquare(
            QStringLiteral("CPU"), QString::fromLatin1(value), 0.5, colors, atScale(2));
        ASSERT_EQ(image.image.size(), QSize(44, 44));
        const QRect text = extent(image.image, isText);
        EXPECT_GT(text.width(), 10) << value;
        const QRect meter = extent(image.image, isForeground);
        EXPECT_NEAR(meter.width(), 22, 1) << value;
        EXPECT_GT(meter.top(), text.bottom()) << value;
    }
}

}  // namespace
}  // namespace vostel
