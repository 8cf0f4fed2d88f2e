#include "tests/support/ControllerTest.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// 2026-03-07 14:05:09 UTC, when the sim begins.
constexpr double march7 = 1772892309.0;
constexpr double newYear2026 = 1767225600.0;
constexpr double day = 86400.0;

class Stills : public ControllerTest {
protected:
    void SetUp() override {
        launchWithCamera();
        sim.files().addFolder("/f");
        button("outfolderB").currentTitle = "/f";
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
    EXPECT_THAT(sim.cameras().pendingStills(),
                ElementsAre("photoSettings2", "photoSettings3", "photoSettings4"));
}

TEST_F(Stills, AClickWithARunningSessionAsksForOneStill) {
    delegate.addFrameClick(nullptr);
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("oneB setState: 1", "session1 isRunning",
                            "photoSettingsFromPhotoSettings: photoSettings1 -> photoSettings2",
                            "photoOutput1 capturePhotoWithSettings: photoSettings2"));
}

TEST_F(Stills, AClickWithoutARunningSessionSetsTheStateOnly) {
    sim.cameras().session()->runs = false;
    delegate.addFrameClick(nullptr);
    EXPECT_THAT(sim.takeCalls(), ElementsAre("oneB setState: 1", "session1 isRunning"));
    EXPECT_THAT(sim.alerts().shown(), IsEmpty());
}

TEST_F(Stills, ARequestItselfDoesNotAskWhetherTheSessionRuns) {
    sim.cameras().session()->runs = false;
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

TEST_F(Stills, TheNameHasTwentyOneCharacters) {
    take();
    ASSERT_EQ(files().size(), 1U);
    EXPECT_EQ(files().at(0).size(), 21U);
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

TEST_F(Stills, ADayInJanuaryOfTheOldYearsLastWeekCarriesThatYear) {
    sim.dateRules().weeks = SimWeekRule::iso8601();
    sim.setDate(newYear2026 + 365 * day);
    take();
    EXPECT_THAT(files(), ElementsAre("26-01-01-00-00-00.png"));
}

TEST_F(Stills, TheStampOfTheUsersLocaleIsTakenAsItIs) {
    sim.dateRules().fixedAnswer = "69-03-07-14-05-09";
    take();
    EXPECT_THAT(files(), ElementsAre("69-03-07-14-05-09.png"));
}

TEST_F(Stills, TheFolderIsTakenVerbatimFromTheTitle) {
    sim.files().addFolder("/a b/%@%d");
    button("outfolderB").currentTitle = "/a b/%@%d";
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
    delegate.addPhotoFrame();
    sim.takeCalls();
    sim.cameras().deliverError({"Cameras", 3, "The camera has gone."});
    EXPECT_THAT(sim.takeCalls(), ElementsAre("NSLog: photoOutput error: The camera has gone."));
    EXPECT_THAT(sim.alerts().shown(), IsEmpty());
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(Stills, AWriteThatFailsSaysNothingAndIsNotRepeated) {
    sim.files().failWrites(true);
    take();
    EXPECT_EQ(sim.takeCalls().back(),
              "PNG(TIFF(picture)) writeToFile: /f/26-03-07-14-05-09.png atomically: NO");
    EXPECT_THAT(sim.alerts().shown(), IsEmpty());
    sim.files().failWrites(false);
    sim.advance(10.0);
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(Stills, AFolderThatIsMissingSaysNothing) {
    sim.files().remove("/f");
    take();
    EXPECT_EQ(nameOf(display().image.get()), "picture");
    EXPECT_THAT(sim.alerts().shown(), IsEmpty());
    EXPECT_THAT(sim.logLines(), IsEmpty());
}

TEST_F(Stills, WithoutAFolderThePictureIsShownAndLostWithAnAlert) {
    button("outfolderB").currentTitle = "click to select the output folder";
    sim.alerts().whileUp(
        [&](const SimShownAlert&) { EXPECT_EQ(nameOf(display().image.get()), "picture"); });
    delegate.addPhotoFrame();
    sim.takeCalls();
    sim.cameras().deliverPhoto("picture");
    EXPECT_THAT(takeProcedure(), ElementsAre("imageWithData: picture",
                                             "myDisplay setImage: picture", "alert1 runModal"));
    ASSERT_EQ(sim.alerts().shown().size(), 1U);
    expectStandardAlert(sim.alerts().shown().at(0), "Please select the output folder",
                        "Nice shot, but unfortunately this frame of the picture has NOT been "
                        "saved. Please select the output folder first.\n");
    EXPECT_TRUE(sim.alerts().shown().at(0).onMainThread);
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(Stills, WithoutAFolderEveryPictureGetsAnAlertOfItsOwn) {
    button("outfolderB").currentTitle = "click to select the output folder";
    take();
    take();
    take();
    EXPECT_EQ(sim.alerts().shown().size(), 3U);
}

TEST_F(Stills, AFolderChosenBeforeThePictureArrivesIsUsed) {
    button("outfolderB").currentTitle = "click to select the output folder";
    delegate.addPhotoFrame();
    button("outfolderB").currentTitle = "/f";
    sim.cameras().deliverPhoto("picture");
    EXPECT_EQ(files().size(), 1U);
}

TEST_F(Stills, APictureThatCannotBeReadEmptiesTheDisplayAndIsNotSaved) {
    take("damaged");
    EXPECT_EQ(display().image, nullptr);
    EXPECT_THAT(files(), IsEmpty());
    delegate.addPhotoFrame();
    sim.cameras().deliverPhotoWithoutData();
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
    EXPECT_EQ(textField("currentS").text, "Displaying frame 2 of 2");
}

} // namespace
} // namespace vistrane
