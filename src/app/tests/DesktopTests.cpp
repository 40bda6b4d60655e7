// The real program on a real X server with a window manager, worked with the pointer.

#include <gtest/gtest.h>
#include <signal.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include "app/ModuleTable.h"
#include "app/tests/Program.h"
#include "core/DefaultsStore.h"
#include "core/PropertyList.h"
#include "statusbar/tests/PrivateBus.h"
#include "statusbar/tests/XServer.h"

namespace vostel {
namespace {

constexpr int screenWidth = 1280;
constexpr int screenHeight = 800;
constexpr int barHeight = 22;
// On the last item, whatever it is: items stand at the right end of the bar.
const QPoint lastItem(screenWidth - 12, barHeight / 2);
const QPoint elsewhere(200, 700);

XServer* server = nullptr;

bool until(const std::function<bool()>& condition) {
    return XServer::until(condition);
}

QString tool(const QStringList& arguments) {
    return XServer::run(QStringLiteral("xdotool"), arguments);
}

void click(const QPoint& at, int button = 1) {
    tool({QStringLiteral("mousemove"), QString::number(at.x()), QString::number(at.y()),
          QStringLiteral("click"), QString::number(button)});
}

// Every visible window of the program but the bar, with its place.
std::map<QString, QRect> windows() {
    std::map<QString, QRect> found;
    // Names of windows come and go; only what is asked in one go can be trusted.
    const QString text =
        tool({QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--class"),
              QStringLiteral("vostel"), QStringLiteral("getwindowgeometry"),
              QStringLiteral("--shell"), QStringLiteral("%@")});
    QString id;
    QRect place;
    for (const QString& line : text.split(u'\n')) {
        const QString name = line.section(u'=', 0, 0);
        const int value = line.section(u'=', 1).toInt();
        if (name == QStringLiteral("WINDOW")) {
            id = line.section(u'=', 1);
        } else if (name == QStringLiteral("X")) {
            place.moveLeft(value);
        } else if (name == QStringLiteral("Y")) {
            place.moveTop(value);
        } else if (name == QStringLiteral("WIDTH")) {
            place.setWidth(value);
        } else if (name == QStringLiteral("HEIGHT")) {
            place.setHeight(value);
            if (place.height() > barHeight) {
                found[id] = place;
            }
        }
    }
    return found;
}

// The place of the window that `action` opens; empty when none appears.
QRect opened(const std::function<void()>& action) {
    const auto before = windows();
    QRect place;
    action();
    until([&] {
        for (const auto& [id, rect] : windows()) {
            if (!before.contains(id)) {
                place = rect;
            }
        }
        return !place.isNull();
    });
    return place;
}

QImage bar() {
    return server->grab(QRect(0, 0, screenWidth, barHeight));
}

// How much of the bar's right end the items take, in pixels; 0 while there is no bar.
int itemsWidth() {
    const QImage image = bar();
    for (int x = 0; x < screenWidth; ++x) {
        for (int y = 0; y < barHeight; ++y) {
            if (image.pixel(x, y) != image.pixel(0, y)) {
                return screenWidth - x;
            }
        }
    }
    return 0;
}

// What is drawn on the bar, as runs of columns at least `gap` pixels apart.
std::vector<QRect> blocks(int gap) {
    const QImage image = bar();
    std::vector<QRect> runs;
    for (int x = 0; x < screenWidth; ++x) {
        for (int y = 0; y < barHeight; ++y) {
            if (image.pixel(x, y) == image.pixel(0, y)) {
                continue;
            }
            if (runs.empty() || x - runs.back().right() > gap) {
                runs.emplace_back(x, 0, 1, barHeight);
            }
            runs.back().setRight(x);
            break;
        }
    }
    return runs;
}

bool hasBar() {
    return bar().pixelColor(0, 5) != QColor(Qt::black) && itemsWidth() > 0;
}

// Items come into the bar as they have measured: all are there when none came for a while.
bool hasAllItems() {
    static int width = 0;
    static QElapsedTimer since;
    const int now = hasBar() ? itemsWidth() : 0;
    if (now != width || !since.isValid()) {
        width = now;
        since.start();
    }
    return now > 0 && since.hasExpired(500);
}

// All it complained about; that no tray is there is expected.
std::string errors(Program& program) {
    QStringList lines = program.errors();
    lines.removeIf(
        [](const QString& line) { return line.contains(QStringLiteral("No tray is running")); });
    return lines.join(u'\n').toStdString();
}

// Whether the running program answers within a second.
bool call(const QString& method) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    const QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("com.vostel.app"), QStringLiteral("/com/vostel/app"),
        QStringLiteral("com.vostel.App"), method);
    return bus.call(message, QDBus::Block, 1000).type() == QDBusMessage::ReplyMessage;
}

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("<none>");
}

struct Desktop : testing::Test {
    Home home;

    std::unique_ptr<Program> start(const char* kind = "--bar=dock") {
        return std::make_unique<Program>(home, QStringList{QString::fromLatin1(kind)});
    }
    void expectCleanEnd(Program& program, int signal = SIGTERM) {
        EXPECT_EQ(program.stop(signal), 0);
        EXPECT_EQ(errors(program), "");
        EXPECT_EQ(home.leftovers(), QStringList());
    }
    // Through the menu of the last item: Modules, and there the row.
    static void clickModuleRow(qsizetype row) {
        const QRect menu = opened([] { click(lastItem, 3); });
        ASSERT_FALSE(menu.isNull());
        const QRect modules = opened([&] { click(menu.center()); });
        ASSERT_FALSE(modules.isNull());
        const int rows = static_cast<int>(moduleIds().size());
        click(QPoint(
            modules.center().x(),
            modules.top() + modules.height() * (2 * static_cast<int>(row) + 1) / (2 * rows)));
    }
    // The row of the settings window's page that a search for these words finds: it is marked until
    // there is one letter too many.
    static QRect foundRow(const QRect& window, const QString& words) {
        constexpr int sidebar = 240;
        const QRect page = window.adjusted(sidebar, 0, 0, 0);
        const QImage plain = server->grab(page);
        QImage marked;
        QRect row;
        tool({QStringLiteral("key"), QStringLiteral("ctrl+f")});
        tool({QStringLiteral("type"), words});
        until([&] {
            const QImage now = server->grab(page);
            const bool settled = now != plain && now == marked;
            marked = now;
            return settled;
        });
        tool({QStringLiteral("type"), QStringLiteral("q")});
        until([&] {
            const QImage now = server->grab(page);
            for (int y = 0; y < now.height(); ++y) {
                for (int x = 0; x < now.width(); ++x) {
                    if (now.pixel(x, y) != marked.pixel(x, y)) {
                        row |= QRect(page.topLeft() + QPoint(x, y), QSize(1, 1));
                    }
                }
            }
            return !row.isNull();
        });
        return row;
    }
    void toggle(qsizetype row) {
        const QString key = QStringLiteral("module.%1.enabled").arg(moduleIds()[row]);
        const bool before = home.isOnDisk(key);
        ASSERT_NO_FATAL_FAILURE(clickModuleRow(row));
        EXPECT_TRUE(until([&] { return home.isOnDisk(key) != before; })) << key.toStdString();
        EXPECT_TRUE(until([] { return windows().empty(); }));
    }
};

}  // namespace

TEST_F(Desktop, EveryItemGoesOffAndOnTwice) {
    home.seed(moduleIds());
    auto program = start();
    ASSERT_TRUE(until(hasAllItems));
    for (int round = 0; round < 2; ++round) {
        for (qsizetype row = 0; row < moduleIds().size(); ++row) {
            for (int change = 0; change < 2; ++change) {
                ASSERT_NO_FATAL_FAILURE(toggle(row));
                ASSERT_TRUE(until(hasAllItems));
            }
        }
    }
    ASSERT_TRUE(program->isRunning());
    expectCleanEnd(*program);
}

TEST_F(Desktop, EveryPopoverOpensAndClosesByClicks) {
    const std::function<void()> closings[] = {
        [] { click(lastItem); },
        [] { click(elsewhere); },
        [] { tool({QStringLiteral("key"), QStringLiteral("Escape")}); },
    };
    for (const QString& id : moduleIds()) {
        home.seed({id});
        auto program = start();
        ASSERT_TRUE(until(hasAllItems)) << id.toStdString();
        for (const auto& close : closings) {
            const QRect popover = opened([] { click(lastItem); });
            ASSERT_FALSE(popover.isNull()) << id.toStdString() << " before " << &close - closings;
            EXPECT_TRUE(QRect(0, 0, screenWidth, screenHeight).contains(popover))
                << id.toStdString();
            EXPECT_GT(popover.width(), 150);
            close();
            EXPECT_TRUE(until([] { return windows().empty(); })) << id.toStdString();
        }
        // And with one open, the end is as clean.
        EXPECT_FALSE(opened([] { click(lastItem); }).isNull());
        expectCleanEnd(*program);
        EXPECT_TRUE(until([] { return !hasBar(); }));
    }
}

TEST_F(Desktop, OneClickGoesFromPopoverToPopover) {
    home.seed(moduleIds());
    auto program = start();
    ASSERT_TRUE(until(hasAllItems));
    const QPoint firstItem(screenWidth - itemsWidth() + 3, barHeight / 2);
    const QRect last = opened([] { click(lastItem); });
    ASSERT_FALSE(last.isNull());
    const auto shown = windows();
    click(firstItem);
    EXPECT_TRUE(until([&] { return windows().size() == 1 && windows() != shown; }));
    click(firstItem);
    EXPECT_TRUE(until([] { return windows().empty(); }));
    expectCleanEnd(*program);
}

// Catches clicks that are measured from the wrong edge, and a second click that opens again what
// its press had closed.
TEST_F(Desktop, EverySegmentOfTheCombinedItemOpensItsOwnPopover) {
    constexpr int spacing = 40;  // more than any gap within a segment
    home.seed({QStringLiteral("combined")});
    DefaultsStore(home.settingsFile(), nullptr)
        .set(QStringLiteral("combined.spacing"), 1.0 * spacing);
    auto program = start();
    const auto segments = [] { return blocks(spacing - 5); };
    ASSERT_TRUE(until([&] { return segments().size() == 4; }));
    const std::vector<QRect> parts = segments();
    const auto between = [&](int left) {
        return (parts[left].right() + parts[left + 1].left()) / 2;
    };
    const struct {
        int x;
        const char* title;
    } rows[] = {
        {parts[0].center().x(), "Memory"}, {parts[1].center().x(), "GPU"},
        {parts[2].center().x(), "CPU"},    {parts[3].center().x(), "Network"},
        {parts[0].left() - 3, "Memory"},   {between(0), "Network"},
        {between(1), "Network"},           {between(2), "Network"},
        {parts[3].right() + 3, "Network"},
    };
    for (const auto& row : rows) {
        const QRect place = opened([&] { click({row.x, barHeight / 2}); });
        ASSERT_FALSE(place.isNull()) << row.x;
        ASSERT_EQ(windows().size(), 1U);
        EXPECT_EQ(tool({QStringLiteral("getwindowname"), windows().begin()->first}).trimmed(),
                  QLatin1String(row.title))
            << row.x;
        if (QLatin1String(row.title) == QStringLiteral("Memory")) {  // far enough from the edge
            EXPECT_NEAR(place.center().x(), parts[0].center().x(), 3);
        }
        // A second click closes, wherever on the item it is, and opens nothing.
        click({(row.x + 150 - parts[0].left()) % 250 + parts[0].left(), barHeight / 2});
        EXPECT_TRUE(until([] { return windows().empty(); })) << row.x;
        QElapsedTimer later;
        later.start();
        until([&] { return later.hasExpired(300); });
        EXPECT_TRUE(windows().empty()) << row.x;
    }
    EXPECT_FALSE(opened([&] { click(parts[0].center()); }).isNull());
    expectCleanEnd(*program);
}

TEST_F(Desktop, WithoutASessionBusNoneIsStarted) {
    home.seed(moduleIds());
    Program program(home, {QStringLiteral("--bar=dock")},
                    {{QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), {}}});
    ASSERT_TRUE(until(hasAllItems));
    ASSERT_FALSE(opened([] { click(lastItem); }).isNull());
    EXPECT_EQ(program.stop(SIGTERM), 0);
    EXPECT_EQ(program.errors().size(), 1) << errors(program);  // that there is none
    EXPECT_EQ(home.leftovers(), QStringList());
}

// A bus that hangs must not hang the end of the session.
TEST_F(Desktop, EndsWhenTheBusIsFrozen) {
    home.seed(moduleIds());
    for (const char* kind : {"--bar=dock", "--bar=tray"}) {
        PrivateBus frozen;
        Program program(home, {QString::fromLatin1(kind)},
                        {{QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), frozen.address()}});
        const QString bus = frozen.address();
        ASSERT_TRUE(until([&] {
            QDBusConnection connection =
                QDBusConnection::connectToBus(bus, QStringLiteral("frozen"));
            const bool there =
                connection.interface()->isServiceRegistered(QStringLiteral("com.vostel.app"));
            QDBusConnection::disconnectFromBus(QStringLiteral("frozen"));
            return there;
        }));
        QElapsedTimer sinceStart;
        sinceStart.start();
        until([&] { return sinceStart.hasExpired(1000); });  // every item has its connection
        frozen.freeze();
        EXPECT_EQ(program.stop(SIGTERM), 0) << kind;
        EXPECT_EQ(home.leftovers(), QStringList());
    }
    PrivateBus frozen;
    frozen.freeze();  // before the start, which then goes on without a bus
    Program program(home, {QStringLiteral("--bar=dock")},
                    {{QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), frozen.address()}});
    ASSERT_TRUE(until(hasAllItems));
    EXPECT_FALSE(opened([] { click(lastItem); }).isNull());
    EXPECT_EQ(program.stop(SIGTERM), 0);
}

TEST_F(Desktop, QuitInTheMenuEndsItAndKeepsTheLastChange) {
    home.seed(moduleIds());
    auto program = start();
    ASSERT_TRUE(until(hasAllItems));
    ASSERT_NO_FATAL_FAILURE(clickModuleRow(0));
    ASSERT_TRUE(until([] { return windows().empty(); }));
    // At once: the change still waits for others to be written with it.
    const QRect menu = opened([] { click(lastItem, 3); });
    ASSERT_FALSE(menu.isNull());
    click(QPoint(menu.center().x(), menu.bottom() - 8));
    EXPECT_EQ(program->wait(), 0);
    EXPECT_EQ(errors(*program), "");
    for (const QString& id : moduleIds()) {
        EXPECT_EQ(home.isOnDisk(QStringLiteral("module.%1.enabled").arg(id)),
                  id != moduleIds().front())
            << id.toStdString();
    }
}

TEST_F(Desktop, TheFirstRunOpensTheSettingsWindow) {
    auto program = start();
    ASSERT_TRUE(until(hasAllItems));
    ASSERT_TRUE(until([] { return windows().size() == 1; }));
    EXPECT_EQ(tool({QStringLiteral("getwindowname"), windows().begin()->first}).trimmed(),
              QStringLiteral("Vostel Settings"));
    expectCleanEnd(*program);
    EXPECT_TRUE(home.isOnDisk(QStringLiteral("app.hasLaunched")));
    EXPECT_TRUE(home.isOnDisk(QStringLiteral("module.cpu.enabled")));
    program = start();
    ASSERT_TRUE(until(hasAllItems));
    // It would have opened before this popover.
    EXPECT_FALSE(opened([] { click(lastItem); }).isNull());
    EXPECT_EQ(windows().size(), 1U) << "no first run any more";
    expectCleanEnd(*program);
}

// Catches an entry that is missing, that stays, that stands beside the settings window, or that
// leads nowhere.
TEST_F(Desktop, TheTaskbarEntryIsThereWhileItIsWantedAndNoWindowIs) {
    home.seed(moduleIds());
    const auto property = [](const QStringList& window, const char* name) {
        return XServer::run(QStringLiteral("xprop"), window + QStringList{QLatin1String(name)});
    };
    // The minimised ones among the windows that a taskbar is told of.
    const auto entries = [&] {
        QStringList found = property({QStringLiteral("-root")}, "_NET_CLIENT_LIST")
                                .section(u'#', 1)
                                .split(u',', Qt::SkipEmptyParts);
        found.removeIf([&](const QString& id) {
            return !property({QStringLiteral("-id"), id.trimmed()}, "_NET_WM_STATE")
                        .contains(QStringLiteral("_NET_WM_STATE_HIDDEN"));
        });
        return found;
    };
    const auto toggle = [&](const QRect& window) {
        const bool before = home.isOnDisk(QStringLiteral("app.showDock"));
        const QRect row = foundRow(window, QStringLiteral("dock icon"));
        ASSERT_FALSE(row.isNull());
        tool({QStringLiteral("key"), QStringLiteral("Escape")});  // ends the search
        click(QPoint(row.right() - 20, row.center().y()));
        EXPECT_TRUE(until([&] { return home.isOnDisk(QStringLiteral("app.showDock")) != before; }));
    };
    const auto close = [] {
        tool({QStringLiteral("key"), QStringLiteral("Escape")});
        EXPECT_TRUE(until([] { return windows().empty(); }));
    };
    auto program = start();
    ASSERT_TRUE(until(hasAllItems));
    QRect window = opened([this] { start()->wait(); });
    ASSERT_FALSE(window.isNull());
    EXPECT_EQ(entries(), QStringList());
    ASSERT_NO_FATAL_FAILURE(toggle(window));
    EXPECT_EQ(entries(), QStringList()) << "the window is the entry";
    close();
    ASSERT_TRUE(until([&] { return entries().size() == 1; }));
    expectCleanEnd(*program);

    program = start();
    ASSERT_TRUE(until([&] { return hasBar() && entries().size() == 1; })) << "at the start";
    window = opened([&] { tool({QStringLiteral("windowactivate"), entries().front().trimmed()}); });
    ASSERT_FALSE(window.isNull());
    EXPECT_EQ(tool({QStringLiteral("getwindowname"), windows().begin()->first}).trimmed(),
              QStringLiteral("Vostel Settings"));
    EXPECT_TRUE(until([&] { return entries().isEmpty(); }));
    ASSERT_NO_FATAL_FAILURE(toggle(window));
    close();
    EXPECT_FALSE(opened([] { click(lastItem); }).isNull());  // an entry would be there by now
    EXPECT_EQ(entries(), QStringList());
    expectCleanEnd(*program);
}

TEST_F(Desktop, DraggedOrderSurvivesARestart) {
    ASSERT_GE(moduleIds().size(), 2);
    const QStringList two = moduleIds().mid(0, 2);
    home.seed(two);
    // The first row of its menu tells which item stands last.
    const auto nameOfLast = [] {
        const QRect menu = opened([] { click(lastItem, 3); });
        const QImage name =
            server->grab(QRect(menu.topLeft(), QSize(menu.width(), menu.height() / 4)));
        tool({QStringLiteral("key"), QStringLiteral("Escape")});
        until([] { return windows().empty(); });
        return name;
    };
    QImage dragged;
    {
        auto program = start();
        ASSERT_TRUE(until(hasAllItems));
        const QImage before = nameOfLast();
        const int width = itemsWidth();
        tool(QStringLiteral("mousemove %1 11 keydown ctrl mousedown 1 mousemove_relative -- -10 0")
                 .arg(lastItem.x())
                 .split(u' '));
        tool(QStringLiteral("mousemove_relative -- -%1 0 mouseup 1 keyup ctrl")
                 .arg(width)
                 .split(u' '));
        EXPECT_TRUE(until([&] { return nameOfLast() != before; }));
        dragged = nameOfLast();
        expectCleanEnd(*program);
    }
    auto program = start();
    ASSERT_TRUE(until(hasAllItems));
    // Items come in as they have measured.
    EXPECT_TRUE(until([&] { return nameOfLast() == dragged; }));
    expectCleanEnd(*program, SIGINT);
}

TEST_F(Desktop, ChangeJustBeforeTheXServerDiesIsKept) {
    home.seed(moduleIds());
    const QByteArray display = qgetenv("DISPLAY");
    XServer* const lasting = server;
    auto doomed = std::make_unique<XServer>(screenWidth, screenHeight, 24);
    server = doomed.get();
    auto program = start();
    ASSERT_TRUE(until(hasAllItems));
    const int width = itemsWidth();
    clickModuleRow(0);
    EXPECT_TRUE(until([&] { return itemsWidth() != width; }));
    server = lasting;
    doomed.reset();
    qputenv("DISPLAY", display);
    EXPECT_GE(program->wait(), 0);
    EXPECT_TRUE(home.isOnDisk(QStringLiteral("app.hasLaunched")));
    EXPECT_FALSE(home.isOnDisk(QStringLiteral("module.%1.enabled").arg(moduleIds()[0])));
    EXPECT_EQ(home.leftovers(), QStringList());
}

// A server that stands still: the program goes on without it, and ends when it is told to, also
// when its main thread waits for the server; what was changed just before is kept.
TEST_F(Desktop, EndsWhenTheXServerIsFrozen) {
    const QByteArray display = qgetenv("DISPLAY");
    XServer* const lasting = server;
    for (const bool hangs : {true, false}) {
        for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
            home.seed(moduleIds());
            auto frozen = std::make_unique<XServer>(screenWidth, screenHeight, 24);
            server = frozen.get();
            auto program = start();
            ASSERT_TRUE(until(hasAllItems));
            const int width = itemsWidth();
            clickModuleRow(0);
            EXPECT_TRUE(until([&] { return itemsWidth() != width; }));
            frozen->freeze();
            QElapsedTimer elapsed;
            if (hangs) {
                call(QStringLiteral("ShowSettings"));  // waits for the server
            } else {
                elapsed.start();
                until([&] {
                    return elapsed.hasExpired(6000);
                });  // time to fill what buffers there are
                EXPECT_TRUE(waitUntil([] { return call(QStringLiteral("ExportSettings")); }));
            }
            elapsed.start();
            EXPECT_EQ(program->stop(signal), 0) << hangs << " " << signal;
            EXPECT_LT(elapsed.elapsed(), 3000) << hangs << " " << signal;
            EXPECT_FALSE(home.isOnDisk(QStringLiteral("module.%1.enabled").arg(moduleIds()[0])));
            EXPECT_EQ(home.leftovers(), QStringList());
            frozen->thaw();
            server = lasting;
            frozen.reset();
            qputenv("DISPLAY", display);
        }
    }
}

TEST_F(Desktop, ExportAndImportThroughTheSettingsWindow) {
    home.seed(moduleIds());
    const Home other;
    other.seed({moduleIds().front()});
    const QByteArray imported = contents(other.settingsFile());
    auto program = start();
    ASSERT_TRUE(until(hasAllItems));
    const qint64 id = program->id();
    const int before = itemsWidth();
    const QRect window = opened([this] { start()->wait(); });
    ASSERT_FALSE(window.isNull());
    const auto buttonOf = [&](const QString& title) {
        const QRect row = foundRow(window, title);
        EXPECT_FALSE(row.isNull()) << title.toStdString();
        tool({QStringLiteral("key"), QStringLiteral("Escape")});  // ends the search
        return QPoint(row.right() - 60, row.center().y());
    };
    // The suggested name, in the user's home.
    const QString exported =
        QFileInfo(home.runtimeFolder()).path() + QStringLiteral("/vostel-settings.plist");
    const QPoint exporting = buttonOf(QStringLiteral("export"));
    ASSERT_FALSE(opened([&] { click(exporting); }).isNull());
    tool({QStringLiteral("key"), QStringLiteral("Return")});
    ASSERT_TRUE(until([&] { return QFile::exists(exported) && windows().size() == 1; }));
    EXPECT_EQ(contents(exported), contents(home.settingsFile()));

    const QPoint button = buttonOf(QStringLiteral("import"));
    // Leaves the settings window and what the choice leads to.
    const auto choose = [&](const QString& path) {
        const QRect panel = opened([&] { click(button); });
        ASSERT_FALSE(panel.isNull());
        tool({QStringLiteral("type"), path});
        tool({QStringLiteral("key"), QStringLiteral("Return")});
        EXPECT_TRUE(until([&] {
            const auto now = windows();
            return now.size() == 2 && std::none_of(now.begin(), now.end(), [&](const auto& each) {
                       return each.second == panel;
                   });
        })) << path.toStdString();
    };
    // An alert, and then the question, of which each answers to the Return key.
    ASSERT_NO_FATAL_FAILURE(choose(QStringLiteral("/dev/zero")));
    tool({QStringLiteral("key"), QStringLiteral("Return")});
    ASSERT_TRUE(until([] { return windows().size() == 1; }));
    EXPECT_TRUE(home.isOnDisk(QStringLiteral("module.%1.enabled").arg(moduleIds().back())));
    ASSERT_NO_FATAL_FAILURE(choose(other.settingsFile()));
    tool({QStringLiteral("key"), QStringLiteral("Return")});
    EXPECT_EQ(program->wait(), 0);
    EXPECT_EQ(errors(*program), "");
    EXPECT_TRUE(until([&] { return hasBar() && itemsWidth() < before; }));
    EXPECT_TRUE(windows().empty());
    const auto running = home.running();
    ASSERT_EQ(running.size(), 1);
    EXPECT_NE(running.front(), id);
    ::kill(static_cast<pid_t>(running.front()), SIGTERM);
    EXPECT_TRUE(until([this] { return home.leftovers().isEmpty(); }));
    EXPECT_EQ(contents(home.settingsFile()), imported);
}

TEST_F(Desktop, ExportHoldsAChangeOfThisMoment) {
    home.seed(moduleIds());
    auto program = start();
    ASSERT_TRUE(until(hasAllItems));
    const int width = itemsWidth();
    ASSERT_NO_FATAL_FAILURE(clickModuleRow(0));
    ASSERT_TRUE(until([&] { return itemsWidth() != width; }));
    Program command(home, {QStringLiteral("export"), QStringLiteral("-")});
    EXPECT_EQ(command.wait(), 0);
    const auto exported = PropertyList::parse(command.output().toUtf8());
    ASSERT_TRUE(exported);
    for (const QString& id : moduleIds()) {
        EXPECT_EQ(exported->boolean(QStringLiteral("module.%1.enabled").arg(id)),
                  id != moduleIds().front());
    }
    expectCleanEnd(*program);
}

TEST_F(Desktop, TrayItemsComeBackWithTheirHostAndFollowTheAppearance) {
    home.seed(moduleIds());
    const QString address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    const auto count = moduleIds().size();
    auto tray = std::make_unique<FakeTray>(address);
    const auto program = start("--bar=tray");
    ASSERT_TRUE(waitUntil([&] { return tray->items.size() == count; }));
    tray.reset();
    tray = std::make_unique<FakeTray>(address);
    ASSERT_TRUE(waitUntil([&] { return tray->items.size() == count; }));
    tray->countSignals();
    for (const uint scheme : {2u, 1u, 2u}) {
        QDBusMessage change = QDBusMessage::createSignal(
            QStringLiteral("/org/freedesktop/portal/desktop"),
            QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("SettingChanged"));
        change << QStringLiteral("org.freedesktop.appearance") << QStringLiteral("color-scheme")
               << QVariant::fromValue(QDBusVariant(scheme));
        tray->bus.send(change);
        EXPECT_TRUE(waitUntil([&] { return tray->count(QStringLiteral("NewIcon")) > 0; }));
    }
    tray->call(QStringLiteral("org.kde.StatusNotifierItem"), QStringLiteral("Activate"), {600, 5});
    EXPECT_TRUE(waitUntil([] { return windows().size() == 1; }));
    tray->call(QStringLiteral("org.kde.StatusNotifierItem"), QStringLiteral("ContextMenu"),
               {600, 5});
    EXPECT_TRUE(waitUntil([] { return windows().size() == 1; }));
    for (const char* method : {"ContextMenu", "SecondaryActivate", "Activate"}) {
        for (int i = 0; i < 500; ++i) {
            QDBusMessage click = QDBusMessage::createMethodCall(
                tray->items.value(0), QStringLiteral("/StatusNotifierItem"),
                QStringLiteral("org.kde.StatusNotifierItem"), QLatin1String(method));
            click << 600 << 5;
            tray->bus.send(click);
        }
        EXPECT_EQ(tray->property(QStringLiteral("Status")).toString(), QStringLiteral("Active"));
        EXPECT_LE(windows().size(), 2U) << method;  // a menu, and over it a popover
    }

    // A second start finds the first one over the bus.
    const auto second = start("--bar=tray");
    EXPECT_EQ(second->wait(), 0);
    EXPECT_TRUE(second->output().contains(QStringLiteral("settings window opens")));
    expectCleanEnd(*program, SIGHUP);
}

// Catches items, or a name on the bus, that are gone for good when the bus was restarted.
TEST_F(Desktop, EverythingOnTheBusReturnsWithIt) {
    home.seed(moduleIds());
    PrivateBus bus;
    const std::map<QString, QString> session = {
        {QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), bus.address()}};
    Program program(home, {QStringLiteral("--bar=tray")}, session);
    for (int round = 0; round < 3; ++round) {
        auto tray = std::make_unique<FakeTray>(bus.address());
        ASSERT_TRUE(waitUntil([&] { return tray->items.size() == moduleIds().size(); })) << round;
        Program second(home, {}, session);
        EXPECT_EQ(second.wait(), 0);
        EXPECT_TRUE(second.output().contains(QStringLiteral("settings window opens"))) << round;
        tray.reset();
        bus.kill();
        bus.start();
    }
    EXPECT_EQ(program.stop(SIGTERM), 0);
    EXPECT_EQ(home.leftovers(), QStringList());
}

}  // namespace vostel

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    QCoreApplication application(argc, argv);
    const PrivateBus bus;
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus.address().toLocal8Bit());
    vostel::XServer x(vostel::screenWidth, vostel::screenHeight, 24);
    vostel::server = &x;
    return RUN_ALL_TESTS();
}
