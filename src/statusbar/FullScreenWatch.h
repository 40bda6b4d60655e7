#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>
#include <QRect>
#include <QTimer>

namespace vostel {

class X11Desktop;

// Follows the active window and tells the rectangle that it fills when it is full screen. It adds
// no wake-up of its own: the toolkit listens to the same property changes.
class FullScreenWatch final : public QObject, public QAbstractNativeEventFilter {
    Q_OBJECT

  public:
    // Borrowed; outlives the watch. Needs the application object.
    explicit FullScreenWatch(X11Desktop& desktop);
    ~FullScreenWatch() override;

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

  Q_SIGNALS:
    // Device pixels of the desktop; empty: no full-screen window is active.
    void changed(const QRect& window);

  private:
    void look();

    X11Desktop& desktop;
    QTimer lookSoon;
    QRect last;
};

}  // namespace vostel
