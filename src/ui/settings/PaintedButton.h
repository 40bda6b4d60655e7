#pragma once

#include <QAbstractButton>

namespace vostel {

// Base of the buttons that the settings paint themselves: reached with Tab, activated with Space,
// Return and a click, redrawn under the pointer.
class PaintedButton : public QAbstractButton {
    Q_OBJECT

  public:
    explicit PaintedButton(const QString& accessibleName, QWidget* parent = nullptr);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
};

}  // namespace vostel
