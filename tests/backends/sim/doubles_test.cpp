#include <gmock/gmock.h>

#include "backends/sim/Sim.h"

// What the contract suites do not test: the list of misuses, and virtual time. The core's tests
// cover the record of calls and the scripts, which they cannot pass without.

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class SimDoubles : public ::testing::Test {
protected:
    /// Runs the code as a thread of the program.
    void onThread(std::function<void()> entry) {
        platform.foundation.threadWithEntry(std::move(entry))->start();
        sim.runThread(sim.threads().count());
    }
    void every(double interval, const std::string& name) {
        platform.foundation.scheduledTimerWithTimeInterval(
            interval, [this, name](NSTimer&) { note(name); }, true);
    }
    void note(const std::string& name) {
        order.push_back(name + " " + std::to_string(sim.loop().now() / 1000000));
    }

    Sim sim;
    Platform platform = sim.platform();
    std::vector<std::string> order;
};

TEST_F(SimDoubles, WhatBelongsToTheMainThreadIsAMisuseElsewhere) {
    onThread([&] {
        sim.nib().button("oneB").setState(1);
        sim.nib().button("oneB").setEnabled(false);
        sim.nib().button("oneB").title();
        platform.appKit.menu();
        platform.appKit.sharedApplication().activateIgnoringOtherApps(true);
        platform.foundation.standardUserDefaults().synchronize();
    });
    EXPECT_THAT(
        sim.misuses(),
        ElementsAre("oneB setState: 1: not on the main thread",
                    "oneB title: not on the main thread", "menu -> menu1: not on the main thread",
                    "sharedApplication activateIgnoringOtherApps: YES: not on the main thread",
                    "standardUserDefaults synchronize: not on the main thread"));
}

TEST_F(SimDoubles, AThreadIsRunOnceItIsStartedAndOnlyOnce) {
    const auto thread = platform.foundation.threadWithEntry([] {});
    sim.runThread(1);
    sim.runThread(2);
    EXPECT_THAT(sim.misuses(), SizeIs(2));
    thread->start();
    sim.runThread(1);
    EXPECT_THAT(sim.misuses(), SizeIs(2));
    thread->start();
    sim.runThread(1);
    EXPECT_THAT(sim.misuses(), SizeIs(4));
}

TEST_F(SimDoubles, AThreadThatShowsAlertsWithoutEndIsCancelled) {
    onThread([&] {
        while (!platform.foundation.currentThread()->isCancelled()) {
            platform.appKit.alert()->runModal();
        }
    });
    EXPECT_THAT(sim.misuses(), ElementsAre(HasSubstr("without end")));
}

TEST_F(SimDoubles, AnActionOrACellThatIsUnknownOrOfferedTwiceIsAMisuse) {
    const auto make = [] { return std::shared_ptr<NSSliderCell>(); };
    sim.nib().sliderCell("Cell", make);
    sim.nib().sliderCell("Cell", make);
    sim.nib().action("open:", [](NSObject*) {});
    sim.nib().action("open:", [](NSObject*) {});
    sim.nib().send("close:");
    EXPECT_THAT(sim.misuses(), ElementsAre("Cell is offered twice", "open: is offered twice",
                                           "send: no object offers close:"));
}

TEST_F(SimDoubles, WrongUseOfPixelBuffersIsAMisuse) {
    CVPixelBufferRef buffer = nullptr;
    platform.coreVideo.CVPixelBufferCreate(3, 2, 32, {}, &buffer);
    platform.coreVideo.CVPixelBufferLockBaseAddress(buffer, 0);
    platform.coreVideo.CVPixelBufferUnlockBaseAddress(buffer, 0);
    EXPECT_THAT(sim.misuses(), IsEmpty());
    platform.coreVideo.CVPixelBufferUnlockBaseAddress(buffer, 0);
    platform.coreVideo.CVPixelBufferLockBaseAddress(buffer, 0);
    platform.coreVideo.CVPixelBufferLockBaseAddress(buffer, 0);
    platform.coreVideo.CVBufferRelease(buffer);
    platform.coreVideo.CVBufferRelease(buffer);
    EXPECT_THAT(sim.misuses(), ElementsAre("CVPixelBufferUnlockBaseAddress: buffer1 is not locked",
                                           "CVBufferRelease: buffer1 is locked",
                                           "CVBufferRelease: was released before"));
}

TEST_F(SimDoubles, WhatIsNotReleasedOrRestoredIsLeftOver) {
    CVPixelBufferRef buffer = nullptr;
    platform.coreVideo.CVPixelBufferCreate(3, 2, 32, {}, &buffer);
    platform.coreVideo.CVPixelBufferLockBaseAddress(buffer, 0);
    CoreGraphics& graphics = platform.coreGraphics;
    CGColorSpaceRef space = graphics.CGColorSpaceCreateWithName(kCGColorSpaceGenericRGB);
    CGContextRef context = graphics.CGBitmapContextCreate(
        platform.coreVideo.CVPixelBufferGetBaseAddress(buffer), 3, 2, 8, 64, space, 6);
    platform.appKit.saveGraphicsState();
    EXPECT_EQ(sim.drawing().leftovers(), 3);
    EXPECT_EQ(sim.drawing().livePixelBuffers(), 1U);
    platform.appKit.restoreGraphicsState();
    graphics.CFRelease(context);
    graphics.CGColorSpaceRelease(space);
    EXPECT_EQ(sim.drawing().leftovers(), 0);
}

TEST_F(SimDoubles, SettingsThatServeTwoStillsAreAMisuse) {
    class Outcomes final : public AVCapturePhotoCaptureDelegate {
    public:
        void captureOutputDidFinishProcessingPhoto(AVCapturePhotoOutput&,
                                                   const AVCapturePhoto* photo,
                                                   const std::optional<NSError>& error) override {
            outcomes.push_back(photo ? nameOf(photo->fileDataRepresentation().get())
                                     : error->localizedDescription);
        }
        std::vector<std::string> outcomes;
    } delegate;
    const auto output = platform.avFoundation.photoOutput();
    platform.avFoundation.captureSession()->addOutput(output);
    sim.cameras().session()->runs = true;
    const auto settings = platform.avFoundation.photoSettings();
    const auto copy = platform.avFoundation.photoSettingsFromPhotoSettings(*settings);
    output->capturePhotoWithSettings(copy, delegate);
    output->capturePhotoWithSettings(settings, delegate);
    EXPECT_THAT(sim.misuses(), IsEmpty());
    output->capturePhotoWithSettings(settings, delegate);
    EXPECT_THAT(sim.misuses(), SizeIs(1));
    EXPECT_THAT(sim.cameras().pendingStills(),
                ElementsAre("photoSettings2", "photoSettings1", "photoSettings1"));
    sim.cameras().deliverPhoto("picture");
    sim.cameras().deliverError({"d", 1, "late"});
    sim.cameras().deliverPhoto(std::nullopt);
    EXPECT_THAT(delegate.outcomes, ElementsAre("picture", "late", "(null)"));
}

TEST_F(SimDoubles, OnlyAnAlertOfTheMainThreadHoldsTimersBackAndNoQueuedWork) {
    every(0.1, "tick");
    sim.at(0.2, [&] {
        dispatch_async(platform.dispatch.dispatch_get_main_queue(), [&] { note("work"); });
    });
    sim.alerts().stayUp(0.35);
    platform.appKit.alert()->runModal();
    sim.advance(0.05);
    EXPECT_THAT(order, ElementsAre("work 200", "tick 350", "tick 400"));
    order.clear();
    onThread([&] { platform.appKit.alert()->runModal(); });
    EXPECT_THAT(order, ElementsAre("tick 500", "tick 600", "tick 700"));
    EXPECT_FALSE(sim.alerts().shown().at(1).onMainThread);
}

TEST_F(SimDoubles, TheWallClockMayBeSetWithoutMovingTheTimers) {
    every(1.0, "tick");
    sim.advance(0.5);
    sim.setDate(1000.0);
    Foundation& foundation = platform.foundation;
    foundation.currentRunLoop().runUntilDate(foundation.dateWithTimeIntervalSinceNow(0.5));
    EXPECT_THAT(order, ElementsAre("tick 1000"));
    EXPECT_DOUBLE_EQ(foundation.date().timeIntervalSince1970, 1000.5);
}

TEST_F(SimDoubles, WorkOfTheGlobalQueueIsNotTheMainThreads) {
    bool main = true;
    dispatch_async(platform.dispatch.dispatch_get_global_queue(0, 0),
                   [&] { main = SimRole::isMain(); });
    sim.advance(0.0);
    EXPECT_FALSE(main);
    platform.dispatch.dispatch_get_global_queue(1, 0);
    EXPECT_THAT(sim.misuses(), SizeIs(1));
}

TEST_F(SimDoubles, ANoticeReachesItsObserversOnly) {
    NSDistributedNotificationCenter& center = platform.foundation.defaultCenter();
    center.addObserver([&] { note("one"); }, "one");
    center.addObserver([&] { note("other"); }, "other");
    sim.postNotification("one");
    EXPECT_THAT(order, ElementsAre("one 0"));
}

} // namespace
} // namespace vistrane
