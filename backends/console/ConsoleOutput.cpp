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

constexpr std::size_t mostUnread = 1 << 20;

} // namespace

ConsoleOutput::ConsoleOutput(int descriptor)
    : descriptor_(descriptor), isTerminal_(isatty(descriptor) == 1),
      writer_(
          descriptor, [](int) {}, mostUnread) {}

void ConsoleOutput::writeLine(std::string_view text) {
    const std::lock_guard lock(mutex_);
    std::string bytes(bar_.empty() ? std::string_view() : clearLine);
    bytes.append(text).append("\n").append(bar_);
    writer_.write(bytes);
}

void ConsoleOutput::showProgress(double value, double maximum) {
    if (!isTerminal_) {
        return;
    }
    const std::lock_guard lock(mutex_);
    const bool hasBar = value > 0.0 && maximum > 0.0 && std::isfinite(maximum);
    std::string bar = hasBar ? barFor(value, maximum) : std::string();
    if (bar == bar_) {
        return;
    }
    writer_.write(std::string(clearLine) + bar);
    bar_ = std::move(bar);
}

std::string ConsoleOutput::barFor(double value, double maximum) const {
    const double part = std::min(value / maximum, 1.0);
    const std::string percent = std::to_string(static_cast<int>(part * 100.0)) + " %";
    // The last column stays free, because a full line would wrap.
    const std::size_t used = std::string_view("[] 100 %").size() + 1;
    const std::size_t available = columns();
    if (available <= used) {
        return percent.substr(0, available - std::min<std::size_t>(available, 1));
    }
    const std::size_t width = available - used;
    const auto filled = static_cast<std::size_t>(part * static_cast<double>(width));
    return "[" + std::string(filled, '#') + std::string(width - filled, '.') + "] " + percent;
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
