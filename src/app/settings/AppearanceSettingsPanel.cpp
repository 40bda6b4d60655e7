#include "app/settings/AppearanceSettingsPanel.h"

#include "core/SystemColors.h"
#include "ui/settings/HexColorPicker.h"
#include "ui/settings/IntervalPicker.h"
#include "ui/settings/SliderRow.h"
#include "ui/settings/ToggleRow.h"

namespace vostel {

AppearanceSettingsPanel::AppearanceSettingsPanel(GlobalSettings& global,
                                                 NotificationCenter& notifications,
                                                 std::function<Appearance()> barAppearance)
    : SettingsPanel(QStringLiteral("Appearance")) {
    addNote(
        QStringLiteral("These defaults apply to every menu-bar item. Each item can override any of "
                       "them on its own settings screen; item settings take precedence."));
    addSection(QStringLiteral("Colors"));
    addRow(new HexColorPicker(QStringLiteral("Foreground Color"), bound(global.foregroundHex),
                              [] { return systemGreen(); }));
    addRow(new HexColorPicker(QStringLiteral("Background Color"), bound(global.backgroundHex),
                              [] { return QColor::fromRgbF(0, 0, 0, 0.1F); }));
    auto* text = new HexColorPicker(
        QStringLiteral("Text Color"), bound(global.textHex),
        [bar = std::move(barAppearance)] { return labelColor(bar()); }, QStringLiteral("auto"));
    text->setHint(QStringLiteral("“auto” follows the bar: light on dark, dark on light."));
    addRow(text);
    addRow(new ToggleRow(QStringLiteral("Monochrome"), bound(global.monochrome)));
    addSection(QStringLiteral("Items"));
    addRow(new SliderRow(QStringLiteral("Label Size: "),
                         {GlobalSettings::smallestLabel, GlobalSettings::largestLabel, 0.5},
                         {[&global] { return global.labelSize(); },
                          [&global](double size) { global.setLabelSize(size); }}));
    addRow(new IntervalPicker(QStringLiteral("Refresh Interval"), bound(global.updateInterval)));
    follow(notifications, {"globalSettingsChanged"});
}

}  // namespace vostel
