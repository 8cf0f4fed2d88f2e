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

TEST_F(Windows, TheMainWindowComesBackWhereItWas) {
    using testing::Pair;
    const auto place = [this] {
        // The window manager moves a window after the program has shown it.
        return *await("the window's place", [this] {
            const QRect now = screen().placeOf(mainWindow());
            return now.size() == QSize(900, 620) && now.x() >= 200 ? std::optional(now)
                                                                   : std::nullopt;
        });
    };
    storeUsual(
        30, {{"windowLeft", 200}, {"windowTop", 150}, {"windowWidth", 900}, {"windowHeight", 620}});
    start();
    const QRect first = place();
    EXPECT_EQ(quit(), 0);
    EXPECT_THAT(stored(),
                testing::IsSupersetOf({Pair("windowLeft", 200), Pair("windowTop", 150),
                                       Pair("windowWidth", 900), Pair("windowHeight", 620)}));
    start();
    EXPECT_EQ(place(), first);
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
