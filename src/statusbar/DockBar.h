#pragma once

#include <memory>

#include <QTimer>

#include "statusbar/DockBarOptions.h"
#include "statusbar/DockPointer.h"
#include "statusbar/ItemBar.h"

class QScreen;

namespace vostel {

class BusLink;
class DesktopAppearance;
class DockWindow;
class FullScreenWatch;
class X11Desktop;
class X11Surface;

// Our own thin bar along one edge of an X11 screen. It reserves its place on the screen, never
// takes the focus, and pushes only pixels that changed. When the X server goes away, the toolkit
// ends the program.
class DockBar final : public ItemBar, private DockPointer::Target {
    Q_OBJECT

  public:
    // `order` is borrowed and outlives the bar. Needs the application object and isAvailable().
    explicit DockBar(ItemOrderStore& order, const DockBarOptions& options = {});
    ~DockBar() override;

    // The program talks to an X server (X11 or XWayland).
    static bool isAvailable();

    // To be called before the application object is made: keeps the toolkit from loading what a
    // bar does not need (several MB). Variables that the user set are left alone.
    static void prepareProcess();

    const DockBarOptions& options() const { return choices; }
    void setOptions(const DockBarOptions& options);  // live

    // Points; a whole number of device pixels, so at a scale of 1.25 it may differ from the
    // options by a fraction of a point.
    double thickness() const override;

    // The bar on the desktop, in device pixels.
    QRect nativeGeometry() const { return bar; }

    QWindow* hostWindow() const override;
    ImageContext imageContext() const override;
    std::optional<QRect> itemRect(const BarItem& item) override;
    void itemResized() override;
    void itemRedrawn(BarItem& item) override;
    void itemTextChanged(BarItem& item) override;

  protected:
    void itemRemoved(BarItem& item) override;

  private:
    double pixelRatio() const override { return scale; }
    BarItem* itemAt(int x) override;
    int cellLeft(const BarItem& item) override;
    int imageLeft(const BarItem& item) override;
    void highlight(BarItem* item) override;
    void dragTo(BarItem& item, int left) override;
    void endDrag() override;

    void watchScreens();
    void relocateSoon();
    void relocate();
    void showWindow();
    void checkShown();
    void openWindow();
    void closeSurface();
    QScreen* chosenScreen() const;
    Appearance chosenAppearance();
    QRect monitorOf(const QScreen& screen) const;
    void stepBack(const QRect& fullScreen);
    void askForImages();

    const std::vector<BarCell>& placedCells();
    BarCell cellOf(const BarItem& item);
    bool canPaint();
    void paintAll();
    void paint(const QRect& region);

    DockBarOptions choices;
    Appearance appearance = Appearance::Dark;
    double scale = 1.0;
    QRect monitor;  // device pixels
    QRect bar;      // device pixels
    bool below = false;

    std::vector<BarCell> cells;
    bool cellsValid = false;
    bool layoutQueued = false;
    bool relocateQueued = false;
    QTimer checkTimer;
    int checksLeft = 0;
    QTimer repaintTimer;  // runs while the server does not take what is drawn
    int highlightedId = -1;
    int draggedId = -1;
    int draggedLeft = 0;

    std::unique_ptr<DockWindow> window;   // null without an X server
    std::unique_ptr<BusLink> sessionBus;  // both while the choice is automatic
    std::unique_ptr<DesktopAppearance> desktopAppearance;
    std::unique_ptr<X11Desktop> desktop;
    std::unique_ptr<X11Surface> surface;
    std::unique_ptr<FullScreenWatch> fullScreen;
    std::unique_ptr<DockPointer> pointer;
};

}  // namespace vostel
