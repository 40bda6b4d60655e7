#include "monitors/network/NetworkSettings.h"

#include <functional>

#include "core/ColorText.h"
#include "core/SystemColors.h"

namespace vostel {

namespace {

// Calls `read` with the text that the store holds under the key, or with nothing.
template <typename Read>
auto stored(const SettingsGroup& group, const QString& name, Read read) {
    const auto text = group.defaults.values().text(group.key(name));
    const std::string bytes = text.value_or(QString()).toStdString();
    return read(text ? std::optional<std::string_view>(bytes) : std::nullopt);
}

}  // namespace

NetworkSettings::NetworkSettings(DefaultsStore& store, NotificationCenter& center,
                                 GlobalSettings& globalSettings)
    : ModuleSettings(store, center, globalSettings, QStringLiteral("net."),
                     "networkSettingsChanged"),
      displayMode(group, QStringLiteral("displayMode"),
                  stored(group, QStringLiteral("displayMode"), displayModeFrom)),
      displayStyle(group, QStringLiteral("displayStyle"),
                   stored(group, QStringLiteral("displayStyle"), displayStyleFrom)),
      upColorHex(group, QStringLiteral("upColor"), hexString(systemBlue())),
      interfaceMode(group, QStringLiteral("interfaceMode"),
                    stored(group, QStringLiteral("interfaceMode"),
                           [&](std::optional<std::string_view> text) {
                               return interfaceModeFrom(
                                   text,
                                   detail::readField<bool>(
                                       group.defaults, group.key(QStringLiteral("includeAll"))));
                           })),
      selectedInterfaces(group, QStringLiteral("selectedInterfaces"), {}),
      showNumbers(group, QStringLiteral("showNumbers"), true),
      lookUpWAN(group, QStringLiteral("lookUpWAN"), true) {}

QColor NetworkSettings::upColor() const {
    return colorFromHex(upColorHex()).value_or(systemBlue());
}

}  // namespace vostel
