#pragma once

#include <vector>

#include <QWidget>

#include "app/settings/SettingsPage.h"
#include "core/AppContext.h"
#include "core/NotificationCenter.h"

class QLabel;

namespace vostel {

class SidebarRow;
class TextField;

// The left side of the settings window: a search field over the list of pages.
class SettingsSidebar : public QWidget {
    Q_OBJECT

  public:
    // Posted (by the delegate) when a module was switched on or off.
    static constexpr const char* modulesChanged = "modulesChanged";

    // The modules are those of the context, which is borrowed.
    SettingsSidebar(AppContext& context, const std::vector<SettingsPage>& pages,
                    QWidget* parent = nullptr);

    void select(const QString& id);
    // Only these pages are listed.
    void setListed(const QStringList& ids);
    void focusSearch();
    // Empties the search; false when it was empty.
    bool clearSearch();

  Q_SIGNALS:
    void chosen(const QString& id);           // by the user
    void searched(const QStringList& words);  // none: the search is over

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void attach();
    void draw(SidebarRow& row);

    AppContext& context;
    TextField* search;
    QLabel* nothingFound;
    std::vector<SidebarRow*> rows;
    std::vector<NotificationCenter::Subscription> subscriptions;
    std::vector<QMetaObject::Connection> connections;
};

}  // namespace vostel
