#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QImage>
#include <QRect>
#include <sys/types.h>

namespace vistrane {

/// A top-level window, as the window manager lists it.
struct Window {
    unsigned long id = 0;
    std::string title;
    pid_t process = 0;
};

/// An X display: mouse, keyboard, screen, bell and windows.
class Screen {
public:
    explicit Screen(const std::string& display);
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    void moveTo(QPoint place);
    void press();
    void release();
    /// Clicks the middle of the rectangle.
    void click(const QRect& rectangle);
    void drag(QPoint from, QPoint to);

    /// The last key, while the others are held, by the X names: {"Control_L", "o"}.
    void press(const std::vector<std::string>& keys);
    /// Printable ASCII, and a tabulator.
    void type(const std::string& text);

    QImage picture() const;
    /// The part of the rectangle that lies on the screen.
    QImage picture(const QRect& rectangle) const;

    /// How often the bell rang since the last call.
    int bells();

    /// The managed windows, lower ones first.
    std::vector<Window> windows() const;
    /// Without the window manager's frame.
    QRect placeOf(const Window& window) const;
    /// Shows a small window for a moment. True when the window manager has listed it: a starting
    /// one announces itself before it notices every new window.
    bool isManaged() const;
    std::optional<unsigned long> activeWindow() const;
    /// Asks the window manager to close it, as the close button of a task bar does.
    void close(const Window& window);
    void activate(const Window& window);

    /// The time until the application's main loop answers the window manager's ping.
    std::chrono::microseconds roundTrip(const Window& window);

private:
    class X;
    std::unique_ptr<X> x_;
};

} // namespace vistrane
