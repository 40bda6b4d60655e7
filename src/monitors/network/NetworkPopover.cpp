#include "monitors/network/NetworkPopover.h"

#include <utility>

#include "core/SourceText.h"
#include "monitors/process/PrintableText.h"
#include "monitors/process/TopAppsSection.h"
#include "render/RateFormatter.h"
#include "ui/HeaderRow.h"

namespace vostel {

namespace {

constexpr int graphHeight = 56;  // logical pixels
constexpr int reservedApps = 4;  // rows

QString rate(double value) {
    return QString::fromStdString(RateFormatter::rate(value));
}

QString printable(const std::string& text) {
    constexpr std::size_t longestText = 255;  // characters; a name in the DNS has no more
    return QString::fromStdString(printableText(text, longestText));
}

QString bytes(double count) {
    return QString::fromStdString(RateFormatter::bytes(count));
}

// What stands where the busiest programs would.
QString textWithoutApps(TrafficState state) {
    switch (state) {
        case TrafficState::waiting:
            return QStringLiteral("Sampling…");
        case TrafficState::live:
            break;
        case TrafficState::silent:
            return QStringLiteral("Traffic helper not responding; trying again");
        case TrafficState::ended:
            return QStringLiteral("Traffic helper ended; trying again");
        case TrafficState::missing:
            return QStringLiteral("Traffic helper cannot be started");
    }
    return QStringLiteral("No active network traffic");
}

}  // namespace

NetworkPopover::NetworkPopover(NetworkViewModel& viewModel, const NetworkSettings& networkSettings,
                               std::function<void()> openSettings)
    : Popover(QStringLiteral("Network")),
      model(viewModel),
      settings(networkSettings),
      rates(new RatesRow),
      graph(new NetworkGraphView(graphHeight)),
      session(new KeyValueRow(QStringLiteral("Session"))),
      wan(new KeyValueRow(QStringLiteral("WAN"))),
      tailscaleTitle(new SectionTitle(QStringLiteral("Tailscale"))),
      tailscaleName(new KeyValueRow(QStringLiteral("Name"))),
      tailscaleAddress(new KeyValueRow(QStringLiteral("Address"))),
      interfaces(new InterfaceList),
      processes(new ProcessList(QString(), reservedApps)),
      sight(new NoteLine),
      problem(new NoteLine) {
    build(std::move(openSettings));
    follow();
    showGraph();
    showRates();
    showSession();
    showWAN();
    showTailscale();
    showInterfaces();
    showTopApps();
    showSight();
}

void NetworkPopover::build(std::function<void()> openSettings) {
    add(new HeaderRow(QStringLiteral("Network")));
    add(problem);
    add(rates);
    add(graph);
    addSpace(2);
    add(session);
    add(wan);
    tailscaleTitle->setSymbol(QStringLiteral("network"));
    tailscaleName->setCopyable(QStringLiteral("Tailscale name"));
    tailscaleAddress->setCopyable(QStringLiteral("Tailscale address"));
    add(tailscaleTitle);
    add(tailscaleName);
    add(tailscaleAddress);
    add(new SectionTitle(QStringLiteral("Interfaces")));
    add(interfaces);
    add(new SectionTitle(QStringLiteral("Top Apps")));
    add(processes);
    add(sight);
    setFooter(makeFooter(SystemApp::MonitorTab::Network, std::move(openSettings)));
}

void NetworkPopover::follow() {
    const auto on = [this](auto& property, auto apply) {
        notifiers.push_back(property.addNotifier([this, apply] { (this->*apply)(); }));
    };
    on(model.aggregate, &NetworkPopover::showGraph);
    on(model.current, &NetworkPopover::showRates);
    on(model.measured, &NetworkPopover::showRates);
    on(model.problem, &NetworkPopover::showRates);
    on(model.peakDown, &NetworkPopover::showRates);
    on(model.peakUp, &NetworkPopover::showRates);
    on(model.sessionDown, &NetworkPopover::showSession);
    on(model.sessionUp, &NetworkPopover::showSession);
    on(model.interfaces, &NetworkPopover::showInterfaces);
    on(model.wanIP, &NetworkPopover::showWAN);
    on(model.looksUpWAN, &NetworkPopover::showWAN);
    on(model.tailscale, &NetworkPopover::showTailscale);
    on(model.topApps, &NetworkPopover::showTopApps);
    on(model.trafficState, &NetworkPopover::showTopApps);
    on(model.sight, &NetworkPopover::showSight);
}

GraphConfig NetworkPopover::graphConfig() const {
    return {settings.displayMode(), settings.displayStyle(), settings.effForeground(),
            settings.upColor(), 1.5};
}

void NetworkPopover::showGraph() {
    graph->setConfig(graphConfig());
    graph->setHistory(model.aggregate.value());
}

void NetworkPopover::showRates() {
    const NetSample current = model.current.value();
    const bool known = model.measured.value();
    problem->setNote(model.problem.value(), NoteLine::Kind::Warning);
    rates->setDown({known ? rate(current.down) : noValue, rate(model.peakDown.value()),
                    settings.effForeground()});
    rates->setUp(
        {known ? rate(current.up) : noValue, rate(model.peakUp.value()), settings.upColor()});
}

void NetworkPopover::showSession() {
    session->setValue(bytes(model.sessionDown.value()) + QStringLiteral(" / ") +
                      bytes(model.sessionUp.value()));
}

void NetworkPopover::showWAN() {
    const std::optional<QString>& address = model.wanIP.value();
    wan->setCopyable(address ? QStringLiteral("WAN address") : QString());
    wan->setValue(!model.looksUpWAN.value() ? QStringLiteral("Not looked up")
                                            : address.value_or(QStringLiteral("Not available")));
}

void NetworkPopover::showTailscale() {
    const std::optional<TailscaleStatus>& status = model.tailscale.value();
    const QString name = status ? printable(status->dnsName) : QString();
    const QString address = status ? printable(status->ipv4.value_or("")) : QString();
    tailscaleTitle->setVisible(status.has_value());
    tailscaleTitle->setNote(status && status->backendState == "Running"
                                ? QStringLiteral("Running")
                                : QStringLiteral("Offline"));
    tailscaleName->setValue(name);
    tailscaleName->setVisible(!name.isEmpty());
    tailscaleAddress->setValue(address);
    tailscaleAddress->setVisible(!address.isEmpty());
}

void NetworkPopover::showInterfaces() {
    GraphConfig config = graphConfig();
    config.lineWidth = 1;
    interfaces->setConfig(config);
    interfaces->setStates(model.interfaces.value());
}

void NetworkPopover::showTopApps() {
    std::vector<ProcessEntry> entries;
    for (const AppUsage& app : model.topApps.value()) {
        entries.push_back(
            {app.name,
             app.icon,
             {{rate(app.down), settings.effForeground()}, {rate(app.up), settings.upColor()}},
             {}});
    }
    processes->setPlaceholder(textWithoutApps(model.trafficState.value()));
    processes->setEntries(entries);
}

void NetworkPopover::showSight() {
    const bool own = model.sight.value().split(u' ').contains(QStringLiteral("sight=own"));
    sight->setNote(own ? QStringLiteral("Apps: TCP of your own processes; UDP is not seen.")
                       : QStringLiteral("Apps: TCP connections; UDP is not seen."));
}

}  // namespace vostel
