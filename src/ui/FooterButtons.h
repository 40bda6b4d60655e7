#pragma once

#include <QWidget>

namespace vostel {

// "Open in Activity Monitor" and "Settings", under a dividing line.
class FooterButtons : public QWidget {
    Q_OBJECT

  public:
    explicit FooterButtons(bool withMonitor = true, QWidget* parent = nullptr);

  Q_SIGNALS:
    void monitorRequested();
    void settingsRequested();

  protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace vostel
