#pragma once

#include <QWindow>

namespace vostel {

class ItemBar;

// The window of the dock bar: tells when it needs painting and keeps no pixels.
class DockWindow final : public QWindow {
    Q_OBJECT

  public:
    // Borrowed; outlives the window.
    explicit DockWindow(ItemBar& bar);

    ItemBar& items() const { return shown; }

    QAccessibleInterface* accessibleRoot() const override;

  Q_SIGNALS:
    void exposed();
    void surfaceLost();   // the native window is about to be destroyed
    void themeChanged();  // the desktop's palette or theme

  protected:
    void exposeEvent(QExposeEvent* event) override;
    bool event(QEvent* event) override;

  private:
    ItemBar& shown;
};

}  // namespace vostel
