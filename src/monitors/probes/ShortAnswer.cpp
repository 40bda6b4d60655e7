#include "monitors/probes/ShortAnswer.h"

#include <algorithm>
#include <utility>

#include <QSslSocket>
#include <QTimer>

namespace vostel {

namespace {

constexpr int httpPort = 80;
constexpr int httpsPort = 443;
constexpr int statusOk = 200;

// HTTP/1.0: the answer comes in one piece that ends with the connection (RFC 1945).
QByteArray textOf(const ShortAnswer::Request& request) {
    const QUrl& url = request.url;
    QByteArray path = url.path(QUrl::FullyEncoded).toLatin1();
    if (path.isEmpty()) {
        path = "/";
    }
    if (url.hasQuery()) {
        path += '?' + url.query(QUrl::FullyEncoded).toLatin1();
    }
    QByteArray host = url.host(QUrl::FullyEncoded).toLatin1();
    if (host.contains(':')) {
        host = '[' + host + ']';
    }
    if (url.port() >= 0) {
        host += ':' + QByteArray::number(url.port());
    }
    return "GET " + path + " HTTP/1.0\r\nHost: " + host + "\r\nUser-Agent: " + request.userAgent +
           "\r\nAccept: */*\r\nConnection: close\r\n\r\n";
}

ShortAnswer::Answer failed(const char* error) {
    return {0, {}, {}, QLatin1String(error)};
}

// The status line and what of the headers matters here.
struct Head {
    int status = 0;
    qsizetype length = -1;  // of the body; -1: it ends with the connection
    QByteArray location;
    bool bad = false;
};

Head readHead(const QByteArray& text) {
    const QList<QByteArray> lines = text.split('\n');
    Head head;
    head.status = lines.first().simplified().split(' ').value(1).toInt();
    for (const QByteArray& line : lines) {
        const QByteArray name = line.left(line.indexOf(':')).toLower();
        const QByteArray value = line.mid(name.size() + 1).trimmed();
        if (name == "content-length") {
            bool number = false;
            head.length = value.toLongLong(&number);
            head.bad = head.bad || !number || head.length < 0;
        } else if (name == "location") {
            head.location = value;
        } else if (name == "transfer-encoding" || name == "content-encoding") {
            head.bad = true;  // not asked for
        }
    }
    return head;
}

}  // namespace

ShortAnswer::ShortAnswer(Request what, Completion done, QObject* parent)
    : QObject(parent),
      request(std::move(what)),
      socket(new QSslSocket(this)),
      completion(std::move(done)) {
    const QUrl& url = request.url;
    if (request.trust) {
        socket->setSslConfiguration(*request.trust);
    }
    socket->setReadBufferSize(mostHeaderBytes);
    const bool encrypt = url.scheme() == QStringLiteral("https");
    connect(socket, encrypt ? &QSslSocket::encrypted : &QSslSocket::connected, this,
            [this] { socket->write(textOf(request)); });
    connect(socket, &QSslSocket::readyRead, this, [this] { take(false); });
    connect(socket, &QSslSocket::disconnected, this, [this] { take(true); });
    connect(
        socket, &QSslSocket::errorOccurred, this,
        [this](QAbstractSocket::SocketError error) {
            if (error != QAbstractSocket::RemoteHostClosedError) {
                fail(socket->errorString());
            }
        },
        Qt::QueuedConnection);
    connect(socket, &QSslSocket::sslErrors, this, [this](const QList<QSslError>& errors) {
        distrust = errors.value(0).errorString();  // the connection ends next
    });
    QTimer::singleShot(request.timeLimit, this,
                       [this] { fail(QStringLiteral("the server does not answer in time")); });
    if (encrypt) {
        socket->connectToHostEncrypted(url.host(), static_cast<quint16>(url.port(httpsPort)));
    } else {
        socket->connectToHost(url.host(), static_cast<quint16>(url.port(httpPort)));
    }
}

std::optional<ShortAnswer::Answer> ShortAnswer::read(const QByteArray& bytes, bool ended,
                                                     qsizetype mostBytes) {
    const std::optional<Answer> unfinished =
        !ended            ? std::nullopt
        : bytes.isEmpty() ? std::optional(failed("the server closes the connection"))
                          : std::optional(failed("the answer is cut"));
    const QByteArray protocol = QByteArrayLiteral("HTTP/1.");
    if (!bytes.startsWith(protocol)) {
        return protocol.startsWith(bytes) ? unfinished : failed("the answer is not HTTP");
    }
    const qsizetype end = bytes.indexOf("\r\n\r\n");
    if (end > mostHeaderBytes || (end < 0 && bytes.size() > mostHeaderBytes)) {
        return failed("the answer is too long");
    }
    if (end < 0) {
        return unfinished;
    }
    const Head head = readHead(bytes.left(end));
    if (head.status != statusOk) {
        return Answer{head.status,
                      {},
                      head.location,
                      QStringLiteral("the server answers with status %1").arg(head.status)};
    }
    const qsizetype size = bytes.size() - (end + 4);
    if (head.bad) {
        return failed("the answer is not as asked for");
    }
    if (head.length > mostBytes || (head.length < 0 && size > mostBytes)) {
        return failed("the answer is too long");
    }
    if (head.length >= 0 ? size < head.length : !ended) {
        return unfinished;
    }
    return Answer{head.status, bytes.mid(end + 4, head.length), {}, {}};
}

void ShortAnswer::take(bool ended) {
    const qsizetype room = mostHeaderBytes + request.mostBytes + 1 - bytes.size();
    bytes += socket->read(std::max<qsizetype>(room, 0));
    const auto answer = read(bytes, ended, request.mostBytes);
    if (answer && bytes.isEmpty()) {
        fail(answer->error);
    } else if (answer) {
        finish(*answer);
    } else if (bytes.size() > mostHeaderBytes + request.mostBytes) {
        fail(QStringLiteral("the answer is too long"));
    }
}

void ShortAnswer::fail(const QString& error) {
    finish({0,
            {},
            {},
            distrust.isEmpty() ? error : QStringLiteral("no trusted connection: ") + distrust});
}

void ShortAnswer::finish(const Answer& answer) {
    if (!completion) {
        return;
    }
    const Completion done = std::exchange(completion, nullptr);
    socket->disconnect(this);
    socket->abort();
    deleteLater();
    done(answer);
}

}  // namespace vostel
