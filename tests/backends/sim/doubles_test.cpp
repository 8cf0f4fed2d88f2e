#include <gmock/gmock.h>

#include "backends/sim/Sim.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class SimDoubles : public ::testing::Test {
protected:
    std::shared_ptr<NSData> png(const std::string& contents) {
        return sim.pictures().data(contents);
    }

    Sim sim;
    Platform platform = sim.platform();
};

TEST_F(SimDoubles, CallsAreRecordedInOrderAndTakenOnce) {
    platform.foundation.NSLog("a");
    platform.appKit.NSBeep();
    EXPECT_THAT(sim.calls(), ElementsAre("NSLog: a", "NSBeep"));
    EXPECT_THAT(sim.takeCalls(), ElementsAre("NSLog: a", "NSBeep"));
    EXPECT_THAT(sim.calls(), IsEmpty());
}

TEST_F(SimDoubles, PlainReadsAreRecordedOnRequest) {
    sim.nib().textField("hInput").text = "7x";
    NSTextField& field = sim.nib().textField("hInput");
    EXPECT_EQ(field.intValue(), 7);
    EXPECT_THAT(sim.calls(), IsEmpty());
    sim.recordGetters();
    EXPECT_EQ(field.intValue(), 7);
    EXPECT_THAT(sim.calls(), ElementsAre("hInput intValue"));
}

TEST_F(SimDoubles, AControlTouchedOffTheMainThreadIsAMisuse) {
    const auto thread = platform.foundation.threadWithEntry([&] {
        sim.nib().button("oneB").setState(1);
        sim.nib().button("oneB").setEnabled(false);
    });
    thread->start();
    sim.runThread(1);
    EXPECT_THAT(sim.misuses(), ElementsAre("oneB setState: 1: not on the main thread"));
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

TEST_F(SimDoubles, AThreadThatIsNotStartedCannotBeRun) {
    platform.foundation.threadWithEntry([] {});
    sim.runThread(1);
    sim.runThread(2);
    EXPECT_EQ(sim.misuses().size(), 2U);
}

TEST_F(SimDoubles, ASliderLimitsItsValueToItsRange) {
    NSSlider& slider = sim.nib().slider("photoSlider");
    slider.setMaxValue(3.0);
    slider.setIntegerValue(9);
    EXPECT_EQ(slider.integerValue(), 3);
    slider.setMaxValue(1.0);
    EXPECT_EQ(slider.intValue(), 1);
    sim.nib().slider("photoSlider").setRange(0.0, 10.0);
    sim.nib().slider("photoSlider").drag(2.5);
    EXPECT_EQ(slider.intValue(), 3);
}

TEST_F(SimDoubles, APopUpKeepsTitlesUnique) {
    SimPopUpButton& popUp = sim.nib().popUp("AVDevicePopUp");
    EXPECT_EQ(popUp.indexOfSelectedItem(), -1);
    popUp.addItemWithTitle("a");
    popUp.addItemWithTitle("b");
    popUp.addItemWithTitle("a");
    EXPECT_THAT(popUp.items(), ElementsAre("b", "a"));
    EXPECT_EQ(popUp.indexOfSelectedItem(), 0);
}

TEST_F(SimDoubles, AnOutletThatIsLeftOutStaysNull) {
    sim.nib().leaveOut("previewView");
    std::shared_ptr<NSView> view = std::make_shared<SimView>(sim.log(), "other");
    sim.nib().outlet("previewView", view);
    EXPECT_EQ(view, nullptr);
    std::shared_ptr<NSButton> button;
    sim.nib().outlet("oneB", button);
    EXPECT_EQ(button.get(), &sim.nib().button("oneB"));
}

TEST_F(SimDoubles, AnActionIsSentToTheOneThatOffersIt) {
    NSObject* seen = nullptr;
    sim.nib().action("addFrameClick:", [&](NSObject* sender) { seen = sender; });
    sim.nib().send("addFrameClick:", &sim.nib().button("oneB"));
    EXPECT_EQ(seen, &sim.nib().button("oneB"));
    sim.nib().send("startRunning:");
    EXPECT_THAT(sim.misuses(), ElementsAre("send: nobody offers startRunning:"));
}

TEST_F(SimDoubles, AFolderListsItsOwnEntriesInTheOrderInWhichTheyCame) {
    NSFileManager& files = platform.foundation.defaultManager();
    sim.files().addFolder("/f");
    sim.files().addFile("/f/b.png");
    sim.files().addFolder("/f/a");
    sim.files().addFile("/f/a/deep.png");
    EXPECT_THAT(files.contentsOfDirectoryAtPath("/f").value(), ElementsAre("b.png", "a"));
    EXPECT_FALSE(files.contentsOfDirectoryAtPath("/f/b.png"));
    EXPECT_FALSE(files.contentsOfDirectoryAtPath("/other"));
    sim.files().failListing("/f", true);
    EXPECT_FALSE(files.contentsOfDirectoryAtPath("/f"));
    sim.files().failListing("/f", false);
    sim.files().remove("/f/a");
    EXPECT_THAT(files.contentsOfDirectoryAtPath("/f").value(), ElementsAre("b.png"));
}

TEST_F(SimDoubles, TheDirectoryFlagIsWrittenOnlyForWhatExists) {
    sim.files().addFile("/f");
    bool isDirectory = true;
    EXPECT_FALSE(platform.foundation.defaultManager().fileExistsAtPath("/g", isDirectory));
    EXPECT_TRUE(isDirectory);
    EXPECT_TRUE(platform.foundation.defaultManager().fileExistsAtPath("/f", isDirectory));
    EXPECT_FALSE(isDirectory);
}

TEST_F(SimDoubles, AFileIsWrittenOnlyIntoAFolderThatIsThere) {
    EXPECT_FALSE(png("p")->writeToFile("/f/p.png", false));
    sim.files().addFolder("/f");
    EXPECT_TRUE(png("p")->writeToFile("/f/p.png", false));
    EXPECT_EQ(sim.files().contents("/f/p.png"), "p");
    sim.files().failWrites(true);
    EXPECT_FALSE(png("q")->writeToFile("/f/p.png", false));
    EXPECT_EQ(sim.files().contents("/f/p.png"), "p");
}

TEST_F(SimDoubles, PictureFilesLoadUnlessTheyAreMissingOrDamaged) {
    sim.files().addFile("/a.png");
    sim.files().addPicture("/b.png", {4.5, 2.0});
    sim.files().addDamagedPicture("/c.png");
    EXPECT_EQ(platform.appKit.imageWithContentsOfFile("/a.png")->size(), (NSSize{640.0, 480.0}));
    EXPECT_EQ(platform.appKit.imageWithContentsOfFile("/b.png")->size(), (NSSize{4.5, 2.0}));
    EXPECT_EQ(platform.appKit.imageWithContentsOfFile("/c.png"), nullptr);
    EXPECT_EQ(platform.appKit.imageWithContentsOfFile("/d.png"), nullptr);
    EXPECT_EQ(platform.appKit.imageWithData(png("damaged")), nullptr);
    EXPECT_EQ(platform.appKit.imageWithData(nullptr), nullptr);
}

TEST_F(SimDoubles, DefaultsAnswerByKind) {
    sim.defaults().values = {{"number", NSInteger{7}}, {"text", std::string("Dark")}};
    NSUserDefaults& defaults = platform.foundation.standardUserDefaults();
    EXPECT_EQ(defaults.integerForKey("number"), 7);
    EXPECT_EQ(defaults.integerForKey("text"), 0);
    EXPECT_EQ(defaults.integerForKey("none"), 0);
    EXPECT_EQ(defaults.stringForKey("text"), "Dark");
    EXPECT_FALSE(defaults.stringForKey("number"));
    EXPECT_FALSE(defaults.objectForKey("text"));
}

TEST_F(SimDoubles, AlertsAreAnsweredInOrderAndThenWithTheFirstButton) {
    sim.alerts().answer(1001);
    const auto alert = platform.appKit.alert();
    alert->setMessageText("m");
    alert->addButtonWithTitle("Ok");
    alert->addButtonWithTitle("Cancel");
    alert->window().setTitlebarAppearsTransparent(true);
    EXPECT_EQ(alert->runModal(), 1001);
    EXPECT_EQ(platform.appKit.alert()->runModal(), NSAlertFirstButtonReturn);
    const SimShownAlert shown = sim.alerts().shown().at(0);
    EXPECT_EQ(shown.message, "m");
    EXPECT_THAT(shown.buttons, ElementsAre("Ok", "Cancel"));
    EXPECT_TRUE(shown.transparentTitleBar);
    EXPECT_TRUE(shown.onMainThread);
}

TEST_F(SimDoubles, AThreadThatShowsAlertsWithoutEndIsStopped) {
    const auto thread = platform.foundation.threadWithEntry([&] {
        while (!platform.foundation.currentThread()->isCancelled()) {
            platform.appKit.alert()->runModal();
        }
    });
    thread->start();
    sim.runThread(1);
    EXPECT_THAT(sim.misuses(), ElementsAre(HasSubstr("without end")));
}

TEST_F(SimDoubles, APanelIsCancelledUnlessAChoiceWasMade) {
    EXPECT_EQ(platform.appKit.openPanel()->runModal(), NSModalResponseCancel);
    sim.openPanels().choose("/f/");
    const auto panel = platform.appKit.openPanel();
    EXPECT_EQ(panel->runModal(), NSModalResponseOK);
    EXPECT_EQ(panel->URL()->path(), "/f");
}

TEST_F(SimDoubles, APixelBufferIsLiveUntilItIsReleased) {
    CVPixelBufferRef buffer = nullptr;
    EXPECT_EQ(platform.coreVideo.CVPixelBufferCreate(16, 2, 32, {}, &buffer), kCVReturnSuccess);
    EXPECT_EQ(sim.drawing().livePixelBuffers(), 1U);
    EXPECT_GT(platform.coreVideo.CVPixelBufferGetBytesPerRow(buffer), 64U);
    EXPECT_EQ(platform.coreVideo.CVPixelBufferGetBaseAddress(buffer), nullptr);
    platform.coreVideo.CVBufferRelease(buffer);
    EXPECT_EQ(sim.drawing().livePixelBuffers(), 0U);
    platform.coreVideo.CVBufferRelease(buffer);
    platform.coreVideo.CVBufferRelease(nullptr);
    EXPECT_THAT(sim.misuses(), ElementsAre("CVBufferRelease: (released): no live pixel buffer"));
}

TEST_F(SimDoubles, ABufferThatCannotBeMadeLeavesTheReferenceAlone) {
    CVPixelBufferRef buffer = nullptr;
    EXPECT_EQ(platform.coreVideo.CVPixelBufferCreate(0, 2, 32, {}, &buffer), kCVReturnInvalidSize);
    sim.drawing().failBuffers(1);
    EXPECT_EQ(platform.coreVideo.CVPixelBufferCreate(1, 2, 32, {}, &buffer),
              kCVReturnAllocationFailed);
    EXPECT_EQ(platform.coreVideo.CVPixelBufferCreate(1, 2, 33, {}, &buffer),
              kCVReturnInvalidArgument);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(platform.coreVideo.CVPixelBufferCreate(1, 2, 32, {}, &buffer), kCVReturnSuccess);
}

TEST_F(SimDoubles, DrawingPutsThePicturesTopRowIntoTheFirstRow) {
    CVPixelBufferRef buffer = nullptr;
    platform.coreVideo.CVPixelBufferCreate(3, 2, 32, {}, &buffer);
    platform.coreVideo.CVPixelBufferLockBaseAddress(buffer, 0);
    CGColorSpaceRef space =
        platform.coreGraphics.CGColorSpaceCreateWithName(kCGColorSpaceGenericRGB);
    CGContextRef context = platform.coreGraphics.CGBitmapContextCreate(
        platform.coreVideo.CVPixelBufferGetBaseAddress(buffer), 3, 2, 8,
        platform.coreVideo.CVPixelBufferGetBytesPerRow(buffer), space, 6);
    ASSERT_NE(context, nullptr);
    platform.appKit.saveGraphicsState();
    platform.appKit.setCurrentContext(platform.appKit.graphicsContextWithCGContext(context, false));
    sim.pictures()
        .picture("p", {2.0, 1.0})
        ->drawAtPoint({1.0, 0.0}, NSZeroRect, NSCompositingOperationCopy, 1.0);
    platform.coreGraphics.CFRelease(context);
    EXPECT_THAT(sim.takeMisuses(), ElementsAre("CFRelease: context1 is still a current context"));
    platform.appKit.restoreGraphicsState();
    platform.coreGraphics.CFRelease(context);
    platform.coreGraphics.CGColorSpaceRelease(space);
    const SimPixels pixels = sim.drawing().pixels(buffer).value();
    EXPECT_THAT(pixels.pixel(2, 0), ElementsAre(0, 0, 0, 0));
    EXPECT_THAT(pixels.pixel(0, 1), ElementsAre(0, 0, 0, 0));
    EXPECT_THAT(pixels.pixel(1, 1), ElementsAre(255, 0, 0, 90));
    EXPECT_THAT(pixels.pixel(2, 1), ElementsAre(255, 1, 0, 90));
    EXPECT_TRUE(pixels.isLocked);
    EXPECT_EQ(sim.drawing().liveContexts() + sim.drawing().liveColorSpaces(), 0U);
    EXPECT_THAT(sim.misuses(), IsEmpty());
}

TEST_F(SimDoubles, ASessionRunsOnlyWithAnInput) {
    const auto camera = sim.cameras().add("Camera");
    const auto session = platform.avFoundation.captureSession();
    session->startRunning();
    EXPECT_FALSE(session->isRunning());
    session->addInput(platform.avFoundation.deviceInputWithDevice(camera).input);
    session->startRunning();
    EXPECT_TRUE(session->isRunning());
    session->removeInput(*session->inputs().at(0));
    EXPECT_THAT(session->inputs(), IsEmpty());
}

TEST_F(SimDoubles, ACameraThatRefusesGivesItsError) {
    const auto camera = sim.cameras().add("Camera");
    camera->refusal = NSError{"d", 3, "busy"};
    const auto result = platform.avFoundation.deviceInputWithDevice(camera);
    EXPECT_EQ(result.input, nullptr);
    EXPECT_EQ(result.error->localizedDescription, "busy");
    EXPECT_TRUE(platform.avFoundation.deviceInputWithDevice(nullptr).error);
}

TEST_F(SimDoubles, SettingsThatServeTwiceAreAMisuse) {
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
    output->capturePhotoWithSettings(
        platform.avFoundation.photoSettingsFromPhotoSettings(*settings), delegate);
    output->capturePhotoWithSettings(settings, delegate);
    EXPECT_THAT(sim.misuses(), IsEmpty());
    output->capturePhotoWithSettings(settings, delegate);
    EXPECT_EQ(sim.takeMisuses().size(), 1U);
    EXPECT_THAT(sim.cameras().pendingStills(),
                ElementsAre("photoSettings2", "photoSettings1", "photoSettings1"));
    sim.cameras().deliverPhoto("picture");
    sim.cameras().deliverError({"d", 1, "late"});
    sim.cameras().deliverPhotoWithoutData();
    EXPECT_THAT(delegate.outcomes, ElementsAre("picture", "late", "(null)"));
}

class SimMovieTest : public SimDoubles {
protected:
    void SetUp() override {
        writer =
            platform.avFoundation
                .assetWriterWithURL(NSURL::fileURLWithPath("/f/m.mov"), AVFileTypeQuickTimeMovie)
                .writer;
        input = platform.avFoundation.assetWriterInputWithMediaType(AVMediaTypeVideo, {});
        adaptor =
            platform.avFoundation.assetWriterInputPixelBufferAdaptorWithAssetWriterInput(input, {});
        writer->addInput(input);
        EXPECT_EQ(adaptor->pixelBufferPool(), nullptr);
        writer->startWriting();
        platform.coreVideo.CVPixelBufferCreate(4, 2, 32, {}, &buffer);
        sim.takeCalls();
    }

    std::shared_ptr<AVAssetWriter> writer;
    std::shared_ptr<AVAssetWriterInput> input;
    std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor> adaptor;
    CVPixelBufferRef buffer = nullptr;
};

TEST_F(SimMovieTest, PicturesAreTakenInOrderAndRefusedOtherwise) {
    EXPECT_TRUE(adaptor->appendPixelBuffer(buffer, kCMTimeZero));
    EXPECT_FALSE(writer->error());
    EXPECT_FALSE(adaptor->appendPixelBuffer(nullptr, CMTimeMake(1, 25)));
    EXPECT_TRUE(writer->error());
    EXPECT_TRUE(adaptor->appendPixelBuffer(buffer, CMTimeMake(2, 25)));
    EXPECT_FALSE(adaptor->appendPixelBuffer(buffer, CMTimeMake(2, 25)));
    EXPECT_FALSE(adaptor->appendPixelBuffer(buffer, CMTimeMake(3, 0)));
    EXPECT_EQ(sim.movies().appends().size(), 5U);
    EXPECT_EQ(sim.movies().appends().at(2).pixels->name, "buffer1");
    EXPECT_EQ(sim.movies().appends().at(2).time, CMTimeMake(2, 25));
}

TEST_F(SimMovieTest, ScriptedVerdictsAndReadinessComeFirst) {
    sim.movies().judgeAppends({false});
    sim.movies().answerReadiness({false});
    EXPECT_FALSE(adaptor->appendPixelBuffer(buffer, kCMTimeZero));
    EXPECT_TRUE(adaptor->appendPixelBuffer(buffer, kCMTimeZero));
    EXPECT_FALSE(input->isReadyForMoreMediaData());
    EXPECT_TRUE(input->isReadyForMoreMediaData());
}

TEST_F(SimMovieTest, AFinishedMovieIsThereAndItsNameIsTaken) {
    sim.files().addFolder("/f");
    bool onMain = true;
    writer->finishWritingWithCompletionHandler([&] { onMain = SimRole::isMain(); });
    EXPECT_FALSE(sim.files().exists("/f/m.mov"));
    EXPECT_EQ(sim.movies().finishingWriters(), 1U);
    sim.movies().finish();
    EXPECT_TRUE(sim.files().exists("/f/m.mov"));
    EXPECT_FALSE(onMain);
    EXPECT_TRUE(
        platform.avFoundation
            .assetWriterWithURL(NSURL::fileURLWithPath("/f/m.mov"), AVFileTypeQuickTimeMovie)
            .error);
}

TEST_F(SimMovieTest, ScriptedCreationErrorsRunOut) {
    const auto create = [&] {
        return platform.avFoundation.assetWriterWithURL(NSURL::fileURLWithPath("/f/n.mov"),
                                                        AVFileTypeQuickTimeMovie);
    };
    sim.movies().failCreation({"d", 1, "no"});
    sim.movies().failCreation({"d", 2, "still no"}, true);
    EXPECT_EQ(create().writer, nullptr);
    EXPECT_TRUE(create().writer);
    EXPECT_FALSE(create().error);
    EXPECT_THAT(sim.calls(),
                ElementsAre("assetWriterWithURL: file:///f/n.mov fileType: QuickTimeMovie -> error",
                            "assetWriterWithURL: file:///f/n.mov fileType: QuickTimeMovie -> "
                            "writer2 and error",
                            "assetWriterWithURL: file:///f/n.mov fileType: QuickTimeMovie -> "
                            "writer3"));
}

} // namespace
} // namespace vistrane
