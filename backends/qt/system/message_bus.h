#pragma once

#include <chrono>

namespace vistrane {

enum class MessageBus { session, system };

/// How long the callers wait for a bus that does not answer.
inline constexpr std::chrono::milliseconds busTimeout{1000};

/// Whether the bus accepts a connection but does not answer within `timeout`. Connecting to such a
/// bus through Qt would block for half a minute. False if the bus answers or refuses. Main thread,
/// or before there are other threads: reads the environment.
bool hangs(MessageBus bus, std::chrono::milliseconds timeout = busTimeout);

/// If the session bus hangs, changes the environment so that this program has none: Qt's platform
/// plugins would block as well. Returns whether it hangs. Call before there is an application.
bool leaveHangingSessionBus();

} // namespace vistrane
