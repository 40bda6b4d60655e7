#include "statusbar/OffscreenBar.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

#include <QPointer>

#include "platform/LineOutput.h"
#include "statusbar/ImageFile.h"

namespace vostel {

OffscreenBar::OffscreenBar(ItemOrderStore& order, const OffscreenBarOptions& options)
    : ItemBar(order), choices(options) {
    for (QTimer* timer : {&imageTimer, &textTimer})
        timer->setSingleShot(true);
    connect(&imageTimer, &QTimer::timeout, this, &OffscreenBar::writeImage);
    connect(&textTimer, &QTimer::timeout, this, &OffscreenBar::printLine);
    itemResized();
}

void OffscreenBar::setOptions(const OffscreenBarOptions& options) {
    const ImageContext before = imageContext();
    choices = options;
    itemResized();
    if (imageContext() == before) return;
    // Whoever answers may delete items.
    std::vector<QPointer<BarItem>> all(items().begin(), items().end());
    for (const auto& item : all) {
        if (item) Q_EMIT item->imagesWanted();
    }
}

double OffscreenBar::thickness() const {
    return std::max(1.0, std::round(choices.thickness * choices.scale)) / choices.scale;
}

ImageContext OffscreenBar::imageContext() const {
    return {choices.appearance, ImageShape::Wide, choices.scale, thickness()};
}

std::vector<BarCell> OffscreenBar::cells(int* width) const {
    BarMetrics metrics = metricsFor(0, choices.scale);
    metrics.width = 2 * metrics.margin;
    for (const BarEntry& entry : entries()) {
        if (entry.width > 0) metrics.width += entry.width + 2 * metrics.padding;
    }
    metrics.width =
        std::max(metrics.width, static_cast<int>(std::lround(thickness() * choices.scale)));
    if (width) *width = metrics.width;
    return BarLayout::placed(entries(), metrics);
}

QImage OffscreenBar::image() const {
    int width = 0;
    const int height = static_cast<int>(std::lround(thickness() * choices.scale));
    const auto placed = cells(&width);
    QImage result = paintBar(QRect(0, 0, width, height), {choices.appearance, BarEdge::Top, height},
                             pictures(placed, height));
    result.setDevicePixelRatio(choices.scale);
    return result;
}

QString OffscreenBar::text() const {
    QStringList parts;
    for (const BarItem* item : items()) {
        // One item is one piece of one line, whatever its text holds.
        if (item->pixelWidth() > 0 && !item->value().isEmpty()) parts << item->value().simplified();
    }
    return parts.join(QStringLiteral("  "));
}

bool OffscreenBar::click(const QString& autosaveName, Qt::MouseButton button,
                         Qt::KeyboardModifiers modifiers) {
    for (BarItem* item : items()) {
        if (item->name() != autosaveName) continue;
        StatusItemClick click;
        click.button = button;
        click.modifiers = modifiers;
        if (const auto rect = itemRect(*item)) {
            click.globalPosition = rect->center();
            click.localX = item->pixelWidth() / choices.scale / 2;
        }
        Q_EMIT item->clicked(click);
        return true;
    }
    return false;
}

std::optional<QRect> OffscreenBar::itemRect(const BarItem& item) {
    for (const BarCell& cell : cells(nullptr)) {
        if (cell.id != item.id()) continue;
        const int left = cell.x + (cell.width - item.pixelWidth()) / 2;
        return QRectF(left / choices.scale, 0, item.pixelWidth() / choices.scale, thickness())
            .toRect();
    }
    return std::nullopt;
}

void OffscreenBar::wakeIn(QTimer& timer, const QElapsedTimer& last, int interval) {
    if (timer.isActive()) return;
    // Items come one by one at the start; the first picture and the first line are of all of them.
    constexpr qint64 gathering = 150;  // ms
    const qint64 wait =
        last.isValid() ? interval - last.elapsed() : std::min<qint64>(interval, gathering);
    timer.start(static_cast<int>(std::max<qint64>(wait, 0)));
}

void OffscreenBar::itemResized() {
    imageChanged();
}

void OffscreenBar::imageChanged() {
    if (!choices.imagePath.isEmpty()) wakeIn(imageTimer, lastImage, choices.imageInterval);
}

void OffscreenBar::itemRedrawn(BarItem&) {
    imageChanged();
}
void OffscreenBar::itemTextChanged(BarItem&) {}
void OffscreenBar::itemRemoved(BarItem&) {}

void OffscreenBar::itemReported() {
    if (choices.text >= 0) wakeIn(textTimer, lastText, choices.textInterval);
}

void OffscreenBar::printLine() {
    lastText.start();
    const QString line = text();
    if (choices.text < 0 || line.isEmpty()) return;
    const QTime time = choices.now ? choices.now() : QTime::currentTime();
    const QByteArray bytes =
        (time.toString(QStringLiteral("HH:mm:ss")) + QStringLiteral("  ") + line).toUtf8();
    if (writeLine(choices.text, bytes.toStdString()) == LineOutput::Closed) {
        choices.text = -1;
        Q_EMIT readerGone();
    }
}

void OffscreenBar::writeImage() {
    const auto isShown = [](const BarItem* item) { return item->pixelWidth() > 0; };
    if (written.isNull() && !items().empty() && std::ranges::none_of(items(), isShown)) {
        return;  // they are about to come
    }
    lastImage.start();
    const QImage next = image();
    if (choices.imagePath.isEmpty() || next == written) return;
    if (writeImageFile(next, choices.imagePath)) {
        written = next;
        complained = false;
    } else if (!std::exchange(complained, true)) {
        writeLine(STDERR_FILENO,
                  "vostel: cannot write the bar's image to " + choices.imagePath.toStdString());
    }
}

}  // namespace vostel
