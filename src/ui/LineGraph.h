#pragma once

#include <vector>

#include <QColor>

#include "ui/Piece.h"

namespace vostel {

// A history of fractions 0 ... 1, oldest at the left, on a quiet panel.
class LineGraph : public Piece {
    Q_OBJECT

  public:
    explicit LineGraph(QWidget* parent = nullptr);

    void setHistory(std::vector<double> history);
    void setColor(const QColor& color);
    void setSmooth(bool on);
    void setName(const QString& text);
    // Logical pixels; 48 unless told.
    void setPanelHeight(int pixels);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    std::vector<double> history;
    QColor color;
    bool smooth = true;
    int panelHeight = 48;
};

}  // namespace vostel
