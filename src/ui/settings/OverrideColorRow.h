#pragma once

#include <functional>

#include <QColor>

#include "ui/settings/Binding.h"
#include "ui/settings/OverrideRow.h"

namespace vostel {

class HexColorField;

struct OverrideColor {
    QString title;
    Binding<std::optional<QString>> hex;
    std::function<QColor()> globalColor;  // in effect while no override is set
    std::function<QColor()> fallback;     // shown when the hex text is no colour
    std::function<QString()> offLabel;    // shown while no override is set; empty: "Global (#...)"
};

// A colour that overrides the global one.
class OverrideColorRow : public OverrideRow {
    Q_OBJECT

  public:
    explicit OverrideColorRow(OverrideColor color, QWidget* parent = nullptr);

    void refresh() override;

  private:
    void setOverridden(bool overridden) override;

    OverrideColor color;
    HexColorField* field;
};

}  // namespace vostel
