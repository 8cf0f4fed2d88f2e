#include "frontends/commandline/log_lines.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace vistrane {

bool isDetail(const std::string& logLine) {
    constexpr std::array<std::string_view, 8> beginnings = {
        "\nmoviePath=",
        "finished writing",
        "failed appending #1 buffer",
        "failed append buffer with error: ",
        "error:adaptor not ready when i=",
        "treating frame again at: ",
        "CVPixelBufferRef could not create context",
        "deviceInputWithDevice: failed (",
    };
    return std::any_of(beginnings.begin(), beginnings.end(),
                       [&](std::string_view beginning) { return logLine.starts_with(beginning); });
}

bool isLostStill(const std::string& logLine) {
    return logLine.starts_with("photoOutput error: ");
}

} // namespace vistrane
