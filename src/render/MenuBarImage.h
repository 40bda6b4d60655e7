#pragma once

#include <functional>
#include <optional>

#include <QColor>
#include <QRectF>
#include <QString>

#include "core/EffAppearance.h"
#include "statusbar/StatusImage.h"

class QPainter;

namespace vostel {

// The colours that a drawing gets: data, numbers, empty areas.
struct ImageColors {
    QColor foreground;
    QColor text;
    QColor track;
};

// Builds the image of every item: the module's drawing with an optional label under it. Image
// coordinates are points with the origin at the bottom left, y upward. Never fails; sizes that are
// negative or not finite read as 0, and an image is at most `widthLimit` wide. Nothing is kept
// between calls.
class MenuBarImage {
  public:
    // Draws inside the rectangle and leaves the painter as it found it (save and restore).
    using Draw =
        std::function<void(QPainter& painter, const QRectF& rect, const ImageColors& colors)>;

    static constexpr double labelWidthLimit = 120;  // points
    static constexpr double widthLimit = 4096;      // points

    // `contentWidth` and `labelSize` in points. An empty label gives the content the whole height.
    // The rectangle's edges lie on whole device pixels, which at 1.25 or 1.5 can move them by less
    // than one.
    static StatusImage makeLabeled(double contentWidth, const QString& label, double labelSize,
                                   const EffAppearance& appearance, const ImageContext& context,
                                   const Draw& draw);

    // `draw` paints the whole image itself.
    static StatusImage make(double width, const EffAppearance& appearance,
                            const ImageContext& context, const Draw& draw);

    // For a host that gives each item a square cell: the main value as big as the cell allows, the
    // label over it when there is one, and a thin meter under it when there is a `fraction`.
    static StatusImage makeSquare(const QString& label, const QString& valueText,
                                  std::optional<double> fraction, const EffAppearance& appearance,
                                  const ImageContext& context);

    // What stands in for an item that has nothing to draw: a template image 22 points wide with the
    // symbol in a rectangle of `symbolSize` points at x = 3, vertically centred.
    static StatusImage placeholder(const QString& symbol, const QSizeF& symbolSize,
                                   const ImageContext& context);

    // Monochrome: black, and the track black at the background's alpha (0.1 for an invalid colour).
    static ImageColors resolve(const EffAppearance& appearance);

    // One line of text in the system font, medium weight, `size` points, upright whatever the
    // painter's flip; text that does not fit ends in an ellipsis.
    static void drawText(QPainter& painter, const QRectF& rect, const QString& text, double size,
                         const QColor& color, Qt::Alignment alignment = Qt::AlignCenter);

    // Width in points that `text` takes when drawn with drawText in an image of `scale`.
    static double textWidth(const QString& text, double size, double scale);
};

}  // namespace vostel
