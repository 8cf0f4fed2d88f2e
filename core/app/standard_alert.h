#pragma once

#include <string>

namespace vistrane {

class AppKit;

/// The program's standard alert: a message, an informative text, one button "Got it" and a
/// transparent title bar. Blocks until it is answered. Any thread.
void runStandardAlert(AppKit& appKit, const std::string& message, const std::string& informative);

} // namespace vistrane
