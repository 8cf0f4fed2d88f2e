#include "tests/desktop/DesktopTest.h"
#include "tests/desktop/play_button.h"

namespace vistrane {
namespace {

class Appearance : public DesktopTest {
protected:
    /// With frames for a minute, so that playing does not end by itself.
    void open() { startWithFrames(60, 1); }

    void awaitFace(const PlayFace& face) {
        const Control play = button("Play");
        // Under the mouse a face may look different.
        screen().moveTo({2, 2});
        await("the play button's face", [&] { return faceOf(pictureOf(play)) == face; });
    }
};

TEST_F(Appearance, FacesAreThoseOfTheDesktopAtTheStart) {
    desktop.switchTo(ColourScheme::dark);
    open();
    awaitFace(darkStopped);
    keepScreen("dark");
    clickButton("Play");
    awaitFace(darkPlaying);
    clickButton("Play");
    awaitFace(darkStopped);
}

TEST_F(Appearance, SwitchedWhileStoppedShowsThePlainPair) {
    open();
    awaitFace(lightStopped);
    keepScreen("light");
    desktop.switchTo(ColourScheme::dark);
    awaitFace(darkStopped);
    clickButton("Play");
    awaitFace(darkPlaying);
    clickButton("Play");
    awaitFace(darkStopped);
    desktop.switchTo(ColourScheme::light);
    awaitFace(lightStopped);
}

TEST_F(Appearance, SwitchedWhilePlayingShowsThePlayingPair) {
    open();
    clickButton("Play");
    awaitFace(lightPlaying);
    desktop.switchTo(ColourScheme::dark);
    awaitFace(darkPlaying);
    desktop.switchTo(ColourScheme::light);
    awaitFace(lightPlaying);
    desktop.switchTo(ColourScheme::dark);
    awaitFace(darkPlaying);
    clickButton("Play");
    awaitFace(darkStopped);
}

TEST_F(Appearance, OfADesktopWithoutAPreferenceIsLight) {
    desktop.switchTo(ColourScheme::none);
    open();
    awaitFace(lightStopped);
    desktop.switchTo(ColourScheme::dark);
    awaitFace(darkStopped);
    desktop.switchTo(ColourScheme::none);
    awaitFace(lightStopped);
}

} // namespace
} // namespace vistrane
