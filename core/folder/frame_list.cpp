#include "core/folder/frame_list.h"

#include <utility>

#include "core/app/AppDelegate.h"
#include "core/folder/project_folder.h"
#include "platform/appkit/AppKit.h"
#include "platform/foundation/Foundation.h"
#include "platform/foundation/NSString.h"

namespace vistrane {

namespace {

constexpr std::uint32_t frameOrderOptions =
    NSCaseInsensitiveSearch | NSNumericSearch | NSWidthInsensitiveSearch | NSForcedOrderingSearch;

} // namespace

NSComparisonResult frameNameCompare(const std::string& first, const std::string& second,
                                    const NSLocale& locale) {
    return locale.compare(first, second, frameOrderOptions, NSRange{0, first.size()});
}

void sortFrames(std::vector<std::string>& paths, const NSLocale& locale) {
    locale.sort(paths, frameOrderOptions);
}

void AppDelegate::startMonitoringFolder(NSObject*) {
    // Only this starts the timer: if the program started without a folder, one that is chosen later
    // is not listed until the next launch. That is on purpose.
    if (!chosenFolder(*outfolderB)) {
        return;
    }
    arrayTimer = platform_.foundation.scheduledTimerWithTimeInterval(
        0.1, [this](NSTimer& timer) { startArrayTimer(&timer); }, true);
}

void AppDelegate::startArrayTimer(NSTimer*) {
    refreshArray(this);
}

void AppDelegate::refreshArray(NSObject*) {
    const std::optional<std::string> folder = chosenFolder(*outfolderB);
    if (!folder) {
        return;
    }
    const auto names = platform_.foundation.defaultManager().contentsOfDirectoryAtPath(*folder);
    if (!names) {
        return;
    }
    const auto paths = sortedFrames_.update(*folder, names, platform_.foundation.currentLocale());

    const auto list = pictureArray.load();
    if (list && (list == paths || *list == *paths)) {
        return;
    }
    pictureArray.store(paths);
    // A playback does not go on where it was.
    platform_.appKit.expectImages(nullptr, 0, ImageUse::View);
    if (paths->empty()) {
        return;
    }

    const auto count = static_cast<NSInteger>(paths->size());
    myDisplay->setImage(platform_.appKit.imageWithContentsOfFile(paths->back()));
    playing = count - 1;
    photoSlider->setMinValue(0.0);
    photoSlider->setMaxValue(static_cast<double>(count - 1));
    photoSlider->setIntegerValue(count - 1);
    currentS->setStringValue(stringWithFormat(
        "Displaying frame %d of %d", {photoSlider->intValue() + 1, static_cast<int>(count)}));
    myDisplay->setNeedsDisplay(true);
}

} // namespace vistrane
