#pragma once

#include <optional>
#include <string>

#include "backends/movies/VideoEncoder.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// The encoder module, or the reason why it cannot be loaded.
struct EncoderModuleResult {
    const EncoderModule* module = nullptr;
    std::optional<NSError> error;
};

/// Loads the encoder module, unless it is already loaded. Its path is relative to the program,
/// usually `../lib/vistrane`. It stays loaded until the process ends. Any thread.
///
/// The program does not link the encoder's libraries: loading them and the sixty libraries that
/// they need would take more than half of the time until `main`, and most runs make no movie.
EncoderModuleResult encoderModule();

/// The same, with the module at `path`.
EncoderModuleResult loadEncoderModule(const std::string& path);

} // namespace vistrane
