#include "app/DockIcon.h"

#include <QEvent>
#include <QGuiApplication>
#include <QWidget>

#include "app/AppIcon.h"
#include "app/settings/SettingsWindowController.h"

namespace vostel {

class DockIcon::Entry : public QWidget {
  public:
    explicit Entry(std::function<void()> call) : activated(std::move(call)) {
        setWindowTitle(QStringLiteral("Vostel"));
        setWindowIcon(appIcon());
        setFixedSize(1, 1);
        showMinimized();
    }

  protected:
    void changeEvent(QEvent* event) override {
        if (event->type() == QEvent::WindowStateChange && !isMinimized()) {
            // Queued: this window goes when the settings window comes.
            QMetaObject::invokeMethod(qApp, activated, Qt::QueuedConnection);
        }
        QWidget::changeEvent(event);
    }

  private:
    std::function<void()> activated;
};

DockIcon::DockIcon(AppSettings& appSettings, SettingsWindowController& settingsWindow,
                   std::function<void()> call)
    : settings(appSettings), window(settingsWindow), activated(std::move(call)) {}

DockIcon::~DockIcon() = default;

void DockIcon::apply() {
    const bool hasTaskbar = QGuiApplication::platformName() != QStringLiteral("offscreen");
    if (!hasTaskbar || !settings.showDock() || window.isOpen()) {
        entry.reset();
    } else if (!entry) {
        entry = std::make_unique<Entry>(activated);
    }
}

}  // namespace vostel
