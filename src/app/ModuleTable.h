#pragma once

#include <vector>

#include <QStringList>

#include "app/settings/SettingsPage.h"
#include "combined/Catalog.h"
#include "combined/CombinedSettings.h"
#include "core/AppContext.h"
#include "core/ModuleManager.h"

namespace vostel {

class AppServices;

// The registration table: every item of the program, in the order of the Modules menu. The
// factories borrow both arguments.
std::vector<Registration> makeRegistry(AppServices& services, AppContext& context);

// What the combined item can show, in its own order. The factories borrow both arguments.
Catalog makeCatalog(AppServices& services, AppContext& context);
// The same without the factories.
std::vector<CombinedSettings::Available> combinableModules();

// The items' pages of the settings window, in the order of the table. The factories borrow
// both arguments.
std::vector<SettingsPage> modulePages(AppServices& services, AppContext& context);

// The ids of the table.
QStringList moduleIds();

// The autosave names of the items ("vostel.cpu"), in the order of the table.
QStringList itemNames();

}  // namespace vostel
