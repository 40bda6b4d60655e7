#include "ui/settings/OverrideRow.h"

#include "statusbar/PlainText.h"
#include "ui/settings/ToggleSwitch.h"

namespace vostel {

QString globalText(const QString& value) {
    return QStringLiteral("Global (") + value + u')';
}

OverrideRow::OverrideRow(const QString& title, QWidget* parent) : SettingsRow(title, parent) {
    setKeywords(QStringLiteral("override appearance"));
}

void OverrideRow::addSwitch() {
    toggle = new ToggleSwitch(tr("Override %1").arg(title()));
    PlainText::setToolTip(*toggle, tr("Override the global value"));
    addControl(toggle);
    connect(toggle, &QAbstractButton::clicked, this, [this](bool on) {
        setOverridden(on);
        refresh();
    });
}

void OverrideRow::showOverridden(bool overridden) {
    toggle->setChecked(overridden);
}

}  // namespace vostel
