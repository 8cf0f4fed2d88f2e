#include "tests/backends/cameras/CameraTestBed.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <thread>

#include <gmock/gmock.h>

#include "backends/cameras/CaptureSession.h"
#include "backends/posix/free_memory.h"
#include "tests/support/Soak.h"

// Run by with_pipewire.sh: real cameras of a private PipeWire.

namespace vistrane {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Ge;
using testing::HasSubstr;
using testing::Le;
using testing::SizeIs;

CameraOptions impatient() {
    CameraOptions options;
    options.retry = std::chrono::milliseconds(100);
    options.doubt = std::chrono::milliseconds(300);
    options.secondTry = std::chrono::milliseconds(1500);
    return options;
}

/// The program blocks SIGCHLD in all threads. Here `system` would send it to libcamera's handler.
const bool childrenAreQuiet = [] {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGCHLD);
    return pthread_sigmask(SIG_BLOCK, &signals, nullptr) == 0;
}();

/// As in the program.
const bool memoryIsInOneArena = [] {
    useOneArena();
    return true;
}();

bool testcam(const std::string& verb, const std::string& name, const std::string& settings = "") {
    return std::system((settings + " " VISTRANE_TESTCAM " " + verb + " " + name).c_str()) == 0;
}

constexpr char red[] = "TESTCAM_SOURCE='videotestsrc is-live=true pattern=red'";
constexpr char silent[] = "TESTCAM_SOURCE='videotestsrc is-live=true ! valve drop=true "
                          "drop-mode=forward-sticky-events'";
constexpr char blue[] = "TESTCAM_SOURCE='videotestsrc is-live=true pattern=blue'";

class PipeWireCamera : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(testcam("start", "Testcam", red)); }
    void TearDown() override {
        bed.session.reset();
        EXPECT_TRUE(testcam("stop", "Testcam"));
        EXPECT_TRUE(testcam("stop", "Othercam"));
    }

    std::vector<std::string> names() {
        std::vector<std::string> names;
        for (const auto& device : bed.devices()) {
            names.push_back(device->localizedName());
        }
        return names;
    }

    bool awaitMessages(std::size_t count) {
        return bed.dispatch.runUntil([&] { return bed.observer.messages().size() >= count; });
    }

    std::vector<int> colourOfLastStill() {
        const auto pixmap = pixmapOf(*bed.delegate.files.back());
        return pixmap ? pixmap->middle() : std::vector<int>{};
    }

    /// Of the stills since the last call, which are freed.
    void expectRedStills() {
        for (const auto& file : bed.delegate.files) {
            const auto pixmap = pixmapOf(*file);
            ASSERT_TRUE(pixmap);
            EXPECT_THAT(pixmap->middle(), ElementsAre(Ge(250), Le(5), Le(5)));
        }
        bed.delegate.files.clear();
    }

    /// A long run of the replugs measures the times of the program itself.
    CameraTestBed bed{Soak::isLong() ? CameraOptions{} : impatient()};
};

const auto isRed = ElementsAre(Ge(250), Le(5), Le(5));
const auto isBlue = ElementsAre(Le(5), Le(5), Ge(250));

TEST_F(PipeWireCamera, IsListedOnceByAPreparedListing) {
    bed.cameras->prepare();
    bed.cameras->prepare();
    EXPECT_THAT(names(), Contains("Testcam").Times(1));
}

TEST_F(PipeWireCamera, IsListedOnceUnderItsName) {
    EXPECT_THAT(names(), Contains("Testcam").Times(1));
    EXPECT_TRUE(bed.device("Testcam")->hasMediaType(AVMediaTypeVideo));
    EXPECT_TRUE(bed.device("Testcam")->supportsAVCaptureSessionPreset(AVCaptureSessionPresetPhoto));
}

TEST_F(PipeWireCamera, StillShowsWhatTheCameraSees) {
    ASSERT_TRUE(bed.pick("Testcam"));
    bed.request();
    bed.request();
    ASSERT_TRUE(bed.awaitOutcomes(2));
    ASSERT_THAT(bed.delegate.outcomes, ElementsAre("", ""));
    const auto pixmap = pixmapOf(*bed.delegate.files[0]);
    ASSERT_TRUE(pixmap);
    EXPECT_EQ(pixmap->width, 1280);
    EXPECT_EQ(pixmap->height, 720);
    EXPECT_THAT(colourOfLastStill(), isRed);
}

TEST_F(PipeWireCamera, JpegCameraGivesStillsOfTheSameColours) {
    ASSERT_TRUE(testcam("start", "Othercam",
                        "TESTCAM_SOURCE='videotestsrc is-live=true pattern=blue ! "
                        "video/x-raw,format=RGB,width=640,height=480,framerate=30/1 ! "
                        "videoconvert ! video/x-raw,format=I420,colorimetry=1:4:0:0 ! jpegenc' "
                        "TESTCAM_CAPS=image/jpeg,width=640,height=480,framerate=30/1"));
    ASSERT_TRUE(bed.pick("Othercam"));
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(bed.still(), "");
    }
    EXPECT_EQ(pixmapOf(*bed.delegate.files.back())->height, 480);
    EXPECT_THAT(colourOfLastStill(), isBlue);
}

TEST_F(PipeWireCamera, PickingTheSameCameraAgainGoesOn) {
    for (int picks = 0; picks < 3; ++picks) {
        ASSERT_TRUE(bed.pick("Testcam"));
        std::string outcome = bed.still();
        // The camera may restart when its last reader leaves; then it is back within moments.
        for (int tries = 0; tries < 50 && !outcome.empty(); ++tries) {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            outcome = bed.still();
        }
        EXPECT_EQ(outcome, "");
    }
}

TEST_F(PipeWireCamera, ACameraThatIsGoneGivesNoInput) {
    const auto device = bed.device("Testcam");
    ASSERT_TRUE(testcam("stop", "Testcam"));
    const auto result = bed.cameras->deviceInputWithDevice(device);
    EXPECT_EQ(result.input, nullptr);
    ASSERT_TRUE(result.error);
    EXPECT_THAT(result.error->localizedDescription, HasSubstr("'Testcam' is not there"));
}

TEST_F(PipeWireCamera, ACameraThatPipeWireDoesNotLinkGivesNoInput) {
    const auto device = bed.device("Testcam");
    ASSERT_EQ(std::system("kill -STOP $(cat $XDG_RUNTIME_DIR/wireplumber.pid)"), 0);
    const auto result = bed.cameras->deviceInputWithDevice(device);
    ASSERT_EQ(std::system("kill -CONT $(cat $XDG_RUNTIME_DIR/wireplumber.pid)"), 0);
    EXPECT_EQ(result.input, nullptr);
    ASSERT_TRUE(result.error);
    EXPECT_THAT(result.error->localizedDescription, HasSubstr("'Testcam' cannot be opened"));
    EXPECT_THAT(bed.observer.messages(), SizeIs(0));
    // The session manager may link the first attempt now, and the camera restart when that ends.
    bool isPicked = false;
    for (int tries = 0; tries < 5 && !isPicked; ++tries) {
        isPicked = bed.pick("Testcam");
    }
    EXPECT_TRUE(isPicked);
    EXPECT_EQ(bed.still(), "");
}

TEST_F(PipeWireCamera, ACameraWithoutPicturesGivesNoInput) {
    ASSERT_TRUE(testcam("start", "Othercam", silent));
    // The session manager of a busy machine may still be busy with the camera before: it links
    // this one later, and an attempt before that says that there is no camera.
    std::string reason;
    for (int tries = 0; tries < 5 && reason.find("no picture") == std::string::npos; ++tries) {
        const auto result = bed.cameras->deviceInputWithDevice(bed.device("Othercam"));
        EXPECT_EQ(result.input, nullptr);
        ASSERT_TRUE(result.error);
        reason = result.error->localizedDescription;
    }
    EXPECT_THAT(reason, HasSubstr("cannot be opened (it gives no picture within 3000 ms)"));
    EXPECT_THAT(bed.observer.messages(), SizeIs(0));
}

TEST_F(PipeWireCamera, ASlowCameraGivesAnInputBeforeItsFirstPicture) {
    ASSERT_TRUE(testcam("start", "Othercam",
                        std::string(silent) + " TESTCAM_CAPS=video/x-raw,format=I420,width=640,"
                                              "height=480,framerate=1/60"));
    EXPECT_TRUE(bed.cameras->deviceInputWithDevice(bed.device("Othercam")).input);
}

TEST_F(PipeWireCamera, PickingOpensTheCameraOnce) {
    // The camera's provider ends with its last reader, and its node with it.
    const auto node = [this] {
        return std::dynamic_pointer_cast<CameraDevice>(bed.device("Testcam"))
            ->camera()
            .facts.instance;
    };
    const std::string before = node();
    ASSERT_TRUE(bed.pick("Testcam"));
    EXPECT_EQ(bed.still(), "");
    EXPECT_EQ(node(), before);
}

TEST_F(PipeWireCamera, UnpluggedCameraEndsStillsInErrorsAndIsReopenedWhenItIsBack) {
    ASSERT_TRUE(bed.pick("Testcam"));
    ASSERT_TRUE(testcam("start", "Othercam", blue));
    ASSERT_TRUE(testcam("stop", "Testcam"));
    EXPECT_THAT(bed.still(), HasSubstr("'Testcam' gives no pictures"));
    ASSERT_TRUE(awaitMessages(1));
    EXPECT_TRUE(bed.session->isRunning());
    EXPECT_THAT(bed.observer.messages()[0], HasSubstr("'Testcam' gives no pictures"));

    // The other camera would deliver pictures all the time.
    for (int i = 0; i < 29; ++i) {
        EXPECT_NE(bed.still(), "");
    }
    EXPECT_TRUE(bed.delegate.files.empty());

    ASSERT_TRUE(testcam("start", "Testcam", red));
    ASSERT_TRUE(awaitMessages(2));
    EXPECT_THAT(bed.observer.messages()[1], HasSubstr("'Testcam' is back"));
    EXPECT_EQ(bed.still(), "");
    EXPECT_THAT(colourOfLastStill(), isRed);
    EXPECT_THAT(bed.observer.messages(), SizeIs(2));
}

TEST_F(PipeWireCamera, CameraThatFreezesIsReportedAndComesBack) {
    ASSERT_TRUE(bed.pick("Testcam"));
    ASSERT_TRUE(testcam("freeze", "Testcam"));
    EXPECT_NE(bed.still(), "");
    ASSERT_TRUE(awaitMessages(1));
    ASSERT_TRUE(testcam("thaw", "Testcam"));
    ASSERT_TRUE(awaitMessages(2));
    EXPECT_EQ(bed.still(), "");
}

TEST_F(PipeWireCamera, StopWhileTheCameraIsGoneIsWholeAndQuiet) {
    ASSERT_TRUE(bed.pick("Testcam"));
    ASSERT_TRUE(testcam("stop", "Testcam"));
    ASSERT_TRUE(awaitMessages(1));
    bed.session->stopRunning();
    EXPECT_FALSE(bed.session->isRunning());
    ASSERT_TRUE(testcam("start", "Testcam", red));
    ASSERT_TRUE(bed.pick("Testcam"));
    EXPECT_EQ(bed.still(), "");
    EXPECT_THAT(bed.observer.messages(), SizeIs(1));
}

TEST_F(PipeWireCamera, EachReplugDuringCaptureIsSurvivedAndLeavesNothingBehind) {
    ASSERT_TRUE(testcam("start", "Othercam", blue));
    ASSERT_TRUE(bed.pick("Testcam"));
    Times noticed;
    Times resumed;
    std::ptrdiff_t files = 0;
    std::ptrdiff_t before = 0;
    std::vector<double> cycles;
    std::vector<double> memory;
    Soak soak("a camera lost and back, another one present", {.few = 8, .many = 100});
    while (soak.next()) {
        const auto cycle = static_cast<std::size_t>(soak.round());
        const StopWatch unplugging;
        auto unplugged = std::async(std::launch::async, [] { return testcam("stop", "Testcam"); });
        while (bed.still().empty()) {
            expectRedStills();
        }
        ASSERT_TRUE(awaitMessages(2 * cycle - 1));
        noticed.add(unplugging.milliseconds());
        ASSERT_TRUE(unplugged.get());
        EXPECT_NE(bed.still(), "");
        // What one cycle leaves, when the lost camera's pictures are freed: after the report.
        if (Soak::isLong()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(500));
        }
        if (cycle >= 3) {
            cycles.push_back(static_cast<double>(cycle));
            memory.push_back(residentBytes());
        }

        ASSERT_TRUE(testcam("start", "Testcam", red));
        const StopWatch listed;
        ASSERT_TRUE(awaitMessages(2 * cycle));
        resumed.add(listed.milliseconds());
        ASSERT_EQ(bed.still(), "");
        expectRedStills();

        if (cycle == 3) {
            files = countOf(openFiles);
            before = countOf(threads);
        }
    }
    // Less than one for each of the last five replugs.
    EXPECT_LE(countOf(openFiles), files + 4);
    EXPECT_LE(countOf(threads), before + 4);
    const double bytes = slope(cycles, memory);
    char reached[200];
    std::snprintf(reached, sizeof reached,
                  "%d cycles: noticed after %.1f s at most, resumed %.1f s after the camera was "
                  "listed; descriptors %td, then %td; threads %td, then %td; %.0f bytes a cycle",
                  soak.round(), noticed.worst() / 1000, resumed.worst() / 1000, files,
                  countOf(openFiles), before, countOf(threads), bytes);
    soak.report(reached, noticed.worst() <= 3000 && resumed.worst() <= 3000 && bytes < 10'000 &&
                             !HasFailure());
}

TEST_F(PipeWireCamera, ListingWhileCamerasComeAndGoIsSafe) {
    std::atomic<bool> ends = false;
    std::thread lists([&] {
        while (!ends) {
            names();
        }
    });
    for (int i = 0; i < 30; ++i) {
        EXPECT_TRUE(testcam("start", "Othercam"));
        EXPECT_TRUE(testcam("stop", "Othercam"));
    }
    ends = true;
    lists.join();
    EXPECT_THAT(names(), ElementsAre("Testcam"));
}

TEST_F(PipeWireCamera, IsBackAfterPipeWireRestarts) {
    ASSERT_TRUE(bed.pick("Testcam"));
    ASSERT_EQ(std::system("kill -KILL $(cat $XDG_RUNTIME_DIR/pipewire.pid)"), 0);
    ASSERT_TRUE(awaitMessages(1));
    testcam("stop", "Testcam");
    ASSERT_TRUE(testcam("start", "Testcam", blue));
    ASSERT_TRUE(awaitMessages(2));
    EXPECT_EQ(bed.still(), "");
    EXPECT_THAT(colourOfLastStill(), isBlue);
    EXPECT_THAT(names(), ElementsAre("Testcam"));
}

TEST_F(PipeWireCamera, TheOtherOfTwoCamerasCanBePicked) {
    ASSERT_TRUE(testcam("start", "Othercam", blue));
    ASSERT_TRUE(bed.pick("Othercam"));
    ASSERT_EQ(bed.still(), "");
    EXPECT_THAT(colourOfLastStill(), isBlue);
    ASSERT_TRUE(bed.pick("Testcam"));
    ASSERT_EQ(bed.still(), "");
    EXPECT_THAT(colourOfLastStill(), isRed);
}

} // namespace
} // namespace vistrane
