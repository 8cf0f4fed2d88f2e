#include "tests/desktop/DesktopTest.h"
#include "tests/desktop/play_button.h"

namespace vistrane {
namespace {

class Appearance : public DesktopTest {
protected:
    /// Plays for a minute, so that nothing ends by itself.
    void SetUp() override {
        makeFrames(60);
        storeUsual(1);
    }

    void open() {
        start({folder});
        awaitFrame(60, 60);
    }

    void awaitFace(const PlayFace& face) {
        const Control play = button("Play");
        // Under the mouse a face may look different.
        screen().moveTo(2, 2);
        await("the play button's face", [&] { return faceOf(pictureOf(play)) == face; });
    }
};

TEST_F(Appearance, FacesAreThoseOfTheDesktopAtTheStart) {
    desktop.portal().switchTo(ColourScheme::dark);
    open();
    awaitFace(darkStopped);
    keepScreen("dark");
    clickButton("Play");
    awaitFace(darkPlaying);
    clickButton("Play");
    awaitFace(darkStopped);
    EXPECT_EQ(quit(), 0);
}

TEST_F(Appearance, SwitchedWhileStoppedShowsThePlainPair) {
    open();
    awaitFace(lightStopped);
    keepScreen("light");
    desktop.portal().switchTo(ColourScheme::dark);
    awaitFace(darkStopped);
    clickButton("Play");
    awaitFace(darkPlaying);
    clickButton("Play");
    awaitFace(darkStopped);
    desktop.portal().switchTo(ColourScheme::light);
    awaitFace(lightStopped);
    EXPECT_EQ(quit(), 0);
}

TEST_F(Appearance, SwitchedWhilePlayingShowsThePlayingPair) {
    open();
    clickButton("Play");
    awaitFace(lightPlaying);
    desktop.portal().switchTo(ColourScheme::dark);
    awaitFace(darkPlaying);
    desktop.portal().switchTo(ColourScheme::light);
    awaitFace(lightPlaying);
    desktop.portal().switchTo(ColourScheme::dark);
    awaitFace(darkPlaying);
    clickButton("Play");
    awaitFace(darkStopped);
    EXPECT_EQ(quit(), 0);
}

TEST_F(Appearance, OfADesktopThatDoesNotMindIsLight) {
    desktop.portal().switchTo(ColourScheme::none);
    open();
    awaitFace(lightStopped);
    desktop.portal().switchTo(ColourScheme::dark);
    awaitFace(darkStopped);
    desktop.portal().switchTo(ColourScheme::none);
    awaitFace(lightStopped);
    EXPECT_EQ(quit(), 0);
}

} // namespace
} // namespace vistrane
