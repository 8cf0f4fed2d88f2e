#pragma once

#include <mutex>
#include <string>
#include <string_view>

namespace vistrane {

/// The lines and the progress bar that the program writes to its standard error output. Any
/// thread.
///
/// A line is written whole, never mixed with another. On a terminal the bar is the last line and
/// is drawn anew below each line that comes; elsewhere there is no bar.
class ConsoleOutput {
public:
    /// `descriptor` stays the caller's. Asks once whether it is a terminal.
    explicit ConsoleOutput(int descriptor);
    ConsoleOutput(const ConsoleOutput&) = delete;
    ConsoleOutput& operator=(const ConsoleOutput&) = delete;

    /// Writes the text, unchanged, and a line end. What cannot be written is lost.
    void writeLine(std::string_view text);

    /// Draws the bar at `value` of `maximum`, or takes it away unless both are above 0
    /// and the maximum is finite.
    void showProgress(double value, double maximum);

    bool isTerminal() const { return isTerminal_; }

private:
    std::string barFor(double value, double maximum) const;
    std::size_t columns() const;
    void write(std::string_view bytes) const;

    const int descriptor_;
    const bool isTerminal_;
    std::mutex mutex_;
    /// The bar as it stands on the terminal; empty without one.
    std::string bar_;
};

} // namespace vistrane
