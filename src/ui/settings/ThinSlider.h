#pragma once

#include <QSlider>

namespace vostel {

struct SliderRange {
    double least = 0;
    double most = 1;
    double step = 1;
};

// A horizontal slider in the look of the settings. Its position counts steps from the least value;
// assistive technology is told the number itself.
class ThinSlider : public QSlider {
    Q_OBJECT

  public:
    ThinSlider(const QString& accessibleName, const SliderRange& range, QWidget* parent = nullptr);

    double valueAt(int position) const { return range.least + position * range.step; }
    int positionOf(double value) const;  // the nearest; of a value beyond the range, its end

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    // Only where the keyboard is: a page that scrolls under the pointer changes nothing.
    void wheelEvent(QWheelEvent* event) override;

  private:
    const SliderRange range;
};

}  // namespace vostel
