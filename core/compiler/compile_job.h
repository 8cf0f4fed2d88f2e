#pragma once

#include <atomic>
#include <cstdint>

namespace vistrane {

/// The frame rate of the running compile: the rate slider's value at its start. One for the
/// process. Read by the compile thread; not saved.
std::atomic<std::int32_t>& compileFrameRate();

} // namespace vistrane
