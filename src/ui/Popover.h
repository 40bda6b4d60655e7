#pragma once

#include <optional>

#include <QElapsedTimer>
#include <QPoint>
#include <QRect>
#include <QWidget>

class QScrollArea;
class QVBoxLayout;

namespace vostel {

// The window that an item opens: rounded, beside its item, closed by a click elsewhere or Escape.
// It follows the height of its content while open; what is higher than the screen scrolls. A
// popover that was closed can be shown again or deleted.
class Popover : public QWidget {
    Q_OBJECT

  public:
    static constexpr int contentWidth = 300;  // logical pixels, without margins

    explicit Popover(const QString& title, QWidget* parent = nullptr);

    // Adds under what is there; the popover owns the widget.
    void add(QWidget* widget);
    void addSpace(int pixels);
    // Stays in place under content that scrolls.
    void setFooter(QWidget* widget);

    // Opens beside an item of the desktop, on the side away from the bar's edge (guessed when not
    // given).
    void showAt(const QRect& anchor, std::optional<Qt::Edge> edge = std::nullopt);
    // For hosts that keep the item's place to themselves: at a point of a click, or in the corner
    // of the screen that the pointer is on.
    void showAtPoint(const QPoint& point);
    void showAtCorner();

    // The item's settings changed: what is shown follows, open or not.
    virtual void settingsChanged() {}

    // Whether a press at the item just now closed this popover, so that the release of the same
    // click must not open it again. `position` is that of the release. To be asked once for each
    // click of the item: the next click is a new one.
    bool closedByPressAt(const QPoint& position);

    // The popover without window, shadow and position, at its full height: for snapshots.
    QImage snapshot(double scale);

  Q_SIGNALS:
    void aboutToShow();
    void closed();

  protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    QSize bodySize() const;
    QRectF body() const;
    void open();
    void place();

    QWidget* content;
    QVBoxLayout* column;
    QScrollArea* scroll;
    QVBoxLayout* frame;
    QWidget* footer = nullptr;
    bool translucent;
    int shadow;  // room around the body, logical pixels
    QRect anchor;
    std::optional<Qt::Edge> edge;
    bool anchorIsItem = false;
    bool placing = false;
    QPoint closingPress;
    QElapsedTimer sinceClosingPress;
};

}  // namespace vostel
