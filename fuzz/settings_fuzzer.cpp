#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "backends/posix/settings_text.h"

/// Any bytes give settings that come back from their own text, or an error and no settings.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using vistrane::parseSettings;
    const auto result = parseSettings({reinterpret_cast<const char*>(data), size});
    if (!result.error.empty()) {
        return result.settings.empty() ? 0 : (std::abort(), 0);
    }
    const auto again = parseSettings(vistrane::settingsText(result.settings));
    if (!again.error.empty() || again.settings != result.settings) {
        std::abort();
    }
    return 0;
}
