#include "tests/support/PreviewTest.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;

class Browser : public PreviewTest {
protected:
    void slideTo(double frame) {
        slider("photoSlider").drag(frame);
        sim.nib().send("sliderDisplaying:");
    }
};

TEST_F(Browser, TheFrameUnderTheSliderIsShown) {
    listFrames(3);
    slideTo(1.0);
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("imageWithContentsOfFile: /f/2.png", "myDisplay setImage: /f/2.png",
                            "currentS setStringValue: Displaying frame 2 of 3"));
    EXPECT_EQ(delegate.playing, 1);
}

TEST_F(Browser, BothEndsOfTheSliderAreFrames) {
    listFrames(3);
    slideTo(0.0);
    EXPECT_EQ(shown(), "/f/1.png");
    EXPECT_EQ(readOut(), "Displaying frame 1 of 3");
    slideTo(2.0);
    EXPECT_EQ(shown(), "/f/3.png");
    EXPECT_EQ(readOut(), "Displaying frame 3 of 3");
}

TEST_F(Browser, ASliderBetweenTwoFramesShowsTheNearer) {
    listFrames(3);
    slideTo(1.4);
    EXPECT_EQ(shown(), "/f/2.png");
    slideTo(1.6);
    EXPECT_EQ(shown(), "/f/3.png");
    EXPECT_EQ(readOut(), "Displaying frame 3 of 3");
}

TEST_F(Browser, WithoutAListOnlyTheReadOutChanges) {
    delegate.playing = 7;
    delegate.sliderDisplaying(nullptr);
    EXPECT_THAT(sim.takeCalls(), ElementsAre("currentS setStringValue: Displaying frame 1 of 0"));
    EXPECT_EQ(delegate.playing, 7);
}

TEST_F(Browser, WithAnEmptyListOnlyTheReadOutChanges) {
    listFrames(2);
    sim.files().remove("/f/1.png");
    sim.files().remove("/f/2.png");
    delegate.refreshArray(nullptr);
    sim.takeCalls();
    delegate.sliderDisplaying(nullptr);
    EXPECT_THAT(sim.takeCalls(), ElementsAre("currentS setStringValue: Displaying frame 2 of 0"));
    EXPECT_EQ(shown(), "/f/2.png");
}

TEST_F(Browser, AFrameThatCannotBeReadEmptiesTheDisplay) {
    sim.files().addDamagedPicture("/f/2.png");
    sim.files().addFile("/f/1.png");
    delegate.refreshArray(nullptr);
    slideTo(1.0);
    EXPECT_EQ(display().image, nullptr);
    EXPECT_EQ(readOut(), "Displaying frame 2 of 2");
    EXPECT_THAT(sim.alerts().shown(), ::testing::IsEmpty());
}

TEST_F(Browser, AFrameThatWentAwayEmptiesTheDisplay) {
    listFrames(2);
    sim.files().remove("/f/1.png");
    slideTo(0.0);
    EXPECT_EQ(display().image, nullptr);
    EXPECT_EQ(readOut(), "Displaying frame 1 of 2");
}

TEST_F(Browser, ASliderBeyondTheListEmptiesTheDisplay) {
    listFrames(2);
    slider("photoSlider").setRange(0.0, 9.0);
    slideTo(5.0);
    EXPECT_EQ(display().image, nullptr);
    EXPECT_EQ(delegate.playing, 5);
}

TEST_F(Browser, SlidingDoesNotStopAPlaybackWhichGoesOnFromThere) {
    listFrames(10);
    delegate.playPictures(nullptr);
    slideTo(1.0);
    EXPECT_TRUE(isPlaying());
    EXPECT_EQ(readOut(), "Displaying frame 2 of 10");
    sim.advance(0.04);
    EXPECT_EQ(readOut(), "Displaying frame 2 of 10");
    sim.advance(0.04);
    EXPECT_EQ(readOut(), "Displaying frame 3 of 10");
    sim.advance(0.04);
    EXPECT_EQ(readOut(), "Displaying frame 4 of 10");
}

} // namespace
} // namespace vistrane
