#pragma once

#include <vector>

#include "monitors/network/InterfaceState.h"
#include "monitors/network/NetworkGraph.h"
#include "ui/Piece.h"

namespace vostel {

class InterfaceRow;

// The rows of the active interfaces. Rows are filled anew in place. The list never gets shorter
// while it lives, and an interface without an address, which is active only in moments with
// traffic, keeps its row for some seconds: nothing under the pointer jumps.
class InterfaceList : public Piece {
    Q_OBJECT

  public:
    static constexpr int keptUpdates = 10;  // how long the row of an inactive interface stays

    explicit InterfaceList(QWidget* parent = nullptr);

    void setStates(const std::vector<InterfaceState>& states);
    void setConfig(const GraphConfig& config);
    // The interfaces that rows are shown of, from the top.
    std::vector<std::string> shownNames() const;

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    struct Entry {
        InterfaceState state;
        int missing = 0;  // updates since it was last active
    };
    void merge(const std::vector<InterfaceState>& states);
    void placeRows();
    int rowHeight() const;

    GraphConfig config;
    std::vector<Entry> entries;
    std::vector<InterfaceRow*> rows;  // children; those beyond `entries` are hidden
    std::size_t roomFor = 1;
};

}  // namespace vostel
