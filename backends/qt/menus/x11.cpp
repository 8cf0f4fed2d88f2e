#include "backends/qt/menus/x11.h"

#include <cstdint>

#include <QGuiApplication>

namespace vistrane {

xcb_connection_t* x11Connection() {
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 != nullptr ? x11->connection() : nullptr;
}

xcb_atom_t x11Atom(xcb_connection_t* server, std::string_view name) {
    const auto reply = owned(xcb_intern_atom_reply(
        server, xcb_intern_atom(server, 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

} // namespace vistrane
