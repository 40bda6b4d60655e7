#include "item/ItemModule.h"

#include <chrono>

#include "core/GiveBack.h"

namespace vostel {

namespace {

using namespace std::chrono_literals;

// A closed popover is given back after this long: opened again soon it comes at once, and later its
// memory is free.
constexpr auto popoverKept = 10s;
constexpr double timerTolerance = 0.15;  // of the interval
// The second reading follows the first this soon, and so on; a source that takes longer than all
// of them is shown without a value.
constexpr auto secondReading = 250ms;
constexpr int mostReadings = 14;
constexpr int longestWait = 8;  // of them

}  // namespace

ItemModule::ItemModule(AppContext& appContext, ItemIdentity identity,
                       ModuleSettings& moduleSettings)
    : ShownItem(appContext, std::move(identity)), settings(moduleSettings) {
    popoverRelease.setSingleShot(true);
    popoverRelease.setInterval(popoverKept);
    soon.setSingleShot(true);
    soon.setTimerType(Qt::PreciseTimer);
    soon.setInterval(secondReading);
    connect(&soon, &QTimer::timeout, this, &ItemModule::readAgain);
    connect(&popoverRelease, &QTimer::timeout, this, [this] {
        popover.reset();
        giveBackMemory(context.background);
    });
}

ItemModule::~ItemModule() = default;

void ItemModule::start() {
    embedded = false;
    makeStatusItem();
    begin();
}

void ItemModule::startEmbedded() {
    embedded = true;
    begin();
}

void ItemModule::begin() {
    running = true;
    for (const std::string& name :
         {settings.changeNotification(), std::string("globalSettingsChanged")}) {
        subscriptions.push_back(
            context.notifications.subscribe(name, [this] { changes.request(); }));
    }
    startTimer();
    didStart();
    // An item with a long interval must not stand empty until its first tick.
    waited = presented = false;
    beginning = true;
    tick();
    beginning = false;
    readSoon();
}

void ItemModule::readSoon() {
    readingsLeft = mostReadings;
    soon.start();
}

void ItemModule::readAgain() {
    if (presented && !wantsReadingSoon()) {
        return;  // a tick came before
    }
    --readingsLeft;
    waited = waited || mostReadings - readingsLeft >= longestWait;
    tick();
    if (!presented && isReady()) {
        render();
    }
    if (wantsReadingSoon() && readingsLeft > 0) {
        soon.start();
    }
}

void ItemModule::stop() {
    if (!running) {
        return;
    }
    running = false;
    willStop();
    timer.reset();
    subscriptions.clear();
    popoverRelease.stop();
    soon.stop();
    popover.reset();
    removeStatusItem();
}

void ItemModule::startTimer() {
    const double interval = effInterval();
    timer.reset();
    timer = context.scheduler.every(interval, timerTolerance * interval, [this] { tick(); });
}

void ItemModule::settingsChanged() {
    if (running) {
        startTimer();
        render();
        if (popover) {
            popover->settingsChanged();
        }
    }
}

void ItemModule::render() {
    if (status() != nullptr && (beginning || !isReady())) {
        return;
    }
    presented = isReady();
    if (status() != nullptr) {
        std::vector<StatusImage> images;
        for (const ImageContext& wanted : status()->wantedImages()) {
            images.push_back(menubarImage(wanted).value_or(StatusImage()));
        }
        showImages(std::move(images));
    } else if (embedded && onImageChanged) {
        onImageChanged();
    }
    Q_EMIT rendered();
}

void ItemModule::closePopover() {
    if (popover) {
        popover->close();
    }
}

Popover* ItemModule::detailPopover() {
    popoverRelease.stop();
    if (!popover) {
        popover = makePopover();
        connect(popover.get(), &Popover::closed, this, &ItemModule::popoverClosed);
    }
    return popover.get();
}

void ItemModule::clicked(const StatusItemClick& click) {
    if (popover && (popover->isVisible() || popover->closedByPressAt(click.globalPosition))) {
        popover->close();
        return;
    }
    Popover* shown = detailPopover();
    detailPopoverWillShow();
    showBeside(*shown, click);
}

void ItemModule::popoverClosed() {
    if (!embedded) {  // the combined item tells its segments itself
        detailPopoverDidClose();
    }
    popoverRelease.start();
}

}  // namespace vostel
