#pragma once

#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QTimer>

#include "statusbar/BarItem.h"

class QMouseEvent;

namespace vostel {

// What the pointer does in the dock bar: clicks, Ctrl-drag, highlight and tool tips. Sits as an
// event filter on the bar's window.
class DockPointer final : public QObject {
    Q_OBJECT

  public:
    // The bar as the pointer sees it. Positions are device pixels from the bar's left end.
    class Target {
      public:
        virtual ~Target() = default;
        virtual double pixelRatio() const = 0;
        virtual BarItem* itemAt(int x) = 0;  // null: none
        virtual int cellLeft(const BarItem& item) = 0;
        virtual int imageLeft(const BarItem& item) = 0;
        virtual void highlight(BarItem* item) = 0;  // null: none
        // Left edge of the dragged item's cell; the others give way.
        virtual void dragTo(BarItem& item, int left) = 0;
        virtual void endDrag() = 0;
    };

    explicit DockPointer(Target& bar);

    bool eventFilter(QObject* watched, QEvent* event) override;

    // The item's text changed: a tool tip that shows it is updated.
    void textChanged(const BarItem& item);
    // The item is leaving while it may be pressed, dragged or explained.
    void forget(const BarItem& item);

  private:
    void press(const QMouseEvent& event);
    void move(const QMouseEvent& event);
    void release(const QMouseEvent& event);
    void hover(BarItem* item);
    void leave();
    void showTip();
    int pixel(const QPointF& position) const;

    Target& target;
    QPointer<BarItem> pressed;
    Qt::MouseButton pressedButton = Qt::NoButton;
    Qt::KeyboardModifiers pressedModifiers;
    QPointF pressPosition;  // logical, window
    int grabOffset = 0;     // device pixels from the cell's left edge
    bool dragging = false;
    QPointer<BarItem> hovered;
    QPointer<BarItem> explained;  // by the tool tip on screen
    QPoint tipPosition;           // logical, desktop
    QTimer tipTimer;
};

}  // namespace vostel
