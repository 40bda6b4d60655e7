#include "ui/settings/OverrideColorRow.h"

#include "core/ColorText.h"
#include "ui/settings/HexColorField.h"

namespace vostel {

OverrideColorRow::OverrideColorRow(OverrideColor edited, QWidget* parent)
    : OverrideRow(edited.title, parent),
      color(std::move(edited)),
      field(new HexColorField(color.title)) {
    setKeywords(QStringLiteral("override appearance colour hex"));
    addControl(field);
    addSwitch();
    connect(field, &HexColorField::edited, this, [this](const QString& hex) {
        color.hex.set(hex);
        refresh();
    });
    refresh();
}

void OverrideColorRow::refresh() {
    const std::optional<QString> hex = color.hex.get();
    showOverridden(hex.has_value());
    if (hex) {
        field->setHex(*hex, color.fallback());
    } else {
        const QColor global = color.globalColor();
        field->setOff(color.offLabel ? color.offLabel() : globalText(hexString(global)), global);
    }
}

void OverrideColorRow::setOverridden(bool overridden) {
    color.hex.set(overridden ? std::optional(hexString(color.globalColor())) : std::nullopt);
}

}  // namespace vostel
