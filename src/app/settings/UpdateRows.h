#pragma once

#include "app/updates/UpdateController.h"
#include "ui/settings/SettingsRow.h"

namespace vostel {

class TextButton;

// "Check for Updates…", the version that runs, and how the check goes.
class UpdateCheckRow : public SettingsRow {
    Q_OBJECT

  public:
    // Borrows the controller.
    explicit UpdateCheckRow(UpdateController& updates, QWidget* parent = nullptr);

    void refresh() override;

  private:
    UpdateController& updates;
    TextButton* button;
};

// The version that is available and the way to it; hidden while there is none.
class UpdateOfferRow : public SettingsRow {
    Q_OBJECT

  public:
    explicit UpdateOfferRow(UpdateController& updates, QWidget* parent = nullptr);

    void refresh() override;

  private:
    UpdateController& updates;
    TextButton* notes;
};

// Why an update in place cannot work, with a way to the program's file.
class InstallLocationRow : public QWidget {
    Q_OBJECT

  public:
    InstallLocationRow(const QString& hint, const QString& program, QWidget* parent = nullptr);
};

}  // namespace vostel
