#include "tests/support/ControllerTest.h"

namespace vistrane {
namespace {

// Read before any test can have changed it.
const std::optional<std::string> styleAtProcessStart = interfaceStyle();

TEST(InterfaceStyle, IsDarkBeforeTheFirstReading) {
    EXPECT_EQ(styleAtProcessStart, "Dark");
}

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
    }
};

TEST_F(Appearance, OnlyTheExactTextDarkGivesTheDarkFaces) {
    const struct {
        std::optional<std::string> style;
        std::string stopped;
        std::string playing;
    } rows[] = {{"Dark", "play1 play2", "play1-s play2-s"},
                {std::nullopt, "play2 play1", "play2-s play1-s"},
                {"Light", "play2 play1", "play2-s play1-s"},
                {"dark", "play2 play1", "play2-s play1-s"},
                {"Dark ", "play2 play1", "play2-s play1-s"},
                {"", "play2 play1", "play2-s play1-s"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.style.value_or("no style"));
        setStyle(row.style);
        delegate.playTimer = nullptr;
        delegate.darkModeChanged(nullptr);
        EXPECT_EQ(faces(), row.stopped);
        EXPECT_EQ(interfaceStyle(), row.style);
        EXPECT_EQ(isDark(), row.style == "Dark");
        play();
        delegate.darkModeChanged(nullptr);
        EXPECT_EQ(faces(), row.playing);
        delegate.playTimer->invalidate();
        delegate.darkModeChanged(nullptr);
        EXPECT_EQ(faces(), row.stopped);
    }
}

TEST_F(Appearance, TheSystemsNoticeAppliesTheNewStyleUntilTheEnd) {
    setStyle("Dark");
    launch();
    EXPECT_EQ(faces(), "play1 play2");
    setStyle(std::nullopt);
    sim.postNotification("AppleInterfaceThemeChangedNotification");
    EXPECT_EQ(faces(), "play2 play1");
    play();
    delegate.applicationWillTerminate();
    setStyle("Dark");
    sim.postNotification("AppleInterfaceThemeChangedNotification");
    EXPECT_EQ(faces(), "play1-s play2-s");
}

TEST_F(Appearance, AMissingPictureLeavesTheFaceEmpty) {
    sim.pictures().resources.clear();
    delegate.darkModeChanged(nullptr);
    EXPECT_EQ(button("previewPlayButton").image, nullptr);
}

} // namespace
} // namespace vistrane
