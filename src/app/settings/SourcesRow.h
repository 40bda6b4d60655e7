#pragma once

#include <QTimer>

#include "core/AppContext.h"
#include "ui/settings/ButtonRow.h"

namespace vostel {

// Which sources could not be read, and the button that copies what a report of a fault needs.
class SourcesRow : public ButtonRow {
    Q_OBJECT

  public:
    // Borrows the context.
    explicit SourcesRow(AppContext& context, QWidget* parent = nullptr);

    void refresh() override;

  protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    AppContext& context;
    QTimer timer;  // while it is seen
};

}  // namespace vostel
