#pragma once

#include <QString>

#include "statusbar/StatusBar.h"

namespace vostel {

class ItemBar;

// An item of a bar that draws its items itself. It may outlive its bar; then it does nothing.
class BarItem final : public StatusItem {
    Q_OBJECT

  public:
    // `id` is unique within the bar.
    BarItem(ItemBar& owner, const QString& name, int id);
    ~BarItem() override;

    std::vector<ImageContext> wantedImages() const override;
    void setImages(std::vector<StatusImage> images) override;
    void setToolTip(const QString& title, const QString& value) override;
    std::optional<QRect> screenRect() const override;

    int id() const { return number; }
    const QString& name() const { return autosaveName; }
    const StatusImage& image() const { return shown; }
    const QString& title() const { return titleText; }
    const QString& value() const { return valueText; }
    int pixelWidth() const { return shown.image.width(); }

    ItemBar* owner() const { return bar; }  // null: the bar is gone
    // The bar is going away.
    void detach() { bar = nullptr; }

  private:
    ItemBar* bar;  // null once the bar is gone
    QString autosaveName;
    int number;
    StatusImage shown;  // null: hidden
    QString titleText;
    QString valueText;
};

}  // namespace vostel
