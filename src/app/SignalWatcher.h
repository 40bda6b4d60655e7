#pragma once

#include <functional>
#include <memory>

#include <QObject>
#include <QThread>

namespace vostel {

// Turns SIGTERM, SIGINT and SIGHUP into a signal of the event loop, and sees to it that the process
// ends within a second of them (see endWithinASecond). One instance; a second signal of the same
// kind while the program is quitting ends it at once.
class SignalWatcher : public QObject {
    Q_OBJECT

  public:
    // `save` keeps what must not be lost. It is called on another thread when the main thread does
    // not end this object in time, because it hangs: in a display server that stands still, say.
    explicit SignalWatcher(std::function<void()> save, QObject* parent = nullptr);
    ~SignalWatcher() override;

  Q_SIGNALS:
    void quitRequested();

  private:
    void watch() const;

    const std::function<void()> save;
    int pipeEnds[2] = {-1, -1};
    std::unique_ptr<QThread> watcher;
};

// Ends the process, with status 0, within a second of the first call, whatever hangs by then. What
// there is to save must be saved before that. Safe in a signal handler.
void endWithinASecond();

}  // namespace vostel
