#include "ui/ProcessRow.h"

#include <QPainter>

#include "render/ElidedText.h"
#include "statusbar/PlainText.h"
#include "ui/FigureText.h"
#include "ui/Theme.h"

namespace vostel {

namespace {

constexpr int iconSize = 16;
constexpr double gap = 8;

}  // namespace

ProcessRow::ProcessRow(QWidget* parent) : Piece(QAccessible::ListItem, parent) {}

bool ProcessRow::setEntry(const ProcessEntry& value) {
    if (!assign(entry, value)) {
        return false;
    }
    QString spoken = entry.name;
    for (const ProcessEntry::Value& column : entry.values) {
        spoken += QStringLiteral(", ") + column.text;
    }
    setAccessibleName(spoken);
    PlainText::setToolTip(*this, entry.detail.isEmpty() ? entry.name : entry.detail);
    return true;
}

void ProcessRow::setColumns(const std::vector<double>& widths) {
    assign(columns, widths);
}

QSize ProcessRow::sizeHint() const {
    return {200, std::max(QFontMetrics(font()).height() + 5, iconSize + 6)};
}

void ProcessRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Theme& theme = Theme::current();
    const QRect iconBox(0, (height() - iconSize) / 2, iconSize, iconSize);
    if (entry.icon.isNull()) {
        drawSymbol(painter, iconBox, QStringLiteral("app.dashed"), iconSize, theme.secondary);
    } else {
        // In a picture of the popover the painter's scale is not that of the screen.
        const QPixmap pixmap = entry.icon.pixmap(iconBox.size(), painter.deviceTransform().m11());
        painter.drawPixmap(iconBox, pixmap);
    }
    double right = width();
    for (std::size_t i = entry.values.size(); i-- > 0;) {
        const ProcessEntry::Value& value = entry.values[i];
        const double column =
            i < columns.size() ? columns[i] : FigureText::width(font(), value.text);
        painter.setPen(value.color.isValid() ? theme.readable(value.color) : theme.text);
        FigureText::draw(painter, QRectF(right - column, 0, column, height()), font(), value.text);
        right -= column + gap;
    }
    const QRectF name(iconSize + gap, 0, right - iconSize - gap, height());
    painter.setFont(font());
    painter.setPen(theme.text);
    painter.drawText(name, Qt::AlignLeft | Qt::AlignVCenter,
                     elided(QFontMetricsF(font()), entry.name, Qt::ElideMiddle, name.width()));
}

}  // namespace vostel
