// For systems whose file systems are not known.

#include "backends/posix/file_times.h"

namespace vistrane {

bool hasExactTimes(int) {
    return false;
}

} // namespace vistrane
