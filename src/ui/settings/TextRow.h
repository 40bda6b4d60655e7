#pragma once

#include "ui/settings/Binding.h"
#include "ui/settings/SettingsRow.h"

namespace vostel {

class TextField;

// A setting that is a short text, stored with every key stroke.
class TextRow : public SettingsRow {
    Q_OBJECT

  public:
    static constexpr int longestText = 40;  // characters

    TextRow(const QString& title, Binding<QString> value, QWidget* parent = nullptr);

    void refresh() override;

  private:
    Binding<QString> value;
    TextField* field;
};

}  // namespace vostel
