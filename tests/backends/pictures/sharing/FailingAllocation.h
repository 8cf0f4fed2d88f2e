#pragma once

namespace vistrane::testing {

/// While it lives, one allocation by `new` in this thread fails: the one that comes after
/// `successes` others. One at a time in a thread.
class FailingAllocation {
public:
    explicit FailingAllocation(int successes);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    /// Whether it came to that.
    bool hasFailed() const;
};

} // namespace vistrane::testing
