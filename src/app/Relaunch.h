#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

namespace vostel {

// Starts this program again, as it was started itself, and hands over to it: the new process
// shares the instance lock from the beginning, says when it is up, and waits for this one to go
// before it touches anything. So there is never none and never two that hold the lock.
class Relaunch : public QObject {
    Q_OBJECT

  public:
    // What to try in this order; see programsToStart().
    explicit Relaunch(std::vector<std::string> programs, QObject* parent = nullptr);
    ~Relaunch() override;

    // Calls `done` once, with the error when the new process could not be started, ended before it
    // was up, or was not up in time. Without an error the new process takes over as soon as this
    // one ends. `lock`: the descriptor of the instance lock, or -1.
    using Done = std::function<void(const std::optional<QString>& error)>;
    void start(int lock, Done done);

  private:
    void heard();
    void finish(const std::optional<QString>& error);

    const std::vector<std::string> programs;
    Done done;
    pid_t child = -1;
    int channel = -1;
    std::unique_ptr<QSocketNotifier> notifier;
    QTimer limit;
};

// The files that this program can be started from, best first: the image that it lies in
// ($APPIMAGE), what stands in its own place now, and what is running itself, also when its file is
// gone.
std::vector<std::string> programsToStart();

// What a process that is started by Relaunch finds.
class Handover {
  public:
    // Takes over what the process before this one left, so that no other program gets it. Nothing
    // for a program that somebody else started.
    Handover();
    ~Handover();
    Handover(const Handover&) = delete;
    Handover& operator=(const Handover&) = delete;

    // Whether there was a process before this one.
    bool isHandedOver() const { return channel >= 0; }
    // The descriptor of the instance lock, which becomes the caller's; -1 when there is none.
    int takeLock();
    // Tells the process before this one that it may go, and waits until it has, for a limited time.
    // False when this one is not wanted any more.
    bool complete();

  private:
    int channel = -1;
    int lock = -1;
};

}  // namespace vostel
