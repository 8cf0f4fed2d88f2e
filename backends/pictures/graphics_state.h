#pragma once

#include <memory>

#include "platform/appkit/NSGraphicsContext.h"

namespace vistrane {

/// The calling thread's current graphics context, or null. Each thread has its own context and its
/// own stack of saved contexts.
std::shared_ptr<NSGraphicsContext> currentGraphicsContext();
void setCurrentGraphicsContext(std::shared_ptr<NSGraphicsContext> context);

void pushGraphicsContext();
/// Does nothing if no context is saved.
void popGraphicsContext();

} // namespace vistrane
