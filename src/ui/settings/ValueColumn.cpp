#include "ui/settings/ValueColumn.h"

#include <QHBoxLayout>
#include <QLabel>

#include "statusbar/PlainText.h"
#include "ui/settings/SettingsLook.h"

namespace vostel {

ValueColumn::ValueColumn(QWidget* shownEditor, QWidget* parent)
    : QWidget(parent), editor(shownEditor), label(PlainText::label()) {
    label->setForegroundRole(QPalette::PlaceholderText);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(3, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(editor);
    row->addWidget(label);
    row->addStretch();
    setMinimumWidth(SettingsLook::valueWidth);
    label->hide();
}

void ValueColumn::showEditor() {
    label->hide();
    editor->show();
}

void ValueColumn::showText(const QString& text) {
    label->setText(text);
    editor->hide();
    label->show();
}

}  // namespace vostel
