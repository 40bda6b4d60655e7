#include "statusbar/X11Desktop.h"

#include <xcb/randr.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <string_view>

#include "statusbar/X11Reply.h"

namespace vostel {

namespace {

enum Atom : size_t {
    WindowType,
    TypeDock,
    Desktop,
    State,
    StateSticky,
    StateSkipTaskbar,
    StateSkipPager,
    StateBelow,
    StateFullScreen,
    Strut,
    StrutPartial,
    ActiveWindow,
    ClientListStacking,
    Protocols,
    SyncRequest,
    TakeFocus,
    Supported,
    SupportingManager,
    AtomCount
};

// In the order of the enumeration.
constexpr std::string_view atomNames[AtomCount] = {"_NET_WM_WINDOW_TYPE",
                                                   "_NET_WM_WINDOW_TYPE_DOCK",
                                                   "_NET_WM_DESKTOP",
                                                   "_NET_WM_STATE",
                                                   "_NET_WM_STATE_STICKY",
                                                   "_NET_WM_STATE_SKIP_TASKBAR",
                                                   "_NET_WM_STATE_SKIP_PAGER",
                                                   "_NET_WM_STATE_BELOW",
                                                   "_NET_WM_STATE_FULLSCREEN",
                                                   "_NET_WM_STRUT",
                                                   "_NET_WM_STRUT_PARTIAL",
                                                   "_NET_ACTIVE_WINDOW",
                                                   "_NET_CLIENT_LIST_STACKING",
                                                   "WM_PROTOCOLS",
                                                   "_NET_WM_SYNC_REQUEST",
                                                   "WM_TAKE_FOCUS",
                                                   "_NET_SUPPORTED",
                                                   "_NET_SUPPORTING_WM_CHECK"};

constexpr std::uint32_t allDesktops = 0xffffffff;  // EWMH _NET_WM_DESKTOP

std::vector<std::uint32_t> interned(xcb_connection_t* connection) {
    std::vector<xcb_intern_atom_cookie_t> cookies;
    for (const std::string_view name : atomNames) {
        cookies.push_back(
            xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data()));
    }
    std::vector<std::uint32_t> atoms;
    for (const auto cookie : cookies) {
        const auto reply = owned(xcb_intern_atom_reply(connection, cookie, nullptr));
        atoms.push_back(reply ? reply->atom : 0u);
    }
    return atoms;
}

}  // namespace

X11Desktop::X11Desktop(xcb_connection_t* server, std::uint32_t target)
    : atoms(interned(server)), connection(server), window(target) {
    const auto geometry =
        owned(xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr));
    if (geometry) root = geometry->root;
}

// Without a manager nobody moves the bar, and one that comes later may know docks.
bool X11Desktop::managerKnowsDocks() const {
    const auto supported = words(root, atoms[Supported]);
    const auto knows = [&](Atom atom) {
        return std::find(supported.begin(), supported.end(), atoms[atom]) != supported.end();
    };
    return words(root, atoms[SupportingManager]).empty() || knows(TypeDock) || knows(Strut) ||
           knows(StrutPartial);
}

void X11Desktop::declareDock() {
    managed = managerKnowsDocks();
    const std::uint32_t unmanaged = managed ? 0 : 1;
    xcb_change_window_attributes(connection, window, XCB_CW_OVERRIDE_REDIRECT, &unmanaged);
    const auto replace = [&](Atom property, xcb_atom_t type, const std::vector<std::uint32_t>& v) {
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, atoms[property], type, 32,
                            static_cast<std::uint32_t>(v.size()), v.data());
    };
    replace(WindowType, XCB_ATOM_ATOM, {atoms[TypeDock]});
    replace(Desktop, XCB_ATOM_CARDINAL, {allDesktops});
    replace(State, XCB_ATOM_ATOM,
            {atoms[StateSticky], atoms[StateSkipTaskbar], atoms[StateSkipPager]});
    // A dock takes no focus. The toolkit answers a resize handshake when its backing store is
    // flushed, and there is none.
    std::vector<std::uint32_t> protocols = words(window, atoms[Protocols]);
    std::erase(protocols, atoms[SyncRequest]);
    std::erase(protocols, atoms[TakeFocus]);
    replace(Protocols, XCB_ATOM_ATOM, protocols);
}

void X11Desktop::setStrut(const std::array<std::uint32_t, 12>& strut) {
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, atoms[StrutPartial],
                        XCB_ATOM_CARDINAL, 32, 12, strut.data());
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, atoms[Strut], XCB_ATOM_CARDINAL,
                        32, 4, strut.data());
}

void X11Desktop::setSizeHints(const QRect& rect) {
    // ICCCM 4.1.2.3. At fractional scales the toolkit's own hints ask for sizes in steps of whole
    // logical pixels, and the window manager would cut the bar down to one.
    constexpr std::uint32_t position = 1, size = 2, minimum = 16, maximum = 32, gravity = 512;
    const auto width = static_cast<std::uint32_t>(rect.width());
    const auto height = static_cast<std::uint32_t>(rect.height());
    std::array<std::uint32_t, 18> hints{};
    hints[0] = position | size | minimum | maximum | gravity;
    hints[1] = static_cast<std::uint32_t>(rect.x());
    hints[2] = static_cast<std::uint32_t>(rect.y());
    hints[3] = hints[5] = hints[7] = width;
    hints[4] = hints[6] = hints[8] = height;
    hints[17] = XCB_GRAVITY_STATIC;
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NORMAL_HINTS,
                        XCB_ATOM_WM_SIZE_HINTS, 32, 18, hints.data());
}

void X11Desktop::place(const QRect& rect) {
    setSizeHints(rect);
    const auto geometry =
        owned(xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr));
    const auto origin = owned(xcb_translate_coordinates_reply(
        connection, xcb_translate_coordinates(connection, window, root, 0, 0), nullptr));
    if (geometry && origin &&
        QRect(origin->dst_x, origin->dst_y, geometry->width, geometry->height) == rect) {
        return;
    }
    const std::uint32_t values[] = {
        static_cast<std::uint32_t>(rect.x()), static_cast<std::uint32_t>(rect.y()),
        static_cast<std::uint32_t>(rect.width()), static_cast<std::uint32_t>(rect.height())};
    xcb_configure_window(connection, window,
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                             XCB_CONFIG_WINDOW_HEIGHT,
                         values);
}

void X11Desktop::setBelow(bool below) {
    if (!managed) {
        const std::uint32_t mode = below ? XCB_STACK_MODE_BELOW : XCB_STACK_MODE_ABOVE;
        xcb_configure_window(connection, window, XCB_CONFIG_WINDOW_STACK_MODE, &mode);
        xcb_flush(connection);
        return;
    }
    // EWMH 1.5, _NET_WM_STATE client message: 0 removes, 1 adds; source 1 is a program.
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atoms[State];
    event.data.data32[0] = below ? 1 : 0;
    event.data.data32[1] = atoms[StateBelow];
    event.data.data32[3] = 1;
    xcb_send_event(connection, 0, root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&event));
    xcb_flush(connection);
}

QRect X11Desktop::rootGeometry() const {
    const auto reply =
        owned(xcb_get_geometry_reply(connection, xcb_get_geometry(connection, root), nullptr));
    return reply ? QRect(0, 0, reply->width, reply->height) : QRect();
}

std::vector<X11Monitor> X11Desktop::monitors() const {
    std::vector<X11Monitor> result;
    const auto* extension = xcb_get_extension_data(connection, &xcb_randr_id);
    if (!extension || !extension->present) return result;
    const auto reply = owned(xcb_randr_get_monitors_reply(
        connection, xcb_randr_get_monitors(connection, root, 1), nullptr));
    if (!reply) return result;
    auto it = xcb_randr_get_monitors_monitors_iterator(reply.get());
    for (; it.rem; xcb_randr_monitor_info_next(&it)) {
        const auto name = owned(xcb_get_atom_name_reply(
            connection, xcb_get_atom_name(connection, it.data->name), nullptr));
        QString text;
        if (name) {
            text = QString::fromUtf8(xcb_get_atom_name_name(name.get()),
                                     xcb_get_atom_name_name_length(name.get()));
        }
        result.push_back({text, QRect(it.data->x, it.data->y, it.data->width, it.data->height)});
    }
    return result;
}

std::vector<std::uint32_t> X11Desktop::words(std::uint32_t of, std::uint32_t property) const {
    constexpr std::uint32_t most = 1024;
    const auto reply = owned(xcb_get_property_reply(
        connection,
        xcb_get_property(connection, 0, of, property, XCB_GET_PROPERTY_TYPE_ANY, 0, most),
        nullptr));
    if (!reply || reply->format != 32) return {};
    const auto* first = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {first, first + reply->value_len};
}

QRect X11Desktop::activeFullScreenWindow() const {
    const auto active = words(root, atoms[ActiveWindow]);
    if (active.empty() || active.front() == XCB_WINDOW_NONE) return {};
    const auto states = words(active.front(), atoms[State]);
    if (std::find(states.begin(), states.end(), atoms[StateFullScreen]) == states.end()) return {};
    const auto geometryCookie = xcb_get_geometry(connection, active.front());
    const auto originCookie = xcb_translate_coordinates(connection, active.front(), root, 0, 0);
    const auto geometry = owned(xcb_get_geometry_reply(connection, geometryCookie, nullptr));
    const auto origin = owned(xcb_translate_coordinates_reply(connection, originCookie, nullptr));
    if (!geometry || !origin) return {};
    return QRect(origin->dst_x, origin->dst_y, geometry->width, geometry->height);
}

bool X11Desktop::concernsActiveWindow(std::uint32_t atom) const {
    return atom == atoms[ActiveWindow] || atom == atoms[ClientListStacking];
}

void X11Desktop::watchRoot() {
    const auto attributes = owned(xcb_get_window_attributes_reply(
        connection, xcb_get_window_attributes(connection, root), nullptr));
    if (!attributes) return;
    const std::uint32_t mask = attributes->your_event_mask | XCB_EVENT_MASK_PROPERTY_CHANGE;
    if (mask != attributes->your_event_mask) {
        xcb_change_window_attributes(connection, root, XCB_CW_EVENT_MASK, &mask);
    }
}

}  // namespace vostel
