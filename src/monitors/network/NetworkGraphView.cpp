#include "monitors/network/NetworkGraphView.h"

#include <utility>

#include <QPainter>
#include <QPainterPath>

#include "ui/Theme.h"

namespace vostel {

NetworkGraphView::NetworkGraphView(int height, QWidget* parent)
    : Piece(QAccessible::Chart, parent), panelHeight(height) {
    setAccessibleName(QStringLiteral("Download and upload, history"));
}

void NetworkGraphView::setHistory(std::vector<NetSample> values) {
    assign(history, std::move(values));
}

void NetworkGraphView::setConfig(const GraphConfig& value) {
    assign(config, value);
}

void NetworkGraphView::draw(QPainter& painter, const QRectF& rect,
                            const std::vector<NetSample>& history, const GraphConfig& config) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(rect.left(), rect.bottom());
    painter.scale(1, -1);
    const QRectF panel(0, 0, rect.width(), rect.height());
    QPainterPath path;
    path.addRoundedRect(panel, 4, 4);
    painter.fillPath(path, Theme::current().panel);
    painter.setClipPath(path, Qt::IntersectClip);
    NetworkGraph::draw(painter, panel, history, config);
    painter.restore();
}

void NetworkGraphView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    draw(painter, rect(), history, config);
}

}  // namespace vostel
