#pragma once

#include "ui/Piece.h"

namespace vostel {

// A small quiet title over a group, with an optional symbol before it and an optional note at the
// right edge. Drawn in capitals, as all titles of a popover are, unless setCapitals(false).
class SectionTitle : public Piece {
    Q_OBJECT

  public:
    explicit SectionTitle(const QString& text, QWidget* parent = nullptr);

    void setText(const QString& text);
    void setSymbol(const QString& name);
    void setNote(const QString& text);
    void setCapitals(bool on);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString text;
    QString symbol;
    QString note;
    bool capitals = true;
};

}  // namespace vostel
