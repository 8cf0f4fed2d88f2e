#pragma once

#include "tests/support/WorkFolder.h"

namespace vistrane {

using TemporaryFolder = WorkFolder;

} // namespace vistrane
