#include <gmock/gmock.h>

#include "backends/sim/Sim.h"

// What the contract suites do not ask of the sim: its record of calls, its list of misuses, its
// virtual time and its scripts.

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
    AVAssetWriterResult makeWriter() {
        return platform.avFoundation.assetWriterWithURL(NSURL::fileURLWithPath("/f/m.mov"),
                                                        AVFileTypeQuickTimeMovie);
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

TEST_F(SimDoubles, CallsAreRecordedInOrderAndTakenOnce) {
    platform.foundation.NSLog("100 %");
    platform.appKit.NSBeep();
    EXPECT_THAT(sim.calls(), ElementsAre("NSLog: 100 %", "NSBeep"));
    EXPECT_THAT(sim.logLines(), ElementsAre("100 %"));
    EXPECT_THAT(sim.takeCalls(), SizeIs(2));
    EXPECT_THAT(sim.calls(), IsEmpty());
    sim.log().recordCalls(false);
    platform.appKit.NSBeep();
    EXPECT_THAT(sim.calls(), IsEmpty());
}

TEST_F(SimDoubles, ValuesAreRecordedReadably) {
    EXPECT_EQ(text(5.0), "5");
    EXPECT_EQ(text(static_cast<double>(1.0F / 25.0F)), "0.03999999910593033");
    EXPECT_EQ(text(1772892309.2), "1772892309.2");
    EXPECT_EQ(text(NSRect{{1.0, 2.5}, {3.0, 4.0}}), "1,2.5,3,4");
    EXPECT_EQ(text(NSDictionary{{"a", true}, {"b", std::uint64_t{2}}, {"c", std::string("d")}}),
              "{a: YES, b: 2u, c: d}");
    EXPECT_EQ(nameOf(nullptr), "(null)");
}

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

TEST_F(SimDoubles, ARealThreadRunsWhenItIsStarted) {
    sim.threads().useRealThreads();
    std::shared_ptr<NSThread> seen;
    const auto thread =
        platform.foundation.threadWithEntry([&] { seen = platform.foundation.currentThread(); });
    thread->start();
    sim.advanceUntilThreadsEnd();
    EXPECT_EQ(seen, thread);
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
    EXPECT_EQ(sim.nib().makeSliderCell("Other"), nullptr);
    sim.nib().action("open:", [](NSObject*) {});
    sim.nib().action("open:", [](NSObject*) {});
    sim.nib().send("close:");
    EXPECT_THAT(sim.misuses(), ElementsAre("Cell is offered twice", "open: is offered twice",
                                           "send: no object offers close:"));
}

TEST_F(SimDoubles, WrongUseOfPixelBuffersAndContextsIsAMisuse) {
    CVPixelBufferRef buffer = nullptr;
    platform.coreVideo.CVPixelBufferCreate(3, 2, 32, {}, &buffer);
    EXPECT_GT(platform.coreVideo.CVPixelBufferGetBytesPerRow(buffer), 12U);
    platform.coreVideo.CVPixelBufferLockBaseAddress(buffer, 0);
    CGColorSpaceRef space =
        platform.coreGraphics.CGColorSpaceCreateWithName(kCGColorSpaceGenericRGB);
    CGContextRef context = platform.coreGraphics.CGBitmapContextCreate(
        platform.coreVideo.CVPixelBufferGetBaseAddress(buffer), 3, 2, 8, 64, space, 6);
    const auto picture = sim.pictures().picture("p", {2.0, 1.0});
    const auto draw = [&] {
        picture->drawAtPoint({0.0, 0.0}, NSZeroRect, NSCompositingOperationCopy, 1.0);
    };
    draw();
    picture->drawInRect(NSZeroRect, NSZeroRect, NSCompositingOperationCopy, 1.0);
    platform.appKit.saveGraphicsState();
    platform.appKit.setCurrentContext(platform.appKit.graphicsContextWithCGContext(context, false));
    platform.coreVideo.CVPixelBufferUnlockBaseAddress(buffer, 0);
    draw();
    platform.coreVideo.CVPixelBufferUnlockBaseAddress(buffer, 0);
    platform.coreGraphics.CFRelease(context);
    EXPECT_EQ(sim.drawing().leftovers(), 3U);
    platform.appKit.restoreGraphicsState();
    platform.appKit.restoreGraphicsState();
    platform.coreGraphics.CFRelease(context);
    platform.coreGraphics.CGColorSpaceRelease(space);
    EXPECT_EQ(sim.drawing().leftovers(), 0U);
    platform.coreVideo.CVPixelBufferLockBaseAddress(buffer, 0);
    platform.coreVideo.CVBufferRelease(buffer);
    platform.coreVideo.CVBufferRelease(buffer);
    EXPECT_THAT(sim.misuses(), ElementsAre("drawAtPoint: the thread has no current context",
                                           "drawInRect: the thread has no current context",
                                           "drawAtPoint: buffer1 is not locked",
                                           "CVPixelBufferUnlockBaseAddress: buffer1 is not locked",
                                           "CFRelease: context1 is still a current context",
                                           "restoreGraphicsState: nothing was saved",
                                           "CVBufferRelease: buffer1 is locked",
                                           "CVBufferRelease: was released before"));
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

TEST_F(SimDoubles, ScriptedAnswersAreGivenFirst) {
    sim.alerts().answer(1001);
    EXPECT_EQ(platform.appKit.alert()->runModal(), 1001);
    EXPECT_EQ(platform.appKit.alert()->runModal(), NSAlertFirstButtonReturn);
    sim.alerts().choose("/f/");
    const auto panel = platform.appKit.openPanel();
    EXPECT_EQ(panel->runModal(), NSModalResponseOK);
    EXPECT_EQ(panel->URL()->path(), "/f");
    EXPECT_EQ(platform.appKit.openPanel()->runModal(), NSModalResponseCancel);
    sim.dateAnswer() = "stamp";
    EXPECT_EQ(platform.foundation.dateFormatter()->stringFromDate({0.0}), "stamp");

    sim.movies().creations.push_back({NSError{"d", 1, "no"}, false});
    sim.movies().creations.push_back({NSError{"d", 2, "still no"}, true});
    EXPECT_EQ(makeWriter().writer, nullptr);
    EXPECT_TRUE(makeWriter().writer);
    const auto writer = makeWriter().writer;
    const auto input = platform.avFoundation.assetWriterInputWithMediaType(AVMediaTypeVideo, {});
    writer->addInput(input);
    writer->startWriting();
    sim.movies().readiness = {false};
    EXPECT_FALSE(input->isReadyForMoreMediaData());
    EXPECT_TRUE(input->isReadyForMoreMediaData());
    sim.movies().verdicts = {true};
    const auto adaptor =
        platform.avFoundation.assetWriterInputPixelBufferAdaptorWithAssetWriterInput(input, {});
    EXPECT_TRUE(adaptor->appendPixelBuffer(nullptr, kCMTimeZero));
    EXPECT_FALSE(adaptor->appendPixelBuffer(nullptr, CMTimeMake(1, 25)));
    bool onMain = true;
    writer->finishWritingWithCompletionHandler([&] { onMain = SimRole::isMain(); });
    EXPECT_EQ(sim.movies().finishingWriters(), 1U);
    sim.movies().finish();
    EXPECT_FALSE(onMain);
}

TEST_F(SimDoubles, TimersTickByDateAndThenByAge) {
    every(0.2, "slow");
    every(0.1, "fast");
    sim.advance(0.2);
    EXPECT_THAT(order, ElementsAre("fast 100", "slow 200", "fast 200"));
}

TEST_F(SimDoubles, AStallMergesTheMissedTicksAndKeepsTheGrid) {
    every(0.1, "tick");
    sim.stall(0.35);
    sim.advance(0.15);
    EXPECT_THAT(order, ElementsAre("tick 350", "tick 400", "tick 500"));
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
