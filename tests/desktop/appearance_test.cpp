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
    void clickPlayAndAwait(const PlayFace& face) {
        clickButton("Play");
        awaitFace(face);
    }
    void switchAndAwait(ColourScheme scheme, const PlayFace& face) {
        desktop.switchTo(scheme);
        awaitFace(face);
    }
};

TEST_F(Appearance, FacesAreThoseOfTheDesktopAtTheStart) {
    desktop.switchTo(ColourScheme::dark);
    open();
    awaitFace(darkStopped);
    keepScreen("dark");
    clickPlayAndAwait(darkPlaying);
    clickPlayAndAwait(darkStopped);
}

TEST_F(Appearance, FacesFollowTheDesktopWhileStoppedAndWhilePlaying) {
    // A desktop without a preference is light.
    desktop.switchTo(ColourScheme::none);
    open();
    awaitFace(lightStopped);
    switchAndAwait(ColourScheme::light, lightStopped);
    keepScreen("light");
    switchAndAwait(ColourScheme::dark, darkStopped);
    switchAndAwait(ColourScheme::none, lightStopped);
    clickPlayAndAwait(lightPlaying);
    switchAndAwait(ColourScheme::dark, darkPlaying);
    switchAndAwait(ColourScheme::light, lightPlaying);
    switchAndAwait(ColourScheme::dark, darkPlaying);
    clickPlayAndAwait(darkStopped);
    clickPlayAndAwait(darkPlaying);
}

} // namespace
} // namespace vistrane
