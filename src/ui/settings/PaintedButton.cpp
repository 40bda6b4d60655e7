#include "ui/settings/PaintedButton.h"

#include <QAccessibleWidget>
#include <QKeyEvent>

namespace vostel {

namespace {

// Assistive technology presses as the pointer does. The toolkit's own interface would toggle a
// checkable button behind its owner's back, without clicked().
class ButtonAccessible final : public QAccessibleWidget {
  public:
    explicit ButtonAccessible(QAbstractButton* button) : QAccessibleWidget(button) {}

    QAccessible::Role role() const override {
        return !button()->isCheckable()    ? QAccessible::Button
               : button()->autoExclusive() ? QAccessible::RadioButton
                                           : QAccessible::CheckBox;
    }
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = button()->isCheckable();
        state.checked = button()->isChecked();
        state.pressed = button()->isDown();
        return state;
    }

    QStringList actionNames() const override {
        return QStringList{button()->isCheckable() ? toggleAction() : pressAction()} +
               QAccessibleWidget::actionNames();
    }
    void doAction(const QString& name) override {
        if (name == toggleAction() || name == pressAction()) {
            button()->click();
        } else {
            QAccessibleWidget::doAction(name);
        }
    }

  private:
    QAbstractButton* button() const { return static_cast<QAbstractButton*>(object()); }
};

QAccessibleInterface* makeAccessible(const QString&, QObject* object) {
    auto* button = qobject_cast<PaintedButton*>(object);
    return button != nullptr ? new ButtonAccessible(button) : nullptr;
}

}  // namespace

PaintedButton::PaintedButton(const QString& name, QWidget* parent) : QAbstractButton(parent) {
    QAccessible::installFactory(makeAccessible);  // once, however often it is asked
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
