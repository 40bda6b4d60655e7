#include "app/ModuleTable.h"

#include "app/AppServices.h"
#include "monitors/cpu/CPUModule.h"
#include "monitors/gpu/GPUModule.h"
#include "monitors/memory/MemoryModule.h"
#include "monitors/network/NetworkModule.h"

namespace vostel {

namespace {

using Make = std::unique_ptr<MenubarModule> (*)(AppServices&, AppContext&);

struct Row {
    const char* id;
    const char* title;
    bool defaultEnabled;
    Make make;
};

constexpr Row rows[] = {
    {"network", "Network Graph", true,
     [](AppServices& s, AppContext& context) -> std::unique_ptr<MenubarModule> {
         return std::make_unique<NetworkModule>(context, s.network,
                                                NetworkOutside::ofThisMachine(context, s.icons));
     }},
    {"cpu", "CPU Graph", true,
     [](AppServices& s, AppContext& context) -> std::unique_ptr<MenubarModule> {
         return std::make_unique<CPUModule>(context, s.cpu, s.processes);
     }},
    {"memory", "Memory Bar", true,
     [](AppServices& s, AppContext& context) -> std::unique_ptr<MenubarModule> {
         return std::make_unique<MemoryModule>(context, s.memory, s.processes);
     }},
    {"gpu", "GPU Bar", true,
     [](AppServices& s, AppContext& context) -> std::unique_ptr<MenubarModule> {
         return std::make_unique<GPUModule>(context, s.gpu, s.processes);
     }},
};

}  // namespace

std::vector<Registration> makeRegistry(AppServices& services, AppContext& context) {
    std::vector<Registration> registry;
    for (const Row& row : rows) {
        registry.push_back({QLatin1String(row.id), QLatin1String(row.title), row.defaultEnabled,
                            [&services, &context, make = row.make] {
                                return make(services, context);
                            }});
    }
    return registry;
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
