#pragma once

#include <chrono>
#include <random>
#include <string>
#include <vector>

namespace vistrane {

/// The rounds of a test that repeats something: a few in the test run, and many in a long run,
/// which the environment variable VISTRANE_SOAK requests: "full", as tests/soak/run sets it, or a
/// part of that, such as 0.1. A long run shows its progress on standard error.
///
///     for (Soak soak("killed compiles", {.few = 6, .many = 250}); soak.next();) { ... }
class Soak {
public:
    struct Rounds {
        int few;
        int many;
    };
    Soak(std::string what, Rounds rounds);

    static bool isLong();

    /// Begins the next round. False after the last one, and as soon as the test has failed.
    bool next();
    /// From 1 on; 0 before the first `next`.
    int round() const { return round_; }
    int count() const { return count_; }

    /// The same sequence in every run; what happens in the program at these moments differs.
    int randomUpTo(int highest);
    /// Waits a random time.
    void sleepUpTo(std::chrono::milliseconds longest);

    /// Appends "WHAT, tab, REACHED, tab, yes or no" to the file VISTRANE_SOAK_RESULTS, if that is
    /// set, and prints it. Figures that depend on the machine's speed belong here and not into
    /// assertions.
    void report(const std::string& reached, bool isGoal) const;

private:
    void showProgress() const;

    std::string what_;
    int count_;
    int round_ = 0;
    std::mt19937 random_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// Measured times, in milliseconds.
class Times {
public:
    void add(double milliseconds) { all_.push_back(milliseconds); }
    /// The smallest time that this share of all times does not exceed. 0 without any.
    double percentile(double share) const;
    double worst() const { return percentile(1.0); }
    /// How large a part of the times does not exceed the limit.
    double shareWithin(double limit) const;

private:
    std::vector<double> all_;
};

/// The time since it was made.
class StopWatch {
public:
    double milliseconds() const {
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start_)
            .count();
    }

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// The slope of the line that fits the points best, by least squares.
double slope(const std::vector<double>& x, const std::vector<double>& y);

} // namespace vistrane
