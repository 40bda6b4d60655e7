// Any bytes as an update feed: nothing is offered that must not be opened or shown, and versions
// stand in one order.
#include <cstdint>
#include <cstdlib>

#include "app/updates/Appcast.h"
#include "app/updates/VersionOrder.h"

namespace {

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto items = vostel::parseAppcast(
        QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    if (!items) {
        return 0;
    }
    const vostel::UpdateNeeds needs{"1.0", "6.1.0", false};
    const vostel::AppcastItem* newest = vostel::newestOffer(*items, needs);
    require(newest == nullptr ||
            vostel::compareVersions(newest->version.toStdString(), needs.version) > 0);
    for (std::size_t i = 0; i < items->size(); ++i) {
        const vostel::AppcastItem& item = (*items)[i];
        require(item.page.scheme() == QStringLiteral("https") && !item.page.host().isEmpty());
        require(item.shownVersion.size() <= 32 && !item.shownVersion.contains(u'\n'));
        // A total order, as far as three neighbours show.
        if (i >= 2) {
            const std::string a = (*items)[i - 2].version.toStdString();
            const std::string b = (*items)[i - 1].version.toStdString();
            const std::string c = item.version.toStdString();
            require(vostel::compareVersions(a, a) == 0);
            require((vostel::compareVersions(a, b) < 0) == (vostel::compareVersions(b, a) > 0));
            require(!(vostel::compareVersions(a, b) <= 0 && vostel::compareVersions(b, c) <= 0) ||
                    vostel::compareVersions(a, c) <= 0);
        }
    }
    return 0;
}
