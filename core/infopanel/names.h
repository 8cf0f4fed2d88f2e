#pragma once

namespace vistrane {

inline constexpr char applicationName[] = "Vistrane";

} // namespace vistrane
