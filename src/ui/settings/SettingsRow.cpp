#include "ui/settings/SettingsRow.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>

#include "statusbar/PlainText.h"
#include "ui/Theme.h"
#include "ui/settings/SettingsLook.h"

namespace vostel {

SettingsRow::SettingsRow(const QString& title, QWidget* parent)
    : QWidget(parent), titleLabel(PlainText::label()), hintLabel(PlainText::label()) {
    setMinimumHeight(SettingsLook::rowHeight);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    hintLabel->setForegroundRole(QPalette::PlaceholderText);
    hintLabel->setFont(styled(font(), TextStyle::Small));
    hintLabel->setWordWrap(true);
    hintLabel->hide();
    auto* texts = new QVBoxLayout;
    texts->setSpacing(1);
    texts->addStretch();
    texts->addWidget(titleLabel);
    texts->addWidget(hintLabel);
    texts->addStretch();
    line = new QHBoxLayout(this);
    setRoomAbove(4);
    line->setSpacing(8);
    line->addLayout(texts, 1);
    setTitle(title);
}

void SettingsRow::setTitle(const QString& text) {
    name = text;
    titleLabel->setText(PlainText::shown(text).replace(u'\n', u' '));
}

void SettingsRow::setHint(const QString& text) {
    hintLabel->setText(text);
    hintLabel->setVisible(!text.isEmpty());
    setRoomAbove(text.isEmpty() ? 4 : 8);  // several lines of text want more air
}

void SettingsRow::setRoomAbove(int room) {
    line->setContentsMargins(SettingsLook::rowMargin, room, SettingsLook::rowMargin - 3, room);
}

QString SettingsRow::searchText() const {
    return name + u' ' + hintLabel->text() + u' ' + keywords;
}

void SettingsRow::setFound(bool value) {
    if (found != value) {
        found = value;
        update();
    }
}

void SettingsRow::addControl(QWidget* control) {
    line->addWidget(control, 0, Qt::AlignVCenter);
}

void SettingsRow::paintEvent(QPaintEvent*) {
    if (found) {
        QColor mark = Theme::current().accent;
        mark.setAlpha(46);
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(mark);
        painter.drawRoundedRect(QRectF(rect()).adjusted(4, 3, -4, -3), SettingsLook::radius,
                                SettingsLook::radius);
    }
}

}  // namespace vostel
