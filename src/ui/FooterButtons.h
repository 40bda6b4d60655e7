#pragma once

#include <QWidget>

namespace vostel {

class ActionButton;

// "Open in System Monitor", by the name of the monitor that is installed, and "Settings", under a
// dividing line. Where no monitor is installed its button is disabled and says so.
class FooterButtons : public QWidget {
    Q_OBJECT

  public:
    explicit FooterButtons(bool withMonitor = true, QWidget* parent = nullptr);

  Q_SIGNALS:
    void monitorRequested();
    void settingsRequested();

  protected:
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void nameMonitor();

    ActionButton* monitor = nullptr;  // null without a monitor button
};

}  // namespace vostel
