#include "monitors/network/InterfaceRow.h"

#include <algorithm>
#include <cmath>

#include <QPainter>

#include "monitors/network/AddressButton.h"
#include "monitors/network/NetworkGraphView.h"
#include "monitors/network/RatesRow.h"
#include "monitors/process/PrintableText.h"
#include "render/ElidedText.h"
#include "render/RateFormatter.h"
#include "statusbar/PlainText.h"
#include "ui/FigureText.h"
#include "ui/Theme.h"

namespace vostel {

namespace {

constexpr double graphWidth = 60;  // a logical pixel for each sample
constexpr double gap = 8;
constexpr double arrowWidth = 6;
constexpr double arrowRoom = 10;
constexpr int padding = 3;
constexpr std::size_t longestName = 64;  // characters

QString nameOf(const InterfaceState& state) {
    return QString::fromStdString(printableText(state.displayName, longestName));
}

QString rate(double value) {
    return QString::fromStdString(RateFormatter::rate(value));
}

// The rates' column: as wide as any rate.
double ratesWidth(const QFont& font) {
    double widest = 0;
    for (const double value : {1023.0, 1023e3, 1023.0 * 1024 * 1024}) {
        widest = std::max(widest, FigureText::width(font, rate(value)));
    }
    return std::ceil(widest + arrowRoom + QFontMetricsF(font).horizontalAdvance(u'.'));
}

}  // namespace

InterfaceRow::InterfaceRow(QWidget* parent)
    : Piece(QAccessible::ListItem, parent), address(new AddressButton(this)) {
    address->hide();
}

void InterfaceRow::setState(const InterfaceState& value) {
    if (!assign(state, value)) {
        return;
    }
    const QString name = nameOf(state);
    PlainText::setToolTip(*this, name);
    setAccessibleName(QStringLiteral("%1, download %2, upload %3")
                          .arg(name, rate(state.current.down), rate(state.current.up)));
    setAccessibleDescription(state.included ? QString() : QStringLiteral("Not counted"));
    address->setAddress(QString::fromStdString(state.lanIP.value_or("")));
    placeAddress();
}

void InterfaceRow::setConfig(const GraphConfig& value) {
    assign(config, value);
}

int InterfaceRow::heightFor(const QFont& font) {
    return QFontMetrics(font).height() + QFontMetrics(styled(font, TextStyle::Small)).height() + 2 +
           2 * padding;
}

void InterfaceRow::resizeEvent(QResizeEvent* event) {
    placeAddress();
    Piece::resizeEvent(event);
}

void InterfaceRow::placeAddress() {
    const QSize size = address->sizeHint();
    const double room =
        width() - ratesWidth(styled(font(), TextStyle::Small)) - graphWidth - 2 * gap;
    address->setGeometry(0, height() - padding - size.height(),
                         std::min(size.width(), static_cast<int>(room)), size.height());
}

void InterfaceRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Theme& theme = Theme::current();
    const QFont small = styled(font(), TextStyle::Small);
    const double rates = ratesWidth(small);
    const QRectF graph(width() - rates - gap - graphWidth, padding + 1, graphWidth,
                       height() - 2 * padding - 2);
    const double nameHeight = QFontMetricsF(font()).height();
    const QRectF name(0, state.lanIP ? padding : (height() - nameHeight) / 2, graph.left() - gap,
                      nameHeight);
    painter.setFont(font());
    painter.setPen(state.included ? theme.text : theme.secondary);
    painter.drawText(name, Qt::AlignLeft | Qt::AlignVCenter,
                     elided(QFontMetricsF(font()), nameOf(state), Qt::ElideMiddle, name.width()));

    painter.setOpacity(state.included ? 1 : 0.5);
    NetworkGraphView::draw(painter, graph, state.history, config);
    painter.setOpacity(1);

    const double line = height() / 2.0 - padding + 1;
    for (const bool up : {true, false}) {
        const double value = up ? state.current.up : state.current.down;
        const QRectF row(width() - rates, up ? padding - 1 : padding - 1 + line, rates, line);
        QColor color = theme.readable(up ? config.up : config.down);
        if (value == 0) {
            color = theme.secondary;  // what moves stands out
        }
        drawTriangle(
            painter,
            QRectF(row.left(), row.center().y() - arrowWidth * 0.4, arrowWidth, arrowWidth * 0.8),
            up, color);
        painter.setPen(color);
        FigureText::draw(painter, row.adjusted(arrowRoom, 0, 0, 0), small, rate(value));
    }
}

}  // namespace vostel
