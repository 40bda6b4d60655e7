#include "statusbar/TrayItem.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cmath>

#include <QCursor>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QGuiApplication>

#include "platform/LogRing.h"
#include "statusbar/TrayBar.h"
#include "statusbar/TrayHost.h"
#include "statusbar/TrayItemAdaptor.h"
#include "statusbar/TrayMenuAdaptor.h"

namespace vostel {

namespace {

constexpr double imageInterval = 0.25;  // s
constexpr double tipInterval = 1.0;     // s
constexpr int registerTries = 5;        // after 1, 2, 4, 8 s
constexpr int registerTimeout = 2000;   // milliseconds; the other items wait so long
const QString itemPath = QStringLiteral("/StatusNotifierItem");

// Request-name flags and answers of the D-Bus specification, "Message Bus Messages".
constexpr uint doNotQueue = 4;
constexpr uint primaryOwner = 1;
constexpr uint alreadyOwner = 4;

// A process may hold several items: org.kde.StatusNotifierItem-PID-NUMBER.
QString nextBusName() {
    static std::atomic<int> count = 0;
    return QStringLiteral("org.kde.StatusNotifierItem-%1-%2").arg(getpid()).arg(++count);
}

QDBusMessage busCall(const QString& method, const QVariantList& arguments) {
    const QString service = QStringLiteral("org.freedesktop.DBus");
    QDBusMessage call = QDBusMessage::createMethodCall(
        service, QStringLiteral("/org/freedesktop/DBus"), service, method);
    call.setArguments(arguments);
    return call;
}

// The bus went while it was asked: that is dealt with when the link says so.
bool isLost(const QDBusError& error) {
    return error.type() == QDBusError::Disconnected;
}

}  // namespace

TrayItem::TrayItem(TrayBar& owner, const QString& busAddress, const QString& autosaveName)
    : bar(&owner),
      id(autosaveName),
      busName(nextBusName()),
      link(busAddress),
      imageLimit(imageInterval),
      tipLimit(tipInterval) {
    elapsed.start();
    for (QTimer* timer : {&imageTimer, &tipTimer, &registerTimer}) {
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);  // a coarse one may fire too early
    }
    connect(&imageTimer, &QTimer::timeout, this, &TrayItem::publishImages);
    connect(&tipTimer, &QTimer::timeout, this, &TrayItem::publishTip);
    connect(&registerTimer, &QTimer::timeout, &owner, &TrayBar::nextTurn);
    connect(&owner, &TrayBar::watcherChanged, this, &TrayItem::watcherChanged);
    connect(&owner, &TrayBar::imagesWanted, this, &TrayItem::imagesWanted);
    connect(&owner, &TrayBar::needsMenuChanged, this, [this] {
        if (link.isOpen()) {  // hosts read the menu's place once, when the item appears
            leaveTray();
            exportItem();
            joinTray();
        }
    });
    connect(&link, &BusLink::opened, this, &TrayItem::joinBus);
    connect(&link, &BusLink::lost, this, &TrayItem::forgetBus);
    connect(&link, &BusLink::failed, this, [this] {
        if (bar && bar->hasBus()) {  // else the bar has said it for all
            complain(QStringLiteral("%1 is not in the tray: the bus does not answer").arg(id));
        }
        unreachable = true;
        if (bar) {
            bar->nextTurn();
        }
    });
}

TrayItem::~TrayItem() {
    if (bar) {
        bar->remove(*this);
    }
}

std::vector<ImageContext> TrayItem::wantedImages() const {
    return bar ? bar->wantedImages() : std::vector<ImageContext>(1);
}

// Once for each cause, not for each attempt.
void TrayItem::complain(const QString& text) {
    if (std::exchange(complaint, text) != text) {
        writeLogLine(text.toStdString());
    }
}

void TrayItem::joinBus() {
    unreachable = false;
    exportItem();
    joinTray();
}

// Neither the item's name nor its place in the tray outlives the bus.
void TrayItem::forgetBus() {
    nameState = NameState::None;
    registered = false;
    registerFailures = 0;
    registerTimer.stop();
    delete registering;
}

void TrayItem::exportItem() {
    QDBusConnection bus = link.bus();
    bus.unregisterObject(itemPath);
    bus.unregisterObject(trayMenuPath);
    onBus = std::make_unique<QObject>();
    if (bar && bar->needsMenu()) {
        adaptor = new TrayMenuItemAdaptor(onBus.get(), this);
        auto* menu = new QObject(onBus.get());
        new TrayMenuAdaptor(menu, this);
        bus.registerObject(trayMenuPath, menu, QDBusConnection::ExportAdaptors);
    } else {
        adaptor = new TrayItemAdaptor(onBus.get(), this);
    }
    bus.registerObject(itemPath, onBus.get(), QDBusConnection::ExportAdaptors);
}

void TrayItem::watcherChanged() {
    registered = false;
    registerFailures = 0;
    registerTimer.stop();
    delete registering;  // that answer tells nothing any more
    joinTray();
}

void TrayItem::joinTray() {
    if (!link.isOpen() || shownImages.empty() || !bar || !bar->hasWatcher()) return;
    if (nameState == NameState::Owned || nameState == NameState::Refused) {
        bar->nextTurn();
    } else if (nameState == NameState::None) {
        nameState = NameState::Asked;
        auto* pending = new QDBusPendingCallWatcher(
            link.bus().asyncCall(busCall(QStringLiteral("RequestName"), {busName, doNotQueue})),
            this);
        connect(pending, &QDBusPendingCallWatcher::finished, this,
                [this, pending] { takeNameReply(*pending); });
    }
}

void TrayItem::takeNameReply(QDBusPendingCallWatcher& pending) {
    pending.deleteLater();
    const QDBusPendingReply<uint> reply = pending;
    if (isLost(reply.error())) return;
    const bool owned =
        reply.isValid() && (reply.value() == primaryOwner || reply.value() == alreadyOwner);
    nameState = owned ? NameState::Owned : NameState::Refused;
    if (shownImages.empty()) {  // hidden in the meantime
        leaveTray();
    } else {
        joinTray();
    }
}

TrayItem::Turn TrayItem::turn() const {
    if (registering) return Turn::Now;
    if (shownImages.empty() || unreachable || registered || registerTimer.isActive() ||
        registerFailures >= registerTries) {
        return Turn::None;
    }
    const bool prepared =
        link.isOpen() && (nameState == NameState::Owned || nameState == NameState::Refused);
    return prepared ? Turn::Here : Turn::Ahead;
}

void TrayItem::leaveTray() {
    registered = false;
    registerTimer.stop();
    delete registering;
    if (nameState == NameState::Owned) {
        link.bus().asyncCall(busCall(QStringLiteral("ReleaseName"), {busName}));
        nameState = NameState::None;
    }
    if (bar) {
        bar->nextTurn();
    }
}

void TrayItem::registerItem() {
    QDBusMessage call =
        QDBusMessage::createMethodCall(trayWatcherService, trayWatcherPath, trayWatcherService,
                                       QStringLiteral("RegisterStatusNotifierItem"));
    // Another process took the name (a container with its own process numbers): the unique name
    // of the connection serves as well.
    call.setArguments({nameState == NameState::Owned ? busName : link.bus().baseService()});
    call.setAutoStartService(false);
    registered = true;  // the host may read the item before the watcher answers
    registering = new QDBusPendingCallWatcher(link.bus().asyncCall(call, registerTimeout), this);
    connect(registering, &QDBusPendingCallWatcher::finished, this, [this] {
        const std::unique_ptr<QDBusPendingCallWatcher> reply(registering);
        registering.clear();
        takeRegisterReply(*reply);
        if (bar) {
            bar->nextTurn();
        }
    });
}

void TrayItem::takeRegisterReply(QDBusPendingCallWatcher& pending) {
    if (!pending.isError()) {
        complaint.clear();
        return;
    }
    if (isLost(pending.error())) return;
    registered = false;
    if (shownImages.empty() || !bar || !bar->hasWatcher()) return;
    complain(QStringLiteral("The tray does not take %1: %2").arg(id, pending.error().message()));
    // A watcher may own its name before it answers calls: try again, but not for ever.
    ++registerFailures;
    if (registerFailures < registerTries) {
        registerTimer.start(std::chrono::seconds(1 << (registerFailures - 1)));
    }
}

void TrayItem::setImages(std::vector<StatusImage> given) {
    const std::vector<ImageContext> contexts = wantedImages();
    std::vector<QImage> next;
    for (std::size_t i = 0; i < given.size(); ++i) {
        if (!given[i].isNull()) {
            next.push_back(trayImage(given[i], contexts[std::min(i, contexts.size() - 1)]));
        }
    }
    images = std::move(next);
    if (images == shownImages) {
        imageTimer.stop();
        return;
    }
    // To appear and to vanish is not limited: only changes of a visible item are.
    const bool visibilityChanges = images.empty() != shownImages.empty();
    const double wait = registered && !visibilityChanges ? imageLimit.wait(now()) : 0.0;
    if (wait <= 0.0) {
        publishImages();
    } else if (!imageTimer.isActive()) {
        imageTimer.start(static_cast<int>(std::ceil(wait * 1e3)));
    }
}

void TrayItem::publishImages() {
    imageTimer.stop();
    const bool wasHidden = shownImages.empty();
    shownImages = images;
    if (shownImages.empty()) {
        leaveTray();
    } else if (wasHidden) {
        joinTray();
    } else if (registered) {
        imageLimit.noteUpdate(now());
        Q_EMIT adaptor->NewIcon();
    }
}

void TrayItem::setToolTip(const QString& title, const QString& value) {
    tip = {title, value};
    if (tip == shownTip) {
        tipTimer.stop();
        return;
    }
    const double wait = registered ? tipLimit.wait(now()) : 0.0;
    if (wait <= 0.0) {
        publishTip();
    } else if (!tipTimer.isActive()) {
        tipTimer.start(static_cast<int>(std::ceil(wait * 1e3)));
    }
}

void TrayItem::publishTip() {
    tipTimer.stop();
    const bool newTitle = tip.title != shownTip.title;
    shownTip = tip;
    if (!registered) return;
    tipLimit.noteUpdate(now());
    if (newTitle) {
        Q_EMIT adaptor->NewTitle();
    }
    Q_EMIT adaptor->NewToolTip();
}

TrayPixmaps TrayItem::shownPixmaps() const {
    TrayPixmaps result;
    for (const QImage& image : shownImages) {
        result.append(toTrayPixmap(image));
    }
    return result;
}

TrayToolTip TrayItem::shownToolTip() const {
    // Hosts read both texts as markup.
    return {{}, {}, shownTip.title.toHtmlEscaped(), shownTip.value.toHtmlEscaped()};
}

void TrayItem::takeClick(Qt::MouseButton button, QPoint position) {
    StatusItemClick click;
    click.button = button;
    click.modifiers = QGuiApplication::queryKeyboardModifiers();
    const bool known = !position.isNull() && QGuiApplication::screenAt(position) != nullptr;
    click.globalPosition = known ? position : QCursor::pos();
    Q_EMIT clicked(click);
}

}  // namespace vostel
