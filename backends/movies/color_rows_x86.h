#pragma once

#include <vector>

#include "backends/movies/color_rows.h"

namespace vistrane {

/// Adds the ways that this processor can go with its vectors, slowest first. On processors of
/// another family: none.
void addX86RowConversions(std::vector<RowConversion>& found);

} // namespace vistrane
