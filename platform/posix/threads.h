#pragma once

#include <functional>

namespace vistrane {

/// Starts a thread that nobody joins, with every signal blocked in it: signals stay with the
/// threads that were there before. Returns false when the system grants no thread; `entry` is then
/// dropped without a call.
bool startDetachedThread(std::function<void()> entry);

} // namespace vistrane
