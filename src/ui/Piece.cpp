#include "ui/Piece.h"

#include <QAccessibleWidget>
#include <QEvent>

namespace vostel {

namespace {

QAccessibleInterface* makeAccessible(const QString&, QObject* object) {
    auto* piece = qobject_cast<Piece*>(object);
    return piece ? new QAccessibleWidget(piece, piece->role()) : nullptr;
}

}  // namespace

Piece::Piece(QAccessible::Role role, QWidget* parent) : QWidget(parent), accessibleRole(role) {
    static const bool installed = [] {
        QAccessible::installFactory(makeAccessible);
        return true;
    }();
    Q_UNUSED(installed)
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
