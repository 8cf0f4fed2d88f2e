#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace vistrane {

/// Starts a thread with every signal blocked in it and in those that it starts in turn: signals
/// stay with the threads that were there before. Not joinable when the system grants no thread;
/// `entry` is then dropped without a call.
std::thread startThread(std::function<void()> entry);

/// The same with a thread that nobody joins. Returns whether there is one.
bool startDetachedThread(std::function<void()> entry);

/// Runs `work` on a thread of its own and waits for its end, but not longer than `patience`.
/// When the system grants no thread, the work is done here, however long it takes.
/// Returns whether it has ended. Work that takes longer goes on; it must own what it touches.
bool runWithin(std::chrono::milliseconds patience, std::function<void()> work);

/// The calling thread, and those that it starts from now on, leave the processor to the program's
/// other threads when there is not enough for all. Where a system can do that for one thread.
void giveWayToOtherThreads();

} // namespace vistrane
