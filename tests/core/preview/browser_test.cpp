#include "tests/support/PreviewTest.h"

namespace vistrane {
namespace {

class Browser : public PreviewTest {
protected:
    void slideTo(double frame) {
        slider("photoSlider").drag(frame);
        sim.nib().send("sliderDisplaying:");
    }
};

TEST_F(Browser, TheFrameNearestToTheSliderIsShown) {
    listFrames(3);
    const struct {
        double slider;
        std::int64_t playing;
        std::string frame;
    } rows[] = {{0.0, 0, "1"}, {1.0, 1, "2"}, {1.4, 1, "2"}, {1.6, 2, "3"}, {2.0, 2, "3"}};
    for (const auto& row : rows) {
        slideTo(row.slider);
        EXPECT_EQ(shown(), "/f/" + row.frame + ".png");
        EXPECT_EQ(readOut(), "Displaying frame " + row.frame + " of 3");
        EXPECT_EQ(delegate.playing, row.playing);
    }
}

TEST_F(Browser, WithoutFramesOnlyTheReadOutChanges) {
    delegate.playing = 7;
    slideTo(0.0);
    EXPECT_EQ(readOut(), "Displaying frame 1 of 0");
    EXPECT_EQ(delegate.playing, 7);
    listFrames(2);
    sim.files().remove("/f/1.png");
    sim.files().remove("/f/2.png");
    delegate.refreshArray(nullptr);
    slideTo(0.0);
    EXPECT_EQ(readOut(), "Displaying frame 1 of 0");
    EXPECT_EQ(shown(), "/f/2.png");
    EXPECT_EQ(delegate.playing, 1);
}

TEST_F(Browser, AFrameThatIsDamagedGoneOrBeyondTheListEmptiesTheDisplay) {
    sim.files().addDamagedPicture("/f/2.png");
    listFrames(1);
    sim.files().addFile("/f/3.png");
    delegate.refreshArray(nullptr);
    sim.files().remove("/f/1.png");
    slider("photoSlider").setRange(0.0, 9.0);
    for (const std::int64_t frame : {1, 0, 5}) {
        slideTo(2.0);
        ASSERT_EQ(shown(), "/f/3.png");
        slideTo(static_cast<double>(frame));
        EXPECT_EQ(display().image, nullptr);
        EXPECT_EQ(readOut(), "Displaying frame " + std::to_string(frame + 1) + " of 3");
        EXPECT_EQ(delegate.playing, frame);
    }
    expectNoMessage();
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
