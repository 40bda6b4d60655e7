#include "core/OverridableAppearance.h"

#include "core/ColorText.h"
#include "core/IntervalOptions.h"
#include "core/SystemColors.h"

namespace vostel {

namespace {

std::optional<QColor> colorOf(const std::optional<QString>& hex) {
    return hex ? colorFromHex(*hex) : std::nullopt;
}

}  // namespace

OverridableAppearance::OverridableAppearance(GlobalSettings& globalSettings, SettingsGroup& group)
    : global(globalSettings),
      foregroundHexOverride(group, QStringLiteral("fg")),
      backgroundHexOverride(group, QStringLiteral("bg")),
      textHexOverride(group, QStringLiteral("text")),
      monochromeOverride(group, QStringLiteral("mono")),
      intervalOverride(group, QStringLiteral("interval")) {}

void OverridableAppearance::revertAppearanceToGlobal() {
    foregroundHexOverride = std::nullopt;
    backgroundHexOverride = std::nullopt;
    textHexOverride = std::nullopt;
    monochromeOverride = std::nullopt;
    intervalOverride = std::nullopt;
}

QColor OverridableAppearance::effForeground() const {
    if (const auto color = colorOf(foregroundHexOverride())) {
        return *color;
    }
    return colorFromHex(global.foregroundHex()).value_or(systemGreen());
}

QColor OverridableAppearance::effBackground() const {
    if (const auto color = colorOf(backgroundHexOverride())) {
        return *color;
    }
    return colorFromHex(global.backgroundHex()).value_or(QColor::fromRgbF(0, 0, 0, 0.1F));
}

QColor OverridableAppearance::effText(Appearance appearance) const {
    return colorOf(textHexOverride()).value_or(global.text(appearance));
}

bool OverridableAppearance::effMonochrome() const {
    return monochromeOverride().value_or(global.monochrome());
}

double OverridableAppearance::effInterval() const {
    return IntervalOptions::bounded(intervalOverride().value_or(global.updateInterval()));
}

EffAppearance OverridableAppearance::effAppearance(Appearance appearance) const {
    return {effForeground(), effBackground(), effText(appearance), effMonochrome()};
}

}  // namespace vostel
