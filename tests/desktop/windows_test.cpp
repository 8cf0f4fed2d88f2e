#include "tests/desktop/DesktopTest.h"

namespace vistrane {
namespace {

class Windows : public DesktopTest {};

TEST_F(Windows, TheFirstStartPutsTheTipsInFrontAndGivesThemTheKeyboard) {
    start();
    const Window small = tips();
    await("the tips to be active", [&] { return screen().activeWindow() == small.id; });
    EXPECT_EQ(screen().windows().back().id, small.id);
    keepScreen("first-start");
    screen().activate(mainWindow());
    await("the main window in front",
          [this] { return screen().windows().back().id == mainWindow().id; });
    // The keys of the menus work in a small window too, and the program does not stay for it.
    screen().activate(small);
    screen().press({"Control_L", "q"});
    EXPECT_EQ(awaitEnd(), 0);
    EXPECT_THAT(stored(), testing::Contains(testing::Pair("iSecond", 5)));
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
