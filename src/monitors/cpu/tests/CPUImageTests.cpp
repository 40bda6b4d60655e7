#include <gtest/gtest.h>

#include "monitors/cpu/CPUImage.h"

namespace vostel {
namespace {

CPUImageInput input(int processors) {
    CPUImageInput result;
    result.coreCount = processors;
    result.appearance = {Qt::green, QColor(0, 0, 255), Qt::white, false};
    result.efficiencyColor = Qt::red;
    result.load.perCore.assign(static_cast<std::size_t>(processors), 0.0);
    return result;
}

// Columns of the image's lowest row that hold the colour.
std::vector<int> litColumns(const QImage& image, const QColor& color) {
    std::vector<int> result;
    for (int x = 0; x < image.width(); ++x) {
        if (image.pixelColor(x, image.height() - 3) == color) {
            result.push_back(x);
        }
    }
    return result;
}

TEST(CPUImageTest, Widths) {
    const struct {
        int processors;
        bool single, cores, graph, split;
        double width;
    } rows[] = {
        {16, false, true, false, true, 54}, {16, false, true, false, false, 50},
        {32, false, true, false, true, 84}, {256, false, true, false, false, 84},
        {1, false, true, false, false, 5},  {4, true, false, false, false, 8},
        {4, true, true, true, false, 68},   {4, false, false, true, false, 36},
        {4, false, false, false, true, 22},  // no segment: the symbol
    };
    for (const auto& row : rows) {
        CPUImageInput in = input(row.processors);
        in.showSingleBar = row.single;
        in.showPerCoreBars = row.cores;
        in.showGraph = row.graph;
        in.splitCores = row.split;
        in.layout = {row.processors / 2, row.processors - row.processors / 2};
        const StatusImage image = makeCPUImage(in, {});
        EXPECT_EQ(image.size.width(), row.width) << row.processors;
        EXPECT_EQ(image.isTemplate, row.width == 22);
    }
}

TEST(CPUImageTest, EachProcessorHasItsOwnBar) {
    CPUImageInput in = input(4);
    in.showPerCoreBars = true;
    in.load.perCore = {0, 1, 0, 0.004};
    in.load.overall = 0.25;
    const StatusImage image = makeCPUImage(in, {});  // 14 wide: slots of 3.5
    const auto lit = litColumns(image.image, Qt::green);
    ASSERT_FALSE(lit.empty());
    EXPECT_GE(lit.front(), 3);
    EXPECT_LE(lit.back(), 6);
}

TEST(CPUImageTest, EfficiencyProcessorsStandAtTheRightInTheirColour) {
    CPUImageInput in = input(4);
    in.showPerCoreBars = true;
    in.splitCores = true;
    in.layout = {2, 2};
    in.load.perCore = {1, 0, 1, 0};  // efficiency first
    StatusImage image = makeCPUImage(in, {});
    const auto performance = litColumns(image.image, Qt::green);
    const auto efficiency = litColumns(image.image, Qt::red);
    ASSERT_FALSE(performance.empty());
    ASSERT_FALSE(efficiency.empty());
    EXPECT_LT(performance.back(), 3);
    EXPECT_GE(efficiency.front(), 9);
    EXPECT_LT(efficiency.back(), 12);
    // In monochrome there is one colour, and the image is a stencil.
    in.appearance.monochrome = true;
    in.appearance.background.setAlphaF(0.2F);
    image = makeCPUImage(in, {});
    EXPECT_TRUE(image.isTemplate);
    EXPECT_TRUE(litColumns(image.image, Qt::red).empty());
    EXPECT_EQ(litColumns(image.image, Qt::black).size(), performance.size() + efficiency.size());
    // A machine with one kind never splits.
    in.layout = {};
    in.appearance.monochrome = false;
    EXPECT_TRUE(litColumns(makeCPUImage(in, {}).image, Qt::red).empty());
}

TEST(CPUImageTest, ASquareCellGetsAFullSquare) {
    CPUImageInput in = input(16);
    in.showPerCoreBars = true;
    in.load.overall = 1;
    const StatusImage image = makeCPUImage(in, {Appearance::Dark, ImageShape::Square, 1.0, 22});
    EXPECT_EQ(image.size, QSizeF(22, 22));
}

}  // namespace
}  // namespace vostel
