#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace vistrane {

/// Starts a thread with all signals blocked, in it and in the threads that it starts. If the system
/// refuses a thread, the result is not joinable, and `entry` never runs.
std::thread startThread(std::function<void()> entry);

/// The same, detached. Returns whether the thread was started.
bool startDetachedThread(std::function<void()> entry);

/// Runs `work` on another thread and waits for its end or the timeout. Returns whether it ended in
/// time. Otherwise the work continues, so it must own everything that it uses. If the system
/// refuses a thread, the work runs on the calling thread, without a timeout.
bool runWithin(std::chrono::milliseconds timeout, std::function<void()> work);

/// Gives the calling thread, and threads that it starts later, a low priority. Does nothing on
/// systems where priorities belong to processes.
void lowerThreadPriority();

} // namespace vistrane
