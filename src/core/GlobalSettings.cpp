#include "core/GlobalSettings.h"

#include <algorithm>

#include "core/ColorText.h"
#include "core/SystemColors.h"

namespace vostel {

GlobalSettings::GlobalSettings(DefaultsStore& store, NotificationCenter& center)
    : group(store, center, QStringLiteral("global."), "globalSettingsChanged"),
      foregroundHex(group, QStringLiteral("fg"), hexString(systemGreen())),
      backgroundHex(group, QStringLiteral("bg"), QStringLiteral("#0000001A")),
      textHex(group, QStringLiteral("text"), QStringLiteral("auto")),
      monochrome(group, QStringLiteral("mono"), false),
      updateInterval(group, QStringLiteral("interval"), 1.0),
      storedLabelSize(group, QStringLiteral("labelSize"), 7.0) {}

QColor GlobalSettings::text(Appearance appearance) const {
    return colorFromHex(textHex()).value_or(labelColor(appearance));
}

double GlobalSettings::labelSize() const {
    return std::clamp(storedLabelSize(), smallestLabel, largestLabel);
}

void GlobalSettings::setLabelSize(double size) {
    storedLabelSize = std::clamp(size, smallestLabel, largestLabel);
}

}  // namespace vostel
