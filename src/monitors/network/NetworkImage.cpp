#include "monitors/network/NetworkImage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

#include <QFontDatabase>
#include <QHash>
#include <QPainter>

#include "core/SourceText.h"
#include "monitors/network/NetworkGraph.h"
#include "render/MenuBarImage.h"
#include "render/MeterGraph.h"
#include "render/RateFormatter.h"

namespace vostel {

namespace {

constexpr double graphWidth = 60;  // points: one for each sample
constexpr double numbersGap = 5;
constexpr double arrowWidth = 5;
constexpr double arrowGap = 3;
constexpr double squareArrow = 4;
constexpr float monochromeUpAlpha = 0.55F;

// The width of the widest text out of some, at one size. Measuring costs more than drawing and the
// answer only changes with font, size and scale: the few that occur are kept.
double widestOf(std::span<const QString> texts, double size, double scale) {
    static QHash<QString, double> known;
    const QString key =
        QStringLiteral("%1/%2/%3/%4")
            .arg(QFontDatabase::systemFont(QFontDatabase::GeneralFont).toString(), texts.front())
            .arg(size)
            .arg(scale);
    if (const auto found = known.constFind(key); found != known.cend()) {
        return *found;
    }
    double widest = 0;
    for (const QString& text : texts) {
        widest = std::max(widest, MenuBarImage::textWidth(text, size, scale));
    }
    constexpr qsizetype mostKnown = 64;
    if (known.size() >= mostKnown) {
        known.clear();
    }
    known.insert(key, widest);
    return widest;
}

// The longest texts of RateFormatter::rate(), by digit and unit: 99.96 is "100.0".
std::vector<QString> longestRates() {
    std::vector<QString> texts;
    for (const QChar unit : QStringLiteral("BKMGT")) {
        for (char16_t digit = u'0'; digit <= u'9'; ++digit) {
            texts.push_back(QString(3, QChar(digit)) + u'.' + QChar(digit) + QChar(0x2009) + unit +
                            QStringLiteral("/s"));
        }
    }
    return texts;
}

struct Directions {
    QColor down;
    QColor up;
};

Directions colorsOf(const NetworkImageInput& input, const ImageColors& colors) {
    if (!input.appearance.monochrome) {
        return {colors.foreground, input.upColor};
    }
    QColor up = Qt::black;
    up.setAlphaF(monochromeUpAlpha);
    return {Qt::black, up};
}

// A triangle, its middle at (x, y), on whole pixels. Fonts have arrows, too, but of every size.
void drawArrow(QPainter& painter, const QRectF& rect, bool up, const QColor& color) {
    const QRectF box = MeterGraph::snapped(painter, rect);
    const double base = up ? box.top() : box.bottom();
    const double tip = up ? box.bottom() : box.top();
    QPainterPath path;
    path.moveTo(box.left(), base);
    path.lineTo(box.right(), base);
    path.lineTo(box.center().x(), tip);
    path.closeSubpath();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(path, color);
    painter.restore();
}

struct Numbers {
    QString up;
    QString down;
    double textSize = 0;  // points
    double arrow = 0;     // its width
};

// Two lines, upload over download: an arrow in the direction's colour, then the text at the right.
void drawNumbers(QPainter& painter, const QRectF& rect, const Numbers& numbers,
                 const Directions& directions, const QColor& textColor) {
    const double line = rect.height() / 2;
    const double height = std::min(numbers.arrow * 0.8, line);
    for (const bool up : {true, false}) {
        const QRectF row(rect.x(), rect.y() + (up ? line : 0), rect.width(), line);
        drawArrow(painter, QRectF(row.x(), row.center().y() - height / 2, numbers.arrow, height),
                  up, up ? directions.up : directions.down);
        MenuBarImage::drawText(painter, row.adjusted(numbers.arrow, 0, 0, 0),
                               up ? numbers.up : numbers.down, numbers.textSize, textColor,
                               Qt::AlignRight | Qt::AlignVCenter);
    }
}

QString rate(double value) {
    return QString::fromStdString(RateFormatter::rate(value));
}

// Half points, so that two lines fit into the height.
double numbersSize(double height) {
    return std::clamp(std::floor(height / 2 * 0.8 * 2) / 2, 5.0, 10.0);
}

StatusImage makeSquareImage(const NetworkImageInput& input, const ImageContext& context) {
    static const std::array<QString, 2> widest = {QStringLiteral("888M"), QStringLiteral("8.8M")};
    return MenuBarImage::make(
        context.thickness, input.appearance, context,
        [&](QPainter& painter, const QRectF& rect, const ImageColors& colors) {
            const double room = rect.width() - squareArrow;
            double size = std::floor(rect.height() / 2 * 0.9 * 2) / 2;
            while (size > 5 && widestOf(widest, size, context.scale) > room) {
                size -= 0.5;
            }
            drawNumbers(painter, rect,
                        {input.known ? shortRate(input.current.up) : noValue,
                         input.known ? shortRate(input.current.down) : noValue, size, squareArrow},
                        colorsOf(input, colors), colors.text);
        });
}

}  // namespace

QString shortRate(double bytesPerSecond) {
    constexpr std::array<const char*, 5> units = {"", "K", "M", "G", "T"};
    double value = bytesPerSecond > 0 ? std::min(bytesPerSecond, 1e15) : 0;
    std::size_t unit = 0;
    while (value >= 999.5 && unit + 1 < units.size()) {
        value /= 1024;
        ++unit;
    }
    const bool fraction = unit > 0 && value < 9.95;
    return QString::number(value, 'f', fraction ? 1 : 0) + QLatin1String(units[unit]);
}

StatusImage makeNetworkImage(const NetworkImageInput& input, const ImageContext& context) {
    if (context.shape == ImageShape::Square) {
        return makeSquareImage(input, context);
    }
    const double height = context.thickness - (input.label.isEmpty() ? 0 : input.labelSize + 1);
    const double textSize = numbersSize(height);
    double width = graphWidth;
    if (input.showNumbers) {
        static const std::vector<QString> longest = longestRates();
        width += numbersGap + arrowWidth + arrowGap +
                 std::ceil(widestOf(longest, textSize, context.scale));
    }
    return MenuBarImage::makeLabeled(
        width, input.label, input.labelSize, input.appearance, context,
        [&](QPainter& painter, const QRectF& rect, const ImageColors& colors) {
            const Directions directions = colorsOf(input, colors);
            const QRectF graph =
                MeterGraph::snapped(painter, QRectF(rect.x(), rect.y(), graphWidth, rect.height()));
            painter.save();
            painter.setRenderHint(QPainter::Antialiasing);
            const QPainterPath panel = MeterGraph::panelPath(graph);
            painter.fillPath(panel, colors.track);
            painter.setClipPath(panel, Qt::IntersectClip);
            NetworkGraph::draw(painter, graph, input.history,
                               {input.mode, input.style, directions.down, directions.up, 1.0});
            painter.restore();
            if (input.showNumbers) {
                drawNumbers(
                    painter, rect.adjusted(graphWidth + numbersGap, 0, 0, 0),
                    {input.known ? rate(input.current.up) : noValue,
                     input.known ? rate(input.current.down) : noValue, textSize, arrowWidth},
                    directions, colors.text);
            }
        });
}

}  // namespace vostel
