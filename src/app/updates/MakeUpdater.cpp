#include <QSysInfo>

#include "app/updates/AppcastUpdater.h"

namespace vostel {

std::unique_ptr<Updater> makeUpdater() {
    constexpr std::string_view feed = VOSTEL_UPDATE_FEED;
    if constexpr (feed.empty()) {
        return nullptr;
    } else {
        constexpr std::string_view key = VOSTEL_UPDATE_KEY;
        return std::make_unique<AppcastUpdater>(
            QUrl(QString::fromUtf8(feed.data(), feed.size()), QUrl::StrictMode),
            UpdateNeeds{VOSTEL_VERSION, QSysInfo::kernelVersion().toStdString(), !key.empty()});
    }
}

}  // namespace vostel
