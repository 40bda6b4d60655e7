#include "monitors/probes/WANIPFetcher.h"

#include <algorithm>
#include <utility>

#include <QPointer>

#include "monitors/probes/ShortAnswer.h"

namespace vostel {

namespace {

constexpr qsizetype longestText = 45;  // an IPv6 address that ends in an IPv4 address

bool belongsToAddress(QChar character) {
    const char16_t c = character.unicode();
    return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F') ||
           c == u'.' || c == u':';
}

}  // namespace

struct WANIPFetcher::Request {
    int index = 0;
    QPointer<QObject> owner;
    Completion completion;
};

// The first is reached over IPv4 only: a broken IPv6 network costs no waiting.
QList<QUrl> WANIPFetcher::endpoints() {
    return {QUrl(QStringLiteral("https://api.ipify.org")),
            QUrl(QStringLiteral("https://icanhazip.com"))};
}

std::optional<QString> WANIPFetcher::addressIn(const QByteArray& answer) {
    const QString text = QString::fromUtf8(answer).trimmed();
    if (text.isEmpty() || text.size() > longestText ||
        !std::all_of(text.begin(), text.end(), belongsToAddress)) {
        return std::nullopt;
    }
    return text;
}

WANIPFetcher::WANIPFetcher(QList<QUrl> list, std::chrono::milliseconds limit)
    : services(std::move(list)), timeLimit(limit) {}

void WANIPFetcher::fetch(int index, QObject* owner, Completion completion) {
    auto request = std::make_shared<Request>();
    request->index = index;
    request->owner = owner;
    request->completion = std::move(completion);
    QMetaObject::invokeMethod(this, [this, request] { ask(request); }, Qt::QueuedConnection);
}

void WANIPFetcher::ask(const std::shared_ptr<Request>& request) {
    if (!request->owner) {
        return;
    }
    if (request->index < 0 || request->index >= services.size()) {
        request->completion(std::nullopt);
        return;
    }
    const QUrl url = services.at(request->index++);
    // Belongs to the fetcher, and ends with it.
    new ShortAnswer(
        {url, timeLimit},
        [this, request](const ShortAnswer::Answer& answer) {
            const auto address = answer.error.isEmpty() ? addressIn(answer.body) : std::nullopt;
            if (!address) {
                ask(request);
            } else if (request->owner) {
                request->completion(address);
            }
        },
        this);
}

}  // namespace vostel
