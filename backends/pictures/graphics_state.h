#pragma once

#include <memory>

#include "platform/appkit/NSGraphicsContext.h"

namespace vistrane {

/// The calling thread's current graphics context; null when there is none. Each thread has its own
/// and a stack of saved ones.
std::shared_ptr<NSGraphicsContext> currentGraphicsContext();
void setCurrentGraphicsContext(std::shared_ptr<NSGraphicsContext> context);

void pushGraphicsContext();
/// Without a saved context nothing changes.
void popGraphicsContext();

} // namespace vistrane
