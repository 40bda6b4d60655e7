#pragma once

#include <QColor>

#include "ui/Piece.h"

namespace vostel {

// Both rates side by side, big, each with its arrow and its peak under it.
class RatesRow : public Piece {
    Q_OBJECT

  public:
    struct Direction {
        QString rate;
        QString peak;
        QColor color;

        bool operator==(const Direction&) const = default;
    };

    explicit RatesRow(QWidget* parent = nullptr);

    void setDown(const Direction& direction);
    void setUp(const Direction& direction);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void describe();

    Direction down;
    Direction up;
};

// A triangle that points up or down, in a box of the widget's coordinates.
void drawTriangle(QPainter& painter, const QRectF& box, bool up, const QColor& color);

}  // namespace vostel
