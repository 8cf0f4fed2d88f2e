#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace vistrane {

/// Starts a thread that leaves every signal to the others, as do the threads it starts in turn:
/// the front end alone decides where its signals arrive.
std::thread startThread(std::function<void()> work);

/// Runs `work` on a thread of its own and waits for its end, but not longer than `patience`.
/// Returns whether it has ended. Work that takes longer goes on; it must own what it touches.
bool runWithin(std::chrono::milliseconds patience, std::function<void()> work);

} // namespace vistrane
