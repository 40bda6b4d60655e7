#include "monitors/network/NetworkModule.h"

#include <algorithm>
#include <set>
#include <utility>

#include "core/GlobalSettings.h"
#include "core/Log.h"
#include "core/SourceText.h"
#include "monitors/network/InterfaceInfo.h"
#include "monitors/network/NetworkImage.h"
#include "monitors/network/NetworkPopover.h"
#include "platform/Platform.h"
#include "render/RateFormatter.h"

namespace vostel {

namespace {

constexpr double probeTolerance = 0.15;  // of the interval, as the item's own timer
// A gap is told by the interval, but a stored interval may be absurdly small.
constexpr double shortestInterval = 0.5;  // seconds

QString rate(double value) {
    return QString::fromStdString(RateFormatter::rate(value));
}

std::set<std::string> nameSet(const QStringList& names) {
    std::set<std::string> result;
    for (const QString& name : names) {
        result.insert(name.toStdString());
    }
    return result;
}

}  // namespace

NetworkModule::NetworkModule(AppContext& appContext, NetworkSettings& networkSettings,
                             NetworkOutside networkOutside)
    : ItemModule(appContext,
                 {QStringLiteral("network"), QStringLiteral("Network"),
                  QStringLiteral("Network throughput")},
                 networkSettings),
      settings(networkSettings),
      outside(std::move(networkOutside)),
      monitor(*appContext.platform.network, *appContext.platform.clock) {}

NetworkModule::~NetworkModule() = default;

void NetworkModule::didStart() {
    settingsSubscription =
        context.notifications.subscribe(settings.changeNotification(), [this] { applyLookUp(); });
    startBackgroundProbes();
}

void NetworkModule::willStop() {
    settingsSubscription = {};
    tailscaleTimer.reset();
    wanTimer.reset();
    stopProcessMonitor();
}

void NetworkModule::startBackgroundProbes() {
    applyLookUp();
    refreshWAN();
    refreshTailscale();
    tailscaleTimer = context.scheduler.every(tailscaleInterval, probeTolerance * tailscaleInterval,
                                             [this] { refreshTailscale(); });
    wanTimer = context.scheduler.every(wanInterval, probeTolerance * wanInterval,
                                       [this] { refreshWAN(); });
}

void NetworkModule::refreshTailscale() {
    if (std::exchange(tailscaleInFlight, true)) {
        return;
    }
    outside.fetchTailscale(this, [this](std::optional<TailscaleStatus> status) {
        tailscaleInFlight = false;
        model.tailscale = std::move(status);
    });
}

void NetworkModule::refreshWAN() {
    if (!settings.lookUpWAN() || std::exchange(wanInFlight, true)) {
        return;
    }
    outside.fetchWAN(this, [this](std::optional<QString> address) {
        wanInFlight = false;
        if (model.looksUpWAN.value()) {
            model.wanIP = std::move(address);
        }
    });
}

// The choice takes effect at once: off forgets the address, and the answer under way if it comes
// before the choice is taken back.
void NetworkModule::applyLookUp() {
    const bool wanted = settings.lookUpWAN();
    if (wanted == model.looksUpWAN.value()) {
        return;
    }
    model.looksUpWAN = wanted;
    if (wanted) {
        refreshWAN();
    } else {
        model.wanIP = std::nullopt;
    }
}

void NetworkModule::tick() {
    const double interval = effInterval() > shortestInterval ? effInterval() : shortestInterval;
    const auto samples = monitor.sample(interval);
    error = context.platform.network->health.error();
    const auto addresses =
        InterfaceInfo::addresses(monitor.interfaces(), context.platform.network->addresses());
    const std::optional<TailscaleStatus>& tailscale = model.tailscale.value();
    const InterfaceMode mode = settings.interfaceMode();
    selection.update({samples, monitor.onceNames(), addresses, mode,
                      mode == InterfaceMode::custom ? nameSet(settings.selectedInterfaces())
                                                    : std::set<std::string>(),
                      tailscale ? tailscale->ipv4 : std::nullopt});
    publish();
    render();
}

void NetworkModule::publish() {
    model.measured = hasRates();
    model.problem = errorSentence(error);
    model.aggregate = selection.aggregate();
    model.current = selection.current();
    model.peakDown = selection.peakDown();
    model.peakUp = selection.peakUp();
    model.sessionDown = static_cast<double>(monitor.sessionDown());
    model.sessionUp = static_cast<double>(monitor.sessionUp());
    model.interfaces = selection.list();
    QStringList names;
    for (const std::string& name : selection.activeNames()) {
        names << QString::fromStdString(name);
    }
    settings.knownInterfaces = names;
}

void NetworkModule::detailPopoverWillShow() {
    startProcessMonitor();
    refreshWAN();
    tick();
}

void NetworkModule::detailPopoverDidClose() {
    stopProcessMonitor();
}

void NetworkModule::startProcessMonitor() {
    stopProcessMonitor();
    processMonitor = std::make_unique<ProcessNetMonitor>(effInterval(), outside.traffic);
    processMonitor->onUsage = [this](const std::vector<AppUsage>& usage) {
        if (const QString sight = processMonitor->sight(); !sight.isEmpty()) {
            model.sight = sight;
        }
        model.topApps = usage;
        noteTrafficState(processMonitor->state());
    };
    processMonitor->start();
}

void NetworkModule::stopProcessMonitor() {
    processMonitor.reset();
    model.topApps = std::vector<AppUsage>();
    model.trafficState = TrafficState::waiting;
}

// A trouble is logged once, not with every new try.
void NetworkModule::noteTrafficState(TrafficState state) {
    if (state != model.trafficState.value() && state == TrafficState::silent) {
        logLine(QStringLiteral("the traffic helper gives no readings; it is started again"));
    } else if (state != model.trafficState.value() && state == TrafficState::missing) {
        logLine(QStringLiteral("cannot start the traffic helper %1")
                    .arg(QString::fromStdString(outside.traffic.helper)));
    }
    model.trafficState = state;
}

std::optional<StatusImage> NetworkModule::menubarImage(const ImageContext& imageContext) {
    const NetworkImageInput input{
        .mode = settings.displayMode(),
        .style = settings.displayStyle(),
        .showNumbers = settings.showNumbers(),
        .label = settings.label(),
        .labelSize = context.global.labelSize(),
        .appearance = settings.effAppearance(imageContext.appearance),
        .upColor = settings.upColor(),
        .current = selection.current(),
        .known = hasRates(),
        .history = selection.aggregate(),
    };
    return makeNetworkImage(input, imageContext);
}

QString NetworkModule::valueText() const {
    if (!hasRates()) {
        return noValueText(QStringLiteral("Network"), error);
    }
    return QStringLiteral("Network ↓ %1 ↑ %2")
        .arg(rate(selection.current().down), rate(selection.current().up));
}

QVariantMap NetworkModule::statusValues() const {
    if (!hasRates()) {
        return {{QStringLiteral("down"), QVariant()},
                {QStringLiteral("up"), QVariant()},
                {QStringLiteral("error"), QString::fromStdString(error)}};
    }
    QVariantList interfaces;
    for (const InterfaceState& state : selection.list()) {
        interfaces << QVariantMap{
            {QStringLiteral("name"), QString::fromStdString(state.id)},
            {QStringLiteral("displayName"), QString::fromStdString(state.displayName)},
            {QStringLiteral("address"), QString::fromStdString(state.lanIP.value_or(""))},
            {QStringLiteral("down"), state.current.down},
            {QStringLiteral("up"), state.current.up},
            {QStringLiteral("included"), state.included}};
    }
    return {{QStringLiteral("down"), selection.current().down},
            {QStringLiteral("up"), selection.current().up},
            {QStringLiteral("peakDown"), selection.peakDown()},
            {QStringLiteral("peakUp"), selection.peakUp()},
            {QStringLiteral("sessionDown"), static_cast<double>(monitor.sessionDown())},
            {QStringLiteral("sessionUp"), static_cast<double>(monitor.sessionUp())},
            {QStringLiteral("interfaces"), interfaces}};
}

std::unique_ptr<Popover> NetworkModule::makePopover() {
    return std::make_unique<NetworkPopover>(model, settings, [this] { openSettingsPanel(); });
}

}  // namespace vostel
