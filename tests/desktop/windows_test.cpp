#include "tests/desktop/DesktopTest.h"

namespace vistrane {
namespace {

/// The windows of the program among each other.
class Windows : public DesktopTest {};

TEST_F(Windows, TheFirstStartPutsTheTipsInFrontAndGivesThemTheKeyboard) {
    start();
    const Window tips = *await("the tips", [this] { return windowTitled("Quick Start Tips"); });
    await("the tips to be active", [&] { return screen().activeWindow() == tips.number; });
    const std::vector<Window> windows = screen().windows();
    ASSERT_GE(windows.size(), 2U);
    EXPECT_EQ(windows.back().number, tips.number);
    keepScreen("first-start");
    // The program does not live on for them.
    EXPECT_EQ(quit(), 0);
}

TEST_F(Windows, ClickingTheMainWindowBringsItInFrontOfTheTips) {
    start();
    const Window tips = *await("the tips", [this] { return windowTitled("Quick Start Tips"); });
    await("the tips to be active", [&] { return screen().activeWindow() == tips.number; });
    screen().activate(window());
    await("the main window in front",
          [this] { return screen().windows().back().number == window().number; });
    EXPECT_EQ(quit(), 0);
}

TEST_F(Windows, TheKeysOfTheMenusWorkInASmallWindowToo) {
    start();
    const Window tips = *await("the tips", [this] { return windowTitled("Quick Start Tips"); });
    await("the tips to be active", [&] { return screen().activeWindow() == tips.number; });
    screen().press({"Control_L", "q"});
    EXPECT_EQ(awaitEnd(), 0);
}

TEST_F(Windows, TheCamerasViewTellsThatThereIsNoneToBePicked) {
    storeUsual();
    const auto description = [this] {
        return (*await("the camera's view",
                       [this] {
                           return firstBelow(root(), [](const Control& control) {
                               return control.name() == "Live camera";
                           });
                       }))
            .description();
    };
    start();
    await("the news", [&] { return description().starts_with("No camera was found"); });
    keepScreen("no-camera");
    EXPECT_EQ(quit(), 0);
    start({"--demo-camera"});
    button("Start Auto Capture");
    EXPECT_EQ(description(), "The picture of the camera that was picked");
    keepScreen("camera-to-be-picked");
    EXPECT_EQ(quit(), 0);
}

} // namespace
} // namespace vistrane
