#pragma once

#include <map>
#include <memory>
#include <set>
#include <vector>

#include <QPointer>

#include "combined/Catalog.h"
#include "combined/CombinedSettings.h"
#include "combined/JoinedImage.h"
#include "core/NotificationCenter.h"
#include "core/OncePerTurn.h"
#include "item/ShownItem.h"

namespace vostel {

class Popover;

// The combined item: several modules side by side in one status item, each with its own popover.
// The modules are instances of its own; they draw when they have something new, and all that is new
// in one turn of the event loop costs one image.
class CombinedModule : public ShownItem, public MenubarModule {
    Q_OBJECT

  public:
    // Borrows both references.
    CombinedModule(AppContext& context, CombinedSettings& settings, Catalog catalog);
    ~CombinedModule() override;

    void start() override;
    void stop() override;

    std::optional<StatusImage> menubarImage(const ImageContext& context) override;
    QString valueText() const override;
    bool isReady() const override;  // all segments are
    // "segments": for each its "id" and its own values.
    QVariantMap statusValues() const override;
    void tick() override;

    // Where the segments stand in the image that the bar shows; empty while there is nothing but
    // the placeholder, and in a square cell.
    const std::vector<SegmentRange>& segmentRanges() const { return ranges; }

  private:
    struct Segment {
        QString id;
        std::unique_ptr<EmbeddableModule> module;
    };
    struct CachedImage {
        ImageContext context;
        StatusImage image;
    };

    void clicked(const StatusItemClick& click) override;
    void imagesWanted() override { render(); }
    void closePopover() override;

    void rebuild();
    void clearSegments();
    std::unique_ptr<EmbeddableModule> makeModule(const QString& id) const;
    Segment* find(const QString& id);
    QStringList segmentIds() const;

    void settingsChanged();
    void allDirty();
    void render();
    JoinedImage compose(const ImageContext& context);
    StatusImage imageOf(const Segment& segment, const ImageContext& context);

    void openUnder(const QString& id, const QRect& item);
    void openWhere(const QString& id, const StatusItemClick& click);
    Popover* preparePopover(Segment& segment);
    void choose(const StatusItemClick& click);

    CombinedSettings& settings;
    const Catalog catalog;
    std::vector<Segment> segments;
    std::vector<SegmentRange> ranges;
    double imageWidth = 0;                  // points, of the image that the bar shows
    std::vector<ImageContext> barContexts;  // what the bar wants: these images are kept
    std::map<QString, std::vector<CachedImage>> imageCache;
    bool presented = false;   // since it started
    std::set<QString> dirty;  // their images must be fetched again
    QPointer<Popover> lastPopover;
    std::vector<NotificationCenter::Subscription> subscriptions;
    OncePerTurn renderScheduled{this, [this] { render(); }};
    OncePerTurn changes{this, [this] { settingsChanged(); }};
};

}  // namespace vostel
