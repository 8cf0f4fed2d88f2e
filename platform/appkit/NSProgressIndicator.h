#pragma once

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// A bar from 0 to its maximum, initially 100. Values above the maximum fill it. Main thread only.
class NSProgressIndicator : public NSObject {
public:
    virtual void setMaxValue(double value) = 0;
    virtual void setDoubleValue(double value) = 0;
};

} // namespace vistrane
