#include "backends/qt/menus/TaskBar.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include <QGuiApplication>
#include <QString>
#include <QWindow>

#include "backends/qt/menus/x11.h"

namespace vistrane {

namespace {

struct Atoms {
    explicit Atoms(xcb_connection_t* server)
        : state(x11Atom(server, "_NET_WM_STATE")),
          skips({x11Atom(server, "_NET_WM_STATE_SKIP_TASKBAR"),
                 x11Atom(server, "_NET_WM_STATE_SKIP_PAGER")}),
          managed(x11Atom(server, "WM_STATE")) {}

    xcb_atom_t state;
    std::array<xcb_atom_t, 2> skips;
    xcb_atom_t managed;
};

/// Whether a window manager manages the window, that is, it is visible or minimised.
bool isManaged(xcb_connection_t* server, xcb_window_t window, const Atoms& atoms) {
    const auto reply = owned(xcb_get_property_reply(
        server, xcb_get_property(server, 0, window, atoms.managed, XCB_GET_PROPERTY_TYPE_ANY, 0, 1),
        nullptr));
    if (reply == nullptr || reply->format != 32 || xcb_get_property_value_length(reply.get()) < 4) {
        return false;
    }
    constexpr std::uint32_t withdrawn = 0;
    return *static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get())) != withdrawn;
}

xcb_window_t rootOf(xcb_connection_t* server, xcb_window_t window) {
    const auto reply =
        owned(xcb_get_geometry_reply(server, xcb_get_geometry(server, window), nullptr));
    return reply != nullptr ? reply->root : xcb_window_t{XCB_WINDOW_NONE};
}

/// Only the window manager changes the states of a window that it manages.
void askWindowManager(xcb_connection_t* server, xcb_window_t window, const Atoms& atoms,
                      bool skip) {
    constexpr std::uint32_t remove = 0;
    constexpr std::uint32_t add = 1;
    constexpr std::uint32_t fromApplication = 1;
    xcb_client_message_event_t message = {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = atoms.state;
    message.data.data32[0] = skip ? add : remove;
    message.data.data32[1] = atoms.skips[0];
    message.data.data32[2] = atoms.skips[1];
    message.data.data32[3] = fromApplication;
    xcb_send_event(server, 0, rootOf(server, window),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&message));
}

std::vector<xcb_atom_t> states(xcb_connection_t* server, xcb_window_t window, const Atoms& atoms) {
    constexpr std::uint32_t enough = 1024;
    const auto reply = owned(xcb_get_property_reply(
        server, xcb_get_property(server, 0, window, atoms.state, XCB_ATOM_ATOM, 0, enough),
        nullptr));
    if (reply == nullptr || reply->format != 32) {
        return {};
    }
    const auto* first = static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get()));
    return {first, first + reply->value_len};
}

/// For a hidden window, the application writes the states that it will have when it is shown. Qt
/// keeps states that it does not know.
void writeStates(xcb_connection_t* server, xcb_window_t window, const Atoms& atoms, bool skip) {
    std::vector<xcb_atom_t> kept = states(server, window, atoms);
    for (const xcb_atom_t state : atoms.skips) {
        kept.erase(std::remove(kept.begin(), kept.end(), state), kept.end());
        if (skip) {
            kept.push_back(state);
        }
    }
    xcb_change_property(server, XCB_PROP_MODE_REPLACE, window, atoms.state, XCB_ATOM_ATOM, 32,
                        static_cast<std::uint32_t>(kept.size()), kept.data());
}

} // namespace

bool canLeaveTaskBar() {
    const QString windowSystem = QGuiApplication::platformName();
    return x11Connection() != nullptr || windowSystem == QLatin1String("offscreen") ||
           windowSystem == QLatin1String("minimal");
}

void setInTaskBar(QWindow& window, bool shown) {
    xcb_connection_t* const server = x11Connection();
    if (server == nullptr || window.handle() == nullptr) {
        return;
    }
    const Atoms atoms(server);
    const auto id = static_cast<xcb_window_t>(window.winId());
    if (isManaged(server, id, atoms)) {
        askWindowManager(server, id, atoms, !shown);
    } else {
        writeStates(server, id, atoms, !shown);
    }
    xcb_flush(server);
}

} // namespace vistrane
