#pragma once

#include <QTimer>

#include "ui/Piece.h"

namespace vostel {

class ActionButton;

// A quiet key at the left and its value at the right, on request with a button that copies the
// value.
class KeyValueRow : public Piece {
    Q_OBJECT

  public:
    explicit KeyValueRow(const QString& key, QWidget* parent = nullptr);

    void setKey(const QString& text);
    void setValue(const QString& text);
    // An invalid colour is the text colour.
    void setValueColor(const QColor& color);
    // Shows the button "Copy " + `what`; empty takes it away. No button while the value is empty.
    void setCopyable(const QString& what);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void copy();
    void placeButton();
    void showCopied(bool on);
    void refresh();

    QString key;
    QString value;
    QString what;
    QColor valueColor;
    ActionButton* button = nullptr;
    bool copied = false;
    QTimer copiedTimer;
};

}  // namespace vostel
