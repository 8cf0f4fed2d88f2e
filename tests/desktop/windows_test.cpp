#include "tests/desktop/DesktopTest.h"

namespace vistrane {
namespace {

class Windows : public DesktopTest {
protected:
    Window activeTips() {
        const Window window = tips();
        await("the tips to be active", [&] { return screen().activeWindow() == window.id; });
        return window;
    }
};

TEST_F(Windows, TheFirstStartPutsTheTipsInFrontAndGivesThemTheKeyboard) {
    start();
    const Window tips = activeTips();
    const std::vector<Window> windows = screen().windows();
    ASSERT_GE(windows.size(), 2U);
    EXPECT_EQ(windows.back().id, tips.id);
    keepScreen("first-start");
    // The program does not stay for them.
    EXPECT_EQ(quit(), 0);
    EXPECT_THAT(stored(), testing::Contains(testing::Pair("iSecond", 5)));
}

TEST_F(Windows, ActivatingTheMainWindowBringsItInFrontOfTheTips) {
    start();
    activeTips();
    screen().activate(mainWindow());
    await("the main window in front",
          [this] { return screen().windows().back().id == mainWindow().id; });
}

TEST_F(Windows, TheKeysOfTheMenusWorkInASmallWindowToo) {
    start();
    activeTips();
    screen().press({"Control_L", "q"});
    EXPECT_EQ(awaitEnd(), 0);
}

TEST_F(Windows, TheCamerasViewTellsWhenThereIsNoCamera) {
    storeUsual();
    const auto description = [this] { return cameraView().description(); };
    start();
    await("the description", [&] { return description().starts_with("No camera was found"); });
    keepScreen("no-camera");
    EXPECT_EQ(quit(), 0);
    start({"--demo-camera"});
    button("Start Auto Capture");
    EXPECT_EQ(description(), "The picture of the camera that was picked");
    keepScreen("camera-to-be-picked");
}

} // namespace
} // namespace vistrane
