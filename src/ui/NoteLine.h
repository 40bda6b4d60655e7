#pragma once

#include "ui/Piece.h"

namespace vostel {

// A short hint or warning, wrapped; takes no room while the text is empty.
class NoteLine : public Piece {
    Q_OBJECT

  public:
    enum class Kind { Hint, Warning };

    explicit NoteLine(QWidget* parent = nullptr);

    // `symbol` may be empty; a warning without one gets a triangle.
    void setNote(const QString& text, Kind kind = Kind::Hint, const QString& symbol = {});

    QSize sizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    int textLeft() const;

    QString text;
    QString symbol;
    Kind kind = Kind::Hint;
};

}  // namespace vostel
