#include "statusbar/PixelFormat.h"

#include <bit>

namespace vostel {

namespace {

// An 8-bit colour part scaled to the bits of `mask`.
std::uint32_t field(int part, std::uint32_t mask) {
    if (mask == 0) return 0;
    const std::uint32_t most = mask >> std::countr_zero(mask);
    const auto value = (static_cast<std::uint64_t>(part) * most + 127) / 255;
    return static_cast<std::uint32_t>(value << std::countr_zero(mask)) & mask;
}

}  // namespace

bool PixelFormat::isRgb32() const {
    return bitsPerPixel == 32 && redMask == 0xff0000 && greenMask == 0x00ff00 &&
           blueMask == 0x0000ff && bigEndian == (std::endian::native == std::endian::big);
}

int PixelFormat::bytesPerLine(int width) const {
    const int bits = width * bitsPerPixel;
    return (bits + scanlinePad - 1) / scanlinePad * scanlinePad / 8;
}

std::uint32_t PixelFormat::pixel(QRgb color) const {
    return field(qRed(color), redMask) | field(qGreen(color), greenMask) |
           field(qBlue(color), blueMask) | opaqueBits;
}

std::vector<std::uint8_t> packed(const QImage& image, const PixelFormat& format) {
    const int line = format.bytesPerLine(image.width());
    const int bytes = format.bitsPerPixel / 8;
    std::vector<std::uint8_t> result(static_cast<size_t>(line) *
                                     static_cast<size_t>(image.height()));
    for (int y = 0; y < image.height(); ++y) {
        const auto* source = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        std::uint8_t* target = result.data() + static_cast<size_t>(y) * static_cast<size_t>(line);
        for (int x = 0; x < image.width(); ++x) {
            const std::uint32_t value = format.pixel(source[x]);
            for (int byte = 0; byte < bytes; ++byte) {
                const int shift = 8 * (format.bigEndian ? bytes - 1 - byte : byte);
                *target++ = static_cast<std::uint8_t>(value >> shift);
            }
        }
    }
    return result;
}

}  // namespace vostel
