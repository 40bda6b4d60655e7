#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vostel {

// Named notifications without payload, delivered at once on the poster's thread. Main thread only.
class NotificationCenter {
  public:
    using Handler = std::function<void()>;

    // Ends its subscription when it goes; may outlive the centre.
    class Subscription {
      public:
        Subscription() = default;

      private:
        friend class NotificationCenter;
        explicit Subscription(std::shared_ptr<Handler> h) : handler(std::move(h)) {}
        std::shared_ptr<Handler> handler;
    };

    [[nodiscard]] Subscription subscribe(std::string_view name, Handler handler);

    // Calls every handler subscribed to the name, in the order of subscription. Handlers may
    // subscribe and unsubscribe meanwhile; one that unsubscribed is not called any more, one that
    // subscribed is called from the next post on.
    void post(std::string_view name);

  private:
    std::map<std::string, std::vector<std::weak_ptr<Handler>>, std::less<>> handlers;
};

}  // namespace vostel
