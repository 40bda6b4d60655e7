#pragma once

#include "ui/Piece.h"

namespace vostel {

// What a popover or a section shows instead of content that does not exist: a symbol, what is the
// matter, and what it means or what to do.
class EmptyState : public Piece {
    Q_OBJECT

  public:
    explicit EmptyState(QWidget* parent = nullptr);

    void setContent(const QString& symbol, const QString& title, const QString& detail = {});

    QSize sizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString symbol;
    QString title;
    QString detail;
};

}  // namespace vostel
