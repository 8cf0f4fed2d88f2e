#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vistrane {

/// The boxes of a QuickTime movie by type: each one's content, without the header, as signed 32-bit
/// numbers. Of several boxes of one type the first. Read by hand, because other readers tolerate
/// contradictions.
using MovieBoxes = std::map<std::string, std::vector<std::int64_t>>;

/// Empty when the boxes do not fill `bytes` exactly.
MovieBoxes boxesIn(const std::string& bytes);

/// Empty for anything but a complete movie, with its samples and its index.
MovieBoxes boxesOf(const std::string& path);

} // namespace vistrane
