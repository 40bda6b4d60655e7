#include "combined/CombinedModule.h"

#include <algorithm>

#include "render/MenuBarImage.h"
#include "statusbar/PlainText.h"
#include "ui/Popover.h"

namespace vostel {

namespace {

constexpr QSizeF placeholderSize(16, 14);  // points, of its symbol

const ShownItem* shownOf(const EmbeddableModule& module) {
    return dynamic_cast<const ShownItem*>(&module);
}

QString textOf(const EmbeddableModule& module) {
    const ShownItem* shown = shownOf(module);
    return shown != nullptr ? shown->valueText() : QString();
}

}  // namespace

CombinedModule::CombinedModule(AppContext& appContext, CombinedSettings& combinedSettings,
                               Catalog available)
    : ShownItem(appContext, {QStringLiteral("combined"), QStringLiteral("Combined"),
                             QStringLiteral("Combined monitors")}),
      settings(combinedSettings),
      catalog(std::move(available)) {}

CombinedModule::~CombinedModule() {
    stop();
}

void CombinedModule::start() {
    presented = false;
    makeStatusItem();
    subscriptions.push_back(context.notifications.subscribe(CombinedSettings::changeNotification,
                                                            [this] { changes.request(); }));
    subscriptions.push_back(
        context.notifications.subscribe("globalSettingsChanged", [this] { allDirty(); }));
    rebuild();
}

void CombinedModule::stop() {
    subscriptions.clear();
    clearSegments();
    removeStatusItem();
}

void CombinedModule::rebuild() {
    clearSegments();
    for (const QString& id : settings.orderedEnabledIDs()) {
        auto module = makeModule(id);
        if (!module) {
            continue;
        }
        module->onImageChanged = [this, id] {
            dirty.insert(id);
            renderScheduled.request();
        };
        segments.push_back({id, std::move(module)});
        segments.back().module->startEmbedded();
    }
    render();
}

void CombinedModule::clearSegments() {
    closePopover();  // while there is somebody to be told
    for (const Segment& segment : segments) {
        segment.module->onImageChanged = nullptr;
        segment.module->stopEmbedded();
    }
    segments.clear();
    imageCache.clear();
    dirty.clear();
    ranges.clear();
}

std::unique_ptr<EmbeddableModule> CombinedModule::makeModule(const QString& id) const {
    const auto entry = std::find_if(catalog.begin(), catalog.end(),
                                    [&](const CatalogEntry& each) { return each.id == id; });
    return entry != catalog.end() ? entry->make() : nullptr;
}

CombinedModule::Segment* CombinedModule::find(const QString& id) {
    const auto found = std::find_if(segments.begin(), segments.end(),
                                    [&](const Segment& segment) { return segment.id == id; });
    return found != segments.end() ? &*found : nullptr;
}

QStringList CombinedModule::segmentIds() const {
    QStringList ids;
    for (const Segment& segment : segments) {
        ids << segment.id;
    }
    return ids;
}

void CombinedModule::settingsChanged() {
    if (status() == nullptr) {
        return;
    }
    if (settings.orderedEnabledIDs() == segmentIds()) {
        render();
    } else {
        rebuild();
    }
}

void CombinedModule::allDirty() {
    for (const Segment& segment : segments) {
        dirty.insert(segment.id);
    }
    renderScheduled.request();
}

void CombinedModule::render() {
    if (status() == nullptr) {
        return;
    }
    barContexts = status()->wantedImages();
    for (auto& [id, images] : imageCache) {
        std::erase_if(images, [&, stale = dirty.contains(id)](const CachedImage& cached) {
            return stale || std::find(barContexts.begin(), barContexts.end(), cached.context) ==
                                barContexts.end();
        });
    }
    dirty.clear();
    std::vector<StatusImage> images;
    for (const ImageContext& wanted : barContexts) {
        JoinedImage drawn = compose(wanted);
        if (images.empty()) {
            ranges = std::move(drawn.ranges);
            imageWidth = drawn.image.size.width();
        }
        images.push_back(std::move(drawn.image));
    }
    // At first it waits for all; later a new segment has its place at once.
    presented = presented || isReady();
    if (presented) {
        showImages(std::move(images));
    }
    Q_EMIT rendered();
}

// What the bar wants is kept until its segment has something new. Others who look (the settings
// window) get theirs drawn for them unless it is the same.
StatusImage CombinedModule::imageOf(const Segment& segment, const ImageContext& wanted) {
    std::vector<CachedImage>& images = imageCache[segment.id];
    const auto cached = std::find_if(images.begin(), images.end(), [&](const CachedImage& each) {
        return each.context == wanted;
    });
    if (cached != images.end()) {
        return cached->image;
    }
    StatusImage image = segment.module->menubarImage(wanted).value_or(StatusImage());
    if (!image.isNull() &&
        std::find(barContexts.begin(), barContexts.end(), wanted) != barContexts.end()) {
        images.push_back({wanted, image});
    }
    return image;
}

JoinedImage CombinedModule::compose(const ImageContext& wanted) {
    std::vector<SegmentImage> row;
    for (const Segment& segment : segments) {
        StatusImage image = imageOf(segment, wanted);
        if (image.isNull()) {
            continue;
        }
        if (wanted.shape == ImageShape::Square) {
            return {std::move(image), {}};  // one value that can be read, not four that cannot
        }
        row.push_back({segment.id, std::move(image)});
    }
    if (row.empty()) {
        return {
            MenuBarImage::placeholder(QStringLiteral("rectangle.3.group"), placeholderSize, wanted),
            {}};
    }
    return joined(row, settings.spacing(), wanted);
}

std::optional<StatusImage> CombinedModule::menubarImage(const ImageContext& wanted) {
    return compose(wanted).image;
}

QString CombinedModule::valueText() const {
    QStringList texts;
    for (const Segment& segment : segments) {
        if (const QString text = textOf(*segment.module); !text.isEmpty()) {
            texts << text;
        }
    }
    return texts.isEmpty() ? QStringLiteral("Combined: nothing enabled")
                           : texts.join(QStringLiteral(", "));
}

bool CombinedModule::isReady() const {
    return std::ranges::all_of(segments, [](const Segment& segment) {
        const ShownItem* shown = shownOf(*segment.module);
        return shown == nullptr || shown->isReady();
    });
}

QVariantMap CombinedModule::statusValues() const {
    QVariantList list;
    for (const Segment& segment : segments) {
        const ShownItem* shown = shownOf(*segment.module);
        QVariantMap values = shown != nullptr ? shown->statusValues() : QVariantMap();
        values.insert(QStringLiteral("id"), segment.id);
        list << values;
    }
    return {{QStringLiteral("segments"), list}};
}

void CombinedModule::tick() {
    for (const Segment& segment : segments) {
        if (auto* shown = dynamic_cast<ShownItem*>(segment.module.get())) {
            shown->tick();
        }
    }
}

void CombinedModule::closePopover() {
    if (lastPopover) {
        lastPopover->close();
    }
}

void CombinedModule::clicked(const StatusItemClick& click) {
    if (lastPopover &&
        (lastPopover->isVisible() || lastPopover->closedByPressAt(click.globalPosition))) {
        lastPopover->close();
        return;
    }
    if (segments.empty()) {
        return;
    }
    const auto item = status()->screenRect();
    if (segments.size() == 1 && !item) {
        openWhere(segments.front().id, click);
    } else if (!item || barContexts.front().shape == ImageShape::Square) {
        choose(click);
    } else {
        const double x =
            click.globalPosition.x() - item->left() - imageOffset(item->width(), imageWidth);
        const SegmentRange* hit = segmentAt(ranges, x);
        openUnder(hit != nullptr ? hit->id : segments.back().id, *item);
    }
}

Popover* CombinedModule::preparePopover(Segment& segment) {
    segment.module->detailPopoverWillShow();
    Popover* popover = segment.module->detailPopover();
    connect(
        popover, &Popover::closed, this,
        [this, id = segment.id] {
            if (Segment* owner = find(id)) {
                owner->module->detailPopoverDidClose();
            }
        },
        static_cast<Qt::ConnectionType>(Qt::DirectConnection | Qt::SingleShotConnection));
    lastPopover = popover;
    return popover;
}

void CombinedModule::openUnder(const QString& id, const QRect& item) {
    Segment* segment = find(id);
    if (segment == nullptr) {
        return;
    }
    const double offset = imageOffset(item.width(), imageWidth);
    const auto range = std::find_if(ranges.begin(), ranges.end(),
                                    [&](const SegmentRange& each) { return each.id == id; });
    const SegmentRange place =
        range != ranges.end() ? *range : SegmentRange{id, -offset, item.width() - offset};
    const QRectF anchor(item.left() + offset + place.minX, item.top(), place.maxX - place.minX,
                        item.height());
    preparePopover(*segment)->showAt(anchor.toRect());
}

void CombinedModule::openWhere(const QString& id, const StatusItemClick& click) {
    if (Segment* segment = find(id); segment != nullptr && status() != nullptr) {
        showBeside(*preparePopover(*segment), click);
    }
}

// For a host that keeps to itself where the item stands, or shows one segment for all of them.
void CombinedModule::choose(const StatusItemClick& click) {
    auto menu = std::make_unique<QMenu>();
    for (const Segment& segment : segments) {
        const QString text = PlainText::inMenu(settings.title(segment.id)) + u'\t' +
                             PlainText::inMenu(textOf(*segment.module));
        // Queued: the popover opens when the menu is gone.
        connect(
            menu->addAction(text), &QAction::triggered, this,
            [this, id = segment.id, click] { openWhere(id, click); }, Qt::QueuedConnection);
    }
    popUp(std::move(menu), click);
}

}  // namespace vostel
