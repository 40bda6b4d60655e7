#pragma once

#include <QLineEdit>

namespace vostel {

// A line of text in the look of the settings. A text that is not accepted can be marked.
class TextField : public QLineEdit {
    Q_OBJECT

  public:
    explicit TextField(const QString& accessibleName, QWidget* parent = nullptr);

    // What is wrong with the text, as tool tip and to assistive technology; empty: nothing.
    void setComplaint(const QString& complaint);
    bool hasComplaint() const { return marked; }

    // Room for a symbol at the left edge.
    void setSymbol(const QString& name);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {60, sizeHint().height()}; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString symbol;
    bool marked = false;
};

}  // namespace vostel
