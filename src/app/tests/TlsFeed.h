#pragma once

#include <QProcess>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QSslSocket>
#include <QTemporaryDir>
#include <QTimer>
#include <QUrl>

namespace vostel {

// A certificate made for this run, for one name ("IP:127.0.0.1", "DNS:elsewhere.example").
struct TestCertificate {
    explicit TestCertificate(const QString& name) {
        const QTemporaryDir folder;
        const QString keyPath = folder.filePath(QStringLiteral("key.pem"));
        const QString path = folder.filePath(QStringLiteral("certificate.pem"));
        QProcess openssl;
        openssl.start(QStringLiteral("openssl"),
                      QStringLiteral("req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes "
                                     "-days 2 -subj /CN=feed -addext subjectAltName=%1 "
                                     "-keyout %2 -out %3")
                          .arg(name, keyPath, path)
                          .split(u' '));
        EXPECT_TRUE(openssl.waitForFinished() && openssl.exitCode() == 0)
            << openssl.readAllStandardError().constData();
        certificate = QSslCertificate::fromPath(path).value(0);
        QFile file(keyPath);
        EXPECT_TRUE(file.open(QFile::ReadOnly));
        key = QSslKey(&file, QSsl::Ec);
        EXPECT_FALSE(certificate.isNull() || key.isNull());
    }

    QSslCertificate certificate;
    QSslKey key;
};

// The configuration that believes this certificate and no other.
inline QSslConfiguration trusting(const TestCertificate& made) {
    QSslConfiguration trust = QSslConfiguration::defaultConfiguration();
    trust.setCaCertificates({made.certificate});
    return trust;
}

// A server on loopback. To a request for "/" it says `opening`, then `more` again and again while
// it is read (every 20 ms with `slowly`), at most `most` bytes of it; to any other path, `other`.
class TlsFeed : public QSslServer {
  public:
    struct Script {
        QByteArray opening;
        QByteArray more = {};
        qint64 most = 0;
        bool slowly = false;
        bool closes = false;
        QByteArray other = {};
    };

    TlsFeed(Script what, const TestCertificate& made) : script(std::move(what)) {
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.setLocalCertificate(made.certificate);
        configuration.setPrivateKey(made.key);
        setSslConfiguration(configuration);
        EXPECT_TRUE(listen(QHostAddress::LocalHost));
        connect(this, &QTcpServer::pendingConnectionAvailable, this,
                [this] { serve(nextPendingConnection()); });
    }
    QUrl url() const { return QUrl(QStringLiteral("https://127.0.0.1:%1/").arg(serverPort())); }

    QByteArray asked;
    qint64 sent = 0;

  private:
    void serve(QTcpSocket* socket) {
        auto* request = new QByteArray;
        connect(socket, &QObject::destroyed, this, [request] { delete request; });
        connect(socket, &QTcpSocket::readyRead, this, [this, socket, request] {
            *request += socket->readAll();
            if (request->endsWith("\r\n\r\n")) {
                asked += *request;
                answer(socket, request->startsWith("GET / "));
                request->clear();
            }
        });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    }
    void answer(QTcpSocket* socket, bool first) {
        socket->write(first ? script.opening : script.other);
        if (script.closes) {
            socket->disconnectFromHost();
        } else if (first && script.slowly) {
            auto* timer = new QTimer(socket);
            connect(timer, &QTimer::timeout, socket, [this, socket] { goOn(socket); });
            timer->start(20);
        } else if (first && script.most > 0) {
            connect(static_cast<QSslSocket*>(socket), &QSslSocket::encryptedBytesWritten, this,
                    [this, socket] { goOn(socket); });
        }
    }
    void goOn(QTcpSocket* socket) {
        auto* secure = static_cast<QSslSocket*>(socket);
        if (sent < script.most && secure->bytesToWrite() + secure->encryptedBytesToWrite() == 0) {
            sent += script.more.size();
            socket->write(script.more);
        }
    }

    Script script;
};

}  // namespace vostel
