#include "ui/Piece.h"

#include <QEvent>

#include "ui/AccessibleRole.h"

namespace vostel {

Piece::Piece(QAccessible::Role role, QWidget* parent) : QWidget(parent) {
    setAccessibleRole(*this, role);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void Piece::changeEvent(QEvent* event) {
    if (event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange ||
        event->type() == QEvent::StyleChange) {
        updateGeometry();
        update();
    }
    QWidget::changeEvent(event);
}

}  // namespace vostel
