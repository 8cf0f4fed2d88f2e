#pragma once

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// An output that records a stream into a file. The program uses none.
class AVCaptureFileOutput : public NSObject {};

class AVCaptureFileOutputDelegate {
public:
    virtual bool
    captureOutputShouldProvideSampleAccurateRecordingStart(AVCaptureFileOutput* output) = 0;

protected:
    ~AVCaptureFileOutputDelegate() = default;
};

} // namespace vistrane
