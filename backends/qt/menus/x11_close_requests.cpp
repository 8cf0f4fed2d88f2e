#include "backends/qt/menus/CloseRequests.h"

#include <utility>

#include <QGuiApplication>

#include "backends/qt/menus/x11.h"

namespace vistrane {

namespace {

bool isCloseRequest(const xcb_generic_event_t& event, xcb_window_t window) {
    constexpr unsigned sentByAProgram = 0x80;
    if ((event.response_type & ~sentByAProgram) != XCB_CLIENT_MESSAGE) {
        return false;
    }
    static const xcb_atom_t protocols = x11Atom(x11Connection(), "WM_PROTOCOLS");
    static const xcb_atom_t deleteWindow = x11Atom(x11Connection(), "WM_DELETE_WINDOW");
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
