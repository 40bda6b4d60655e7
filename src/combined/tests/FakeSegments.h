#pragma once

#include <map>

#include <QTemporaryDir>

#include "combined/CombinedModule.h"
#include "core/Background.h"
#include "core/GlobalSettings.h"
#include "core/TickScheduler.h"
#include "platform/Platform.h"
#include "statusbar/OffscreenBar.h"
#include "ui/Popover.h"

namespace vostel {

// What became of the modules of one id, and what they draw.
struct FakeState {
    int width = 30;  // points; 0: nothing to draw yet
    bool isTemplate = false;
    QColor color = Qt::red;
    int made = 0, started = 0, stopped = 0, drawn = 0, willShow = 0, didClose = 0;
    class FakeSegment* live = nullptr;
};

class FakeSegment : public EmbeddableModule {
  public:
    explicit FakeSegment(FakeState& shared) : state(shared) {
        ++state.made;
        state.live = this;
    }
    ~FakeSegment() override {
        if (state.live == this) {
            state.live = nullptr;
        }
    }
    void start() override { std::abort(); }  // a segment has no status item
    void stop() override {
        ++state.stopped;
        popover.reset();
    }
    void startEmbedded() override { ++state.started; }
    void stopEmbedded() override { stop(); }
    std::optional<StatusImage> menubarImage(const ImageContext& context) override {
        ++state.drawn;
        if (state.width == 0) {
            return std::nullopt;
        }
        const QSizeF size(context.shape == ImageShape::Square ? context.thickness : state.width,
                          context.thickness);
        QImage image((size * context.scale).toSize(), QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(context.scale);
        image.fill(state.color);
        return StatusImage{image, size, state.isTemplate};
    }
    Popover* detailPopover() override {
        if (!popover) {
            popover = std::make_unique<Popover>(QStringLiteral("Fake"));
        }
        return popover.get();
    }
    void detailPopoverWillShow() override { ++state.willShow; }
    void detailPopoverDidClose() override { ++state.didClose; }

  private:
    FakeState& state;
    std::unique_ptr<Popover> popover;
};

class NoOrder : public ItemOrderStore {
  public:
    QStringList itemOrder() const override { return {}; }
    void setItemOrder(const QStringList&) override {}
};

// A catalog of fakes "a", "b", "c", "d" and everything that the combined item needs.
struct FakeWorld {
    FakeWorld() {
        for (const char* id : {"a", "b", "c", "d"}) {
            settings.setEnabled(QLatin1String(id), true);
        }
    }
    static std::vector<CombinedSettings::Available> available() {
        std::vector<CombinedSettings::Available> result;
        for (const char* id : {"a", "b", "c", "d"}) {
            result.push_back({QLatin1String(id), QStringLiteral("Title ") + QLatin1String(id)});
        }
        return result;
    }
    Catalog catalog() {
        Catalog result;
        for (const CombinedSettings::Available& each : available()) {
            result.push_back({each.id, each.title, [this, id = each.id] {
                                  return std::make_unique<FakeSegment>(state[id]);
                              }});
        }
        return result;
    }

    QTemporaryDir folder;
    Platform platform = makeNullPlatform();
    Background background;
    DefaultsStore defaults{folder.filePath(QStringLiteral("s.plist")), nullptr};
    NotificationCenter notifications;
    TickScheduler scheduler{*platform.clock};
    GlobalSettings global{defaults, notifications};
    CombinedSettings settings{defaults, notifications, available()};
    std::map<QString, FakeState> state;
    NoOrder order;
    OffscreenBar bar{order};
};

}  // namespace vostel
