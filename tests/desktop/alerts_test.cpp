#include <filesystem>

#include "tests/desktop/DesktopTest.h"
#include "tests/support/movie_facts.h"

namespace vistrane {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

class Alerts : public DesktopTest {};

TEST_F(Alerts, AStillWithoutAFolderIsShownAndNotSaved) {
    storeUsual();
    start({"--demo-camera"});
    pickCamera("Demo Camera");
    clickButton("Single Frame");
    const std::string message = "Please select the output folder";
    EXPECT_EQ(alert(message),
              (ShownAlert{message,
                          "Nice shot, but unfortunately this frame of the picture has NOT been "
                          "saved. Please select the output folder first.",
                          {"Got it"}}));
    keepScreen("no-folder");
    answer(message, "Got it");
    EXPECT_TRUE(isLit(frameView()));
    EXPECT_THAT(namesIn(folder), IsEmpty());
}

TEST_F(Alerts, FewerThanTwoFramesAreNotCompiled) {
    startWithFrames(1);
    clickButton("Compile Movie");
    const std::string message = "Bring me more frames please";
    EXPECT_EQ(alert(message),
              (ShownAlert{message,
                          "I need at least 2 frames to generate a movie.\n\nPlease double check "
                          "you have more frames in the project folder and make sure they are NOT "
                          "corrupted.",
                          {"Got it"}}));
    keepScreen("few-frames");
    answer(message, "Got it");
    EXPECT_TRUE(button("Compile Movie").is(ControlState::enabled));
    EXPECT_THAT(namesEndingIn(".mov", folder), IsEmpty());
}

TEST_F(Alerts, AMovieThatCannotBeCreatedLeavesTheWindowUsableAndIsTriedAgain) {
    startWithFrames(3);
    std::filesystem::rename(folder, folder + " away");
    clickButton("Compile Movie");
    const std::string message = "Vistran movie compiling error:";
    const ShownAlert shown = alert(message);
    EXPECT_EQ(shown.buttons, std::vector<std::string>{"Got it"});
    EXPECT_FALSE(shown.informative.empty());
    keepScreen("no-movie");

    // The window beside it stays usable.
    dragFrameSliderTo(0.0);
    awaitFrame(1, 3);
    fill("Seconds", "7");
    awaitLabel("( t = 7 s )");

    answer(message, "Got it");
    alert(message);
    std::filesystem::rename(folder + " away", folder);
    answer(message, "Got it");
    EXPECT_EQ(movieFacts(openedMovie()).times, frameTimes(3));
    EXPECT_THAT(namesEndingIn(".mov", folder), SizeIs(1));
}

} // namespace
} // namespace vistrane
