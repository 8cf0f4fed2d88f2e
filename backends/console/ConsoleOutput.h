#pragma once

#include <chrono>
#include <mutex>
#include <string>
#include <string_view>

#include "backends/posix/BackgroundWriter.h"

namespace vistrane {

/// Writes lines and the progress, a bar or a text, to standard error. Any thread.
///
/// Lines of several threads are never mixed. On a terminal the progress is the last line and is
/// redrawn below each new line. Without a terminal there is none.
class ConsoleOutput {
public:
    /// The caller keeps `descriptor` open. Whether it is a terminal is checked once, here.
    explicit ConsoleOutput(int descriptor);
    ConsoleOutput(const ConsoleOutput&) = delete;
    ConsoleOutput& operator=(const ConsoleOutput&) = delete;

    /// Writes the text unchanged, then a newline, on a thread of its own: a reader that stops must
    /// not stop the program. While more than a megabyte is unread, the oldest lines are discarded,
    /// and one line says how many. Text that cannot be written is discarded.
    void writeLine(std::string_view text);

    /// Draws the bar at `value` of `maximum`, and beside it the text, which is ASCII, if there is
    /// room. Removes it unless both are greater than 0 and the maximum is finite.
    void showProgress(double value, double maximum, std::string_view text = {});

    /// Draws the text, which is ASCII, in place of the bar, as far as there is room. Removes it if
    /// it is empty.
    void showStatus(std::string_view text);

    bool isTerminal() const { return isTerminal_; }

    /// Waits until everything is written, at most `timeout`.
    void flush(std::chrono::milliseconds timeout);
    /// The same, for as long as the reader takes some of the text within each `pause`. Returns
    /// false if it does not, or if text could not be written.
    bool flushWhileRead(std::chrono::milliseconds pause);

private:
    std::string barFor(double value, double maximum, std::string_view text) const;
    void showLastLine(std::string line);
    std::size_t columns() const;

    const int descriptor_;
    const bool isTerminal_;
    BackgroundWriter writer_;
    std::mutex mutex_;
    /// The bar or the text on the terminal, or an empty string.
    std::string lastLine_;
};

} // namespace vistrane
