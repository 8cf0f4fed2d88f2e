#include <algorithm>
#include <functional>

#include "tests/core/compiler/CompilerTest.h"

namespace vistrane {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

class MovieWriter : public CompilerTest {
protected:
    static std::string movie() { return "/f/YYYYMMDD-HHmmss-1772892309.mov"; }
    /// The calls without those of the pictures' conversion, which has tests of its own.
    std::vector<std::string> takeOutline() {
        std::vector<std::string> outline = takeProcedure(
            {"CVPixelBufferCreate", "CVPixelBufferLock", "CVPixelBufferUnlock", "CGColorSpace",
             "CGBitmapContext", "graphicsContext", "saveGraphicsState", "restoreGraphicsState",
             "setCurrentContext", "CFRelease"});
        std::erase_if(outline, [](const std::string& call) {
            return call.find("drawAtPoint") != std::string::npos;
        });
        return outline;
    }
    /// Before the picture of that number is appended.
    void beforePicture(std::size_t number, const std::function<void()>& action) {
        sim.movies().beforeAppend = [=](std::size_t next) {
            if (next == number) {
                action();
            }
        };
    }
    NSSize sizeOfPicture(std::size_t number) {
        const SimPixels pixels = sim.movies().appends().at(number).pixels.value();
        return {static_cast<double>(pixels.width), static_cast<double>(pixels.height)};
    }
};

TEST_F(MovieWriter, TwoFramesAreWrittenStepByStep) {
    setFrames(2);
    compile();
    EXPECT_THAT(
        takeOutline(),
        ElementsAre(
            "thread1 isCancelled", "imageWithContentsOfFile: /f/0.png",
            "assetWriterWithURL: file://" + movie() + " fileType: QuickTimeMovie -> writer1",
            "assetWriterInputWithMediaType: Video outputSettings: {AVVideoCodecKey: avc1, "
            "AVVideoScalingModeKey: AVVideoScalingModeResizeAspect, AVVideoWidthKey: 640, "
            "AVVideoHeightKey: 480} -> writerInput1",
            "adaptorWithAssetWriterInput: writerInput1 sourcePixelBufferAttributes: "
            "{PixelFormatType: 32u, Width: 640u, Height: 480u} -> adaptor1",
            "writer1 addInput: writerInput1", "writerInput1 setExpectsMediaDataInRealTime: YES",
            "writer1 startWriting", "writer1 startSessionAtSourceTime: 0/1",
            "adaptor1 appendPixelBuffer: buffer1 withPresentationTime: 0/1",
            "CVBufferRelease: buffer1", "globalQueue async", "writerInput1 isReadyForMoreMediaData",
            "globalQueue async", "imageWithContentsOfFile: /f/1.png",
            "adaptor1 appendPixelBuffer: buffer2 withPresentationTime: 2/25",
            "CVBufferRelease: buffer2", "writerInput1 markAsFinished",
            "writer1 finishWritingWithCompletionHandler", "CVPixelBufferPoolRelease: adaptor1.pool",
            "thread1 cancel", "globalQueue async", "sharedWorkspace openURL: file://" + movie(),
            "thread1 isCancelled"));
    expectNothingLeft();
}

TEST_F(MovieWriter, TheSecondTickIsSkippedAtEveryRate) {
    setFrames(3);
    for (const std::int32_t rate : {1, 10, 25, 60}) {
        const std::size_t before = times().size();
        slider("fpsS").drag(rate);
        compile();
        const std::vector<CMTime> all = times();
        EXPECT_THAT(
            std::vector<CMTime>(all.begin() + static_cast<std::ptrdiff_t>(before), all.end()),
            ElementsAre(CMTime{0, 1}, CMTime{2, rate}, CMTime{3, rate}));
    }
}

TEST_F(MovieWriter, TheFirstFramesSizeIsTruncatedAndNotRounded) {
    setFrames(2);
    for (const auto& [size, wanted] : {std::pair(NSSize{1280.7, 720.2}, NSSize{1280.0, 720.0}),
                                       std::pair(NSSize{333.0, 77.9}, NSSize{333.0, 77.0})}) {
        sim.files().addPicture(path(0), size);
        compile();
        const std::string width = text(wanted.width);
        const std::string height = text(wanted.height);
        const auto calls = sim.takeCalls();
        EXPECT_THAT(calls, Contains(HasSubstr("AVVideoWidthKey: " + width +
                                              ", AVVideoHeightKey: " + height + "}")));
        EXPECT_THAT(calls, Contains(HasSubstr("Width: " + width + "u, Height: " + height + "u}")));
        // A frame of another size has a buffer of its own size.
        const std::size_t count = sim.movies().appends().size();
        EXPECT_EQ(sizeOfPicture(count - 2), wanted);
        EXPECT_EQ(sizeOfPicture(count - 1), (NSSize{640.0, 480.0}));
    }
}

TEST_F(MovieWriter, AFirstFrameThatDoesNotLoadGivesAMovieOfNoSizeAndIsLogged) {
    setFrames(2);
    sim.files().addDamagedPicture(path(0));
    compile();
    EXPECT_THAT(sim.calls(), Contains(HasSubstr("AVVideoWidthKey: 0, AVVideoHeightKey: 0}")));
    EXPECT_THAT(sim.calls(), Contains(HasSubstr("Width: 0u, Height: 0u}")));
    EXPECT_THAT(sim.calls(), Not(Contains("CVBufferRelease: (null)")));
    EXPECT_THAT(sim.logLines(), ElementsAre("CVPixelBufferRef could not create context",
                                            "failed appending #1 buffer"));
    EXPECT_THAT(times(), ElementsAre(CMTime{0, 1}, CMTime{2, 25}));
    EXPECT_TRUE(sim.movies().appends().at(1).accepted);
    expectNothingLeft();
}

TEST_F(MovieWriter, AFirstFrameThatIsRefusedIsLoggedAndReleased) {
    setFrames(2);
    sim.movies().verdicts = {false};
    compile();
    EXPECT_THAT(sim.logLines(), ElementsAre("failed appending #1 buffer"));
    EXPECT_THAT(times(), ElementsAre(CMTime{0, 1}, CMTime{2, 25}));
    expectNothingLeft();
}

TEST_F(MovieWriter, ALaterFrameThatIsRefusedIsLoggedReleasedAndNotTriedAgain) {
    setFrames(3);
    sim.movies().verdicts = {true, false};
    compile();
    EXPECT_THAT(sim.logLines(),
                ElementsAre("failed append buffer with error: Error Domain=SimMovies "
                            "Code=2 \"The picture was refused.\""));
    EXPECT_THAT(times(), ElementsAre(CMTime{0, 1}, CMTime{2, 25}, CMTime{3, 25}));
    expectNothingLeft();
}

TEST_F(MovieWriter, ALaterFrameThatDoesNotLoadIsLoggedTwiceAndPassedOver) {
    setFrames(4);
    sim.files().addDamagedPicture(path(1));
    sim.files().remove(path(3));
    compile();
    const std::string error = "failed append buffer with error: Error Domain=SimMovies Code=1 "
                              "\"There is no picture.\"";
    EXPECT_THAT(sim.logLines(), ElementsAre("CVPixelBufferRef could not create context", error,
                                            "CVPixelBufferRef could not create context", error));
    EXPECT_THAT(sim.calls(), Not(Contains("CVBufferRelease: (null)")));
    EXPECT_THAT(times(), ElementsAre(CMTime{0, 1}, CMTime{2, 25}, CMTime{3, 25}, CMTime{4, 25}));
    EXPECT_EQ(sim.movies().finishingWriters(), 1U);
    expectNothingLeft();
}

TEST_F(MovieWriter, AnInputThatIsNotReadyIsAskedAgainForTheSameFrame) {
    setFrames(3);
    sim.movies().readiness = {true, false, false, true};
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

TEST_F(MovieWriter, ThousandsOfRefusedQuestionsAreAskedWithoutALimit) {
    setFrames(2);
    sim.movies().readiness.assign(5000, false);
    compile();
    EXPECT_THAT(sim.movies().appends(), SizeIs(2));
    EXPECT_THAT(sim.logLines(), SizeIs(10000));
}

TEST_F(MovieWriter, FramesThatAreListedDuringThePassAreWrittenToo) {
    saveFolder();
    setFrames(2);
    launch();
    slider("fpsS").drag(25.0);
    sim.advance(0.1);
    beforePicture(1, [&] {
        sim.files().addFile(path(2));
        sim.files().addFile(path(3));
        sim.advance(0.1);
    });
    compile();
    EXPECT_THAT(times(), ElementsAre(CMTime{0, 1}, CMTime{2, 25}, CMTime{3, 25}, CMTime{4, 25}));
}

TEST_F(MovieWriter, AListThatIsReplacedDuringThePassIsReadAsItIsThen) {
    setFrames(3);
    sim.files().addPicture("/f/z.png", {10.0, 10.0});
    beforePicture(1, [&] {
        delegate.pictureArray.store(std::make_shared<const std::vector<std::string>>(
            std::vector<std::string>{"/f/0.png", "/f/1.png", "/f/z.png"}));
    });
    compile();
    EXPECT_EQ(sizeOfPicture(2), (NSSize{10.0, 10.0}));
}

TEST_F(MovieWriter, AListThatBecomesShorterEndsThePass) {
    setFrames(5);
    beforePicture(2, [&] { setFrames(1); });
    compile();
    EXPECT_THAT(sim.movies().appends(), SizeIs(3));
    EXPECT_EQ(sim.movies().finishingWriters(), 1U);
    EXPECT_EQ(delegate.myThread.load(), nullptr);
}

TEST_F(MovieWriter, AListThatBecomesShorterWhileTheWriterMakesRoomIsNoCrash) {
    for (const bool ready : {true, false}) {
        setFrames(3);
        sim.movies().readiness = {ready};
        sim.movies().beforeReadiness = [&] { setFrames(0); };
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
    sim.movies().creations.push_back(
        {NSError{"Movies", 17, "There is a file of that name."}, false});
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
    sim.movies().creations.push_back({NSError{"Movies", 17, "Odd."}, true});
    compile();
    EXPECT_THAT(sim.alerts().shown(), SizeIs(1));
    EXPECT_THAT(sim.calls(), Not(Contains(StartsWith("writer1 "))));
}

TEST_F(MovieWriter, AMovieThatNothingCanOpenIsNoFailure) {
    setFrames(2);
    sim.workspace().opens = false;
    delegate.genneratingMovie(nullptr);
    sim.takeCalls();
    sim.runThread(1);
    expectNoMessage();
}

TEST_F(MovieWriter, EveryFrameTellsWhichComeNextByTheListOfThatMoment) {
    setFrames(3);
    beforePicture(1, [&] {
        sim.files().addPicture("/f/z.png", {10.0, 10.0});
        delegate.pictureArray.store(std::make_shared<const std::vector<std::string>>(
            std::vector<std::string>{"/f/0.png", "/f/1.png", "/f/2.png", "/f/z.png"}));
    });
    compile();
    EXPECT_THAT(sim.pictures().takeExpected(ImageUse::Movie),
                ElementsAre("/f/1.png", "/f/2.png", "/f/z.png", "nothing", "end"));
}

TEST_F(MovieWriter, APassThatEndsEarlyExpectsNothingMore) {
    setFrames(5);
    beforePicture(2, [&] { setFrames(1); });
    compile();
    EXPECT_THAT(sim.pictures().takeExpected(ImageUse::Movie),
                ElementsAre("/f/1.png", "/f/2.png", "/f/3.png", "end"));
    setFrames(2);
    sim.movies().creations.push_back({NSError{"Movies", 17, "Odd."}, false});
    sim.alerts().whileUp([&](const SimShownAlert&) { sim.threads().thread(2)->cancelQuietly(); });
    compile();
    EXPECT_THAT(sim.alerts().shown(), SizeIs(1));
    EXPECT_THAT(sim.pictures().takeExpected(ImageUse::Movie), IsEmpty());
}

} // namespace
} // namespace vistrane
