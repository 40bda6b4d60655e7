#pragma once

#include <QAbstractButton>

namespace vostel {

// A flat button of a symbol and, unless empty, a text. Reached with Tab; Space, Enter and a click
// activate it. The ring shows where the keyboard is and never after a click.
class ActionButton : public QAbstractButton {
    Q_OBJECT

  public:
    // `name` is the text when `showsText`, and always the tool tip and the accessible name.
    ActionButton(const QString& symbol, const QString& name, bool showsText,
                 QWidget* parent = nullptr);

    void setSymbol(const QString& name);
    void setName(const QString& name);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QString symbol;
    bool showsText;
};

}  // namespace vostel
