#pragma once

#include <memory>
#include <string>

namespace vistrane {

/// By the portal's numbers.
enum class ColourScheme : unsigned { none = 0, dark = 1, light = 2 };

/// The part of the desktop portal that tells programs whether the desktop is light or dark, on a
/// session's bus and on a thread of its own.
class AppearancePortal {
public:
    AppearancePortal(const std::string& sessionAddress, ColourScheme scheme);
    ~AppearancePortal();
    AppearancePortal(const AppearancePortal&) = delete;
    AppearancePortal& operator=(const AppearancePortal&) = delete;

    /// Switches the desktop and tells all programs.
    void switchTo(ColourScheme scheme);

private:
    class Service;
    std::unique_ptr<Service> service_;
};

} // namespace vistrane
