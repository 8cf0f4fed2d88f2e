#pragma once

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// A window that is an object of the program. The back end makes, shows and titles its window; the
/// program sends it no message. Main thread only.
class NSPanel : public NSObject {};

} // namespace vistrane
