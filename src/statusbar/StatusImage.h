#pragma once

#include <QImage>
#include <QSizeF>

namespace vostel {

enum class Appearance { Dark, Light };

// Wide: as wide as the item wants. Square: a host that squeezes everything into a square cell
// gets a layout made for it: the main value, readable at the cell's size.
enum class ImageShape { Wide, Square };

// What an item has to know of the place that its image lands in.
struct ImageContext {
    Appearance appearance = Appearance::Dark;
    ImageShape shape = ImageShape::Wide;
    double scale = 1.0;       // device pixels per point
    double thickness = 22.0;  // height of the bar, points

    bool operator==(const ImageContext&) const = default;
};

// An image for the bar. A template image is a stencil: only its alpha counts, and the bar that it
// lands in tints it.
struct StatusImage {
    QImage image;  // Format_ARGB32_Premultiplied, device pixel ratio set
    QSizeF size;   // points
    bool isTemplate = false;

    bool isNull() const { return image.isNull(); }
};

// The image as it is to be shown: a template is filled with the label colour of `appearance`.
QImage tinted(const StatusImage& image, Appearance appearance);

}  // namespace vostel
