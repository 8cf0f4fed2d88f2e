#pragma once

#include <string>
#include <vector>

namespace vistrane::bench {

/// Since some moment, of a clock that never goes back.
double milliseconds();

/// `part` from 0 to 1; 0.5 is the median. Of no values: 0.
double quantile(std::vector<double> values, double part);

/// What a line of the table is about.
struct Label {
    std::string name;
    std::string kind;
    std::string size;
};

/// What both sides took, turn by turn.
struct Turns {
    std::vector<double> ours;
    std::vector<double> peer;
};

/// Prints the line of those turns to standard output:
///   name  kind  size  ours  peer  ratio  spread
/// with tabs between. The first numbers are medians, the ratio is the median of the turns' ratios,
/// and the spread is the distance of its quartiles.
void printTurns(const Label& label, const Turns& turns);

/// Ends the program with `what` unless it holds.
void require(bool holds, const std::string& what);

} // namespace vistrane::bench
