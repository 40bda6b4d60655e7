#pragma once

#include <functional>

#include <QColor>
#include <QWidget>

class QLabel;

namespace vostel {

class ColorSwatch;
class TextField;

// A colour as its hex text and as a swatch that opens a colour dialog (with opacity). A text that
// is no colour is marked and told to nobody.
class HexColorField : public QWidget {
    Q_OBJECT

  public:
    explicit HexColorField(const QString& name, QWidget* parent = nullptr);

    // A word that is accepted in place of a colour ("auto").
    void setKeyword(const QString& word) { keyword = word; }

    // Shows a stored text; `fallback` is the colour shown when it is no colour. What the user is
    // typing is left alone when it means the same.
    void setHex(const QString& hex, const QColor& fallback);

    // The colour stands for a value that cannot be edited here: swatch and `text` only.
    void setOff(const QString& text, const QColor& color);

  Q_SIGNALS:
    void edited(const QString& hex);  // "#RRGGBBAA", or the keyword

  private:
    void typed(const QString& text);
    void finishTyping();
    void openDialog();
    void emitEdited(const QString& hex);

    QString name;
    QString keyword;
    QString stored;
    QColor fallback;
    ColorSwatch* swatch;
    TextField* field;
    QLabel* offLabel;
};

}  // namespace vostel
