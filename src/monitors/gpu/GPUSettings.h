#pragma once

#include "core/ModuleSettings.h"

namespace vostel {

// "gpu." keys; posts "gpuSettingsChanged".
class GPUSettings : public ModuleSettings {
  public:
    GPUSettings(DefaultsStore& store, NotificationCenter& center, GlobalSettings& globalSettings)
        : ModuleSettings(store, center, globalSettings, QStringLiteral("gpu."),
                         "gpuSettingsChanged") {}
};

}  // namespace vostel
