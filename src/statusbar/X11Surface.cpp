#include "statusbar/X11Surface.h"

#include <poll.h>
#include <xcb/xcb.h>

#include <algorithm>

#include "statusbar/X11Reply.h"

namespace vostel {

namespace {

const xcb_visualtype_t* findVisual(const xcb_setup_t* setup, xcb_visualid_t id) {
    for (auto screen = xcb_setup_roots_iterator(setup); screen.rem; xcb_screen_next(&screen)) {
        auto depth = xcb_screen_allowed_depths_iterator(screen.data);
        for (; depth.rem; xcb_depth_next(&depth)) {
            auto visual = xcb_depth_visuals_iterator(depth.data);
            for (; visual.rem; xcb_visualtype_next(&visual)) {
                if (visual.data->visual_id == id) return visual.data;
            }
        }
    }
    return nullptr;
}

PixelFormat formatOf(const xcb_setup_t* setup, xcb_visualid_t visualId, int depth) {
    PixelFormat format;
    format.bigEndian = setup->image_byte_order == XCB_IMAGE_ORDER_MSB_FIRST;
    for (auto it = xcb_setup_pixmap_formats_iterator(setup); it.rem; xcb_format_next(&it)) {
        if (it.data->depth == depth) {
            format.bitsPerPixel = it.data->bits_per_pixel;
            format.scanlinePad = it.data->scanline_pad;
        }
    }
    if (const xcb_visualtype_t* visual = findVisual(setup, visualId)) {
        format.redMask = visual->red_mask;
        format.greenMask = visual->green_mask;
        format.blueMask = visual->blue_mask;
    }
    if (depth == 32) {
        format.opaqueBits = ~(format.redMask | format.greenMask | format.blueMask);
    }
    return format;
}

}  // namespace

X11Surface::X11Surface(xcb_connection_t* server, std::uint32_t target)
    : connection(server), window(target) {
    const auto attributesCookie = xcb_get_window_attributes(connection, window);
    const auto geometryCookie = xcb_get_geometry(connection, window);
    const auto attributes =
        owned(xcb_get_window_attributes_reply(connection, attributesCookie, nullptr));
    const auto geometry = owned(xcb_get_geometry_reply(connection, geometryCookie, nullptr));
    if (attributes && geometry) {
        depth = geometry->depth;
        format = formatOf(xcb_get_setup(connection), attributes->visual, depth);
    }
    context = xcb_generate_id(connection);
    const std::uint32_t exposures = 0;  // no event comes back for what is drawn
    xcb_create_gc(connection, context, window, XCB_GC_GRAPHICS_EXPOSURES, &exposures);
}

X11Surface::~X11Surface() {
    xcb_free_gc(connection, context);
}

void X11Surface::setBackground(const QColor& color) {
    const std::uint32_t pixel = format.pixel(color.rgb());
    xcb_change_window_attributes(connection, window, XCB_CW_BACK_PIXEL, &pixel);
}

void X11Surface::fill(const QRect& rect, const QColor& color) {
    if (rect.isEmpty()) return;
    const std::uint32_t pixel = format.pixel(color.rgb());
    xcb_change_gc(connection, context, XCB_GC_FOREGROUND, &pixel);
    const xcb_rectangle_t area{
        static_cast<std::int16_t>(rect.x()), static_cast<std::int16_t>(rect.y()),
        static_cast<std::uint16_t>(rect.width()), static_cast<std::uint16_t>(rect.height())};
    xcb_poly_fill_rectangle(connection, window, context, 1, &area);
}

void X11Surface::put(const QPoint& at, const QImage& image) {
    if (image.isNull()) return;
    // The limit is in units of 4 bytes; the request itself takes up to 28 bytes.
    const std::uint64_t limit = std::uint64_t{xcb_get_maximum_request_length(connection)} * 4 - 28;
    const auto line = static_cast<std::uint64_t>(format.bytesPerLine(image.width()));
    const auto rows = static_cast<int>(
        std::clamp<std::uint64_t>(limit / line, 1, static_cast<std::uint64_t>(image.height())));
    for (int y = 0; y < image.height(); y += rows) {
        const int height = std::min(rows, image.height() - y);
        // A view of the rows, not a copy.
        putRows(at + QPoint(0, y), QImage(image.constScanLine(y), image.width(), height,
                                          image.bytesPerLine(), QImage::Format_RGB32));
    }
}

void X11Surface::putRows(const QPoint& at, const QImage& image) {
    const auto send = [&](std::size_t length, const std::uint8_t* data) {
        xcb_put_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, window, context,
                      static_cast<std::uint16_t>(image.width()),
                      static_cast<std::uint16_t>(image.height()), static_cast<std::int16_t>(at.x()),
                      static_cast<std::int16_t>(at.y()), 0, depth,
                      static_cast<std::uint32_t>(length), data);
    };
    if (format.isRgb32()) {
        send(static_cast<std::size_t>(image.sizeInBytes()), image.constBits());
    } else {
        const auto bytes = packed(image, format);
        send(bytes.size(), bytes.data());
    }
}

void X11Surface::flush() {
    xcb_flush(connection);
}

bool X11Surface::isReady() const {
    pollfd socket{xcb_get_file_descriptor(connection), POLLOUT, 0};
    return poll(&socket, 1, 0) != 0;
}

}  // namespace vostel
