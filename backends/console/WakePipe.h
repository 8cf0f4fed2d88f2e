#pragma once

namespace vistrane {

/// A pipe that ends the sleep of a loop that polls it.
class WakePipe {
public:
    WakePipe();
    ~WakePipe();
    WakePipe(const WakePipe&) = delete;
    WakePipe& operator=(const WakePipe&) = delete;

    /// Makes the descriptor readable. Any thread; once between two calls of `clear`.
    void wake() const;

    /// -1 when the system gave no pipe: the loop must look by itself.
    int descriptor() const { return ends_[0]; }
    void clear() const;

private:
    int ends_[2] = {-1, -1};
};

} // namespace vistrane
