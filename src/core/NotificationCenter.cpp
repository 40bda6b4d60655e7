#include "core/NotificationCenter.h"

namespace vostel {

NotificationCenter::Subscription NotificationCenter::subscribe(std::string_view name,
                                                               Handler handler) {
    auto owned = std::make_shared<Handler>(std::move(handler));
    auto& list = handlers[std::string(name)];
    std::erase_if(list, [](const auto& weak) { return weak.expired(); });
    list.push_back(owned);
    return Subscription(std::move(owned));
}

void NotificationCenter::post(std::string_view name) {
    const auto found = handlers.find(name);
    if (found == handlers.end()) {
        return;
    }
    const std::vector<std::weak_ptr<Handler>> snapshot = found->second;
    for (const auto& weak : snapshot) {
        if (const auto handler = weak.lock()) {
            (*handler)();
        }
    }
}

}  // namespace vostel
