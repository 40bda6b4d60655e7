#include <gtest/gtest.h>

#include <algorithm>

#include <QGuiApplication>
#include <QThreadPool>
#include <QVariantMap>

#include "core/Notifier.h"
#include "statusbar/tests/PrivateBus.h"

// A notification service as it is on a bus.
class FakeNotifications : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

  public:
    struct Seen {
        QString application, icon, title, body, desktopEntry;
        bool silent;
    };

    FakeNotifications(const QString& address, QStringList what)
        : bus(QDBusConnection::connectToBus(address, QStringLiteral("notifications"))),
          capabilities(std::move(what)) {
        bus.registerObject(QStringLiteral("/org/freedesktop/Notifications"), this,
                           QDBusConnection::ExportAllSlots);
        bus.registerService(QStringLiteral("org.freedesktop.Notifications"));
    }
    ~FakeNotifications() override {
        QDBusConnection::disconnectFromBus(QStringLiteral("notifications"));
    }

    std::vector<Seen> seen;

  public Q_SLOTS:
    QStringList GetCapabilities() const { return capabilities; }
    uint Notify(const QString& application, uint, const QString& icon, const QString& title,
                const QString& body, const QStringList&, const QVariantMap& hints, int) {
        seen.push_back({application, icon, title, body,
                        hints.value(QStringLiteral("desktop-entry")).toString(),
                        hints.value(QStringLiteral("suppress-sound")).toBool()});
        return 7;
    }

  private:
    QDBusConnection bus;
    QStringList capabilities;
};

namespace vostel {
namespace {

class NotifierTest : public testing::Test {
  protected:
    NotifierTest() {
        qputenv("DBUS_SESSION_BUS_ADDRESS", bus.address().toUtf8());
        QGuiApplication::setDesktopFileName(QStringLiteral("com.vostel.app"));
    }
    ~NotifierTest() override { qunsetenv("DBUS_SESSION_BUS_ADDRESS"); }

    const PrivateBus bus;
};

// Catches plain text that a server takes for markup, and escapes that one without markup shows.
TEST_F(NotifierTest, theTextArrivesAsItIs) {
    const QString body = QStringLiteral("<b>3 < 4</b> & \"more\" – ⌘");
    for (const bool markup : {true, false}) {
        FakeNotifications service(bus.address(), markup ? QStringList{QStringLiteral("body"),
                                                                      QStringLiteral("body-markup")}
                                                        : QStringList{QStringLiteral("body")});
        Notifier::post(QStringLiteral("<i>Title</i>"), body);
        ASSERT_TRUE(waitUntil([&] { return !service.seen.empty(); }));
        const auto& seen = service.seen[0];
        EXPECT_EQ(seen.application, QStringLiteral("Vostel"));
        EXPECT_EQ(seen.icon, QStringLiteral("com.vostel.app"));
        EXPECT_EQ(seen.desktopEntry, QStringLiteral("com.vostel.app"));
        EXPECT_TRUE(seen.silent);
        EXPECT_EQ(seen.title, QStringLiteral("<i>Title</i>"));
        EXPECT_EQ(seen.body,
                  markup ? QStringLiteral("&lt;b&gt;3 &lt; 4&lt;/b&gt; &amp; &quot;more&quot; – ⌘")
                         : body);
    }
}

// Catches an error that ends the program or keeps the next notification from its service.
TEST_F(NotifierTest, withoutAServiceABusOrAnEntryNothingHappens) {
    Notifier::post(QStringLiteral("no service"), {});
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    Notifier::post(QStringLiteral("no bus"), {});
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    Notifier::post(QStringLiteral("bus switched off"), {});
    QThreadPool::globalInstance()->waitForDone();
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus.address().toUtf8());
    FakeNotifications service(bus.address(), {});
    QGuiApplication::setDesktopFileName({});
    Notifier::post(QStringLiteral("no entry"), {});
    QGuiApplication::setDesktopFileName(QStringLiteral("com.vostel.app"));
    Notifier::post(QStringLiteral("good"), QString(1'000'000, u'x'));
    ASSERT_TRUE(waitUntil([&] {
        return std::any_of(service.seen.begin(), service.seen.end(),
                           [](const auto& each) { return each.title == QStringLiteral("good"); });
    }));
    for (const auto& each : service.seen) {
        EXPECT_TRUE(each.title == QStringLiteral("good") ||
                    each.title == QStringLiteral("no service"))
            << each.title.toStdString();
    }
    EXPECT_LE(service.seen.back().body.size(), 1000);
}

}  // namespace
}  // namespace vostel

#include "NotifierTests.moc"
