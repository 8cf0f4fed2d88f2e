#include "core/folder/frame_list.h"

#include <algorithm>
#include <iterator>

#include "tests/support/ControllerTest.h"

namespace vistrane {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

const std::string placeholder = "click to select the output folder";
const std::string listing = "defaultManager contentsOfDirectoryAtPath: /f";

class FrameList : public ControllerTest {
protected:
    void SetUp() override {
        sim.files().addFolder("/f");
        button("outfolderB").currentTitle = "/f";
        slider("photoSlider").setRange(0.0, 0.0);
    }
    void add(std::initializer_list<const char*> names) {
        for (const char* name : names) {
            sim.files().addFile(std::string("/f/") + name);
        }
    }
    std::vector<std::string> refresh() {
        sim.takeCalls();
        delegate.refreshArray(nullptr);
        return sim.takeCalls();
    }
    std::vector<std::string> list() { return *delegate.pictureArray.load(); }
    std::string readOut() { return textField("currentS").text; }
    std::string shown() { return nameOf(display().image.get()); }
};

TEST_F(FrameList, OnlyTheExactExtensionCounts) {
    add({"b.png", "a.PNG", "c.jpg", "d.Png", "e.png.txt", "png", "f.png ", "g.pngx"});
    refresh();
    EXPECT_THAT(list(), ElementsAre("/f/b.png"));
}

TEST_F(FrameList, AnExtensionWithoutANameIsAFrame) {
    add({".png", "1.png", "png."});
    refresh();
    EXPECT_THAT(list(), UnorderedElementsAre("/f/.png", "/f/1.png"));
}

TEST_F(FrameList, HiddenNamesAndFoldersOfThatExtensionAreFrames) {
    add({".hidden.png", "two..png", "a.b.png"});
    sim.files().addFolder("/f/folder.png");
    sim.files().addFile("/f/folder.png/inside.png");
    refresh();
    EXPECT_THAT(list(),
                ElementsAre("/f/.hidden.png", "/f/a.b.png", "/f/folder.png", "/f/two..png"));
}

TEST_F(FrameList, DigitRunsSortByValueAndCaseIsIgnored) {
    add({"frame2.png", "frame10.png", "Frame1.png"});
    refresh();
    EXPECT_THAT(list(), ElementsAre("/f/Frame1.png", "/f/frame2.png", "/f/frame10.png"));
}

TEST_F(FrameList, NamesThatDifferOnlyInCaseKeepOneOrderWhateverTheListingsOrder) {
    add({"a.png", "A.png"});
    refresh();
    const std::vector<std::string> first = list();
    sim.files().remove("/f/a.png");
    add({"a.png"});
    EXPECT_THAT(refresh(), ElementsAre(listing));
    EXPECT_EQ(list(), first);
}

TEST_F(FrameList, StampsSortInTheOrderOfCapture) {
    add({"26-03-07-14-05-10.png", "26-03-07-14-05-09.png", "26-02-28-23-59-59.png",
         "25-12-31-00-00-00.png"});
    refresh();
    EXPECT_THAT(list(), ElementsAre("/f/25-12-31-00-00-00.png", "/f/26-02-28-23-59-59.png",
                                    "/f/26-03-07-14-05-09.png", "/f/26-03-07-14-05-10.png"));
}

TEST_F(FrameList, NamesAreComparedWholeByTheCurrentLocaleWithTheFourOptions) {
    sim.recordGetters();
    EXPECT_EQ(
        frameNameCompare("/f/b.png", "/f/a10.png", *sim.platform().foundation.currentLocale()),
        NSOrderedDescending);
    EXPECT_THAT(
        sim.takeCalls(),
        ElementsAre("currentLocale",
                    "currentLocale compare: /f/b.png with: /f/a10.png options: 833 range: 0,8"));
    add({"b.png", "a.png"});
    EXPECT_THAT(refresh(), AllOf(Contains("currentLocale"),
                                 Contains(::testing::HasSubstr("options: 833 range: 0,8"))));
}

TEST_F(FrameList, TheFirstListingShowsTheNewestFrameStepByStep) {
    add({"1.png", "2.png", "3.png"});
    EXPECT_THAT(refresh(),
                ElementsAre(listing, "imageWithContentsOfFile: /f/3.png",
                            "myDisplay setImage: /f/3.png", "photoSlider setMinValue: 0",
                            "photoSlider setMaxValue: 2", "photoSlider setIntegerValue: 2",
                            "currentS setStringValue: Displaying frame 3 of 3",
                            "myDisplay setNeedsDisplay: YES"));
    EXPECT_EQ(delegate.playing, 2);
}

TEST_F(FrameList, TheReadOutTakesItsNumberFromTheSlider) {
    add({"1.png", "2.png", "3.png"});
    sim.recordGetters();
    const std::vector<std::string> calls = refresh();
    const auto readOutIsSet =
        std::find(calls.begin(), calls.end(), "currentS setStringValue: Displaying frame 3 of 3");
    ASSERT_NE(readOutIsSet, calls.end());
    ASSERT_NE(readOutIsSet, calls.begin());
    EXPECT_EQ(*std::prev(readOutIsSet), "photoSlider intValue");
}

TEST_F(FrameList, AFourthFrameIsShownAndWidensTheSlider) {
    add({"1.png", "2.png", "3.png"});
    refresh();
    add({"4.png"});
    refresh();
    EXPECT_EQ(shown(), "/f/4.png");
    EXPECT_EQ(slider("photoSlider").minimum(), 0.0);
    EXPECT_EQ(slider("photoSlider").maximum(), 3.0);
    EXPECT_EQ(slider("photoSlider").value(), 3.0);
    EXPECT_EQ(readOut(), "Displaying frame 4 of 4");
    EXPECT_EQ(delegate.playing, 3);
}

TEST_F(FrameList, WhenTheLastFrameIsDeletedTheNewLastOneIsShown) {
    add({"1.png", "2.png", "3.png", "4.png"});
    refresh();
    sim.files().remove("/f/4.png");
    refresh();
    EXPECT_EQ(shown(), "/f/3.png");
    EXPECT_EQ(readOut(), "Displaying frame 3 of 3");
    EXPECT_EQ(slider("photoSlider").value(), 2.0);
    EXPECT_EQ(slider("photoSlider").maximum(), 2.0);
    EXPECT_EQ(delegate.playing, 2);
}

TEST_F(FrameList, WhenAnotherFrameIsDeletedTheLastOneIsShown) {
    add({"1.png", "2.png", "3.png", "4.png"});
    refresh();
    slider("photoSlider").drag(0.0);
    sim.files().remove("/f/2.png");
    EXPECT_THAT(refresh(), Contains("myDisplay setImage: /f/4.png"));
    EXPECT_EQ(shown(), "/f/4.png");
    EXPECT_EQ(readOut(), "Displaying frame 3 of 3");
    EXPECT_EQ(slider("photoSlider").maximum(), 2.0);
    EXPECT_EQ(delegate.playing, 2);
}

TEST_F(FrameList, DeletingAllFramesEmptiesTheListAndLeavesTheRest) {
    add({"1.png", "2.png"});
    refresh();
    sim.files().remove("/f/1.png");
    sim.files().remove("/f/2.png");
    EXPECT_THAT(refresh(), ElementsAre(listing));
    EXPECT_THAT(list(), IsEmpty());
    EXPECT_EQ(shown(), "/f/2.png");
    EXPECT_EQ(readOut(), "Displaying frame 2 of 2");
    EXPECT_EQ(slider("photoSlider").maximum(), 1.0);
    EXPECT_EQ(delegate.playing, 1);
}

TEST_F(FrameList, AnEmptyFolderAtTheFirstListingStoresAnEmptyList) {
    EXPECT_THAT(refresh(), ElementsAre(listing));
    ASSERT_TRUE(delegate.pictureArray.load());
    EXPECT_THAT(list(), IsEmpty());
}

TEST_F(FrameList, AnUnchangedFolderRedrawsNothingAndKeepsTheListItself) {
    add({"1.png", "2.png"});
    refresh();
    const auto before = delegate.pictureArray.load();
    slider("photoSlider").drag(0.0);
    delegate.playing = 0;
    EXPECT_THAT(refresh(), ElementsAre(listing));
    EXPECT_EQ(delegate.pictureArray.load(), before);
    EXPECT_EQ(delegate.playing, 0);
}

TEST_F(FrameList, AChangeReplacesTheListAndLeavesTheOldOneToItsReaders) {
    add({"1.png"});
    refresh();
    const auto before = delegate.pictureArray.load();
    add({"2.png"});
    refresh();
    EXPECT_THAT(*before, ElementsAre("/f/1.png"));
    EXPECT_THAT(list(), ElementsAre("/f/1.png", "/f/2.png"));
}

TEST_F(FrameList, AnExchangeOfOneFrameForAnotherIsAChange) {
    add({"1.png", "2.png"});
    refresh();
    sim.files().remove("/f/1.png");
    add({"3.png"});
    refresh();
    EXPECT_THAT(list(), ElementsAre("/f/2.png", "/f/3.png"));
    EXPECT_EQ(shown(), "/f/3.png");
}

TEST_F(FrameList, AFolderThatCannotBeListedLeavesEverythingUntilItCan) {
    add({"1.png", "2.png"});
    refresh();
    sim.files().failListing("/f", true);
    add({"3.png"});
    EXPECT_THAT(refresh(), ElementsAre(listing));
    EXPECT_THAT(list(), ElementsAre("/f/1.png", "/f/2.png"));
    EXPECT_THAT(sim.alerts().shown(), IsEmpty());
    sim.files().failListing("/f", false);
    refresh();
    EXPECT_EQ(readOut(), "Displaying frame 3 of 3");
}

TEST_F(FrameList, AFolderThatCannotBeListedAtFirstLeavesNoList) {
    sim.files().remove("/f");
    EXPECT_THAT(refresh(), ElementsAre(listing));
    EXPECT_EQ(delegate.pictureArray.load(), nullptr);
}

TEST_F(FrameList, WithoutAFolderNothingIsListedAndTheListStays) {
    add({"1.png"});
    refresh();
    button("outfolderB").currentTitle = placeholder;
    EXPECT_THAT(refresh(), IsEmpty());
    EXPECT_THAT(list(), ElementsAre("/f/1.png"));
}

TEST_F(FrameList, OnlyTheExactPlaceholderMeansNoFolder) {
    for (const std::string& title : {placeholder + " ", std::string("Click to select the output "
                                                                    "folder")}) {
        button("outfolderB").currentTitle = title;
        EXPECT_THAT(refresh(), ElementsAre("defaultManager contentsOfDirectoryAtPath: " + title));
    }
}

TEST_F(FrameList, AFrameThatDoesNotLoadEmptiesTheViewAndCountsAllTheSame) {
    add({"1.png"});
    sim.files().addDamagedPicture("/f/2.png");
    EXPECT_THAT(refresh(), Contains("myDisplay setImage: (null)"));
    EXPECT_EQ(readOut(), "Displaying frame 2 of 2");
    EXPECT_EQ(slider("photoSlider").value(), 1.0);
}

TEST_F(FrameList, NamesAreTakenByteForByte) {
    add({"a%@%d.png", "b\xFF\xFE.png", "c d.png"});
    refresh();
    EXPECT_THAT(list(), ElementsAre("/f/a%@%d.png", "/f/b\xFF\xFE.png", "/f/c d.png"));
}

class Monitor : public FrameList {};

TEST_F(Monitor, StartsARepeatingTimerForAFolder) {
    delegate.startMonitoringFolder(nullptr);
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("scheduledTimerWithTimeInterval: 0.1 repeats: YES -> timer1"));
    EXPECT_EQ(nameOf(delegate.arrayTimer.get()), "timer1");
}

TEST_F(Monitor, StartsNothingWithoutAFolder) {
    button("outfolderB").currentTitle = placeholder;
    delegate.startMonitoringFolder(nullptr);
    EXPECT_THAT(sim.takeCalls(), IsEmpty());
    EXPECT_EQ(delegate.arrayTimer, nullptr);
}

TEST_F(Monitor, ListsTenTimesASecondAndNotBefore) {
    delegate.startMonitoringFolder(nullptr);
    sim.takeCalls();
    sim.advance(0.0999);
    EXPECT_THAT(sim.calls(), IsEmpty());
    sim.advance(0.0001);
    EXPECT_THAT(sim.calls(), ElementsAre(listing));
    sim.advance(0.9);
    EXPECT_THAT(sim.takeCalls(), ::testing::AllOf(::testing::SizeIs(10), Each(listing)));
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

TEST_F(Monitor, TheTimersCallbackRefreshesOnce) {
    add({"1.png"});
    delegate.startArrayTimer(nullptr);
    EXPECT_THAT(list(), ElementsAre("/f/1.png"));
    EXPECT_THAT(sim.calls(), Contains(listing).Times(1));
}

TEST_F(Monitor, ANewFrameIsShownWithinATenthOfASecond) {
    delegate.startMonitoringFolder(nullptr);
    sim.advance(0.15);
    add({"1.png"});
    sim.advance(0.05);
    EXPECT_EQ(shown(), "/f/1.png");
}

TEST_F(Monitor, AFolderChosenAfterALaunchWithoutOneIsNotListed) {
    button("outfolderB").currentTitle = "";
    launch();
    add({"1.png"});
    sim.openPanels().choose("/f");
    delegate.outputFolder(nullptr);
    ASSERT_EQ(folderTitle(), "/f");
    sim.takeCalls();
    sim.advance(10.0);
    EXPECT_THAT(sim.calls(), IsEmpty());
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
    sim.openPanels().choose("/g");
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
    EXPECT_THAT(sim.calls(), Not(Contains(StartsWith("defaultManager"))));
    EXPECT_THAT(list(), ElementsAre("/f/1.png"));
    EXPECT_TRUE(delegate.arrayTimer->isValid());
}

TEST_F(Monitor, TheTicksMissedWhileAPanelIsUpMergeIntoOne) {
    saveFolder();
    launch();
    sim.openPanels().stayUp(5.0);
    delegate.outputFolder(nullptr);
    button("outfolderB").currentTitle = "/f";
    sim.takeCalls();
    sim.advance(0.0);
    EXPECT_THAT(sim.calls(), ElementsAre(listing));
}

} // namespace
} // namespace vistrane
