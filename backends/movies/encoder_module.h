#pragma once

#include <optional>
#include <string>

#include "backends/movies/VideoEncoder.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// The encoder module, or why it cannot be loaded.
struct EncoderModuleResult {
    const EncoderModule* module = nullptr;
    std::optional<NSError> error;
};

/// Loads the encoder module, which lies in a folder beside the program's, where that has not been
/// done. It stays loaded until the process ends. Any thread.
///
/// The program does not link the encoder's libraries: with the sixty libraries that they need in
/// turn they would take more than half of the time to the program's first line, and most runs make
/// no movie.
EncoderModuleResult encoderModule();

/// The same with the module at `path`.
EncoderModuleResult loadEncoderModule(const std::string& path);

} // namespace vistrane
