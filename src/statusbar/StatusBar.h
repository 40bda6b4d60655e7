#pragma once

#include <memory>
#include <optional>
#include <vector>

#include <QObject>
#include <QPoint>
#include <QRect>
#include <QStringList>

#include "statusbar/StatusImage.h"

namespace vostel {

struct StatusItemClick {
    Qt::MouseButton button = Qt::LeftButton;
    Qt::KeyboardModifiers modifiers = Qt::NoModifier;
    QPoint globalPosition;         // logical pixels of the desktop
    std::optional<double> localX;  // points from the item's left edge, when the host tells it
};

// One item in a bar. The bar owns nothing of it: whoever made it deletes it, and the item then
// leaves the bar.
class StatusItem : public QObject {
    Q_OBJECT

  public:
    // The images that the bar can use right now, at least one. A bar on one screen wants one; a
    // tray wants the same image at several scales.
    virtual std::vector<ImageContext> wantedImages() const = 0;

    // One image for each of wantedImages(), in that order. Null images hide the item.
    virtual void setImages(std::vector<StatusImage> images) = 0;

    // `title` says what the item is ("CPU usage"), `value` what it shows now ("CPU 12 %, ...").
    // Both go to the tool tip and to assistive technology.
    virtual void setToolTip(const QString& title, const QString& value) = 0;

    // Where the item stands on the desktop, in logical pixels; empty when the host keeps that to
    // itself.
    virtual std::optional<QRect> screenRect() const = 0;

  Q_SIGNALS:
    // A mouse button was released over the item (or the host said so).
    void clicked(const vostel::StatusItemClick& click);
    // Appearance, scale or shape changed: draw again.
    void imagesWanted();
};

class StatusBar : public QObject {
    Q_OBJECT

  public:
    // `autosaveName` names the item for good ("vostel.cpu"): its place is kept under it.
    virtual std::unique_ptr<StatusItem> makeItem(const QString& autosaveName) = 0;

    // Height of the bar in points.
    virtual double thickness() const = 0;
};

// Where a bar keeps the order of its items between runs.
class ItemOrderStore {
  public:
    virtual ~ItemOrderStore() = default;
    // Autosave names from left to right: the order the user made, or the default one.
    virtual QStringList itemOrder() const = 0;
    virtual void setItemOrder(const QStringList& names) = 0;
};

}  // namespace vostel
