#pragma once

#include <QScrollBar>

namespace vostel {

// A vertical scroll bar of a popover: a rounded thumb and nothing else.
class ThinScrollBar : public QScrollBar {
    Q_OBJECT

  public:
    explicit ThinScrollBar(QWidget* parent = nullptr);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace vostel
