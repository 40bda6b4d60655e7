#pragma once

#include <QImage>

#include "app/settings/SettingsPage.h"
#include "statusbar/StatusImage.h"
#include "ui/settings/PaintedButton.h"

namespace vostel {

class ToggleSwitch;

// One page in the sidebar. That of a module has its switch, and its item in small as the bar shows
// it.
class SidebarRow : public PaintedButton {
    Q_OBJECT

  public:
    explicit SidebarRow(const SettingsPage& page, QWidget* parent = nullptr);

    const QString& id() const { return pageId; }

    void setOn(bool on);
    // The item's image as it stands on a bar of this appearance; a null image: none.
    void setMiniature(const QImage& image, Appearance appearance);

    QSize sizeHint() const override;

  Q_SIGNALS:
    void switched(bool on);  // by the user

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void paintMiniature(QPainter& painter) const;

    QString pageId;
    QString symbol;
    ToggleSwitch* toggle = nullptr;
    QImage miniature;
    Appearance barAppearance = Appearance::Dark;
};

}  // namespace vostel
