#pragma once

#include <functional>
#include <memory>

#include <QPointer>

#include "app/SettingsExchange.h"

class QAbstractFileIconProvider;
class QDialog;
class QFileDialog;
class QWidget;

namespace vostel {

// Export and import of the settings as the user meets them: panels, the question before an import,
// and one alert for whatever fails. One panel at a time, over the settings window when that is
// open.
class TransferPanels : public QObject {
    Q_OBJECT

  public:
    // Borrows all. `window` tells the settings window, or null.
    TransferPanels(DefaultsStore& store, Background& background, SettingsExchange& exchange,
                   std::function<QWidget*()> window);
    ~TransferPanels() override;

    void exportSettings();
    void importSettings();
    void present(const QString& error, const QString& detail);

  private:
    QFileDialog* filePanel(const QString& title);
    // Shows a dialog that deletes itself when it closes.
    void open(QDialog* dialog);
    // Brings the panel forward that is shown; false when there is none.
    bool bringsForward() const;
    void write(const QString& path);
    void read(const QString& path);
    void askToReplace(const PropertyList& settings);

    DefaultsStore& defaults;
    Background& background;
    SettingsExchange& exchange;
    const std::function<QWidget*()> window;
    std::unique_ptr<QAbstractFileIconProvider> icons;  // from the first panel on
    QPointer<QDialog> shown;
};

}  // namespace vostel
