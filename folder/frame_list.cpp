#include "folder/frame_list.h"

#include <algorithm>

#include "app/AppDelegate.h"
#include "folder/project_folder.h"
#include "platform/appkit/AppKit.h"
#include "platform/foundation/Foundation.h"
#include "platform/foundation/NSString.h"

namespace vistrane {

namespace {

/// Only the extension counts: hidden names and folders are frames too, other cases of the
/// extension are not.
bool isFrameName(const std::string& name) {
    return pathExtension(name) == "png";
}

std::vector<std::string> framePaths(const std::string& folder,
                                    const std::vector<std::string>& names) {
    std::vector<std::string> paths;
    for (const std::string& name : names) {
        if (isFrameName(name)) {
            paths.push_back(stringWithFormat("%@/%@", {folder, name}));
        }
    }
    return paths;
}

} // namespace

NSComparisonResult frameNameCompare(const std::string& first, const std::string& second,
                                    const NSLocale& locale) {
    constexpr std::uint32_t options = NSCaseInsensitiveSearch | NSNumericSearch |
                                      NSWidthInsensitiveSearch | NSForcedOrderingSearch;
    return locale.compare(first, second, options, NSRange{0, first.size()});
}

void AppDelegate::startMonitoringFolder(NSObject*) {
    // The only place that starts the timer: a folder chosen after a start without one is listed
    // from the next launch on. That is on purpose.
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
    auto paths = std::make_shared<std::vector<std::string>>(framePaths(*folder, *names));
    const auto locale = platform_.foundation.currentLocale();
    std::stable_sort(paths->begin(), paths->end(),
                     [&locale](const std::string& first, const std::string& second) {
                         return frameNameCompare(first, second, *locale) == NSOrderedAscending;
                     });

    const auto list = pictureArray.load();
    if (list && *list == *paths) {
        return;
    }
    pictureArray.store(paths);
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
