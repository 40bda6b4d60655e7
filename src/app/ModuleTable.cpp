#include "app/ModuleTable.h"

#include "app/AppServices.h"
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
using MakePanel = SettingsPanel* (*)(AppServices&);

struct Row {
    const char* id;
    const char* title;
    bool defaultEnabled;
    Make make;
    const char* symbol;
    MakePanel makePanel;
};

constexpr Row rows[] = {
    {"network", "Network Graph", true,
     [](AppServices& s, AppContext& context) -> std::unique_ptr<MenubarModule> {
         return std::make_unique<NetworkModule>(context, s.network,
                                                NetworkOutside::ofThisMachine(context, s.icons));
     },
     "network",
     [](AppServices& s) -> SettingsPanel* {
         return new NetworkSettingsPanel(s.network, s.notifications);
     }},
    {"cpu", "CPU Graph", true,
     [](AppServices& s, AppContext& context) -> std::unique_ptr<MenubarModule> {
         return std::make_unique<CPUModule>(context, s.cpu, s.processes);
     },
     "cpu",
     [](AppServices& s) -> SettingsPanel* {
         const CPUSource::CoreCounts cores = s.platform.cpu->coreCounts();
         const bool canSplit = cores.performance > 0 && cores.efficiency > 0;
         return new CPUSettingsPanel(s.cpu, s.notifications, canSplit);
     }},
    {"memory", "Memory Bar", true,
     [](AppServices& s, AppContext& context) -> std::unique_ptr<MenubarModule> {
         return std::make_unique<MemoryModule>(context, s.memory, s.processes);
     },
     "memorychip",
     [](AppServices& s) -> SettingsPanel* {
         return new MemorySettingsPanel(s.memory, s.notifications);
     }},
    {"gpu", "GPU Bar", true,
     [](AppServices& s, AppContext& context) -> std::unique_ptr<MenubarModule> {
         return std::make_unique<GPUModule>(context, s.gpu, s.processes);
     },
     "gpu",
     [](AppServices& s) -> SettingsPanel* { return new GPUSettingsPanel(s.gpu, s.notifications); }},
};

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

std::vector<SettingsPage> modulePages(AppServices& services) {
    std::vector<SettingsPage> pages;
    for (const Row& row : rows) {
        pages.push_back({QLatin1String(row.id), QLatin1String(row.title), QLatin1String(row.symbol),
                         true, [&services, &row] { return row.makePanel(services); }});
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
