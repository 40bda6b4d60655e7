#pragma once

#include <functional>
#include <utility>

#include <QCoreApplication>
#include <QPointer>
#include <QThreadPool>

namespace vostel {

// Where blocking work runs: at most two threads of low priority, which end when idle. One
// instance in the application context.
class Background {
  public:
    Background();
    // Drops what has not begun and waits for what has (all work has a time limit of its own).
    ~Background();

    // Runs `work()` off the main thread, then `done(result)` on the main thread, unless `owner` is
    // gone by then. Call it on the main thread; `work` must not touch `owner`.
    template <typename Work, typename Done>
    void run(QObject* owner, Work work, Done done) {
        pool.start([guard = QPointer<QObject>(owner), work = std::move(work),
                    done = std::move(done)]() mutable {
            auto result = work();
            // The guard is only looked at on the main thread, where the owner lives and dies.
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [guard = std::move(guard), done = std::move(done),
                 result = std::move(result)]() mutable {
                    if (guard) {
                        done(std::move(result));
                    }
                },
                Qt::QueuedConnection);
        });
    }

  private:
    QThreadPool pool;
};

}  // namespace vostel
