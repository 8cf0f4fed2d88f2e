#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <QPalette>

namespace vistrane {

/// Whether the desktop is light or dark, from the desktop portal and, where that has no opinion,
/// from the palette that the desktop gave the application. Main thread only, after the application
/// object and before it goes.
class Appearance {
public:
    /// Asks the portal and waits for the answer, but no longer than a third of a second: a later
    /// one counts as a change.
    Appearance();
    ~Appearance();
    Appearance(const Appearance&) = delete;
    Appearance& operator=(const Appearance&) = delete;

    bool isDark() const;

    /// What the user's settings say under "AppleInterfaceStyle": "Dark", or nothing.
    std::optional<std::string> interfaceStyle() const;

    /// Called after each change, from the event loop.
    void setChangeHandler(std::function<void()> handler);

private:
    class Portal;

    std::function<void()> changed_;
    bool paletteIsDark_;
    std::unique_ptr<Portal> portal_;
};

/// The program's own colours.
QPalette ownPalette(bool isDark);

/// Dresses the application accordingly: in the desktop's own style and palette if those are as
/// light or dark, else in a style and palette of the program's own.
void applyPalette(bool isDark);

} // namespace vistrane
