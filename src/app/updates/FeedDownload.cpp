#include "app/updates/FeedDownload.h"

#include <utility>

namespace vostel {

namespace {

constexpr int mostRedirects = 5;

bool isSecure(const QUrl& url) {
    return url.isValid() && url.scheme() == QStringLiteral("https") && !url.host().isEmpty();
}

bool isRedirect(int status) {
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

}  // namespace

FeedDownload::FeedDownload(const QUrl& url, Limits most,
                           std::optional<QSslConfiguration> configuration, Completion done)
    : limits(most), trust(std::move(configuration)), completion(std::move(done)) {
    if (isSecure(url)) {
        ask(url);
    } else {
        QMetaObject::invokeMethod(
            this, [this] { completion({}, QStringLiteral("the address is not HTTPS")); },
            Qt::QueuedConnection);
    }
}

void FeedDownload::ask(const QUrl& url) {
    new ShortAnswer(
        {url, limits.time, limits.bytes, "Vostel", trust},
        [this, url](const ShortAnswer::Answer& answer) { take(url, answer); }, this);
}

void FeedDownload::take(const QUrl& from, const ShortAnswer::Answer& answer) {
    if (!isRedirect(answer.status) || answer.location.isEmpty()) {
        completion(answer.body, answer.error);
        return;
    }
    const QUrl to = from.resolved(QUrl(QString::fromLatin1(answer.location), QUrl::StrictMode));
    if (!isSecure(to)) {
        completion({},
                   QStringLiteral("the server sends the program on to an address without HTTPS"));
    } else if (++redirects > mostRedirects) {
        completion({}, QStringLiteral("the server sends the program on too often"));
    } else {
        ask(to);
    }
}

}  // namespace vostel
