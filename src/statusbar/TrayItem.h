#pragma once

#include <memory>
#include <optional>
#include <vector>

#include <QElapsedTimer>
#include <QImage>
#include <QPointer>
#include <QTimer>

#include "statusbar/BusLink.h"
#include "statusbar/StatusBar.h"
#include "statusbar/TrayPixmap.h"
#include "statusbar/UpdateLimit.h"

class QDBusPendingCallWatcher;

namespace vostel {

class TrayBar;
class TrayItemAdaptor;

// One item of the TrayBar. It has a connection of its own to the bus, because the protocol knows
// one item for each bus name, and an item leaves the tray only when its name leaves the bus.
class TrayItem final : public StatusItem {
    Q_OBJECT

  public:
    TrayItem(TrayBar& bar, const QString& busAddress, const QString& autosaveName);
    ~TrayItem() override;

    std::vector<ImageContext> wantedImages() const override;
    void setImages(std::vector<StatusImage> images) override;
    void setToolTip(const QString& title, const QString& value) override;
    std::optional<QRect> screenRect() const override { return {}; }

    // What hosts are told; it changes at most 4 times a second (tool tip: once).
    QString autosaveName() const { return id; }
    QString shownTitle() const { return shownTip.title; }
    TrayPixmaps shownPixmaps() const;
    TrayToolTip shownToolTip() const;

    // Whether its turn to register has come, is yet to come (the bus has not answered), or is under
    // way. None: it is in the tray, hidden, or given up.
    enum class Turn { None, Ahead, Here, Now };
    Turn turn() const;
    void registerItem();

    // A host reports a click; (0, 0) stands for a host that does not know where.
    void takeClick(Qt::MouseButton button, QPoint position);

  private:
    struct Tip {
        QString title;
        QString value;
        bool operator==(const Tip&) const = default;
    };
    // Whether the item's own name is on the bus.
    enum class NameState { None, Asked, Owned, Refused };

    double now() const { return static_cast<double>(elapsed.nsecsElapsed()) * 1e-9; }
    void exportItem();
    void joinBus();
    void forgetBus();
    void watcherChanged();
    void joinTray();
    void leaveTray();
    void takeNameReply(QDBusPendingCallWatcher& reply);
    void takeRegisterReply(QDBusPendingCallWatcher& reply);
    void publishImages();
    void publishTip();
    void complain(const QString& text);

    QPointer<TrayBar> bar;
    QString id;
    QString busName;
    BusLink link;
    std::unique_ptr<QObject> onBus;  // what hosts talk to; carries the adaptors
    TrayItemAdaptor* adaptor = nullptr;
    NameState nameState = NameState::None;
    bool unreachable = false;  // no connection to the bus, for now
    bool registered = false;
    QPointer<QDBusPendingCallWatcher> registering;
    int registerFailures = 0;
    QString complaint;  // the last one since it was in the tray

    QElapsedTimer elapsed;
    UpdateLimit imageLimit;
    UpdateLimit tipLimit;
    QTimer imageTimer;
    QTimer tipTimer;
    QTimer registerTimer;
    std::vector<QImage> images;       // as last given; empty: hidden
    std::vector<QImage> shownImages;  // as last announced
    Tip tip;
    Tip shownTip;
};

}  // namespace vostel
