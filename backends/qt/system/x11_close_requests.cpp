#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

#include <QGuiApplication>
#include <xcb/xcb.h>

#include "backends/qt/system/CloseRequests.h"

namespace vistrane {

namespace {

xcb_atom_t atom(std::string_view name) {
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr) {
        return XCB_ATOM_NONE;
    }
    xcb_connection_t* const server = x11->connection();
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(
            server,
            xcb_intern_atom(server, 0, static_cast<std::uint16_t>(name.size()), name.data()),
            nullptr),
        &std::free);
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

bool isCloseRequest(const xcb_generic_event_t& event, xcb_window_t window) {
    constexpr unsigned sentByAProgram = 0x80;
    if ((event.response_type & ~sentByAProgram) != XCB_CLIENT_MESSAGE) {
        return false;
    }
    static const xcb_atom_t protocols = atom("WM_PROTOCOLS");
    static const xcb_atom_t deleteWindow = atom("WM_DELETE_WINDOW");
    const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
    return message.window == window && message.type == protocols &&
           message.data.data32[0] == deleteWindow;
}

} // namespace

CloseRequests::CloseRequests(QWidget& window, std::function<void()> asked)
    : window_(&window), asked_(std::move(asked)) {
    qGuiApp->installNativeEventFilter(this);
}

CloseRequests::~CloseRequests() {
    qGuiApp->removeNativeEventFilter(this);
}

bool CloseRequests::nativeEventFilter(const QByteArray& type, void* message, qintptr*) {
    if (type == "xcb_generic_event_t" && window_ && window_->internalWinId() != 0 &&
        isCloseRequest(*static_cast<xcb_generic_event_t*>(message),
                       static_cast<xcb_window_t>(window_->internalWinId()))) {
        asked_();
    }
    return false;
}

} // namespace vistrane
