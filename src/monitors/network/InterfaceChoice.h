#pragma once

#include <vector>

#include <QPropertyNotifier>
#include <QWidget>

#include "monitors/network/NetworkSettings.h"

class QVBoxLayout;

namespace vostel {

class SettingsRow;

// Which interfaces count in the custom mode: one switch for each interface that is active now or was
// chosen before. Takes no room in the other modes.
class InterfaceChoice : public QWidget {
    Q_OBJECT

  public:
    explicit InterfaceChoice(NetworkSettings& settings, QWidget* parent = nullptr);

    // Shows what the settings hold now.
    void refresh();

  private:
    void makeRows(const QStringList& names);
    void choose(const QString& name, bool on);

    NetworkSettings& settings;
    QVBoxLayout* column;
    QStringList shown;
    std::vector<SettingsRow*> rows;
    QPropertyNotifier notifier;
};

}  // namespace vostel
