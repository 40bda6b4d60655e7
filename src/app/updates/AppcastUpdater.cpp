#include "app/updates/AppcastUpdater.h"

namespace vostel {

AppcastUpdater::AppcastUpdater(const QUrl& url, UpdateNeeds what,
                               std::optional<QSslConfiguration> whom, FeedDownload::Limits most)
    : feed(url), needs(std::move(what)), trust(std::move(whom)), limits(most) {}

AppcastUpdater::~AppcastUpdater() = default;

QString AppcastUpdater::unavailableReason() const {
    const bool good = feed.isValid() && feed.scheme() == QStringLiteral("https") &&
                      !feed.host().isEmpty() && feed.userInfo().isEmpty();
    return good ? QString()
                : QStringLiteral(
                      "The update feed of this build is not an HTTPS address, so it is not used.");
}

void AppcastUpdater::check(std::function<void(UpdateResult)> done) {
    download = std::make_unique<FeedDownload>(
        feed, limits, trust,
        [this, done = std::move(done)](const QByteArray& body, const QString& error) {
            // This call comes from the download, which must not go under it.
            download.release()->deleteLater();
            done(resultOf(body, error));
        });
}

UpdateResult AppcastUpdater::resultOf(const QByteArray& body, const QString& error) const {
    if (!error.isEmpty()) {
        return {UpdateResult::End::Aborted, {}, error};
    }
    const auto items = parseAppcast(body);
    if (!items) {
        return {UpdateResult::End::Error, {}, QStringLiteral("the answer is no update feed")};
    }
    if (const AppcastItem* item = newestOffer(*items, needs)) {
        return {UpdateResult::End::Done,
                UpdateOffer{item->shownVersion, item->published, item->page, item->releaseNotes},
                {}};
    }
    return {};
}

}  // namespace vostel
