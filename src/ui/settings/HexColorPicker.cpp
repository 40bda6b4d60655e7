#include "ui/settings/HexColorPicker.h"

#include <QColor>

#include "ui/settings/HexColorField.h"

namespace vostel {

HexColorPicker::HexColorPicker(const QString& title, Binding<QString> binding,
                               std::function<QColor()> otherwise, const QString& keyword,
                               QWidget* parent)
    : SettingsRow(title, parent),
      hex(std::move(binding)),
      fallback(std::move(otherwise)),
      field(new HexColorField(title)) {
    setKeywords(QStringLiteral("colour hex"));
    field->setKeyword(keyword);
    addControl(field);
    connect(field, &HexColorField::edited, this, [this](const QString& text) {
        hex.set(text);
        refresh();
    });
    refresh();
}

void HexColorPicker::refresh() {
    field->setHex(hex.get(), fallback());
}

}  // namespace vostel
