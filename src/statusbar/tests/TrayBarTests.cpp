#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QCursor>
#include <QDBusConnectionInterface>
#include <QDBusMetaType>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QScreen>
#include <QTemporaryDir>

#include "PrivateBus.h"
#include "statusbar/SessionBus.h"
#include "statusbar/TrayBar.h"
#include "statusbar/TrayMenuAdaptor.h"
#include "statusbar/TrayPixmap.h"
#include "statusbar/TrayProbe.h"
#include "statusbar/UpdateLimit.h"

namespace vostel {
namespace {

using namespace Qt::StringLiterals;

const QString itemInterface = u"org.kde.StatusNotifierItem"_s;

StatusImage plain(QRgb premultiplied, int width = 4, int height = 2) {
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(premultiplied);
    return {image, QSizeF(width, height), false};
}

// Step-th of a row of images, in both sizes.
std::vector<StatusImage> pair(int step) {
    const QRgb colour = qRgb(step, 255 - step, 0);
    return {plain(colour), plain(colour, 8, 4)};
}

class TrayBarTests : public testing::Test {
  protected:
    // The host's process is this test; what it is called stands in a /proc of the test's own.
    void nameHost(const char* process) {
        const QString folder = u"%1/%2"_s.arg(proc.path()).arg(getpid());
        QDir().mkpath(folder);
        QFile file(folder + u"/comm"_s);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(process);
    }

    std::unique_ptr<TrayBar> makeBar(std::optional<Appearance> appearance = Appearance::Dark) {
        TrayBarOptions options;
        options.busAddress = bus.address();
        options.proc = proc.path().toStdString();
        options.appearance = appearance;
        QString error;
        auto made = TrayBar::make(options, &error);
        EXPECT_EQ(error, QString());
        return made;
    }

    // One item that the tray shows already; its pixels are those of pair(0).
    void showItem() {
        tray = std::make_unique<FakeTray>(bus.address());
        bar = makeBar();
        item = bar->makeItem(u"vostel.cpu"_s);
        item->setToolTip(u"CPU usage"_s, u"CPU 12 %"_s);
        item->setImages(pair(0));
        ASSERT_TRUE(waitUntil([&] { return !tray->items.isEmpty(); }));
        tray->countSignals();
    }

    TrayPixmaps shownPixmaps() { return qdbus_cast<TrayPixmaps>(tray->property(u"IconPixmap"_s)); }

    bool onBus(const QString& name) {
        return tray->bus.interface()->isServiceRegistered(name).value();
    }

    PrivateBus bus;
    QTemporaryDir proc;
    std::unique_ptr<FakeTray> tray;
    std::unique_ptr<TrayBar> bar;
    std::unique_ptr<StatusItem> item;
};

// Wrong byte order, colours left multiplied, one size lost, a stencil that is not tinted.
TEST_F(TrayBarTests, HandsOutPixelsInNetworkOrderInBothSizes) {
    nameHost("waybar\n");
    showItem();
    ASSERT_TRUE(waitUntil([&] { return item->wantedImages().at(1).shape == ImageShape::Wide; }));
    StatusImage stencil = plain(qRgba(0, 0, 0, 255), 8, 4);
    stencil.isTemplate = true;
    item->setImages({plain(qRgba(51, 10, 0, 51)), stencil});
    ASSERT_TRUE(waitUntil([&] { return tray->count(u"NewIcon"_s) == 1; }));
    const TrayPixmaps pixmaps = shownPixmaps();
    ASSERT_EQ(pixmaps.size(), 2);
    EXPECT_EQ(QSize(pixmaps[0].width, pixmaps[0].height), QSize(4, 2));
    EXPECT_EQ(QSize(pixmaps[1].width, pixmaps[1].height), QSize(8, 4));
    // A, R, G, B of 8 pixels; of 51 parts, 51 and 10 are 255 and 50 of 255.
    EXPECT_EQ(pixmaps[0].bytes.toHex(), QByteArray("33ff3200").repeated(8));
    EXPECT_EQ(pixmaps[1].bytes.toHex(), QByteArray("ffffffff").repeated(32));  // light on dark
    EXPECT_EQ(tray->property(u"IconPixmap"_s).value<QDBusArgument>().currentSignature(),
              u"a(iiay)"_s);
    EXPECT_EQ(tray->property(u"Id"_s).toString(), u"vostel.cpu"_s);
    EXPECT_EQ(tray->property(u"Status"_s).toString(), u"Active"_s);
    // A host that finds a menu opens it instead of reporting the right button.
    EXPECT_FALSE(tray->property(u"Menu"_s).isValid());
}

// A square cell must not squeeze an image that is wider than high.
TEST_F(TrayBarTests, PadsToASquareWhereTheHostHasSquareCells) {
    nameHost("plasmashell\n");
    showItem();
    const TrayPixmap pixmap = shownPixmaps().value(0);
    EXPECT_EQ(QSize(pixmap.width, pixmap.height), QSize(4, 4));
    EXPECT_EQ(pixmap.bytes.toHex(), QByteArray("00000000").repeated(4) +
                                        QByteArray("ff00ff00").repeated(8) +
                                        QByteArray("00000000").repeated(4));
}

// Also catches items that come in another order than they were made in: hosts show them so.
TEST_F(TrayBarTests, ReturnsWithTheTrayInTheSameOrder) {
    bar = makeBar();  // before any tray is there
    std::vector<std::unique_ptr<StatusItem>> items;
    for (int i = 0; i < 8; ++i) {
        items.push_back(bar->makeItem(u"vostel.%1"_s.arg(i)));
    }
    for (auto each = items.rbegin(); each != items.rend(); ++each) {
        (*each)->setImages(pair(0));
    }
    items[3]->setImages({StatusImage(), StatusImage()});  // hidden: nobody waits for it
    for (int start = 0; start < 3; ++start) {
        tray = std::make_unique<FakeTray>(bus.address());
        ASSERT_TRUE(waitUntil([&] { return tray->items.size() == 7; })) << "start " << start;
        QStringList wanted = tray->items;
        std::sort(wanted.begin(), wanted.end(), [](const QString& one, const QString& other) {
            return one.section(u'-', -1).toInt() < other.section(u'-', -1).toInt();
        });
        EXPECT_EQ(tray->items, wanted);
        for (const QString& name : wanted) {
            EXPECT_TRUE(onBus(name));
        }
        tray.reset();
        ASSERT_TRUE(waitUntil([&] { return !bar->hasWatcher(); }));
    }
}

// A tray that owns its name before it can answer: registrations fail, and each cause is said once.
TEST_F(TrayBarTests, AsksAgainWhenTheTrayIsNotReady) {
    tray = std::make_unique<FakeTray>(bus.address(), true, false);
    testing::internal::CaptureStderr();
    bar = makeBar();
    item = bar->makeItem(u"vostel.cpu"_s);
    item->setImages(pair(0));
    QElapsedTimer waited;
    waited.start();
    waitUntil([&] { return waited.hasExpired(2000); });  // tried at once and after a second
    tray->startAnswering();
    EXPECT_TRUE(waitUntil([&] { return tray->items.size() == 1; }));
    const QString said = QString::fromStdString(testing::internal::GetCapturedStderr());
    EXPECT_EQ(said.count(u"does not take vostel.cpu"_s), 1) << said.toStdString();
}

// Catches a connection that stays dead, an item that is given up, and a bar that asks the dead bus
// for the host and the colour scheme.
TEST_F(TrayBarTests, ReturnsWithABusThatWasRestarted) {
    nameHost("waybar\n");
    bar = makeBar();
    std::vector<std::unique_ptr<StatusItem>> items;
    for (int i = 0; i < 3; ++i) {
        items.push_back(bar->makeItem(u"vostel.%1"_s.arg(i)));
        items.back()->setImages(pair(0));
    }
    testing::internal::CaptureStderr();
    for (int round = 0; round < 2; ++round) {
        const char* process = round == 0 ? "waybar\n" : "plasmashell\n";
        nameHost(process);
        tray = std::make_unique<FakeTray>(bus.address());
        ASSERT_TRUE(waitUntil([&] { return tray->items.size() == 3; })) << round;
        for (const QString& name : tray->items) {
            EXPECT_TRUE(onBus(name));
        }
        EXPECT_TRUE(waitUntil([&] {
            return items[0]->wantedImages()[0].shape ==
                   (round == 0 ? ImageShape::Wide : ImageShape::Square);
        }));
        tray->countSignals();
        items[0]->setImages(pair(round + 1));
        EXPECT_TRUE(waitUntil([&] { return tray->count(u"NewIcon"_s) == 1; }));
        tray.reset();
        bus.kill();
        QElapsedTimer waited;
        waited.start();
        waitUntil([&] { return waited.hasExpired(1500); });  // some attempts fail
        bus.start();
    }
    const QString said = QString::fromStdString(testing::internal::GetCapturedStderr());
    EXPECT_EQ(said.count(u"message bus is gone"_s), 2) << said.toStdString();
    EXPECT_EQ(said.count(u'\n'), 2 + said.count(u"No tray is running"_s)) << said.toStdString();
}

// Hosts drop an item only when its name leaves the bus.
TEST_F(TrayBarTests, LeavesTheBusWhenHiddenOrDeleted) {
    showItem();
    const QString name = tray->items.at(0);
    item->setImages({StatusImage(), StatusImage()});
    EXPECT_TRUE(waitUntil([&] { return !onBus(name); }));
    item->setImages(pair(1));
    EXPECT_TRUE(waitUntil([&] { return tray->items.size() == 2; }));
    EXPECT_EQ(tray->items.last(), name);
    item.reset();
    EXPECT_TRUE(waitUntil([&] { return !onBus(name); }));
}

TEST(UpdateLimitTests, LetsOneUpdateThroughInEachInterval) {
    UpdateLimit limit(0.25);
    EXPECT_EQ(limit.wait(5.0), 0.0);
    limit.noteUpdate(5.0);
    EXPECT_DOUBLE_EQ(limit.wait(5.0), 0.25);
    EXPECT_DOUBLE_EQ(limit.wait(5.125), 0.125);
    EXPECT_EQ(limit.wait(5.25), 0.0);
    EXPECT_EQ(limit.wait(1e9), 0.0);
    EXPECT_EQ(limit.wait(-1e9), 0.25);  // never longer, whatever the clock says
}

TEST_F(TrayBarTests, SendsOnlyChangesAndNeverLosesTheLastOne) {
    showItem();
    for (int i = 0; i < 5; ++i) {
        item->setImages(pair(0));  // what is shown already
        item->setToolTip(u"CPU usage"_s, u"CPU 12 %"_s);
    }
    for (int step = 1; step <= 40; ++step) {
        item->setImages(pair(step));
        item->setToolTip(u"CPU usage"_s, u"CPU %1 <%"_s.arg(step));
    }
    ASSERT_TRUE(waitUntil([&] { return tray->count(u"NewToolTip"_s) == 2; }));
    EXPECT_EQ(tray->count(u"NewIcon"_s), 2);  // the first of them at once, the last one when due
    EXPECT_EQ(tray->count(u"NewTitle"_s), 0);
    EXPECT_EQ(shownPixmaps().value(0).bytes.right(4).toHex(), QByteArray("00000000"));
    EXPECT_EQ(shownPixmaps().value(0).bytes.mid(16, 4).toHex(), QByteArray("ff28d700"));
    const auto tip = qdbus_cast<TrayToolTip>(tray->property(u"ToolTip"_s));
    EXPECT_EQ(tip.title, u"CPU usage"_s);
    EXPECT_EQ(tip.text, u"CPU 40 &lt;%"_s);  // hosts read markup

    // Changed, and back before it was due: nothing is sent.
    item->setImages(pair(41));
    item->setImages(pair(42));
    item->setImages(pair(41));
    item->setToolTip(u"Processor"_s, {});
    ASSERT_TRUE(waitUntil([&] { return tray->count(u"NewTitle"_s) == 1; }));
    EXPECT_EQ(tray->count(u"NewIcon"_s), 3);
}

TEST_F(TrayBarTests, TurnsCallsOfTheHostIntoClicks) {
    showItem();
    std::vector<StatusItemClick> clicks;
    QObject::connect(item.get(), &StatusItem::clicked,
                     [&](const StatusItemClick& click) { clicks.push_back(click); });
    const QPoint inside(5, 6);
    struct Row {
        const char* method;
        QPoint sent;
        Qt::MouseButton button;
        QPoint expected;
    };
    const Row rows[] = {
        {"Activate", inside, Qt::LeftButton, inside},
        {"ContextMenu", inside, Qt::RightButton, inside},
        {"SecondaryActivate", inside, Qt::MiddleButton, inside},
        {"Activate", {0, 0}, Qt::LeftButton, QCursor::pos()},  // the host does not know where
        {"Activate", {-70000, 2000000000}, Qt::LeftButton, QCursor::pos()},
    };
    for (const Row& row : rows) {
        clicks.clear();
        tray->call(itemInterface, QString::fromLatin1(row.method), {row.sent.x(), row.sent.y()});
        ASSERT_EQ(clicks.size(), 1U) << row.method;
        EXPECT_EQ(clicks[0].button, row.button) << row.method;
        EXPECT_EQ(clicks[0].globalPosition, row.expected) << row.method;
    }
    clicks.clear();
    const QString properties = u"org.freedesktop.DBus.Properties"_s;
    tray->call(itemInterface, u"Scroll"_s, {120, u"vertical"_s});
    tray->call(itemInterface, u"Activate"_s, {u"here"_s});
    tray->call(itemInterface, u"Activate"_s);
    tray->call(itemInterface, u"Explode"_s, {1, 2});
    tray->call(properties, u"Get"_s, {itemInterface, u"Nothing"_s});
    tray->call(properties, u"Set"_s,
               {itemInterface, u"Title"_s, QVariant::fromValue(QDBusVariant(u"x"_s))});
    EXPECT_TRUE(clicks.empty());
    EXPECT_EQ(tray->property(u"Title"_s).toString(), u"CPU usage"_s);
}

TEST_F(TrayBarTests, AsksForTheShapeThatTheHostKeeps) {
    nameHost("waybar\n");
    showItem();
    const auto shape = [&] { return item->wantedImages().at(0).shape; };
    EXPECT_TRUE(waitUntil([&] { return shape() == ImageShape::Wide; }));
    EXPECT_EQ(item->wantedImages().at(1).scale, 2.0);
    int wanted = 0;
    QObject::connect(item.get(), &StatusItem::imagesWanted, [&] { ++wanted; });
    tray.reset();
    ASSERT_TRUE(waitUntil([&] { return !bar->hasWatcher(); }));
    EXPECT_EQ(shape(), ImageShape::Wide);  // kept until another host is there
    for (const char* process : {"plasmashell\n", "waybar", "", ".waybar-wrapped\n"}) {
        const bool wide = std::string(process).find("waybar") != std::string::npos;
        nameHost(process);
        tray = std::make_unique<FakeTray>(bus.address(), wide);
        EXPECT_TRUE(waitUntil([&] { return (shape() == ImageShape::Wide) == wide; })) << process;
        tray.reset();
        ASSERT_TRUE(waitUntil([&] { return !bar->hasWatcher(); }));
    }
    EXPECT_EQ(wanted, 4);
}

// Some panels open a menu of their own on a right click and report nothing: without one the right
// button would be lost there; with one it would be lost everywhere else.
TEST_F(TrayBarTests, OffersAMenuOnlyToHostsThatNeedOne) {
    nameHost("panel-12-systra\n");
    showItem();
    const QString menuInterface = u"com.canonical.dbusmenu"_s;
    QString path;
    ASSERT_TRUE(waitUntil([&] {
        path = tray->property(u"Menu"_s).value<QDBusObjectPath>().path();
        return !path.isEmpty();
    }));
    const QVariantList answer =
        tray->call(menuInterface, u"GetLayout"_s, {0, -1, QStringList()}, path).arguments();
    ASSERT_EQ(answer.size(), 2);
    EXPECT_EQ(answer[1].value<QDBusArgument>().currentSignature(), u"(ia{sv}av)"_s);
    const auto root = qdbus_cast<TrayMenuLayout>(answer[1]);
    ASSERT_EQ(root.children.size(), 2);
    std::vector<Qt::MouseButton> clicks;
    QObject::connect(item.get(), &StatusItem::clicked,
                     [&](const StatusItemClick& click) { clicks.push_back(click.button); });
    const auto event = [&](int id, const QString& type) {
        const QVariant nothing = QVariant::fromValue(QDBusVariant(0));
        tray->call(menuInterface, u"Event"_s, {id, type, nothing, 0U}, path);
    };
    for (const QDBusVariant& child : root.children) {
        const auto entry = qdbus_cast<TrayMenuLayout>(child.variant());
        EXPECT_FALSE(entry.properties.value(u"label"_s).toString().isEmpty());
        event(entry.id, u"hovered"_s);
        event(entry.id, u"clicked"_s);
    }
    event(0, u"clicked"_s);
    event(-5, u"clicked"_s);
    EXPECT_EQ(clicks, (std::vector{Qt::LeftButton, Qt::RightButton}));
    // Panels gather their events; one unknown entry must not lose the others.
    const TrayMenuEvent known{2, u"clicked"_s, QDBusVariant(0), 0};
    TrayMenuEvent unknown = known;
    unknown.id = 77;
    const QDBusMessage group =
        tray->call(menuInterface, u"EventGroup"_s,
                   {QVariant::fromValue(QList<TrayMenuEvent>{unknown, known})}, path);
    EXPECT_EQ(qdbus_cast<QList<int>>(group.arguments().value(0)), QList<int>{77});
    EXPECT_EQ(clicks.size(), 3U);

    tray.reset();
    nameHost("waybar\n");
    tray = std::make_unique<FakeTray>(bus.address());
    EXPECT_TRUE(waitUntil([&] {
        return !bar->needsMenu() && !tray->items.isEmpty() && onBus(tray->items[0]) &&
               tray->property(u"Id"_s).isValid();
    }));
    EXPECT_FALSE(tray->property(u"Menu"_s).isValid());
}

// The settings portal, as a desktop's session offers it.
class FakePortal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

  public Q_SLOTS:
    QDBusVariant Read(const QString& group, const QString& key) {
        const bool known = group == u"org.freedesktop.appearance"_s && key == u"color-scheme"_s;
        return QDBusVariant(QVariant::fromValue(QDBusVariant(known ? 2U : 0U)));
    }

  Q_SIGNALS:
    void SettingChanged(const QString& group, const QString& key, const QDBusVariant& value);
};

TEST_F(TrayBarTests, FollowsTheColourSchemeOfTheDesktop) {
    bar = makeBar({});
    item = bar->makeItem(u"vostel.cpu"_s);
    const auto appearance = [&] { return item->wantedImages().at(0).appearance; };
    EXPECT_EQ(appearance(), Appearance::Dark);  // nobody says anything
    QDBusConnection session = openBus(bus.address());
    FakePortal portal;
    session.registerObject(u"/org/freedesktop/portal/desktop"_s, &portal,
                           QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
    session.registerService(u"org.freedesktop.portal.Desktop"_s);
    EXPECT_TRUE(waitUntil([&] { return appearance() == Appearance::Light; }));
    const QString group = u"org.freedesktop.appearance"_s;
    Q_EMIT portal.SettingChanged(group, u"contrast"_s, QDBusVariant(1U));
    Q_EMIT portal.SettingChanged(group, u"color-scheme"_s, QDBusVariant(1U));
    EXPECT_TRUE(waitUntil([&] { return appearance() == Appearance::Dark; }));
    QDBusConnection::disconnectFromBus(session.name());
}

TEST_F(TrayBarTests, ProbeTellsWhatTheSessionOffers) {
    const TrayProbeOptions here{bus.address(), proc.path().toStdString()};
    // Long enough for a loaded machine; what is tested is the answer.
    const auto probe = [](const TrayProbeOptions& options) {
        return probeTray(options, std::chrono::seconds(20));
    };
    nameHost("waybar\n");
    EXPECT_FALSE(probe({proc.filePath(u"nobody"_s).prepend(u"unix:path="_s), {}}).bus);
    TrayHost found = probe(here);
    EXPECT_TRUE(found.bus);
    EXPECT_FALSE(found.watcher);
    {
        const FakeTray stuck(bus.address(), false);  // its thread is this one: it never answers
        found = probe(here);
        EXPECT_TRUE(found.watcher);
        EXPECT_FALSE(found.host);
    }
    const FakeTray live(bus.address());
    found = probe(here);
    EXPECT_TRUE(found.watcher && found.host && found.keepsWideImages);
    std::optional<TrayHost> answer;
    probeTray(here, qApp, [&](const TrayHost& host) { answer = host; });
    EXPECT_TRUE(waitUntil([&] { return answer.has_value(); }));
    EXPECT_EQ(answer->processes, QStringList(u"waybar"_s));
}

TEST(TrayBarWithoutBus, SaysSo) {
    const QTemporaryDir runtime;
    const QByteArray before = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    const QByteArray runtimeBefore = qgetenv("XDG_RUNTIME_DIR");
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    qputenv("XDG_RUNTIME_DIR", runtime.path().toLocal8Bit());
    for (const char* address : {"", "unix:path=/nowhere/bus", "nonsense", "unix:"}) {
        QString error;
        TrayBarOptions options;
        options.busAddress = QString::fromLatin1(address);
        EXPECT_EQ(TrayBar::make(options, &error), nullptr) << address;
        EXPECT_NE(error, QString()) << address;
    }
    EXPECT_FALSE(probeTray({}).bus);
    QFile(runtime.filePath(u"bus"_s)).open(QIODevice::WriteOnly);
    EXPECT_EQ(sessionBusAddress(), u"unix:path="_s + runtime.filePath(u"bus"_s));
    ASSERT_EQ(chmod(runtime.path().toLocal8Bit().constData(), 0777), 0);
    EXPECT_EQ(sessionBusAddress(), QString()) << "anybody's bus";
    qputenv("DBUS_SESSION_BUS_ADDRESS", before);
    qputenv("XDG_RUNTIME_DIR", runtimeBefore);
}

}  // namespace
}  // namespace vostel

#include "TrayBarTests.moc"
