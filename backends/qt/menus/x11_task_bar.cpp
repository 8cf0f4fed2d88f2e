#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

#include <QGuiApplication>
#include <QString>
#include <QWindow>
#include <xcb/xcb.h>

#include "backends/qt/menus/TaskBar.h"

namespace vistrane {

namespace {

template <typename Reply>
using Owned = std::unique_ptr<Reply, decltype(&std::free)>;

template <typename Reply>
Owned<Reply> owned(Reply* reply) {
    return {reply, &std::free};
}

/// Null when the windows are not on an X server.
xcb_connection_t* connection() {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 != nullptr ? x11->connection() : nullptr;
}

xcb_atom_t atom(xcb_connection_t* server, std::string_view name) {
    const auto reply = owned(xcb_intern_atom_reply(
        server, xcb_intern_atom(server, 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    return reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

struct Atoms {
    explicit Atoms(xcb_connection_t* server)
        : state(atom(server, "_NET_WM_STATE")), skips({atom(server, "_NET_WM_STATE_SKIP_TASKBAR"),
                                                       atom(server, "_NET_WM_STATE_SKIP_PAGER")}),
          managed(atom(server, "WM_STATE")) {}

    xcb_atom_t state;
    std::array<xcb_atom_t, 2> skips;
    xcb_atom_t managed;
};

/// A window manager has taken the window over: shown or minimised, not hidden.
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

/// A managed window's states are its window manager's, which is asked.
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

/// The states that a window has when it is next shown are the application's to write. The
/// toolkit keeps those that it does not know.
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
    return connection() != nullptr || windowSystem == QLatin1String("offscreen") ||
           windowSystem == QLatin1String("minimal");
}

void setInTaskBar(QWindow& window, bool shown) {
    xcb_connection_t* const server = connection();
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
