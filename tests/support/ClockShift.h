#pragma once

namespace vistrane {

/// Moves the monotonic clock of this process forward while it lives. Linked into a test program,
/// `ClockShift.cpp` replaces the C library's `clock_gettime`. Not to be combined with threads that
/// wait with a timeout: the kernel's clock, by which they wake, is not moved.
class ClockShift {
public:
    ClockShift() = default;
    ~ClockShift();
    ClockShift(const ClockShift&) = delete;
    ClockShift& operator=(const ClockShift&) = delete;

    void add(double seconds);
};

} // namespace vistrane
