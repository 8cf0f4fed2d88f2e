#pragma once

#include <string>
#include <vector>

#include "frontends/commandline/Session.h"

namespace vistrane {

// The documents that --json prints, on one line. Bytes that are no UTF-8 become U+FFFD.

/// {"NAME": ["text", ...]}
std::string jsonOf(const std::string& name, const std::vector<std::string>& texts);

/// {"path", "frames", "leftOut": [{"path", "reason"}], "width", "height", "duration" in seconds}
std::string jsonOf(const Session::Movie& movie);

} // namespace vistrane
