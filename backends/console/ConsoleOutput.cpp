#include "backends/console/ConsoleOutput.h"

#include <algorithm>
#include <cmath>

#include <sys/ioctl.h>
#include <unistd.h>

namespace vistrane {

namespace {

/// Carriage return, then "erase to the end of the line".
constexpr std::string_view clearLine = "\r\x1b[K";

constexpr std::size_t usualColumns = 80;

/// A shorter bar says less than the text beside it.
constexpr std::size_t shortestBar = 10;

constexpr std::size_t mostUnread = 1 << 20;

} // namespace

ConsoleOutput::ConsoleOutput(int descriptor)
    : descriptor_(descriptor), isTerminal_(isatty(descriptor) == 1),
      writer_(
          descriptor, [](int) {}, mostUnread) {}

void ConsoleOutput::writeLine(std::string_view text) {
    const std::lock_guard lock(mutex_);
    std::string bytes(lastLine_.empty() ? std::string_view() : clearLine);
    bytes.append(text).append("\n").append(lastLine_);
    writer_.write(bytes);
}

void ConsoleOutput::showProgress(double value, double maximum, std::string_view text) {
    const bool hasBar = value > 0.0 && maximum > 0.0 && std::isfinite(maximum);
    showLastLine(hasBar && isTerminal_ ? barFor(value, maximum, text) : std::string());
}

void ConsoleOutput::showStatus(std::string_view text) {
    // The last column stays free, because a full line would wrap.
    const std::size_t available = columns();
    showLastLine(std::string(text.substr(0, available - std::min<std::size_t>(available, 1))));
}

void ConsoleOutput::showLastLine(std::string line) {
    if (!isTerminal_) {
        return;
    }
    const std::lock_guard lock(mutex_);
    if (line == lastLine_) {
        return;
    }
    writer_.write(std::string(clearLine) + line);
    lastLine_ = std::move(line);
}

std::string ConsoleOutput::barFor(double value, double maximum, std::string_view text) const {
    const double part = std::min(value / maximum, 1.0);
    std::string label = std::to_string(static_cast<int>(part * 100.0)) + " %";
    // The last column stays free, as above.
    std::size_t used = std::string_view("[] 100 %").size() + 1;
    const std::size_t available = columns();
    if (available <= used) {
        return label.substr(0, available - std::min<std::size_t>(available, 1));
    }
    if (!text.empty() && available > used + 1 + text.size() + shortestBar) {
        label.append(" ").append(text);
        // As long for each percentage.
        used += 1 + text.size();
    }
    const std::size_t width = available - used;
    const auto filled = static_cast<std::size_t>(part * static_cast<double>(width));
    return "[" + std::string(filled, '#') + std::string(width - filled, '.') + "] " + label;
}

std::size_t ConsoleOutput::columns() const {
    winsize size{};
    if (ioctl(descriptor_, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
        return usualColumns;
    }
    return size.ws_col;
}

void ConsoleOutput::flush(std::chrono::milliseconds timeout) {
    writer_.flush(timeout);
}

bool ConsoleOutput::flushWhileRead(std::chrono::milliseconds pause) {
    return writer_.flushWhileRead(pause);
}

} // namespace vistrane
