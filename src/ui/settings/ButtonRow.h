#pragma once

#include <functional>

#include "ui/settings/SettingsRow.h"

namespace vostel {

// A row that does something: a button, and a text beside it.
class ButtonRow : public SettingsRow {
    Q_OBJECT

  public:
    ButtonRow(const QString& title, const QString& button, std::function<void()> action,
              QWidget* parent = nullptr);
};

}  // namespace vostel
