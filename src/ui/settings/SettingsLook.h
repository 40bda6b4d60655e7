#pragma once

#include <QPainter>
#include <QPalette>
#include <QWidget>

namespace vostel::SettingsLook {

constexpr int rowHeight = 38;    // logical pixels, at least
constexpr int rowMargin = 14;    // left and right of a row
constexpr int valueWidth = 208;  // of the column that values stand in
constexpr double radius = 6;     // corners of fields and buttons

// The colours of the theme in force as a palette, for windows that hold ordinary widgets.
QPalette palette();

// The fill under white text: what is chosen.
QColor selection();

// Whether the keyboard is here: the ring stands only where Tab or an arrow led, not after a click.
bool showsRing(const QWidget& widget);
void drawRing(QPainter& painter, const QRectF& box, double cornerRadius);

// The outlined box of fields and buttons.
void drawBox(QPainter& painter, const QRectF& box, const QColor& fill, const QColor& edge);

// A checkerboard under `color`, which may be transparent.
void drawColor(QPainter& painter, const QRectF& box, const QColor& color);

}  // namespace vostel::SettingsLook
