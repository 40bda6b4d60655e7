#include "ui/settings/PaintedButton.h"

#include <QKeyEvent>

namespace vostel {

PaintedButton::PaintedButton(const QString& name, QWidget* parent) : QAbstractButton(parent) {
    setAccessibleName(name);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void PaintedButton::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();
        return;
    }
    QAbstractButton::keyPressEvent(event);
}

}  // namespace vostel
