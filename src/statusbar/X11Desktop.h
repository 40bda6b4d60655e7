#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <QRect>
#include <QString>

#include "statusbar/DockStrut.h"

struct xcb_connection_t;

namespace vostel {

struct X11Monitor {
    QString name;
    QRect geometry;  // device pixels of the desktop
};

// What a dock window tells the window manager, and what it asks the server (EWMH 1.5, RandR 1.5).
// Questions wait for the answer: they belong to changes of screens and windows, not to ticks.
class X11Desktop {
  public:
    // Borrowed; the window is created and not yet mapped.
    X11Desktop(xcb_connection_t* connection, std::uint32_t window);

    // Dock type, all desktops, out of taskbar and pager, no resize handshake. Where the window
    // manager does not know docks and would tile the bar as one more window, it does not get to
    // manage it: the bar then lies over the others and no space is kept free for it.
    void declareDock();
    void setStrut(const std::array<std::uint32_t, 12>& strut);
    // Device pixels. To be called after the toolkit has placed the window its own way.
    void place(const QRect& rect);
    // Asks for a place below (or among) the other windows.
    void setBelow(bool below);

    QRect rootGeometry() const;
    std::vector<X11Monitor> monitors() const;
    std::uint32_t rootWindow() const { return root; }

    // The rectangle of the active window if it is full screen, else empty.
    QRect activeFullScreenWindow() const;
    // A change of this property of the root window may change that answer.
    bool concernsActiveWindow(std::uint32_t atom) const;
    // Makes sure that changes of the root window's properties reach this connection.
    void watchRoot();

  private:
    bool managerKnowsDocks() const;
    void setSizeHints(const QRect& rect);

    // _NET_WM_STATE and the like, in the order of the table in the source file.
    std::vector<std::uint32_t> atoms;
    // At most 1024.
    std::vector<std::uint32_t> words(std::uint32_t of, std::uint32_t property) const;

    xcb_connection_t* connection;
    std::uint32_t window;
    std::uint32_t root = 0;
    bool managed = true;
};

}  // namespace vostel
