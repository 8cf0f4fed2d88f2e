#include "tests/core/compiler/CompilerTest.h"

namespace vistrane {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

/// The calls that convert the picture of `path`, as buffer, colour space and context `number`.
std::vector<std::string> conversion(const std::string& path, int number) {
    const std::string n = std::to_string(number);
    return {"CVPixelBufferCreate: 640x480 format: 32 attributes: {CGImageCompatibility: YES, "
            "CGBitmapContextCompatibility: YES} -> buffer" +
                n,
            "CVPixelBufferLockBaseAddress: buffer" + n + " flags: 0",
            "CGColorSpaceCreateWithName: kCGColorSpaceGenericRGB -> colorSpace" + n,
            "CGBitmapContextCreate: buffer" + n +
                " 640x480 bitsPerComponent: 8 bytesPerRow: 2624 "
                "space: colorSpace" +
                n + " bitmapInfo: 6 -> context" + n,
            "graphicsContextWithCGContext: context" + n + " flipped: NO",
            "saveGraphicsState",
            "setCurrentContext: context" + n,
            path + " drawAtPoint: 0,0 fromRect: 0,0,0,0 operation: 1 fraction: 1",
            "restoreGraphicsState",
            "CVPixelBufferUnlockBaseAddress: buffer" + n + " flags: 0",
            "CFRelease: context" + n,
            "CGColorSpaceRelease: colorSpace" + n};
}

class MovieWriter : public CompilerTest {
protected:
    static std::string movie() { return "/f/20260366-140509.mov"; }
    /// The calls without those of the pictures' conversion.
    std::vector<std::string> takeOutline() {
        std::vector<std::string> outline;
        for (std::string& call : sim.takeCalls()) {
            const auto has = [&](const char* text) { return call.find(text) != std::string::npos; };
            const bool isConversion =
                (has("CVPixelBuffer") && !has("Pool") && !has("NSLog")) || has("CGColorSpace") ||
                has("CGBitmapContext") || has("raphicsContext") || has("GraphicsState") ||
                has("setCurrentContext") || has("drawAtPoint") || has("CFRelease");
            if (!isConversion) {
                outline.push_back(std::move(call));
            }
        }
        return outline;
    }
    std::vector<std::string> logLines() {
        std::vector<std::string> lines = sim.logLines();
        return lines;
    }
    void expectNothingLeft() {
        EXPECT_EQ(sim.drawing().livePixelBuffers(), 0U);
        EXPECT_EQ(sim.drawing().liveContexts(), 0U);
        EXPECT_EQ(sim.drawing().liveColorSpaces(), 0U);
        EXPECT_EQ(sim.drawing().savedStates(), 0U);
    }
};

TEST_F(MovieWriter, TwoFramesAreWrittenStepByStep) {
    setFrames(2);
    compile();
    std::vector<std::string> expected = {
        "thread1 isCancelled",
        "imageWithContentsOfFile: /f/0.png",
        "assetWriterWithURL: file://" + movie() + " fileType: QuickTimeMovie -> writer1",
        "assetWriterInputWithMediaType: Video outputSettings: {AVVideoCodecKey: avc1, "
        "AVVideoScalingModeKey: AVVideoScalingModeResizeAspect, AVVideoWidthKey: 640, "
        "AVVideoHeightKey: 480} -> writerInput1",
        "adaptorWithAssetWriterInput: writerInput1 sourcePixelBufferAttributes: {PixelFormatType: "
        "32u, Width: 640u, Height: 480u} -> adaptor1",
        "writer1 addInput: writerInput1",
        "writerInput1 setExpectsMediaDataInRealTime: YES",
        "writer1 startWriting",
        "writer1 startSessionAtSourceTime: 0/1"};
    const auto append = [&](const std::vector<std::string>& calls) {
        expected.insert(expected.end(), calls.begin(), calls.end());
    };
    append(conversion("/f/0.png", 1));
    append({"adaptor1 appendPixelBuffer: buffer1 withPresentationTime: 0/1",
            "CVBufferRelease: buffer1", "globalQueue async", "writerInput1 isReadyForMoreMediaData",
            "globalQueue async", "imageWithContentsOfFile: /f/1.png"});
    append(conversion("/f/1.png", 2));
    append({"adaptor1 appendPixelBuffer: buffer2 withPresentationTime: 2/25",
            "CVBufferRelease: buffer2", "writerInput1 markAsFinished",
            "writer1 finishWritingWithCompletionHandler", "CVPixelBufferPoolRelease: adaptor1.pool",
            "thread1 cancel", "globalQueue async", "sharedWorkspace openURL: file://" + movie(),
            "thread1 isCancelled"});
    EXPECT_THAT(sim.takeCalls(), ::testing::ElementsAreArray(expected));
    expectNothingLeft();
}

TEST_F(MovieWriter, TwoFramesAtTwentyFiveComeAtZeroAndTwoTicks) {
    setFrames(2);
    compile();
    EXPECT_THAT(times(), ElementsAre(CMTime{0, 1}, CMTime{2, 25}));
}

TEST_F(MovieWriter, ThreeFramesAtTenSkipTheSecondTick) {
    setFrames(3);
    slider("fpsS").drag(10.0);
    compile();
    EXPECT_THAT(times(), ElementsAre(CMTime{0, 1}, CMTime{2, 10}, CMTime{3, 10}));
}

TEST_F(MovieWriter, TheLowestAndHighestRatesAreTakenAsTheyAre) {
    setFrames(2);
    slider("fpsS").drag(1.0);
    compile();
    slider("fpsS").drag(60.0);
    compile();
    EXPECT_THAT(times(), ElementsAre(CMTime{0, 1}, CMTime{2, 1}, CMTime{0, 1}, CMTime{2, 60}));
}

TEST_F(MovieWriter, TheFirstFramesSizeIsTruncated) {
    setFrames(2);
    sim.files().addPicture(path(0), {1280.7, 720.2});
    compile();
    EXPECT_THAT(sim.calls(),
                Contains("assetWriterInputWithMediaType: Video outputSettings: {AVVideoCodecKey: "
                         "avc1, AVVideoScalingModeKey: AVVideoScalingModeResizeAspect, "
                         "AVVideoWidthKey: 1280, AVVideoHeightKey: 720} -> writerInput1"));
    EXPECT_THAT(sim.calls(),
                Contains("adaptorWithAssetWriterInput: writerInput1 sourcePixelBufferAttributes: "
                         "{PixelFormatType: 32u, Width: 1280u, Height: 720u} -> adaptor1"));
}

TEST_F(MovieWriter, AnOddSizeIsNotRounded) {
    setFrames(2);
    sim.files().addPicture(path(0), {333.0, 77.0});
    compile();
    EXPECT_EQ(sim.movies().appends().at(0).pixels->width, 333U);
    EXPECT_EQ(sim.movies().appends().at(0).pixels->height, 77U);
}

TEST_F(MovieWriter, AFrameOfAnotherSizeIsHandedOverInItsOwn) {
    setFrames(2);
    sim.files().addPicture(path(1), {100.0, 50.0});
    compile();
    EXPECT_EQ(sim.movies().appends().at(0).pixels->width, 640U);
    EXPECT_EQ(sim.movies().appends().at(1).pixels->width, 100U);
    EXPECT_EQ(sim.movies().appends().at(1).pixels->height, 50U);
}

TEST_F(MovieWriter, AFirstFrameThatDoesNotLoadGivesAMovieOfNoSizeAndIsLogged) {
    setFrames(2);
    sim.files().addDamagedPicture(path(0));
    compile();
    EXPECT_THAT(
        takeOutline(),
        ElementsAre(
            "thread1 isCancelled", "imageWithContentsOfFile: /f/0.png",
            "assetWriterWithURL: file://" + movie() +
                " fileType: QuickTimeMovie -> "
                "writer1",
            "assetWriterInputWithMediaType: Video outputSettings: {AVVideoCodecKey: avc1, "
            "AVVideoScalingModeKey: AVVideoScalingModeResizeAspect, AVVideoWidthKey: 0, "
            "AVVideoHeightKey: 0} -> writerInput1",
            "adaptorWithAssetWriterInput: writerInput1 sourcePixelBufferAttributes: "
            "{PixelFormatType: 32u, Width: 0u, Height: 0u} -> adaptor1",
            "writer1 addInput: writerInput1", "writerInput1 setExpectsMediaDataInRealTime: YES",
            "writer1 startWriting", "writer1 startSessionAtSourceTime: 0/1",
            "NSLog: CVPixelBufferRef could not create context",
            "adaptor1 appendPixelBuffer: (null) withPresentationTime: 0/1",
            "NSLog: failed appending #1 buffer", "globalQueue async",
            "writerInput1 isReadyForMoreMediaData", "globalQueue async",
            "imageWithContentsOfFile: /f/1.png",
            "adaptor1 appendPixelBuffer: buffer1 withPresentationTime: 2/25",
            "CVBufferRelease: buffer1", "writerInput1 markAsFinished",
            "writer1 finishWritingWithCompletionHandler", "CVPixelBufferPoolRelease: adaptor1.pool",
            "thread1 cancel", "globalQueue async", "sharedWorkspace openURL: file://" + movie(),
            "thread1 isCancelled"));
    expectNothingLeft();
}

TEST_F(MovieWriter, AFirstFrameThatIsRefusedIsLoggedAndReleased) {
    setFrames(2);
    sim.movies().judgeAppends({false});
    compile();
    EXPECT_THAT(logLines(), ElementsAre("failed appending #1 buffer"));
    EXPECT_THAT(times(), ElementsAre(CMTime{0, 1}, CMTime{2, 25}));
    expectNothingLeft();
}

TEST_F(MovieWriter, ALaterFrameThatIsRefusedIsLoggedReleasedAndNotTriedAgain) {
    setFrames(3);
    sim.movies().judgeAppends({true, false});
    compile();
    EXPECT_THAT(logLines(), ElementsAre("failed append buffer with error: Error Domain=SimMovies "
                                        "Code=2 \"The picture was refused.\""));
    EXPECT_THAT(times(), ElementsAre(CMTime{0, 1}, CMTime{2, 25}, CMTime{3, 25}));
    expectNothingLeft();
}

TEST_F(MovieWriter, ALaterFrameThatDoesNotLoadIsLoggedTwiceAndPassedOver) {
    setFrames(3);
    sim.files().addDamagedPicture(path(1));
    compile();
    EXPECT_THAT(logLines(), ElementsAre("CVPixelBufferRef could not create context",
                                        "failed append buffer with error: Error Domain=SimMovies "
                                        "Code=1 \"There is no picture.\""));
    EXPECT_THAT(sim.calls(), Not(Contains("CVBufferRelease: (null)")));
    EXPECT_THAT(times(), ElementsAre(CMTime{0, 1}, CMTime{2, 25}, CMTime{3, 25}));
    expectNothingLeft();
}

TEST_F(MovieWriter, AFrameWhoseFileHasVanishedIsPassedOver) {
    setFrames(3);
    sim.files().remove(path(2));
    compile();
    EXPECT_THAT(sim.movies().appends(), SizeIs(3));
    EXPECT_FALSE(sim.movies().appends().at(2).accepted);
    EXPECT_EQ(sim.movies().finishingWriters(), 1U);
}

TEST_F(MovieWriter, AnInputThatIsNotReadyIsAskedAgainForTheSameFrame) {
    setFrames(3);
    sim.movies().answerReadiness({true, false, false, true});
    compile();
    const std::vector<std::string> outline = takeOutline();
    const auto first = std::find(outline.begin(), outline.end(), "CVBufferRelease: buffer2");
    ASSERT_NE(first, outline.end());
    EXPECT_THAT(
        std::vector<std::string>(first + 1, first + 11),
        ElementsAre(
            "writerInput1 isReadyForMoreMediaData", "NSLog: error:adaptor not ready when i=2",
            "NSLog: treating frame again at: /f/2.png", "writerInput1 isReadyForMoreMediaData",
            "NSLog: error:adaptor not ready when i=2", "NSLog: treating frame again at: /f/2.png",
            "writerInput1 isReadyForMoreMediaData", "globalQueue async",
            "imageWithContentsOfFile: /f/2.png",
            "adaptor1 appendPixelBuffer: buffer3 withPresentationTime: 3/25"));
}

TEST_F(MovieWriter, TheFirstFrameIsAppendedWithoutAskingForReadiness) {
    setFrames(2);
    sim.movies().answerReadiness({false});
    compile();
    const std::vector<std::string> outline = takeOutline();
    const auto append = std::find(outline.begin(), outline.end(),
                                  "adaptor1 appendPixelBuffer: buffer1 withPresentationTime: 0/1");
    EXPECT_EQ(std::find(outline.begin(), append, "writerInput1 isReadyForMoreMediaData"), append);
    EXPECT_NE(append, outline.end());
}

TEST_F(MovieWriter, ThousandsOfRefusedQuestionsAreAskedWithoutALimit) {
    setFrames(2);
    sim.movies().answerReadiness(std::vector<bool>(5000, false));
    compile();
    EXPECT_THAT(sim.movies().appends(), SizeIs(2));
    EXPECT_THAT(logLines(), SizeIs(10000));
}

TEST_F(MovieWriter, FramesThatComeDuringThePassAreWrittenToo) {
    setFrames(2);
    sim.movies().beforeAppend([&](std::size_t number) {
        if (number == 1) {
            setFrames(4);
        }
    });
    compile();
    EXPECT_THAT(times(), ElementsAre(CMTime{0, 1}, CMTime{2, 25}, CMTime{3, 25}, CMTime{4, 25}));
}

TEST_F(MovieWriter, TheFolderIsListedDuringThePassAndItsNewFramesAreWritten) {
    saveFolder();
    sim.files().addFile("/f/a0.png");
    sim.files().addFile("/f/a1.png");
    launch();
    sim.advance(0.1);
    sim.movies().beforeAppend([&](std::size_t number) {
        if (number == 1) {
            sim.files().addFile("/f/a2.png");
            sim.advance(0.1);
        }
    });
    compile();
    EXPECT_THAT(sim.movies().appends(), SizeIs(3));
}

TEST_F(MovieWriter, AListThatIsReplacedDuringThePassIsReadAsItIsThen) {
    setFrames(3);
    sim.files().addPicture("/f/z.png", {10.0, 10.0});
    sim.movies().beforeAppend([&](std::size_t number) {
        if (number == 1) {
            delegate.pictureArray.store(std::make_shared<const std::vector<std::string>>(
                std::vector<std::string>{"/f/0.png", "/f/1.png", "/f/z.png"}));
        }
    });
    compile();
    EXPECT_EQ(sim.movies().appends().at(2).pixels->width, 10U);
}

TEST_F(MovieWriter, AListThatBecomesShorterEndsThePass) {
    setFrames(5);
    sim.movies().beforeAppend([&](std::size_t number) {
        if (number == 2) {
            setFrames(1);
        }
    });
    compile();
    EXPECT_THAT(sim.movies().appends(), SizeIs(3));
    EXPECT_EQ(sim.movies().finishingWriters(), 1U);
    EXPECT_EQ(delegate.myThread.load(), nullptr);
}

TEST_F(MovieWriter, AListThatBecomesShorterWhileTheWriterMakesRoomIsNoCrash) {
    for (const bool ready : {true, false}) {
        setFrames(3);
        sim.movies().answerReadiness({ready});
        sim.movies().beforeReadiness([&] { setFrames(0); });
        compile();
    }
    EXPECT_EQ(sim.movies().finishingWriters(), 2U);
}

TEST_F(MovieWriter, AListThatIsEmptyWhenThePassBeginsWritesNoFrame) {
    setFrames(2);
    delegate.genneratingMovie(nullptr);
    setFrames(0);
    sim.runThread(1);
    EXPECT_THAT(sim.movies().appends(), SizeIs(1));
    EXPECT_FALSE(sim.movies().appends().at(0).pixels);
    EXPECT_EQ(delegate.myThread.load(), nullptr);
}

TEST_F(MovieWriter, AListOfOneFrameIsWrittenWithoutTheLoop) {
    setFrames(2);
    delegate.genneratingMovie(nullptr);
    setFrames(1);
    sim.runThread(1);
    EXPECT_THAT(sim.calls(), Not(Contains("writerInput1 isReadyForMoreMediaData")));
    EXPECT_THAT(times(), ElementsAre(CMTime{0, 1}));
}

TEST_F(MovieWriter, AMovieThatCannotBeCreatedIsLoggedAndShownOnTheCompileThread) {
    setFrames(2);
    sim.movies().failCreation({"Movies", 17, "There is a file of that name."});
    sim.alerts().whileUp([&](const SimShownAlert&) { sim.threads().thread(1)->cancelQuietly(); });
    delegate.genneratingMovie(nullptr);
    sim.takeCalls();
    sim.runThread(1);
    EXPECT_THAT(
        takeProcedure(),
        ElementsAre("thread1 isCancelled", "imageWithContentsOfFile: /f/0.png",
                    "assetWriterWithURL: file://" + movie() + " fileType: QuickTimeMovie -> error",
                    "NSLog: error creating AssetWriter: Error Domain=Movies Code=17 "
                    "\"There is a file of that name.\"",
                    "alert1 runModal", "compilingB setEnabled: YES", "thread1 isCancelled"));
    ASSERT_THAT(sim.alerts().shown(), SizeIs(1));
    expectStandardAlert(sim.alerts().shown().at(0),
                        "Vistran movie compiling error:", "There is a file of that name.");
    EXPECT_FALSE(sim.alerts().shown().at(0).onMainThread);
    EXPECT_TRUE(button("compilingB").isEnabled());
    EXPECT_TRUE(delegate.myThread.load());
}

TEST_F(MovieWriter, TheErrorDecidesEvenWhenThereIsAWriter) {
    setFrames(2);
    sim.movies().failCreation({"Movies", 17, "Odd."}, true);
    compile();
    EXPECT_THAT(sim.alerts().shown(), SizeIs(1));
    EXPECT_THAT(sim.calls(), Not(Contains(StartsWith("writer1 "))));
}

TEST_F(MovieWriter, AnExistingFileIsNeitherRemovedNorReplaced) {
    setFrames(2);
    sim.files().addFile(movie(), "earlier movie");
    sim.alerts().whileUp([&](const SimShownAlert&) { sim.threads().thread(1)->cancelQuietly(); });
    compile();
    EXPECT_THAT(sim.alerts().shown(), SizeIs(1));
    EXPECT_EQ(sim.files().contents(movie()), "earlier movie");
}

TEST_F(MovieWriter, TheMovieIsOpenedBeforeItIsWhole) {
    setFrames(2);
    compile();
    EXPECT_THAT(sim.calls(), Contains("sharedWorkspace openURL: file://" + movie()));
    EXPECT_FALSE(sim.files().exists(movie()));
    sim.movies().finish();
    EXPECT_TRUE(sim.files().exists(movie()));
}

TEST_F(MovieWriter, AMovieThatNothingCanOpenIsNoFailure) {
    setFrames(2);
    static_cast<SimWorkspace&>(sim.platform().appKit.sharedWorkspace()).opens = false;
    compile();
    EXPECT_THAT(sim.alerts().shown(), IsEmpty());
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(MovieWriter, EveryFrameIsReleasedBeforeTheNextIsConverted) {
    setFrames(6);
    sim.movies().beforeAppend(
        [&](std::size_t) { EXPECT_EQ(sim.drawing().livePixelBuffers(), 1U); });
    compile();
    expectNothingLeft();
}

} // namespace
} // namespace vistrane
