#pragma once

#include <chrono>
#include <functional>
#include <optional>

#include <QByteArray>
#include <QObject>
#include <QSslConfiguration>
#include <QUrl>

class QSslSocket;

namespace vostel {

// One GET of a text over HTTPS (or plain HTTP), with hard bounds on time and memory. Qt's network
// access manager is no choice here: it reads ahead without bound, or, with a bound, byte by byte
// and deaf to its abort() while headers keep coming.
class ShortAnswer : public QObject {
    Q_OBJECT

  public:
    static constexpr qsizetype mostHeaderBytes = 16384;

    struct Request {
        QUrl url;
        std::chrono::milliseconds timeLimit;
        qsizetype mostBytes = 16384;  // of the body
        // Some services answer browsers with a page, and command-line tools with the text.
        QByteArray userAgent = "curl/8";
        std::optional<QSslConfiguration> trust =
            std::nullopt;  // whom to believe; else the system's
    };
    struct Answer {
        int status = 0;       // of HTTP; 0: there was none
        QByteArray body;      // of a status 200
        QByteArray location;  // where another status points, as it came
        QString error;        // empty: the body is whole
    };
    using Completion = std::function<void(const Answer&)>;

    // Connects at once and calls `completion` once from the event loop, then deletes itself.
    // An error when the name does not resolve, no connection or no trusted certificate, any status
    // but 200 (redirects are not followed), an answer that is cut, too long, not HTTP, or not
    // complete after the time limit. Deleted earlier, it calls nothing.
    ShortAnswer(Request request, Completion completion, QObject* parent);

    // Reads what has come of an HTTP/1.x answer. `ended`: nothing more will come. Nothing while the
    // answer is incomplete.
    static std::optional<Answer> read(const QByteArray& bytes, bool ended, qsizetype mostBytes);

  private:
    void take(bool ended);
    void finish(const Answer& answer);
    void fail(const QString& error);

    const Request request;
    QSslSocket* socket;
    Completion completion;
    QByteArray bytes;
    QString distrust;  // why the server is not believed
};

}  // namespace vostel
