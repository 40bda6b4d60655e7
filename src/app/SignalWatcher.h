#pragma once

#include <memory>

#include <QObject>
#include <QSocketNotifier>

namespace vostel {

// Turns SIGTERM, SIGINT and SIGHUP into a signal of the event loop. One instance; a second signal
// of the same kind while the program is quitting ends it at once.
class SignalWatcher : public QObject {
    Q_OBJECT

  public:
    explicit SignalWatcher(QObject* parent = nullptr);
    ~SignalWatcher() override;

  Q_SIGNALS:
    void quitRequested();

  private:
    int pipeEnds[2] = {-1, -1};
    std::unique_ptr<QSocketNotifier> notifier;
};

}  // namespace vostel
