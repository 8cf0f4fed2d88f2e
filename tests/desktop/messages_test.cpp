#include <filesystem>

#include "tests/desktop/DesktopTest.h"
#include "tests/support/movie_facts.h"

namespace vistrane {
namespace {

/// The bar above the controls of the main window.
class Messages : public DesktopTest {
protected:
    bool isShown(const std::string& text) { return seek("label", text).has_value(); }
    void close(const std::string& text) {
        clickButton("Close this message");
        await("the end of the message", [&] { return !isShown(text); });
    }
};

TEST_F(Messages, NameTheFramesThatAreNotInTheMovie) {
    startWithFrames(9);
    for (const char* name : {"002", "003", "004", "005", "006", "008"}) {
        writeFile(folder + "/" + name + ".png", "this is no picture");
    }
    clickButton("Compile Movie");
    EXPECT_EQ(movieFacts(openedMovie()).times.size(), 3U);
    const std::string movie = namesEndingIn(".mov", folder).at(0);
    const std::string text = "The movie '" + movie +
                             "' is finished. "
                             "6 frames could not be added to the movie: "
                             "002.png, 003.png, 004.png, 005.png, 006.png and 1 more.";
    awaitLabel(text);
    keepScreen("left out");
    // The window stays usable.
    setSlider("Frame", 1);
    awaitFrame(2, 9);
    close(text);
}

TEST_F(Messages, TellThatAMovieFailed) {
    startWithFrames(2);
    for (const char* name : {"001", "002"}) {
        writeFile(folder + "/" + name + ".png", "this is no picture");
    }
    clickButton("Compile Movie");
    const Control message = labelFrom("No movie was made");
    keepScreen("failed");
    EXPECT_THAT(namesEndingIn(".mov", folder), testing::IsEmpty());
    close(message.name());
}

TEST_F(Messages, PlayingWaitsWhileTheUserHoldsTheFrameSlider) {
    startWithFrames(60, 2);
    const QRect slider = find("slider", "Frame").extents();
    clickButton("Play");
    await("playing to begin", [&] { return frameShown()->first < 60; });
    // Playing alone would take 20 seconds to get there.
    screen().moveTo({slider.left() + slider.width() * 3 / 4, slider.center().y()});
    screen().press();
    const int held = await("the held frame", [&] {
        const int shown = frameShown()->first;
        return shown > 40 && shown < 50 ? shown : 0;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(1500)); // three frames
    EXPECT_EQ(frameShown()->first, held);
    screen().release();
    await("playing to go on", [&] { return frameShown()->first > held + 1; });
}

TEST_F(Messages, PlayingThatBeginsWhileTheUserHoldsTheFrameSliderWaits) {
    startWithFrames(60, 10);
    screen().moveTo(find("slider", "Frame").extents().center());
    screen().press();
    screen().press({"Alt_L", "p"});
    // The kit shows the first frame when playing begins.
    awaitFrame(1, 60);
    std::this_thread::sleep_for(std::chrono::milliseconds(500)); // five frames
    EXPECT_EQ(frameShown(), std::pair(1, 60));
    screen().release();
    await("playing to go on", [&] { return frameShown()->first > 3; });
}

} // namespace
} // namespace vistrane
