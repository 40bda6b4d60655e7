#include "monitors/probes/ShortAnswer.h"

#include <utility>

#include <QSslSocket>
#include <QTimer>

namespace vostel {

namespace {

constexpr int httpPort = 80;
constexpr int httpsPort = 443;

// HTTP/1.0: the answer comes in one piece that ends with the connection (RFC 1945).
QByteArray requestFor(const QUrl& url) {
    const QByteArray path = url.path(QUrl::FullyEncoded).toLatin1();
    QByteArray host = url.host(QUrl::FullyEncoded).toLatin1();
    if (url.port() >= 0) {
        host += ':' + QByteArray::number(url.port());
    }
    // Services of this kind answer browsers with a page, and command-line tools with the text.
    return "GET " + (path.isEmpty() ? "/" : path) + " HTTP/1.0\r\nHost: " + host +
           "\r\nUser-Agent: curl/8\r\nAccept: */*\r\nConnection: close\r\n\r\n";
}

}  // namespace

ShortAnswer::ShortAnswer(const QUrl& url, std::chrono::milliseconds timeLimit, Completion done,
                         QObject* parent)
    : QObject(parent), socket(new QSslSocket(this)), completion(std::move(done)) {
    socket->setReadBufferSize(mostBytes);
    const bool encrypt = url.scheme() == QStringLiteral("https");
    connect(socket, encrypt ? &QSslSocket::encrypted : &QSslSocket::connected, this,
            [this, url] { socket->write(requestFor(url)); });
    connect(socket, &QSslSocket::readyRead, this, [this] { take(false); });
    connect(socket, &QSslSocket::disconnected, this, [this] { take(true); });
    connect(
        socket, &QSslSocket::errorOccurred, this,
        [this](QAbstractSocket::SocketError error) {
            if (error != QAbstractSocket::RemoteHostClosedError) {
                finish(std::nullopt);
            }
        },
        Qt::QueuedConnection);
    QTimer::singleShot(timeLimit, this, [this] { finish(std::nullopt); });
    if (encrypt) {
        socket->connectToHostEncrypted(url.host(), static_cast<quint16>(url.port(httpsPort)));
    } else {
        socket->connectToHost(url.host(), static_cast<quint16>(url.port(httpPort)));
    }
}

ShortAnswer::State ShortAnswer::read(const QByteArray& answer, bool ended, QByteArray& body) {
    const State unfinished = ended ? State::bad : State::incomplete;
    const QByteArray protocol = QByteArrayLiteral("HTTP/1.");
    if (!answer.startsWith(protocol)) {
        return protocol.startsWith(answer) ? unfinished : State::bad;
    }
    const qsizetype end = answer.indexOf("\r\n\r\n");
    if (end < 0) {
        return unfinished;
    }
    const QList<QByteArray> lines = answer.left(end).split('\n');
    if (lines.first().simplified().split(' ').value(1) != "200") {
        return State::bad;
    }
    qsizetype length = -1;
    for (const QByteArray& line : lines) {
        const QByteArray name = line.left(line.indexOf(':')).toLower();
        if (name == "content-length") {
            bool number = false;
            length = line.mid(name.size() + 1).trimmed().toLongLong(&number);
            if (!number || length < 0) {
                return State::bad;
            }
        } else if (name == "transfer-encoding" || name == "content-encoding") {
            return State::bad;  // not asked for
        }
    }
    body = answer.mid(end + 4, length);
    if (length >= 0) {
        return body.size() == length ? State::complete : unfinished;
    }
    return ended ? State::complete : State::incomplete;
}

void ShortAnswer::take(bool ended) {
    answer += socket->read(mostBytes + 1 - answer.size());
    QByteArray body;
    const State state = answer.size() > mostBytes ? State::bad : read(answer, ended, body);
    if (state != State::incomplete) {
        finish(state == State::complete ? std::optional(body) : std::nullopt);
    }
}

void ShortAnswer::finish(std::optional<QByteArray> body) {
    if (!completion) {
        return;
    }
    const Completion done = std::exchange(completion, nullptr);
    socket->disconnect(this);
    socket->abort();
    deleteLater();
    done(std::move(body));
}

}  // namespace vostel
