#include "core/ModuleManager.h"

#include <algorithm>

#include "statusbar/PlainText.h"

namespace vostel {

namespace {

QString enabledKey(const QString& id) {
    return QStringLiteral("module.%1.enabled").arg(id);
}

}  // namespace

ModuleManager::ModuleManager(DefaultsStore& store, std::vector<Registration> rows)
    : defaults(store), registry(std::move(rows)) {
    for (const Registration& row : registry) {
        defaults.know(enabledKey(row.id), [](const PropertyList& list, const QString& key) {
            return list.holdsTruth(key);
        });
    }
}

ModuleManager::~ModuleManager() {
    stopAll();
}

const Registration* ModuleManager::find(const QString& id) const {
    const auto found = std::find_if(registry.begin(), registry.end(),
                                    [&](const Registration& row) { return row.id == id; });
    return found != registry.end() ? &*found : nullptr;
}

void ModuleManager::startModule(const Registration& row) {
    auto module = row.make();
    MenubarModule* started = module.get();
    live[row.id] = std::move(module);
    started->start();
}

void ModuleManager::loadEnabledModules() {
    for (const Registration& row : registry) {
        if (isEnabled(row.id)) {
            startModule(row);
        }
    }
}

bool ModuleManager::isEnabled(const QString& id) const {
    if (defaults.values().contains(enabledKey(id))) {
        return defaults.values().truth(enabledKey(id));
    }
    const Registration* row = find(id);
    return row != nullptr && row->defaultEnabled;
}

void ModuleManager::setEnabled(bool enabled, const QString& id) {
    defaults.set(enabledKey(id), enabled);
    const Registration* row = find(id);
    if (row == nullptr) {
        return;
    }
    if (enabled && running(id) == nullptr) {
        startModule(*row);
    } else if (!enabled) {
        // Out of the map first: stop() must find the manager in its final state.
        if (auto node = live.extract(id); !node.empty()) {
            node.mapped()->stop();
        }
    }
    if (onEnabledChanged) {
        onEnabledChanged(id);
    }
}

void ModuleManager::stopAll() {
    auto stopping = std::move(live);
    live.clear();
    for (const auto& [id, module] : stopping) {
        module->stop();
    }
}

MenubarModule* ModuleManager::running(const QString& id) const {
    const auto found = live.find(id);
    return found != live.end() ? found->second.get() : nullptr;
}

std::unique_ptr<QMenu> ModuleManager::buildModulesMenu() {
    auto menu = std::make_unique<QMenu>(QStringLiteral("Modules"));
    for (const Registration& row : registry) {
        QAction* action = menu->addAction(PlainText::inMenu(row.title));
        action->setCheckable(true);
        action->setChecked(isEnabled(row.id));
        // Queued: switching a module off deletes the item whose menu this is.
        QObject::connect(
            action, &QAction::triggered, menu.get(),
            [this, id = row.id] { setEnabled(!isEnabled(id), id); }, Qt::DirectConnection);
    }
    return menu;
}

}  // namespace vostel
