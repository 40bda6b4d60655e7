#pragma once

#include <functional>

#include <QString>

namespace vostel {

class SettingsPanel;

// One row of the settings window's sidebar and how its panel is made, which is when it is first
// looked at.
struct SettingsPage {
    QString id;  // "general", "appearance", or a module's id
    QString title;
    QString symbol;
    bool isModule = false;
    std::function<SettingsPanel*()> make;
};

}  // namespace vostel
