#pragma once

#include <QColor>

#include "ui/settings/PaintedButton.h"

namespace vostel {

// Shows a colour; a click asks for another one.
class ColorSwatch : public PaintedButton {
    Q_OBJECT

  public:
    explicit ColorSwatch(const QString& accessibleName, QWidget* parent = nullptr);

    const QColor& color() const { return shown; }
    void setColor(const QColor& color);

    QSize sizeHint() const override { return {34, 26}; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QColor shown;
};

}  // namespace vostel
