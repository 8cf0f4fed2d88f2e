#include <filesystem>

#include "tests/desktop/DesktopTest.h"
#include "tests/frontends/commandline/movie_facts.h"

namespace vistrane {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Pair;

class Damage : public DesktopTest {
protected:
    Control display() {
        return *await("the frame's view", [this] {
            return firstBelow(root(), [](const Control& control) {
                return control.name() == "Frame" && control.role() != "slider";
            });
        });
    }
};

TEST_F(Damage, OfTheSettingsCostsTheSettingsOnly) {
    storeUsual(12);
    const std::string damaged = contentsOf(settingsFile()).substr(0, 70);
    writeFile(settingsFile(), damaged);
    start();
    // As on the first day.
    await("the beep", [this] { return screen().bells() == 1; });
    await("the tips", [this] { return windowTitled("Quick Start Tips"); });
    awaitLabel("( fps = 30 )");
    awaitLabel("( t = 5 s )");
    EXPECT_THAT(program().written(), HasSubstr("are damaged"));
    EXPECT_EQ(contentsOf(settingsFile() + ".damaged"), damaged);
    EXPECT_EQ(quit(), 0);
    EXPECT_THAT(stored(), Contains(Pair("iFPS", 30)));
}

TEST_F(Damage, OfAFrameEmptiesThePreviewAndStopsNothing) {
    makeFrames(4);
    const std::string good = contentsOf(folder + "/003.png");
    writeFile(folder + "/002.png", "this is no picture");
    writeFile(folder + "/003.png", damaged::corruptData(good));
    writeFile(folder + "/004.png", damaged::truncated(good));
    storeUsual(10);
    start({folder});
    awaitFrame(4, 4);
    const Control view = display();
    const auto isEmpty = [&] {
        const Rectangle place = view.extents();
        const Colour middle =
            screen()
                .picture({place.x + place.width / 2, place.y + place.height / 4, 1, 1})
                .at(0, 0);
        return middle == Colour{0, 0, 0};
    };
    await("the empty view", isEmpty);
    const Control slider = find("slider", "Frame");
    const Rectangle place = slider.extents();
    screen().drag(place.right() - 14, place.y + place.height / 2, place.x + 3,
                  place.y + place.height / 2);
    awaitFrame(1, 4);
    await("the good frame", [&] { return !isEmpty(); });
    keepScreen("good");
    screen().press({"Right"});
    awaitFrame(2, 4);
    await("the empty view", isEmpty);
    keepScreen("corrupt");
    clickButton("Play");
    awaitFrame(4, 4);
    clickButton("Compile Movie");
    await("the movie in its application", [this] { return !desktop.opened().empty(); });
    EXPECT_EQ(movieFacts(desktop.copyOfOpened(0)).times.size(), 1U);
    EXPECT_EQ(quit(), 0);
}

TEST_F(Damage, OfTheFolderPutsThePlaceholderBack) {
    storeUsual();
    start({folder});
    EXPECT_EQ(quit(), 0);
    std::filesystem::remove_all(folder);
    start();
    button("click to select the output folder");
    EXPECT_EQ(quit(), 0);
}

} // namespace
} // namespace vistrane
