#pragma once

#include <vector>

#include <QStringList>

#include "app/settings/SettingsPage.h"
#include "core/AppContext.h"
#include "core/ModuleManager.h"

namespace vostel {

class AppServices;

// The registration table: every item of the program, in the order of the Modules menu. The
// factories borrow both arguments.
std::vector<Registration> makeRegistry(AppServices& services, AppContext& context);

// The items' pages of the settings window, in the order of the table. The factories borrow the
// argument.
std::vector<SettingsPage> modulePages(AppServices& services);

// The ids of the table.
QStringList moduleIds();

// The autosave names of the items ("vostel.cpu"), in the order of the table.
QStringList itemNames();

}  // namespace vostel
