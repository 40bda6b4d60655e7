#pragma once

#include <memory>

#include "app/AppSettings.h"
#include "app/updates/UpdateController.h"
#include "combined/CombinedSettings.h"
#include "core/AppContext.h"
#include "core/Background.h"
#include "core/DefaultsStore.h"
#include "core/GlobalSettings.h"
#include "core/NotificationCenter.h"
#include "core/TickScheduler.h"
#include "monitors/cpu/CPUSettings.h"
#include "monitors/gpu/GPUSampler.h"
#include "monitors/gpu/GPUSettings.h"
#include "monitors/memory/MemoryModule.h"
#include "monitors/network/NetworkSettings.h"
#include "monitors/process/AppIcons.h"
#include "monitors/process/ProcessSampler.h"
#include "platform/Platform.h"
#include "statusbar/StatusBar.h"

namespace vostel {

// The one instance of everything that modules share, in the order in which it is built; taken down
// in the reverse order.
class AppServices {
  public:
    // Reads the settings and, on the first run, seeds them before any settings object reads them.
    AppServices(Platform platformSources, const QString& settingsPath,
                DefaultsStore::Access access = DefaultsStore::Access::ReadWrite);

    Platform platform;
    AppIcons icons;
    // Below what its work uses, so that it is taken down (and its work waited for) first.
    Background background;
    ProcessSampler processes;
    GPUSampler graphics;
    DefaultsStore defaults;
    const bool isFirstRun;
    NotificationCenter notifications;
    TickScheduler scheduler;
    AppSettings app;
    GlobalSettings global;
    CPUSettings cpu;
    MemorySettings memory;
    GPUSettings gpu;
    NetworkSettings network;
    CombinedSettings combined;
    std::unique_ptr<UpdateController> updates;  // never null
};

// The order of the items, kept under "app.itemOrder"; the registry's order until the user changes
// it.
class ItemOrder : public ItemOrderStore {
  public:
    ItemOrder(DefaultsStore& store, QStringList defaultOrder);
    QStringList itemOrder() const override;
    void setItemOrder(const QStringList& names) override;

  private:
    DefaultsStore& defaults;
    QStringList fallback;
};

// The path of the settings file: $XDG_CONFIG_HOME/vostel/com.vostel.app.plist.
QString settingsFilePath();

// $XDG_RUNTIME_DIR, else the folder "vostel-UID" in the temporary folder, made when missing, else a
// new one beside that, which goes with the program. Always one of this user alone
// (isPrivateFolder); what is not is left untouched and named on the log. The same with every call.
QString runtimeFolder();

}  // namespace vostel
