#include "ui/settings/AppearanceOverrideSection.h"

#include <QMessageBox>
#include <QPushButton>

#include "core/ColorText.h"
#include "core/SystemColors.h"
#include "statusbar/PlainText.h"
#include "ui/settings/ButtonRow.h"
#include "ui/settings/OverrideIntervalRow.h"
#include "ui/settings/OverrideToggleRow.h"
#include "ui/settings/SettingsLook.h"
#include "ui/settings/SettingsPanel.h"

namespace vostel {

namespace {

void askToRevert(OverridableAppearance& settings, QWidget* parent) {
    QMessageBox* question = PlainText::messageBox(
        QStringLiteral(
            "Revert this item's appearance to the global settings? This can't be undone."),
        {}, parent);
    question->setAttribute(Qt::WA_DeleteOnClose);
    question->setPalette(SettingsLook::palette());
    question->setIcon(QMessageBox::Question);
    question->setWindowTitle(QStringLiteral("Revert to Global Settings"));
    QAbstractButton* revert =
        question->addButton(QStringLiteral("Revert"), QMessageBox::DestructiveRole);
    question->setDefaultButton(question->addButton(QMessageBox::Cancel));
    QObject::connect(revert, &QAbstractButton::clicked, parent,
                     [&settings] { settings.revertAppearanceToGlobal(); });
    question->open();
}

QColor globalForeground(const GlobalSettings& global) {
    return colorFromHex(global.foregroundHex()).value_or(systemGreen());
}

QColor globalBackground(const GlobalSettings& global) {
    return colorFromHex(global.backgroundHex()).value_or(QColor::fromRgbF(0, 0, 0, 0.1F));
}

}  // namespace

void AppearanceOverrideSection::addTo(SettingsPanel& panel) const {
    GlobalSettings* const global = &settings.global;
    const auto foreground = [global] { return globalForeground(*global); };
    const auto background = [global] { return globalBackground(*global); };
    const auto text = [global, bar = barAppearance] { return global->text(bar()); };
    panel.addSection(QStringLiteral("Appearance"), QStringLiteral("Override"));
    if (includeForeground) {
        panel.addRow(new OverrideColorRow({QStringLiteral("Foreground Color"),
                                           bound(settings.foregroundHexOverride),
                                           foreground,
                                           foreground,
                                           {}}));
    }
    panel.addRow(new OverrideColorRow({QStringLiteral("Background Color"),
                                       bound(settings.backgroundHexOverride),
                                       background,
                                       background,
                                       {}}));
    // "auto" is a colour of the bar, not one that has digits.
    panel.addRow(new OverrideColorRow(
        {QStringLiteral("Text Color"), bound(settings.textHexOverride), text, text, [global, text] {
             return globalText(colorFromHex(global->textHex()) ? hexString(text())
                                                               : QStringLiteral("auto"));
         }}));
    for (const OverrideColor& extra : extraColorRows) {
        panel.addRow(new OverrideColorRow(extra));
    }
    panel.addRow(new OverrideToggleRow(QStringLiteral("Monochrome"),
                                       bound(settings.monochromeOverride),
                                       [global] { return global->monochrome(); }));
    if (includeInterval) {
        panel.addRow(new OverrideIntervalRow(
            QStringLiteral("Refresh Interval"), bound(settings.intervalOverride),
            [global] { return IntervalOptions::bounded(global->updateInterval()); },
            intervalOptions));
    }
    if (showRevert) {
        panel.addRow(new ButtonRow(QString(), QStringLiteral("Revert to Global Settings"),
                                   [&item = settings, &panel] { askToRevert(item, &panel); }));
    }
}

}  // namespace vostel
