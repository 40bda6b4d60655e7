#pragma once

#include <functional>
#include <utility>

#include <QObject>

namespace vostel {

// Work that is asked for many times in one turn of the event loop and done once, in the next: many
// settings that change in one go, many parts of one image.
class OncePerTurn {
  public:
    // A member of `owner`: what is asked for is not done when the owner is gone by then.
    OncePerTurn(QObject* owner, std::function<void()> work)
        : context(owner), action(std::move(work)) {}

    void request() {
        if (!requested) {
            requested = true;
            QMetaObject::invokeMethod(
                context,
                [this] {
                    requested = false;
                    action();
                },
                Qt::QueuedConnection);
        }
    }

  private:
    QObject* const context;
    const std::function<void()> action;
    bool requested = false;
};

}  // namespace vostel
