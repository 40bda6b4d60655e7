#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <QAbstractNativeEventFilter>
#include <QAccessible>
#include <QApplication>
#include <QPainter>
#include <QRasterWindow>
#include <QScreen>
#include <QToolTip>

#include "statusbar/DockBar.h"
#include "statusbar/X11Reply.h"
#include "statusbar/tests/MemoryOrder.h"
#include "statusbar/tests/XServer.h"

using namespace vostel;

namespace {

XServer* server = nullptr;

constexpr int screenWidth = 1280;
constexpr int screenHeight = 1024;

// Single pixels of full colours: any shift by part of a pixel or any scaling would mix them, and
// every display depth shows them exactly.
QImage pattern(const QSize& size, int seed) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const unsigned mix =
                static_cast<unsigned>(x * 7 + y * 13 + x * y * (seed + 3) + seed * 5);
            image.setPixel(x, y, qRgb(mix & 1 ? 255 : 0, mix & 2 ? 255 : 0, mix & 8 ? 255 : 0));
        }
    }
    return image;
}

struct Item {
    Item(DockBar& bar, const char* name, int points)
        : width(points), item(bar.makeItem(QString::fromLatin1(name))) {
        QObject::connect(item.get(), &StatusItem::imagesWanted, [this] { draw(); });
        QObject::connect(item.get(), &StatusItem::clicked,
                         [this](const StatusItemClick& click) { clicks.push_back(click); });
        item->setToolTip(QString::fromLatin1(name), QStringLiteral("value"));
        draw();
    }

    void draw() {
        const ImageContext context = item->wantedImages().front();
        StatusImage image;
        image.image = pattern((QSizeF(width, context.thickness) * context.scale).toSize(), ++seed);
        image.image.setDevicePixelRatio(context.scale);
        image.size = image.image.deviceIndependentSize();
        last = image.image.convertToFormat(QImage::Format_RGB32);
        last.setDevicePixelRatio(1);
        item->setImages({image});
    }

    // The centre in device pixels of the desktop, as xdotool counts.
    std::string centre(const DockBar& bar) const {
        const QRect rect = item->screenRect().value();
        const double scale = qGuiApp->devicePixelRatio();
        return std::to_string(static_cast<int>(rect.center().x() * scale)) + ' ' +
               std::to_string(bar.nativeGeometry().center().y());
    }

    int width;
    static inline int seed = 0;  // no two pictures are alike
    QImage last;
    std::unique_ptr<StatusItem> item;
    std::vector<StatusItemClick> clicks;
};

struct Dock : testing::Test {
    MemoryOrder order;
    std::unique_ptr<DockBar> bar = std::make_unique<DockBar>(order);

    QImage onScreen() { return server->grab(bar->nativeGeometry()); }

    // Where the item's last image is on the screen, pixel for pixel; -1: nowhere.
    int find(const Item& item) {
        const QImage screen = onScreen();
        for (int x = 0; x + item.last.width() <= screen.width(); ++x) {
            if (screen.pixel(x, 3) == item.last.pixel(0, 3) &&
                screen.copy(QRect(QPoint(x, 0), item.last.size())) == item.last) {
                return x;
            }
        }
        return -1;
    }
    bool shown(const Item& item) {
        return XServer::until([&] { return find(item) >= 0; });
    }
    QString property(const char* name) {
        return XServer::run(QStringLiteral("xprop"),
                            {QStringLiteral("-id"), QString::number(bar->hostWindow()->winId()),
                             QString::fromLatin1(name)});
    }
    static QString workArea() {
        return XServer::run(QStringLiteral("xprop"),
                            {QStringLiteral("-root"), QStringLiteral("_NET_WORKAREA")});
    }
};

void point(const std::string& place, const char* then) {
    XServer::xdotool(("mousemove " + place + ' ' + then).c_str());
}

}  // namespace

TEST_F(Dock, showsImagesPixelForPixelAndFollowsThem) {
    Item left(*bar, "left", 41);
    Item right(*bar, "right", 33);
    ASSERT_TRUE(shown(left));
    ASSERT_TRUE(shown(right));
    EXPECT_LT(find(left), find(right));
    const int height = static_cast<int>(std::lround(22 * qGuiApp->devicePixelRatio()));
    EXPECT_EQ(bar->nativeGeometry(), QRect(0, 0, screenWidth, height));
    EXPECT_EQ(right.last.height(), height);
    const QPointF corner(find(right), 0);
    EXPECT_EQ(right.item->screenRect()->topLeft(),
              (corner / qGuiApp->devicePixelRatio()).toPoint());
    right.draw();
    EXPECT_TRUE(shown(right));
    right.width = 50;
    right.draw();
    EXPECT_TRUE(shown(right));
    EXPECT_TRUE(shown(left));
    left.item->setImages({StatusImage()});
    EXPECT_TRUE(XServer::until([&] { return find(left) < 0; }));
    EXPECT_EQ(left.item->screenRect(), std::nullopt);
}

// Each event that comes back for a redraw would wake the program twice.
TEST_F(Dock, redrawsBringNoEventBack) {
    struct Counter : QAbstractNativeEventFilter {
        int count = 0;
        bool nativeEventFilter(const QByteArray&, void* message, qintptr*) override {
            // Not the window manager's late properties: answers to drawing, and extension events.
            const int type = static_cast<xcb_generic_event_t*>(message)->response_type & 0x7f;
            if (type == XCB_EXPOSE || type == XCB_GRAPHICS_EXPOSURE || type == XCB_NO_EXPOSURE ||
                type >= XCB_GE_GENERIC) {
                ++count;
            }
            return false;
        }
    } counter;
    Item item(*bar, "item", 40);
    ASSERT_TRUE(shown(item));
    qGuiApp->installNativeEventFilter(&counter);
    for (int i = 0; i < 20; ++i) {
        item.draw();
        ASSERT_TRUE(shown(item));
    }
    EXPECT_EQ(counter.count, 0);
}

TEST_F(Dock, reservesItsEdgeAndTellsTheWindowManagerWhatItIs) {
    EXPECT_TRUE(
        property("_NET_WM_WINDOW_TYPE").contains(QStringLiteral("= _NET_WM_WINDOW_TYPE_DOCK")));
    EXPECT_TRUE(property("_NET_WM_DESKTOP").contains(QStringLiteral("4294967295")));
    EXPECT_TRUE(property("_NET_WM_STATE").contains(QStringLiteral("SKIP_TASKBAR")));
    EXPECT_TRUE(property("WM_HINTS").contains(QStringLiteral("input focus: False")));
    const double scale = qGuiApp->devicePixelRatio();
    for (const double thickness : {22.0, 30.0}) {
        for (const BarEdge edge : {BarEdge::Top, BarEdge::Bottom}) {
            DockBarOptions options;
            options.edge = edge;
            options.thickness = thickness;
            bar->setOptions(options);
            const int pixels = static_cast<int>(std::lround(thickness * scale));
            const QString area = QStringLiteral("= 0, %1, %2, %3,")
                                     .arg(edge == BarEdge::Top ? pixels : 0)
                                     .arg(screenWidth)
                                     .arg(screenHeight - pixels);
            EXPECT_TRUE(XServer::until([&] { return workArea().contains(area); }))
                << qPrintable(workArea()) << " is not " << qPrintable(area);
        }
    }
    Item item(*bar, "item", 40);
    EXPECT_TRUE(shown(item));  // at the bottom by now
}

TEST_F(Dock, clicksReachTheItemUnderThePointer) {
    Item first(*bar, "first", 40);
    Item second(*bar, "second", 40);
    ASSERT_TRUE(shown(second));
    for (const int button : {1, 2, 3}) {
        point(first.centre(*bar), ("click " + std::to_string(button)).c_str());
        ASSERT_TRUE(
            XServer::until([&] { return first.clicks.size() == static_cast<size_t>(button); }));
    }
    EXPECT_EQ(first.clicks[0].button, Qt::LeftButton);
    EXPECT_EQ(first.clicks[1].button, Qt::MiddleButton);
    EXPECT_EQ(first.clicks[2].button, Qt::RightButton);
    EXPECT_NEAR(first.clicks[0].localX.value(), 20, 2);
    EXPECT_TRUE(first.item->screenRect()->contains(first.clicks[0].globalPosition));

    // Pressed on one and released on another: nobody was meant.
    point(first.centre(*bar), "mousedown 1");
    point(second.centre(*bar), "mouseup 1");
    // A Ctrl-click without a drag is a click.
    point(second.centre(*bar), "keydown ctrl click 1 keyup ctrl");
    ASSERT_TRUE(XServer::until([&] { return !second.clicks.empty(); }));
    EXPECT_EQ(second.clicks.size(), 1u);
    EXPECT_EQ(second.clicks[0].modifiers, Qt::ControlModifier);
    EXPECT_EQ(first.clicks.size(), 3u);
    EXPECT_TRUE(order.names.isEmpty());
}

TEST_F(Dock, controlDragReordersAndIsKept) {
    order.names = {QStringLiteral("a"), QStringLiteral("off"), QStringLiteral("b")};
    Item c(*bar, "c", 30);
    Item b(*bar, "b", 60);
    Item a(*bar, "a", 40);
    ASSERT_TRUE(shown(a));
    EXPECT_LT(find(a), find(b));
    EXPECT_LT(find(b), find(c));
    point(c.centre(*bar), "keydown ctrl mousedown 1 mousemove_relative -- -10 0");
    point(a.centre(*bar), "mousemove_relative -- -60 0");
    EXPECT_TRUE(XServer::until(
        [&] { return a.item->screenRect()->left() > c.item->screenRect()->left(); }));
    c.draw();
    EXPECT_TRUE(shown(c));  // live while it is dragged
    XServer::xdotool("mouseup 1 keyup ctrl");
    const QStringList kept{QStringLiteral("c"), QStringLiteral("a"), QStringLiteral("off"),
                           QStringLiteral("b")};
    EXPECT_TRUE(XServer::until([&] { return order.names == kept; }));
    EXPECT_TRUE(shown(a));
    EXPECT_LT(find(c), find(a));
    EXPECT_TRUE(c.clicks.empty());

    // The dragged item goes away under the pointer.
    const int start = b.item->screenRect()->left();
    point(b.centre(*bar), "keydown ctrl mousedown 1 mousemove_relative -- -40 0");
    EXPECT_TRUE(XServer::until([&] { return b.item->screenRect()->left() < start; }));
    b.item.reset();
    XServer::xdotool("mousemove_relative -- -40 0 mouseup 1 keyup ctrl");
    EXPECT_TRUE(shown(a));
    EXPECT_EQ(order.names, kept);
}

TEST_F(Dock, toolTipFollowsTheValueAndTheItem) {
    Item item(*bar, "item", 40);
    ASSERT_TRUE(shown(item));
    point(item.centre(*bar), "mousemove_relative 1 0");
    ASSERT_TRUE(XServer::until([] { return QToolTip::isVisible(); }));
    EXPECT_EQ(QToolTip::text(), QStringLiteral("item\nvalue"));
    item.item->setToolTip(QStringLiteral("item"), QStringLiteral("12 %"));
    EXPECT_EQ(QToolTip::text(), QStringLiteral("item\n12 %"));
    item.item.reset();
    EXPECT_TRUE(XServer::until([] { return !QToolTip::isVisible(); }));
    XServer::xdotool("mousemove 10 500");
}

TEST_F(Dock, assistiveTechnologySeesButtons) {
    Item hidden(*bar, "hidden", 10);
    Item item(*bar, "CPU usage", 40);
    hidden.item->setImages({StatusImage()});
    QAccessibleInterface* root = bar->hostWindow()->accessibleRoot();
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->role(), QAccessible::ToolBar);
    ASSERT_EQ(root->childCount(), 1);
    QAccessibleInterface* button = root->child(0);
    EXPECT_EQ(button->role(), QAccessible::Button);
    EXPECT_EQ(button->text(QAccessible::Name), QStringLiteral("CPU usage"));
    EXPECT_EQ(button->text(QAccessible::Description), QStringLiteral("value"));
    EXPECT_EQ(button->rect(), item.item->screenRect());
    EXPECT_EQ(button->parent(), root);
    button->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    ASSERT_EQ(item.clicks.size(), 1u);
    EXPECT_EQ(item.clicks[0].button, Qt::LeftButton);
}

TEST_F(Dock, stepsBackUnderFullScreenWindows) {
    struct Green : QRasterWindow {
        void paintEvent(QPaintEvent*) override {
            QPainter(this).fillRect(QRect(QPoint(), size()), Qt::green);
        }
    } window;
    Item item(*bar, "item", 40);
    ASSERT_TRUE(shown(item));
    window.showFullScreen();
    window.requestActivate();
    const auto covered = [&] {
        const QImage screen = onScreen();
        return screen.pixelColor(5, 5) == QColor(Qt::green) && find(item) < 0;
    };
    EXPECT_TRUE(XServer::until(covered));
    EXPECT_TRUE(XServer::until(
        [&] { return property("_NET_WM_STATE").contains(QStringLiteral("BELOW")); }));
    window.close();
    EXPECT_TRUE(XServer::until(
        [&] { return !property("_NET_WM_STATE").contains(QStringLiteral("BELOW")); }));
    EXPECT_TRUE(shown(item));
}

// A manager that does not know docks (a tiling one, a small compositor's) must not lay the bar out
// among the windows.
TEST_F(Dock, staysOutOfTheHandsOfAManagerThatKnowsNoDocks) {
    xcb_connection_t* x =
        qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(x)).data->root;
    const auto atom =
        owned(xcb_intern_atom_reply(x, xcb_intern_atom(x, 0, 14, "_NET_SUPPORTED"), nullptr))->atom;
    const auto before = owned(xcb_get_property_reply(
        x, xcb_get_property(x, 0, root, atom, XCB_ATOM_ATOM, 0, 1024), nullptr));
    ASSERT_GT(before->value_len, 10u);
    const auto support = [&](std::uint32_t count) {
        xcb_change_property(x, XCB_PROP_MODE_REPLACE, root, atom, XCB_ATOM_ATOM, 32, count,
                            xcb_get_property_value(before.get()));
    };
    const auto info = [this] {
        return XServer::run(QStringLiteral("xwininfo"),
                            {QStringLiteral("-id"), QString::number(bar->hostWindow()->winId())});
    };
    EXPECT_TRUE(info().contains(QStringLiteral("Override Redirect State: no")));
    bar.reset();
    support(1);
    bar = std::make_unique<DockBar>(order);
    Item item(*bar, "item", 40);
    EXPECT_TRUE(shown(item));
    EXPECT_TRUE(info().contains(QStringLiteral("Override Redirect State: yes")));
    EXPECT_EQ(bar->nativeGeometry().topLeft(), QPoint(0, 0));
    support(before->value_len);
}

TEST_F(Dock, followsTheScreen) {
    DockBarOptions options;
    options.edge = BarEdge::Bottom;
    options.screenName = QStringLiteral("not connected");  // the primary screen stands in
    bar->setOptions(options);
    Item item(*bar, "item", 40);
    ASSERT_TRUE(shown(item));
    const int height = bar->nativeGeometry().height();
    const auto randr = [](const char* arguments) {
        XServer::run(QStringLiteral("xrandr"), QString::fromLatin1(arguments).split(u' '));
    };
    randr("--newmode portrait 38.25 768 832 912 1024 1000 1003 1007 1024");
    randr("--addmode screen portrait");
    for (const QSize size : {QSize(768, 1000), QSize(screenWidth, screenHeight)}) {
        randr(size.width() == 768 ? "--output screen --mode portrait"
                                  : "--output screen --mode 1280x1024");
        const QRect expected(0, size.height() - height, size.width(), height);
        EXPECT_TRUE(XServer::until([&] { return bar->nativeGeometry() == expected; }));
        EXPECT_TRUE(shown(item));
        EXPECT_TRUE(XServer::until([&] {
            return workArea().contains(
                QStringLiteral("= 0, 0, %1, %2,").arg(size.width()).arg(size.height() - height));
        }));
    }
}

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const int depth = qEnvironmentVariableIntValue("TEST_SCREEN_DEPTH");
    XServer x(screenWidth, screenHeight, depth ? depth : 24);
    server = &x;
    qputenv("QT_QPA_PLATFORM", "xcb");
    DockBar::prepareProcess();
    int result = 0;
    {
        QApplication application(argc, argv);
        result = RUN_ALL_TESTS();
    }
    return result;
}
