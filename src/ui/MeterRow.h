#pragma once

#include <QColor>

#include "ui/Piece.h"

namespace vostel {

// A label, a thin meter (fraction 0 ... 1) and a value, on one line.
class MeterRow : public Piece {
    Q_OBJECT

  public:
    explicit MeterRow(const QString& label, QWidget* parent = nullptr);

    void setLabel(const QString& text);
    void setValue(const QString& text, double fraction);
    void setColor(const QColor& color);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void describe();

    QString label;
    QString value;
    double fraction = 0;
    QColor color;
};

}  // namespace vostel
