#include "tests/desktop/DesktopTest.h"
#include "tests/support/movie_facts.h"

namespace vistrane {
namespace {

using testing::SizeIs;

/// Without the mouse.
class Keyboard : public DesktopTest {
protected:
    std::vector<std::string> frames() const { return namesEndingIn(".png", folder); }
};

TEST_F(Keyboard, AloneMakesFramesAndAMovieOfThem) {
    storeUsual(10);
    start({folder, "--demo-camera"});
    giveKeysToMainWindow();

    // The camera list by its label's mnemonic.
    screen().press({"Alt_L", "e"});
    const Control box = cameraList();
    await("the focus", [&] { return box.is(ControlState::focused); });
    screen().press({"space"});
    await("the list", [&] {
        return firstBelow(box, [](const Control& control) {
            return control.role() == "list" && control.is(ControlState::showing);
        });
    });
    screen().press({"Return"});

    await("a frame", [this] {
        screen().press({"Alt_L", "g"});
        return !frames().empty();
    });
    // More than one, if the keys were pressed again while the camera was being opened.
    await("the newest frame", [this] {
        const int count = static_cast<int>(frames().size());
        return frameShown() == std::pair(count, count);
    });
    screen().press({"Alt_L", "s"});
    button("Stop Auto Capture");
    await("more frames", [this] { return frames().size() >= 3; });
    screen().press({"Alt_L", "s"});
    button("Start Auto Capture");

    screen().press({"Alt_L", "p"});
    await("the end of playing", [this] {
        const auto shown = frameShown();
        return shown && shown->first == shown->second;
    });
    screen().press({"Alt_L", "c"});
    EXPECT_THAT(movieFacts(openedMovie()).times, SizeIs(frames().size()));

    screen().press({"Alt_L", "o"});
    find("dialog", "Select Output Folder to Save the Capture");
    await("the path's focus",
          [this] { return find("text", "Directory:").is(ControlState::focused); });
    screen().press({"Escape"});
    button("click to select the output folder");
    // For this run only.
    EXPECT_EQ(quit(), 0);
    start();
    button(folder);
}

} // namespace
} // namespace vistrane
