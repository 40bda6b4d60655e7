#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include <QList>
#include <QObject>
#include <QString>
#include <QUrl>

namespace vostel {

// Asks public services, which answer with the caller's address as plain text, for the public
// address of this machine. To be used on the main thread.
class WANIPFetcher : public QObject {
    Q_OBJECT

  public:
    using Completion = std::function<void(std::optional<QString>)>;

    // The two services of the program; the only place that names them.
    static QList<QUrl> endpoints();

    // The address in an answer: its text without white space around it, when it has 1 to 45
    // characters, all of them hexadecimal digits, "." or ":".
    static std::optional<QString> addressIn(const QByteArray& answer);

    // `timeLimit` bounds each service's whole answer.
    explicit WANIPFetcher(QList<QUrl> services = endpoints(),
                          std::chrono::milliseconds timeLimit = std::chrono::seconds(6));

    // Asks the services in order, from the one at `index` on, until one gives an address. Then
    // calls `completion` once, never before fetch() has returned, with the address, or with
    // nothing when no service is left. Calls nothing when `owner` or the fetcher is gone by then.
    void fetch(int index, QObject* owner, Completion completion);

  private:
    struct Request;

    void ask(const std::shared_ptr<Request>& request);

    QList<QUrl> services;
    std::chrono::milliseconds timeLimit;
};

}  // namespace vostel
