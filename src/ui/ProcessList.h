#pragma once

#include <vector>

#include "ui/Piece.h"
#include "ui/ProcessRow.h"

namespace vostel {

// Up to ten lines. A line is redrawn only when its text changed, value columns only grow while the
// list lives, and the list never gets shorter, so nothing under the pointer jumps.
class ProcessList : public Piece {
    Q_OBJECT

  public:
    static constexpr std::size_t mostRows = 10;

    // `placeholder` is shown while there are no entries ("Sampling…"). Room is kept for `reserved`
    // lines from the beginning.
    explicit ProcessList(const QString& placeholder, int reserved = 0, QWidget* parent = nullptr);

    void setPlaceholder(const QString& text);
    // Entries beyond the tenth are left out. Returns how many lines are drawn anew.
    int setEntries(const std::vector<ProcessEntry>& entries);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void placeRows();
    int rowHeight() const;
    bool growColumns(const std::vector<ProcessEntry>& entries, std::size_t count);

    QString placeholder;
    std::vector<ProcessRow*> rows;  // children; those from `used` on are hidden
    std::size_t used = 0;
    int roomFor;
    std::vector<double> columns;
};

}  // namespace vostel
