#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <QPalette>

namespace vistrane {

/// Whether the desktop is light or dark, according to the desktop portal or, if that has no
/// preference, the application's initial palette. Main thread only, while there is an application
/// object.
class Appearance {
public:
    /// Asks the portal and waits for the answer for at most 0.3 s. A later answer counts as a
    /// change.
    Appearance();
    ~Appearance();
    Appearance(const Appearance&) = delete;
    Appearance& operator=(const Appearance&) = delete;

    bool isDark() const;

    /// The value for the key "AppleInterfaceStyle": "Dark", or nothing.
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

/// Applies the desktop's style and palette if they match `isDark`, otherwise the program's own.
void applyPalette(bool isDark);

} // namespace vistrane
