#include <limits>

#include "tests/support/PreviewTest.h"

namespace vistrane {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

class Player : public PreviewTest {
protected:
    void press() { sim.nib().send("playPictures:"); }
    /// One period of 25 frames a second, and a little.
    void tick() { sim.advance(0.04); }
};

TEST_F(Player, StartingTakesItsStepsInOrder) {
    listFrames(3);
    press();
    EXPECT_THAT(
        sim.takeCalls(),
        ElementsAre(
            "previewPlayButton setImage: play1-s", "previewPlayButton setAlternateImage: play2-s",
            "scheduledTimerWithTimeInterval: 0.03999999910593033 repeats: YES -> timer1",
            "timer1 fire", "imageWithContentsOfFile: /f/1.png", "myDisplay setImage: /f/1.png",
            "photoSlider setIntegerValue: 0", "currentS setStringValue: Displaying frame 1 of 3"));
    EXPECT_TRUE(isPlaying());
    EXPECT_EQ(delegate.playing, 1);
}

TEST_F(Player, ATickShowsTheNextFrameAndNothingElse) {
    listFrames(3);
    press();
    sim.takeCalls();
    tick();
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("imageWithContentsOfFile: /f/2.png", "myDisplay setImage: /f/2.png",
                            "photoSlider setIntegerValue: 1",
                            "currentS setStringValue: Displaying frame 2 of 3"));
}

TEST_F(Player, StoppingTakesItsStepsInOrder) {
    listFrames(3);
    press();
    tick();
    sim.takeCalls();
    press();
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("timer1 invalidate", "previewPlayButton setImage: play1",
                            "previewPlayButton setAlternateImage: play2"));
    EXPECT_FALSE(isPlaying());
    sim.advance(10.0);
    EXPECT_THAT(sim.takeCalls(), IsEmpty());
}

TEST_F(Player, StoppingByTheButtonLeavesEverythingAtTheLastFrameShown) {
    listFrames(5);
    press();
    tick();
    press();
    EXPECT_EQ(delegate.playing, 2);
    EXPECT_EQ(slider("photoSlider").value(), 1.0);
    EXPECT_EQ(shown(), "/f/2.png");
    EXPECT_EQ(readOut(), "Displaying frame 2 of 5");
}

TEST_F(Player, RunsOnceThroughTheListAndStopsOnePeriodAfterTheLastFrame) {
    listFrames(3);
    press();
    EXPECT_EQ(readOut(), "Displaying frame 1 of 3");
    tick();
    EXPECT_EQ(readOut(), "Displaying frame 2 of 3");
    tick();
    EXPECT_EQ(readOut(), "Displaying frame 3 of 3");
    EXPECT_TRUE(isPlaying());
    EXPECT_EQ(face(), "play1-s");
    sim.takeCalls();
    tick();
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("timer1 invalidate", "previewPlayButton setImage: play1",
                            "previewPlayButton setAlternateImage: play2"));
    EXPECT_FALSE(isPlaying());
    EXPECT_EQ(delegate.playing, 1);
    EXPECT_EQ(shown(), "/f/3.png");
    EXPECT_EQ(slider("photoSlider").value(), 2.0);
    EXPECT_EQ(readOut(), "Displaying frame 3 of 3");
    sim.advance(10.0);
    EXPECT_THAT(sim.takeCalls(), IsEmpty());
}

TEST_F(Player, TheLastFrameStaysForOneWholePeriod) {
    slider("fpsS").drag(2.0);
    listFrames(1);
    press();
    sim.advance(0.499);
    EXPECT_TRUE(isPlaying());
    sim.advance(0.001);
    EXPECT_FALSE(isPlaying());
}

TEST_F(Player, StartsAtTheFirstFrameWhateverTheSliderShows) {
    listFrames(9);
    slider("photoSlider").drag(4.0);
    delegate.sliderDisplaying(nullptr);
    press();
    EXPECT_EQ(shown(), "/f/1.png");
    EXPECT_EQ(readOut(), "Displaying frame 1 of 9");
    EXPECT_EQ(slider("photoSlider").value(), 0.0);
}

TEST_F(Player, StartsAgainAtTheFirstFrameAfterAStopWithATimerOfItsOwn) {
    listFrames(3);
    press();
    tick();
    press();
    sim.takeCalls();
    press();
    EXPECT_EQ(shown(), "/f/1.png");
    EXPECT_EQ(sim.loop().timers().size(), 1U);
    EXPECT_EQ(delegate.playTimer, sim.loop().timers().front());
    tick();
    EXPECT_EQ(shown(), "/f/2.png");
}

TEST_F(Player, StartsAgainAfterTheEnd) {
    listFrames(2);
    press();
    sim.advance(1.0);
    ASSERT_FALSE(isPlaying());
    press();
    EXPECT_EQ(readOut(), "Displaying frame 1 of 2");
    tick();
    EXPECT_EQ(readOut(), "Displaying frame 2 of 2");
}

TEST_F(Player, WithoutAListTheFacesTurnBackAtOnce) {
    press();
    EXPECT_THAT(
        sim.takeCalls(),
        ElementsAre("previewPlayButton setImage: play1-s",
                    "previewPlayButton setAlternateImage: play2-s",
                    "scheduledTimerWithTimeInterval: 0.03999999910593033 repeats: YES -> timer1",
                    "timer1 fire", "timer1 invalidate", "previewPlayButton setImage: play1",
                    "previewPlayButton setAlternateImage: play2"));
    EXPECT_FALSE(isPlaying());
    EXPECT_EQ(delegate.playing, 1);
}

TEST_F(Player, WithAnEmptyListTheFacesTurnBackAtOnce) {
    listFrames(0);
    ASSERT_TRUE(delegate.pictureArray.load());
    press();
    EXPECT_FALSE(isPlaying());
    EXPECT_EQ(face(), "play1");
    EXPECT_EQ(alternateFace(), "play2");
    EXPECT_THAT(sim.takeCalls(), Not(Contains(::testing::StartsWith("myDisplay"))));
}

TEST_F(Player, AListThatBecomesEmptyStopsThePlayback) {
    listFrames(3);
    press();
    for (const char* path : {"/f/1.png", "/f/2.png", "/f/3.png"}) {
        sim.files().remove(path);
    }
    delegate.refreshArray(nullptr);
    tick();
    EXPECT_FALSE(isPlaying());
    EXPECT_EQ(shown(), "/f/1.png");
}

TEST_F(Player, ANewFrameJumpsToTheEndAndStopsOnePeriodLater) {
    listFrames(5);
    press();
    tick();
    sim.files().addFile("/f/6.png");
    delegate.refreshArray(nullptr);
    EXPECT_EQ(delegate.playing, 5);
    EXPECT_EQ(readOut(), "Displaying frame 6 of 6");
    EXPECT_TRUE(isPlaying());
    sim.takeCalls();
    tick();
    EXPECT_THAT(sim.takeCalls(), Contains("imageWithContentsOfFile: /f/6.png"));
    EXPECT_TRUE(isPlaying());
    tick();
    EXPECT_FALSE(isPlaying());
    EXPECT_EQ(readOut(), "Displaying frame 6 of 6");
}

TEST_F(Player, AChangeOfTheRateCountsFromTheNextStart) {
    listFrames(9);
    press();
    slider("fpsS").drag(1.0);
    sim.nib().send("rateChanged:");
    EXPECT_EQ(textField("fpsD").text, "( fps = 1 )");
    tick();
    EXPECT_EQ(readOut(), "Displaying frame 2 of 9");
    press();
    sim.takeCalls();
    press();
    EXPECT_THAT(sim.takeCalls(),
                Contains("scheduledTimerWithTimeInterval: 1 repeats: YES -> timer2"));
    sim.advance(0.999);
    EXPECT_EQ(readOut(), "Displaying frame 1 of 9");
    sim.advance(0.001);
    EXPECT_EQ(readOut(), "Displaying frame 2 of 9");
}

TEST_F(Player, ThePeriodFollowsTheSliderBetweenWholeRates) {
    listFrames(2);
    slider("fpsS").drag(2.5);
    press();
    EXPECT_THAT(
        sim.takeCalls(),
        Contains("scheduledTimerWithTimeInterval: 0.4000000059604645 repeats: YES -> timer1"));
}

TEST_F(Player, AFrameThatCannotBeReadIsEmptyAndThePlaybackGoesOn) {
    sim.files().addDamagedPicture("/f/2.png");
    listFrames(1);
    sim.files().addFile("/f/3.png");
    delegate.refreshArray(nullptr);
    press();
    tick();
    EXPECT_EQ(display().image, nullptr);
    EXPECT_EQ(readOut(), "Displaying frame 2 of 3");
    tick();
    EXPECT_EQ(shown(), "/f/3.png");
    EXPECT_THAT(sim.alerts().shown(), IsEmpty());
}

TEST_F(Player, ANegativeIndexCountsAsPastTheEnd) {
    listFrames(3);
    press();
    delegate.playing = -1;
    tick();
    EXPECT_FALSE(isPlaying());
    EXPECT_EQ(delegate.playing, 1);
    EXPECT_EQ(shown(), "/f/1.png");
}

TEST_F(Player, TheLowestIndexCountsAsPastTheEnd) {
    listFrames(3);
    press();
    delegate.playing = std::numeric_limits<std::int64_t>::min();
    tick();
    EXPECT_FALSE(isPlaying());
}

TEST_F(Player, TheFacesAreThoseOfTheAppearanceLastRead) {
    listFrames(3);
    interfaceStyle() = std::nullopt;
    press();
    EXPECT_EQ(face(), "play2-s");
    EXPECT_EQ(alternateFace(), "play1-s");
    press();
    EXPECT_EQ(face(), "play2");
    EXPECT_EQ(alternateFace(), "play1");
    interfaceStyle() = "Dark";
    press();
    EXPECT_EQ(face(), "play1-s");
    EXPECT_EQ(alternateFace(), "play2-s");
}

TEST_F(Player, TheAppearanceIsNotReadAnew) {
    listFrames(3);
    sim.defaults().values.erase("AppleInterfaceStyle");
    press();
    EXPECT_EQ(face(), "play1-s");
    EXPECT_THAT(sim.takeCalls(), Not(Contains(::testing::StartsWith("standardUserDefaults"))));
}

TEST_F(Player, AChangeOfTheAppearanceWhilePlayingKeepsThePlayingFaces) {
    listFrames(3);
    press();
    delegate.darkModeChanged(nullptr);
    EXPECT_EQ(face(), "play2-s");
    EXPECT_EQ(alternateFace(), "play1-s");
    EXPECT_TRUE(isPlaying());
    sim.advance(1.0);
    EXPECT_EQ(face(), "play2");
}

TEST_F(Player, LateTicksMergeIntoOneAndTheGridStays) {
    slider("fpsS").drag(1.0);
    listFrames(9);
    press();
    sim.stall(3.5);
    EXPECT_EQ(readOut(), "Displaying frame 2 of 9");
    sim.advance(0.5);
    EXPECT_EQ(readOut(), "Displaying frame 3 of 9");
}

TEST_F(Player, AnAlertHoldsThePlaybackBack) {
    listFrames(9);
    press();
    sim.alerts().stayUp(5.0);
    delegate.pictureArray.store(nullptr);
    delegate.genneratingMovie(nullptr);
    EXPECT_TRUE(isPlaying());
    sim.advance(0.0);
    EXPECT_FALSE(isPlaying());
}

} // namespace
} // namespace vistrane
