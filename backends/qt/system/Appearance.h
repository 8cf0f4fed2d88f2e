#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <QPalette>

namespace vistrane {

/// Whether the desktop is light or dark, by the desktop portal or, if that has no preference, by
/// the palette that the desktop gives the application. Main thread only, while there is an
/// application object.
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
    class PaletteWatch;

    void paletteChanged();

    std::function<void()> changed_;
    bool paletteIsDark_;
    std::unique_ptr<Portal> portal_;
    std::unique_ptr<PaletteWatch> paletteWatch_;
};

/// The program's own colours.
QPalette ownPalette(bool isDark);

/// Makes fields and buttons lighter if they are as black as the window: desktops for people who see
/// little may have such colours. Most styles outline them in white; Qt's own draws outlines darker
/// than the window, so that nothing would be seen of them.
void separateFields();

/// Applies the desktop's style and palette if they match `isDark`, otherwise the program's own.
void applyPalette(bool isDark);

} // namespace vistrane
