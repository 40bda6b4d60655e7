#pragma once

#include <functional>

#include <QString>

namespace vostel {

class Background;
class DefaultsStore;
class GlobalSettings;
class ModuleManager;
class NotificationCenter;
class StatusBar;
class TickScheduler;
struct Platform;

// Everything that a module gets from outside. All of it outlives every module.
struct AppContext {
    Platform& platform;
    Background& background;
    TickScheduler& scheduler;
    DefaultsStore& defaults;
    NotificationCenter& notifications;
    GlobalSettings& global;
    StatusBar& statusBar;
    ModuleManager* modules = nullptr;  // null where there is no delegate: no Modules menu then
    std::function<void(const QString& panel)> openSettings;
    std::function<void()> quit;
    std::function<void()> exportSettings = {};  // panels that ask for the file
    std::function<void()> importSettings = {};
};

}  // namespace vostel
