#pragma once

#include <map>
#include <vector>

#include <QWidget>

#include "app/settings/SettingsPage.h"
#include "core/AppContext.h"

class QStackedWidget;

namespace vostel {

class AppSettings;
class SettingsPanel;
class SettingsSidebar;

// The settings window: the sidebar and the panel of the chosen page. Escape and Ctrl+W close it.
class SettingsWindow : public QWidget {
    Q_OBJECT

  public:
    // Borrows the context and the settings, which remember the window's size. At least one page.
    SettingsWindow(AppContext& context, AppSettings& settings, std::vector<SettingsPage> pages);

    // Shows a page; an unknown or empty id is the page shown, at first the first one.
    void select(const QString& id);
    const QString& selected() const { return current; }
    QStringList pageIds() const;
    SettingsPanel* panel(const QString& id);  // made when needed; null: no such page

    // The whole page, as high as it takes, for snapshots.
    QImage snapshot(const QString& id, double scale);

  Q_SIGNALS:
    void closed();

  protected:
    void closeEvent(QCloseEvent* event) override;
    bool event(QEvent* event) override;

  private:
    void search(const QStringList& words);
    void restoreSize();

    AppSettings& settings;
    const std::vector<SettingsPage> pages;
    SettingsSidebar* sidebar;
    QStackedWidget* stack;
    std::map<QString, SettingsPanel*> panels;
    QString current;
};

}  // namespace vostel
