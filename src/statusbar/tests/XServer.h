#pragma once

#include <functional>
#include <memory>

#include <QImage>
#include <QProcess>
#include <QRect>
#include <QString>
#include <QStringList>

struct xcb_connection_t;

namespace vostel {

// A real X server without a screen and a real window manager, for one test program. The test ends
// with an error when one of them is missing.
class XServer {
  public:
    // Starts both on a free display and points DISPLAY at it. Call before the application object
    // is made. `depth`: bits per pixel of the screen, 16 or 24.
    XServer(int width, int height, int depth);
    ~XServer();

    // The output of a tool run against this server, while the event loop goes on. Ends the test
    // program when the tool is missing or fails. `tries`: how often it may meet a window that just
    // went away.
    static QString run(const QString& program, const QStringList& arguments, int tries = 5);
    static void xdotool(const char* arguments) {
        run(QStringLiteral("xdotool"), QString::fromLatin1(arguments).split(u' '));
    }

    // Stops it in its tracks, and lets it go on.
    void freeze();
    void thaw();

    // What is on the screen, Format_RGB32, device pixels.
    QImage grab(const QRect& rect);

    // Runs the event loop until it is so; false when it never is.
    static bool until(const std::function<bool()>& condition);

  private:
    QProcess server;
    QProcess manager;
    xcb_connection_t* connection = nullptr;
};

}  // namespace vostel
