#include "monitors/cpu/CPUImage.h"

#include <algorithm>

#include <QPainter>

#include "render/BarImage.h"
#include "render/MenuBarImage.h"
#include "render/MeterGraph.h"

namespace vostel {

namespace {

constexpr double singleWidth = 8;
constexpr double graphWidth = 36;
constexpr double segmentGap = 5;
constexpr double coreSlot = 3;
constexpr double groupGap = 3;
constexpr double widestCores = 84;
constexpr double barSpacing = 1;

bool isSplit(const CPUImageInput& input) {
    return input.showPerCoreBars && input.splitCores && input.layout.isSplit();
}

void drawCores(QPainter& painter, const QRectF& rect, const CPUImageInput& input,
               const ImageColors& colors) {
    if (!isSplit(input)) {
        MeterGraph::drawBarRow(painter, rect, input.load.perCore, barSpacing, colors.foreground,
                               colors.track);
        return;
    }
    const CoreGroups groups = input.layout.split(input.load.perCore);
    // With more processors than the segment has room for, both groups shrink alike.
    const double wanted =
        (input.layout.performance + input.layout.efficiency) * coreSlot + groupGap;
    const double scale = std::min(1.0, rect.width() / wanted);
    const double performanceWidth = input.layout.performance * coreSlot * scale;
    const double efficiencyWidth = input.layout.efficiency * coreSlot * scale;
    const QRectF performance(rect.x(), rect.y(), performanceWidth, rect.height());
    const QRectF efficiency(performance.right() + groupGap * scale, rect.y(), efficiencyWidth,
                            rect.height());
    MeterGraph::drawBarRow(painter, performance, groups.performance, barSpacing, colors.foreground,
                           colors.track);
    MeterGraph::drawBarRow(painter, efficiency, groups.efficiency, barSpacing,
                           input.appearance.monochrome ? colors.foreground : input.efficiencyColor,
                           colors.track);
}

}  // namespace

double perCoreWidth(int coreCount, bool split) {
    return std::min(widestCores, coreCount * coreSlot + (split ? 6 : 2));
}

StatusImage makeCPUImage(const CPUImageInput& input, const ImageContext& context) {
    if (context.shape == ImageShape::Square) {
        const BarImage image{.fraction = input.load.overall,
                             .known = input.known,
                             .label = input.label,
                             .shortName = QStringLiteral("CPU"),
                             .appearance = input.appearance};
        return image.makeSquare(context);
    }
    const double coresWidth = perCoreWidth(input.coreCount, isSplit(input));
    double width = 0;
    for (const auto& [shown, segment] :
         {std::pair(input.showSingleBar, singleWidth), std::pair(input.showPerCoreBars, coresWidth),
          std::pair(input.showGraph, graphWidth)}) {
        if (shown) {
            width += (width > 0 ? segmentGap : 0) + segment;
        }
    }
    if (width == 0) {
        return MenuBarImage::placeholder(QStringLiteral("cpu"), QSizeF(16, 16), context);
    }
    return MenuBarImage::makeLabeled(
        width, input.label, input.labelSize, input.appearance, context,
        [&](QPainter& painter, const QRectF& rect, const ImageColors& colors) {
            QRectF segment(rect.x(), rect.y(), singleWidth, rect.height());
            const auto next = [&](double drawn) {
                segment.moveLeft(segment.left() + drawn + segmentGap);
            };
            if (!input.known) {
                for (const double drawn :
                     {input.showSingleBar ? singleWidth : 0, input.showPerCoreBars ? coresWidth : 0,
                      input.showGraph ? graphWidth : 0}) {
                    segment.setWidth(drawn);
                    if (drawn > 0) {
                        MeterGraph::drawNoValue(painter, segment, colors.foreground, colors.track);
                        next(drawn);
                    }
                }
                return;
            }
            if (input.showSingleBar) {
                MeterGraph::drawSingleBar(painter, segment, input.load.overall, colors.foreground,
                                          colors.track);
                next(singleWidth);
            }
            if (input.showPerCoreBars) {
                segment.setWidth(coresWidth);
                drawCores(painter, segment, input, colors);
                next(coresWidth);
            }
            if (input.showGraph) {
                segment.setWidth(graphWidth);
                MeterGraph::drawGraphPanel(painter, segment, input.history, colors.foreground,
                                           colors.track);
            }
        });
}

}  // namespace vostel
