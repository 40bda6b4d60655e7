#include "ui/Compositing.h"

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string>

#include <QGuiApplication>

namespace vostel {

namespace {

template <typename Reply>
using Owned = std::unique_ptr<Reply, decltype(&std::free)>;

}  // namespace

bool isComposited() {
    const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    // Other platforms have the interface too, without a connection.
    if (!x11 || !x11->connection()) {
        return true;
    }
    // Extended Window Manager Hints 1.5, "_NET_WM_CM_Sn": owned by the compositing manager. Screens
    // beyond the first are of no interest: Qt uses the default one.
    xcb_connection_t* connection = x11->connection();
    const std::string name = "_NET_WM_CM_S0";
    const Owned<xcb_intern_atom_reply_t> atom(
        xcb_intern_atom_reply(
            connection,
            xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.c_str()),
            nullptr),
        &std::free);
    if (!atom) {
        return false;
    }
    const Owned<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom),
                                      nullptr),
        &std::free);
    return owner && owner->owner != XCB_NONE;
}

}  // namespace vostel
