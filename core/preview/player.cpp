#include "core/app/AppDelegate.h"

#include "core/app/appearance.h"
#include "core/preview/button_faces.h"
#include "core/preview/play_period.h"
#include "platform/appkit/AppKit.h"
#include "platform/foundation/Foundation.h"
#include "platform/foundation/NSString.h"

namespace vistrane {

namespace {

/// Whether the list has a frame at `index`. A negative index counts as past the end.
bool isWithin(const std::vector<std::string>& frames, std::int64_t index) {
    return static_cast<std::uint64_t>(index) < frames.size();
}

/// The text for the slider's frame.
std::string frameReadOut(const NSSlider& slider, std::size_t count) {
    return stringWithFormat(
        "Displaying frame %d of %d",
        {static_cast<std::int32_t>(slider.integerValue() + 1), static_cast<std::int32_t>(count)});
}

} // namespace

void AppDelegate::sliderDisplaying(NSObject*) {
    platform_.appKit.expectImages(nullptr, 0, ImageUse::View);
    const auto frames = pictureArray.load();
    if (frames && !frames->empty()) {
        playing = photoSlider->integerValue();
        // The slider normally ends at the last frame. Beyond it, no picture is shown.
        myDisplay->setImage(isWithin(*frames, playing)
                                ? platform_.appKit.imageWithContentsOfFile(
                                      (*frames)[static_cast<std::size_t>(playing)])
                                : nullptr);
    }
    currentS->setStringValue(frameReadOut(*photoSlider, frames ? frames->size() : 0));
}

void AppDelegate::playPictures(NSObject*) {
    if (playTimer && playTimer->isValid()) {
        playTimer->invalidate();
        setButtonFaces(platform_.appKit, *previewPlayButton, isDark(), false);
        platform_.appKit.expectImages(nullptr, 0, ImageUse::View);
        return;
    }
    setButtonFaces(platform_.appKit, *previewPlayButton, isDark(), true);
    // A later move of the rate slider does not change this period.
    const NSTimeInterval period = playPeriod(fpsS->floatValue());
    playing = 0;
    playTimer = platform_.foundation.scheduledTimerWithTimeInterval(
        period, [this](NSTimer& timer) { startPlayTimer(&timer); }, true);
    playTimer->fire();
}

void AppDelegate::startPlayTimer(NSTimer*) {
    // Both the list and `playing` may have been replaced since the last tick.
    const auto frames = pictureArray.load();
    if (!frames || !isWithin(*frames, playing)) {
        if (playTimer) {
            playTimer->invalidate();
        }
        playing = 0;
        setButtonFaces(platform_.appKit, *previewPlayButton, isDark(), false);
        platform_.appKit.expectImages(nullptr, 0, ImageUse::View);
    } else {
        myDisplay->setImage(
            platform_.appKit.imageWithContentsOfFile((*frames)[static_cast<std::size_t>(playing)]));
        photoSlider->setIntegerValue(playing);
        currentS->setStringValue(frameReadOut(*photoSlider, frames->size()));
        platform_.appKit.expectImages(frames, static_cast<std::size_t>(playing) + 1,
                                      ImageUse::View);
    }
    // Incremented after the end too, on purpose. That leaves 1; the next start sets it to 0.
    ++playing;
}

} // namespace vistrane
