#pragma once

#include <optional>
#include <vector>

#include <QColor>
#include <QIcon>
#include <QString>

#include "ui/Piece.h"

namespace vostel {

// What one line of a process list shows.
struct ProcessEntry {
    struct Value {
        QString text;
        QColor color;  // invalid: the text colour

        bool operator==(const Value&) const = default;
    };

    QString name;
    QIcon icon;  // null: the symbol "app.dashed"
    std::vector<Value> values;
    QString detail;  // tool tip, for example the command line

    bool operator==(const ProcessEntry& other) const {
        return name == other.name && icon.cacheKey() == other.icon.cacheKey() &&
               values == other.values && detail == other.detail;
    }
};

// One line: icon, name, one or two values in columns at the right.
class ProcessRow : public Piece {
    Q_OBJECT

  public:
    explicit ProcessRow(QWidget* parent = nullptr);

    // True when it differs from what the row showed.
    bool setEntry(const ProcessEntry& entry);
    // Widths of the value columns from the left, logical pixels.
    void setColumns(const std::vector<double>& widths);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    ProcessEntry entry;
    std::vector<double> columns;
};

}  // namespace vostel
