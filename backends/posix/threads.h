#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace vistrane {

/// Starts a thread with all signals blocked, in it and in the threads that it starts. The result is
/// not joinable when the system grants no thread; `entry` then never runs.
std::thread startThread(std::function<void()> entry);

/// The same, detached. Returns whether the thread was started.
bool startDetachedThread(std::function<void()> entry);

/// Runs `work` on another thread and waits for its end or the timeout. Returns whether it ended in
/// time. Work that did not goes on, so it must own what it touches. When the system grants no
/// thread, the work runs on the calling thread, without a timeout.
bool runWithin(std::chrono::milliseconds timeout, std::function<void()> work);

/// Gives the calling thread, and those that it starts from now on, a low priority. Does nothing on
/// systems where priorities belong to processes.
void giveWayToOtherThreads();

} // namespace vistrane
