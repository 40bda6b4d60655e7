#include "monitors/network/InterfaceChoice.h"

#include <QVBoxLayout>

#include "ui/settings/ToggleRow.h"

namespace vostel {

InterfaceChoice::InterfaceChoice(NetworkSettings& networkSettings, QWidget* parent)
    : QWidget(parent), settings(networkSettings), column(new QVBoxLayout(this)) {
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    notifier = settings.knownInterfaces.addNotifier([this] { refresh(); });
    refresh();
}

void InterfaceChoice::refresh() {
    const bool custom = settings.interfaceMode() == InterfaceMode::custom;
    setVisible(custom);
    if (!custom) {
        return;
    }
    QStringList names = settings.knownInterfaces.value();
    for (const QString& name : settings.selectedInterfaces()) {
        if (!names.contains(name)) {
            names << name;
        }
    }
    if (names != shown || rows.empty()) {
        makeRows(names);
    }
    for (SettingsRow* row : rows) {
        row->refresh();
    }
}

void InterfaceChoice::makeRows(const QStringList& names) {
    for (SettingsRow* row : rows) {
        row->deleteLater();  // a switch of one of them may be on the stack
        column->removeWidget(row);
    }
    rows.clear();
    shown = names;
    for (const QString& name : names) {
        rows.push_back(new ToggleRow(
            name, {[this, name] { return settings.selectedInterfaces().contains(name); },
                   [this, name](bool on) { choose(name, on); }}));
        if (!settings.knownInterfaces.value().contains(name)) {
            rows.back()->setHint(QStringLiteral("Not active now."));
        }
    }
    if (rows.empty()) {
        rows.push_back(new SettingsRow(QStringLiteral("No active interfaces detected yet.")));
    }
    for (SettingsRow* row : rows) {
        column->addWidget(row);
    }
}

void InterfaceChoice::choose(const QString& name, bool on) {
    QStringList selected = settings.selectedInterfaces();
    selected.removeAll(name);
    if (on) {
        selected << name;
    }
    settings.selectedInterfaces = selected;
}

}  // namespace vostel
