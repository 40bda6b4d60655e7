#pragma once

#include <cstdint>

#include <QColor>
#include <QImage>
#include <QPoint>
#include <QRect>

#include "statusbar/PixelFormat.h"

struct xcb_connection_t;

namespace vostel {

// Pixels straight into an X11 window, in device pixels. Nothing here waits for an answer except
// the constructor: a toolkit's backing store costs a round trip and a wake-up for each flush, which
// is more than the drawing itself.
class X11Surface {
  public:
    // Both are borrowed: connection and window outlive the surface.
    X11Surface(xcb_connection_t* connection, std::uint32_t window);
    ~X11Surface();
    X11Surface(const X11Surface&) = delete;
    X11Surface& operator=(const X11Surface&) = delete;

    // What the server itself fills uncovered parts with.
    void setBackground(const QColor& color);
    void fill(const QRect& rect, const QColor& color);

    // `image` is Format_RGB32. Images above the server's request limit go in strips.
    void put(const QPoint& at, const QImage& image);

    // Sends what has been put. Does not wait.
    void flush();

    // Whether the server takes what is drawn. One that stands still does not, once the socket to it
    // is full: a request would then wait, and the whole program with it.
    bool isReady() const;

  private:
    void putRows(const QPoint& at, const QImage& image);

    xcb_connection_t* connection;
    std::uint32_t window;
    std::uint32_t context = 0;  // graphics context
    std::uint8_t depth = 24;
    PixelFormat format;
};

}  // namespace vostel
