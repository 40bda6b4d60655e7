#pragma once

#include <optional>

#include <QColor>
#include <QFont>
#include <QPainter>
#include <QRectF>

#include "statusbar/StatusImage.h"

namespace vostel {

// The colours of popovers, per appearance. Text colours have a contrast of at least 4.5 on
// `window`.
struct Theme {
    Appearance appearance = Appearance::Dark;
    QColor window;     // background of a popover
    QColor border;     // its edge
    QColor shadow;     // at full strength
    QColor panel;      // background of a graph
    QColor track;      // empty part of a meter
    QColor text;       // names, values
    QColor secondary;  // keys, section titles, hints
    QColor warning;
    QColor accent;   // focus ring, copied mark
    QColor hover;    // over a button
    QColor pressed;  // on a button
    QColor divider;

    // The theme in force: the one set, else dark or light as the desktop's palette is.
    static const Theme& current();

    // Nothing: follow the desktop. Widgets that are on the screen are redrawn.
    static void set(std::optional<Appearance> appearance);

    // `color`, made lighter or darker as far as it takes to be read as text on `window`.
    QColor readable(const QColor& color) const;
};

// WCAG 2.1 contrast ratio, 1 ... 21, of two opaque colours.
double contrast(const QColor& a, const QColor& b);

enum class TextStyle { Body, Small, Section, Title, Value };

// `base` in the size and weight of a style; sizes are relative to the desktop's font.
QFont styled(const QFont& base, TextStyle style);

// A symbol of the program's set, centred in `rect`, `size` points square.
void drawSymbol(QPainter& painter, const QRectF& rect, const QString& name, double size,
                const QColor& color);

}  // namespace vostel
