#pragma once

#include <functional>

namespace vistrane {

/// Starts a thread that nobody joins, with every signal blocked in it: signals stay with the
/// threads that were there before. Returns false when the system grants no thread; `entry` is then
/// dropped without a call.
bool startDetachedThread(std::function<void()> entry);

/// The calling thread, and those that it starts from now on, leave the processor to the program's
/// other threads when there is not enough for all. Where a system can do that for one thread.
void giveWayToOtherThreads();

} // namespace vistrane
