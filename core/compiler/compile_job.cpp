#include "core/compiler/compile_job.h"

#include "core/app/AppDelegate.h"
#include "core/app/standard_alert.h"
#include "platform/appkit/AppKit.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/foundation/Foundation.h"
#include "platform/foundation/NSString.h"

namespace vistrane {

namespace {

/// Runs `work` on the main thread, through the global queue and then the main queue. Both keep the
/// order of posting. Any thread.
void postToMain(Dispatch& dispatch, std::function<void()> work) {
    dispatch_async(dispatch.dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0),
                   [&dispatch, work = std::move(work)] {
                       dispatch_async(dispatch.dispatch_get_main_queue(), work);
                   });
}

} // namespace

std::atomic<std::int32_t>& compileFrameRate() {
    static std::atomic<std::int32_t> rate = 25;
    return rate;
}

void AppDelegate::genneratingMovie(NSObject*) {
    compilingB->setState(NSControlStateValueOn);
    compilingB->setEnabled(false);

    const auto frames = pictureArray.load();
    if (!frames || frames->size() <= 1) {
        runStandardAlert(platform_.appKit, "Bring me more frames please",
                         "I need at least 2 frames to generate a movie.\n\n"
                         "Please double check you have more frames in the project folder and make "
                         "sure they are NOT corrupted.\n");
        // The button stays on, on purpose.
        compilingB->setEnabled(true);
        return;
    }

    const NSDate now = platform_.foundation.date();
    const auto formatter = platform_.foundation.dateFormatter();
    // "YYYY" is the week-based year and "DD" the day of the year, on purpose.
    formatter->setDateFormat("YYYYMMDD-HHmmss");
    const std::string path =
        stringWithFormat("%@/%@.mov", {outfolderB->title(), formatter->stringFromDate(now)});
    finalMoviePath.store(std::make_shared<const std::string>(path));
    platform_.foundation.NSLog(stringWithFormat("\nmoviePath=%@", {path}));
    compileFrameRate() = fpsS->intValue();

    const auto thread = platform_.foundation.threadWithEntry([this] { threadMain(); });
    myThread.store(thread);
    thread->start();
}

void AppDelegate::threadMain() {
    // Checks the running thread, not myThread, which another job may have replaced. A pass that
    // cannot create its movie does not cancel the thread, so it is repeated, with its alert,
    // without end. That is on purpose.
    Foundation& foundation = platform_.foundation;
    while (!foundation.currentThread()->isCancelled()) {
        crateMovieFile();
    }
}

void AppDelegate::postProgressReset() {
    postToMain(platform_.dispatch, [this] {
        const auto frames = pictureArray.load();
        progressBar->setMaxValue(frames ? static_cast<double>(frames->size()) : 0.0);
        progressBar->setDoubleValue(0.0);
    });
}

void AppDelegate::postFrameProgress(const std::string& path, std::int32_t index) {
    postToMain(platform_.dispatch, [this, path, index] {
        myDisplay->setImage(platform_.appKit.imageWithContentsOfFile(path));
        progressBar->setDoubleValue(static_cast<double>(index));
    });
}

void AppDelegate::postJobEnd() {
    postToMain(platform_.dispatch, [this] {
        progressBar->setDoubleValue(0.0);
        compilingB->setEnabled(true);
    });
}

} // namespace vistrane
