#pragma once

#include <QSlider>

namespace vostel {

// A horizontal slider in the look of the settings.
class ThinSlider : public QSlider {
    Q_OBJECT

  public:
    explicit ThinSlider(const QString& accessibleName, QWidget* parent = nullptr);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    // Only where the keyboard is: a page that scrolls under the pointer changes nothing.
    void wheelEvent(QWheelEvent* event) override;
};

}  // namespace vostel
