#include "app/ModuleTable.h"

#include <algorithm>
#include <tuple>

#include "app/AppServices.h"
#include "app/BarSwitch.h"
#include "combined/CombinedModule.h"
#include "combined/CombinedSettingsPanel.h"
#include "monitors/cpu/CPUModule.h"
#include "monitors/cpu/CPUSettingsPanel.h"
#include "monitors/gpu/GPUModule.h"
#include "monitors/gpu/GPUSettingsPanel.h"
#include "monitors/memory/MemoryModule.h"
#include "monitors/memory/MemorySettingsPanel.h"
#include "monitors/network/NetworkModule.h"
#include "monitors/network/NetworkSettingsPanel.h"

namespace vostel {

namespace {

using Make = std::unique_ptr<MenubarModule> (*)(AppServices&, AppContext&);
using MakePanel = SettingsPanel* (*)(AppServices&, AppContext&);

struct Row {
    const char* id;
    const char* title;
    bool defaultEnabled;
    // Its place among the segments of the combined item, as long as the user leaves them alone; 0:
    // it cannot be combined, and what `make` makes need not be an EmbeddableModule.
    int combinedPlace;
    Make make;
    const char* symbol;
    MakePanel makePanel;
};

// The appearance of the bar, as it is when it is asked.
std::function<Appearance()> ofBar(AppContext& context) {
    return [&bar = context.statusBar] { return imageContextOf(bar).appearance; };
}

constexpr Row rows[] = {
    {"network", "Network Graph", true, 1,
     [](AppServices& s, AppContext& context) -> std::unique_ptr<MenubarModule> {
         return std::make_unique<NetworkModule>(context, s.network,
                                                NetworkOutside::ofThisMachine(context, s.icons));
     },
     "network",
     [](AppServices& s, AppContext& context) -> SettingsPanel* {
         return new NetworkSettingsPanel(s.network, s.notifications, ofBar(context));
     }},
    {"cpu", "CPU Graph", true, 2,
     [](AppServices& s, AppContext& context) -> std::unique_ptr<MenubarModule> {
         return std::make_unique<CPUModule>(context, s.cpu, s.processes);
     },
     "cpu",
     [](AppServices& s, AppContext& context) -> SettingsPanel* {
         const CPUSource::CoreCounts cores = s.platform.cpu->coreCounts();
         const bool canSplit = cores.performance > 0 && cores.efficiency > 0;
         return new CPUSettingsPanel(s.cpu, s.notifications, ofBar(context), canSplit);
     }},
    {"memory", "Memory Bar", true, 4,
     [](AppServices& s, AppContext& context) -> std::unique_ptr<MenubarModule> {
         return std::make_unique<MemoryModule>(context, s.memory, s.processes);
     },
     "memorychip",
     [](AppServices& s, AppContext& context) -> SettingsPanel* {
         return new MemorySettingsPanel(s.memory, s.notifications, ofBar(context));
     }},
    {"gpu", "GPU Bar", true, 3,
     [](AppServices& s, AppContext& context) -> std::unique_ptr<MenubarModule> {
         return std::make_unique<GPUModule>(context, s.gpu, s.processes, s.graphics);
     },
     "gpu",
     [](AppServices& s, AppContext& context) -> SettingsPanel* {
         return new GPUSettingsPanel(s.gpu, s.notifications, ofBar(context));
     }},
    {"combined", "Combined", false, 0,
     [](AppServices& s, AppContext& context) -> std::unique_ptr<MenubarModule> {
         return std::make_unique<CombinedModule>(context, s.combined, makeCatalog(s, context));
     },
     "rectangle.3.group",
     [](AppServices& s, AppContext&) -> SettingsPanel* {
         return new CombinedSettingsPanel(s.combined, s.notifications);
     }},
};

std::vector<const Row*> combinableRows() {
    std::vector<const Row*> combinable;
    for (const Row& row : rows) {
        if (row.combinedPlace > 0) {
            combinable.push_back(&row);
        }
    }
    std::ranges::sort(combinable, {}, &Row::combinedPlace);
    return combinable;
}

std::unique_ptr<EmbeddableModule> embeddable(std::unique_ptr<MenubarModule> made) {
    auto* module = dynamic_cast<EmbeddableModule*>(made.get());
    if (module != nullptr) {
        std::ignore = made.release();
    }
    return std::unique_ptr<EmbeddableModule>(module);
}

}  // namespace

std::vector<Registration> makeRegistry(AppServices& services, AppContext& context) {
    std::vector<Registration> registry;
    for (const Row& row : rows) {
        registry.push_back(
            {QLatin1String(row.id), QLatin1String(row.title), row.defaultEnabled,
             [&services, &context, make = row.make] { return make(services, context); }});
    }
    return registry;
}

Catalog makeCatalog(AppServices& services, AppContext& context) {
    Catalog catalog;
    for (const Row* row : combinableRows()) {
        catalog.push_back({QLatin1String(row->id), QLatin1String(row->title),
                           [&services, &context, make = row->make] {
                               return embeddable(make(services, context));
                           }});
    }
    return catalog;
}

std::vector<CombinedSettings::Available> combinableModules() {
    std::vector<CombinedSettings::Available> modules;
    for (const Row* row : combinableRows()) {
        modules.push_back({QLatin1String(row->id), QLatin1String(row->title)});
    }
    return modules;
}

std::vector<SettingsPage> modulePages(AppServices& services, AppContext& context) {
    std::vector<SettingsPage> pages;
    for (const Row& row : rows) {
        pages.push_back({QLatin1String(row.id), QLatin1String(row.title), QLatin1String(row.symbol),
                         true,
                         [&services, &context, &row] { return row.makePanel(services, context); }});
    }
    return pages;
}

QStringList moduleIds() {
    QStringList ids;
    for (const Row& row : rows) {
        ids << QLatin1String(row.id);
    }
    return ids;
}

QStringList itemNames() {
    QStringList names;
    for (const QString& id : moduleIds()) {
        names << QStringLiteral("vostel.") + id;
    }
    return names;
}

}  // namespace vostel
