#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace vistrane {

/// Starts a thread that leaves every signal to the others, as do the threads it starts in turn:
/// the front end alone decides where its signals arrive. Not joinable when the system grants no
/// thread; `work` is dropped then.
std::thread startThread(std::function<void()> work);

/// The same with a thread that nobody joins. Returns whether there is one.
bool startDetached(std::function<void()> work);

/// Runs `work` on a thread of its own and waits for its end, but not longer than `patience`.
/// When the system grants no thread, the work is done here, however long it takes.
/// Returns whether it has ended. Work that takes longer goes on; it must own what it touches.
bool runWithin(std::chrono::milliseconds patience, std::function<void()> work);

} // namespace vistrane
