#include "ui/settings/SettingsCard.h"

#include <QPainter>
#include <QVBoxLayout>

#include "ui/Theme.h"
#include "ui/settings/SettingsLook.h"

namespace vostel {

SettingsCard::SettingsCard(QWidget* parent) : QWidget(parent), column(new QVBoxLayout(this)) {
    column->setContentsMargins(0, 1, 0, 1);
    column->setSpacing(1);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void SettingsCard::add(QWidget* row) {
    column->addWidget(row);
}

void SettingsCard::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme& theme = Theme::current();
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.panel);
    painter.drawRoundedRect(rect(), SettingsLook::radius + 2, SettingsLook::radius + 2);
    for (int i = 1; i < column->count(); ++i) {
        const QWidget* row = column->itemAt(i)->widget();
        if (row != nullptr && row->isVisibleTo(this)) {
            painter.fillRect(
                QRectF(SettingsLook::rowMargin, row->y() - 1, width() - SettingsLook::rowMargin, 1),
                theme.divider);
        }
    }
}

}  // namespace vostel
