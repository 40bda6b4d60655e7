#pragma once

#include "ui/settings/SettingsRow.h"

namespace vostel {

class ToggleSwitch;

// "Global (" + value + ")": what a row without an override shows.
QString globalText(const QString& value);

// Base of the rows that override a global value: a switch at the right edge sets the override (to
// the value in effect) and clears it.
class OverrideRow : public SettingsRow {
    Q_OBJECT

  protected:
    OverrideRow(const QString& title, QWidget* parent);

    // Adds the switch; to be called after the row's own controls.
    void addSwitch();
    void showOverridden(bool overridden);

    virtual void setOverridden(bool overridden) = 0;

  private:
    ToggleSwitch* toggle = nullptr;
};

}  // namespace vostel
