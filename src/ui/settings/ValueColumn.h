#pragma once

#include <QWidget>

class QLabel;

namespace vostel {

// The column of values: either an editor or a quiet text, both at the same left edge.
class ValueColumn : public QWidget {
    Q_OBJECT

  public:
    explicit ValueColumn(QWidget* editor, QWidget* parent = nullptr);

    void showEditor();
    void showText(const QString& text);

  private:
    QWidget* editor;
    QLabel* label;
};

}  // namespace vostel
