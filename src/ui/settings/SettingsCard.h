#pragma once

#include <QWidget>

class QVBoxLayout;

namespace vostel {

// A group of rows on a quiet ground, a thin line between them.
class SettingsCard : public QWidget {
    Q_OBJECT

  public:
    explicit SettingsCard(QWidget* parent = nullptr);

    // The card owns the row.
    void add(QWidget* row);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QVBoxLayout* column;
};

}  // namespace vostel
