#include "tests/desktop/Screen.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cctype>
#include <chrono>
#include <cstring>
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

/// A window may go away while it is asked about.
int ignoreErrors(Display* /*display*/, XErrorEvent* /*event*/) {
    return 0;
}

KeySym keySymOf(char character) {
    switch (character) {
    case '\n':
        return XK_Return;
    case '\t':
        return XK_Tab;
    default:
        // Latin-1's keysyms are its characters.
        return static_cast<KeySym>(static_cast<unsigned char>(character));
    }
}

/// What a person's hand takes at least; some programs take two events at one time for one.
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
        // Toolkits differ in the mask with which they answer a window manager.
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

    /// To the window manager, about a window.
    void request(::Window window, const char* name, const std::array<long, 5>& data) const {
        XEvent event;
        std::memset(&event, 0, sizeof event);
        event.xclient.type = ClientMessage;
        event.xclient.window = window;
        event.xclient.message_type = atom(name);
        event.xclient.format = 32;
        std::copy(data.begin(), data.end(), event.xclient.data.l);
        XSendEvent(display, root, False, SubstructureNotifyMask | SubstructureRedirectMask, &event);
        XSync(display, False);
    }

    void key(KeySym symbol, bool isDown) const {
        const KeyCode code = XKeysymToKeycode(display, symbol);
        if (code == 0) {
            throw std::runtime_error("the keyboard has no such key");
        }
        XTestFakeKeyEvent(display, code, isDown ? True : False, CurrentTime);
        XSync(display, False);
    }

    void button(unsigned button, bool isDown) const {
        XTestFakeButtonEvent(display, button, isDown ? True : False, CurrentTime);
        XSync(display, False);
    }

    /// Takes what has arrived; pongs are kept.
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

void Screen::moveTo(int x, int y) {
    XTestFakeMotionEvent(x_->display, DefaultScreen(x_->display), x, y, CurrentTime);
    XSync(x_->display, False);
}

void Screen::press() {
    x_->button(1, true);
}

void Screen::release() {
    x_->button(1, false);
}

void Screen::click(const Rectangle& rectangle, unsigned button) {
    moveTo(rectangle.x + rectangle.width / 2, rectangle.y + rectangle.height / 2);
    pauseOfTheHand();
    x_->button(button, true);
    pauseOfTheHand();
    x_->button(button, false);
}

void Screen::drag(int fromX, int fromY, int toX, int toY) {
    moveTo(fromX, fromY);
    pauseOfTheHand();
    press();
    constexpr int steps = 10;
    for (int step = 1; step <= steps; ++step) {
        pauseOfTheHand();
        moveTo(fromX + (toX - fromX) * step / steps, fromY + (toY - fromY) * step / steps);
    }
    pauseOfTheHand();
    release();
}

void Screen::press(const std::vector<std::string>& keys) {
    std::vector<KeySym> symbols;
    for (const std::string& name : keys) {
        symbols.push_back(XStringToKeysym(name.c_str()));
    }
    for (const KeySym symbol : symbols) {
        x_->key(symbol, true);
    }
    std::reverse(symbols.begin(), symbols.end());
    for (const KeySym symbol : symbols) {
        x_->key(symbol, false);
    }
}

void Screen::type(const std::string& text) {
    for (const char character : text) {
        const KeySym symbol = keySymOf(character);
        // The key's second symbol takes the shift key.
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

Picture Screen::picture() const {
    return picture({0, 0, DisplayWidth(x_->display, DefaultScreen(x_->display)),
                    DisplayHeight(x_->display, DefaultScreen(x_->display))});
}

Picture Screen::picture(const Rectangle& rectangle) const {
    const Rectangle whole{0, 0, DisplayWidth(x_->display, DefaultScreen(x_->display)),
                          DisplayHeight(x_->display, DefaultScreen(x_->display))};
    const Rectangle place = rectangle.within(whole);
    if (place.isEmpty()) {
        return {};
    }
    XImage* image =
        XGetImage(x_->display, x_->root, place.x, place.y, static_cast<unsigned>(place.width),
                  static_cast<unsigned>(place.height), AllPlanes, ZPixmap);
    if (image == nullptr || image->bits_per_pixel != 32) {
        throw std::runtime_error("the screen has no picture of 32 bits a pixel");
    }
    Picture picture{image->width, image->height, {}};
    picture.rgb.reserve(3 * static_cast<std::size_t>(image->width) *
                        static_cast<std::size_t>(image->height));
    const bool isSwapped =
        (image->byte_order == MSBFirst) == (std::endian::native == std::endian::little);
    for (int y = 0; y < image->height; ++y) {
        for (int x = 0; x < image->width; ++x) {
            std::uint32_t pixel = 0;
            std::memcpy(&pixel,
                        image->data + std::ptrdiff_t{y} * image->bytes_per_line +
                            std::ptrdiff_t{4} * x,
                        sizeof pixel);
            if (isSwapped) {
                pixel = __builtin_bswap32(pixel);
            }
            picture.rgb.push_back(static_cast<std::uint8_t>(pixel >> 16U));
            picture.rgb.push_back(static_cast<std::uint8_t>(pixel >> 8U));
            picture.rgb.push_back(static_cast<std::uint8_t>(pixel));
        }
    }
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
    for (const unsigned long number :
         x_->property<unsigned long>(x_->root, "_NET_CLIENT_LIST_STACKING", XA_WINDOW)) {
        const auto title = x_->property<char>(number, "_NET_WM_NAME", x_->atom("UTF8_STRING"));
        const auto process = x_->property<unsigned long>(number, "_NET_WM_PID", XA_CARDINAL);
        windows.push_back({number, std::string(title.begin(), title.end()),
                           process.empty() ? 0 : static_cast<pid_t>(process.front())});
    }
    return windows;
}

Rectangle Screen::placeOf(const Window& window) const {
    XWindowAttributes attributes;
    ::Window child = 0;
    Rectangle place;
    if (XGetWindowAttributes(x_->display, window.number, &attributes) != 0 &&
        XTranslateCoordinates(x_->display, window.number, x_->root, 0, 0, &place.x, &place.y,
                              &child) != 0) {
        place.width = attributes.width;
        place.height = attributes.height;
    }
    return place;
}

bool Screen::isManaged() const {
    if (x_->property<unsigned long>(x_->root, "_NET_SUPPORTING_WM_CHECK", XA_WINDOW).empty()) {
        return false;
    }
    const ::Window probe = XCreateSimpleWindow(x_->display, x_->root, 0, 0, 8, 8, 0, 0, 0);
    XMapWindow(x_->display, probe);
    XSync(x_->display, False);
    const auto isListed = [this, probe] {
        const auto all =
            x_->property<unsigned long>(x_->root, "_NET_CLIENT_LIST_STACKING", XA_WINDOW);
        return std::find(all.begin(), all.end(), probe) != all.end();
    };
    bool wasListed = false;
    for (int look = 0; look < 100 && !wasListed; ++look) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        wasListed = isListed();
    }
    XDestroyWindow(x_->display, probe);
    XSync(x_->display, False);
    await("the small window's end", [&] { return !isListed(); });
    return wasListed;
}

std::optional<unsigned long> Screen::activeWindow() const {
    const auto active = x_->property<unsigned long>(x_->root, "_NET_ACTIVE_WINDOW", XA_WINDOW);
    return active.empty() || active.front() == 0 ? std::nullopt : std::optional(active.front());
}

void Screen::close(const Window& window) {
    x_->request(window.number, "_NET_CLOSE_WINDOW", {CurrentTime, 2});
}

void Screen::activate(const Window& window) {
    x_->request(window.number, "_NET_ACTIVE_WINDOW", {2, CurrentTime, 0});
    await("the window to become active",
          [&] { return activeWindow() == std::optional(window.number); });
}

void Screen::resize(const Window& window, int width, int height) {
    XResizeWindow(x_->display, window.number, static_cast<unsigned>(width),
                  static_cast<unsigned>(height));
    XSync(x_->display, False);
}

std::chrono::microseconds Screen::roundTrip(const Window& window) {
    XEvent event;
    std::memset(&event, 0, sizeof event);
    event.xclient.type = ClientMessage;
    event.xclient.window = window.number;
    event.xclient.message_type = x_->atom("WM_PROTOCOLS");
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(x_->atom("_NET_WM_PING"));
    event.xclient.data.l[1] = ++x_->lastPing;
    event.xclient.data.l[2] = static_cast<long>(window.number);
    const auto start = std::chrono::steady_clock::now();
    XSendEvent(x_->display, window.number, False, NoEventMask, &event);
    XFlush(x_->display);
    while (x_->lastPong != x_->lastPing) {
        x_->takeEvents();
        const auto passed = std::chrono::steady_clock::now() - start;
        if (passed > patience) {
            throw Overdue("The window does not answer");
        }
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() -
                                                                 start);
}

} // namespace vistrane
