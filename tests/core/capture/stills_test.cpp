#include "tests/support/ControllerTest.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// 2026-03-07 14:05:09 UTC, when the sim begins.
constexpr double march7 = 1772892309.0;

class Stills : public ControllerTest {
protected:
    void SetUp() override {
        launchWithCamera();
        sim.files().addFolder("/f");
        folderTitle() = "/f";
        sim.setDate(march7);
    }
    /// Requests a still and delivers it.
    void take(const std::string& contents = "picture") {
        delegate.addPhotoFrame();
        sim.takeCalls();
        sim.cameras().deliverPhoto(contents);
    }
    std::vector<std::string> files() {
        return sim.platform().foundation.defaultManager().contentsOfDirectoryAtPath("/f").value();
    }
};

TEST_F(Stills, ARequestUsesACopyOfTheTemplate) {
    delegate.addPhotoFrame();
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("photoSettingsFromPhotoSettings: photoSettings1 -> photoSettings2",
                            "photoOutput1 capturePhotoWithSettings: photoSettings2"));
    EXPECT_EQ(nameOf(delegate.photoOutputSettings.get()), "photoSettings1");
}

TEST_F(Stills, SeveralRequestsMayBeOutstandingEachWithSettingsOfItsOwn) {
    delegate.addPhotoFrame();
    delegate.addFrameClick(nullptr);
    delegate.addPhotoFrame();
    EXPECT_EQ(button("oneB").currentState, 1);
    EXPECT_THAT(sim.cameras().pendingStills(),
                ElementsAre("photoSettings2", "photoSettings3", "photoSettings4"));
}

TEST_F(Stills, OnlyAClickAsksWhetherTheSessionRuns) {
    sim.cameras().session()->runs = false;
    delegate.addFrameClick(nullptr);
    EXPECT_EQ(button("oneB").currentState, 1);
    EXPECT_THAT(sim.cameras().pendingStills(), IsEmpty());
    expectNoMessage();
    delegate.addPhotoFrame();
    EXPECT_EQ(sim.cameras().pendingStills().size(), 1U);
}

TEST_F(Stills, APictureIsShownNamedEncodedAndWrittenInPlace) {
    take();
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("imageWithData: picture", "myDisplay setImage: picture", "date",
                            "dateFormatter setDateFormat: YY-MM-dd-HH-mm-ss",
                            "dateFormatter stringFromDate: 1772892309",
                            "picture TIFFRepresentation", "imageRepWithData: TIFF(picture)",
                            "TIFF(picture) representationUsingType: 4 NSImageCompressionFactor: 1",
                            "PNG(TIFF(picture)) writeToFile: /f/26-03-07-14-05-09.png "
                            "atomically: NO"));
    EXPECT_EQ(sim.files().contents("/f/26-03-07-14-05-09.png"), "PNG(TIFF(picture))");
    EXPECT_THAT(sim.alerts().shown(), IsEmpty());
}

TEST_F(Stills, TheNameCarriesTheMomentOfSavingNotThatOfTheRequest) {
    delegate.addPhotoFrame();
    sim.advance(51.0);
    sim.cameras().deliverPhoto("picture");
    EXPECT_THAT(files(), ElementsAre("26-03-07-14-06-00.png"));
}

TEST_F(Stills, ADayInDecemberOfTheNextYearsFirstWeekCarriesThatYear) {
    sim.setDate(newYear2026 - 2 * day);
    take();
    EXPECT_THAT(files(), ElementsAre("26-12-30-00-00-00.png"));
}

TEST_F(Stills, TheStampOfTheUsersLocaleIsTakenAsItIs) {
    sim.dateAnswer() = "69-03-07-14-05-09";
    take();
    EXPECT_THAT(files(), ElementsAre("69-03-07-14-05-09.png"));
}

TEST_F(Stills, TheFolderIsTakenVerbatimFromTheTitle) {
    sim.files().addFolder("/a b/%@%d");
    folderTitle() = "/a b/%@%d";
    take();
    EXPECT_TRUE(sim.files().exists("/a b/%@%d/26-03-07-14-05-09.png"));
}

TEST_F(Stills, TwoPicturesOfOneSecondShareANameAndTheLaterOneStays) {
    take("first");
    take("second");
    EXPECT_THAT(files(), ElementsAre("26-03-07-14-05-09.png"));
    EXPECT_EQ(sim.files().contents("/f/26-03-07-14-05-09.png"), "PNG(TIFF(second))");
}

TEST_F(Stills, AClockThatIsSetBackReplacesTheFilesOfTheRepeatedTime) {
    take("first");
    sim.advance(3600.0);
    sim.setDate(march7);
    take("second");
    EXPECT_EQ(sim.files().contents("/f/26-03-07-14-05-09.png"), "PNG(TIFF(second))");
}

TEST_F(Stills, AnErrorIsLoggedAndNothingIsShownOrSaved) {
    take("first");
    delegate.addPhotoFrame();
    sim.advance(1.0);
    sim.takeCalls();
    sim.cameras().deliverError({"Cameras", 3, "The camera has gone."});
    EXPECT_THAT(sim.takeCalls(), ElementsAre("NSLog: photoOutput error: The camera has gone."));
    EXPECT_THAT(sim.alerts().shown(), IsEmpty());
    EXPECT_EQ(files().size(), 1U);
}

TEST_F(Stills, AWriteThatFailsSaysNothingAndIsNotRepeated) {
    sim.files().addFolder("/f/26-03-07-14-05-09.png");
    take();
    EXPECT_EQ(shown(), "picture");
    sim.files().remove("/f/26-03-07-14-05-09.png");
    sim.advance(10.0);
    EXPECT_THAT(files(), IsEmpty());
    sim.files().remove("/f");
    take("other");
    EXPECT_EQ(shown(), "other");
    expectNoMessage();
}

TEST_F(Stills, WithoutAFolderThePictureIsShownAndLostWithAnAlert) {
    folderTitle() = placeholder;
    sim.alerts().whileUp([&](const SimShownAlert&) { EXPECT_EQ(shown(), "picture"); });
    take();
    EXPECT_EQ(shown(), "picture");
    ASSERT_EQ(sim.alerts().shown().size(), 1U);
    expectStandardAlert(sim.alerts().shown().at(0), "Please select the output folder",
                        "Nice shot, but unfortunately this frame of the picture has NOT been "
                        "saved. Please select the output folder first.\n");
    EXPECT_TRUE(sim.alerts().shown().at(0).onMainThread);
    EXPECT_THAT(files(), IsEmpty());
    // Every picture has an alert of its own.
    take();
    EXPECT_EQ(sim.alerts().shown().size(), 2U);
}

TEST_F(Stills, AFolderChosenBeforeThePictureArrivesIsUsed) {
    folderTitle() = placeholder;
    delegate.addPhotoFrame();
    folderTitle() = "/f";
    sim.cameras().deliverPhoto("picture");
    EXPECT_EQ(files().size(), 1U);
}

TEST_F(Stills, APictureThatCannotBeReadEmptiesTheDisplayAndIsNotSaved) {
    take("damaged");
    EXPECT_EQ(display().image, nullptr);
    EXPECT_THAT(files(), IsEmpty());
    delegate.addPhotoFrame();
    sim.cameras().deliverPhoto(std::nullopt);
    EXPECT_EQ(display().image, nullptr);
    EXPECT_THAT(files(), IsEmpty());
    EXPECT_THAT(sim.alerts().shown(), IsEmpty());
}

TEST_F(Stills, ATickReachesTheFolderAndTheFrameList) {
    saveFolder();
    delegate.checkUserFolder(nullptr);
    delegate.startMonitoringFolder(nullptr);
    setInterval("0", "0", "5");
    delegate.startRunning(nullptr);
    sim.cameras().deliverPhoto("first");
    sim.advance(5.0);
    sim.cameras().deliverPhoto("second");
    sim.advance(0.1);
    EXPECT_THAT(*delegate.pictureArray.load(),
                ElementsAre("/f/26-03-07-14-05-09.png", "/f/26-03-07-14-05-14.png"));
    EXPECT_EQ(readOut(), "Displaying frame 2 of 2");
}

} // namespace
} // namespace vistrane
