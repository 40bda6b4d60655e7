#pragma once

#include <vector>

#include "monitors/network/NetworkGraph.h"
#include "ui/Piece.h"

namespace vostel {

// The throughput graph on a quiet panel.
class NetworkGraphView : public Piece {
    Q_OBJECT

  public:
    explicit NetworkGraphView(int height, QWidget* parent = nullptr);

    void setHistory(std::vector<NetSample> history);
    void setConfig(const GraphConfig& config);

    QSize sizeHint() const override { return {200, panelHeight}; }

    // The same panel and graph into any place of a widget.
    static void draw(QPainter& painter, const QRectF& rect, const std::vector<NetSample>& history,
                     const GraphConfig& config);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    int panelHeight;
    std::vector<NetSample> history;
    GraphConfig config;
};

}  // namespace vostel
