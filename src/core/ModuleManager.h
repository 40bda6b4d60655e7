#pragma once

#include <functional>
#include <map>
#include <memory>
#include <vector>

#include <QMenu>
#include <QString>

#include "core/DefaultsStore.h"
#include "core/Modules.h"

namespace vostel {

// One row of the registry.
struct Registration {
    QString id;     // stable: part of the enabled key and of the status item's autosave name
    QString title;  // in the Modules menu
    bool defaultEnabled = false;  // when the store holds no flag
    std::function<std::unique_ptr<MenubarModule>()> make;
};

// The ordered registry and the running modules. Main thread only.
class ModuleManager {
  public:
    ModuleManager(DefaultsStore& defaults, std::vector<Registration> registry);
    ~ModuleManager();

    const std::vector<Registration>& rows() const { return registry; }

    // Makes and starts every enabled module, in registry order.
    void loadEnabledModules();
    // The stored flag, else the registry's default; false for an unknown id.
    bool isEnabled(const QString& id) const;
    // Stores the flag (also for an unknown id), then starts or stops the module.
    void setEnabled(bool enabled, const QString& id);
    // Stops every running module, once.
    void stopAll();
    // The running module, or null.
    MenubarModule* running(const QString& id) const;

    // One checkable entry per row, in registry order. Built anew each time the menu opens.
    std::unique_ptr<QMenu> buildModulesMenu();

    // Called after a module was switched on or off.
    std::function<void(const QString& id)> onEnabledChanged;

  private:
    const Registration* find(const QString& id) const;
    void startModule(const Registration& row);

    DefaultsStore& defaults;
    const std::vector<Registration> registry;
    std::map<QString, std::unique_ptr<MenubarModule>> live;
};

}  // namespace vostel
