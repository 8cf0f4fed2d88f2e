#pragma once

namespace vistrane {

/// Whether the file system that holds an open file is known to be of this machine, and to give its
/// files the time of the kernel's last clock tick. A volume of it may still have full seconds only.
bool hasExactTimes(int file);

} // namespace vistrane
