#pragma once

#include <string>

namespace vistrane {

/// Whether a log line of the program only repeats, for a developer, what the command says in its
/// own words: a step of a compile, or the device error that precedes an alert. --verbose shows it.
bool isDetail(const std::string& logLine);

/// Whether a log line says that the camera gave no picture for a still.
bool isLostStill(const std::string& logLine);

} // namespace vistrane
