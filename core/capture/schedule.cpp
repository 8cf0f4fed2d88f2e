#include "core/app/AppDelegate.h"

#include "core/capture/interval.h"
#include "platform/foundation/Foundation.h"
#include "platform/foundation/NSString.h"

namespace vistrane {

namespace {

/// Replaces the field's text by its leading integer, clamped to the range from 0 to `highest`.
void clampField(NSTextField& field, std::int32_t highest) {
    field.setIntValue(field.intValue());
    if (field.intValue() < 0) {
        field.setStringValue("0");
    }
    if (field.intValue() > highest) {
        field.setStringValue(std::to_string(highest));
    }
}

} // namespace

void AppDelegate::timeIntervalchanged(NSObject*) {
    clampField(*hInput, highestHours);
    clampField(*mInput, highestSixtieths);
    clampField(*sInput, highestSixtieths);

    const auto total = [this] {
        return totalSeconds(hInput->intValue(), mInput->intValue(), sInput->intValue());
    };
    realInterval = total();
    if (realInterval <= 0) {
        sInput->setStringValue("1");
    }
    realInterval = total();
    timeD->setStringValue(stringWithFormat("( t = %d s )", {realInterval}));
}

void AppDelegate::startRunning(NSObject*) {
    startB->setState(NSControlStateValueOn);
    if (!aSession || !aSession->isRunning()) {
        return;
    }
    timeIntervalchanged(this);
    myWindow->makeFirstResponder(nullptr);

    const char* title = nullptr;
    if (myTimer && myTimer->isValid()) {
        myTimer->invalidate();
        title = "Start Auto Capture";
    } else {
        addPhotoFrame();
        myTimer = platform_.foundation.scheduledTimerWithTimeInterval(
            static_cast<NSTimeInterval>(realInterval),
            [this](NSTimer& timer) { startTheTimer(&timer); }, true);
        title = "Stop Auto Capture";
    }
    startB->setTitle(title);
}

void AppDelegate::startTheTimer(NSTimer*) {
    addPhotoFrame();
}

bool AppDelegate::captureOutputShouldProvideSampleAccurateRecordingStart(AVCaptureFileOutput*) {
    return false;
}

} // namespace vistrane
