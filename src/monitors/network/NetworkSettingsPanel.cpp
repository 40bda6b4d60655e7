#include "monitors/network/NetworkSettingsPanel.h"

#include <QVBoxLayout>

#include "core/SystemColors.h"
#include "ui/NoteLine.h"
#include "ui/settings/AppearanceOverrideSection.h"
#include "ui/settings/ChoiceRow.h"
#include "ui/settings/HexColorPicker.h"
#include "ui/settings/TextRow.h"
#include "ui/settings/ToggleRow.h"

namespace vostel {

namespace {

QString textOfRaw(std::string_view raw) {
    return QString::fromLatin1(raw.data(), static_cast<qsizetype>(raw.size()));
}

// A choice as the text that stands for it; `parse` reads such a text.
template <typename Kind, typename Parse>
Binding<QString> boundText(ChoiceSetting<Kind>& setting, Parse parse) {
    return {[&setting] { return textOfRaw(rawValue(setting())); },
            [&setting, parse](const QString& text) { setting = parse(text.toStdString()); }};
}

template <typename Kind>
Choice choice(Kind kind, const char* label) {
    return {textOfRaw(rawValue(kind)), QLatin1String(label)};
}

QString noteOf(InterfaceMode mode, bool nothingToChoose) {
    switch (mode) {
        case InterfaceMode::automatic:
            return QStringLiteral(
                "Only interfaces that currently have an address or are passing traffic are "
                "included "
                "— so VPNs like Tailscale that create and switch between interfaces are followed "
                "automatically.");
        case InterfaceMode::all:
            return QStringLiteral("Every network interface is included in the graph.");
        case InterfaceMode::custom:
            break;
    }
    return nothingToChoose ? QStringLiteral("No active interfaces detected yet.") : QString();
}

}  // namespace

NetworkSettingsPanel::NetworkSettingsPanel(NetworkSettings& networkSettings,
                                           NotificationCenter& notifications,
                                           std::function<Appearance()> barAppearance)
    : SettingsPanel(QStringLiteral("Network")), settings(networkSettings) {
    addGraphSection();
    addInterfaceSection();
    AppearanceOverrideSection{settings, std::move(barAppearance)}.addTo(*this);
    follow(notifications, {settings.changeNotification(), "globalSettingsChanged"});
    knownChanged = settings.knownInterfaces.addNotifier([this] { listInterfaces(); });
}

void NetworkSettingsPanel::addGraphSection() {
    addSection(QStringLiteral("Menu Bar"));
    addRow(new ChoiceRow(
        QStringLiteral("Display Mode"),
        {choice(DisplayMode::stacked, "Stacked"), choice(DisplayMode::mirrored, "Mirrored"),
         choice(DisplayMode::opposing, "Opposing")},
        boundText(settings.displayMode,
                  [](const std::string& text) { return displayModeFrom(text); })));
    addRow(new ChoiceRow(QStringLiteral("Display Style"),
                         {choice(DisplayStyle::line, "Line"), choice(DisplayStyle::bars, "Bars")},
                         boundText(settings.displayStyle, [](const std::string& text) {
                             return displayStyleFrom(text);
                         })));
    addRow(new HexColorPicker(QStringLiteral("Upload Color"), bound(settings.upColorHex),
                              [] { return systemBlue(); }));
    addRow(
        new ToggleRow(QStringLiteral("Show Numbers Next to Graph"), bound(settings.showNumbers)));
    addRow(new TextRow(QStringLiteral("Label (Optional)"), bound(settings.label)));
    auto* address =
        new ToggleRow(QStringLiteral("Look Up Public Address"), bound(settings.lookUpWAN));
    address->setHint(QStringLiteral("Asks a public service for the address that others see."));
    addRow(address);
}

void NetworkSettingsPanel::addInterfaceSection() {
    addSection(QStringLiteral("Interfaces Shown"));
    addRow(new ChoiceRow(
        QStringLiteral("Include"),
        {choice(InterfaceMode::automatic, "Automatic"), choice(InterfaceMode::all, "All"),
         choice(InterfaceMode::custom, "Custom")},
        boundText(settings.interfaceMode,
                  [](const std::string& text) { return interfaceModeFrom(text, std::nullopt); })));
    list = new QWidget;
    listColumn = new QVBoxLayout(list);
    listColumn->setContentsMargins(0, 0, 0, 0);
    listColumn->setSpacing(0);
    addWidget(list);
    modeNote = addNote(QString());
}

void NetworkSettingsPanel::refresh() {
    SettingsPanel::refresh();
    listInterfaces();
    for (ToggleRow* row : interfaceRows) {
        row->refresh();
    }
    modeNote->setNote(noteOf(settings.interfaceMode(), listed.isEmpty()));
}

void NetworkSettingsPanel::listInterfaces() {
    QStringList names;
    if (settings.interfaceMode() == InterfaceMode::custom) {
        names = settings.knownInterfaces.value() + settings.selectedInterfaces();
        names.removeDuplicates();
        names.sort();
    }
    if (names == listed && list->isHidden() == names.isEmpty()) {
        return;
    }
    listed = names;
    for (ToggleRow* row : interfaceRows) {
        row->hide();
        row->deleteLater();  // its own click may be what changed the list
    }
    interfaceRows.clear();
    for (const QString& interface : names) {
        interfaceRows.push_back(makeInterfaceRow(interface));
        listColumn->addWidget(interfaceRows.back());
    }
    list->setVisible(!names.isEmpty());
    modeNote->setNote(noteOf(settings.interfaceMode(), names.isEmpty()));
}

ToggleRow* NetworkSettingsPanel::makeInterfaceRow(const QString& interface) {
    return new ToggleRow(
        interface, {[this, interface] { return settings.selectedInterfaces().contains(interface); },
                    [this, interface](bool on) {
                        QStringList selected = settings.selectedInterfaces();
                        selected.removeAll(interface);
                        if (on) {
                            selected << interface;
                        }
                        settings.selectedInterfaces = selected;
                    }});
}

}  // namespace vostel
