#pragma once

#include <atomic>
#include <cstdint>

namespace vistrane {

/// Frames a second of the running compile: the rate slider's value when it started. One for the
/// process, read by the compile thread; not saved.
std::atomic<std::int32_t>& compileFrameRate();

} // namespace vistrane
