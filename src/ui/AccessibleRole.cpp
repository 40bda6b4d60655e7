#include "ui/AccessibleRole.h"

#include <QAccessibleWidget>
#include <QVariant>
#include <QWidget>

namespace vostel {

namespace {

constexpr const char* property = "accessibleRole";

QAccessibleInterface* makeAccessible(const QString&, QObject* object) {
    const QVariant role = object->isWidgetType() ? object->property(property) : QVariant();
    return role.isValid() ? new QAccessibleWidget(static_cast<QWidget*>(object),
                                                  static_cast<QAccessible::Role>(role.toInt()))
                          : nullptr;
}

}  // namespace

void setAccessibleRole(QWidget& widget, QAccessible::Role role) {
    QAccessible::installFactory(makeAccessible);  // once, however often it is asked
    widget.setProperty(property, static_cast<int>(role));
}

}  // namespace vostel
