#pragma once

#include "ui/Piece.h"

namespace vostel {

// The head of a popover: what it is about at the left, the main value big at the right, and a
// quieter line under both when there is one.
class HeaderRow : public Piece {
    Q_OBJECT

  public:
    explicit HeaderRow(const QString& title, QWidget* parent = nullptr);

    void setTitle(const QString& text);
    void setValue(const QString& text);
    // An invalid colour is the text colour.
    void setValueColor(const QColor& color);
    void setDetail(const QString& text);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void describe();

    QString title;
    QString value;
    QString detail;
    QColor valueColor;
};

}  // namespace vostel
