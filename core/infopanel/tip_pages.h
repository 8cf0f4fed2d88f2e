#pragma once

#include <cstdint>
#include <string>

namespace vistrane {

inline constexpr std::int32_t tipPageCount = 4;

/// A page of the tips: the name of its picture in the resources, and its text.
struct TipPage {
    std::string picture;
    std::string text;
};

/// The page with that number, from 1 to `tipPageCount`. Any other number returns a page without
/// text.
const TipPage& tipPage(std::int32_t number);

} // namespace vistrane
