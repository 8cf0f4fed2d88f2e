#pragma once

namespace vistrane {

/// In milliseconds, for the functions of QTest that wait. Ends a test that would never end; Qt's
/// own five seconds are too short for a busy machine.
inline constexpr int longestWait = 60000;

} // namespace vistrane
