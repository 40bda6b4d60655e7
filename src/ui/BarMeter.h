#pragma once

#include <vector>

#include <QColor>

#include "ui/Piece.h"

namespace vostel {

// A row of meter bars, one per value (fractions 0 ... 1). More than 64 bars are laid out in rows of
// equal length; from 512 on values share columns.
class BarMeter : public Piece {
    Q_OBJECT

  public:
    explicit BarMeter(QWidget* parent = nullptr);

    void setValues(std::vector<double> values);
    void setColor(const QColor& color);
    // Points between bars.
    void setSpacing(double points);
    // Bars are as wide as if there were `count` of them, so that two meters under each other have
    // equal bars. 0, or fewer than there are values: the bars fill the width.
    void setSlots(std::size_t count);
    // What the bars are, for assistive technology ("Performance cores").
    void setName(const QString& text);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    int rowCount() const;

    std::vector<double> values;
    QColor color;
    double spacing = 2;
    std::size_t slotCount = 0;
    QString name;
};

}  // namespace vostel
