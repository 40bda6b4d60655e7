#pragma once

#include "monitors/network/InterfaceState.h"
#include "monitors/network/NetworkGraph.h"
#include "ui/Piece.h"

namespace vostel {

class AddressButton;

// One interface: its name over its address, its graph, its rates. Quieter when it does not count
// toward the aggregate.
class InterfaceRow : public Piece {
    Q_OBJECT

  public:
    explicit InterfaceRow(QWidget* parent = nullptr);

    void setState(const InterfaceState& state);
    void setConfig(const GraphConfig& config);

    QSize sizeHint() const override { return {200, heightFor(font())}; }
    static int heightFor(const QFont& font);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void placeAddress();

    InterfaceState state;
    GraphConfig config;
    AddressButton* address;
};

}  // namespace vostel
