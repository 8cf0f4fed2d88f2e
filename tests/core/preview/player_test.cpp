#include <cstdint>

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
    std::string state() {
        return shown() + ", " + readOut() + ", slider " +
               text(slider("photoSlider").value.doubleValue()) + ", next " +
               std::to_string(delegate.playing) + ", " + faces();
    }
};

TEST_F(Player, StartingTakesItsStepsInOrder) {
    listFrames(3);
    press();
    EXPECT_THAT(
        takeProcedure({"previewPlayButton setAlternateImage", "image", "photoSlider"}),
        ElementsAre("previewPlayButton setImage: play1-s",
                    "scheduledTimerWithTimeInterval: 0.03999999910593033 repeats: YES -> timer1",
                    "timer1 fire", "myDisplay setImage: /f/1.png",
                    "currentS setStringValue: Displaying frame 1 of 3"));
    EXPECT_EQ(state(), "/f/1.png, Displaying frame 1 of 3, slider 0, next 1, play1-s play2-s");
    EXPECT_TRUE(isPlaying());
}

TEST_F(Player, StoppingByTheButtonLeavesEverythingAtTheLastFrameShown) {
    listFrames(5);
    press();
    tick();
    press();
    for (const double wait : {0.0, 10.0}) {
        sim.advance(wait);
        EXPECT_EQ(state(), "/f/2.png, Displaying frame 2 of 5, slider 1, next 2, play1 play2");
        EXPECT_FALSE(isPlaying());
    }
    EXPECT_THAT(sim.loop().timers(), IsEmpty());
}

TEST_F(Player, RunsOnceThroughTheListAndStopsOnePeriodAfterTheLastFrame) {
    listFrames(3);
    press();
    tick();
    EXPECT_EQ(state(), "/f/2.png, Displaying frame 2 of 3, slider 1, next 2, play1-s play2-s");
    tick();
    EXPECT_EQ(state(), "/f/3.png, Displaying frame 3 of 3, slider 2, next 3, play1-s play2-s");
    EXPECT_TRUE(isPlaying());
    for (const double wait : {0.04, 10.0}) {
        sim.advance(wait);
        EXPECT_EQ(state(), "/f/3.png, Displaying frame 3 of 3, slider 2, next 1, play1 play2");
        EXPECT_FALSE(isPlaying());
    }
}

TEST_F(Player, EveryStartBeginsAtTheFirstFrameWithATimerOfItsOwn) {
    listFrames(9);
    slider("photoSlider").drag(4.0);
    delegate.sliderDisplaying(nullptr);
    press();
    EXPECT_EQ(state(), "/f/1.png, Displaying frame 1 of 9, slider 0, next 1, play1-s play2-s");
    tick();
    press();
    press();
    EXPECT_EQ(readOut(), "Displaying frame 1 of 9");
    EXPECT_EQ(sim.loop().timers().size(), 1U);
    EXPECT_EQ(delegate.playTimer, sim.loop().timers().front());
    sim.advance(1.0);
    ASSERT_FALSE(isPlaying());
    press();
    EXPECT_EQ(readOut(), "Displaying frame 1 of 9");
    tick();
    EXPECT_EQ(readOut(), "Displaying frame 2 of 9");
}

TEST_F(Player, WithoutFramesTheFacesTurnBackAtOnce) {
    for (const bool hasList : {false, true}) {
        if (hasList) {
            listFrames(0);
            ASSERT_TRUE(delegate.pictureArray.load());
        }
        press();
        const auto calls = sim.takeCalls();
        EXPECT_THAT(calls, Contains("previewPlayButton setImage: play1-s"));
        EXPECT_THAT(calls, Not(Contains(::testing::StartsWith("myDisplay"))));
        EXPECT_EQ(state(), "(null), , slider 0, next 1, play1 play2");
        EXPECT_FALSE(isPlaying());
        EXPECT_THAT(sim.loop().timers(), IsEmpty());
    }
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
    EXPECT_EQ(state(), "/f/6.png, Displaying frame 6 of 6, slider 5, next 5, play1-s play2-s");
    tick();
    EXPECT_EQ(state(), "/f/6.png, Displaying frame 6 of 6, slider 5, next 6, play1-s play2-s");
    tick();
    EXPECT_EQ(state(), "/f/6.png, Displaying frame 6 of 6, slider 5, next 1, play1 play2");
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
    press();
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
    EXPECT_EQ(state(), "(null), Displaying frame 2 of 3, slider 1, next 2, play1-s play2-s");
    tick();
    EXPECT_EQ(shown(), "/f/3.png");
    expectNoMessage();
}

TEST_F(Player, ANegativeIndexCountsAsPastTheEnd) {
    listFrames(3);
    for (const std::int64_t index : {std::int64_t{-1}, INT64_MIN}) {
        press();
        delegate.playing = index;
        tick();
        EXPECT_EQ(state(), "/f/1.png, Displaying frame 1 of 3, slider 0, next 1, play1 play2");
        EXPECT_FALSE(isPlaying());
    }
}

TEST_F(Player, TheFacesAreThoseOfTheAppearanceLastRead) {
    listFrames(3);
    sim.defaults().values.erase("AppleInterfaceStyle"); // Not read here.
    press();
    EXPECT_EQ(faces(), "play1-s play2-s");
    interfaceStyle() = std::nullopt;
    press();
    EXPECT_EQ(faces(), "play2 play1");
    press();
    EXPECT_EQ(faces(), "play2-s play1-s");
    interfaceStyle() = "Dark";
    sim.advance(1.0);
    EXPECT_EQ(faces(), "play1 play2");
}

TEST_F(Player, AChangeOfTheAppearanceWhilePlayingKeepsThePlayingFaces) {
    listFrames(3);
    press();
    delegate.darkModeChanged(nullptr);
    EXPECT_EQ(faces(), "play2-s play1-s");
    EXPECT_TRUE(isPlaying());
    sim.advance(1.0);
    EXPECT_EQ(faces(), "play2 play1");
}

TEST_F(Player, EveryTickTellsWhichFramesComeNextUntilTheEnd) {
    listFrames(3);
    sim.pictures().takeExpected(ImageUse::View);
    press();
    EXPECT_THAT(sim.pictures().takeExpected(ImageUse::View), ElementsAre("/f/2.png"));
    tick();
    EXPECT_THAT(sim.pictures().takeExpected(ImageUse::View), ElementsAre("/f/3.png"));
    tick();
    EXPECT_THAT(sim.pictures().takeExpected(ImageUse::View), ElementsAre("nothing"));
    tick();
    EXPECT_THAT(sim.pictures().takeExpected(ImageUse::View), ElementsAre("end"));
    tick();
    EXPECT_THAT(sim.pictures().takeExpected(ImageUse::View), IsEmpty());
    EXPECT_THAT(sim.pictures().takeExpected(ImageUse::Movie), IsEmpty());
}

TEST_F(Player, StoppingDraggingAndAChangedListEndTheExpectation) {
    listFrames(9);
    press();
    sim.pictures().takeExpected(ImageUse::View);
    slider("photoSlider").drag(5.0);
    sim.nib().send("sliderDisplaying:");
    EXPECT_THAT(sim.pictures().takeExpected(ImageUse::View), ElementsAre("end"));
    tick();
    EXPECT_THAT(sim.pictures().takeExpected(ImageUse::View), ElementsAre("/f/7.png"));
    press();
    EXPECT_THAT(sim.pictures().takeExpected(ImageUse::View), ElementsAre("end"));
    delegate.refreshArray(nullptr);
    EXPECT_THAT(sim.pictures().takeExpected(ImageUse::View), IsEmpty());
    listFrames(12);
    EXPECT_THAT(sim.pictures().takeExpected(ImageUse::View), ElementsAre("end"));
}

} // namespace
} // namespace vistrane
