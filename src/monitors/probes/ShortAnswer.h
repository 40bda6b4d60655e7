#pragma once

#include <chrono>
#include <functional>
#include <optional>

#include <QByteArray>
#include <QObject>
#include <QUrl>

class QSslSocket;

namespace vostel {

// One GET of a short text over HTTPS (or plain HTTP), with hard bounds on time and memory. Qt's
// network access manager is no choice here: it reads ahead without bound, or, with a bound, byte by
// byte and deaf to its abort() while headers keep coming.
class ShortAnswer : public QObject {
    Q_OBJECT

  public:
    // The body, or nothing.
    using Completion = std::function<void(std::optional<QByteArray>)>;

    static constexpr qsizetype mostBytes = 16384;  // headers and body

    // Connects at once and calls `completion` once from the event loop, then deletes itself.
    // Nothing when the name does not resolve, no connection or no trusted certificate, any status
    // but 200 (redirects are not followed), an answer that is cut, too long, not HTTP, or not
    // complete after `timeLimit`. Deleted earlier, it calls nothing.
    ShortAnswer(const QUrl& url, std::chrono::milliseconds timeLimit, Completion completion,
                QObject* parent);

    // Reads what has come of an HTTP/1.x answer. `ended`: nothing more will come.
    enum class State { incomplete, complete, bad };
    static State read(const QByteArray& answer, bool ended, QByteArray& body);

  private:
    void take(bool ended);
    void finish(std::optional<QByteArray> body);

    QSslSocket* socket;
    Completion completion;
    QByteArray answer;
};

}  // namespace vostel
