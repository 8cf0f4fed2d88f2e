#pragma once

#include <cstdint>

namespace vistrane {

/// Whether the file system that holds an open file is known to be of this machine, and to give its
/// files the time of the kernel's last clock tick. A volume of it may still have full seconds only.
bool hasExactTimes(int file);

/// The time that a file with exact times would get now, in nanoseconds since 1970.
std::int64_t timeForFiles();

} // namespace vistrane
