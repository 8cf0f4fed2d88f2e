#include "tests/desktop/Screen.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <thread>
#include <utility>

#include "tests/desktop/waiting.h"

#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

namespace vistrane {

namespace {

/// A window may be destroyed while it is asked about.
int ignoreErrors(Display* /*display*/, XErrorEvent* /*event*/) {
    return 0;
}

/// A hand is never faster, and some programs merge two events of the same time.
void pauseOfTheHand() {
    std::this_thread::sleep_for(std::chrono::milliseconds(15));
}

} // namespace

class Screen::X {
public:
    explicit X(const std::string& name) : display(XOpenDisplay(name.c_str())) {
        if (display == nullptr) {
            throw std::runtime_error("cannot open the display " + name);
        }
        XSetErrorHandler(ignoreErrors);
        root = DefaultRootWindow(display);
        int major = XkbMajorVersion;
        int minor = XkbMinorVersion;
        if (XkbQueryExtension(display, nullptr, &xkbEvent, nullptr, &major, &minor) == 0) {
            throw std::runtime_error("the display has no XKB extension");
        }
        XkbSelectEvents(display, XkbUseCoreKbd, XkbBellNotifyMask, XkbBellNotifyMask);
        // Toolkits differ in the event mask with which they answer a window manager.
        XSelectInput(display, root, StructureNotifyMask | SubstructureNotifyMask);
        XSync(display, False);
    }
    ~X() { XCloseDisplay(display); }
    X(const X&) = delete;
    X& operator=(const X&) = delete;

    Atom atom(const char* name) const { return XInternAtom(display, name, False); }

    template <typename Item>
    std::vector<Item> property(::Window window, const char* name, Atom type) const {
        Atom actualType = 0;
        int format = 0;
        unsigned long count = 0;
        unsigned long left = 0;
        unsigned char* data = nullptr;
        std::vector<Item> items;
        if (XGetWindowProperty(display, window, atom(name), 0, 4096, False, type, &actualType,
                               &format, &count, &left, &data) == Success &&
            data != nullptr) {
            if (actualType == type) {
                const auto* first = reinterpret_cast<const Item*>(data);
                items.assign(first, first + count);
            }
            XFree(data);
        }
        return items;
    }
    std::vector<unsigned long> managedWindows() const {
        return property<unsigned long>(root, "_NET_CLIENT_LIST_STACKING", XA_WINDOW);
    }

    void send(::Window receiver, long mask, ::Window window, const char* name,
              const std::array<long, 5>& data) const {
        XEvent event{};
        event.xclient.type = ClientMessage;
        event.xclient.window = window;
        event.xclient.message_type = atom(name);
        event.xclient.format = 32;
        std::copy(data.begin(), data.end(), event.xclient.data.l);
        XSendEvent(display, receiver, False, mask, &event);
        XFlush(display);
    }
    /// Asks the window manager something about a window.
    void request(::Window window, const char* name, const std::array<long, 5>& data) const {
        send(root, SubstructureNotifyMask | SubstructureRedirectMask, window, name, data);
    }

    void key(KeySym symbol, bool isDown) const {
        const KeyCode code = XKeysymToKeycode(display, symbol);
        if (code == 0) {
            throw std::runtime_error("the keyboard has no such key");
        }
        XTestFakeKeyEvent(display, code, isDown ? True : False, CurrentTime);
        XSync(display, False);
    }

    void button(bool isDown) const {
        XTestFakeButtonEvent(display, 1, isDown ? True : False, CurrentTime);
        XSync(display, False);
    }

    /// Counts bells and keeps the last pong.
    void takeEvents() {
        while (XPending(display) > 0) {
            XEvent event;
            XNextEvent(display, &event);
            if (event.type == xkbEvent) {
                const auto* any = reinterpret_cast<const XkbAnyEvent*>(&event);
                bells += any->xkb_type == XkbBellNotify ? 1 : 0;
            } else if (event.type == ClientMessage &&
                       event.xclient.message_type == atom("WM_PROTOCOLS") &&
                       static_cast<Atom>(event.xclient.data.l[0]) == atom("_NET_WM_PING")) {
                lastPong = event.xclient.data.l[1];
            }
        }
    }

    Display* display;
    ::Window root = 0;
    int xkbEvent = 0;
    int bells = 0;
    long lastPing = 0;
    long lastPong = 0;
};

Screen::Screen(const std::string& display) : x_(std::make_unique<X>(display)) {}

Screen::~Screen() = default;

void Screen::moveTo(QPoint place) {
    XTestFakeMotionEvent(x_->display, DefaultScreen(x_->display), place.x(), place.y(),
                         CurrentTime);
    XSync(x_->display, False);
}

void Screen::press() {
    x_->button(true);
}

void Screen::release() {
    x_->button(false);
}

void Screen::click(const QRect& rectangle) {
    moveTo(rectangle.center());
    pauseOfTheHand();
    press();
    pauseOfTheHand();
    release();
}

void Screen::drag(QPoint from, QPoint to) {
    moveTo(from);
    pauseOfTheHand();
    press();
    constexpr int steps = 10;
    for (int step = 1; step <= steps; ++step) {
        pauseOfTheHand();
        moveTo(from + (to - from) * step / steps);
    }
    pauseOfTheHand();
    release();
}

void Screen::press(const std::vector<std::string>& keys) {
    for (const std::string& name : keys) {
        x_->key(XStringToKeysym(name.c_str()), true);
    }
    for (auto name = keys.rbegin(); name != keys.rend(); ++name) {
        x_->key(XStringToKeysym(name->c_str()), false);
    }
}

void Screen::type(const std::string& text) {
    for (const char character : text) {
        // The keysyms of Latin-1 are its characters.
        const KeySym symbol = character == '\t' ? XK_Tab : static_cast<unsigned char>(character);
        const KeyCode code = XKeysymToKeycode(x_->display, symbol);
        const bool isShifted = XkbKeycodeToKeysym(x_->display, code, 0, 0) != symbol;
        if (isShifted) {
            x_->key(XK_Shift_L, true);
        }
        x_->key(symbol, true);
        x_->key(symbol, false);
        if (isShifted) {
            x_->key(XK_Shift_L, false);
        }
    }
}

QImage Screen::picture() const {
    return picture({0, 0, 1 << 15, 1 << 15});
}

QImage Screen::picture(const QRect& rectangle) const {
    const QRect whole(0, 0, DisplayWidth(x_->display, DefaultScreen(x_->display)),
                      DisplayHeight(x_->display, DefaultScreen(x_->display)));
    const QRect place = rectangle.intersected(whole);
    if (place.isEmpty()) {
        return {};
    }
    XImage* image =
        XGetImage(x_->display, x_->root, place.x(), place.y(), static_cast<unsigned>(place.width()),
                  static_cast<unsigned>(place.height()), AllPlanes, ZPixmap);
    if (image == nullptr || image->bits_per_pixel != 32) {
        throw std::runtime_error("the screen has no picture of 32 bits per pixel");
    }
    QImage picture = QImage(reinterpret_cast<const uchar*>(image->data), image->width,
                            image->height, image->bytes_per_line, QImage::Format_RGB32)
                         .copy();
    XDestroyImage(image);
    return picture;
}

int Screen::bells() {
    XSync(x_->display, False);
    x_->takeEvents();
    return std::exchange(x_->bells, 0);
}

std::vector<Window> Screen::windows() const {
    std::vector<Window> windows;
    for (const unsigned long id : x_->managedWindows()) {
        const auto title = x_->property<char>(id, "_NET_WM_NAME", x_->atom("UTF8_STRING"));
        const auto process = x_->property<unsigned long>(id, "_NET_WM_PID", XA_CARDINAL);
        windows.push_back({id, std::string(title.begin(), title.end()),
                           process.empty() ? 0 : static_cast<pid_t>(process.front())});
    }
    return windows;
}

QRect Screen::placeOf(const Window& window) const {
    XWindowAttributes attributes;
    ::Window child = 0;
    int x = 0;
    int y = 0;
    if (XGetWindowAttributes(x_->display, window.id, &attributes) == 0 ||
        XTranslateCoordinates(x_->display, window.id, x_->root, 0, 0, &x, &y, &child) == 0) {
        return {};
    }
    return {x, y, attributes.width, attributes.height};
}

bool Screen::isManaged() const {
    if (x_->property<unsigned long>(x_->root, "_NET_SUPPORTING_WM_CHECK", XA_WINDOW).empty()) {
        return false;
    }
    const ::Window probe = XCreateSimpleWindow(x_->display, x_->root, 0, 0, 8, 8, 0, 0, 0);
    XMapWindow(x_->display, probe);
    XSync(x_->display, False);
    const auto isListed = [this, probe] {
        const auto all = x_->managedWindows();
        return std::find(all.begin(), all.end(), probe) != all.end();
    };
    bool wasListed = false;
    for (int look = 0; look < 100 && !wasListed; ++look) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        wasListed = isListed();
    }
    XDestroyWindow(x_->display, probe);
    XSync(x_->display, False);
    await("the end of the small window", [&] { return !isListed(); });
    return wasListed;
}

std::optional<unsigned long> Screen::activeWindow() const {
    const auto active = x_->property<unsigned long>(x_->root, "_NET_ACTIVE_WINDOW", XA_WINDOW);
    return active.empty() || active.front() == 0 ? std::nullopt : std::optional(active.front());
}

void Screen::close(const Window& window) {
    x_->request(window.id, "_NET_CLOSE_WINDOW", {CurrentTime, 2});
}

void Screen::activate(const Window& window) {
    x_->request(window.id, "_NET_ACTIVE_WINDOW", {2, CurrentTime, 0});
    await("the window to become active", [&] { return activeWindow() == window.id; });
}

std::chrono::microseconds Screen::roundTrip(const Window& window) {
    const auto start = std::chrono::steady_clock::now();
    const auto passed = [start] { return std::chrono::steady_clock::now() - start; };
    x_->send(window.id, NoEventMask, window.id, "WM_PROTOCOLS",
             {static_cast<long>(x_->atom("_NET_WM_PING")), ++x_->lastPing,
              static_cast<long>(window.id)});
    while (x_->lastPong != x_->lastPing) {
        x_->takeEvents();
        if (passed() > timeout) {
            throw TimedOut("The window does not answer");
        }
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return std::chrono::duration_cast<std::chrono::microseconds>(passed());
}

} // namespace vistrane
