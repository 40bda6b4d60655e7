#pragma once

#include <utility>

#include <QAccessible>
#include <QWidget>

namespace vostel {

// Base of what popovers are made of: a painted widget that is redrawn only when what it shows
// changed, is told to assistive technology under its accessible name, and takes no part in the
// keyboard's way through the popover. Margins left and right are the popover's.
class Piece : public QWidget {
    Q_OBJECT

  public:
    explicit Piece(QAccessible::Role role, QWidget* parent = nullptr);

  protected:
    // Takes the new value; true (and a redraw to come) when it differs.
    template <typename Value>
    bool assign(Value& member, Value value) {
        if (member == value) {
            return false;
        }
        member = std::move(value);
        update();
        return true;
    }

    void changeEvent(QEvent* event) override;
};

}  // namespace vostel
