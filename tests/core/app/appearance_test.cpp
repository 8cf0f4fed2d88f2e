#include "tests/support/ControllerTest.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;

// Read before any test can have changed it.
const std::optional<std::string> styleAtProcessStart = interfaceStyle();

TEST(InterfaceStyle, IsDarkBeforeTheFirstReading) {
    EXPECT_EQ(styleAtProcessStart, "Dark");
}

struct Faces {
    std::optional<std::string> style;
    bool playing;
    std::string image;
    std::string alternateImage;
};

class Appearance : public ControllerTest {
protected:
    void setStyle(const std::optional<std::string>& style) {
        sim.defaults().values.erase("AppleInterfaceStyle");
        if (style) {
            sim.defaults().values["AppleInterfaceStyle"] = *style;
        }
    }
    void play() {
        delegate.playTimer = sim.platform().foundation.scheduledTimerWithTimeInterval(
            1.0, [](NSTimer&) {}, true);
        sim.takeCalls();
    }
};

class AppearanceTable : public Appearance, public ::testing::WithParamInterface<Faces> {};

TEST_P(AppearanceTable, GivesTheFaces) {
    setStyle(GetParam().style);
    if (GetParam().playing) {
        play();
    }
    delegate.darkModeChanged(nullptr);
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("standardUserDefaults stringForKey: AppleInterfaceStyle",
                            "previewPlayButton setImage: " + GetParam().image,
                            "previewPlayButton setAlternateImage: " + GetParam().alternateImage));
    EXPECT_EQ(interfaceStyle(), GetParam().style);
    EXPECT_EQ(isDark(), GetParam().style == "Dark");
}

INSTANTIATE_TEST_SUITE_P(Dark, AppearanceTable,
                         ::testing::Values(Faces{"Dark", true, "play1-s", "play2-s"},
                                           Faces{"Dark", false, "play1", "play2"}));
INSTANTIATE_TEST_SUITE_P(Light, AppearanceTable,
                         ::testing::Values(Faces{std::nullopt, true, "play2-s", "play1-s"},
                                           Faces{std::nullopt, false, "play2", "play1"}));
// Only the exact text is dark.
INSTANTIATE_TEST_SUITE_P(Other, AppearanceTable,
                         ::testing::Values(Faces{"dark", false, "play2", "play1"},
                                           Faces{"Dark ", false, "play2", "play1"},
                                           Faces{"", true, "play2-s", "play1-s"},
                                           Faces{"Light", true, "play2-s", "play1-s"}));

TEST_F(Appearance, ATimerThatWasStoppedCountsAsNotPlaying) {
    setStyle("Dark");
    play();
    delegate.playTimer->invalidate();
    delegate.darkModeChanged(nullptr);
    EXPECT_EQ(sim.takeCalls().back(), "previewPlayButton setAlternateImage: play2");
}

TEST_F(Appearance, TheSystemsNoticeAppliesTheNewStyle) {
    setStyle("Dark");
    delegate.awakeFromNib();
    sim.takeCalls();
    setStyle(std::nullopt);
    sim.postNotification("AppleInterfaceThemeChangedNotification");
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("standardUserDefaults stringForKey: AppleInterfaceStyle",
                            "previewPlayButton setImage: play2",
                            "previewPlayButton setAlternateImage: play1"));
    play();
    setStyle("Dark");
    sim.postNotification("AppleInterfaceThemeChangedNotification");
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("standardUserDefaults stringForKey: AppleInterfaceStyle",
                            "previewPlayButton setImage: play1-s",
                            "previewPlayButton setAlternateImage: play2-s"));
}

TEST_F(Appearance, ANoticeIsHeardInEveryStateOfTheProgram) {
    delegate.awakeFromNib();
    delegate.applicationDidFinishLaunching();
    delegate.applicationWillTerminate();
    sim.takeCalls();
    sim.postNotification("AppleInterfaceThemeChangedNotification");
    EXPECT_EQ(sim.takeCalls().size(), 3U);
}

TEST_F(Appearance, AMissingPictureLeavesTheFaceEmpty) {
    sim.pictures().resources.clear();
    delegate.darkModeChanged(nullptr);
    EXPECT_EQ(button("previewPlayButton").image, nullptr);
}

} // namespace
} // namespace vistrane
