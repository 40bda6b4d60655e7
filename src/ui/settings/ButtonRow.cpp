#include "ui/settings/ButtonRow.h"

#include "ui/settings/TextButton.h"

namespace vostel {

ButtonRow::ButtonRow(const QString& title, const QString& text, std::function<void()> action,
                     QWidget* parent)
    : SettingsRow(title, parent) {
    setKeywords(text);
    auto* button = new TextButton(text);
    addControl(button);
    connect(button, &QAbstractButton::clicked, this, std::move(action));
}

}  // namespace vostel
