#pragma once

#include <chrono>
#include <functional>
#include <optional>

#include <QByteArray>
#include <QObject>
#include <QSslConfiguration>
#include <QUrl>

#include "monitors/probes/ShortAnswer.h"

namespace vostel {

// One GET of a text over HTTPS, bounded in time and size. Redirects are followed to other HTTPS
// addresses only. No cookies, no passwords, nothing is stored, nothing of it stays.
class FeedDownload : public QObject {
    Q_OBJECT

  public:
    struct Limits {
        std::chrono::milliseconds time = std::chrono::seconds(30);  // for each server on the way
        qsizetype bytes = 1'000'000;                                // of the body
    };
    // `error` is empty when `body` is the whole answer.
    using Completion = std::function<void(const QByteArray& body, const QString& error)>;

    // Calls `completion` once, from the event loop. Deleted earlier, it calls nothing. `trust` says
    // whose certificates are believed; the system's authorities where not given.
    FeedDownload(const QUrl& url, Limits limits, std::optional<QSslConfiguration> trust,
                 Completion completion);

  private:
    void ask(const QUrl& url);
    void take(const QUrl& from, const ShortAnswer::Answer& answer);

    const Limits limits;
    const std::optional<QSslConfiguration> trust;
    Completion completion;
    int redirects = 0;
};

}  // namespace vostel
