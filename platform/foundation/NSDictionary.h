#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace vistrane {

/// Settings and attributes: keys with their values, in the order of insertion.
using NSDictionaryValue = std::variant<bool, std::int64_t, std::uint64_t, std::string>;
using NSDictionary = std::vector<std::pair<std::string, NSDictionaryValue>>;

} // namespace vistrane
