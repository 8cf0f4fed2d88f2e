#include "tests/support/ControllerTest.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class FrameList : public ControllerTest {
protected:
    void SetUp() override {
        sim.files().addFolder("/f");
        folderTitle() = "/f";
        slider("photoSlider").setRange(0.0, 0.0);
    }
    void add(std::initializer_list<const char*> names) {
        for (const char* name : names) {
            sim.files().addFile(std::string("/f/") + name);
        }
    }
    void refresh() { delegate.refreshArray(nullptr); }
    /// Lists the folder with these files.
    std::vector<std::string> listOf(std::initializer_list<const char*> names) {
        add(names);
        refresh();
        return list();
    }
    std::vector<std::string> list() { return *delegate.pictureArray.load(); }
    std::vector<std::string> listings() {
        return takeProcedure({"scheduledTimer", "myDisplay", "photoSlider", "currentS", "image"});
    }
    /// All that the interface shows of the list.
    std::string state() {
        const SimSlider& frames = slider("photoSlider");
        return shown() + ", " + readOut() + ", slider " + text(frames.value.doubleValue()) +
               " of " + text(frames.value.minimum()) + "-" + text(frames.value.maximum()) +
               ", playing " + std::to_string(delegate.playing);
    }
};

TEST_F(FrameList, OnlyTheExactExtensionCounts) {
    EXPECT_THAT(listOf({"b.png", "a.PNG", "c.jpg", "d.Png", "e.png.txt", "png", "f.png ", "g.pngx",
                        "png.", ".png"}),
                ElementsAre("/f/b.png"));
}

TEST_F(FrameList, HiddenNamesAndFoldersOfThatExtensionAreFrames) {
    sim.files().addFolder("/f/folder.png");
    sim.files().addFile("/f/folder.png/inside.png");
    EXPECT_THAT(listOf({".hidden.png", "two..png", "a.b.png"}),
                ElementsAre("/f/.hidden.png", "/f/a.b.png", "/f/folder.png", "/f/two..png"));
}

TEST_F(FrameList, DigitRunsSortByValueAndCaseIsIgnored) {
    EXPECT_THAT(listOf({"frame2.png", "frame10.png", "Frame1.png"}),
                ElementsAre("/f/Frame1.png", "/f/frame2.png", "/f/frame10.png"));
}

TEST_F(FrameList, NamesThatDifferOnlyInCaseKeepOneOrderWhateverTheListingsOrder) {
    listOf({"a.png", "A.png"});
    const auto first = delegate.pictureArray.load();
    sim.files().remove("/f/a.png");
    listOf({"a.png"});
    EXPECT_EQ(delegate.pictureArray.load(), first);
}

TEST_F(FrameList, TheFirstListingShowsTheNewestFrameStepByStep) {
    listOf({"1.png", "2.png", "3.png"});
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("defaultManager contentsOfDirectoryAtPath: /f",
                            "imageWithContentsOfFile: /f/3.png", "myDisplay setImage: /f/3.png",
                            "photoSlider setMinValue: 0", "photoSlider setMaxValue: 2",
                            "photoSlider setIntegerValue: 2",
                            "currentS setStringValue: Displaying frame 3 of 3",
                            "myDisplay setNeedsDisplay: YES"));
    EXPECT_EQ(state(), "/f/3.png, Displaying frame 3 of 3, slider 2 of 0-2, playing 2");
}

TEST_F(FrameList, EveryChangeShowsTheLastFrame) {
    slider("photoSlider").setRange(-5.0, -1.0);
    listOf({"1.png", "2.png", "3.png"});
    listOf({"4.png"});
    EXPECT_EQ(state(), "/f/4.png, Displaying frame 4 of 4, slider 3 of 0-3, playing 3");
    slider("photoSlider").drag(0.0);
    sim.files().remove("/f/2.png");
    display().image = nullptr;
    refresh();
    EXPECT_EQ(state(), "/f/4.png, Displaying frame 3 of 3, slider 2 of 0-2, playing 2");
    sim.files().remove("/f/4.png");
    refresh();
    EXPECT_EQ(state(), "/f/3.png, Displaying frame 2 of 2, slider 1 of 0-1, playing 1");
    // One frame for another: the same number of frames.
    sim.files().remove("/f/1.png");
    EXPECT_THAT(listOf({"5.png"}), ElementsAre("/f/3.png", "/f/5.png"));
    EXPECT_EQ(state(), "/f/5.png, Displaying frame 2 of 2, slider 1 of 0-1, playing 1");
}

TEST_F(FrameList, TheReadOutTakesItsNumberFromTheSlider) {
    class Stuck final : public NSSlider {
        void setMinValue(double) override {}
        void setMaxValue(double) override {}
        std::int32_t intValue() const override { return 6; }
        NSInteger integerValue() const override { return 6; }
        float floatValue() const override { return 6.0F; }
        void setIntegerValue(NSInteger) override {}
    };
    delegate.photoSlider = std::make_shared<Stuck>();
    listOf({"1.png", "2.png", "3.png"});
    EXPECT_EQ(readOut(), "Displaying frame 7 of 3");
}

TEST_F(FrameList, DeletingAllFramesEmptiesTheListAndLeavesTheRest) {
    listOf({"1.png", "2.png"});
    sim.files().remove("/f/1.png");
    sim.files().remove("/f/2.png");
    refresh();
    EXPECT_THAT(list(), IsEmpty());
    EXPECT_EQ(state(), "/f/2.png, Displaying frame 2 of 2, slider 1 of 0-1, playing 1");
}

TEST_F(FrameList, AnEmptyFolderAtTheFirstListingStoresAnEmptyList) {
    refresh();
    ASSERT_TRUE(delegate.pictureArray.load());
    EXPECT_THAT(list(), IsEmpty());
    EXPECT_EQ(state(), "(null), , slider 0 of 0-0, playing 0");
}

TEST_F(FrameList, AnUnchangedFolderRedrawsNothingAndKeepsTheListItself) {
    listOf({"1.png", "2.png"});
    const auto before = delegate.pictureArray.load();
    slider("photoSlider").drag(0.0);
    delegate.playing = 0;
    sim.takeCalls();
    refresh();
    EXPECT_THAT(sim.takeCalls(), ElementsAre("defaultManager contentsOfDirectoryAtPath: /f"));
    EXPECT_EQ(delegate.pictureArray.load(), before);
    EXPECT_EQ(delegate.playing, 0);
}

TEST_F(FrameList, AFolderThatCannotBeListedLeavesEverythingUntilItCan) {
    sim.files().remove("/f");
    refresh();
    EXPECT_EQ(delegate.pictureArray.load(), nullptr);
    sim.files().addFolder("/f");
    listOf({"1.png", "2.png"});
    sim.files().remove("/f");
    refresh();
    EXPECT_THAT(list(), ElementsAre("/f/1.png", "/f/2.png"));
    EXPECT_EQ(state(), "/f/2.png, Displaying frame 2 of 2, slider 1 of 0-1, playing 1");
    sim.files().addFolder("/f");
    listOf({"1.png", "2.png", "3.png"});
    EXPECT_EQ(readOut(), "Displaying frame 3 of 3");
    expectNoMessage();
}

TEST_F(FrameList, OnlyTheExactPlaceholderMeansNoFolder) {
    listOf({"1.png"});
    sim.takeCalls();
    folderTitle() = placeholder;
    refresh();
    EXPECT_THAT(sim.takeCalls(), IsEmpty());
    EXPECT_THAT(list(), ElementsAre("/f/1.png"));
    for (const std::string& title :
         {placeholder + std::string(" "), std::string("Click to select the output folder")}) {
        folderTitle() = title;
        refresh();
        EXPECT_THAT(sim.takeCalls(),
                    ElementsAre("defaultManager contentsOfDirectoryAtPath: " + title));
    }
}

TEST_F(FrameList, AFrameThatDoesNotLoadEmptiesTheViewAndCountsAllTheSame) {
    listOf({"1.png"});
    sim.files().addDamagedPicture("/f/2.png");
    refresh();
    EXPECT_EQ(state(), "(null), Displaying frame 2 of 2, slider 1 of 0-1, playing 1");
}

TEST_F(FrameList, NamesAreTakenByteForByte) {
    EXPECT_THAT(listOf({"a%@%d.png", "b\xFF\xFE.png", "c d.png"}),
                ElementsAre("/f/a%@%d.png", "/f/b\xFF\xFE.png", "/f/c d.png"));
}

class Monitor : public FrameList {};

TEST_F(Monitor, ListsTenTimesASecondAndNotBefore) {
    delegate.startMonitoringFolder(nullptr);
    sim.advance(0.0999);
    EXPECT_THAT(listings(), IsEmpty());
    sim.advance(0.0001);
    EXPECT_EQ(listings().size(), 1U);
    sim.advance(0.9);
    EXPECT_EQ(listings().size(), 9U);
    EXPECT_TRUE(delegate.arrayTimer->isValid());
}

TEST_F(Monitor, StartsNothingWithoutAFolder) {
    folderTitle() = placeholder;
    delegate.startMonitoringFolder(nullptr);
    EXPECT_THAT(sim.loop().timers(), IsEmpty());
    EXPECT_EQ(delegate.arrayTimer, nullptr);
}

TEST_F(Monitor, ANewFrameMovesAPlayingPreviewToTheLastOne) {
    add({"1.png", "2.png", "3.png"});
    refresh();
    delegate.playTimer = sim.platform().foundation.scheduledTimerWithTimeInterval(
        1.0, [](NSTimer&) {}, true);
    delegate.playing = 0;
    add({"4.png"});
    refresh();
    EXPECT_EQ(delegate.playing, 3);
    EXPECT_TRUE(delegate.playTimer->isValid());
}

TEST_F(Monitor, AFolderChosenAfterALaunchWithoutOneIsNotListed) {
    launch();
    add({"1.png"});
    sim.alerts().choose("/f");
    delegate.outputFolder(nullptr);
    ASSERT_EQ(folderTitle(), "/f");
    sim.advance(10.0);
    EXPECT_EQ(delegate.pictureArray.load(), nullptr);
}

TEST_F(Monitor, AFolderChosenLaterIsListedOnTheNextTickWhenOneWasThereAtLaunch) {
    saveFolder();
    add({"1.png"});
    launch();
    sim.advance(0.1);
    ASSERT_THAT(list(), ElementsAre("/f/1.png"));
    sim.files().addFolder("/g");
    sim.files().addFile("/g/2.png");
    sim.alerts().choose("/g");
    delegate.outputFolder(nullptr);
    EXPECT_THAT(list(), ElementsAre("/f/1.png"));
    sim.advance(0.1);
    EXPECT_THAT(list(), ElementsAre("/g/2.png"));
}

TEST_F(Monitor, TicksWithoutAFolderKeepTheListAndTheTimer) {
    saveFolder();
    add({"1.png"});
    launch();
    sim.advance(0.1);
    delegate.outputFolder(nullptr);
    ASSERT_EQ(folderTitle(), placeholder);
    sim.takeCalls();
    sim.advance(1.0);
    EXPECT_THAT(sim.calls(), IsEmpty());
    EXPECT_THAT(list(), ElementsAre("/f/1.png"));
    EXPECT_TRUE(delegate.arrayTimer->isValid());
}

} // namespace
} // namespace vistrane
