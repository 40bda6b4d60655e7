#pragma once

#include <functional>

#include <QElapsedTimer>
#include <QImage>
#include <QTime>
#include <QTimer>

#include "statusbar/ItemBar.h"

namespace vostel {

struct OffscreenBarOptions {
    double scale = 1.0;
    double thickness = 22.0;  // points
    Appearance appearance = Appearance::Dark;
    QString imagePath;         // PNG; empty: no image is written
    int text = -1;             // descriptor, borrowed; -1: no lines are printed
    int imageInterval = 1000;  // ms between two images, at least
    int textInterval = 1000;   // ms between two lines, at least; 0: one for each turn of the event
                               // loop in which an item reported
    std::function<QTime()> now;  // empty: the local time of day
};

// A bar without a display: an image on disk and lines of text. While nobody takes the lines, they
// are dropped.
class OffscreenBar final : public ItemBar {
    Q_OBJECT

  public:
    // `order` is borrowed and outlives the bar.
    explicit OffscreenBar(ItemOrderStore& order, const OffscreenBarOptions& options = {});

    const OffscreenBarOptions& options() const { return choices; }
    // Scale, thickness or appearance changed: the items are asked to draw again at once.
    void setOptions(const OffscreenBarOptions& options);

    // The whole bar as the items last drew it, device pixel ratio set. As wide as its items, and
    // never narrower than a bar's thickness.
    QImage image() const;

    // The text of a line without its time: "CPU 12 %, ...  Memory 40 %". Items without a value are
    // left out.
    QString text() const;

    // A click on the first item of that name; false when there is none.
    bool click(const QString& autosaveName, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier);

    double thickness() const override;
    ImageContext imageContext() const override;
    std::optional<QRect> itemRect(const BarItem& item) override;
    void itemResized() override;
    void itemRedrawn(BarItem& item) override;
    void itemTextChanged(BarItem& item) override;
    void itemReported() override;

  Q_SIGNALS:
    // Who read the lines is gone for good.
    void readerGone();

  protected:
    void itemRemoved(BarItem& item) override;

  private:
    std::vector<BarCell> cells(int* width) const;
    void imageChanged();
    void wakeIn(QTimer& timer, const QElapsedTimer& last, int interval);
    void writeImage();
    void printLine();

    OffscreenBarOptions choices;
    QTimer imageTimer;
    QTimer textTimer;
    QElapsedTimer lastImage;
    QElapsedTimer lastText;
    QImage written;
    bool complained = false;
};

}  // namespace vostel
