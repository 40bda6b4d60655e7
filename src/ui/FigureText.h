#pragma once

#include <QFont>
#include <QRectF>
#include <QString>

class QPainter;

namespace vostel {

// Text in which every digit takes the room of the widest one, so that a changing value does not
// wander. Fonts whose digits are equally wide are drawn as they are.
class FigureText {
  public:
    // Width in logical pixels on the main screen.
    static double width(const QFont& font, const QString& text);

    // Draws in the painter's pen, vertically centred, at the left or right edge of `rect`; text
    // that is too wide ends in an ellipsis.
    static void draw(QPainter& painter, const QRectF& rect, const QFont& font, const QString& text,
                     Qt::Alignment alignment = Qt::AlignRight);
};

}  // namespace vostel
