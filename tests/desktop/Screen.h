#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "tests/desktop/Picture.h"

namespace vistrane {

/// A top-level window, as the window manager knows it.
struct Window {
    unsigned long number = 0;
    std::string title;
    pid_t process = 0;
};

/// The X display as a person at it has it: a mouse, a keyboard, and eyes and ears.
class Screen {
public:
    explicit Screen(const std::string& display);
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    void moveTo(int x, int y);
    void press();
    void release();
    /// Moves to the middle of the rectangle and clicks there.
    void click(const Rectangle& rectangle, unsigned button = 1);
    /// Presses the button in one place, moves over to the other, and releases it there.
    void drag(int fromX, int fromY, int toX, int toY);

    /// One key with those that are held meanwhile, by the X names: {"Control_L", "o"}.
    void press(const std::vector<std::string>& keys);
    /// Printable ASCII, a newline for Return.
    void type(const std::string& text);

    Picture picture() const;
    /// The part of the rectangle that lies on the screen.
    Picture picture(const Rectangle& rectangle) const;

    /// How often the bell rang since the last call.
    int bells();

    /// The windows that the window manager manages, lower ones first.
    std::vector<Window> windows() const;
    /// Without the window manager's frame.
    Rectangle placeOf(const Window& window) const;
    /// Shows a small window for a moment. True when a window manager has taken it into its list:
    /// one that is starting says that it is there before it sees every new window.
    bool isManaged() const;
    std::optional<unsigned long> activeWindow() const;
    /// As the close button of a task bar does.
    void close(const Window& window);
    void activate(const Window& window);
    void resize(const Window& window, int width, int height);

    /// How long the window takes to answer that it is alive. The window manager's question is
    /// asked, which the application's main loop answers.
    std::chrono::microseconds roundTrip(const Window& window);

private:
    class X;
    std::unique_ptr<X> x_;
};

} // namespace vistrane
