#include "monitors/network/NetworkSettingsPanel.h"

#include "core/SystemColors.h"
#include "monitors/network/InterfaceChoice.h"
#include "ui/settings/AppearanceOverrideSection.h"
#include "ui/settings/ChoiceRow.h"
#include "ui/settings/HexColorPicker.h"
#include "ui/settings/TextRow.h"
#include "ui/settings/ToggleRow.h"

namespace vostel {

namespace {

QString text(std::string_view raw) {
    return QString::fromLatin1(raw.data(), static_cast<qsizetype>(raw.size()));
}

// What a choice row needs of a setting that is one of a few: its text, and the way back.
template <typename T, typename Parse>
Binding<QString> boundChoice(ChoiceSetting<T>& setting, Parse parse) {
    return {[&setting] { return text(rawValue(setting())); },
            [&setting, parse](const QString& value) { setting = parse(value.toStdString()); }};
}

QString explanation(InterfaceMode mode) {
    switch (mode) {
        case InterfaceMode::automatic:
            return QStringLiteral(
                "Only interfaces that currently have an address or are passing traffic are "
                "included — so VPNs like Tailscale that create and switch between interfaces are "
                "followed automatically.");
        case InterfaceMode::all:
            return QStringLiteral("Every network interface is included in the graph.");
        case InterfaceMode::custom:
            break;
    }
    return {};
}

}  // namespace

NetworkSettingsPanel::NetworkSettingsPanel(NetworkSettings& settings,
                                           NotificationCenter& notifications)
    : SettingsPanel(QStringLiteral("Network")) {
    addSection(QStringLiteral("Menu Bar"));
    addRow(new ChoiceRow(QStringLiteral("Display Mode"),
                         {{QStringLiteral("stacked"), QStringLiteral("Stacked")},
                          {QStringLiteral("mirrored"), QStringLiteral("Mirrored")},
                          {QStringLiteral("opposing"), QStringLiteral("Opposing")}},
                         boundChoice(settings.displayMode, displayModeFrom)));
    addRow(new ChoiceRow(QStringLiteral("Display Style"),
                         {{QStringLiteral("line"), QStringLiteral("Line")},
                          {QStringLiteral("bars"), QStringLiteral("Bars")}},
                         boundChoice(settings.displayStyle, displayStyleFrom)));
    addRow(new HexColorPicker(QStringLiteral("Upload Color"), bound(settings.upColorHex),
                              [] { return systemBlue(); }));
    addRow(new ToggleRow(QStringLiteral("Show Numbers Next to Graph"), bound(settings.showNumbers)));
    addRow(new TextRow(QStringLiteral("Label (Optional)"), bound(settings.label)));

    addInterfaces(settings, notifications);

    addSection(QStringLiteral("Public Address"));
    auto* lookUp =
        new ToggleRow(QStringLiteral("Look Up Public Address"), bound(settings.lookUpWAN));
    lookUp->setHint(QStringLiteral("Asks a public service over HTTPS every two minutes."));
    lookUp->setKeywords(QStringLiteral("WAN IP"));
    addRow(lookUp);

    AppearanceOverrideSection{settings}.addTo(*this);
    follow(notifications, {settings.changeNotification(), "globalSettingsChanged"});
}

void NetworkSettingsPanel::addInterfaces(NetworkSettings& settings,
                                         NotificationCenter& notifications) {
    addSection(QStringLiteral("Interfaces Shown"));
    auto* mode = new ChoiceRow(QStringLiteral("Interfaces"),
                               {{QStringLiteral("automatic"), QStringLiteral("Automatic")},
                                {QStringLiteral("all"), QStringLiteral("All")},
                                {QStringLiteral("custom"), QStringLiteral("Custom")}},
                               boundChoice(settings.interfaceMode, [](const std::string& value) {
                                   return interfaceModeFrom(value, std::nullopt);
                               }));
    addRow(mode);
    auto* choice = new InterfaceChoice(settings);
    addWidget(choice);
    const auto show = [&settings, mode, choice] {
        mode->setHint(explanation(settings.interfaceMode()));
        choice->refresh();
    };
    subscription = notifications.subscribe(settings.changeNotification(), show);
    show();
}

}  // namespace vostel
