#pragma once

#include <vector>

#include <QWidget>

#include "combined/CombinedSettings.h"

namespace vostel {

class SegmentRow;

// All that can be combined, in the order of the segments. A row is moved with the mouse, with its
// buttons or with Alt and an arrow key; what is dragged is written when it is let go.
class SegmentList : public QWidget {
    Q_OBJECT

  public:
    // `settings` outlives the list.
    explicit SegmentList(CombinedSettings& settings, QWidget* parent = nullptr);

    // Shows what the settings hold now. A drag ends where it began.
    void refresh();

    QSize sizeHint() const override;

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    int rowHeight() const;
    int top(int place) const;
    int placeAt(int y) const;
    int placeOf(const SegmentRow* row) const;
    void place();
    void move(SegmentRow* row, int to);
    void write();
    void endDrag();

    CombinedSettings& settings;
    std::vector<SegmentRow*> rows;  // from the top
    SegmentRow* pressed = nullptr;
    int pressedAt = 0;  // y of the press, from the row's top
    int dragTop = 0;
    bool dragging = false;
};

}  // namespace vostel
