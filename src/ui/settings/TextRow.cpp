#include "ui/settings/TextRow.h"

#include "ui/settings/SettingsLook.h"
#include "ui/settings/TextField.h"

namespace vostel {

TextRow::TextRow(const QString& title, Binding<QString> binding, QWidget* parent)
    : SettingsRow(title, parent), value(std::move(binding)), field(new TextField(title)) {
    field->setFixedWidth(SettingsLook::valueWidth);
    field->setMaxLength(longestText);
    addControl(field);
    connect(field, &QLineEdit::textEdited, this, [this](const QString& text) { value.set(text); });
    refresh();
}

void TextRow::refresh() {
    // Setting the same text would move the cursor.
    if (const QString stored = value.get(); field->text() != stored.left(longestText)) {
        field->setText(stored);
    }
}

}  // namespace vostel
