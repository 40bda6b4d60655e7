#pragma once

#include <QAbstractButton>
#include <QTimer>

namespace vostel {

// A small quiet address that is copied by a click, or by Space or Enter when reached with Tab, and
// then says so for a moment.
class AddressButton : public QAbstractButton {
    Q_OBJECT

  public:
    explicit AddressButton(QWidget* parent = nullptr);

    void setAddress(const QString& address);

    // As wide as the address needs, for a font of the widget's size.
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void copy();
    void describe();

    QString address;
    QTimer copiedTimer;  // runs while "Copied" is shown
};

}  // namespace vostel
