#include "ui/settings/HexColorField.h"

#include <QColorDialog>
#include <QHBoxLayout>
#include <QLabel>

#include "core/ColorText.h"
#include "statusbar/PlainText.h"
#include "ui/settings/ColorSwatch.h"
#include "ui/settings/SettingsLook.h"
#include "ui/settings/TextField.h"

namespace vostel {

namespace {

QString complaint() {
    return HexColorField::tr("Not a color: six or eight hexadecimal digits, as in #00A4C8FF");
}

}  // namespace

HexColorField::HexColorField(const QString& fieldName, QWidget* parent)
    : QWidget(parent),
      name(fieldName),
      swatch(new ColorSwatch(tr("Choose %1").arg(fieldName))),
      field(new TextField(tr("%1, hexadecimal").arg(fieldName))),
      offLabel(PlainText::label()) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(8);
    row->addWidget(swatch);
    row->addWidget(field, 1);
    row->addWidget(offLabel, 1);
    setFixedWidth(SettingsLook::valueWidth);
    offLabel->setForegroundRole(QPalette::PlaceholderText);
    offLabel->setContentsMargins(7, 0, 0, 0);  // where a field's text stands
    offLabel->hide();
    connect(field, &QLineEdit::textEdited, this, &HexColorField::typed);
    connect(field, &QLineEdit::editingFinished, this, &HexColorField::finishTyping);
    connect(swatch, &QAbstractButton::clicked, this, &HexColorField::openDialog);
}

void HexColorField::setHex(const QString& hex, const QColor& color) {
    stored = hex;
    fallback = color;
    swatch->setColor(colorFromHex(hex).value_or(color));
    swatch->setEnabled(true);
    offLabel->hide();
    field->show();
    const auto shown = colorFromHex(field->text());
    if (field->hasFocus() && (field->hasComplaint() || (shown && shown == colorFromHex(hex)))) {
        return;
    }
    if (field->text() != hex) {
        field->setText(hex);
    }
    const bool fine = hex == keyword || colorFromHex(hex);
    field->setComplaint(fine ? QString() : complaint());
}

void HexColorField::setOff(const QString& text, const QColor& color) {
    swatch->setColor(color);
    swatch->setEnabled(false);
    field->hide();
    field->setText(QString());
    field->setComplaint(QString());
    offLabel->setText(text);
    offLabel->show();
}

void HexColorField::emitEdited(const QString& hex) {
    stored = hex;
    Q_EMIT edited(hex);
}

void HexColorField::typed(const QString& text) {
    const auto color = colorFromHex(text);
    const bool isKeyword = !keyword.isEmpty() && text.trimmed().toLower() == keyword;
    if (!color && !isKeyword) {
        field->setComplaint(complaint());
        return;
    }
    field->setComplaint(QString());
    emitEdited(isKeyword ? keyword : hexString(*color));
}

void HexColorField::finishTyping() {
    // In full, as it is stored; a text that is no colour stays as it is, marked.
    if (!field->hasComplaint() && field->text() != stored) {
        field->setText(stored);
    }
}

void HexColorField::openDialog() {
    auto* dialog = new QColorDialog(swatch->color(), this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setOptions(QColorDialog::ShowAlphaChannel | QColorDialog::DontUseNativeDialog);
    dialog->setWindowTitle(name);
    dialog->setPalette(SettingsLook::palette());
    field->setComplaint(QString());
    connect(dialog, &QColorDialog::currentColorChanged, this,
            [this](const QColor& color) { emitEdited(hexString(color)); });
    connect(dialog, &QDialog::rejected, this, [this, before = stored] { emitEdited(before); });
    dialog->open();
}

}  // namespace vostel
