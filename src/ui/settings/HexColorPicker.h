#pragma once

#include "ui/settings/Binding.h"
#include "ui/settings/SettingsRow.h"

class QColor;

namespace vostel {

class HexColorField;

// A setting that is a colour text. `fallback` is the colour shown when the text is no colour.
class HexColorPicker : public SettingsRow {
    Q_OBJECT

  public:
    // A non-empty `keyword` ("auto") is accepted, too.
    HexColorPicker(const QString& title, Binding<QString> hex, std::function<QColor()> fallback,
                   const QString& keyword = {}, QWidget* parent = nullptr);

    void refresh() override;

  private:
    Binding<QString> hex;
    std::function<QColor()> fallback;
    HexColorField* field;
};

}  // namespace vostel
