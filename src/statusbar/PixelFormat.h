#pragma once

#include <cstdint>
#include <vector>

#include <QImage>

namespace vostel {

// How a display wants its pixels: colours as bit fields in little- or big-endian units of
// bitsPerPixel (8, 16, 24 or 32), lines padded to scanlinePad bits (8, 16 or 32).
struct PixelFormat {
    int bitsPerPixel = 32;
    int scanlinePad = 32;
    std::uint32_t redMask = 0xff0000;
    std::uint32_t greenMask = 0x00ff00;
    std::uint32_t blueMask = 0x0000ff;
    bool bigEndian = false;

    // QImage::Format_RGB32 in memory is already in this format.
    bool isRgb32() const;

    // Bytes of one line of `width` pixels.
    int bytesPerLine(int width) const;

    // The pixel value of a colour. Bits that belong to no colour are 0, or 1 where `opaque` says so
    // (the alpha of a 32-bit-deep window).
    std::uint32_t pixel(QRgb color) const;
    std::uint32_t opaqueBits = 0;
};

// The lines of an image (Format_RGB32) in that format.
std::vector<std::uint8_t> packed(const QImage& image, const PixelFormat& format);

}  // namespace vostel
