#pragma once

#include "ui/settings/PaintedButton.h"

namespace vostel {

// A button with a text, outlined.
class TextButton : public PaintedButton {
    Q_OBJECT

  public:
    explicit TextButton(const QString& text, QWidget* parent = nullptr);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace vostel
