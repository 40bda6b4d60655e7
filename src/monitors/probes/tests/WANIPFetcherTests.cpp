#include <gtest/gtest.h>

#include <functional>

#include <QEventLoop>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include "monitors/probes/WANIPFetcher.h"

namespace vostel {
namespace {

using namespace std::chrono_literals;

QByteArray page(const QByteArray& body, const QByteArray& status = "200 OK") {
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) +
           "\r\nConnection: close\r\n\r\n" + body;
}

// A service on loopback. What it says is `opening`, then `more` again and again while it is read
// (every 20 ms with `slowly`), at most `most` bytes of it.
class Service : public QTcpServer {
  public:
    struct Script {
        QByteArray opening;
        QByteArray more = {};
        qint64 most = 0;
        bool slowly = false;
        bool hangUp = false;
        bool closes = false;
    };

    explicit Service(Script what) : script(std::move(what)) {
        EXPECT_TRUE(listen(QHostAddress::LocalHost));
        connect(this, &QTcpServer::newConnection, this, [this] { serve(nextPendingConnection()); });
    }
    QUrl url() const { return QUrl(QStringLiteral("http://127.0.0.1:%1/").arg(serverPort())); }

    QByteArray asked;
    qint64 sent = 0;
    int connections = 0;

  private:
    void serve(QTcpSocket* socket) {
        ++connections;
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
            asked += socket->readAll();
            if (!asked.endsWith("\r\n\r\n")) {
                return;
            }
            if (script.hangUp) {
                socket->abort();
                return;
            }
            socket->write(script.opening);
            if (script.closes) {
                socket->disconnectFromHost();
            }
            if (script.slowly) {
                auto* timer = new QTimer(socket);
                connect(timer, &QTimer::timeout, socket, [this, socket] { goOn(socket); });
                timer->start(20);
            } else {
                connect(socket, &QTcpSocket::bytesWritten, this, [this, socket] { goOn(socket); });
            }
        });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    }
    void goOn(QTcpSocket* socket) {
        if (sent < script.most && socket->bytesToWrite() == 0) {
            sent += script.more.size();
            socket->write(script.more);
        }
    }

    Script script;
};

std::optional<QString> fetch(const QList<QUrl>& services, std::chrono::milliseconds limit = 5s,
                             int index = 0) {
    WANIPFetcher fetcher(services, limit);
    QEventLoop loop;
    std::optional<QString> address;
    int calls = 0;
    fetcher.fetch(index, &loop, [&](std::optional<QString> result) {
        address = std::move(result);
        ++calls;
        // A second call would come soon, if at all.
        QTimer::singleShot(20, &loop, &QEventLoop::quit);
    });
    EXPECT_EQ(calls, 0);
    loop.exec();
    EXPECT_EQ(calls, 1);
    return address;
}

const Service::Script good{page(" 203.0.113.7\r\n")};
constexpr qint64 hundredMegabytes = 100'000'000;

TEST(WANIPFetcherTest, WhatCountsAsAnAddress) {
    const std::pair<QByteArray, bool> rows[] = {
        {"203.0.113.7", true},
        {"\t2001:DB8::1 \n", true},
        {QByteArray(45, 'f'), true},
        {QByteArray(46, 'f'), false},
        {"", false},
        {" \n", false},
        {"203.0.113.7 x", false},
        {"<html>", false},
        {"\xff\xfe", false},
        {QByteArray("1\0002", 3), false},
        {"\xd9\xa1\xd9\xa2", false},  // digits, but of another script
    };
    for (const auto& [answer, valid] : rows) {
        EXPECT_EQ(WANIPFetcher::addressIn(answer).has_value(), valid) << answer.constData();
    }
    EXPECT_EQ(WANIPFetcher::addressIn("\t2001:DB8::1 \n"), QStringLiteral("2001:DB8::1"));
    for (const QUrl& url : WANIPFetcher::endpoints()) {
        EXPECT_EQ(url.scheme(), QStringLiteral("https"));
    }
}

TEST(WANIPFetcherTest, AGoodAnswerNeedsNoSecondService) {
    Service first(good);
    Service second(good);
    EXPECT_EQ(fetch({first.url(), second.url()}), QStringLiteral("203.0.113.7"));
    EXPECT_EQ(second.connections, 0);
    EXPECT_TRUE(first.asked.contains("\r\nUser-Agent: curl/8\r\n")) << first.asked.constData();
    EXPECT_EQ(fetch({first.url(), second.url()}, 5s, 1), QStringLiteral("203.0.113.7"));
    EXPECT_EQ(first.connections, 1);
    EXPECT_EQ(fetch({first.url()}, 5s, 1), std::nullopt);
}

// Whatever the first service does, the second is asked, and little of the first one's answer is
// read.
TEST(WANIPFetcherTest, BadAnswersFallThroughToTheSecond) {
    const QByteArray block(65536, '1');
    const QByteArray endless = "HTTP/1.1 200 OK\r\n\r\n";
    struct Row {
        const char* what;
        Service::Script script;
        std::chrono::milliseconds limit;
    };
    const Row rows[] = {
        {"an error page", {page("<html>503</html>", "503 Service Unavailable")}, 5s},
        {"an error with an address", {page("203.0.113.9", "429 Too Many Requests")}, 5s},
        {"a page instead of the text", {page("<html>" + QByteArray(3000, 'x'))}, 5s},
        {"digits without end", {endless, block, hundredMegabytes}, 5s},
        {"100 MB",
         {"HTTP/1.1 200 OK\r\nContent-Length: 100000000\r\n\r\n", block, hundredMegabytes},
         5s},
        {"chunks without end",
         {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n", "10000\r\n" + block + "\r\n",
          hundredMegabytes},
         5s},
        {"headers without end",
         {"HTTP/1.1 200 OK\r\n", "A: " + block + "\r\n", hundredMegabytes},
         1s},
        {"a byte now and then", {endless, "1", hundredMegabytes, true}, 300ms},
        {"no answer", {""}, 300ms},
        {"half an answer", {"HTTP/1.1 200 OK\r\nContent-Length: 11\r\n\r\n203.0", "", 0}, 300ms},
        {"a closed connection", {"", "", 0, false, true}, 5s},
        {"no HTTP", {"203.0.113.9\r\n\r\n"}, 300ms},
        {"a redirect", {"HTTP/1.1 302 Found\r\nLocation: /x\r\nContent-Length: 0\r\n\r\n"}, 5s},
        {"a cut answer",
         {"HTTP/1.1 200 OK\r\nContent-Length: 11\r\n\r\n203.0", "", 0, false, false, true},
         5s},
        {"a negative length", {"HTTP/1.1 200 OK\r\nContent-Length: -3\r\n\r\n1.2"}, 5s},
        {"unasked chunks",
         {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\n1.23\r\n"},
         5s},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Service first(row.script);
        Service second(good);
        EXPECT_EQ(fetch({first.url(), second.url()}, row.limit), QStringLiteral("203.0.113.7"));
        EXPECT_GE(first.connections, 1);
        EXPECT_LT(first.sent, 20'000'000);  // what the buffers of two sockets hold
    }
}

TEST(WANIPFetcherTest, AnAnswerMayEndWithItsConnection) {
    Service service({"HTTP/1.0 200 OK\r\n\r\n203.0.113.8\n", "", 0, false, false, true});
    EXPECT_EQ(fetch({service.url()}), QStringLiteral("203.0.113.8"));
}

TEST(WANIPFetcherTest, BothFail) {
    Service first({page("<html></html>")});
    Service second({"", "", 0, false, true});
    EXPECT_EQ(fetch({first.url(), second.url()}), std::nullopt);
    EXPECT_EQ(second.connections >= 1, true);
    second.close();
    EXPECT_EQ(fetch({second.url(), QUrl(QStringLiteral("not a url"))}), std::nullopt);
}

TEST(WANIPFetcherTest, NothingIsCalledWhenOwnerOrFetcherIsGone) {
    Service silent({""});
    QEventLoop loop;
    const auto fail = [](const auto&) { FAIL(); };
    auto owner = std::make_unique<QObject>();
    WANIPFetcher kept({silent.url()}, 100ms);
    kept.fetch(0, owner.get(), fail);
    auto gone = std::make_unique<WANIPFetcher>(QList<QUrl>{silent.url()}, 100ms);
    gone->fetch(0, &loop, fail);
    QTimer::singleShot(50, &loop, [&] {
        owner.reset();
        gone.reset();
    });
    QTimer::singleShot(300, &loop, &QEventLoop::quit);
    loop.exec();
    EXPECT_EQ(silent.connections, 2);
}

}  // namespace
}  // namespace vostel
