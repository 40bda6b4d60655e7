#include "statusbar/DockBar.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include <QGuiApplication>
#include <QScreen>
#include <QtGui/qguiapplication_platform.h>

#include "statusbar/DesktopAppearance.h"
#include "statusbar/DockAccessible.h"
#include "statusbar/DockWindow.h"
#include "statusbar/FullScreenWatch.h"
#include "statusbar/X11Desktop.h"
#include "statusbar/X11Surface.h"

namespace vostel {

namespace {

constexpr double leastThickness = 12.0;  // points
constexpr double mostThickness = 64.0;
constexpr std::chrono::seconds shownCheckInterval{1};
constexpr int shownChecks = 20;
constexpr std::chrono::milliseconds repaintInterval{500};  // where the server stands still

const QNativeInterface::QX11Application* x11() {
    return qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
}

}  // namespace

DockBar::DockBar(ItemOrderStore& order, const DockBarOptions& options)
    : ItemBar(order), choices(options), pointer(new DockPointer(*this)) {
    installDockAccessibility();
    checkTimer.setSingleShot(true);
    checkTimer.setInterval(shownCheckInterval);
    connect(&checkTimer, &QTimer::timeout, this, &DockBar::checkShown);
    repaintTimer.setSingleShot(true);
    repaintTimer.setInterval(repaintInterval);
    connect(&repaintTimer, &QTimer::timeout, this, &DockBar::paintAll);
    watchScreens();
    relocate();
}

DockBar::~DockBar() {
    fullScreen.reset();
    if (window) window->disconnect(this);
    surface.reset();
    desktop.reset();
}

bool DockBar::isAvailable() {
    return x11() != nullptr && x11()->connection() != nullptr;  // the off-screen one has none
}

void DockBar::prepareProcess() {
    if (!qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION")) {
        qputenv("QT_XCB_GL_INTEGRATION", "none");
    }
}

void DockBar::setOptions(const DockBarOptions& options) {
    if (options == choices) return;
    choices = options;
    relocate();
}

double DockBar::thickness() const {
    return bar.isEmpty() ? choices.thickness : bar.height() / scale;
}

QWindow* DockBar::hostWindow() const {
    return window.get();
}

ImageContext DockBar::imageContext() const {
    return {appearance, ImageShape::Wide, scale, thickness()};
}

// ---- place on the screen

void DockBar::watchScreens() {
    const auto watch = [this](QScreen* screen) {
        connect(screen, &QScreen::geometryChanged, this, &DockBar::relocateSoon);
        connect(screen, &QScreen::logicalDotsPerInchChanged, this, &DockBar::relocateSoon);
        relocateSoon();
    };
    for (QScreen* screen : QGuiApplication::screens())
        watch(screen);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, watch);
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &DockBar::relocateSoon);
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, &DockBar::relocateSoon);
}

void DockBar::relocateSoon() {
    // A change of screens comes as several signals; the last one counts.
    if (std::exchange(relocateQueued, true)) return;
    QMetaObject::invokeMethod(this, &DockBar::relocate, Qt::QueuedConnection);
}

QScreen* DockBar::chosenScreen() const {
    for (QScreen* screen : QGuiApplication::screens()) {
        if (!choices.screenName.isEmpty() && screen->name() == choices.screenName) return screen;
    }
    return QGuiApplication::primaryScreen();
}

Appearance DockBar::chosenAppearance() {
    if (choices.appearance != AppearanceChoice::Automatic) {
        desktopAppearance.reset();
        sessionBus.reset();
        return choices.appearance == AppearanceChoice::Dark ? Appearance::Dark : Appearance::Light;
    }
    if (!desktopAppearance) {
        sessionBus = BusLink::toSessionBus();
        desktopAppearance = std::make_unique<DesktopAppearance>(*sessionBus);
        connect(desktopAppearance.get(), &DesktopAppearance::changed, this, &DockBar::relocateSoon);
    }
    return desktopAppearance->orPalette();
}

QRect DockBar::monitorOf(const QScreen& screen) const {
    // The toolkit's rectangle is in logical pixels and rounded; the server knows the real one. The
    // toolkit leaves the origin of a screen in device pixels.
    const QPoint origin = screen.geometry().topLeft();
    const auto monitors = desktop->monitors();
    for (const X11Monitor& candidate : monitors) {
        if (candidate.name == screen.name() && candidate.geometry.topLeft() == origin) {
            return candidate.geometry;
        }
    }
    for (const X11Monitor& candidate : monitors) {
        if (candidate.geometry.topLeft() == origin) return candidate.geometry;
    }
    const double ratio = screen.devicePixelRatio();
    return QRect(origin, QSize(static_cast<int>(std::lround(screen.geometry().width() * ratio)),
                               static_cast<int>(std::lround(screen.geometry().height() * ratio))));
}

void DockBar::openWindow() {
    if (!window) {
        window = std::make_unique<DockWindow>(*this);
        window->installEventFilter(pointer.get());
        connect(window.get(), &DockWindow::exposed, this, &DockBar::paintAll);
        connect(window.get(), &DockWindow::surfaceLost, this, &DockBar::closeSurface);
        connect(window.get(), &DockWindow::themeChanged, this, &DockBar::relocateSoon);
    }
    if (surface) return;
    window->create();
    const auto id = static_cast<std::uint32_t>(window->winId());
    desktop = std::make_unique<X11Desktop>(x11()->connection(), id);
    surface = std::make_unique<X11Surface>(x11()->connection(), id);
    fullScreen = std::make_unique<FullScreenWatch>(*desktop);
    connect(fullScreen.get(), &FullScreenWatch::changed, this, &DockBar::stepBack);
    below = false;
}

void DockBar::closeSurface() {
    fullScreen.reset();
    surface.reset();
    desktop.reset();
    relocateSoon();
}

void DockBar::relocate() {
    relocateQueued = false;
    QScreen* screen = chosenScreen();
    if (!isAvailable() || !screen) return;
    openWindow();
    const ImageContext before = imageContext();
    window->setScreen(screen);
    monitor = monitorOf(*screen);
    scale = screen->devicePixelRatio();
    const int height = static_cast<int>(
        std::lround(std::clamp(choices.thickness, leastThickness, mostThickness) * scale));
    const bool top = choices.edge == BarEdge::Top;
    bar = QRect(monitor.left(), top ? monitor.top() : monitor.bottom() + 1 - height,
                monitor.width(), height);
    appearance = chosenAppearance();

    std::vector<QRect> monitors;
    for (const X11Monitor& each : desktop->monitors())
        monitors.push_back(each.geometry);
    desktop->setStrut(dockStrut(bar, choices.edge, desktop->rootGeometry(), monitors));
    surface->setBackground(barColors(appearance).background);
    const QPointF offset = QPointF(bar.topLeft() - monitor.topLeft()) / scale;
    window->setGeometry(
        QRectF(QPointF(screen->geometry().topLeft()) + offset, QSizeF(bar.size()) / scale)
            .toAlignedRect());
    showWindow();
    checksLeft = shownChecks;
    checkTimer.start();
    cellsValid = false;
    if (imageContext() != before) askForImages();
    paintAll();
}

void DockBar::showWindow() {
    if (!window->isVisible()) {
        desktop->declareDock();  // a window manager drops the state of a window that is hidden
        window->show();
    }
    desktop->place(bar);
}

void DockBar::checkShown() {
    // A window manager that is just starting may lose the request to show a window; this program
    // often starts at the same moment.
    if (!window || !desktop || window->isExposed() || checksLeft-- <= 0) return;
    window->hide();
    showWindow();
    checkTimer.start();
}

void DockBar::askForImages() {
    // Whoever answers may delete items.
    std::vector<QPointer<BarItem>> all(items().begin(), items().end());
    for (const auto& item : all) {
        if (item) Q_EMIT item->imagesWanted();
    }
}

void DockBar::stepBack(const QRect& covering) {
    const bool covered = covering.contains(bar);
    if (covered == below) return;
    below = covered;
    desktop->setBelow(below);
}

// ---- items

const std::vector<BarCell>& DockBar::placedCells() {
    if (!cellsValid) {
        cells = BarLayout::placed(entries(), metricsFor(bar.width(), scale));
        cellsValid = true;
    }
    return cells;
}

BarCell DockBar::cellOf(const BarItem& item) {
    for (const BarCell& cell : placedCells()) {
        if (cell.id != item.id()) continue;
        return cell.id == draggedId ? BarCell{cell.id, draggedLeft, cell.width} : cell;
    }
    return {item.id(), 0, 0};
}

void DockBar::itemResized() {
    cellsValid = false;
    // Several items may change in one turn of the event loop: one repaint for all of them.
    if (std::exchange(layoutQueued, true)) return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            layoutQueued = false;
            paintAll();
            if (window) dockItemsChanged(*window);
        },
        Qt::QueuedConnection);
}

void DockBar::itemRedrawn(BarItem& item) {
    if (layoutQueued || repaintTimer.isActive()) return;  // everything is painted soon
    if (draggedId >= 0) {
        paintAll();
        return;
    }
    const BarCell cell = cellOf(item);
    paint(QRect(cell.x, 0, cell.width, bar.height()));
    if (surface) surface->flush();
}

void DockBar::itemTextChanged(BarItem& item) {
    pointer->textChanged(item);
    dockItemTextChanged(item);
}

void DockBar::itemRemoved(BarItem& item) {
    pointer->forget(item);
    if (item.id() == highlightedId) highlightedId = -1;
    if (item.id() == draggedId) draggedId = -1;
}

std::optional<QRect> DockBar::itemRect(const BarItem& item) {
    const BarCell cell = cellOf(item);
    if (!window || cell.width == 0) return std::nullopt;
    const QPoint at(imageLeft(item), bar.top() - monitor.top());
    const QPointF origin = window->screen()->geometry().topLeft();
    const QSizeF size(item.pixelWidth() / scale, bar.height() / scale);
    return QRectF(origin + QPointF(at) / scale, size).toRect();
}

BarItem* DockBar::itemAt(int x) {
    const BarCell* cell = BarLayout::cellAt(placedCells(), x);
    return cell ? itemWithId(cell->id) : nullptr;
}

int DockBar::cellLeft(const BarItem& item) {
    return cellOf(item).x;
}

int DockBar::imageLeft(const BarItem& item) {
    const BarCell cell = cellOf(item);
    return cell.x + (cell.width - item.pixelWidth()) / 2;
}

void DockBar::highlight(BarItem* item) {
    const int id = item ? item->id() : -1;
    if (id == highlightedId) return;
    highlightedId = id;
    paintAll();
}

void DockBar::dragTo(BarItem& item, int left) {
    const BarMetrics metrics = metricsFor(bar.width(), scale);
    const int most = bar.width() - metrics.margin - item.pixelWidth() - 2 * metrics.padding;
    draggedId = item.id();
    draggedLeft = std::min(std::max(left, 0), most);
    takeOrder(BarLayout::dragged(entries(), metrics, draggedId, draggedLeft));
    cellsValid = false;
    paintAll();
}

void DockBar::endDrag() {
    draggedId = -1;
    keepOrder();
    paintAll();
}

// ---- painting

bool DockBar::canPaint() {
    if (!surface || !window->isExposed()) return false;
    if (!surface->isReady()) {
        repaintTimer.start();
        return false;
    }
    return true;
}

void DockBar::paintAll() {
    if (bar.isEmpty() || !canPaint()) return;
    // The stretch that items stand in goes in one piece, so nothing flickers; the server fills the
    // rest.
    int left = bar.width();
    for (const BarCell& cell : placedCells())
        left = std::min(left, cell.x);
    if (draggedId >= 0) left = std::min(left, draggedLeft);
    left = std::max(left, 0);
    const BarColors colors = barColors(appearance);
    surface->fill(QRect(0, 0, left, bar.height()), colors.background);
    const int lineY = choices.edge == BarEdge::Top ? bar.height() - 1 : 0;
    surface->fill(QRect(0, lineY, left, 1), colors.line);
    paint(QRect(left, 0, bar.width() - left, bar.height()));
    surface->flush();
}

void DockBar::paint(const QRect& region) {
    if (!canPaint()) return;
    std::vector<BarPicture> shown = pictures(placedCells(), bar.height());
    for (BarPicture& picture : shown) {
        picture.highlighted = picture.id == highlightedId || picture.id == draggedId;
        if (picture.id == draggedId) picture.cell.moveLeft(draggedLeft);
    }
    // The dragged one covers the others.
    std::stable_partition(shown.begin(), shown.end(),
                          [this](const BarPicture& picture) { return picture.id != draggedId; });
    const QRect clipped = region & QRect(QPoint(), bar.size());
    surface->put(clipped.topLeft(),
                 paintBar(clipped, {appearance, choices.edge, bar.height()}, shown));
}

}  // namespace vostel
