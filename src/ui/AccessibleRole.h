#pragma once

#include <QAccessible>

class QWidget;

namespace vostel {

// What assistive technology is told that a widget is, where the toolkit cannot know: a painted
// widget, a window that is no dialog of the toolkit's own.
void setAccessibleRole(QWidget& widget, QAccessible::Role role);

}  // namespace vostel
