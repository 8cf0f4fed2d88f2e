#pragma once

#include <string>
#include <vector>

namespace vistrane::bench {

/// The time of a monotonic clock.
double milliseconds();
/// The processor time of this process.
double processorMilliseconds();

template <typename Work>
double timeOf(const Work& work, double (*clock)() = milliseconds) {
    const double started = clock();
    work();
    return clock() - started;
}

/// The quantile `part`, from 0 to 1; 0.5 is the median. 0 if there are no values.
double quantile(std::vector<double> values, double part);

/// The first columns of a row.
struct Label {
    std::string name;
    std::string kind;
    std::string size;
};

/// The numbers of both sides, turn by turn.
struct Turns {
    std::vector<double> ours;
    std::vector<double> peer;
};

/// Prints a row to standard output, separated by tabs:
///   name  kind  size  ours  peer  ratio  spread
/// `ours` and `peer` are medians, `ratio` is the median of the ratios, and `spread` is their
/// interquartile range.
void printTurns(const Label& label, const Turns& turns);

/// Exits with the message `what` unless `holds`.
void require(bool holds, const std::string& what);

} // namespace vistrane::bench
