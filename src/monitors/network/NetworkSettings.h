#pragma once

#include <QColor>
#include <QProperty>
#include <QStringList>

#include "core/ChoiceSetting.h"
#include "core/ModuleSettings.h"
#include "monitors/network/DisplayMode.h"
#include "monitors/network/InterfaceMode.h"

namespace vostel {

// "net." keys; posts "networkSettingsChanged".
class NetworkSettings : public ModuleSettings {
  public:
    NetworkSettings(DefaultsStore& store, NotificationCenter& center, GlobalSettings& global);

    ChoiceSetting<DisplayMode> displayMode;
    ChoiceSetting<DisplayStyle> displayStyle;
    Setting<QString> upColorHex;  // "net.upColor"
    ChoiceSetting<InterfaceMode> interfaceMode;
    Setting<QStringList> selectedInterfaces;  // what counts in InterfaceMode::custom
    Setting<bool> showNumbers;
    Setting<bool> lookUpWAN;  // whether public services may be asked for the public address

    // The active interfaces, as the item found them in its latest tick. Not stored.
    QProperty<QStringList> knownInterfaces;

    // The colour of upload: upColorHex, else the system's blue.
    QColor upColor() const;
};

}  // namespace vostel
