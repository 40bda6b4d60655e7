#pragma once

#include "ui/settings/PaintedButton.h"

namespace vostel {

// A switch that is on or off. clicked(bool) tells what the user did; setChecked() tells nobody.
class ToggleSwitch : public PaintedButton {
    Q_OBJECT

  public:
    explicit ToggleSwitch(const QString& accessibleName, QWidget* parent = nullptr);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace vostel
